// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "pseudonyms.h"

#include <algorithm>
#include <array>

namespace trace {
namespace {

constexpr std::array<std::string_view, 34> kVcardWords = {
    "BEGIN",  "END",     "VCARD", "VERSION", "N",    "FN",       "TEL",      "EMAIL",  "ADR",
    "ORG",    "TITLE",   "NOTE",  "PHOTO",   "REV",  "UID",      "URL",      "BDAY",   "CELL",
    "HOME",   "WORK",    "VOICE", "FAX",     "PREF", "TYPE",     "ENCODING", "QUOTED", "PRINTABLE",
    "BASE64", "CHARSET", "X",     "IRMC",    "CALL", "DATETIME", "UTF",
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

bool is_only(std::string_view text, char c) {
    return text.find_first_not_of(c) == std::string_view::npos;
}

bool is_vcard_word(std::string_view word) {
    return std::find(kVcardWords.begin(), kVcardWords.end(), word) != kVcardWords.end();
}

/// `number` in these digits, in `length` of them.
std::string in_digits(uint32_t number, size_t length, std::string_view digits) {
    std::string text(length, digits[0]);
    for (size_t i = length; i > 0 && number > 0; --i) {
        text[i - 1] = digits[number % digits.size()];
        number /= static_cast<uint32_t>(digits.size());
    }
    return text;
}

/// How many bytes the printable character of UTF-8 has that the text begins with; 0 when there is none.
size_t character(std::string_view text) {
    if (text.empty() || text[0] == 0x7F) {
        return 0;
    }
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t length = first < 0x20    ? 0
                          : first < 0x80  ? 1
                          : first < 0xC2  ? 0
                          : first < 0xE0  ? 2
                          : first < 0xF0  ? 3
                          : first <= 0xF4 ? 4
                                          : 0;
    const std::string_view rest = text.substr(1, length == 0 ? 0 : length - 1);
    const bool whole = length <= text.size() && std::all_of(rest.begin(), rest.end(), [](char c) {
                           return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
                       });
    return whole ? length : 0;
}

/// Calls `replace` for each part between separators.
template <typename Replace>
std::string part_by_part(std::string_view text, char separator, Replace replace) {
    std::string result;
    for (;;) {
        const size_t end = text.find(separator);
        result += replace(text.substr(0, end));
        if (end == std::string_view::npos) {
            return result;
        }
        result += separator;
        text.remove_prefix(end + 1);
    }
}

} // namespace

/// Counted apart for short ones, which have no room for a large number.
uint32_t Pseudonyms::number_of(Kind kind, std::string_view value) {
    auto& known = known_[kind];
    const auto found = known.find(std::string(value));
    if (found != known.end()) {
        return found->second;
    }
    constexpr size_t kLong = 4;
    const uint32_t number = ++counts_[{kind, std::min(value.size(), kLong)}];
    known.emplace(value, number);
    return number;
}

std::string Pseudonyms::address(const std::string& address) {
    constexpr size_t kSize = 6;
    if (address.size() != kSize || is_only(address, '\0') || is_only(address, '\xFF')) {
        return address;
    }
    // Of bytes that take one character in a block, as most bytes do.
    constexpr uint32_t kFirst = 0x20;
    constexpr uint32_t kBase = 64;
    std::string pseudonym;
    for (uint32_t number = number_of(Kind::Address, address); pseudonym.size() < kSize;
         number /= kBase) {
        pseudonym += static_cast<char>(kFirst + number % kBase);
    }
    pseudonym.back() = static_cast<char>((static_cast<unsigned char>(address.back()) & 0xC0U) | kFirst);
    return pseudonym;
}

std::string Pseudonyms::worded(Kind kind, std::string_view word, std::string_view text) {
    if (text.empty()) {
        return "";
    }
    const uint32_t number = number_of(kind, text);
    std::string pseudonym = std::string(word) + std::to_string(number);
    if (pseudonym.size() > text.size()) {
        return in_digits(number, text.size(), "xabcdefghijklmnopqrstuvwyz");
    }
    pseudonym.resize(text.size(), 'x');
    return pseudonym;
}

std::string Pseudonyms::name(std::string_view name) {
    return part_by_part(name, ';',
                        [this](std::string_view part) { return worded(Kind::Name, "Name", part); });
}

std::string Pseudonyms::title(std::string_view title) {
    return std::all_of(title.begin(), title.end(), is_digit) ? std::string(title)
                                                             : worded(Kind::Title, "Title", title);
}

std::string Pseudonyms::number(std::string_view number) {
    std::string pseudonym;
    for (const char c : number) {
        pseudonym += is_letter(c) ? 'x' : c;
    }
    const auto count = static_cast<size_t>(std::count_if(number.begin(), number.end(), is_digit));
    if (count == 0) {
        return pseudonym;
    }
    const std::string digits = in_digits(number_of(Kind::Number, number), count, "0123456789");
    auto digit = digits.begin();
    for (char& c : pseudonym) {
        c = is_digit(c) ? *digit++ : c;
    }
    return pseudonym;
}

std::string Pseudonyms::secret(std::string_view secret) {
    if (secret.empty() || is_only(secret, '\0')) {
        return std::string(secret);
    }
    const bool in_decimal = std::all_of(secret.begin(), secret.end(), is_digit);
    return in_digits(number_of(Kind::Secret, secret), secret.size(),
                     in_decimal ? "0123456789" : "xabcdefghijklmnopqrstuvwyz");
}

uint32_t Pseudonyms::passkey(uint32_t passkey) {
    constexpr uint32_t kBeyond = 1000000;
    return passkey == 0 ? 0 : number_of(Kind::Secret, std::to_string(passkey)) % kBeyond;
}

std::string Pseudonyms::contact_line(std::string_view line) {
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return masked(line);
    }
    const std::string_view property = line.substr(0, line.find_first_of(";:"));
    const std::string_view value = line.substr(colon + 1);
    const std::string head = masked(line.substr(0, colon + 1));
    if (property == "BEGIN" || property == "END" || property == "VERSION") {
        return std::string(line);
    }
    if (property == "TEL") {
        return head + number(value);
    }
    return head + (property == "N" || property == "FN" ? name(value) : masked(value));
}

std::string Pseudonyms::masked(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        size_t length = 0;
        while (length < text.size() && (is_letter(text[length]) || is_digit(text[length]))) {
            ++length;
        }
        const std::string_view word = text.substr(0, length);
        if (is_vcard_word(word)) {
            result += word;
        } else {
            for (const char c : word) {
                result += is_digit(c) ? '0' : 'x';
            }
        }
        result += text.substr(length, 1);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return result;
}

std::string Pseudonyms::advertised(std::string_view data) {
    // Assigned Numbers: the types of advertising data that hold a name, or whatever somebody likes.
    constexpr std::string_view kNames("\x08\x09", 2);
    constexpr std::string_view kData("\x16\x20\x21\xFF", 4);
    std::string result;
    while (!data.empty()) {
        const size_t length = static_cast<unsigned char>(data[0]);
        if (length < 2 || length >= data.size()) {
            // The zeros at the end, or no such structure.
            return result + this->data(data);
        }
        const std::string_view content = data.substr(2, length - 1);
        result += data.substr(0, 2);
        result += kNames.find(data[1]) != std::string_view::npos  ? name(content)
                  : kData.find(data[1]) != std::string_view::npos ? this->data(content)
                                                                  : std::string(content);
        data.remove_prefix(length + 1);
    }
    return result;
}

std::string Pseudonyms::data(std::string_view bytes) {
    // Three printable bytes in a row may well be numbers.
    constexpr size_t kShortestText = 4;
    std::string result;
    while (!bytes.empty()) {
        size_t length = 0;
        while (const size_t more = character(bytes.substr(length))) {
            length += more;
        }
        const std::string_view run = bytes.substr(0, length);
        result += length >= kShortestText ? name(run) : std::string(run);
        result += bytes.substr(length, 1);
        bytes.remove_prefix(std::min(length + 1, bytes.size()));
    }
    return result;
}

} // namespace trace
