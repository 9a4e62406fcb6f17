// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is run, and what is wanted of the results.
#ifndef VYM_BENCH_PLAN_H
#define VYM_BENCH_PLAN_H

#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct Run {
    std::string_view workload;
    /// Which program, and which form of it.
    std::string_view candidate;
    std::string_view variant;
    /// As the table shows it.
    std::string_view label;
    long count;
};

/// In groups by workload.
const std::vector<Run>& plan();

std::string_view title_of(std::string_view workload);

/// CPU time of one run in parts of that of another.
struct Goal {
    std::string_view text;
    std::string_view workload;
    std::string_view label;
    std::string_view against_workload;
    std::string_view against;
    double at_most;
    /// Instructions instead of CPU time, where they were counted: both runs do the same.
    bool by_instructions = false;
};
const std::vector<Goal>& goals();

} // namespace bench

#endif
