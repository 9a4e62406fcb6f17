// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What an application has recorded is played to it again.

#include "e2e/example_capture.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::ExampleCapture;
using e2e::RunningSim;
using support::Process;

TEST(ReplayOfAProgram, TheProgramGetsToItsEndAgain) {
    for (const std::string example : {"heart_rate", "keyboard"}) {
        const ExampleCapture recording(example);
        RunningSim replay({"--replay", recording.Path()});
        Process program(e2e::Example(example, {replay.Directory()}));
        EXPECT_EQ(program.ExitCode(3 * support::TimeLimit()), 0) << program.Out() << program.Err();
        EXPECT_TRUE(e2e::HasInOrder(program.Out(), {"Done."}));
        EXPECT_EQ(replay.Program().ExitCode(), 0);
        EXPECT_EQ(replay.Program().Err(), "");
    }
}

TEST(ReplayOfAProgram, AProgramThatNeedsAudioGetsAsFarAsThat) {
    const ExampleCapture recording("first_steps");
    RunningSim replay({"--replay", recording.Path()});
    Process program(e2e::Example("first_steps", {replay.Directory()}));
    EXPECT_EQ(program.ExitCode(3 * support::TimeLimit()), 1);
    EXPECT_TRUE(
        e2e::HasInOrder(program.Out(), {"   name      \"vym first steps\"\n", "\"Heart strap\"\n",
                                        "   paired\n", "   -52 dBm\n", " 0 packets, "}))
        << program.Err();
    EXPECT_EQ(replay.Program().ExitCode(), 1);
    EXPECT_TRUE(e2e::HasInOrder(
        replay.Program().Err(),
        {recording.Path() + ": record ", ": expected bluetooth disable, but the client left\n"}));
}

TEST(ReplayOfAProgram, AnotherProgramIsToldApart) {
    const ExampleCapture recording("heart_rate");
    RunningSim replay({"--replay", recording.Path()});
    Process program(e2e::Example("keyboard", {replay.Directory()}));
    EXPECT_EQ(replay.Program().ExitCode(), 1);
    EXPECT_TRUE(e2e::HasInOrder(replay.Program().Err(),
                                {recording.Path() + ": record ", ": expected ", ", came hid "}));
}

} // namespace
