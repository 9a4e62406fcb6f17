// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What stands before and behind the verb on the command line. One table: what is understood, --help,
// completion and the manual page come from it.
#ifndef VYM_VYMCTL_OPTIONS_H
#define VYM_VYMCTL_OPTIONS_H

#include "library.h"

#include <chrono>
#include <string>
#include <vector>

namespace vymctl {

struct Options {
    std::string directory = kDefaultDirectory;
    std::string script;
    std::string capture;
    std::string emit;
    std::string pairing;
    std::chrono::milliseconds timeout = std::chrono::seconds(30);
    bool timeout_given = false;
    bool json = false;
    bool verbose = false;
    bool events = false;
    bool help = false;
    bool complete = false;
    /// What is to be completed.
    std::string line;
    bool version = false;
    /// What is left.
    std::vector<std::string> words;
};

struct OptionRow {
    const char* name;
    /// Null for a switch.
    const char* argument;
    const char* help;
    void (*set)(Options& options, const std::string& value);
    /// What its argument may be, separated by |; for completion.
    const char* choices = nullptr;
};

const std::vector<OptionRow>& option_rows();

/// Takes the options out of the words, wherever they stand before "--". Throws Usage.
Options read_options(const std::vector<std::string>& words);

/// Takes "--timeout D" out of a line. Throws Usage.
std::chrono::milliseconds take_timeout(std::vector<std::string>& words,
                                       std::chrono::milliseconds otherwise);

} // namespace vymctl

#endif
