// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

const std::string kLaptop = "2E4C70746F70";
const std::string kKeyboard = "264B65796264";
const std::string kNoHost = "000000000000";

/// A keyboard, and what registers it: its subclass, name, description, provider, report descriptor and
/// both qualities of service.
const std::string kRegister = "DA40"
                              "0004Keys"
                              "0000"
                              "0000"
                              "0004\x05\x01\x09\x06"
                              "0000"
                              "0000";
const std::string kRegistered = "00000001";
const std::string kNotRegistered = "00000000";

const std::string kConnected = "DB" + kLaptop + "00000000";
const std::string kConnecting = "DB" + kLaptop + "00000001";
const std::string kDisconnected = "DB" + kLaptop + "00000002";
const std::string kDisconnecting = "DB" + kLaptop + "00000003";
const std::string kGetReport = "DC010100000040";
const std::string kSetProtocol = "DF01";
const std::string kLinkUp = "BI00" + kLaptop + "00";
const std::string kLinkDown = "BI00" + kLaptop + "01";

/// The host waits for ever.
sim::Pace patient_host() {
    sim::Pace pace = phone_pace();
    pace.hid_step = hours(1);
    pace.hid_interrupt = hours(1);
    return pace;
}

class HidSim : public PhoneSim {
public:
    explicit HidSim(const sim::Pace& pace = patient_host(),
                    const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {
        EXPECT_EQ(answers(kRegister), Strings{"DA" + kNoHost + kRegistered});
    }

    void connect() {
        send("DG" + kLaptop);
        EXPECT_EQ(client.events(4), (Strings{kConnecting, kLinkUp, kConnected, kGetReport}));
    }
};

TEST(SimHidHost, ADeviceNeedsAReportDescriptor) {
    PhoneSim sim(patient_host());
    EXPECT_EQ(sim.answers("DA40"
                          "0004Keys"
                          "0000"
                          "0000"
                          "0000"
                          "0000"
                          "0000"),
              Strings{"DA" + kNoHost + kNotRegistered});
    EXPECT_EQ(sim.answers("DG" + kLaptop), Strings{kDisconnected});
    EXPECT_EQ(sim.answers(kRegister), Strings{"DA" + kNoHost + kRegistered});
}

TEST(SimHidHost, TheDescriptorIsUnescaped) {
    PhoneSim sim(patient_host());
    EXPECT_EQ(sim.answers("DAC0"
                          "0005Mouse"
                          "0000"
                          "0000"
                          "0005\x05\xDC\xDD\xDC\xDC"
                          "0000"
                          "0000"),
              Strings{"DA" + kNoHost + kRegistered});
    sim.stop();
    EXPECT_NE(sim.log().find("\"Mouse\", subclass 192, report descriptor 05 00 DC\n"),
              std::string::npos);
}

TEST(SimHidHost, BlocksMayBeAsLongAsTheirLengthsCanSay) {
    PhoneSim sim(patient_host());
    const std::string longest = "FFFF" + std::string(65535, 'x');
    EXPECT_EQ(sim.answers("DA40" + longest + longest + longest + longest + longest + longest),
              Strings{"DA" + kNoHost + kRegistered});
}

TEST(SimHidHost, OneDeviceIsRegisteredAtATime) {
    HidSim sim;
    EXPECT_EQ(sim.answers(kRegister), Strings{"DA" + kNoHost + kRegistered});
    EXPECT_EQ(sim.answers("DB"), Strings{"DA" + kNoHost + kNotRegistered});
    EXPECT_EQ(sim.answers("DB"), Strings{"DA" + kNoHost + kNotRegistered});
    sim.stop();
    EXPECT_NE(sim.log().find("refused: a device is registered; unregister it first\n"),
              std::string::npos);
}

TEST(SimHidHost, WithoutPowerNothingIsRegistered) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#" + kRegister + "\r\n");
    EXPECT_EQ(client.event(), "DA" + kNoHost + kNotRegistered);
    client.send("AT#DG" + kLaptop + "\r\n");
    EXPECT_EQ(client.event(), kDisconnected);
}

TEST(SimHidHost, ConnectsAndAsksForAReport) {
    HidSim sim;
    sim.connect();
}

TEST(SimHidHost, OnlyABondedHostIsConnected) {
    sim::World world = sim::built_in_world();
    world.devices[0].is_hid_host = true;
    HidSim sim(patient_host(), world);
    EXPECT_EQ(sim.answers("DG" + kPhone), Strings{"DB" + kPhone + "00000002"}) << "not bonded";
    EXPECT_EQ(sim.answers("DG" + kKeyboard), Strings{"DB" + kKeyboard + "00000002"}) << "no host";
    EXPECT_EQ(sim.answers("DGAABBCCDDEEFF"), Strings{"DBAABBCCDDEEFF00000002"}) << "not there";
}

TEST(SimHidHost, ASecondHostIsRefused) {
    sim::World world = sim::built_in_world();
    world.devices[0].is_hid_host = true;
    world.bonded.push_back(world.devices[0].address);
    HidSim sim(patient_host(), world);
    sim.connect();
    EXPECT_EQ(sim.answers("DG" + kPhone), Strings{"DB" + kPhone + "00000002"});
    EXPECT_EQ(sim.answers("DG" + kLaptop), Strings{kConnected}) << "the first stays";
}

TEST(SimHidHost, ASecondConnectReportsWhatThereIs) {
    sim::Pace pace = patient_host();
    pace.profile_connect = hours(1);
    HidSim sim(pace);
    EXPECT_EQ(sim.answers("DG" + kLaptop), (Strings{kConnecting, kLinkUp}));
    EXPECT_EQ(sim.answers("DG" + kLaptop), Strings{kConnecting});
}

TEST(SimHidHost, GoesThroughItsRequestsWhenNothingIsAnswered) {
    sim::Pace pace = patient_host();
    pace.hid_step = milliseconds(1);
    pace.hid_interrupt = milliseconds(1);
    HidSim sim(pace);
    sim.connect();
    EXPECT_EQ(sim.client.events(5), (Strings{kSetProtocol, "DE02010001\x02", "DG010002\xDC\xDD",
                                             "DG010001\x02", "DG010002\xDC\xDD"}));
}

TEST(SimHidHost, AReportAnswersItsRequest) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DC01000000010005\xA1\xDC\xDD\xDC\xDE"), Strings{kSetProtocol});
    EXPECT_EQ(sim.answers("DC01000000010001\xA1"), Strings{}) << "a report like any other";
    sim.stop();
    EXPECT_NE(sim.log().find("the host has a report: type 1, id 1, 3 bytes: A1 00 0D\n"),
              std::string::npos);
}

TEST(SimHidHost, OnlyTheReportThatIsAskedForAnswers) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DC01000000020001\xA1"), Strings{});
    EXPECT_EQ(sim.answers("DC03000000010001\xA1"), Strings{});
    EXPECT_EQ(sim.answers("DC04000000010001\xA1"), Strings{});
    EXPECT_EQ(sim.answers("DC00000000010000"), Strings{});
    EXPECT_EQ(sim.answers("DC01000000010000"), Strings{kSetProtocol}) << "it may be empty";
    sim.stop();
    EXPECT_NE(sim.log().find("the host ignores a report of the unknown type 4\n"), std::string::npos);
}

TEST(SimHidHost, WithoutAConnectionThereIsNobodyToAnswer) {
    HidSim sim;
    EXPECT_EQ(sim.answers("DC01000000010001\xA1"), Strings{});
    EXPECT_EQ(sim.answers("DE01"), Strings{});
    EXPECT_EQ(sim.answers("DF"), Strings{});
    EXPECT_EQ(sim.answers("DH"), Strings{});
    sim.stop();
    EXPECT_EQ(sim.log().find("the host has a report"), std::string::npos);
}

TEST(SimHidHost, AsksAgainWhenTheDeviceIsNotReady) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DE00"), Strings{}) << "no error";
    EXPECT_EQ(sim.answers("DE01"), Strings{kGetReport});
    EXPECT_EQ(sim.answers("DE01"), Strings{kGetReport});
    EXPECT_EQ(sim.answers("DE03"), Strings{kSetProtocol}) << "it is not to be had: go on";
    EXPECT_EQ(sim.answers("DE01"), Strings{}) << "nothing is asked for now";
    EXPECT_EQ(sim.answers("DE03"), Strings{});
}

TEST(SimHidHost, AFatalErrorPullsTheCable) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DE0F"), (Strings{"DH", kDisconnected}));
    EXPECT_EQ(sim.answers("DB"), Strings{"DA" + kNoHost + kNotRegistered});
}

TEST(SimHidHost, UnpluggingForgetsTheHost) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DF"), Strings{kDisconnected});
    EXPECT_EQ(sim.answers("DB"), Strings{"DA" + kNoHost + kNotRegistered});
}

TEST(SimHidHost, DisconnectingTakesAStepOfItsOwn) {
    HidSim sim;
    sim.connect();
    sim.send("DH");
    EXPECT_EQ(sim.until(kDisconnected), (Strings{kDisconnecting, kDisconnected}));
    // It is known again when the device asks for it.
    sim.send("DG" + kLaptop);
    EXPECT_EQ(sim.client.events(3), (Strings{kConnecting, kConnected, kGetReport}));
}

TEST(SimHidHost, DisconnectingEndsTheRequests) {
    sim::Pace pace = patient_host();
    pace.profile_connect = milliseconds(20);
    pace.hid_step = milliseconds(1);
    pace.hid_interrupt = milliseconds(1);
    HidSim sim(pace);
    sim.connect();
    sim.until("DG");
    sim.send("DH");
    sim.until(kDisconnecting);
    EXPECT_EQ(sim.client.event(), kDisconnected);
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

TEST(SimHidHost, AConnectionThatIsNotThereYetEndsAtOnce) {
    sim::Pace pace = patient_host();
    pace.profile_connect = hours(1);
    HidSim sim(pace);
    EXPECT_EQ(sim.answers("DG" + kLaptop), (Strings{kConnecting, kLinkUp}));
    EXPECT_EQ(sim.answers("DH"), Strings{kDisconnected});
}

TEST(SimHidHost, UnregisteringEndsTheConnectionAndNamesTheHost) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("DB"), (Strings{kDisconnected, "DA" + kLaptop + kNotRegistered}));
    EXPECT_EQ(sim.answers("DG" + kLaptop), Strings{kDisconnected});
}

TEST(SimHidHost, AllEndsWithPower) {
    HidSim sim;
    sim.connect();
    EXPECT_EQ(sim.answers("PC"),
              (Strings{kDisconnected, "DA" + kLaptop + kNotRegistered, kLinkDown, "PA00"}));
}

TEST(SimHidHost, ALostLinkEndsTheConnection) {
    HidSim sim;
    sim.connect();
    // A removed bond drops its link.
    EXPECT_EQ(sim.answers("BO" + kLaptop),
              (Strings{kDisconnected, kLinkDown, "BH00" + kLaptop + "00"}));
}

TEST(SimHidHost, AClientThatLeavesTakesItsDeviceWithIt) {
    HidSim sim;
    sim.connect();
    sim.client.close();
    TestClient second = static_cast<RunningSim&>(sim).client();
    second.send("AT#DG" + kLaptop + "\r\n");
    EXPECT_EQ(second.event(), kDisconnected);
    second.send("AT#" + kRegister + "\r\n");
    EXPECT_EQ(second.event(), "DA" + kNoHost + kRegistered);
}

TEST(SimHidHost, MalformedCommandsAreNamedInTheLog) {
    HidSim sim;
    sim.connect();
    const Strings malformed{"DA",
                            "DA40",
                            "DA400004Key",
                            kRegister.substr(0, 24),
                            "DB0",
                            "DC",
                            "DC01",
                            "DC01000000010002\xA1",
                            "DC01000000010001\xDC",
                            "DC01000000010001\xA1x",
                            "DE",
                            "DE0",
                            "DFF",
                            "DG2E4C7074",
                            "DHA"};
    for (const std::string& command : malformed) {
        EXPECT_EQ(sim.answers(command), Strings{}) << command;
    }
    sim.stop();
    const std::string log = sim.log();
    size_t named = 0;
    for (size_t at = log.find("malformed command"); at != std::string::npos;
         at = log.find("malformed command", at + 1)) {
        ++named;
    }
    EXPECT_EQ(named, malformed.size());
}

} // namespace
