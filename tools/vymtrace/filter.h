// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Which commands and events are wanted.
#ifndef VYMTRACE_FILTER_H
#define VYMTRACE_FILTER_H

#include "item.h"
#include "times.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace trace {

/// An item has to fit every condition that is set, and of a list one entry.
struct Conditions {
    /// As the protocol's description names them.
    std::vector<std::string> profiles;
    /// What a command (behind AT#) or an event begins with.
    std::vector<std::string> tags;
    std::vector<std::string> names;
    /// Six bytes each, address[0] first.
    std::vector<std::string> addresses;
    std::optional<protocol::Direction> direction;
    std::optional<TimeLimit> since;
    std::optional<TimeLimit> until;
    /// Times of day are in UTC.
    bool utc = false;
};

/// Reads 00:1A:7D:DA:71:13, also with - or nothing between the bytes, in Conditions' order.
std::optional<std::string> parse_address(const std::string& text);

class Filter {
public:
    explicit Filter(Conditions conditions) : conditions_(std::move(conditions)) {}

    bool wants(const Item& item);
    /// Before anything else was looked at of it: whether its time and direction are wanted.
    bool may_want(const capture::Text& text);

private:
    Conditions conditions_;
    bool resolved_ = false;
    int64_t since_us_ = INT64_MIN;
    int64_t until_us_ = INT64_MAX;
};

} // namespace trace

#endif
