// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "text_file.h"

#include "wire.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace sim {
namespace {

/// How many bytes follow the first one of a character, or -1.
int followers(uint8_t first) {
    if (first < 0x80) {
        return 0;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return 1;
    }
    if ((first & 0xF0) == 0xE0) {
        return 2;
    }
    return first >= 0xF0 && first <= 0xF4 ? 3 : -1;
}

/// Overlong forms, surrogates and what is beyond Unicode show in the second byte.
bool is_second(uint8_t first, uint8_t second) {
    const uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
}

} // namespace

FileError::FileError(const std::string& file, unsigned line, const std::string& problem)
    : std::runtime_error(file + ":" + std::to_string(line) + ": " + problem) {}

FileError::FileError(const std::string& file, const std::string& problem)
    : std::runtime_error(file + ": " + problem) {}

std::string read_text_file(const std::string& path, size_t most) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text(most + 1, '\0');
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof()) {
        const std::string why =
            errno != 0 ? std::generic_category().message(errno) : "it has no content";
        throw FileError(path, "cannot be read: " + why + "; expected a file");
    }
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.size() > most) {
        throw FileError(path, "is too long; expected at most " + std::to_string(most) + " bytes");
    }
    return text;
}

std::ofstream create_file(const std::string& path, const std::string& what) {
    std::ofstream file(path, std::ios::trunc);
    if (!file) {
        throw std::runtime_error("cannot write the " + what + " " + path + ": " +
                                 std::generic_category().message(errno));
    }
    return file;
}

bool is_utf8(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const auto first = static_cast<uint8_t>(text[i]);
        const int more = followers(first);
        if (more < 0 || static_cast<size_t>(more) >= text.size() - i) {
            return false;
        }
        for (int k = 1; k <= more; ++k) {
            const auto next = static_cast<uint8_t>(text[i + static_cast<size_t>(k)]);
            if (k == 1 ? !is_second(first, next) : (next & 0xC0) != 0x80) {
                return false;
            }
        }
        i += static_cast<size_t>(more) + 1;
    }
    return true;
}

std::string in_quotes(std::string_view text) {
    constexpr size_t kMost = 40;
    return '"' + printable(text, kMost) + '"';
}

} // namespace sim
