// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What one measuring process does: as which end, with which workload, how often.
#ifndef VYM_BENCH_JOB_H
#define VYM_BENCH_JOB_H

#include <string>
#include <string_view>

namespace bench {

struct Job {
    /// "event", "flood" and the other names of workload.h, "command", "round-trip", "start".
    std::string workload;
    /// Which form of the candidate, in words, such as "closed" for a library without its capture.
    std::string variant;
    /// Where the socket is, and files that the candidate writes.
    std::string directory;
    /// Messages to be measured; those before them, to warm up, come on top.
    long count = 0;

    [[nodiscard]] bool has(std::string_view word) const {
        return variant.find(word) != std::string::npos;
    }
    [[nodiscard]] std::string socket_path() const { return directory + "/vym_socket"; }
};

/// Messages before the measured ones.
constexpr long kWarmUp = 200;

} // namespace bench

#endif
