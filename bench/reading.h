// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// How fast a capture is read by vymtrace.
#ifndef VYM_BENCH_READING_H
#define VYM_BENCH_READING_H

#include <optional>
#include <string>
#include <vector>

namespace bench {

/// One view of vymtrace.
struct Reading {
    std::string label;
    /// What selects the view; empty for text.
    std::string option;
    /// CPU time for each byte of the capture, one of each round.
    std::vector<double> ns_of_rounds;
    double resident_kib = 0;
    /// How much more memory a capture of 2 GB takes; not known of a quick run.
    std::optional<double> grown_kib;

    [[nodiscard]] double median_ns() const;
};

/// The median; 0 of nothing.
double middle_of(std::vector<double> values);

std::vector<Reading> readings();

/// Writes a capture of notifications to the program's standard input, and adds what it used. False when
/// it failed.
bool measure(const std::string& program, int processor, long megabytes, Reading* reading);

} // namespace bench

#endif
