// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_PROCESS_H
#define VYM_TESTS_SUPPORT_PROCESS_H

#include "support/temp_dir.h"
#include "support/wait.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

/** A program run as a person runs it, with its output kept; killed with the object. */
class Process {
public:
    /** Starts `arguments[0]` (found in PATH when it has no slash). */
    explicit Process(const std::vector<std::string>& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process(Process&&) = delete;
    Process& operator=(Process&&) = delete;

    /** What it has written so far. */
    [[nodiscard]] std::string Out() const;
    [[nodiscard]] std::string Err() const;

    [[nodiscard]] bool WaitForOut(const std::string& text, Milliseconds limit = TimeLimit()) const;

    [[nodiscard]] pid_t Id() const { return pid_; }
    void Signal(int number) const;

    /** Its exit code; 128 + n when signal n ended it, -1 when it did not end in time. */
    [[nodiscard]] int ExitCode(Milliseconds limit = TimeLimit());

private:
    TempDir directory_;
    pid_t pid_ = -1;
    int code_ = -1;
};

/** Runs a program to its end. @return its standard output; fails the test when it fails. */
std::string OutputOf(const std::vector<std::string>& arguments);

/** The command line of a program built with these tests, through the emulator when it needs one. */
std::vector<std::string> BuiltProgram(const std::string& emulator, const std::string& path,
                                      const std::vector<std::string>& arguments);

} // namespace support

#endif
