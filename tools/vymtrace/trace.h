// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture from its first to its last byte.
#ifndef VYMTRACE_TRACE_H
#define VYMTRACE_TRACE_H

#include "filter.h"
#include "item.h"

#include <iosfwd>
#include <string>

namespace trace {

/// Hands all commands and events of a file that the filter wants to the consumer, and goes on behind
/// damaged places. With `follow` it waits for more at the end, until a signal comes. What is wrong with
/// the file is told on `err`. @return the exit code.
int run(const std::string& file, bool follow, Filter filter, Consumer& consumer, std::ostream& err);

} // namespace trace

#endif
