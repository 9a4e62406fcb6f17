// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The numbers of a capture for people and for programs.
#ifndef VYMTRACE_STATS_TEXT_H
#define VYMTRACE_STATS_TEXT_H

#include "stats.h"

#include <string>

namespace trace {

std::string stats_text(const Stats::Summary& summary, bool utc);

/// One object in one line.
std::string stats_json(const Stats::Summary& summary);

} // namespace trace

#endif
