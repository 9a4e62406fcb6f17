// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The programs of the guides, on every machine the library is built for: where there is no prompt, the
// pages themselves cannot be typed.

#include "e2e/running_sim.h"
#include "e2e/terminal.h"
#include "e2e/top_directory.h"
#include "support/process.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using support::Process;

constexpr const char* kOnVymSim = "power: vym-sim is on\n";

TEST(Snippets, FindAndJudgeInContinuousIntegration) {
    const e2e::TopDirectory top;
    Process ci(top.Command({"sh", "docs/snippets/ci.sh", "build/demo"}));
    EXPECT_EQ(ci.ExitCode(3 * support::TimeLimit()), 0) << ci.Err();
    EXPECT_TRUE(e2e::HasInOrder(ci.Out(), {"2A:41:6E:6E:61:01  -52 dBm  Anna's phone\n",
                                           "11:22:33:44:55:66  -67 dBm  Kitchen speaker\n"}));
}

TEST(Snippets, SwitchOnFromCpp) {
    const e2e::TopDirectory top;
    const e2e::RunningSim sim;
    Process power(top.Command({"build/demo/docs/snippets/power", sim.Directory()}));
    EXPECT_EQ(power.ExitCode(3 * support::TimeLimit()), 0) << power.Err();
    EXPECT_NE(power.Out().find(kOnVymSim), std::string::npos) << power.Out();
}

TEST(Snippets, StartAnewWhenTheServerHasComeBack) {
    const e2e::TopDirectory top;
    const support::TempDir place;
    const auto start_server = [&] {
        auto sim =
            std::make_unique<Process>(top.Command({"build/demo/sim/vym-sim", "--dir", place.Path()}));
        EXPECT_TRUE(sim->WaitForOut("listening on ")) << sim->Err();
        return sim;
    };
    std::unique_ptr<Process> sim = start_server();
    e2e::Terminal own_loop(top.Command({"build/demo/docs/snippets/own_loop", place.Path()}),
                           "own_loop: the adapter is on\r\n");
    sim.reset();
    ASSERT_TRUE(own_loop.WaitFor("own_loop: the server has gone\r\n")) << own_loop.Text();
    sim = start_server();
    ASSERT_TRUE(own_loop.WaitFor("own_loop: the adapter is on\r\n")) << own_loop.Text();
    own_loop.Type("\x03");
    EXPECT_TRUE(own_loop.WaitFor("own_loop: good bye\r\n")) << own_loop.Text();
    EXPECT_EQ(own_loop.ExitCode(), 0);
}

} // namespace
