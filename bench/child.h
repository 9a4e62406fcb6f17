// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Processes on one processor, and what they leave.
#ifndef VYM_BENCH_CHILD_H
#define VYM_BENCH_CHILD_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace bench {

/// A directory that goes with this object.
class TempDirectory {
public:
    explicit TempDirectory(const std::string& parent);
    ~TempDirectory();
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    TempDirectory(TempDirectory&&) = delete;
    TempDirectory& operator=(TempDirectory&&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// The calling process runs on this processor from now on; on any when it is negative.
void stay_on(int processor);

/// A process; it is killed when this object goes.
class Child {
public:
    /// Its standard output goes nowhere; its descriptor 3 can be read with result().
    Child(const std::vector<std::string>& command, int processor);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    Child(Child&&) = delete;
    Child& operator=(Child&&) = delete;

    /// What it writes to descriptor 3, up to its end. Nothing when it fails.
    std::string result();

private:
    pid_t pid_;
    int result_;
};

/// What a shell command prints on standard output; nothing when it fails.
std::string output_of(const std::string& command);

bool on_path(const std::string& program);

} // namespace bench

#endif
