// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulator's prompt, at a terminal.

#include "e2e/running_sim.h"
#include "support/process.h"

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

namespace {

using support::Process;

TEST(Prompt, NeedsATerminal) {
    const support::TempDir directory;
    Process process(
        support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, {"--dir", directory.Path(), "--prompt"}));
    EXPECT_EQ(process.ExitCode(), 1);
    EXPECT_EQ(process.Err(), "vym-sim: --prompt needs a terminal as standard input; without one use "
                             "--script - or vym-sim ctl\n");
}

#if VYM_SIM_HAS_PROMPT

/** A simulator at a terminal of its own; killed with the object. */
class Terminal {
public:
    Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
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
            execl(VYM_SIM_PATH, VYM_SIM_PATH, "--dir", directory_.Path().c_str(), "--prompt", nullptr);
            _exit(127);
        }
        EXPECT_TRUE(WaitFor("vym-sim> ")) << text_;
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
    const std::string& Directory() const { return directory_.Path(); }

private:
    support::TempDir directory_;
    int master_;
    pid_t pid_ = -1;
    std::string text_;
    size_t seen_ = 0;
};

TEST(Prompt, CarriesOutWhatIsTypedAndEndsWithItsInput) {
    Terminal terminal;
    terminal.Type("phone battery 9\r");
    EXPECT_TRUE(terminal.WaitFor("error: LEVEL is a number from 0 to 5, not \"9\"")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("help phone in-band\r");
    EXPECT_TRUE(terminal.WaitFor("error: nothing begins with")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("world show\r");
    EXPECT_TRUE(terminal.WaitFor("phone battery 5, signal 4")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("\x04");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
    EXPECT_NE(access((terminal.Directory() + "/vym_control").c_str(), F_OK), 0);
}

TEST(Prompt, CompletesVerbsAndDevicesAndRemembersLines) {
    Terminal terminal;
    // Words that can be told apart are completed; Ctrl-A, Ctrl-K and the like are the editor's own.
    terminal.Type("dev\tKit\tout\t");
    EXPECT_TRUE(terminal.WaitFor("-of-range ")) << terminal.Text();
    terminal.Type("\r");
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    // The line again, from the history: now it is refused.
    terminal.Type("\x10\r");
    EXPECT_TRUE(terminal.WaitFor("error: \"Kitchen speaker\" is out of range already"))
        << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("phone vo\t");
    EXPECT_TRUE(terminal.WaitFor("voice-recognition  volume")) << terminal.Text();
    terminal.Type("\x15"
                  "exit 6\r");
    EXPECT_EQ(terminal.ExitCode(), 6) << terminal.Text();
}

TEST(Prompt, StaysUsableWhileItWaits) {
    Terminal terminal;
    terminal.Type("wait client\r");
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("wait command hfp.dial within 1ms\r");
    EXPECT_TRUE(terminal.WaitFor("error: it did not come within 1 ms")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vym-sim> ")) << terminal.Text();
    terminal.Type("exit\r");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(Prompt, AnInterruptEndsTheSimulator) {
    Terminal terminal;
    terminal.Type("\x03");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

#endif

} // namespace
