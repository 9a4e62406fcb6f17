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

using namespace vym;

constexpr char kPrefix[] = "AT#";
constexpr char kLineEnd[] = "\r\n";
constexpr size_t kCountDigits = 4;
constexpr size_t kAddressBytes = sizeof(bt_bdaddr_t);
constexpr size_t kUuidBytes = sizeof(bt_uuid_t);
static_assert(sizeof(bt_oob_data_t) == kUuidBytes, "both are FIELD_FORWARD");

// The format's letters in front of the fields' codes.
size_t tag_length(const char* format) {
    size_t length = 0;
    while (format[length] >= 'A' && format[length] <= 'Z') {
        ++length;
    }
    return length;
}

size_t digits_of(char code, uint32_t number) {
    if (code != FIELD_HEX2_OR_MORE) {
        return static_cast<size_t>(code - '0');
    }
    size_t digits = 2;
    while (digits < 8 && (number >> (4 * digits)) != 0) {
        ++digits;
    }
    return digits;
}

size_t block_length(const field_value* at) {
    return at[0].data != nullptr ? at[1].number : 0;
}

// Adds how many characters the fields take.
bt_status_t measure(const char* codes, const field_value* at, size_t* length) {
    for (; *codes != '\0'; ++codes, ++at) {
        switch (*codes) {
        case FIELD_BLOCK: {
            const size_t len = block_length(at);
            if (len > VYM_MAX_ESCAPED_LEN) {
                return BT_STATUS_NOMEM;
            }
            const size_t escaped = vym_escaped_length(static_cast<const unsigned char*>(at->data), len);
            if (escaped > VYM_MAX_ESCAPED_LEN) {
                return BT_STATUS_NOMEM; // its count has four digits
            }
            *length += kCountDigits + escaped;
            ++at;
            break;
        }
        case FIELD_TEXT: {
            const auto* text = static_cast<const char*>(at->data);
            // A line end inside would make a second command of what the application meant as data.
            if (text == nullptr || strpbrk(text, kLineEnd) != nullptr) {
                return BT_STATUS_FAIL;
            }
            *length += strlen(text);
            break;
        }
        case FIELD_ADDRESS:
            *length += 2 * kAddressBytes;
            break;
        case FIELD_FORWARD:
        case FIELD_REVERSE:
            *length += 2 * kUuidBytes;
            break;
        default:
            *length += digits_of(*codes, at->number);
            break;
        }
    }
    return BT_STATUS_SUCCESS;
}

// The two digits of every byte: most of a command is digits.
struct digit_pairs {
    char of[256][2];
};

constexpr digit_pairs make_digit_pairs() {
    constexpr char digits[] = "0123456789ABCDEF";
    digit_pairs pairs{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        pairs.of[byte][0] = digits[byte >> 4];
        pairs.of[byte][1] = digits[byte & 0xF];
    }
    return pairs;
}

constexpr digit_pairs kDigits = make_digit_pairs();

char* put_byte(char* out, uint8_t byte) {
    memcpy(out, kDigits.of[byte], 2);
    return out + 2;
}

char* put_hex(char* out, uint32_t value, size_t digits) {
    if (digits % 2 != 0) {
        *out++ = kDigits.of[value >> (4 * (digits - 1)) & 0xF][1];
    }
    for (size_t pairs = digits / 2; pairs > 0; --pairs) {
        out = put_byte(out, static_cast<uint8_t>(value >> (8 * (pairs - 1))));
    }
    return out;
}

char* put_forward(char* out, const void* data, size_t len) {
    const auto* at = static_cast<const uint8_t*>(data);
    for (const uint8_t* end = at + len; at != end; ++at) {
        out = put_byte(out, *at);
    }
    return out;
}

char* put_reverse(char* out, const void* data, size_t len) {
    const auto* begin = static_cast<const uint8_t*>(data);
    for (const uint8_t* at = begin + len; at != begin;) {
        out = put_byte(out, *--at);
    }
    return out;
}

char* put_block(char* out, const void* data, size_t len) {
    auto* text = reinterpret_cast<unsigned char*>(out + kCountDigits);
    const unsigned char* end = vym_escape(static_cast<const unsigned char*>(data), len, text);
    const auto escaped = static_cast<size_t>(end - text);
    return put_hex(out, static_cast<uint32_t>(escaped), kCountDigits) + escaped;
}

char* put_text(char* out, const void* text, size_t length) {
    memcpy(out, text, length);
    return out + length;
}

char* put_fields(char* out, const char* codes, const field_value* at) {
    for (; *codes != '\0'; ++codes, ++at) {
        switch (*codes) {
        case FIELD_BLOCK:
            out = put_block(out, at->data, block_length(at));
            ++at;
            break;
        case FIELD_TEXT:
            out = put_text(out, at->data, strlen(static_cast<const char*>(at->data)));
            break;
        case FIELD_ADDRESS:
            out = put_reverse(out, at->data, kAddressBytes);
            break;
        case FIELD_FORWARD:
            out = put_forward(out, at->data, kUuidBytes);
            break;
        case FIELD_REVERSE:
            out = put_reverse(out, at->data, kUuidBytes);
            break;
        default:
            out = put_hex(out, at->number, digits_of(*codes, at->number));
            break;
        }
    }
    return out;
}

// As vym_command_build(), and tells how long the command is.
char* build(const char* format, const field_value* values, bt_status_t* status,
            size_t* command_length) {
    const size_t tag = tag_length(format);
    size_t length = strlen(kPrefix) + tag + strlen(kLineEnd);
    *status = measure(format + tag, values, &length);
    if (*status != BT_STATUS_SUCCESS) {
        return nullptr;
    }
    auto* command = static_cast<char*>(malloc(length + 1));
    if (command == nullptr) {
        *status = BT_STATUS_NOMEM;
        return nullptr;
    }
    char* out = put_text(command, kPrefix, strlen(kPrefix));
    out = put_text(out, format, tag);
    out = put_fields(out, format + tag, values);
    out = put_text(out, kLineEnd, strlen(kLineEnd));
    assert(out == command + length);
    *out = '\0';
    *command_length = length;
    return command;
}

} // namespace

extern "C" {

char* vym_command_build(const char* format, const field_value* values, bt_status_t* status) {
    size_t length = 0;
    return build(format, values, status, &length);
}

bt_status_t vym_command_send(const char* format, const field_value* values) {
    bt_status_t status = BT_STATUS_SUCCESS;
    size_t length = 0;
    const malloc_ptr<char> command(build(format, values, &status, &length));
    if (command != nullptr) {
        send_at_command(command.get(), static_cast<int>(length));
    }
    return status;
}

} // extern "C"
