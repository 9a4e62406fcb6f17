// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulator's prompt, at a terminal.

#include "e2e/running_sim.h"
#include "e2e/terminal.h"
#include "support/process.h"

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

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

struct Directory {
    support::TempDir directory;
};

/** A simulator at a terminal of its own. */
class Terminal : private Directory, public e2e::Terminal {
public:
    Terminal() : e2e::Terminal({VYM_SIM_PATH, "--dir", Path(), "--prompt"}, "vym-sim> ") {}
    [[nodiscard]] const std::string& Path() const { return directory.Path(); }
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
    EXPECT_NE(access((terminal.Path() + "/vym_control").c_str(), F_OK), 0);
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
