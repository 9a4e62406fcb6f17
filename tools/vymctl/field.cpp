// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "field.h"

#include "console/words.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <fstream>
#include <iterator>

namespace vymctl {
namespace {

// 00000000-0000-1000-8000-00805F9B34FB (Core Specification, Vol 3, Part B, 2.5.1).
constexpr std::array<uint8_t, 16> kBaseUuid{0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                            0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB};

std::optional<int64_t> to_number(std::string_view text) {
    const bool negative = !text.empty() && text[0] == '-';
    text.remove_prefix(negative ? 1 : 0);
    const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    text.remove_prefix(hexadecimal ? 2 : 0);
    int64_t value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, hexadecimal ? 16 : 10);
    if (text.empty() || text[0] == '-' || error != std::errc() || end != text.data() + text.size() ||
        value > 0xFFFFFFFF) {
        return std::nullopt;
    }
    return static_cast<int64_t>(negative ? -value : value);
}

void read_words(Field& field, std::string_view what) {
    int64_t next = 0;
    while (!what.empty()) {
        const size_t end = std::min(what.find('|'), what.size());
        const std::string_view part = what.substr(0, end);
        const size_t colon = part.find(':');
        if (colon != std::string_view::npos) {
            const std::optional<int64_t> number = to_number(part.substr(colon + 1));
            if (!number) {
                throw std::logic_error("no number in \"" + std::string(part) + '"');
            }
            next = *number;
        }
        field.words.emplace_back(part.substr(0, colon), next++);
        what.remove_prefix(std::min(end + 1, what.size()));
    }
}

void read_domain(Field& field, std::string_view what) {
    const size_t dots = what.find("..");
    if (what == "text") {
        field.kind = Kind::Text;
    } else if (what == "list") {
        field.kind = Kind::List;
    } else if (what == "signed") {
        field.low = -128;
    } else if (dots != std::string_view::npos) {
        const auto low = to_number(what.substr(0, dots));
        const auto high = to_number(what.substr(dots + 2));
        if (!low || !high) {
            throw std::logic_error("no range: \"" + std::string(what) + '"');
        }
        field.low = *low;
        field.high = *high;
    } else if (what.find('|') != std::string_view::npos || what.find(':') != std::string_view::npos) {
        field.kind = Kind::Words;
        read_words(field, what);
    } else {
        throw std::logic_error("what is \"" + std::string(what) + "\"?");
    }
}

[[noreturn]] void complain(const Field& field, const std::string& word) {
    throw Usage(field.name + " is " + field.domain() + ", not \"" + console::printable(word) + '"');
}

std::string content_of(const Field& field, const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw Usage(field.name + ": the file \"" + console::printable(path) + "\" cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

Value read_bytes(const Field& field, const std::string& word) {
    Value value;
    const bool from_file = word.size() > 1 && word[0] == '@';
    if (from_file) {
        value.bytes = content_of(field, word.substr(1));
    } else if (field.kind == Kind::Text) {
        value.bytes = word;
    } else if (const auto bytes = from_hex(word)) {
        value.bytes = *bytes;
    } else {
        complain(field, word);
    }
    const int64_t size = static_cast<int64_t>(value.bytes.size());
    if (size < field.low || size > field.high) {
        throw Usage(field.name + " has " +
                    (field.low == field.high ? std::to_string(field.low)
                                             : "at most " + std::to_string(field.high)) +
                    " bytes, not " + std::to_string(size));
    }
    if (field.kind == Kind::Text && value.bytes.find('\0') != std::string::npos) {
        throw Usage(field.name + " must not have a NUL in it");
    }
    return value;
}

Value read_number(const Field& field, const std::string& word) {
    Value value;
    for (const auto& [name, number] : field.words) {
        if (name == word) {
            value.number = number;
            return value;
        }
    }
    const std::optional<int64_t> number = to_number(word);
    if (!number || *number < field.low || *number > field.high) {
        complain(field, word);
    }
    value.number = *number;
    return value;
}

} // namespace

std::string Field::domain() const {
    switch (kind) {
    case Kind::Address:
        return "an address such as 2A:41:6E:6E:61:01";
    case Kind::Uuid:
        return "a UUID of 4 or 32 digits";
    case Kind::Text:
        return "a text";
    case Kind::Bytes:
        return "hexadecimal digits or @FILE";
    case Kind::List:
        return "a list";
    case Kind::Words: {
        std::string text;
        for (const auto& entry : words) {
            text += (text.empty() ? "" : "|") + entry.first;
        }
        return text;
    }
    case Kind::Number:
        break;
    }
    return "a number from " + std::to_string(low) + " to " + std::to_string(high);
}

Json Field::name_of(int64_t number) const {
    for (const auto& [word, value] : words) {
        if (value == number) {
            return word;
        }
    }
    // A signed byte that travels as an unsigned one.
    return low == -128 && number > 127 ? number - 256 : number;
}

Field read_field(std::string_view text, FieldType type) {
    Field field;
    field.kind = type.kind;
    field.low = type.low;
    field.high = type.high;
    const size_t question = text.find('?');
    if (question != std::string_view::npos) {
        field.fallback = std::string(text.substr(question + 1));
        text = text.substr(0, question);
    }
    const size_t equals = text.find('=');
    field.name = text.substr(0, equals);
    if (equals != std::string_view::npos) {
        read_domain(field, text.substr(equals + 1));
    }
    return field;
}

std::vector<std::string> split_row(std::string_view row) {
    std::vector<std::string> parts;
    while (!row.empty()) {
        const size_t end = std::min(row.find(' '), row.size());
        if (end > 0) {
            parts.emplace_back(row.substr(0, end));
        }
        row.remove_prefix(std::min(end + 1, row.size()));
    }
    return parts;
}

Value read_value(const Field& field, const std::string& word) {
    Value value;
    if (field.kind == Kind::Address) {
        const auto address = to_address(word);
        if (!address) {
            complain(field, word);
        }
        value.address = *address;
        return value;
    }
    if (field.kind == Kind::Uuid) {
        const auto uuid = to_uuid(word);
        if (!uuid) {
            complain(field, word);
        }
        value.uuid = *uuid;
        return value;
    }
    return field.kind == Kind::Text || field.kind == Kind::Bytes ? read_bytes(field, word)
                                                                 : read_number(field, word);
}

std::string to_hex(std::string_view bytes) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
    return text;
}

std::optional<std::string> from_hex(std::string_view digits) {
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    for (size_t i = 0; i < digits.size(); i += 2) {
        unsigned byte = 0;
        const char* first = digits.data() + i;
        if (std::from_chars(first, first + 2, byte, 16).ptr != first + 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string to_text(const bt_bdaddr_t& address) {
    std::string text;
    for (int i = 5; i >= 0; --i) {
        const char byte = static_cast<char>(address.address[i]);
        text += (text.empty() ? "" : ":") + to_hex({&byte, 1});
    }
    return text;
}

std::optional<bt_bdaddr_t> to_address(std::string_view text) {
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool separator = text.size() == 17 && i % 3 == 2;
        if (separator && text[i] != ':' && text[i] != '-') {
            return std::nullopt;
        }
        digits += separator ? "" : std::string(1, text[i]);
    }
    const auto bytes = from_hex(digits);
    if (!bytes || bytes->size() != 6) {
        return std::nullopt;
    }
    bt_bdaddr_t address{};
    std::reverse_copy(bytes->begin(), bytes->end(), address.address);
    return address;
}

std::string to_text(const bt_uuid_t& uuid) {
    const std::string digits = to_hex({reinterpret_cast<const char*>(uuid.uu), sizeof uuid.uu});
    std::array<uint8_t, 16> base{};
    std::copy(std::begin(uuid.uu), std::end(uuid.uu), base.begin());
    base[2] = base[3] = 0;
    if (base == kBaseUuid) {
        return digits.substr(4, 4);
    }
    return digits.substr(0, 8) + '-' + digits.substr(8, 4) + '-' + digits.substr(12, 4) + '-' +
           digits.substr(16, 4) + '-' + digits.substr(20);
}

std::optional<bt_uuid_t> to_uuid(std::string_view text) {
    std::string digits(text.substr(text.size() == 6 && (text.substr(0, 2) == "0x") ? 2 : 0));
    if (digits.size() == 36) {
        for (const size_t dash : {23U, 18U, 13U, 8U}) {
            if (digits[dash] != '-') {
                return std::nullopt;
            }
            digits.erase(dash, 1);
        }
    }
    const auto bytes = from_hex(digits);
    if (!bytes || (bytes->size() != 2 && bytes->size() != 16)) {
        return std::nullopt;
    }
    bt_uuid_t uuid{};
    std::copy(kBaseUuid.begin(), kBaseUuid.end(), uuid.uu);
    std::copy(bytes->begin(), bytes->end(), uuid.uu + (bytes->size() == 2 ? 2 : 0));
    return uuid;
}

std::string dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string to_word(const Json& value) {
    if (value.is_array()) {
        std::string text;
        for (const Json& entry : value) {
            text += (text.empty() ? "" : ",") + to_word(entry);
        }
        return text.empty() ? "-" : text;
    }
    if (!value.is_string()) {
        return dump(value);
    }
    const auto& text = value.get_ref<const std::string&>();
    const bool plain = !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 ||
               std::string_view("+-*#.:_/@").find(static_cast<char>(c)) != std::string_view::npos;
    });
    return plain ? text : dump(value);
}

} // namespace vymctl
