// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A car kit on its way, process against process: calls, music and the phone book.

#include "e2e/running_sim.h"
#include "support/capture_reader.h"
#include "support/process.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::RunningSim;
using support::Process;

// Least significant byte first.
uint32_t NumberAt(const std::string& bytes, size_t at, size_t size) {
    uint32_t number = 0;
    for (size_t i = size; i > 0; --i) {
        number = number << 8 | static_cast<uint8_t>(bytes[at + i - 1]);
    }
    return number;
}

// The header of 16-bit stereo at 44,100 samples per second, byte by byte, but for the two lengths.
void ExpectMusic(const std::string& wav) {
    constexpr size_t kHeader = 44;
    constexpr size_t kOneSecond = size_t{44100} * 4;
    ASSERT_GE(wav.size(), kHeader + kOneSecond) << "fifty packets of 20 ms";
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    EXPECT_EQ(NumberAt(wav, 4, 4), wav.size() - 8);
    EXPECT_EQ(wav.substr(8, 32), std::string("WAVEfmt \x10\0\0\0\x01\0\x02\0\x44\xAC\0\0"
                                             "\x10\xB1\x02\0\x04\0\x10\0data",
                                             32));
    EXPECT_EQ(NumberAt(wav, 40, 4), wav.size() - kHeader);
    EXPECT_EQ((wav.size() - kHeader) % 4, 0U);
    int loudest = 0;
    for (size_t at = kHeader; at + 1 < wav.size(); at += 2) {
        loudest = std::max(loudest, std::abs(static_cast<int16_t>(NumberAt(wav, at, 2))));
    }
    EXPECT_GT(loudest, 1000) << "this is silence";
}

TEST(CarKitProgram, AnswersHoldsAndEndsCallsRecordsASongAndLoadsThePhoneBook) {
    RunningSim sim({"--ring-after", "200", "--ring-number", "+4930123456"});
    Process program(e2e::Example("car_kit", {sim.Directory()}));
    ASSERT_EQ(program.ExitCode(6 * support::TimeLimit()), 0) << program.Out() << program.Err();
    EXPECT_TRUE(e2e::HasInOrder(program.Out(), {
                                                   "2. Somebody calls\n",
                                                   "   call 1 with +4930123456 is incoming\n",
                                                   "   call 1 with +4930123456 is active\n",
                                                   "3. We call somebody else",
                                                   "   call 1 with +4930123456 is on hold\n",
                                                   "   call 2 with +4989987654 is dialing\n",
                                                   "   call 2 with +4989987654 is active\n",
                                                   "4. We end the second call",
                                                   "   call 2 with +4989987654 is ended\n",
                                                   "   call 1 with +4930123456 is active\n",
                                                   "   call 1 with +4930123456 is ended\n",
                                                   "5. A song plays\n",
                                                   "   title:  ",
                                                   " bytes of music are in ",
                                                   "6. The phone book comes down\n",
                                                   "   ... and so on, 52 numbers of 50 contacts\n",
                                                   "Done.\n",
                                               }));
    EXPECT_NE(program.Out().find("   music comes with 44100 samples per second on 2 channels\n"),
              std::string::npos);
    EXPECT_EQ(program.Err(), "");
    ExpectMusic(support::ReadFile(sim.Directory() + "/music.wav"));
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(sim.Program().ExitCode(), 0);
}

TEST(CarKitProgram, WithoutAServerItSaysHowToStartOneAndFails) {
    const support::TempDir empty;
    Process program(e2e::Example("car_kit", {empty.Path()}));
    EXPECT_EQ(program.ExitCode(), 1);
    EXPECT_EQ(program.Err(), "car_kit: no server answers on " + empty.Path() +
                                 "/vym_socket; start vym-sim --dir " + empty.Path() + "\n");
}

} // namespace
