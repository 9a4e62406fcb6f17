// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is compared: each candidate is a program of its own with these two functions, a server and a
// client of it, of which the client is measured.
#ifndef VYM_BENCH_CANDIDATE_H
#define VYM_BENCH_CANDIDATE_H

#include "job.h"

#include <string>

namespace bench {

/// Serves one client after the other, until it is killed.
[[noreturn]] void serve(const Job& job);

/// Returns what Meter::report() says; empty when this candidate has no such workload.
std::string run(const Job& job);

} // namespace bench

#endif
