// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What programs do when the server is killed, or falls silent, in the middle: a slice of what
// scripts/killed tries after every message.

#include "e2e/running_sim.h"
#include "support/text.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::Example;
using e2e::RunningSim;
using support::Process;

struct Scene {
    const char* program;
    int message;
};

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.program << " after message " << scene.message;
}

class KilledServer : public ::testing::TestWithParam<Scene> {
protected:
    // A program that gives up ends in the middle: the audio's reader, which the server's end has ended,
    // is joined by nobody then.
    void SetUp() override {
        const char* set = getenv("TSAN_OPTIONS");
        const std::string options = std::string(set != nullptr ? set : "") + ":report_thread_leaks=0";
        setenv("TSAN_OPTIONS", options.c_str(), 1);
    }
};

TEST_P(KilledServer, EndsAnExampleWithOneLine) {
    RunningSim sim({"--ring-after", "100", "--kill-after", std::to_string(GetParam().message)});
    Process program(Example(GetParam().program, {sim.Directory()}));
    EXPECT_EQ(program.ExitCode(6 * support::TimeLimit()), 1) << program.Out();
    const std::vector<std::string> words = support::Lines(program.Err());
    ASSERT_EQ(words.size(), 1U) << program.Err();
    EXPECT_EQ(words[0].rfind(std::string(GetParam().program) + ": ", 0), 0U) << words[0];
    EXPECT_EQ(sim.Program().ExitCode(), 128 + SIGKILL);
}

// Early, in the middle, and where calls wait without limit: for a caller, for a line.
INSTANTIATE_TEST_SUITE_P(OfExamples, KilledServer,
                         ::testing::Values(Scene{"first_steps", 1}, Scene{"first_steps", 15},
                                           Scene{"car_kit", 20}, Scene{"heart_rate", 9},
                                           Scene{"temperature_sensor", 30}, Scene{"serial_echo", 8},
                                           Scene{"serial_echo", 10}, Scene{"serial_echo", 12},
                                           Scene{"keyboard", 12}, Scene{"scanner", 5}),
                         [](const auto& one) {
                             return std::string(one.param.program) + "_" +
                                    std::to_string(one.param.message);
                         });

TEST(KilledServer, IsFoundAgainOnceItIsStartedAnew) {
    support::TempDir directory;
    const auto start = [&](const std::vector<std::string>& options) {
        std::vector<std::string> all{"--dir", directory.Path()};
        all.insert(all.end(), options.begin(), options.end());
        return std::make_unique<Process>(support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, all));
    };
    const auto first = start({"--kill-after", "8"});
    ASSERT_TRUE(first->WaitForOut("vym-sim: listening on "));
    EXPECT_EQ(Process(Example("keyboard", {directory.Path()})).ExitCode(), 1);
    EXPECT_EQ(first->ExitCode(), 128 + SIGKILL);
    const auto second = start({});
    ASSERT_TRUE(second->WaitForOut("vym-sim: listening on ")) << second->Err();
    EXPECT_EQ(Process(Example("keyboard", {directory.Path()})).ExitCode(), 0);
}

std::vector<std::string> Vymctl(const RunningSim& sim, std::vector<std::string> words) {
    words.insert(words.begin(), {"--dir", sim.Directory()});
    return support::BuiltProgram(VYM_EMULATOR, VYMCTL_PATH, words);
}

TEST(KilledServer, IsReportedByVymctl) {
    RunningSim sim({"--kill-after", "1"});
    Process verb(Vymctl(sim, {"adapter", "enable"}));
    EXPECT_EQ(verb.ExitCode(), 3);
    EXPECT_EQ(support::Lines(verb.Err()).size(), 1U) << verb.Err();
    EXPECT_NE(verb.Err().find("the server has closed the connection"), std::string::npos) << verb.Err();
    EXPECT_EQ(sim.Program().ExitCode(), 128 + SIGKILL);
}

TEST(SilentServer, IsReportedByVymctl) {
    RunningSim sim({"--log", "--stall-after", "1"});
    Process verb(Vymctl(sim, {"--timeout", "300ms", "adapter", "enable"}));
    EXPECT_EQ(verb.ExitCode(), 4);
    EXPECT_NE(verb.Err().find("timed out"), std::string::npos) << verb.Err();
    EXPECT_TRUE(support::WaitUntil(
        [&] { return sim.Program().Err().find("   stalls for good\n") != std::string::npos; }));
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(sim.Program().ExitCode(), 0);
}

} // namespace
