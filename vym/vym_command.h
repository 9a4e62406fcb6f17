// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands as a list of fields: vym::send_command("BS", {address, hex2(variant), hex2(accept),
// hex8(passkey)}) allocates exactly "AT#BS...\r\n", writes it in one piece and frees it.
#ifndef VYM_COMMAND_H
#define VYM_COMMAND_H

#include "bluetooth.h"

#include <cstddef>
#include <initializer_list>

namespace vym {

enum class field_kind : uint8_t {
    hex,           // `value` in `len` upper-case digits
    bytes_forward, // `len` bytes as hexadecimal digits, first byte first
    bytes_reverse, // the same, last byte first
    block,         // "%04X" count of the escaped bytes, then these
    text,          // as it stands; refused when NULL or with CR or LF inside
};

struct field {
    field_kind kind;
    uint32_t value;
    const void* data; // must live until the command is sent
    size_t len;

    constexpr field(field_kind k, uint32_t v, const void* d, size_t n)
        : kind(k), value(v), data(d), len(n) {}
    // Addresses go most significant byte first.
    field(const bt_bdaddr_t& address)
        : field(field_kind::bytes_reverse, 0, address.address, sizeof address.address) {}
    field(const bt_oob_data_t& oob) : field(field_kind::bytes_forward, 0, oob.data, sizeof oob.data) {}
};

constexpr field hex2(uint8_t value) {
    return {field_kind::hex, value, nullptr, 2};
}
constexpr field hex4(uint16_t value) {
    return {field_kind::hex, value, nullptr, 4};
}
constexpr field hex8(uint32_t value) {
    return {field_kind::hex, value, nullptr, 8};
}
constexpr field hex8(int value) {
    return hex8(static_cast<uint32_t>(value));
}
// The low 32 bits, on every host.
constexpr field hex8(long value) {
    return hex8(static_cast<uint32_t>(value));
}
inline field uuid_forward(const bt_uuid_t& uuid) {
    return {field_kind::bytes_forward, 0, uuid.uu, sizeof uuid.uu};
}
inline field uuid_reverse(const bt_uuid_t& uuid) {
    return {field_kind::bytes_reverse, 0, uuid.uu, sizeof uuid.uu};
}
// NULL is an empty block, whatever its length says.
constexpr field block(const uint8_t* data, size_t len) {
    return {field_kind::block, 0, data, data != nullptr ? len : 0};
}
constexpr field text(const char* s) {
    return {field_kind::text, 0, s, 0};
}

} // namespace vym

extern "C" {

// Builds "AT#" + tag + fields + CR LF + NUL, to be freed with free(). On failure NULL, and why in
// `status`: BT_STATUS_NOMEM without memory or when a block does not fit its count, BT_STATUS_FAIL for a
// text that would break the line.
char* vym_command_build(const char* tag, const vym::field* fields, size_t count, bt_status_t* status);

// Builds a command and sends it. Returns BT_STATUS_SUCCESS or what building answered.
bt_status_t vym_command_send(const char* tag, const vym::field* fields, size_t count);

} // extern "C"

namespace vym {

inline bt_status_t send_command(const char* tag, std::initializer_list<field> fields = {}) {
    return vym_command_send(tag, fields.begin(), fields.size());
}

} // namespace vym

#endif
