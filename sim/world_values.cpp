// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "world_values.h"

#include <algorithm>

namespace sim {
namespace {

using Kind = DocumentValue::Kind;

int hex_digit(char c) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    const size_t at = kDigits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

bool is_hex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return hex_digit(c) >= 0; });
}

/// Of an even number of digits.
std::string bytes_of(std::string_view digits) {
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(hex_digit(digits[i]) * 16 + hex_digit(digits[i + 1]));
    }
    return bytes;
}

/// Without what stands at the places where `form` has something else than an x; empty when it stands
/// elsewhere.
std::string without_marks(std::string_view text, std::string_view form) {
    std::string digits;
    if (text.size() != form.size()) {
        return digits;
    }
    for (size_t i = 0; i < form.size(); ++i) {
        if (form[i] != 'x' && text[i] != form[i]) {
            return {};
        }
        if (form[i] == 'x') {
            digits += text[i];
        }
    }
    return is_hex(digits) ? digits : std::string();
}

std::string words_for(const Names& names) {
    std::string all;
    for (const auto& name : names) {
        all += (all.empty() ? "" : ", ") + ('"' + std::string(name.first) + '"');
    }
    return all;
}

Octets16 octets_of(std::string_view digits) {
    const std::string bytes = bytes_of(digits);
    Octets16 octets{};
    std::transform(bytes.begin(), bytes.end(), octets.begin(),
                   [](char c) { return static_cast<uint8_t>(c); });
    return octets;
}

} // namespace

// Places.

Place Place::item(size_t index) const {
    return {file, value.items[index], path + '[' + std::to_string(index) + ']'};
}

Place Place::member(const DocumentMember& member) const {
    return {file, member.value, path + (path.empty() ? "" : ".") + printable(member.key)};
}

void Place::fail(const std::string& problem) const {
    throw FileError(file, value.line, path + (path.empty() ? "" : ": ") + problem);
}

void Place::refuse(const std::string& is_no, const std::string& expected) const {
    fail(value.description() + " is no " + is_no + "; expected " + expected);
}

const DocumentValue& Place::list() const {
    if (value.kind != Kind::List) {
        refuse("list", "one in square brackets");
    }
    if (value.items.size() > kLongestList) {
        fail("a list of " + std::to_string(value.items.size()) + " is too long; expected at most " +
             std::to_string(kLongestList));
    }
    return value;
}

const std::string& Place::text() const {
    if (value.kind != Kind::Text) {
        refuse("text", "one in quotation marks");
    }
    return value.text;
}

int64_t Place::number(int64_t low, int64_t high) const {
    if (value.kind != Kind::Integer || value.integer < low || value.integer > high) {
        // One too large for any type is read as a fraction.
        const bool is_number =
            value.kind == Kind::Integer ||
            (value.kind == Kind::Fraction && value.text.find_first_of(".eE") == std::string::npos);
        const std::string range =
            "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
        if (is_number) {
            fail(value.text + " is out of range; expected " + range);
        }
        refuse("whole number", range);
    }
    return value.integer;
}

std::string Place::bytes(size_t most) const {
    std::string digits = text();
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    if (digits.size() % 2 != 0 || !is_hex(digits)) {
        refuse("bytes", "pairs of hexadecimal digits as in \"00 4A\", or { \"text\": ... }");
    }
    if (digits.size() / 2 > most) {
        fail(std::to_string(digits.size() / 2) + " bytes are too many; expected at most " +
             std::to_string(most));
    }
    return bytes_of(digits);
}

// Values.

void read(const Place& place, bool& value) {
    if (place.value.kind != Kind::Boolean) {
        place.refuse("choice", "true or false");
    }
    value = place.value.boolean;
}

void read(const Place& place, Address& value) {
    const std::string digits = without_marks(place.text(), "xx:xx:xx:xx:xx:xx");
    if (digits.empty()) {
        place.refuse("address", "six bytes as in \"00:1A:7D:DA:71:13\"");
    }
    value = to_address(digits);
}

void read(const Place& place, Text wanted) {
    const std::string& text = place.text();
    const auto is_control = [](char c) { return static_cast<uint8_t>(c) < 0x20; };
    if (std::any_of(text.begin(), text.end(), is_control)) {
        place.fail(place.value.description() + " has a control character; expected printable text");
    }
    if (text.size() > wanted.most) {
        place.fail(std::to_string(text.size()) + " bytes are too many; expected at most " +
                   std::to_string(wanted.most));
    }
    wanted.value = text;
}

void read(const Place& place, TelephoneNumber wanted) {
    const std::string& text = place.text();
    if (text.size() > kLongestName || text.find_first_not_of("0123456789*#+") != std::string::npos) {
        place.refuse("telephone number", "digits, *, # and +");
    }
    wanted.value = text;
}

void read(const Place& place, Bytes wanted) {
    if (place.value.kind != Kind::Object) {
        wanted.value = place.bytes(wanted.most);
        return;
    }
    const std::vector<DocumentMember>& members = place.value.members;
    if (members.size() != 1 || members.front().key != "text") {
        place.refuse("value", "\"text\" as its only key, or hexadecimal digits");
    }
    const Place text = place.member(members.front());
    if (text.text().size() > wanted.most) {
        text.fail(std::to_string(text.text().size()) + " bytes are too many; expected at most " +
                  std::to_string(wanted.most));
    }
    wanted.value = text.text();
}

void read(const Place& place, Uuid wanted) {
    const std::string& text = place.text();
    const std::string full = without_marks(text, "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
    if (!full.empty()) {
        wanted.value = octets_of(full);
    } else if (text.size() == 4 && is_hex(text)) {
        wanted.value = uuid_from_16bit(static_cast<uint16_t>(std::stoul(text, nullptr, 16)));
    } else {
        place.refuse("UUID", "\"180D\" or \"0000180D-0000-1000-8000-00805F9B34FB\"");
    }
}

void read(const Place& place, HexOctets wanted) {
    const std::string& text = place.text();
    if (text.size() != 2 * wanted.value.size() || !is_hex(text)) {
        place.refuse("block of sixteen bytes", "32 hexadecimal digits");
    }
    wanted.value = octets_of(text);
}

void read(const Place& place, const Delay& wanted) {
    if (place.value.kind == Kind::Null) {
        wanted.value.reset();
    } else {
        wanted.value = std::chrono::milliseconds(place.number(0, wanted.most_ms));
    }
}

uint64_t hex_number(const Place& place, unsigned digits) {
    constexpr std::string_view kPrefix = "0x";
    const std::string& text = place.text();
    const std::string_view number =
        std::string_view(text).substr(std::min(kPrefix.size(), text.size()));
    if (text.substr(0, kPrefix.size()) != kPrefix || number.empty() || number.size() > digits ||
        !is_hex(number)) {
        place.refuse("number", "\"0x\" and up to " + std::to_string(digits) + " hexadecimal digits");
    }
    return std::stoull(std::string(number), nullptr, 16);
}

unsigned named_value(const Place& place, const Names& names) {
    const std::string& text = place.text();
    const auto it =
        std::find_if(names.begin(), names.end(), [&text](const auto& n) { return n.first == text; });
    if (it == names.end()) {
        place.fail(place.value.description() + " is not known here; expected " +
                   (names.size() > 1 ? "one of " : "") + words_for(names));
    }
    return it->second;
}

} // namespace sim
