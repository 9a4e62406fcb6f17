// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Runs a candidate's server and client, and counts what the client has used for each message.
#ifndef VYM_BENCH_MEASURE_H
#define VYM_BENCH_MEASURE_H

#include "plan.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// For each message, but for the memory.
struct Cost {
    double cpu_ns = 0;
    double wall_ns = 0;
    double allocations = 0;
    double resident_kib = 0;
    double grown_kib = 0;
};

class Bench {
public:
    /// The programs are in `programs`; sockets and captures are made in `directory`. Everything runs on
    /// one processor, the last.
    Bench(std::string programs, std::string directory);

    [[nodiscard]] bool has(std::string_view candidate) const;

    /// Nothing when it failed; what failed has said so.
    [[nodiscard]] std::optional<Cost> measure(const Run& run, long count) const;

    /// Instructions outside the kernel, counted by valgrind; nothing without it.
    [[nodiscard]] std::optional<double> instructions(const Run& run) const;

    /// Counted by strace; nothing without it.
    [[nodiscard]] std::optional<double> system_calls(const Run& run) const;

    [[nodiscard]] int processor() const { return processor_; }

private:
    /// For each message, from two runs of different length. The last word of `under` is followed by the
    /// name of the log; `counted` finds the figure in its text, -1 when it is not there.
    [[nodiscard]] std::optional<double>
    difference(const Run& run, const std::vector<std::string>& under,
               const std::function<double(const std::string& log)>& counted) const;
    [[nodiscard]] std::string run_client(const Run& run, long count,
                                         const std::vector<std::string>& under) const;

    std::string programs_;
    std::string directory_;
    int processor_;
    bool has_strace_;
    bool has_valgrind_;
};

} // namespace bench

#endif
