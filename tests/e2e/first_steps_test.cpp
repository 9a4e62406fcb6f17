// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The main job as a newcomer sees it: an application process, linked to the library, drives a server
// process over a socket, and public analysers read the capture.

#include "e2e/running_sim.h"
#include "support/capture_reader.h"
#include "support/process.h"
#include "support/relay.h"
#include "support/temp_dir.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using support::OutputOf;
using support::Process;

using e2e::RunningSim;

// One run of the example with a listener on the line, shared by the tests that look at its capture.
class CaptureOfFirstSteps : public ::testing::Test {
public:
    static void SetUpTestSuite() {
        s_near = std::make_unique<support::TempDir>();
        RunningSim sim;
        support::Relay relay(s_near->Path(), sim.Directory());
        Process steps(e2e::Example("first_steps", {s_near->Path()}));
        ASSERT_EQ(steps.ExitCode(3 * support::TimeLimit()), 0) << steps.Out() << steps.Err();
        s_commands = relay.Commands();
        s_events = relay.Events();
    }
    static void TearDownTestSuite() { s_near.reset(); }

protected:
    static std::string CapturePath() { return s_near->Path() + "/client_sock.log"; }
    static inline std::unique_ptr<support::TempDir> s_near;
    static inline std::string s_commands;
    static inline std::string s_events;
};

std::string FromHex(const std::string& digits) {
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

bool IsHexByte(const std::string& word) {
    return word.size() == 2 && word.find_first_not_of("0123456789abcdef") == std::string::npos;
}

struct Traffic {
    int frames = 0;
    std::string commands;
    std::string events;
};

// "0000  01 01 fc 07 41 ...   ....A": packets with their type byte, an empty line between them. The
// text begins behind the header: 4 bytes of a command, 3 of an event.
Traffic FromHexDump(const std::string& dump) {
    Traffic traffic;
    std::istringstream lines(dump + "\n");
    std::string packet;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) {
            packet += FromHex([&] {
                std::string digits;
                std::istringstream words(line.substr(6, 48));
                for (std::string word; words >> word && IsHexByte(word);) {
                    digits += word;
                }
                return digits;
            }());
        } else if (!packet.empty()) {
            ++traffic.frames;
            (packet[0] == 1 ? traffic.commands : traffic.events) +=
                packet.substr(packet[0] == 1 ? 4 : 3);
            packet.clear();
        }
    }
    return traffic;
}

// "< HCI Command: ..." or "> HCI Event: ..." and lines of hex bytes, indented by 8, with the text in
// column 57.
Traffic FromMonitor(const std::string& output) {
    Traffic traffic;
    std::string* direction = nullptr;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("< HCI Command: Vendor", 0) == 0) {
            direction = &traffic.commands;
            ++traffic.frames;
        } else if (line.rfind("> HCI Event: Vendor", 0) == 0) {
            direction = &traffic.events;
            ++traffic.frames;
        } else if (direction != nullptr && line.rfind("        ", 0) == 0) {
            std::istringstream words(line.substr(8, 48));
            for (std::string word; words >> word && IsHexByte(word);) {
                *direction += FromHex(word);
            }
        }
    }
    return traffic;
}

TEST(FirstStepsProgram, DrivesTheServerFromPowerOnToPowerOff) {
    RunningSim sim;
    Process steps(e2e::Example("first_steps", {sim.Directory()}));
    ASSERT_EQ(steps.ExitCode(3 * support::TimeLimit()), 0) << steps.Out() << steps.Err();

    const std::string out = steps.Out();
    for (const char* line :
         {"   name      \"vym first steps\"\n", "   address   00:1A:7D:DA:71:13\n",
          "   version   \"vym-sim 1.0\"\n", "   scan mode 2 ", "\"Anna's phone\"\n",
          "\"Kitchen speaker\"\n", "\"Heart strap\"\n", "shows 123456; ", "   paired\n",
          "   1. 2A:41:6E:6E:61:01  \"Anna's phone\"\n", "   -52 dBm\n", " packets, ", "Done. "}) {
        EXPECT_NE(out.find(line), std::string::npos) << "missing: " << line << "\nin:\n" << out;
    }
    EXPECT_EQ(steps.Err(), "");
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(sim.Program().ExitCode(), 0);
}

TEST(FirstStepsProgram, ASecondRunFindsThePhoneBondedAlready) {
    RunningSim sim;
    Process first(e2e::Example("first_steps", {sim.Directory()}));
    ASSERT_EQ(first.ExitCode(3 * support::TimeLimit()), 0) << first.Out() << first.Err();
    Process second(e2e::Example("first_steps", {sim.Directory()}));
    EXPECT_EQ(second.Err(), "");
    EXPECT_TRUE(second.WaitForOut("   paired\n", 3 * support::TimeLimit())) << second.Out();
    EXPECT_EQ(second.Out().find("shows 123456"), std::string::npos) << "nothing was to be confirmed";
}

TEST(FirstStepsProgram, WithoutAServerItSaysHowToStartOneAndFails) {
    const support::TempDir empty;
    Process steps(e2e::Example("first_steps", {empty.Path()}));
    EXPECT_EQ(steps.ExitCode(), 1);
    EXPECT_EQ(steps.Err(), "first_steps: no server answers on " + empty.Path() +
                               "/vym_socket; start vym-sim --dir " + empty.Path() + "\n");
}

TEST(FirstStepsProgram, WithoutADirectoryItShowsItsUsage) {
    Process steps(e2e::Example("first_steps", {}));
    EXPECT_EQ(steps.ExitCode(), 2);
    EXPECT_EQ(steps.Err(), "usage: first_steps DIRECTORY   (where the server's vym_socket is)\n");
}

// Commands of two threads may be captured in another order than they were sent in: a record follows its
// write, and no lock holds the two together.
std::vector<std::string> CommandsOf(const std::string& text) {
    std::vector<std::string> commands;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        commands.push_back(line);
    }
    std::sort(commands.begin(), commands.end());
    return commands;
}

TEST_F(CaptureOfFirstSteps, HoldsTheBytesThatCrossedTheSocket) {
    const support::CaptureFile capture = support::ReadCapture(CapturePath());
    EXPECT_EQ(capture.rest, "");
    EXPECT_EQ(CommandsOf(capture.Commands()), CommandsOf(s_commands));
    EXPECT_EQ(capture.Events(), s_events);
    EXPECT_EQ(s_commands.substr(0, 8), "AT#PB\r\nA");
    EXPECT_EQ(s_events.substr(0, 5), std::string("PA01\0", 5));
}

TEST_F(CaptureOfFirstSteps, IsReadByTsharkFrameByFrame) {
    const size_t records = support::ReadCapture(CapturePath()).records.size();
    const Traffic seen = FromHexDump(OutputOf({"tshark", "-r", CapturePath(), "-x"}));
    EXPECT_EQ(static_cast<size_t>(seen.frames), records);
    EXPECT_EQ(CommandsOf(seen.commands), CommandsOf(s_commands));
    EXPECT_EQ(seen.events, s_events);
    EXPECT_EQ(OutputOf({"tshark", "-r", CapturePath(), "-Y", "_ws.malformed"}), "");
}

TEST_F(CaptureOfFirstSteps, IsReadByTheBluetoothMonitorFrameByFrame) {
    const size_t records = support::ReadCapture(CapturePath()).records.size();
    const std::string output = OutputOf({"btmon", "-r", CapturePath()});
    const Traffic seen = FromMonitor(output);
    EXPECT_EQ(static_cast<size_t>(seen.frames), records);
    EXPECT_EQ(CommandsOf(seen.commands), CommandsOf(s_commands));
    EXPECT_EQ(seen.events, s_events);
    EXPECT_EQ(output.find("invalid"), std::string::npos) << output;
}

} // namespace
