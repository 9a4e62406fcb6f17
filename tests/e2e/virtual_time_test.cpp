// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Time that passes as fast as the client allows, and what is written of it.

#include "e2e/running_sim.h"
#include "support/capture_reader.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::Example;
using support::Process;
using Strings = std::vector<std::string>;

/** One directory for all runs: the names of files are part of what is said. */
class VirtualTime : public ::testing::Test {
protected:
    [[nodiscard]] std::string Path(const std::string& name) const {
        return directory_.Path() + "/" + name;
    }

    [[nodiscard]] std::string Script(const std::string& text) const {
        std::ofstream(Path("script.vym")) << text;
        return Path("script.vym");
    }

    [[nodiscard]] Strings Sim(const std::string& script, const Strings& options) const {
        Strings arguments{"--dir",    directory_.Path(), "--time",       "virtual",
                          "--script", Script(script),    "--transcript", Path("transcript")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, arguments);
    }

    /** @return what was written while an example ran until its end. */
    [[nodiscard]] std::string TranscriptOf(const std::string& example, const Strings& options) const {
        Process sim(Sim("wait client\nwait client gone within 300s\n", options));
        EXPECT_TRUE(sim.WaitForOut("listening on ")) << sim.Err();
        Process program(Example(example, {directory_.Path()}));
        EXPECT_EQ(program.ExitCode(6 * support::TimeLimit()), 0) << program.Out() << program.Err();
        EXPECT_EQ(sim.ExitCode(), 0) << sim.Err();
        return support::ReadFile(Path("transcript"));
    }

    support::TempDir directory_;
};

TEST_F(VirtualTime, GivesTheSameTranscriptToTheSameSeed) {
    const Strings options{"--ring-after", "5000", "--seed", "17"};
    const std::string transcript = TranscriptOf("car_kit", options);
    EXPECT_EQ(TranscriptOf("car_kit", options), transcript);
    EXPECT_TRUE(e2e::HasInOrder(transcript, {
                                                "    0.000    client connected\n",
                                                "    0.000 <- bluetooth enable\n",
                                                "    5.200 -> hfp onCallsetup call_setup=1\n",
                                                "<- hfp handle_call_action action=",
                                                "<- pbap disconnect address=2A:41:6E:6E:61:01\n",
                                                "client left\n",
                                            }));
}

TEST_F(VirtualTime, GivesAnotherTranscriptToAnotherSeed) {
    const std::string transcript = TranscriptOf("heart_rate", {"--seed", "17"});
    EXPECT_NE(TranscriptOf("heart_rate", {"--seed", "18"}), transcript);
}

TEST_F(VirtualTime, RepeatsWhatWasDoneOnPurpose) {
    const Strings options{"--evil", "3:split,unknown"};
    const std::string transcript = TranscriptOf("temperature_sensor", options);
    EXPECT_EQ(TranscriptOf("temperature_sensor", options), transcript);
    EXPECT_NE(transcript.find(" evil "), std::string::npos) << transcript;
}

TEST_F(VirtualTime, MakesALongPauseShortEvenWhenNobodyIsThere) {
    Process sim(Sim("pause 86400s\nlog good morning\nphone battery 2\n", {}));
    EXPECT_EQ(sim.ExitCode(), 0) << sim.Err();
    EXPECT_EQ(sim.Err(), "-- good morning\n");
    EXPECT_EQ(support::ReadFile(Path("transcript")), "86400.000 -- good morning\n"
                                                     "86400.000 == phone battery 2\n");
}

TEST_F(VirtualTime, StandsStillWhileNobodyIsThere) {
    // The phone would ring otherwise, and ring off.
    Process sim(Sim("expect event hfp.onCallsetup within 100ms\n", {"--ring-after", "1"}));
    EXPECT_EQ(sim.ExitCode(), 1);
    EXPECT_NE(sim.Err().find("it did not come within 100 ms\n"), std::string::npos) << sim.Err();
    EXPECT_NE(support::ReadFile(Path("transcript")).find("    0.000 "), std::string::npos);
}

TEST(TranscriptFile, ThatCannotBeWrittenIsNamed) {
    const support::TempDir directory;
    const std::string path = directory.Path() + "/missing/transcript";
    Process sim(support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH,
                                      {"--dir", directory.Path(), "--transcript", path}));
    EXPECT_EQ(sim.ExitCode(), 1);
    EXPECT_EQ(sim.Err(),
              "vym-sim: cannot write the transcript " + path + ": No such file or directory\n");
}

TEST(TimeOption, IsRealOrVirtual) {
    const support::TempDir directory;
    Process sim(support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH,
                                      {"--dir", directory.Path(), "--time", "fast"}));
    EXPECT_EQ(sim.ExitCode(), 2);
    EXPECT_EQ(sim.Err(),
              "vym-sim: --time: fast not in {real,virtual} (vym-sim --help shows the options)\n");
}

} // namespace
