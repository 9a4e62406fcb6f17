// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vcard_lines.h"

#include "text_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace sim {
namespace {

constexpr const char* kQuotedPrintable = "QUOTED-PRINTABLE";

std::string capitals(std::string_view text) {
    std::string all(text);
    std::transform(all.begin(), all.end(), all.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return all;
}

/// Where `mark` stands outside of quotation marks, or npos.
size_t find_unquoted(std::string_view text, char mark) {
    bool is_quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        is_quoted = is_quoted != (text[i] == '"');
        if (text[i] == mark && !is_quoted) {
            return i;
        }
    }
    return std::string_view::npos;
}

/// What stands before `mark`; the text goes on behind it.
std::string_view take_until(std::string_view& text, char mark) {
    const size_t end = std::min(find_unquoted(text, mark), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

bool is_quoted_printable(std::string_view head) {
    return capitals(head).find(kQuotedPrintable) != std::string::npos;
}

int hex_digit(char c) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    const size_t at = kDigits.find(c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

int base64_digit(char c) {
    static constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const size_t at = kDigits.find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

std::optional<std::string> from_quoted_printable(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '=') {
            decoded += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? hex_digit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? hex_digit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
}

std::optional<std::string> from_base64(std::string_view text) {
    std::string decoded;
    uint32_t bits = 0;
    size_t digits = 0;
    size_t fill = 0;
    for (const char c : text) {
        if (c == ' ' || c == '\t') {
            continue;
        }
        const int digit = base64_digit(c);
        fill += c == '=' ? 1 : 0;
        if (c != '=' && (digit < 0 || fill > 0)) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<uint32_t>(std::max(digit, 0));
        if (++digits % 4 == 0) {
            for (const unsigned shift : {16U, 8U, 0U}) {
                decoded += static_cast<char>(bits >> shift & 0xFF);
            }
        }
    }
    if (digits % 4 != 0 || fill > 2) {
        return std::nullopt;
    }
    decoded.resize(decoded.size() - fill);
    return decoded;
}

} // namespace

bool VcardLine::has(std::string_view parameter) const {
    return std::find(parameters.begin(), parameters.end(), parameter) != parameters.end();
}

VcardReader::VcardReader(std::string file, std::string_view text)
    : file_(std::move(file)), rest_(text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (rest_.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        rest_.remove_prefix(kByteOrderMark.size());
    }
}

void VcardReader::fail(unsigned line, const std::string& problem) const {
    throw FileError(file_, line, problem);
}

std::string_view VcardReader::physical_line() {
    const size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    ++line_;
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

bool VcardReader::begins_continuation() const {
    return !rest_.empty() && (rest_.front() == ' ' || rest_.front() == '\t');
}

std::string VcardReader::logical_line() {
    std::string line(physical_line());
    // A line break inside an encoded text is marked at its end instead of behind it.
    const size_t colon = find_unquoted(line, ':');
    if (colon != std::string::npos && is_quoted_printable(std::string_view(line).substr(0, colon))) {
        while (!line.empty() && line.back() == '=' && !rest_.empty()) {
            line.pop_back();
            line += physical_line();
        }
        return line;
    }
    while (begins_continuation()) {
        std::string_view more = physical_line();
        // In 2.1 lines are folded where a space was, in 3.0 anywhere.
        more.remove_prefix(version_3_ ? 1 : 0);
        line += more;
    }
    return line;
}

bool VcardReader::next(VcardLine& line) {
    std::string text;
    do {
        if (rest_.empty()) {
            return false;
        }
        line.line = line_ + 1;
        text = logical_line();
    } while (text.find_first_not_of(" \t") == std::string::npos);
    const size_t colon = find_unquoted(text, ':');
    if (colon == std::string::npos) {
        fail(line.line, in_quotes(text) + " is no property; expected NAME:VALUE");
    }
    line.value = text.substr(colon + 1);
    take_apart(std::string_view(text).substr(0, colon), line);
    return true;
}

void VcardReader::take_apart(std::string_view head, VcardLine& line) const {
    std::string_view name = take_until(head, ';');
    const size_t group = name.find('.');
    name.remove_prefix(group == std::string_view::npos ? 0 : group + 1);
    line.property = capitals(name);
    line.parameters.clear();
    while (!head.empty()) {
        std::string_view values = take_until(head, ';');
        const size_t equals = find_unquoted(values, '=');
        values.remove_prefix(equals == std::string_view::npos ? 0 : equals + 1);
        while (!values.empty()) {
            std::string value = capitals(take_until(values, ','));
            value.erase(std::remove(value.begin(), value.end(), '"'), value.end());
            line.parameters.push_back(std::move(value));
        }
    }
}

std::string VcardReader::text_of(const VcardLine& line) const {
    std::string text = line.value;
    if (line.has(kQuotedPrintable)) {
        std::optional<std::string> decoded = from_quoted_printable(text);
        if (!decoded) {
            fail(line.line, line.property +
                                ": no quoted-printable text; expected two hexadecimal digits behind "
                                "each \"=\"");
        }
        text = std::move(*decoded);
    }
    if (!is_utf8(text)) {
        fail(line.line, line.property + ": " + in_quotes(text) + " is no UTF-8 text; expected UTF-8");
    }
    return text;
}

std::vector<std::string> VcardReader::components_of(const VcardLine& line) const {
    const std::string text = text_of(line);
    std::vector<std::string> all(1);
    for (size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        const bool is_escape =
            text[i] == '\\' && next != '\0' &&
            std::string_view(version_3_ ? ";,\\nN" : ";\\").find(next) != std::string_view::npos;
        if (is_escape) {
            all.back() += next == 'n' || next == 'N' ? ' ' : next;
            ++i;
        } else if (text[i] == ';') {
            all.emplace_back();
        } else {
            // A name is one line wherever it is shown.
            all.back() += static_cast<uint8_t>(text[i]) < 0x20 ? ' ' : text[i];
        }
    }
    return all;
}

std::string VcardReader::bytes_of(const VcardLine& line, size_t most) const {
    std::optional<std::string> bytes = from_base64(line.value);
    if (!bytes) {
        fail(line.line, line.property + ": no base 64; expected groups of four digits of it");
    }
    if (bytes->size() > most) {
        fail(line.line, line.property + ": " + std::to_string(bytes->size()) +
                            " bytes are too many; expected at most " + std::to_string(most));
    }
    return std::move(*bytes);
}

} // namespace sim
