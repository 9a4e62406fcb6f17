// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Short words for the tables of messages.
#ifndef VYM_PROTOCOL_FIELDS_H
#define VYM_PROTOCOL_FIELDS_H

#include "protocol.h"

namespace protocol {

constexpr Field byte(std::string_view name) {
    return {name, Type::Byte};
}

constexpr Field word(std::string_view name) {
    return {name, Type::Word};
}

constexpr Field dword(std::string_view name) {
    return {name, Type::Dword};
}

constexpr Field address(std::string_view name = "address") {
    return {name, Type::Address};
}

/// A UUID as events carry it.
constexpr Field uuid_first(std::string_view name) {
    return {name, Type::UuidFirst};
}

/// A UUID as most commands carry it.
constexpr Field uuid_last(std::string_view name) {
    return {name, Type::UuidLast};
}

constexpr Field oob(std::string_view name) {
    return {name, Type::Oob};
}

constexpr Field text(std::string_view name) {
    return {name, Type::Text};
}

/// A counted escaped block; without a layout its bytes are the peer's, or the server's own.
constexpr Field block(std::string_view name, const Layout* inner = nullptr) {
    Field field{name, Type::Block};
    field.inner = inner;
    return field;
}

constexpr Field u8(std::string_view name) {
    return {name, Type::U8};
}

constexpr Field le16(std::string_view name) {
    return {name, Type::Le16};
}

constexpr Field le32(std::string_view name) {
    return {name, Type::Le32};
}

constexpr Field bytes(std::string_view name, uint16_t size) {
    return {name, Type::Bytes, size};
}

constexpr Field fixed_text(std::string_view name, uint16_t size) {
    return {name, Type::FixedText, size};
}

constexpr Field all_bytes(std::string_view name) {
    return {name, Type::Bytes};
}

constexpr Field all_text(std::string_view name) {
    return {name, Type::RestText};
}

constexpr Field group(std::string_view name, const Layout* inner) {
    Field field{name, Type::Group};
    field.inner = inner;
    return field;
}

/// One of the layouts from `first` on, the one whose key is the value of the field `selector`.
constexpr Field choice(std::string_view name, std::string_view selector, const Layout* first) {
    Field field{name, Type::Choice};
    field.count = selector;
    field.inner = first;
    return field;
}

constexpr Field times(Field field, std::string_view count) {
    field.repeat = Repeat::Counted;
    field.count = count;
    return field;
}

constexpr Field times(Field field, uint16_t count) {
    field.repeat = Repeat::Fixed;
    field.size = count;
    return field;
}

constexpr Field to_end(Field field) {
    field.repeat = Repeat::ToEnd;
    return field;
}

constexpr Field of_length(std::string_view name, Type type, std::string_view count) {
    Field field{name, type};
    field.count = count;
    return field;
}

constexpr Field only(When when, Field field) {
    field.when = when;
    return field;
}

constexpr Field marked(Private kind, Field field) {
    field.is_private = kind;
    return field;
}

constexpr Field an_address(const Field& field) {
    return marked(Private::Address, field);
}

constexpr Field a_name(const Field& field) {
    return marked(Private::Name, field);
}

constexpr Field a_title(const Field& field) {
    return marked(Private::Title, field);
}

constexpr Field a_number(const Field& field) {
    return marked(Private::Number, field);
}

constexpr Field a_contact(const Field& field) {
    return marked(Private::Contact, field);
}

constexpr Field a_secret(const Field& field) {
    return marked(Private::Secret, field);
}

constexpr Field advertised(const Field& field) {
    return marked(Private::Advertised, field);
}

constexpr Field of_peer(const Field& field) {
    return marked(Private::Data, field);
}

/// Fields that often come together are named once and joined.
constexpr Fields operator+(const Fields& first, const Fields& second) {
    Fields both = first;
    for (const Field& field : second) {
        both.append(field);
    }
    return both;
}

} // namespace protocol

#endif
