// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What lasts: calls, streams, connections.
#ifndef VYMTRACE_BARS_H
#define VYMTRACE_BARS_H

#include "item.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace trace {

struct Bar {
    std::string_view profile;
    std::string_view kind;
    int64_t begin_us = 0;
    int64_t end_us = 0;
    /// Which of the items has begun it, counted from 0.
    size_t item = 0;
};

class Bars {
public:
    /// What comes from the events must come in their order.
    void take(const Item& item, size_t number);

    /// With what is still going on, up to the last item.
    std::vector<Bar> all() const;

private:
    using Key = std::pair<std::string_view, std::string>;

    std::vector<Bar> ended_;
    /// By kind, and by what tells one of a kind from others.
    std::map<Key, Bar> open_;
    int64_t last_us_ = 0;
};

} // namespace trace

#endif
