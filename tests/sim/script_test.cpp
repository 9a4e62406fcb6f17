// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Scripts, from their first line to what the server ends with.
#include "control_client.h"
#include "phone_sim.h"

#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

sim::Pace script_pace() {
    sim::Pace pace = phone_pace();
    pace.call_step = std::chrono::hours(1);
    return pace;
}

/// A server that carries out a script; what it prints.
class ScriptSim : public RunningSim {
public:
    explicit ScriptSim(const std::string& script, bool stay = false)
        : RunningSim(sim::built_in_world(), script_pace(), script, stay) {}

    /// The lines of the log that are the script's, each with its directory left out.
    std::string failure() {
        std::string text;
        std::istringstream lines(log());
        bool own = false;
        for (std::string line; std::getline(lines, line);) {
            own = line.rfind(dir(), 0) == 0 || (own && line.rfind("    ", 0) == 0);
            if (own) {
                const size_t skipped = line.rfind(dir(), 0) == 0 ? dir().size() + 1 : 0;
                text += line.substr(skipped) + "\n";
            }
        }
        return text;
    }
};

TEST(Script, PlaysAWholeCallAndEndsTheServer) {
    ScriptSim sim("# a call is answered and ended\n"
                  "wait client\n"
                  "wait command hfp.connect address=\"Anna's phone\"\n"
                  "wait event hfp.onHfpStateChange state=5\n"
                  "phone call +4930123456\n"
                  "expect command hfp.handle_call_action action=7 within 60s\n"
                  "phone hang-up\n"
                  "wait event hfp.onHfpStateChange state=5\n"
                  "wait client gone within 60s\n");
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#HA" + kPhone + "\r\n");
    while (client.event() != "HM+4930123456") {
    }
    client.send("AT#HJ0700\r\n");
    EXPECT_EQ(client.events(6), (Strings{"HQ0005", "HI01", "HJ00", "HX08", "HI00", "HX05"}));
    client.close();
    EXPECT_EQ(sim.result(), 0);
    EXPECT_EQ(sim.failure(), "");
}

TEST(Script, AnotherCommandThanExpectedFailsWithTheDifference) {
    ScriptSim sim("wait client\n"
                  "wait command bluetooth.get_version\n"
                  "\n"
                  "  expect command hfp.dial number=+49301   # as the user typed it\n"
                  "phone battery 0\n");
    TestClient client = sim.client();
    client.send("AT#PV\r\nAT#HH+49302\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.failure(),
              "script:4: expect command hfp.dial number=+49301   # as the user typed it: another "
              "command came\n"
              "    expected  hfp.dial number=+49301\n"
              "    came      hfp.dial number=\"+49302\"\n"
              "    differs   number is \"+49302\", not +49301\n"
              "    last commands:\n"
              "      bluetooth.get_version\n"
              "      hfp.dial number=\"+49302\"\n");
    EXPECT_EQ(sim.world().phone.battery, 5);
}

TEST(Script, ACommandThatDoesNotComeFailsAfterItsTime) {
    ScriptSim sim("wait client\n"
                  "wait command bluetooth.get_version\n"
                  "expect command hfp.connect within 10ms\n");
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.failure(), "script:3: expect command hfp.connect within 10ms: it did not come within "
                             "10 ms\n"
                             "    expected  hfp.connect\n"
                             "    last commands:\n"
                             "      bluetooth.get_version\n");
}

TEST(Script, ACommandOfNobodyIsAnotherCommand) {
    ScriptSim sim("wait client\nexpect command hfp.connect\n");
    TestClient client = sim.client();
    client.send("AT#ZZ1\r\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_NE(
        sim.failure().find("    came      unknown \"ZZ1\"\n    differs   it is another command\n"),
        std::string::npos)
        << sim.failure();
}

TEST(Script, ARefusedVerbFails) {
    ScriptSim sim("phone battery 1\nphone hang-up\n");
    EXPECT_EQ(sim.result(), 1);
    EXPECT_EQ(sim.failure(), "script:2: phone hang-up: there is no call\n");
}

TEST(Script, EndsWithTheCodeThatItAsksFor) {
    ScriptSim sim("log good bye\nexit 7\nphone battery 0\n");
    EXPECT_EQ(sim.result(), 7);
    EXPECT_EQ(sim.log().find("script:"), std::string::npos);
    EXPECT_NE(sim.log().find("-- good bye\n"), std::string::npos);
    EXPECT_EQ(sim.world().phone.battery, 5);
}

TEST(Script, TheServerStaysWhenToldTo) {
    ScriptSim sim("phone battery 1\nlog done\n", true);
    ControlClient desk(sim.dir());
    EXPECT_EQ(desk.order("phone battery 4"), "ok");
    EXPECT_EQ(desk.order("exit 3"), "ok");
    EXPECT_EQ(sim.result(), 3);
    EXPECT_EQ(sim.world().phone.battery, 4);
}

TEST(Script, GoesOnBetweenTwoCommandsThatComeAtOnce) {
    // The battery is changed before the second question is looked at.
    ScriptSim sim("wait command hfp.query_current_operator_name\n"
                  "phone operator Elsewhere\n"
                  "wait client gone\n");
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#HA" + kPhone + "\r\n");
    while (client.event() != "HX05") {
    }
    client.send("AT#HL\r\nAT#HL\r\n");
    EXPECT_EQ(client.events(5),
              (Strings{"HHSim Mobile", "HQ0006", "HHElsewhere", "HHElsewhere", "HQ0006"}));
    client.close();
    EXPECT_EQ(sim.result(), 0);
}

TEST(Script, ADroppedClientsFurtherCommandsDoNotCount) {
    ScriptSim sim("wait command bluetooth.get_version\n"
                  "server close\n"
                  "wait client gone\n");
    TestClient client = sim.client();
    client.send("AT#PV\r\nAT#PB\r\n");
    EXPECT_EQ(sim.result(), 0);
    EXPECT_FALSE(sim.world().adapter.powered);
}

TEST(Script, MistakesAreAllNamedBeforeAnythingRuns) {
    const TemporaryDirectory dir;
    const std::string file = dir.file("bad.vym");
    std::ofstream(file) << "phone battery 1\n"
                           "phone bat 1\n"
                           "wait command hfp.dail\n"
                           "device Nobody back\n";
    asio::io_context loop(1);
    std::ostringstream log;
    sim::Options options;
    options.dir = dir.path();
    options.script_file = file;
    try {
        const sim::Server server(loop, sim::built_in_world(), options, log);
        FAIL() << "no mistake was found";
    } catch (const sim::ScriptError& error) {
        std::istringstream lines(error.what());
        Strings beginnings;
        for (std::string line; std::getline(lines, line);) {
            beginnings.push_back(line.substr(0, line.find(": ") + 20));
        }
        EXPECT_EQ(beginnings,
                  (Strings{file + ":2: after \"phone\": exp", file + ":3: hfp has no command",
                           file + ":4: no device has the "}));
    }
    EXPECT_NE(access(dir.file("vym_socket").c_str(), F_OK), 0);
}

} // namespace
