// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Values as a person reads them.

#include "codec.h"

namespace protocol {
namespace {

void append_hex(std::string* text, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    *text += "0123456789ABCDEF"[value >> 4U];
    *text += "0123456789ABCDEF"[value & 0xFU];
}

/// Most significant byte first.
std::string address_text(const std::string& bytes) {
    std::string text;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
        if (!text.empty()) {
            text += ':';
        }
        append_hex(&text, *byte);
    }
    return text;
}

/// What follows the first four bytes of the Bluetooth Base UUID (Assigned Numbers).
constexpr std::string_view kBaseUuid("\x00\x00\x10\x00\x80\x00\x00\x80\x5F\x9B\x34\xFB", 12);
constexpr size_t kShortUuid = 4;

/// A UUID that the Base UUID completes is written as its 16 or 32 bits.
std::string uuid_text(const std::string& bytes) {
    const bool is_short = bytes.size() > kShortUuid && bytes.substr(kShortUuid) == kBaseUuid;
    const bool is_16bit = is_short && bytes[0] == '\0' && bytes[1] == '\0';
    std::string text;
    for (size_t i = is_16bit ? 2 : 0; i < (is_short ? kShortUuid : bytes.size()); ++i) {
        if (!is_short && (i == 4 || i == 6 || i == 8 || i == 10)) {
            text += '-';
        }
        append_hex(&text, bytes[i]);
    }
    return text;
}

std::string quoted(const std::string& bytes) {
    std::string text = "\"";
    for (const char byte : bytes) {
        if (byte == '"' || byte == '\\') {
            text += '\\';
        }
        // UTF-8 stays as it is.
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) {
            text += "\\x";
            append_hex(&text, byte);
        } else {
            text += byte;
        }
    }
    return text + '"';
}

std::string bytes_text(const std::string& bytes) {
    std::string text = "<";
    for (const char byte : bytes) {
        if (text.size() > 1) {
            text += ' ';
        }
        append_hex(&text, byte);
    }
    return text + '>';
}

std::string list_text(const std::vector<Value>& members) {
    std::string text = "[";
    for (const Value& member : members) {
        text += (text.size() > 1 ? ", " : "") + to_text(member);
    }
    return text + ']';
}

} // namespace

std::string to_text(const Value& value) {
    if (value.is_list) {
        return list_text(value.members);
    }
    if (!value.members.empty()) {
        return '{' + to_text(value.members) + '}';
    }
    switch (value.field->type) {
    case Type::Address:
    case Type::RawAddress:
    case Type::BigAddress:
        return address_text(value.bytes);
    case Type::UuidFirst:
    case Type::UuidLast:
    case Type::RawUuid:
        return uuid_text(value.bytes);
    case Type::Text:
    case Type::Counted:
    case Type::Character:
    case Type::FixedText:
    case Type::RestText:
    case Type::NulText:
        return quoted(value.bytes);
    case Type::Oob:
    case Type::HexBytes:
    case Type::Block:
    case Type::ShortBlock:
    case Type::Bytes:
    case Type::SizedBytes:
        return bytes_text(value.bytes);
    case Type::Group:
    case Type::Choice:
        return "{}";
    default:
        return std::to_string(value.number);
    }
}

std::string to_text(const std::vector<Value>& values) {
    std::string text;
    for (const Value& value : values) {
        text += (text.empty() ? "" : " ") + std::string(value.field->name) + '=' + to_text(value);
    }
    return text;
}

} // namespace protocol
