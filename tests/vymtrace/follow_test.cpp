// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture that grows while it is read. The program is a process of its own, for it ends by a signal.

#include "support/process.h"
#include "vymtrace/capture_bytes.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::kHeader;
using capture_bytes::Traces;
using namespace std::string_literals;

void Append(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

support::Process Start(const std::vector<std::string>& arguments) {
    return support::Process(support::BuiltProgram(VYM_EMULATOR, VYM_TRACE_PATH, arguments));
}

TEST(Follow, ShowsWhatIsAddedAndEndsWithASignal) {
    const Traces traces;
    const std::string path = traces.Write("");
    support::Process program = Start({"-f", "--utc", path});
    const std::string record = Command("AT#PB\r\n", 1);
    Append(path, kHeader + Command("AT#PV\r\n") + record.substr(0, 10));
    EXPECT_TRUE(program.WaitForOut("bluetooth   get_version\n")) << program.Err();
    Append(path, record.substr(10));
    EXPECT_TRUE(program.WaitForOut("bluetooth   enable\n")) << program.Err();
    program.Signal(SIGINT);
    EXPECT_EQ(program.ExitCode(), 0);
    EXPECT_EQ(program.Out(), "2026-11-22 14:03:07.000000      1 > bluetooth   get_version\n"
                             "2026-11-22 14:03:07.001000      2 > bluetooth   enable\n");
    EXPECT_EQ(program.Err(), "");
}

TEST(Follow, AFileThatIsBegunAgainIsReadFromItsBeginning) {
    const Traces traces;
    const std::string path =
        traces.Write(kHeader + Command("AT#PV\r\n") + Command("AT#PV\r\n") + Events("PV1\0"s));
    support::Process program = Start({"-f", "--utc", path});
    EXPECT_TRUE(program.WaitForOut("onBtVersion")) << program.Err();
    traces.Write(kHeader + Command("AT#PB\r\n", 5));
    EXPECT_TRUE(program.WaitForOut("14:03:07.005000      1 > bluetooth   enable\n")) << program.Err();
    program.Signal(SIGTERM);
    EXPECT_EQ(program.ExitCode(), 0);
    EXPECT_EQ(program.Err(), path + ": was begun again\n");
}

TEST(Follow, DamageIsToldWhenItIsSeen) {
    const Traces traces;
    std::string damaged = Command("AT#PV\r\n");
    damaged[0] = '\x7F';
    const std::string path = traces.Write(kHeader + damaged + Command("AT#PB\r\n"));
    support::Process program = Start({"-f", "--json", path});
    EXPECT_TRUE(program.WaitForOut("\"enable\"")) << program.Err();
    program.Signal(SIGINT);
    EXPECT_EQ(program.ExitCode(), 1);
    EXPECT_EQ(program.Err(), path + ": at byte 16: record 1 has a wrong length (11 of 2130706443 "
                                    "bytes); the capture is damaged\n");
}

TEST(Follow, AFileOfAnotherKindIsNotWaitedFor) {
    const Traces traces;
    const std::string path = traces.Write("none");
    support::Process program = Start({"-f", path});
    EXPECT_EQ(program.ExitCode(), 1);
}

TEST(Program, ReadsStandardInputAndUsesNoColourInAFile) {
    const Traces traces;
    const std::string path = traces.Write(kHeader + Command("AT#PV\r\n"));
    const std::vector<std::string> program =
        support::BuiltProgram(VYM_EMULATOR, VYM_TRACE_PATH, {"--utc", "-"});
    std::string line = "exec";
    for (const std::string& word : program) {
        line += " '" + word + "'";
    }
    EXPECT_EQ(support::OutputOf({"/bin/sh", "-c", line + " < '" + path + "'"}),
              "2026-11-22 14:03:07.000000      1 > bluetooth   get_version\n");
}

} // namespace
