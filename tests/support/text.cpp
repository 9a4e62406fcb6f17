// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <regex.h>

namespace support {
namespace {

std::string EscapedByte(char byte) {
    switch (byte) {
    case '\r':
        return "\\r";
    case '\n':
        return "\\n";
    case '\0':
        return "\\0";
    case '\\':
        return "\\\\";
    default:
        break;
    }
    if (byte >= ' ' && byte <= '~') {
        return {byte};
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02X",
                  static_cast<unsigned>(static_cast<uint8_t>(byte)));
    return text.data();
}

std::string Described(std::string_view bytes) {
    return "\"" + Escaped(bytes) + "\" (" + std::to_string(bytes.size()) + " bytes)";
}

} // namespace

std::string Event(std::string_view text) {
    std::string event(text);
    event.push_back('\0');
    return event;
}

std::string Bytes(const std::vector<int>& values) {
    std::string bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

std::string Escaped(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += EscapedByte(byte);
    }
    return text;
}

::testing::AssertionResult SameBytes(std::string_view expected, std::string_view received) {
    if (expected == received) {
        return ::testing::AssertionSuccess();
    }
    const size_t common = std::min(expected.size(), received.size());
    size_t place = 0;
    while (place < common && expected[place] == received[place]) {
        ++place;
    }
    return ::testing::AssertionFailure()
           << "expected " << Described(expected) << "\nreceived " << Described(received)
           << "\nthey differ at byte " << place << ": expected \""
           << Escaped(expected.substr(place, 16)) << "\", received \""
           << Escaped(received.substr(place, 16)) << "\"";
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        end = end == std::string::npos ? text.size() : end;
        std::string line = text.substr(start, end - start);
        while (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

std::vector<std::string> LinesWith(const std::string& text, std::string_view part) {
    std::vector<std::string> chosen;
    for (const std::string& line : Lines(text)) {
        if (line.find(part) != std::string::npos) {
            chosen.push_back(line);
        }
    }
    return chosen;
}

std::vector<std::string> Match(const std::string& text, const std::string& expression) {
    regex_t compiled{};
    std::array<regmatch_t, 10> places{};
    std::vector<std::string> parts;
    if (regcomp(&compiled, expression.c_str(), REG_EXTENDED) != 0) {
        ADD_FAILURE() << "no regular expression: " << expression;
        return parts;
    }
    if (regexec(&compiled, text.c_str(), places.size(), places.data(), 0) == 0) {
        for (const regmatch_t& place : places) {
            if (place.rm_so >= 0) {
                parts.push_back(text.substr(static_cast<size_t>(place.rm_so),
                                            static_cast<size_t>(place.rm_eo - place.rm_so)));
            }
        }
    }
    regfree(&compiled);
    return parts;
}

::testing::AssertionResult Fits(const std::string& text, const std::string& expression) {
    const std::vector<std::string> parts = Match(text, expression);
    if (!parts.empty() && parts[0] == text) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << Escaped(text) << "\ndoes not fit " << Escaped(expression);
}

::testing::AssertionResult HasPart(const std::string& text, const std::string& expression) {
    if (!Match(text, expression).empty()) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << Escaped(text) << "\nhas no part that fits " << Escaped(expression);
}

} // namespace support
