// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_E2E_TERMINAL_H
#define VYM_TESTS_E2E_TERMINAL_H

#include "support/wait.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace e2e {

/** A program at a terminal of its own, which says `prompt` when it listens; killed with the object. */
class Terminal {
public:
    Terminal(std::vector<std::string> command, const std::string& prompt)
        : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(grantpt(master_), 0);
        EXPECT_EQ(unlockpt(master_), 0);
        const std::string name = ptsname(master_);
        pid_ = fork();
        if (pid_ == 0) {
            setsid();
            const int terminal = open(name.c_str(), O_RDWR);
            for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                dup2(terminal, fd);
            }
            setenv("TERM", "vt100", 1);
            std::vector<char*> arguments;
            for (std::string& word : command) {
                arguments.push_back(word.data());
            }
            arguments.push_back(nullptr);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        EXPECT_TRUE(WaitFor(prompt)) << text_;
    }
    ~Terminal() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(master_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(Terminal&&) = delete;

    void Type(const std::string& keys) {
        EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /** Whether this appears behind what was waited for before. */
    bool WaitFor(const std::string& words) {
        for (;;) {
            const size_t at = text_.find(words, seen_);
            if (at != std::string::npos) {
                seen_ = at + words.size();
                return true;
            }
            pollfd entry{master_, POLLIN, 0};
            std::array<char, 1024> chunk{};
            const bool ready = poll(&entry, 1, static_cast<int>(support::TimeLimit().count())) == 1;
            const ssize_t count = ready ? read(master_, chunk.data(), chunk.size()) : -1;
            if (count <= 0) {
                return false;
            }
            text_.append(chunk.data(), static_cast<size_t>(count));
        }
    }

    int ExitCode() {
        int status = -1;
        // What is written to a terminal that nobody reads may hold the writer up.
        while (WaitFor("\n")) {
        }
        EXPECT_EQ(waitpid(pid_, &status, 0), pid_);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    const std::string& Text() const { return text_; }

private:
    int master_;
    pid_t pid_ = -1;
    std::string text_;
    size_t seen_ = 0;
};

} // namespace e2e

#endif
