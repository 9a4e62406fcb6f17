// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "spoil.h"

#include "protocol/codec.h"

#include <algorithm>
#include <set>
#include <vector>

namespace sim {
namespace {

using protocol::Direction;
using protocol::Type;
using protocol::Value;
using Names = std::set<std::string_view>;

constexpr size_t kCountDigits = 4;
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

/// Where the four digits of each block's length stand.
std::vector<size_t> lengths_of(const protocol::Decoded& decoded, std::string_view event) {
    std::vector<size_t> places;
    for (auto value = decoded.values.begin(); value != decoded.values.end(); ++value) {
        if (value->field->type == Type::Block && !value->is_list) {
            const size_t place =
                protocol::encode(*decoded.found.message, {decoded.values.begin(), value}).size();
            if (place + kCountDigits <= event.size()) {
                places.push_back(place);
            }
        }
    }
    return places;
}

/// The fields that others name as what counts them. That of a record's length is named by none.
void add_names(const std::vector<Value>& values, Names& names) {
    for (const Value& value : values) {
        if (!value.field->count.empty() && value.field->type != Type::Choice) {
            names.insert(value.field->count);
        } else if (value.field->type == Type::Choice) {
            names.insert("length");
        }
        add_names(value.members, names);
    }
}

void add_counts(std::vector<Value>& values, const Names& names, std::vector<Value*>& counts) {
    for (Value& value : values) {
        if (value.members.empty() && names.count(value.field->name) > 0) {
            counts.push_back(&value);
        }
        add_counts(value.members, names, counts);
    }
}

/// Those that are fields of their own, anywhere.
std::vector<Value*> counts_of(std::vector<Value>& values) {
    Names names;
    std::vector<Value*> counts;
    add_names(values, names);
    add_counts(values, names, counts);
    return counts;
}

/// Where digits stand that are meant as such. Those in a text would be only another text.
std::vector<size_t> digits_of(std::string_view event) {
    const protocol::Found found = protocol::find(Direction::Event, event);
    std::vector<size_t> places;
    if (found) {
        const size_t begin = found.message->tag.size();
        const size_t end = std::min(event.size(), begin + found.message->minimum);
        for (size_t place = begin; place < end; ++place) {
            if (kHexDigits.find(event[place]) != std::string_view::npos) {
                places.push_back(place);
            }
        }
    }
    return places;
}

std::string four_digits(size_t number) {
    std::string digits(kCountDigits, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        *digit = kHexDigits[number % 16];
        number /= 16;
    }
    return digits;
}

Spoiled spoil_length(std::string_view event, size_t place, Random& random) {
    std::string digits;
    if (random.below(2) == 0) {
        const size_t length = std::stoul(std::string(event.substr(place, kCountDigits)), nullptr, 16);
        digits = four_digits(std::min<size_t>(0xFFFF, length + 1 + random.below(0xFFFF)));
    } else {
        for (size_t i = 0; i < kCountDigits; ++i) {
            digits += static_cast<char>('G' + random.below('z' - 'G'));
        }
    }
    std::string spoiled(event);
    spoiled.replace(place, kCountDigits, digits);
    return {spoiled, "says " + digits + " at byte " + std::to_string(place)};
}

} // namespace

Spoiled spoil_count(std::string_view event, Random& random) {
    protocol::Decoded decoded = protocol::decode(Direction::Event, event);
    if (!decoded.found) {
        return {};
    }
    const std::vector<size_t> lengths = lengths_of(decoded, event);
    const std::vector<Value*> counts = counts_of(decoded.values);
    if (lengths.empty() && counts.empty()) {
        return {};
    }
    const size_t choice = random.below(lengths.size() + counts.size());
    if (choice < lengths.size()) {
        return spoil_length(event, lengths[choice], random);
    }
    Value& count = *counts[choice - lengths.size()];
    // Just beyond the end is another mistake than far beyond.
    count.number += static_cast<uint32_t>(1 + random.below(random.below(2) == 0 ? 3 : 0xFF));
    return {protocol::encode(*decoded.found.message, decoded.values) + std::string(decoded.surplus),
            "says " + std::to_string(count.number) + " as " + std::string(count.field->name)};
}

bool has_count(std::string_view event) {
    protocol::Decoded decoded = protocol::decode(Direction::Event, event);
    return decoded.found && (!lengths_of(decoded, event).empty() || !counts_of(decoded.values).empty());
}

Spoiled spoil_digit(std::string_view event, Random& random) {
    static constexpr std::string_view kOthers = "GZgz:-+ ~.\r\n\xDC\xFF";
    const std::vector<size_t> places = digits_of(event);
    if (places.empty()) {
        return {};
    }
    const size_t place = places[random.below(places.size())];
    std::string spoiled(event);
    spoiled[place] = kOthers[random.below(kOthers.size())];
    return {spoiled, "has none at byte " + std::to_string(place)};
}

bool has_digit(std::string_view event) {
    return !digits_of(event).empty();
}

} // namespace sim
