// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "scrub_text.h"

namespace trace {
namespace {

using protocol::Private;
using protocol::Type;
using protocol::Value;

Private kind_of(const protocol::Field& field) {
    switch (field.type) {
    case Type::Address:
    case Type::RawAddress:
    case Type::BigAddress:
        return Private::Address;
    case Type::Oob:
        return Private::Secret;
    default:
        return field.is_private;
    }
}

/// The name of a device that is read as a value may have less than four characters; that is all of it.
std::string replaced(const Value& value, bool is_line, Pseudonyms& pseudonyms) {
    const std::string& bytes = value.bytes;
    switch (kind_of(*value.field)) {
    case Private::Address:
        return pseudonyms.address(bytes);
    case Private::Name:
        return pseudonyms.name(bytes);
    case Private::Title:
        return pseudonyms.title(bytes);
    case Private::Number:
        return pseudonyms.number(bytes);
    case Private::Contact:
        return is_line ? pseudonyms.contact_line(bytes) : Pseudonyms::masked(bytes);
    case Private::Secret:
        return pseudonyms.secret(bytes);
    case Private::Advertised:
        return pseudonyms.advertised(bytes);
    case Private::Data:
        return pseudonyms.data(bytes);
    case Private::No:
        break;
    }
    return bytes;
}

uint32_t replaced_number(const Value& value, Pseudonyms& pseudonyms) {
    if (kind_of(*value.field) != Private::Secret) {
        return value.number;
    }
    // A key of a telephone, or a number that two devices show.
    constexpr uint32_t kAnyKey = '1';
    return value.field->type == Type::Byte ? kAnyKey : pseudonyms.passkey(value.number);
}

void replace(std::vector<Value>* values, Pseudonyms& pseudonyms) {
    for (Value& value : *values) {
        if (!value.members.empty()) {
            replace(&value.members, pseudonyms);
        } else {
            value.bytes = replaced(value, value.field->type == Type::Text, pseudonyms);
            value.number = replaced_number(value, pseudonyms);
        }
    }
}

std::string masked_body(const Item& item) {
    const size_t kept = item.found() ? item.found().message->tag.size() : 0;
    return std::string(item.body().substr(0, kept)) + Pseudonyms::masked(item.body().substr(kept));
}

std::string scrubbed_body(const Item& item, Pseudonyms& pseudonyms) {
    if (!item.problem().empty()) {
        return masked_body(item);
    }
    std::vector<Value> values = item.decoded().values;
    replace(&values, pseudonyms);
    std::string body = encode(*item.found().message, values);
    // What is only passed over when it is read is not written again, and might leave a hole.
    const protocol::Decoded again = protocol::decode(item.direction(), body);
    if (!again.problem.empty() || again.values.size() != values.size()) {
        return masked_body(item);
    }
    return body + Pseudonyms::masked(item.decoded().surplus);
}

} // namespace

std::string scrubbed(const Item& item, Pseudonyms& pseudonyms) {
    const std::string_view text = item.text().text;
    const size_t begin = static_cast<size_t>(item.body().data() - text.data());
    return std::string(text.substr(0, begin)) + scrubbed_body(item, pseudonyms) +
           std::string(text.substr(begin + item.body().size()));
}

} // namespace trace
