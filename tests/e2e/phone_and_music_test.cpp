// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A head unit's afternoon, process against process: calls, music and the phone book.

#include "e2e/running_sim.h"
#include "support/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::RunningSim;
using support::Process;

TEST(PhoneAndMusicProgram, AnswersHoldsAndEndsCallsPlaysASongAndLoadsThePhoneBook) {
    RunningSim sim({"--ring-after", "200", "--ring-number", "+4930123456"});
    Process program(e2e::Example("phone_and_music", {sim.Directory()}));
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
                                                   "   50 packets of music and counting\n",
                                                   "6. The phone book comes down\n",
                                                   "   ... and so on, 52 numbers of 50 contacts\n",
                                                   "Done. ",
                                               }));
    EXPECT_NE(program.Out().find("   music comes with 44100 samples per second on 2 channels\n"),
              std::string::npos);
    EXPECT_EQ(program.Err(), "");
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(sim.Program().ExitCode(), 0);
}

TEST(PhoneAndMusicProgram, WithoutAServerItSaysHowToStartOneAndFails) {
    const support::TempDir empty;
    Process program(e2e::Example("phone_and_music", {empty.Path()}));
    EXPECT_EQ(program.ExitCode(), 1);
    EXPECT_EQ(program.Err(), "phone_and_music: no server answers on " + empty.Path() +
                                 "/vym_socket; start vym-sim --dir " + empty.Path() +
                                 " --ring-after 500\n");
}

} // namespace
