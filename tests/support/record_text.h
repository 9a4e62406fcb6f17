// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a callback was given, as a line of text: CallText("clip", number) is `clip("123")`.
#ifndef VYM_TESTS_SUPPORT_RECORD_TEXT_H
#define VYM_TESTS_SUPPORT_RECORD_TEXT_H

#include "bluetooth.h"

#include <cstdio>
#include <string>
#include <type_traits>

namespace support {

struct BytesOf {
    const uint8_t* data;
    size_t length;
};

/** Hexadecimal digits; "null" without a pointer. */
inline std::string ValueText(const BytesOf& bytes) {
    std::string text = bytes.data == nullptr ? "null" : "";
    for (size_t i = 0; bytes.data != nullptr && i < bytes.length; ++i) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02X", bytes.data[i]);
        text += digits;
    }
    return text;
}

inline std::string ValueText(const bt_bdaddr_t& address) {
    std::string text;
    for (int i = 5; i >= 0; --i) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02X", address.address[i]);
        text += digits;
    }
    return text;
}

/** `uu[0]` first, as events bring it. */
inline std::string ValueText(const bt_uuid_t& uuid) {
    return ValueText(BytesOf{uuid.uu, sizeof uuid.uu});
}

inline std::string ValueText(const char* text) {
    return text != nullptr ? "\"" + std::string(text) + "\"" : "null";
}

template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
std::string ValueText(Number number) {
    return std::to_string(number);
}

template <class... Values>
std::string CallText(const char* name, const Values&... values) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + ValueText(values)), ...);
    return std::string(name) + "(" + text + ")";
}

} // namespace support

#endif
