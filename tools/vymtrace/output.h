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
    explicit Output(int fd, std::string name = "standard output") : fd_(fd), name_(std::move(name)) {}

    /// Where the next line is to be appended; end_line() when it is complete.
    std::string& line() { return buffer_; }
    void end_line();
    /// The same without a line's end.
    void flush_full();

    /// Throws Failure when not everything can be written.
    void flush();

private:
    int fd_;
    std::string name_;
    std::string buffer_;
};

/// Throws Failure when what is to be written is the capture that is to be read.
void refuse_same_file(const std::string& capture, const std::string& to);

/// A file for writing, closed at the end; "-" is standard output. Throws Failure.
class NewFile {
public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    NewFile(NewFile&&) = delete;
    NewFile& operator=(NewFile&&) = delete;

    int fd() const { return fd_; }

private:
    int fd_;
};

} // namespace trace

#endif
