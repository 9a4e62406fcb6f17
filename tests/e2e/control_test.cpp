// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The control language as a person or a CI uses it, process against process.

#include "e2e/running_sim.h"
#include "support/process.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::Example;
using e2e::HasInOrder;
using e2e::RunningSim;
using support::BuiltProgram;
using support::Process;
using Strings = std::vector<std::string>;

Strings Sim(const Strings& arguments) {
    return BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, arguments);
}

/** "vym-sim ctl", run to its end. */
class Ctl {
public:
    Ctl(const std::string& directory, const Strings& words) {
        Strings arguments{"ctl", "--dir", directory};
        arguments.insert(arguments.end(), words.begin(), words.end());
        Process process(Sim(arguments));
        code = process.ExitCode();
        out = process.Out();
        err = process.Err();
    }

    int code;
    std::string out;
    std::string err;
};

/** The same through a shell, which gives it standard input. */
Strings WithInput(const std::string& input, const Strings& arguments) {
    std::string line = "printf '" + input + "' |";
    for (const std::string& word : Sim(arguments)) {
        line += " '" + word + "'";
    }
    return {"sh", "-c", line};
}

TEST(Ctl, GivesOrdersToARunningSimulatorAndPrintsItsAnswers) {
    RunningSim sim;
    const Ctl battery(sim.Directory(), {"phone battery 2"});
    EXPECT_EQ(battery.code, 0);
    EXPECT_EQ(battery.out + battery.err, "");
    // As the shell has divided it.
    const Ctl signal(sim.Directory(), {"device", "Kitchen speaker", "out-of-range"});
    EXPECT_EQ(signal.code, 0) << signal.err;
    const Ctl show(sim.Directory(), {"world show"});
    EXPECT_EQ(show.code, 0);
    EXPECT_TRUE(
        HasInOrder(show.out, {"\"Kitchen speaker\" -67 dBm, out of range\n", "phone battery 2,"}));
}

TEST(Ctl, SaysWhyAnOrderIsRefused) {
    RunningSim sim;
    const Ctl refused(sim.Directory(), {"phone hang-up"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.err, "vym-sim ctl: there is no call\n");
    const Ctl failed(sim.Directory(), {"expect command hfp.dial within 1ms"});
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.out, "expected  hfp.dial\nthere have been no commands\n");
    EXPECT_EQ(failed.err, "vym-sim ctl: it did not come within 1 ms\n");
}

TEST(Ctl, TellsAWrongCommandLineFromAMissingSimulator) {
    const support::TempDir empty;
    const Ctl nobody(empty.Path(), {"help"});
    EXPECT_EQ(nobody.code, 3);
    EXPECT_EQ(nobody.err, "vym-sim ctl: no simulator answers on " + empty.Path() +
                              "/vym_control (No such file or directory); start vym-sim --dir " +
                              empty.Path() + "\n");
    EXPECT_EQ(Ctl(empty.Path(), {}).code, 2);
    EXPECT_EQ(Ctl(empty.Path(), {"help", "--log"}).code, 2);
    EXPECT_EQ(Ctl(empty.Path(), {"help\nhelp"}).code, 2);
    Process no_directory(Sim({"ctl", "help"}));
    EXPECT_EQ(no_directory.ExitCode(), 2);
    EXPECT_EQ(no_directory.Err(), "vym-sim: --dir is required (vym-sim --help shows the options)\n");
}

TEST(Ctl, EndsOrCrashesTheSimulator) {
    RunningSim ended;
    EXPECT_EQ(Ctl(ended.Directory(), {"exit 5"}).code, 0);
    EXPECT_EQ(ended.Program().ExitCode(), 5);
    RunningSim crashed;
    EXPECT_EQ(Ctl(crashed.Directory(), {"server crash"}).code, 0);
    EXPECT_EQ(crashed.Program().ExitCode(), 3);
    // Nothing was cleaned up, and nobody answers.
    EXPECT_EQ(Ctl(crashed.Directory(), {"help"}).err,
              "vym-sim ctl: no simulator answers on " + crashed.Directory() +
                  "/vym_control (Connection refused); start vym-sim --dir " + crashed.Directory() +
                  "\n");
}

TEST(ScriptProgram, AnApplicationIsJudgedByAScript) {
    const support::TempDir files;
    const std::string script = files.Path() + "/heart.vym";
    std::ofstream(script) << "wait client\n"
                             "wait command gatt_client.connect address=\"Heart strap\" within 60s\n"
                             "wait event gatt_client.onConnected status=0\n"
                             "wait client gone within 60s\n";
    RunningSim sim({"--script", script});
    Process program(Example("heart_rate", {sim.Directory()}));
    EXPECT_EQ(program.ExitCode(6 * support::TimeLimit()), 0) << program.Err();
    EXPECT_EQ(sim.Program().ExitCode(6 * support::TimeLimit()), 0);
    EXPECT_EQ(sim.Program().Err(), "");
}

TEST(ScriptProgram, AFailedScriptEndsWithOneEvenIfItIsToBeQuiet) {
    const support::TempDir files;
    const std::string script = files.Path() + "/fails.vym";
    std::ofstream(script) << "log not shown\nphone answer\n";
    RunningSim sim({"--quiet", "--script", script});
    EXPECT_EQ(sim.Program().ExitCode(), 1);
    EXPECT_EQ(sim.Program().Err(), script + ":2: phone answer: nobody is rung up\n");
}

TEST(ScriptProgram, AScriptMayComeFromStandardInput) {
    const support::TempDir directory;
    Process good(WithInput("log hello\\nexit 4\\n", {"--dir", directory.Path(), "--script", "-"}));
    EXPECT_EQ(good.ExitCode(), 4);
    EXPECT_EQ(good.Err(), "-- hello\n");
    Process bad(WithInput("log hello\\nexit 4 5\\n", {"--dir", directory.Path(), "--script", "-"}));
    EXPECT_EQ(bad.ExitCode(), 2);
    EXPECT_EQ(bad.Out(), "");
    EXPECT_EQ(bad.Err(), "standard input:2: after \"exit 4\": expected nothing more, found \"5\"\n");
}

TEST(ScriptProgram, AFileThatCannotBeReadIsNamed) {
    const support::TempDir directory;
    const std::string none = directory.Path() + "/none";
    Process missing(Sim({"--dir", directory.Path(), "--script", none}));
    EXPECT_EQ(missing.ExitCode(), 2);
    EXPECT_EQ(missing.Err(), none + ": cannot read the script: No such file or directory\n");
    Process folder(Sim({"--dir", directory.Path(), "--script", directory.Path()}));
    EXPECT_EQ(folder.ExitCode(), 2);
    EXPECT_EQ(folder.Err(), directory.Path() + ": cannot read the script; it must be a file of text\n");
    Process lonely(Sim({"--dir", directory.Path(), "--stay"}));
    EXPECT_EQ(lonely.ExitCode(), 2);
}

} // namespace
