// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// How long the application waited for answers.
#ifndef VYMTRACE_ROUND_TRIPS_H
#define VYMTRACE_ROUND_TRIPS_H

#include "item.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace trace {

/// A command whose caller waits in the library until the event comes.
struct Request {
    std::string_view profile;
    std::string_view command;
    std::string_view event;
};

const std::vector<Request>& requests();

class RoundTrips {
public:
    RoundTrips();

    void take(const Item& item);

    struct Times {
        const Request* request = nullptr;
        const protocol::Message* command = nullptr;
        const protocol::Message* event = nullptr;
        uint64_t answered = 0;
        /// The next request came first, or the file's end.
        uint64_t unanswered = 0;
        int64_t shortest_us = 0;
        int64_t longest_us = 0;
        /// Of any number of damaged times.
        double sum_us = 0;
        std::optional<int64_t> asked_us;
    };
    /// Of the requests that were made.
    std::vector<Times> made() const;

private:
    std::vector<Times> all_;
};

} // namespace trace

#endif
