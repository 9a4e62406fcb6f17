// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "verb.h"

#include <algorithm>
#include <sstream>

namespace sim {
namespace {

bool is_capital(char c) {
    return c >= 'A' && c <= 'Z';
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, separator);) {
        pieces.push_back(piece);
    }
    return pieces;
}

/// "a", "a or b", "a, b or c".
std::string alternatives(const std::vector<std::string>& words) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) {
            text += i + 1 == words.size() ? " or " : ", ";
        }
        text += words[i];
    }
    return text;
}

std::string in_quotes(const std::string& word) {
    return '"' + printable(word) + '"';
}

/// What hexadecimal digits stand for, blanks and dashes between them aside; false if it is something
/// else.
bool from_hex(const std::string& word, std::string& bytes) {
    std::string digits;
    std::copy_if(word.begin(), word.end(), std::back_inserter(digits),
                 [](char c) { return c != ' ' && c != '-' && c != ':'; });
    if (digits.size() % 2 != 0 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return false;
    }
    for (size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoul(digits.substr(i, 2), nullptr, 16));
    }
    return true;
}

long read_number(const std::string& name, const std::string& word, long low, long high) {
    const size_t first = word.size() > 1 && word[0] == '-' ? 1 : 0;
    const bool is_hex = word.rfind("0x", 0) == 0 && word.size() > 2;
    const bool is_decimal =
        !word.empty() && word.find_first_not_of("0123456789", first) == std::string::npos;
    const bool good = word.size() <= 10 &&
                      (is_decimal || (is_hex && word.find_first_not_of("0123456789abcdefABCDEF", 2) ==
                                                    std::string::npos));
    const long long number = good ? std::stoll(word, nullptr, is_hex ? 16 : 10) : 0;
    if (!good || number < low || number > high) {
        throw Refused(name + " is a number from " + std::to_string(low) + " to " +
                      std::to_string(high) + ", not " + in_quotes(word));
    }
    return static_cast<long>(number);
}

Octets16 read_uuid(const std::string& name, const std::string& word) {
    std::string bytes;
    const bool is_hex = from_hex(word, bytes);
    if (is_hex && bytes.size() == 2) {
        return uuid_from_16bit(static_cast<uint16_t>(static_cast<uint8_t>(bytes[0]) << 8 |
                                                     static_cast<uint8_t>(bytes[1])));
    }
    Octets16 uuid{};
    if (!is_hex || bytes.size() != uuid.size()) {
        throw Refused(name + " is a UUID of 4 or 32 hexadecimal digits, not " + in_quotes(word));
    }
    std::copy(bytes.begin(), bytes.end(), uuid.begin());
    return uuid;
}

} // namespace

// Patterns.

Verbs::Part Verbs::read_part(std::string text) {
    static const std::vector<std::pair<std::string, Kind>> kKinds{
        {"DEVICE", Kind::Device}, {"UUID", Kind::Uuid}, {"HEX", Kind::Hex},
        {"DIGITS", Kind::Digits}, {"TEXT", Kind::Text}, {"SECONDS", Kind::Seconds}};
    Part part;
    if (text.front() == '[' && text.back() == ']') {
        part.optional = true;
        text = text.substr(1, text.size() - 2);
    }
    const std::vector<std::string> sides = split(text, '=');
    part.name = sides.front();
    const auto kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& k) { return k.first == text; });
    if (kind != kKinds.end()) {
        part.kind = kind->second;
    } else if (sides.size() == 2) {
        part.kind = Kind::Number;
        const size_t dots = sides[1].find("..");
        part.low = std::stol(sides[1].substr(0, dots));
        part.high = std::stol(sides[1].substr(dots + 2));
    } else if (text.find('|') != std::string::npos) {
        part.kind = Kind::Choice;
        part.choices = split(text, '|');
    } else if (is_capital(text.front()) || part.optional) {
        throw std::logic_error("no parameter: " + text);
    }
    return part;
}

void Verbs::add(std::vector<Verb> verbs) {
    std::vector<Row> rows;
    for (Verb& verb : verbs) {
        Row row;
        for (const std::string& text : split(verb.pattern, ' ')) {
            row.parts.push_back(read_part(text));
        }
        row.verb = std::move(verb);
        rows.push_back(std::move(row));
    }
    // Kept apart: orders point to their verbs.
    rows_.push_back(std::move(rows));
}

std::vector<const Verbs::Row*> Verbs::all() const {
    std::vector<const Row*> rows;
    for (const std::vector<Row>& group : rows_) {
        for (const Row& row : group) {
            rows.push_back(&row);
        }
    }
    return rows;
}

std::string Verbs::usage(const Row& row) {
    std::string text;
    for (const Part& part : row.parts) {
        std::string name = part.name;
        if (part.kind == Kind::Number) {
            name += '(' + std::to_string(part.low) + ".." + std::to_string(part.high) + ')';
        }
        text += (text.empty() ? "" : " ") + (part.optional ? '[' + name + ']' : name);
    }
    return text;
}

/// What may stand at this position.
std::string Verbs::expected(const std::vector<const Row*>& rows, size_t position) {
    std::vector<std::string> names;
    bool may_end = false;
    for (const Row* row : rows) {
        if (position >= row->parts.size()) {
            may_end = true;
        } else if (std::find(names.begin(), names.end(), row->parts[position].name) == names.end()) {
            names.push_back(row->parts[position].name);
        }
    }
    if (may_end) {
        names.emplace_back("nothing more");
    }
    return alternatives(names);
}

/// A word that is meant as it is goes before a parameter.
std::vector<const Verbs::Row*> Verbs::narrowed(const std::vector<const Row*>& rows, size_t position,
                                               const std::string& word) {
    std::vector<const Row*> words;
    std::vector<const Row*> parameters;
    for (const Row* row : rows) {
        if (position < row->parts.size()) {
            const Part& part = row->parts[position];
            if (part.kind != Kind::Word) {
                parameters.push_back(row);
            } else if (part.name == word) {
                words.push_back(row);
            }
        }
    }
    return words.empty() ? parameters : words;
}

// Lines.

Order Verbs::parse(const std::vector<std::string>& words) const {
    std::vector<const Row*> rows = all();
    std::string before;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::vector<const Row*> rest = narrowed(rows, i, words[i]);
        if (rest.empty()) {
            throw Refused(before.empty() ? "there is no verb " + in_quotes(words[i]) + "; expected " +
                                               expected(rows, i) + " (help lists all)"
                                         : "after \"" + before + "\": expected " + expected(rows, i) +
                                               ", found " + in_quotes(words[i]));
        }
        rows = rest;
        before += (before.empty() ? "" : " ") + printable(words[i]);
    }
    const auto whole = std::find_if(rows.begin(), rows.end(), [&words](const Row* row) {
        return row->parts.size() <= words.size() || row->parts[words.size()].optional;
    });
    if (whole == rows.end()) {
        throw Refused("after \"" + before + "\": expected " + expected(rows, words.size()) +
                      ", found the end of the line");
    }
    Order order{&(*whole)->verb, {}};
    for (size_t i = 0; i < words.size(); ++i) {
        const Part& part = (*whole)->parts[i];
        if (part.kind != Kind::Word) {
            order.arguments.push_back(read(part, words[i]));
        }
    }
    return order;
}

Argument Verbs::read(const Part& part, const std::string& word) const {
    Argument argument;
    argument.text = word;
    switch (part.kind) {
    case Kind::Number:
        argument.number = read_number(part.name, word, part.low, part.high);
        break;
    case Kind::Choice:
        if (std::find(part.choices.begin(), part.choices.end(), word) == part.choices.end()) {
            throw Refused("expected " + alternatives(part.choices) + ", found " + in_quotes(word));
        }
        break;
    case Kind::Device:
        if (const Device* device = find_device(word)) {
            argument.address = device->address;
            break;
        }
        throw Refused("no device has the name or address " + in_quotes(word) + "; there are " +
                      known_devices());
    case Kind::Uuid:
        argument.uuid = read_uuid(part.name, word);
        break;
    case Kind::Hex:
        argument.text.clear();
        if (!from_hex(word, argument.text)) {
            throw Refused(part.name + " is two hexadecimal digits for each byte, not " +
                          in_quotes(word));
        }
        break;
    case Kind::Digits:
        if (word.empty() || word.find_first_not_of("0123456789*#+") != std::string::npos) {
            throw Refused(in_quotes(word) +
                          " is no telephone number: only digits, *, # and + may be in it");
        }
        break;
    case Kind::Seconds:
        argument.duration = to_duration(word);
        break;
    case Kind::Text:
    case Kind::Word:
        break;
    }
    return argument;
}

Device* Verbs::find_device(const std::string& word) const {
    for (Device& device : world_.devices) {
        if (device.name == word) {
            return &device;
        }
    }
    try {
        return world_.find(to_address(word));
    } catch (const std::invalid_argument&) {
        return nullptr;
    }
}

std::string Verbs::known_devices() const {
    constexpr size_t kShown = 12;
    std::vector<std::string> names;
    for (const Device& device : world_.devices) {
        if (names.size() == kShown) {
            names.push_back(std::to_string(world_.devices.size() - kShown) + " more");
            break;
        }
        names.push_back(in_quotes(device.name));
    }
    return names.empty() ? "none" : alternatives(names);
}

// For people.

std::vector<std::string> Verbs::continuations(const std::vector<std::string>& words) const {
    std::vector<const Row*> rows = all();
    for (size_t i = 0; i < words.size(); ++i) {
        rows = narrowed(rows, i, words[i]);
    }
    std::vector<std::string> candidates;
    for (const Row* row : rows) {
        if (words.size() >= row->parts.size()) {
            continue;
        }
        const Part& part = row->parts[words.size()];
        if (part.kind == Kind::Word) {
            candidates.push_back(part.name);
        } else if (part.kind == Kind::Choice) {
            candidates.insert(candidates.end(), part.choices.begin(), part.choices.end());
        } else if (part.kind == Kind::Device) {
            std::transform(world_.devices.begin(), world_.devices.end(), std::back_inserter(candidates),
                           [](const Device& device) { return device.name; });
        }
    }
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    return candidates;
}

std::vector<std::pair<std::string, std::string>>
Verbs::help(const std::vector<std::string>& words) const {
    std::vector<const Row*> rows = all();
    for (size_t i = 0; i < words.size(); ++i) {
        rows = narrowed(rows, i, words[i]);
    }
    std::vector<std::pair<std::string, std::string>> lines;
    lines.reserve(rows.size());
    for (const Row* row : rows) {
        lines.emplace_back(usage(*row), row->verb.help);
    }
    return lines;
}

} // namespace sim
