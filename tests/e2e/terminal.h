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
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
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
            setenv("LC_ALL", "C.UTF-8", 1);
            std::vector<char*> arguments;
            arguments.reserve(command.size() + 1);
            for (std::string& word : command) {
                arguments.push_back(word.data());
            }
            arguments.push_back(nullptr);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        collector_ = std::thread([this] { Collect(); });
        EXPECT_TRUE(WaitFor(prompt)) << Text();
    }
    ~Terminal() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        collector_.join();
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
        return support::WaitUntil([&] {
            const std::string text = Text();
            const size_t at = text.find(words, seen_);
            if (at == std::string::npos) {
                return false;
            }
            seen_ = at + words.size();
            return true;
        });
    }

    /** As of a shell: 128 + n when signal n ended it; -1 when it did not end in time. */
    int ExitCode() {
        int status = 0;
        if (!support::WaitUntil([&] { return waitpid(pid_, &status, WNOHANG) == pid_; })) {
            return -1;
        }
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    /** What was written so far. */
    std::string Text() const {
        const std::lock_guard held(lock_);
        return text_;
    }

private:
    // All the time: what is written to a terminal that nobody reads holds the writer up.
    void Collect() {
        std::array<char, 1024> chunk{};
        for (ssize_t count = 0; (count = read(master_, chunk.data(), chunk.size())) > 0;) {
            const std::lock_guard held(lock_);
            text_.append(chunk.data(), static_cast<size_t>(count));
        }
    }

    int master_;
    pid_t pid_ = -1;
    size_t seen_ = 0;
    mutable std::mutex lock_;
    std::string text_;
    std::thread collector_; // ends when the last program at the terminal has
};

} // namespace e2e

#endif
