// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What small devices are made of, process against process: a GATT client, a GATT server, serial
// channels, a keyboard and a scanner.

#include "e2e/running_sim.h"
#include "support/process.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
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

TEST(ScannerProgram, ShowsEverybodyWithoutAFilter) {
    ExpectInOrder("scanner", {
                                 "1. Listen\n",
                                 "2. Who passes?\n",
                                 "   E2:43:6C:69:6D:61   -81 dBm  \"Climate sensor\"  181A\n",
                                 "   C6:48:65:61:72:74   -74 dBm  \"Heart strap\"  180D 180F 180A\n",
                                 "   2 of 2 devices\n",
                                 "Done.\n",
                             });
}

// Three badges of the hall: "Badge 1" (-35 dBm, 180D), "Badge 2" (-42 dBm), "Badge 3" (-49 dBm).
std::string WhoPasses(const std::vector<std::string>& filters) {
    RunningSim sim({"--hall", "3"});
    std::vector<std::string> arguments = filters;
    arguments.insert(arguments.begin(), sim.Directory());
    Process program(Example("scanner", arguments));
    EXPECT_EQ(program.ExitCode(6 * support::TimeLimit()), 0) << program.Out() << program.Err();
    const std::string out = program.Out();
    const size_t begin = out.find("   ");
    return begin == std::string::npos ? out : out.substr(begin);
}

TEST(ScannerProgram, ShowsOnlyWhoPassesAFilter) {
    EXPECT_EQ(WhoPasses({"service=180D"}),
              "   F4:48:41:00:00:00   -35 dBm  \"Badge 1\"  180D\n"
              "   C6:48:65:61:72:74   -74 dBm  \"Heart strap\"  180D 180F 180A\n"
              "   2 of 5 devices\n"
              "Done.\n");
    EXPECT_EQ(WhoPasses({"rssi=-42"}), "   F4:48:41:00:00:00   -35 dBm  \"Badge 1\"  180D\n"
                                       "   F4:48:41:00:00:01   -42 dBm  \"Badge 2\"  180F\n"
                                       "   2 of 5 devices\n"
                                       "Done.\n");
}

TEST(ScannerProgram, ShowsOnlyWhoPassesAllFilters) {
    EXPECT_EQ(WhoPasses({"name=Heart", "service=180D", "rssi=-74"}),
              "   C6:48:65:61:72:74   -74 dBm  \"Heart strap\"  180D 180F 180A\n"
              "   1 of 5 devices\n"
              "Done.\n");
    EXPECT_EQ(WhoPasses({"name=Heart", "rssi=-73"}), "   0 of 5 devices\nDone.\n");
}

TEST(ScannerProgram, RefusesWhatIsNoFilter) {
    for (const char* wrong : {"colour=red", "rssi=near", "service=", "name=", "180D"}) {
        Process program(Example("scanner", {"/nowhere", wrong}));
        EXPECT_EQ(program.ExitCode(), 2);
        EXPECT_EQ(program.Err(), std::string("scanner: ") + wrong +
                                     " is no filter; say service=180D, name=Heart or rssi=-80\n");
    }
}

TEST(Examples, AreShortAndSayOnTopWhatTheyAreFor) {
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VYM_SOURCE_DIR "/examples")) {
        if (entry.path().extension() != ".c" && entry.path().extension() != ".cpp") {
            continue;
        }
        ++count;
        std::ifstream file(entry.path());
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        EXPECT_LT(lines.size(), 200U) << entry.path();
        ASSERT_GE(lines.size(), 6U) << entry.path();
        const std::string sentence = lines[3] + lines[4];
        EXPECT_TRUE(lines[2].empty() &&
                    std::regex_search(sentence, std::regex("^(/\\*|//) [A-Z].*\\.")))
            << entry.path() << ": " << sentence;
    }
    EXPECT_GE(count, 7U);
}

TEST(Examples, WithoutAServerSayHowToStartOneAndFail) {
    for (const char* name :
         {"heart_rate", "temperature_sensor", "serial_echo", "keyboard", "scanner"}) {
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
