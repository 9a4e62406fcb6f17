// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Standard output in large blocks.
#ifndef VYMTRACE_OUTPUT_H
#define VYMTRACE_OUTPUT_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace trace {

/// What went wrong, in one line for standard error; the exit code is 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Output {
public:
    /// Does not close it.
    explicit Output(int fd) : fd_(fd) {}

    /// Where the next line is to be appended; end_line() when it is complete.
    std::string& line() { return buffer_; }
    void end_line();

    /// Throws Failure when not everything can be written.
    void flush();

private:
    int fd_;
    std::string buffer_;
};

/// Writes a whole file; "-" is standard output. Throws Failure.
void write_file(const std::string& path, std::string_view content);

} // namespace trace

#endif
