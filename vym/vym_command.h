// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands as a list of fields: vym::send_command<tag("BS")>(address, hex2(variant), hex2(accept),
// hex8(passkey)) allocates exactly "AT#BS...\r\n", writes it in one piece and frees it.
//
// The compiler makes a format of the fields' types, "BSa228", so that a command's function only has to
// put its arguments side by side: there are many such functions.
#ifndef VYM_COMMAND_H
#define VYM_COMMAND_H

#include "bluetooth.h"

#include <array>
#include <cstddef>

namespace vym {

// One letter of the format for each field.
enum field_code : char {
    FIELD_HEX2 = '2', // upper-case digits, so many as the letter says
    FIELD_HEX4 = '4',
    FIELD_HEX8 = '8',
    FIELD_HEX2_OR_MORE = 'm', // as many digits as the number needs, at least two
    FIELD_ADDRESS = 'a',      // most significant byte first
    FIELD_FORWARD = 'f',      // 16 bytes as hexadecimal digits, first byte first
    FIELD_REVERSE = 'r',      // the same, last byte first
    FIELD_BLOCK = 'b',        // "%04X" count of the escaped bytes, then these; two values
    FIELD_TEXT = 't',         // as it stands; refused when NULL or with CR or LF inside
};

// What a field is made of. Pointers must live until the command is sent.
union field_value {
    uint32_t number;
    const void* data;
};

template <field_code Code>
struct number_field {
    static constexpr field_code code = Code;
    static constexpr size_t values = 1;
    uint32_t number;

    constexpr void put(field_value* at) const { at->number = number; }
};

template <field_code Code>
struct data_field {
    static constexpr field_code code = Code;
    static constexpr size_t values = 1;
    const void* data;

    constexpr void put(field_value* at) const { at->data = data; }
};

constexpr number_field<FIELD_HEX2> hex2(uint8_t value) {
    return {value};
}
constexpr number_field<FIELD_HEX4> hex4(uint16_t value) {
    return {value};
}
constexpr number_field<FIELD_HEX8> hex8(uint32_t value) {
    return {value};
}
constexpr number_field<FIELD_HEX8> hex8(int value) {
    return {static_cast<uint32_t>(value)};
}
// The low 32 bits, on every host.
constexpr number_field<FIELD_HEX8> hex8(long value) {
    return {static_cast<uint32_t>(value)};
}
constexpr number_field<FIELD_HEX2_OR_MORE> hex2_or_more(int value) {
    return {static_cast<uint32_t>(value)};
}
constexpr data_field<FIELD_FORWARD> uuid_forward(const bt_uuid_t& uuid) {
    return {uuid.uu};
}
constexpr data_field<FIELD_REVERSE> uuid_reverse(const bt_uuid_t& uuid) {
    return {uuid.uu};
}
constexpr data_field<FIELD_TEXT> text(const char* s) {
    return {s};
}

struct block_field {
    static constexpr field_code code = FIELD_BLOCK;
    static constexpr size_t values = 2;
    const uint8_t* data;
    uint32_t len;

    constexpr void put(field_value* at) const {
        at[0].data = data;
        at[1].number = len;
    }
};
// NULL is an empty block, whatever its length says. A negative length is too long for any block.
constexpr block_field block(const uint8_t* data, uint32_t len) {
    return {data, len};
}

// Fields, and what stands for a field by itself.
template <class Field>
constexpr const Field& as_field(const Field& field) {
    return field;
}
constexpr data_field<FIELD_ADDRESS> as_field(const bt_bdaddr_t& address) {
    return {address.address};
}
constexpr data_field<FIELD_FORWARD> as_field(const bt_oob_data_t& oob) {
    return {oob.data};
}

// A tag of at most four capital letters, as a template's argument.
template <size_t Size>
constexpr uint32_t tag(const char (&letters)[Size]) {
    static_assert(Size <= 5);
    uint32_t packed = 0;
    for (size_t i = 0; i + 1 < Size; ++i) {
        packed |= static_cast<uint32_t>(static_cast<unsigned char>(letters[i])) << (8 * i);
    }
    return packed;
}

constexpr size_t letters_of(uint32_t tag) {
    return tag != 0 ? 1 + letters_of(tag >> 8) : 0;
}

// The tag's letters and the fields' codes, ended by a NUL.
template <uint32_t Tag, class... Fields>
constexpr std::array<char, letters_of(Tag) + sizeof...(Fields) + 1> format_of() {
    std::array<char, letters_of(Tag) + sizeof...(Fields) + 1> format{};
    size_t at = 0;
    for (uint32_t letters = Tag; letters != 0; letters >>= 8) {
        format[at++] = static_cast<char>(letters & 0xFF);
    }
    ((format[at++] = Fields::code), ...);
    return format;
}

// The fields' values side by side; NULL when there are none.
template <class... Fields>
struct field_values {
    field_value all[(0 + ... + Fields::values)];

    explicit field_values(const Fields&... fields) {
        field_value* at = all;
        ((fields.put(at), at += Fields::values), ...);
    }
    const field_value* begin() const { return all; }
};
template <>
struct field_values<> {
    const field_value* begin() const { return nullptr; }
};

} // namespace vym

extern "C" {

// Builds "AT#" + tag + fields + CR LF + NUL, to be freed with free(). The format is the tag's capital
// letters and the fields' codes. On failure NULL, and why in `status`: BT_STATUS_NOMEM without memory
// or when a block does not fit its count, BT_STATUS_FAIL for a text that would break the line.
char* vym_command_build(const char* format, const vym::field_value* values, bt_status_t* status);

// Builds a command and sends it. Returns BT_STATUS_SUCCESS or what building answered.
bt_status_t vym_command_send(const char* format, const vym::field_value* values);

} // extern "C"

namespace vym {

// Static, and so is what is static inside: what only one source file knows needs no entry in the table
// of the library's addresses.
template <uint32_t Tag, class... Fields>
static char* build_fields(bt_status_t* status, const Fields&... fields) {
    static constexpr auto kFormat = format_of<Tag, Fields...>();
    return vym_command_build(kFormat.data(), field_values<Fields...>(fields...).begin(), status);
}

template <uint32_t Tag, class... Fields>
static bt_status_t send_fields(const Fields&... fields) {
    static constexpr auto kFormat = format_of<Tag, Fields...>();
    return vym_command_send(kFormat.data(), field_values<Fields...>(fields...).begin());
}

template <uint32_t Tag, class... Fields>
static char* build_command(bt_status_t* status, const Fields&... fields) {
    return build_fields<Tag>(status, as_field(fields)...);
}

template <uint32_t Tag, class... Fields>
static bt_status_t send_command(const Fields&... fields) {
    return send_fields<Tag>(as_field(fields)...);
}

} // namespace vym

#endif
