// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "filter.h"

#include <algorithm>

namespace trace {
namespace {

template <typename Text>
bool contains(const std::vector<std::string>& list, const Text& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

bool is_address(protocol::Type type) {
    return type == protocol::Type::Address || type == protocol::Type::RawAddress ||
           type == protocol::Type::BigAddress;
}

bool has_address(const std::vector<protocol::Value>& values, const std::vector<std::string>& wanted) {
    return std::any_of(values.begin(), values.end(), [&wanted](const protocol::Value& value) {
        return (is_address(value.field->type) && contains(wanted, value.bytes)) ||
               has_address(value.members, wanted);
    });
}

bool begins_with_one_of(std::string_view text, const std::vector<std::string>& beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(), [text](const std::string& beginning) {
        return text.substr(0, beginning.size()) == beginning;
    });
}

int hex_digit(char c) {
    constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
    const size_t at = kDigits.find(c);
    return at == std::string_view::npos ? -1 : static_cast<int>(at < 16 ? at : at - 6);
}

} // namespace

std::optional<std::string> parse_address(const std::string& text) {
    constexpr size_t kDigits = 12;
    std::string digits;
    for (const char c : text) {
        const bool between_bytes = digits.size() % 2 == 0 && !digits.empty();
        if (hex_digit(c) >= 0) {
            digits += static_cast<char>(hex_digit(c));
        } else if (!between_bytes || (c != ':' && c != '-')) {
            return std::nullopt;
        }
    }
    if (digits.size() != kDigits) {
        return std::nullopt;
    }
    std::string address;
    for (size_t i = kDigits; i > 0; i -= 2) {
        address += static_cast<char>(digits[i - 2] * 16 + digits[i - 1]);
    }
    return address;
}

bool Filter::may_want(const capture::Text& text) {
    if (!resolved_) {
        const auto limit = [&](const std::optional<TimeLimit>& given, int64_t otherwise) {
            return given ? resolve(*given, text.time_us, conditions_.utc) : otherwise;
        };
        since_us_ = limit(conditions_.since, INT64_MIN);
        until_us_ = limit(conditions_.until, INT64_MAX);
        resolved_ = true;
    }
    const bool direction_fits =
        !conditions_.direction ||
        (*conditions_.direction == protocol::Direction::Command) == text.is_command;
    return direction_fits && text.time_us >= since_us_ && text.time_us <= until_us_;
}

bool Filter::wants(const Item& item) {
    const protocol::Found& found = item.found();
    if (!conditions_.profiles.empty() &&
        (!found || !contains(conditions_.profiles, found.profile->name))) {
        return false;
    }
    if (!conditions_.names.empty() && (!found || !contains(conditions_.names, found.message->name))) {
        return false;
    }
    if (!conditions_.tags.empty() && !begins_with_one_of(item.body(), conditions_.tags)) {
        return false;
    }
    return conditions_.addresses.empty() || has_address(item.decoded().values, conditions_.addresses);
}

} // namespace trace
