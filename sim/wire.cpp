// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "wire.h"

#include <algorithm>
#include <cstdio>

namespace sim {
namespace {

constexpr char kEscape = '\xDC';

/// What stands behind the escape byte for each byte that may not travel as it is.
struct Escaped {
    char plain;
    char code;
};
constexpr std::array<Escaped, 4> kEscapes{
    {{'\x00', '\xDD'}, {'\r', '\xDE'}, {'\n', '\xDF'}, {kEscape, kEscape}}};

int digit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

std::string hex(uint32_t value, int width) {
    std::array<char, 12> text{};
    const int length = std::snprintf(text.data(), text.size(), "%0*X", width, value);
    return {text.data(), static_cast<size_t>(length)};
}

template <typename Array>
std::string bytes_of(const Array& array) {
    return {array.begin(), array.end()};
}

} // namespace

Address to_address(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return c != ':'; });
    if (digits.size() != 12 ||
        std::any_of(digits.begin(), digits.end(), [](char c) { return digit(c) < 0; })) {
        throw std::invalid_argument("not an address: " + std::string(text));
    }
    return Fields(digits).address();
}

std::string to_string(const Address& address) {
    std::string text;
    std::for_each(address.octets.rbegin(), address.octets.rend(),
                  [&text](uint8_t octet) { text += hex(octet, 2); });
    return text;
}

Octets16 uuid_from_16bit(uint16_t uuid) {
    // 0000xxxx-0000-1000-8000-00805F9B34FB
    const auto high = static_cast<uint8_t>(uuid >> 8);
    const auto low = static_cast<uint8_t>(uuid & 0xFF);
    return {0x00, 0x00, high, low,  0x00, 0x00, 0x10, 0x00,
            0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB};
}

std::string escape(std::string_view raw) {
    std::string escaped;
    escaped.reserve(raw.size());
    for (const char c : raw) {
        const auto* row = std::find_if(kEscapes.begin(), kEscapes.end(),
                                       [c](const Escaped& e) { return e.plain == c; });
        if (row == kEscapes.end()) {
            escaped += c;
        } else {
            escaped += kEscape;
            escaped += row->code;
        }
    }
    return escaped;
}

std::string unescape(std::string_view escaped) {
    std::string raw;
    raw.reserve(escaped.size());
    for (size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != kEscape) {
            raw += escaped[i];
            continue;
        }
        if (++i == escaped.size()) {
            throw BadCommand("the block ends inside an escape");
        }
        const char code = escaped[i];
        const auto* row = std::find_if(kEscapes.begin(), kEscapes.end(),
                                       [code](const Escaped& e) { return e.code == code; });
        if (row == kEscapes.end()) {
            throw BadCommand("DC " + hex(static_cast<uint8_t>(code), 2) + " is no escape");
        }
        raw += row->plain;
    }
    return raw;
}

std::string le16(uint16_t value) {
    return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

std::string le32(uint32_t value) {
    return le16(static_cast<uint16_t>(value & 0xFFFF)) + le16(static_cast<uint16_t>(value >> 16));
}

uint32_t from_le32(std::string_view value) {
    uint32_t result = 0;
    for (size_t i = 0; i < 4 && i < value.size(); ++i) {
        result |= static_cast<uint32_t>(static_cast<uint8_t>(value[i])) << (8 * i);
    }
    return result;
}

std::string raw(const Address& address) {
    return bytes_of(address.octets);
}

std::string raw(const Octets16& octets) {
    return bytes_of(octets);
}

std::string property_record(uint8_t type, std::string_view value) {
    const std::string_view kept = value.substr(0, 0xFF);
    return hex(type, 2) + hex(static_cast<uint32_t>(kept.size()), 2) + std::string(kept);
}

std::string_view Fields::take(size_t width, const char* what) {
    if (text_.size() - position_ < width) {
        throw BadCommand(std::string(what) + ": " + std::to_string(width) + " characters expected, " +
                         std::to_string(text_.size() - position_) + " left");
    }
    const std::string_view field = text_.substr(position_, width);
    position_ += width;
    return field;
}

uint32_t Fields::number(size_t width, const char* what) {
    uint32_t value = 0;
    const std::string_view field = take(width, what);
    for (const char c : field) {
        const int d = digit(c);
        if (d < 0) {
            throw BadCommand(std::string(what) + ": \"" + printable(field) + "\" is not hexadecimal");
        }
        value = value << 4 | static_cast<uint32_t>(d);
    }
    return value;
}

Address Fields::address(const char* what) {
    Address address;
    std::generate(address.octets.rbegin(), address.octets.rend(), [&] { return byte(what); });
    return address;
}

Octets16 Fields::octets(const char* what) {
    Octets16 octets{};
    std::generate(octets.begin(), octets.end(), [&] { return byte(what); });
    return octets;
}

Octets16 Fields::octets_reversed(const char* what) {
    Octets16 octets{};
    std::generate(octets.rbegin(), octets.rend(), [&] { return byte(what); });
    return octets;
}

std::string Fields::block(const char* what) {
    const uint16_t length = word(what);
    return unescape(take(length, what));
}

std::string Fields::rest() {
    return std::string(take(text_.size() - position_, "text"));
}

void Fields::end() const {
    if (position_ < text_.size()) {
        throw BadCommand("surplus \"" + printable(text_.substr(position_), 40) +
                         "\" after the last field");
    }
}

Event& Event::number(uint32_t value, int width) {
    bytes_ += hex(value, width);
    return *this;
}

Event& Event::byte(uint8_t value) {
    return number(value, 2);
}

Event& Event::word(uint16_t value) {
    return number(value, 4);
}

Event& Event::dword(uint32_t value) {
    return number(value, 8);
}

Event& Event::address(const Address& value) {
    bytes_ += to_string(value);
    return *this;
}

Event& Event::octets(const Octets16& value) {
    for (const uint8_t octet : value) {
        byte(octet);
    }
    return *this;
}

Event& Event::block(std::string_view raw_bytes) {
    const std::string escaped = escape(raw_bytes);
    if (escaped.size() > 0xFFFF) {
        throw std::length_error("a block of an event is longer than its count can say");
    }
    bytes_ += hex(static_cast<uint32_t>(escaped.size()), 4) + escaped;
    return *this;
}

Event& Event::text(std::string_view value) {
    bytes_ += value.substr(0, value.find('\0'));
    return *this;
}

} // namespace sim
