// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What small devices are made of, process against process: a GATT client, a GATT server, serial
// channels and a keyboard.

#include "e2e/running_sim.h"
#include "support/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using e2e::Example;
using e2e::HasInOrder;
using e2e::RunningSim;
using support::Process;

// Runs the example to its good end, against a server that survives it and ends well, too.
void ExpectInOrder(const std::string& example, const std::vector<std::string>& lines) {
    RunningSim sim;
    Process program(Example(example, {sim.Directory()}));
    ASSERT_EQ(program.ExitCode(6 * support::TimeLimit()), 0) << program.Out() << program.Err();
    EXPECT_TRUE(HasInOrder(program.Out(), lines));
    EXPECT_EQ(program.Err(), "");
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(sim.Program().ExitCode(), 0);
    EXPECT_EQ(sim.Program().Err(), "");
}

TEST(HeartRateProgram, FindsAStrapReadsItsBatteryAndShowsHeartbeats) {
    ExpectInOrder("heart_rate", {
                                    "1. Who advertises?\n",
                                    "   C6:48:65:61:72:74  \"Heart strap\"\n",
                                    "2. Connect\n",
                                    "   up to 185 bytes travel at once\n",
                                    "3. What does it offer?\n",
                                    "   characteristic 2A37, properties 10\n",
                                    "   characteristic 2A19, properties 12\n",
                                    "4. Read its battery\n",
                                    "   battery 87 %\n",
                                    "5. Listen to the heart\n",
                                    " beats a minute\n",
                                    " beats a minute\n",
                                    " beats a minute\n",
                                    "Done.\n",
                                });
}

TEST(TemperatureSensorProgram, IsReadWrittenAndSubscribedTo) {
    ExpectInOrder("temperature_sensor", {
                                            "1. Build a service\n",
                                            "2. Advertise it\n",
                                            "   the server advertises for us\n",
                                            "   D2:54:61:62:6C:74 connects\n",
                                            "   it reads handle ",
                                            "   it calls us \"hello\"\n",
                                            "   it prepares to call us \"hello, world\"\n",
                                            "   it means it\n",
                                            "   it subscribes\n",
                                            "3. It gets warmer\n",
                                            "   notified of 21.51 degrees\n",
                                            "   notified of 21.52 degrees\n",
                                            "   notified of 21.53 degrees\n",
                                            "Done.\n",
                                        });
}

TEST(SerialEchoProgram, AnswersACallerAndCallsAPhone) {
    ExpectInOrder("serial_echo", {
                                     "1. Wait for somebody to connect\n",
                                     "   our service is on channel 1\n",
                                     "   2A:41:6E:6E:61:01 connects\n",
                                     "   it says \"hello from Anna's phone\"\n",
                                     "   we say \"how are you?\", and hear \"how are you?\"\n",
                                     "   it has left\n",
                                     "2. Connect to the phone\n",
                                     "   its service is on channel 11\n",
                                     "   we say \"hello\", and hear \"hello\"\n",
                                     "   we say \"one, two, three\", and hear \"one, two, three\"\n",
                                     "Done.\n",
                                 });
}

TEST(KeyboardProgram, ConnectsToAComputerAndTypes) {
    ExpectInOrder("keyboard", {
                                  "1. Register as a keyboard\n",
                                  "2. Connect to the computer\n",
                                  "   2E:4C:70:74:6F:70 is in state 1\n",
                                  "   2E:4C:70:74:6F:70 is in state 0\n",
                                  "3. Type \"hi\"\n",
                                  "4. Disconnect\n",
                                  "   2E:4C:70:74:6F:70 is in state 2\n",
                                  "Done.\n",
                              });
}

TEST(Examples, WithoutAServerSayHowToStartOneAndFail) {
    for (const char* name : {"heart_rate", "temperature_sensor", "serial_echo", "keyboard"}) {
        const support::TempDir empty;
        Process program(Example(name, {empty.Path()}));
        EXPECT_EQ(program.ExitCode(), 1);
        EXPECT_EQ(program.Err(), std::string(name) + ": no server answers on " + empty.Path() +
                                     "/vym_socket; start vym-sim --dir " + empty.Path() + "\n");
    }
}

TEST(Examples, WithoutADirectorySayHowTheyAreUsedAndFail) {
    for (const char* name : {"heart_rate", "temperature_sensor", "serial_echo", "keyboard"}) {
        Process program(Example(name, {}));
        EXPECT_EQ(program.ExitCode(), 2);
        EXPECT_EQ(program.Err(),
                  std::string("usage: ") + name + " DIRECTORY   (where the server's vym_socket is)\n");
    }
}

} // namespace
