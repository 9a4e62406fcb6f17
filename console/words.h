// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Lines that people type, as words.
#ifndef VYM_CONSOLE_WORDS_H
#define VYM_CONSOLE_WORDS_H

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace console {

/// A line that is not understood, or that cannot be done now. The text says why, in one line.
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The words of a line. Quotes keep blanks together, # begins a comment; \n, \r, \t, \xNN, and a
/// backslash before any other sign are escapes. Throws Refused.
std::vector<std::string> split_words(std::string_view line);

/// "5s", "1.5s", "200ms", or seconds without a unit. Throws Refused.
std::chrono::milliseconds to_duration(const std::string& word);

/// Text made fit for one line: everything not printable as \xNN, cut after `limit` characters.
std::string printable(std::string_view text, size_t limit = 80);

} // namespace console

#endif
