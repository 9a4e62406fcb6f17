// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What was measured, as a table and as JSON.
#ifndef VYM_BENCH_RESULTS_H
#define VYM_BENCH_RESULTS_H

#include "measure.h"
#include "plan.h"
#include "reading.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace bench {

struct Row {
    const Run* run = nullptr;
    /// One of each round.
    std::vector<Cost> rounds;
    std::optional<double> instructions;
    std::optional<double> system_calls;

    /// Of each member by itself.
    [[nodiscard]] Cost median() const;
};

struct Size {
    std::string label;
    long text = 0;
    long data = 0;
    long bss = 0;
};

/// The sizes that binutils' size gives; nothing when it cannot read the file.
std::optional<Size> size_of(const std::string& label, const std::string& file);

/// A goal and what was reached of it.
struct Verdict {
    std::string text;
    double reached = 0;
    double at_most = 0;
    [[nodiscard]] bool met() const { return reached <= at_most; }
};

struct Results {
    std::vector<Row> rows;
    std::vector<Reading> readings;
    std::vector<Size> sizes;
    std::vector<Verdict> verdicts;
};

/// Fills in the verdicts of all goals whose runs are there.
void judge(Results* results);

std::string table(const Results& results);
nlohmann::json to_json(const Results& results);

} // namespace bench

#endif
