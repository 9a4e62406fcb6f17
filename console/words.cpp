// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "console/words.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <utility>

namespace console {
namespace {

int digit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const int letter = std::toupper(static_cast<unsigned char>(c));
    return letter >= 'A' && letter <= 'F' ? letter - 'A' + 10 : -1;
}

class Splitter {
public:
    explicit Splitter(std::string_view line) : line_(line) {}

    std::vector<std::string> run() {
        while (at_ < line_.size()) {
            const char c = line_[at_++];
            if (c == '#' && !quoted_ && !in_word_) {
                break;
            }
            take(c);
        }
        if (quoted_) {
            throw Refused("a quote is opened and not closed");
        }
        end_word();
        return std::move(words_);
    }

private:
    void take(char c) {
        if (c == '"') {
            quoted_ = !quoted_;
            in_word_ = true;
        } else if (c == '\\') {
            put(escaped());
        } else if (!quoted_ && (c == ' ' || c == '\t' || c == '\r')) {
            end_word();
        } else {
            put(c);
        }
    }

    void put(char c) {
        word_ += c;
        in_word_ = true;
    }

    char escaped() {
        if (at_ == line_.size()) {
            throw Refused("the line ends behind a backslash");
        }
        const char c = line_[at_++];
        switch (c) {
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'x':
            return hexadecimal();
        default:
            return c;
        }
    }

    char hexadecimal() {
        const int high = at_ + 1 < line_.size() ? digit(line_[at_]) : -1;
        const int low = at_ + 1 < line_.size() ? digit(line_[at_ + 1]) : -1;
        if (high < 0 || low < 0) {
            throw Refused("\\x is followed by two hexadecimal digits");
        }
        at_ += 2;
        return static_cast<char>(high << 4 | low);
    }

    void end_word() {
        if (in_word_) {
            words_.push_back(std::exchange(word_, {}));
            in_word_ = false;
        }
    }

    std::string_view line_;
    size_t at_ = 0;
    bool quoted_ = false;
    bool in_word_ = false;
    std::string word_;
    std::vector<std::string> words_;
};

} // namespace

std::vector<std::string> split_words(std::string_view line) {
    return Splitter(line).run();
}

std::chrono::milliseconds to_duration(const std::string& word) {
    constexpr double kMostSeconds = 24 * 60 * 60;
    const size_t end = std::min(word.find_first_not_of("0123456789."), word.size());
    const std::string unit = word.substr(end);
    const std::string number = word.substr(0, end);
    const bool is_number = number.find_first_of("0123456789") != std::string::npos &&
                           number.size() <= 9 && number.find('.') == number.rfind('.');
    const bool is_milliseconds = unit == "ms";
    if (!is_number || !(is_milliseconds || unit == "s" || unit.empty())) {
        throw Refused('"' + printable(word) + "\" is no time such as 5s, 1.5s or 200ms");
    }
    const double seconds = std::stod(number) / (is_milliseconds ? 1000 : 1);
    if (seconds > kMostSeconds) {
        throw Refused('"' + printable(word) + "\" is more than a day");
    }
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

std::string printable(std::string_view text, size_t limit) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string line;
    for (const char c : text.substr(0, limit)) {
        if (c >= 0x20 && c < 0x7F) {
            line += c;
        } else {
            line += {'\\', 'x', kDigits[static_cast<uint8_t>(c) >> 4], kDigits[c & 0xF]};
        }
    }
    if (text.size() > limit) {
        line += "... (" + std::to_string(text.size()) + " bytes)";
    }
    return line;
}

} // namespace console
