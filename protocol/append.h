// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Numbers and bytes at the end of a text, without a text of their own on the way: who shows a long
// capture does this for every field of it.
#ifndef VYM_PROTOCOL_APPEND_H
#define VYM_PROTOCOL_APPEND_H

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace protocol {

/// Where the two digits of a byte stand.
inline constexpr std::array<char, 512> kHexPairs = [] {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::array<char, 512> pairs{};
    for (size_t byte = 0; byte < 256; ++byte) {
        pairs[2 * byte] = kDigits[byte >> 4U];
        pairs[2 * byte + 1] = kDigits[byte & 0xFU];
    }
    return pairs;
}();

inline char* put_hex(char* at, char byte) {
    std::memcpy(at, &kHexPairs[size_t{2} * static_cast<unsigned char>(byte)], 2);
    return at + 2;
}

/// Room for `size` more characters, to be filled.
inline char* grow(std::string* text, size_t size) {
    const size_t before = text->size();
    text->resize(before + size);
    return text->data() + before;
}

/// All of them, with one look at the room that is left.
template <typename... Parts>
void append_all(std::string* text, const Parts&... parts) {
    char* at = grow(text, (std::string_view(parts).size() + ...));
    const auto put = [&at](std::string_view part) {
        std::memcpy(at, part.data(), part.size());
        at += part.size();
    };
    (put(parts), ...);
}

inline void append_hex(std::string* text, std::string_view bytes) {
    char* at = grow(text, 2 * bytes.size());
    for (const char byte : bytes) {
        at = put_hex(at, byte);
    }
}

inline void append_number(std::string* text, uint64_t number) {
    if (number < 10) {
        *text += static_cast<char>('0' + number);
        return;
    }
    std::array<char, 20> digits;
    const std::to_chars_result result =
        std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text->append(digits.data(), static_cast<size_t>(result.ptr - digits.data()));
}

} // namespace protocol

#endif
