// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture in numbers.
#ifndef VYMTRACE_STATS_H
#define VYMTRACE_STATS_H

#include "item.h"
#include "output.h"
#include "round_trips.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace trace {

/// Counts, rates, round trips and gaps of what it takes; prints them at the end.
class Stats : public Consumer {
public:
    struct Style {
        bool json = false;
        bool utc = false;
    };
    Stats(Output& out, Style style) : out_(out), style_(style) {}

    void take(const Item& item) override;
    void end() override;

    struct Count {
        protocol::Found found;
        bool is_command = false;
        uint64_t count = 0;
        uint64_t bytes = 0;
    };
    /// A time without anything.
    struct Gap {
        int64_t us = 0;
        int64_t begin_us = 0;
        /// The one that ends it.
        uint64_t record = 0;
    };
    struct Summary {
        uint64_t commands = 0;
        uint64_t events = 0;
        uint64_t unknown = 0;
        uint64_t bytes = 0;
        int64_t first_us = 0;
        int64_t last_us = 0;
        /// How often the clock went back.
        uint64_t steps_back = 0;
        /// The most frequent first.
        std::vector<Count> messages;
        std::vector<RoundTrips::Times> round_trips;
        /// The longest first.
        std::vector<Gap> gaps;
    };
    Summary summary() const;

private:
    void look_at_time(const Item& item);

    Output& out_;
    Style style_;
    Summary summary_;
    std::unordered_map<const protocol::Message*, Count> counts_;
    RoundTrips round_trips_;
};

} // namespace trace

#endif
