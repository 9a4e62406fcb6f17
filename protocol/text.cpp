// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Values as a person reads them.

#include "append.h"
#include "codec.h"

#include <algorithm>

namespace protocol {
namespace {

/// Most significant byte first.
void append_address(std::string* text, std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    char* at = grow(text, 3 * bytes.size() - 1);
    for (size_t i = bytes.size(); i > 0; --i) {
        at = put_hex(at, bytes[i - 1]);
        if (i > 1) {
            *at++ = ':';
        }
    }
}

/// What follows the first four bytes of the Bluetooth Base UUID (Assigned Numbers).
constexpr std::string_view kBaseUuid("\x00\x00\x10\x00\x80\x00\x00\x80\x5F\x9B\x34\xFB", 12);
constexpr size_t kShortUuid = 4;

/// A UUID that the Base UUID completes is written as its 16 or 32 bits.
void append_uuid(std::string* text, std::string_view bytes) {
    const bool is_short = bytes.size() > kShortUuid && bytes.substr(kShortUuid) == kBaseUuid;
    if (is_short) {
        const bool is_16bit = bytes[0] == '\0' && bytes[1] == '\0';
        append_hex(text, bytes.substr(0, kShortUuid).substr(is_16bit ? 2 : 0));
        return;
    }
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            *text += '-';
        }
        append_hex(text, bytes.substr(i, 1));
    }
}

bool is_plain(char byte) {
    // UTF-8 stays as it is.
    return static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F && byte != '"' && byte != '\\';
}

void append_quoted(std::string* text, std::string_view bytes) {
    *text += '"';
    while (!bytes.empty()) {
        const auto special = std::find_if_not(bytes.begin(), bytes.end(), is_plain);
        const auto plain = static_cast<size_t>(special - bytes.begin());
        *text += bytes.substr(0, plain);
        bytes.remove_prefix(plain);
        if (!bytes.empty()) {
            const char byte = bytes.front();
            *text += '\\';
            if (byte == '"' || byte == '\\') {
                *text += byte;
            } else {
                *text += 'x';
                append_hex(text, bytes.substr(0, 1));
            }
            bytes.remove_prefix(1);
        }
    }
    *text += '"';
}

void append_bytes(std::string* text, std::string_view bytes) {
    if (bytes.empty()) {
        *text += "<>";
        return;
    }
    char* at = grow(text, 3 * bytes.size() + 1);
    char before = '<';
    for (const char byte : bytes) {
        *at++ = before;
        at = put_hex(at, byte);
        before = ' ';
    }
    *at = '>';
}

void append_list(std::string* text, const std::vector<Value>& members) {
    *text += '[';
    bool first = true;
    for (const Value& member : members) {
        *text += first ? "" : ", ";
        append_text(text, member);
        first = false;
    }
    *text += ']';
}

} // namespace

void append_text(std::string* text, const Value& value) {
    if (value.is_list) {
        append_list(text, value.members);
        return;
    }
    if (!value.members.empty()) {
        *text += '{';
        append_text(text, value.members);
        *text += '}';
        return;
    }
    switch (value.field->type) {
    case Type::Address:
    case Type::RawAddress:
    case Type::BigAddress:
        append_address(text, value.bytes);
        break;
    case Type::UuidFirst:
    case Type::UuidLast:
    case Type::RawUuid:
        append_uuid(text, value.bytes);
        break;
    case Type::Text:
    case Type::Counted:
    case Type::Character:
    case Type::FixedText:
    case Type::RestText:
    case Type::NulText:
        append_quoted(text, value.bytes);
        break;
    case Type::Oob:
    case Type::HexBytes:
    case Type::Block:
    case Type::ShortBlock:
    case Type::Bytes:
    case Type::SizedBytes:
        append_bytes(text, value.bytes);
        break;
    case Type::Group:
    case Type::Choice:
        *text += "{}";
        break;
    default:
        append_number(text, value.number);
        break;
    }
}

void append_text(std::string* text, const std::vector<Value>& values) {
    bool first = true;
    for (const Value& value : values) {
        append_all(text, first ? "" : " ", value.field->name, "=");
        append_text(text, value);
        first = false;
    }
}

std::string to_text(const Value& value) {
    std::string text;
    append_text(&text, value);
    return text;
}

std::string to_text(const std::vector<Value>& values) {
    std::string text;
    append_text(&text, values);
    return text;
}

} // namespace protocol
