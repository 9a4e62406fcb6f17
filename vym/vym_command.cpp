// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_command.h"

#include "bt_utils.h"
#include "vym_os.h"
#include "vym_sdk.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char kPrefix[] = "AT#";
constexpr char kLineEnd[] = "\r\n";
constexpr size_t kCountDigits = 4;

// How many characters the field takes.
bt_status_t measure(const vym::field& field, size_t* length) {
    switch (field.kind) {
    case vym::field_kind::hex:
        *length = field.len;
        break;
    case vym::field_kind::bytes_forward:
    case vym::field_kind::bytes_reverse:
        *length = 2 * field.len;
        break;
    case vym::field_kind::block: {
        const size_t escaped =
            vym_escaped_length(static_cast<const unsigned char*>(field.data), field.len);
        if (field.len > VYM_MAX_ESCAPED_LEN || escaped > VYM_MAX_ESCAPED_LEN) {
            return BT_STATUS_NOMEM; // its count has four digits
        }
        *length = kCountDigits + escaped;
        break;
    }
    case vym::field_kind::text: {
        const auto* text = static_cast<const char*>(field.data);
        // A line end inside would make a second command of what the application meant as data.
        if (text == nullptr || strpbrk(text, kLineEnd) != nullptr) {
            return BT_STATUS_FAIL;
        }
        *length = strlen(text);
        break;
    }
    }
    return BT_STATUS_SUCCESS;
}

constexpr char kDigits[] = "0123456789ABCDEF";

char* put_hex(char* out, uint32_t value, size_t digits) {
    for (char* at = out + digits; at != out; value >>= 4) {
        *--at = kDigits[value & 0xF];
    }
    return out + digits;
}

char* put_bytes(char* out, const uint8_t* bytes, size_t len, bool reverse) {
    const uint8_t* at = reverse ? bytes + len : bytes;
    for (size_t i = 0; i < len; ++i) {
        const uint8_t byte = reverse ? *--at : *at++;
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 0xF];
    }
    return out;
}

char* put_block(char* out, const uint8_t* data, size_t len) {
    auto* text = reinterpret_cast<unsigned char*>(out + kCountDigits);
    const unsigned char* end = vym_escape(data, len, text);
    const auto escaped = static_cast<size_t>(end - text);
    return put_hex(out, static_cast<uint32_t>(escaped), kCountDigits) + escaped;
}

char* put_text(char* out, const char* text, size_t length) {
    memcpy(out, text, length);
    return out + length;
}

template <size_t Size>
char* put_literal(char* out, const char (&text)[Size]) {
    return put_text(out, text, Size - 1);
}

char* put_field(char* out, const vym::field& field) {
    switch (field.kind) {
    case vym::field_kind::hex:
        return put_hex(out, field.value, field.len);
    case vym::field_kind::bytes_forward:
        return put_bytes(out, static_cast<const uint8_t*>(field.data), field.len, false);
    case vym::field_kind::bytes_reverse:
        return put_bytes(out, static_cast<const uint8_t*>(field.data), field.len, true);
    case vym::field_kind::block:
        return put_block(out, static_cast<const uint8_t*>(field.data), field.len);
    case vym::field_kind::text:
        return put_text(out, static_cast<const char*>(field.data),
                        strlen(static_cast<const char*>(field.data)));
    }
    return out;
}

// As vym_command_build(), and tells how long the command is.
char* build(const char* tag, const vym::field* fields, size_t count, bt_status_t* status,
            size_t* command_length) {
    const size_t tag_length = strlen(tag);
    size_t length = strlen(kPrefix) + tag_length + strlen(kLineEnd);
    for (size_t i = 0; i < count; ++i) {
        size_t field_length = 0;
        *status = measure(fields[i], &field_length);
        if (*status != BT_STATUS_SUCCESS) {
            return nullptr;
        }
        length += field_length;
    }
    auto* command = static_cast<char*>(malloc(length + 1));
    if (command == nullptr) {
        *status = BT_STATUS_NOMEM;
        return nullptr;
    }
    char* out = put_text(put_literal(command, kPrefix), tag, tag_length);
    for (size_t i = 0; i < count; ++i) {
        out = put_field(out, fields[i]);
    }
    out = put_literal(out, kLineEnd);
    assert(out == command + length);
    *out = '\0';
    *status = BT_STATUS_SUCCESS;
    *command_length = length;
    return command;
}

} // namespace

extern "C" {

char* vym_command_build(const char* tag, const vym::field* fields, size_t count, bt_status_t* status) {
    size_t length = 0;
    return build(tag, fields, count, status, &length);
}

bt_status_t vym_command_send(const char* tag, const vym::field* fields, size_t count) {
    bt_status_t status = BT_STATUS_SUCCESS;
    size_t length = 0;
    const vym::malloc_ptr<char> command(build(tag, fields, count, &status, &length));
    if (command != nullptr) {
        send_at_command(command.get(), static_cast<int>(length));
    }
    return status;
}

} // extern "C"
