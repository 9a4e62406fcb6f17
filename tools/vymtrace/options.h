// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The command line.
#ifndef VYMTRACE_OPTIONS_H
#define VYMTRACE_OPTIONS_H

#include "filter.h"

#include <stdexcept>
#include <string>

namespace trace {

/// What is wrong with the command line, in one line; the exit code is 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Task : uint8_t {
    Done,  // --help or --version: its text is what is to be printed
    Lines, // the default
    Json,
    Stats,
    Scrub,
    Dissector,
    Html,
};

struct Options {
    Task task = Task::Lines;
    std::string text;
    std::string file;
    /// What is to be written.
    std::string to;
    bool follow = false;
    /// --stats as JSON.
    bool json = false;
    Conditions conditions;
};

/// Throws UsageError.
Options parse_options(int argc, const char* const* argv);

} // namespace trace

#endif
