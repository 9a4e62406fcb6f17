// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "low_energy_sim.h"

namespace {

/// One client, and on request a connection with the number 1.
class GattSim : public PhoneSim {
public:
    explicit GattSim(const std::string& peer = {}, const sim::Pace& pace = low_energy_pace(),
                     sim::World world = sim::built_in_world())
        : PhoneSim(pace, std::move(world)), peer_(peer) {
        EXPECT_EQ(answers("KA" + kAppInCommand), Strings{"KA0001" + kAppInEvent});
        if (!peer.empty()) {
            connect();
        }
    }

    void connect() {
        send("KE01" + peer_ + "0102");
        EXPECT_EQ(client.events(2), (Strings{"BI00" + peer_ + "00", "KE01000100" + peer_}));
    }

    bool logged(const std::string& line) { return log().find(line + "\n") != std::string::npos; }

private:
    std::string peer_;
};

// Parts of commands and events: a primary service, a characteristic, a descriptor.
std::string service(const std::string& uuid) {
    return "000000" + in_command(uuid);
}

std::string service_told(const std::string& uuid) {
    return "000000" + in_event(uuid);
}

std::string item(const std::string& uuid) {
    return "0000" + in_command(uuid);
}

std::string item_told(const std::string& uuid) {
    return "0000" + in_event(uuid);
}

const std::string kNoItem = "0000" + kNoUuid;
const std::string kPulse = service("180D") + item("2A37");
const std::string kPulseTold = service_told("180D") + item_told("2A37");
const std::string kControl = service("180D") + item("2A39");
const std::string kControlTold = service_told("180D") + item_told("2A39");

// The sensor's own service and its characteristics.
const std::string kOwnInCommand = "696E75676E6967676F4C796D0000457F";
const std::string kOwnInEvent = "7F4500006D794C6F6767696E67756E69";
const std::string kLog = "010000" + kOwnInCommand + "0000" + "696E75676E6967676F4C796D0100457F";
const std::string kLogTold = "010000" + kOwnInEvent + "0000" + "7F4500016D794C6F6767696E67756E69";
const std::string kMarker = "010000" + kOwnInCommand + "0000" + "696E75676E6967676F4C796D0200457F";
const std::string kMarkerTold = "010000" + kOwnInEvent + "0000" + "7F4500026D794C6F6767696E67756E69";
const std::string kCalibration = "010000" + kOwnInCommand + "0000" + "696E75676E6967676F4C796D0300457F";
const std::string kCalibrationTold =
    "010000" + kOwnInEvent + "0000" + "7F4500036D794C6F6767696E67756E69";

// Who there is.

TEST(SimGattClient, RegistrationsCountFromOne) {
    GattSim sim;
    EXPECT_EQ(sim.answers("KA00112233445566778899AABBCCDDEEFF"),
              Strings{"KA0002FFEEDDCCBBAA99887766554433221100"});
    EXPECT_EQ(sim.answers("KB02"), Strings{});
    EXPECT_EQ(sim.answers("KB02"), Strings{});
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA0003" + kAppInEvent});
    sim.stop();
    EXPECT_TRUE(sim.logged("no GATT client 2 is registered"));
}

TEST(SimGattClient, AFullHouseTakesNoMoreClients) {
    GattSim sim;
    for (int i = 2; i <= 32; ++i) {
        EXPECT_EQ(sim.answers("KA" + kNoUuid).front().substr(0, 4), "KA00");
    }
    EXPECT_EQ(sim.answers("KA" + kNoUuid), Strings{"KA8000" + kNoUuid});
}

TEST(SimGattClient, WithoutPowerThereIsNoClientAndNoConnection) {
    GattSim sim;
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA8500" + kAppInEvent});
    EXPECT_EQ(sim.answers("KE01" + kStrap + "0102"), Strings{"KE01000085" + kStrap});
}

TEST(SimGattClient, MalformedCommandsAreNamed) {
    GattSim sim;
    EXPECT_EQ(sim.answers("KA1234"), Strings{});
    EXPECT_EQ(sim.answers("KL0001"), Strings{});
    EXPECT_EQ(sim.answers("KF01" + kStrap + "0001FF"), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("malformed command, ignored: gatt_client register: UUID"),
              std::string::npos);
    EXPECT_NE(
        sim.log().find("malformed command, ignored: gatt_client read_characteristic: service type"),
        std::string::npos);
    EXPECT_NE(sim.log().find("malformed command, ignored: gatt_client disconnect: surplus"),
              std::string::npos);
}

// Connections.

TEST(SimGattClient, TheLinkGoesWithItsLastConnection) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KA" + kNoUuid), Strings{"KA0002" + kNoUuid});
    sim.send("KE02" + kStrap + "0100");
    EXPECT_EQ(sim.client.event(), "KE02000200" + kStrap);
    EXPECT_EQ(sim.answers("KF01" + kStrap + "0001"), Strings{"KF01000100" + kStrap});
    EXPECT_EQ(sim.answers("KF02" + kStrap + "0002"),
              (Strings{"KF02000200" + kStrap, "BI00" + kStrap + "01"}));
}

TEST(SimGattClient, ConnectingAgainNamesTheSameConnection) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KE01" + kStrap + "0102"), Strings{"KE01000100" + kStrap});
}

TEST(SimGattClient, WhoDoesNotAnswerIsGivenUp) {
    GattSim sim;
    sim.send("KE01" + kNobody + "0102");
    EXPECT_EQ(sim.client.event(), "KE01000085" + kNobody);
    sim.send("KE01" + kSpeaker + "0102"); // no peripheral
    EXPECT_EQ(sim.client.event(), "KE01000085" + kSpeaker);
    sim.send("KE01" + kStrap + "0101"); // not by the classic radio
    EXPECT_EQ(sim.client.event(), "KE01000085" + kStrap);
    EXPECT_EQ(sim.answers("KE09" + kStrap + "0102"), Strings{"KE09000085" + kStrap});
}

TEST(SimGattClient, AnAttemptIsCalledOff) {
    sim::Pace pace = low_energy_pace();
    pace.le_connect_timeout = std::chrono::hours(1);
    GattSim sim({}, pace);
    EXPECT_EQ(sim.answers("KE01" + kNobody + "0102"), Strings{});
    EXPECT_EQ(sim.answers("KE01" + kNobody + "0102"), Strings{});
    EXPECT_EQ(sim.answers("KF01" + kNobody + "0000"), Strings{});
    EXPECT_EQ(sim.answers("KE01" + kNobody + "0002"), Strings{}); // waits in the background
    EXPECT_EQ(sim.answers("PC"), (Strings{"KE01000085" + kNobody, "PA00"}));
    sim.stop();
    EXPECT_TRUE(sim.logged("this connection is being made already"));
    EXPECT_TRUE(sim.logged("the connection is no longer tried"));
    EXPECT_TRUE(sim.logged("waiting for 0102030405FF to appear"));
}

TEST(SimGattClient, AWrongDisconnectIsNamed) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KF01" + kStrap + "0002"), Strings{});
    EXPECT_EQ(sim.answers("KF02" + kStrap + "0001"), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("client 1 has no connection 2 to C64865617274"));
    EXPECT_TRUE(sim.logged("client 2 has no connection 1 to C64865617274"));
}

TEST(SimGattClient, UnregisteringDisconnects) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KB01"), (Strings{"KF01000100" + kStrap, "BI00" + kStrap + "01"}));
}

TEST(SimGattClient, PowerOffDisconnects) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("PC"), (Strings{"KF01000116" + kStrap, "BI00" + kStrap + "01", "PA00"}));
}

TEST(SimGattClient, NothingOutlivesTheClientThatAskedForIt) {
    GattSim sim(kStrap);
    sim.client.close();
    sim.client = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.answers("KB01"), Strings{});
    EXPECT_EQ(sim.answers("KU01" + kStrap), Strings{"KR01" + kStrap + "0085"});
}

TEST(SimGattClient, CleaningUpEndsEverything) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KW"), (Strings{"KF01000100" + kStrap, "BI00" + kStrap + "01"}));
    EXPECT_EQ(sim.answers("KE01" + kStrap + "0102"), Strings{"KE01000085" + kStrap});
}

TEST(SimGattClient, SignalStrengthNeedsAConnection) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KU01" + kStrap), Strings{"KR01C64865617274B600"});
    EXPECT_EQ(sim.answers("KU01" + kSensor), Strings{"KR01E2436C696D610085"});
}

TEST(SimGattClient, TheMtuIsWhatBothCanDo) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KY00010205"), Strings{"KT0000000100000000F7"});
    EXPECT_EQ(sim.answers("KY00010064"), Strings{"KT000000010000000064"});
    EXPECT_EQ(sim.answers("KY00010001"), Strings{"KT000000010000000017"});
    EXPECT_EQ(sim.answers("KY00090064"), Strings{"KT000000098500000000"});
}

TEST(SimGattClient, ConnectionParametersAreJudged) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KR01" + kStrap + "00180028000001F4"), Strings{});
    EXPECT_EQ(sim.answers("KR01" + kStrap + "00280018000001F4"), Strings{});
    EXPECT_EQ(sim.answers("KR01" + kStrap + "0018002801F401F4"), Strings{});
    EXPECT_EQ(sim.answers("KR01" + kStrap + "0018002800000009"), Strings{});
    EXPECT_EQ(sim.answers("KR01" + kStrap + "001800280064000A"), Strings{});
    EXPECT_EQ(sim.answers("KR01" + kSensor + "00180028000001F4"), Strings{});
    sim.stop();
    const std::string refused = "connection parameters refused: ";
    EXPECT_TRUE(sim.logged("connection parameters accepted"));
    EXPECT_TRUE(
        sim.logged(refused + "the intervals must lie within 6 and 3200, the smaller one first"));
    EXPECT_TRUE(sim.logged(refused + "the latency is more than 499"));
    EXPECT_TRUE(sim.logged(refused + "the time-out must lie within 10 and 3200"));
    EXPECT_TRUE(sim.logged(refused + "the time-out is over before the device must have answered"));
    EXPECT_TRUE(sim.logged(refused + "the client is not connected to this device"));
}

TEST(SimGattClient, WhatHasNoAnswerIsInTheLog) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KG01" + kStrap), Strings{});
    EXPECT_EQ(sim.answers("KV0001"), Strings{});
    EXPECT_EQ(sim.answers("KV0002"), Strings{});
    EXPECT_EQ(sim.answers(std::string("KSB0003\x41\xDC\xDD")), Strings{});
    EXPECT_EQ(sim.answers("KT0000000700000001000000020102030405060000000100000002"
                          "000000030000000400000005"),
              Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("nothing is cached of C64865617274"));
    EXPECT_TRUE(sim.logged("1 service 180D"));
    EXPECT_TRUE(sim.logged("3  characteristic 2A37: 00 48"));
    EXPECT_TRUE(sim.logged("4    descriptor 2902: 00 00"));
    EXPECT_TRUE(sim.logged("there is no connection 2"));
    EXPECT_TRUE(sim.logged("data sent: 41 00"));
    EXPECT_TRUE(sim.logged("GATT test 7: nothing to test here"));
}

// What it offers.

TEST(SimGattClient, ASearchNamesServicesAndEnds) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KH0001010000"),
              (Strings{"KH00010000000000180D00001000800000805F9B34FB",
                       "KH00010000000000180F00001000800000805F9B34FB",
                       "KH00010000000000180A00001000800000805F9B34FB", "KG000100"}));
    EXPECT_EQ(sim.answers("KH000100180F"),
              (Strings{"KH00010000000000180F00001000800000805F9B34FB", "KG000100"}));
    EXPECT_EQ(sim.answers("KH0001001812"), Strings{"KG000100"});
    EXPECT_EQ(sim.answers("KH0007010000"), Strings{"KG000785"});
}

TEST(SimGattClient, CharacteristicsComeOneAfterTheOther) {
    GattSim sim(kStrap);
    const std::string in = service("180D");
    const std::string told = service_told("180D");
    EXPECT_EQ(sim.answers("KJ0001" + in + kNoItem),
              Strings{"KI000100" + told + item_told("2A37") + "00000010"});
    EXPECT_EQ(sim.answers("KJ0001" + in + item("2A37")),
              Strings{"KI000100" + told + item_told("2A38") + "00000002"});
    EXPECT_EQ(sim.answers("KJ0001" + in + item("2A38")),
              Strings{"KI000100" + told + item_told("2A39") + "00000008"});
    EXPECT_EQ(sim.answers("KJ0001" + in + item("2A39")),
              Strings{"KI000185" + told + item_told("2A39") + "00000000"});
    EXPECT_EQ(sim.answers("KJ0001" + service("1812") + kNoItem),
              Strings{"KI000185" + service_told("1812") + kNoItem + "00000000"});
    EXPECT_EQ(sim.answers("KJ0002" + in + kNoItem), Strings{"KI000285" + told + kNoItem + "00000000"});
}

TEST(SimGattClient, DescriptorsComeOneAfterTheOther) {
    GattSim sim(kSensor);
    const std::string in = service("181A") + item("2A6E");
    const std::string told = service_told("181A") + item_told("2A6E");
    EXPECT_EQ(sim.answers("KK0001" + in + kNoItem), Strings{"KJ000100" + told + item_told("2902")});
    EXPECT_EQ(sim.answers("KK0001" + in + item("2902")),
              Strings{"KJ000100" + told + item_told("2901")});
    EXPECT_EQ(sim.answers("KK0001" + in + item("2901")),
              Strings{"KJ000100" + told + item_told("2904")});
    EXPECT_EQ(sim.answers("KK0001" + in + item("2904")),
              Strings{"KJ000185" + told + item_told("2904")});
    EXPECT_EQ(sim.answers("KK0001" + service("181A") + item("2A00") + kNoItem),
              Strings{"KJ000185" + service_told("181A") + item_told("2A00") + kNoItem});
}

TEST(SimGattClient, AServiceIncludesAnother) {
    GattSim sim(kSensor);
    EXPECT_EQ(sim.answers("KI0001" + service("181A") + "000000" + kNoUuid),
              Strings{"KK000100" + service_told("181A") + "010000" + kOwnInEvent});
    EXPECT_EQ(sim.answers("KI0001" + service("181A") + "010000" + kOwnInCommand),
              Strings{"KK000185" + service_told("181A") + "010000" + kOwnInEvent});
    // It is no result of a search, but its items can be asked for.
    EXPECT_EQ(sim.answers("KH0001010000"), (Strings{"KH0001" + service_told("181A"), "KG000100"}));
    EXPECT_EQ(sim.answers("KJ0001010000" + kOwnInCommand + kNoItem),
              Strings{"KI000100" + kLogTold + "0000000A"});
}

// Values.

TEST(SimGattClient, ACharacteristicIsRead) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KL0001" + service("180D") + item("2A38") + "00"),
              Strings{"KM000100" + service_told("180D") + item_told("2A38") + "000001\x01"});
    EXPECT_EQ(sim.answers("KL0001" + service("180A") + item("2A24") + "00"),
              Strings{"KM000100" + service_told("180A") + item_told("2A24") + "000004HS-1"});
}

TEST(SimGattClient, ReadingIsRefusedWithTheReason) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KL0001" + kPulse + "00"), Strings{"KM000102" + kPulseTold + "000000"});
    EXPECT_EQ(sim.answers("KL0001" + service("180D") + item("2A00") + "00"),
              Strings{"KM00010A" + service_told("180D") + item_told("2A00") + "000000"});
    EXPECT_EQ(sim.answers("KL0004" + kPulse + "00"), Strings{"KM000485" + kPulseTold + "000000"});
    EXPECT_EQ(sim.answers("KN0001" + kPulse + item("2901") + "00"),
              Strings{"KP00010A" + kPulseTold + item_told("2901") + "000000"});
}

TEST(SimGattClient, WritingIsRefusedWithTheReason) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KM0001" + kControl + "02000001\x01"), Strings{"KN000100" + kControlTold});
    EXPECT_EQ(sim.answers("KM0001" + kControl + "02000001\x02"), Strings{"KN000180" + kControlTold});
    EXPECT_EQ(sim.answers("KM0001" + kControl + "02000002\x01\x01"),
              Strings{"KN00010D" + kControlTold});
    EXPECT_EQ(sim.answers("KM0001" + kControl + "01000001\x01"), Strings{"KN000103" + kControlTold});
    EXPECT_EQ(sim.answers("KM0001" + kControl + "07000001\x01"), Strings{"KN000185" + kControlTold});
    EXPECT_EQ(sim.answers("KM0001" + service("180D") + item("2A38") + "02000001\x01"),
              Strings{"KN000103" + service_told("180D") + item_told("2A38")});
    EXPECT_EQ(sim.answers("KM0001" + service("180D") + item("2A00") + "02000001\x01"),
              Strings{"KN00010A" + service_told("180D") + item_told("2A00")});
    EXPECT_EQ(sim.answers("KM0005" + kControl + "02000001\x01"), Strings{"KN000585" + kControlTold});
}

TEST(SimGattClient, LongValuesAreReadAndWrittenWhole) {
    GattSim sim(kSensor);
    std::string before;
    while (before.size() < 512) {
        before += "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    }
    before.resize(512);
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"), Strings{"KM000100" + kLogTold + "000200" + before});
    const std::string zero = "\xDC\xDD";
    EXPECT_EQ(sim.answers("KM0001" + kLog + "02000201" + std::string(511, 'z') + zero),
              Strings{"KN000100" + kLogTold});
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"),
              Strings{"KM000100" + kLogTold + "000201" + std::string(511, 'z') + zero});
    EXPECT_EQ(sim.answers("KM0001" + kLog + "02000201" + std::string(513, 'z')),
              Strings{"KN00010D" + kLogTold});
}

TEST(SimGattClient, AWriteCommandMustFitIntoOnePacket) {
    GattSim sim(kSensor);
    EXPECT_EQ(sim.answers("KM0001" + kMarker + "01000014" + std::string(20, 'm')),
              Strings{"KN000100" + kMarkerTold});
    EXPECT_EQ(sim.answers("KM0001" + kMarker + "01000015" + std::string(21, 'm')),
              Strings{"KN00010D" + kMarkerTold});
    EXPECT_EQ(sim.answers("KM0001" + kMarker + "02000001m"), Strings{"KN000103" + kMarkerTold});
    EXPECT_EQ(sim.answers("KY000100F7").size(), 1U);
    EXPECT_EQ(sim.answers("KM0001" + kMarker + "01000015" + std::string(21, 'm')),
              Strings{"KN000100" + kMarkerTold});
}

TEST(SimGattClient, PreparedWritesWaitUntilTheyAreExecuted) {
    GattSim sim(kSensor);
    EXPECT_EQ(sim.answers("KM0001" + kLog + "02000003old"), Strings{"KN000100" + kLogTold});
    EXPECT_EQ(sim.answers("KM0001" + kLog + "03000004new "), Strings{"KN000100" + kLogTold});
    EXPECT_EQ(sim.answers("KM0001" + kLog + "03000005value"), Strings{"KN000100" + kLogTold});
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"), Strings{"KM000100" + kLogTold + "000003old"});
    EXPECT_EQ(sim.answers("KP000101"), Strings{"KO000100"});
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"), Strings{"KM000100" + kLogTold + "000009new value"});
    EXPECT_EQ(sim.answers("KM0001" + kLog + "03000004gone"), Strings{"KN000100" + kLogTold});
    EXPECT_EQ(sim.answers("KP000100"), Strings{"KO000100"});
    EXPECT_EQ(sim.answers("KP000101"), Strings{"KO000100"}); // nothing is left
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"), Strings{"KM000100" + kLogTold + "000009new value"});
    EXPECT_EQ(sim.answers("KP000901"), Strings{"KO000985"});
}

TEST(SimGattClient, PreparedWritesAreJudgedTogether) {
    GattSim sim(kSensor);
    EXPECT_EQ(sim.answers("KM0001" + kLog + "02000003old"), Strings{"KN000100" + kLogTold});
    for (const char* piece : {"03000100", "03000101"}) { // 256 and 257 bytes
        const size_t size = std::string(piece) == "03000100" ? 256 : 257;
        EXPECT_EQ(sim.answers("KM0001" + kLog + piece + std::string(size, 'p')),
                  Strings{"KN000100" + kLogTold});
    }
    EXPECT_EQ(sim.answers("KP000101"), Strings{"KO00010D"});
    EXPECT_EQ(sim.answers("KL0001" + kLog + "00"), Strings{"KM000100" + kLogTold + "000003old"});
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(sim.answers("KM0001" + kLog + "03000001p"), Strings{"KN000100" + kLogTold});
    }
    EXPECT_EQ(sim.answers("KM0001" + kLog + "03000001p"), Strings{"KN000109" + kLogTold});
}

TEST(SimGattClient, DescriptorsAreReadAndWritten) {
    GattSim sim(kSensor);
    const std::string in = service("181A") + item("2A6E");
    const std::string told = service_told("181A") + item_told("2A6E");
    EXPECT_EQ(sim.answers("KN0001" + in + item("2901") + "00"),
              Strings{"KP000100" + told + item_told("2901") + "00000BLiving room"});
    EXPECT_EQ(sim.answers("KO0001" + in + item("2901") + "02000001x"),
              Strings{"KQ000103" + told + item_told("2901")});
    EXPECT_EQ(sim.answers("KN0001" + in + item("2902") + "00"),
              Strings{"KP000100" + told + item_told("2902") + "000004\xDC\xDD\xDC\xDD"});
    EXPECT_EQ(sim.answers("KO0001" + in + item("2902") + "02000003\x03\xDC\xDD"),
              Strings{"KQ000100" + told + item_told("2902")});
    EXPECT_EQ(sim.answers("KN0001" + in + item("2902") + "00"),
              Strings{"KP000100" + told + item_told("2902") + "000003\x03\xDC\xDD"});
    EXPECT_EQ(sim.answers("KO0001" + in + item("2A00") + "02000001x"),
              Strings{"KQ00010A" + told + item_told("2A00")});
    EXPECT_EQ(sim.answers("KO0003" + in + item("2902") + "02000001x"),
              Strings{"KQ000385" + told + item_told("2902")});
}

TEST(SimGattClient, AConfigurationMustFitTheCharacteristic) {
    GattSim sim(kStrap);
    const std::string told = kPulseTold + item_told("2902");
    EXPECT_EQ(sim.answers("KO0001" + kPulse + item("2902") + "02000003\x02\xDC\xDD"),
              Strings{"KQ0001FD" + told});
    EXPECT_EQ(sim.answers("KO0001" + kPulse + item("2902") + "02000001\x01"),
              Strings{"KQ00010D" + told});
    EXPECT_EQ(sim.answers("KO0001" + kPulse + item("2902") + "02000003\x01\xDC\xDD"),
              Strings{"KQ000100" + told});
}

TEST(SimGattClient, SomeValuesAreOnlyForWhoIsPaired) {
    GattSim sim(kSensor);
    EXPECT_EQ(sim.answers("KL0001" + kCalibration + "00"),
              Strings{"KM000105" + kCalibrationTold + "000000"});
    EXPECT_EQ(sim.answers("KM0001" + kCalibration + "02000002ab"),
              Strings{"KN000105" + kCalibrationTold});
    sim::World world = sim::built_in_world();
    world.bonded.push_back(sim::to_address(kSensor));
    GattSim paired(kSensor, low_energy_pace(), world);
    EXPECT_EQ(paired.answers("KM0001" + kCalibration + "02000002ab"),
              Strings{"KN000100" + kCalibrationTold});
    EXPECT_EQ(paired.answers("KL0001" + kCalibration + "00"),
              Strings{"KM000100" + kCalibrationTold + "000002ab"});
}

// Notifications.

sim::Pace notifying_pace() {
    sim::Pace pace = low_energy_pace();
    pace.notification_interval = std::chrono::milliseconds(1);
    return pace;
}

std::string write_configuration(const std::string& characteristic, const std::string& value) {
    return "KO0001" + characteristic + item("2902") + "0200" + value;
}

const std::string kOff = "0004\xDC\xDD\xDC\xDD";
const std::string kNotify = "0003\x01\xDC\xDD";
const std::string kIndicate = "0003\x02\xDC\xDD";

TEST(SimGattClient, ThePulseIsNotifiedAsItRisesAndFalls) {
    GattSim sim(kStrap, notifying_pace());
    EXPECT_EQ(sim.answers("KQ01" + kStrap + kPulse + "01"), Strings{"KL00010001" + kPulseTold});
    sim.send(write_configuration(kPulse, kNotify));
    EXPECT_EQ(sim.client.event(), "KQ000100" + kPulseTold + item_told("2902"));
    // 74, 76 ... 90, 88 ...: flags, then the pulse.
    const std::string head = "KD0001" + kStrap + kPulseTold + "010003\xDC\xDD";
    for (const char pulse :
         {'\x4A', '\x4C', '\x4E', '\x50', '\x52', '\x54', '\x56', '\x58', '\x5A', '\x58', '\x56'}) {
        EXPECT_EQ(sim.client.event(), head + pulse);
    }
    sim.send(write_configuration(kPulse, kOff));
    EXPECT_EQ(sim.until("KQ").back(), "KQ000100" + kPulseTold + item_told("2902"));
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

TEST(SimGattClient, NothingIsNotifiedToWhoIsNotRegistered) {
    GattSim sim(kStrap, notifying_pace());
    sim.send(write_configuration(kPulse, kNotify));
    EXPECT_EQ(sim.client.event(), "KQ000100" + kPulseTold + item_told("2902"));
    EXPECT_EQ(sim.answers("KQ01" + kStrap + kPulse + "00"), Strings{"KL00010000" + kPulseTold});
    sim.send("KQ01" + kStrap + kPulse + "01");
    EXPECT_EQ(sim.client.event(), "KL00010001" + kPulseTold);
    EXPECT_EQ(sim.client.event().substr(0, 18), "KD0001" + kStrap);
    sim.send("KQ01" + kStrap + kPulse + "00");
    EXPECT_EQ(sim.until("KL").back(), "KL00010000" + kPulseTold);
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

TEST(SimGattClient, IndicationsSayThatTheyAreSome) {
    GattSim sim(kSensor, notifying_pace());
    const std::string in = service("181A") + item("2A6E");
    const std::string told = service_told("181A") + item_told("2A6E");
    EXPECT_EQ(sim.answers("KQ01" + kSensor + in + "01"), Strings{"KL00010001" + told});
    sim.send(write_configuration(in, kIndicate));
    EXPECT_EQ(sim.client.event(), "KQ000100" + told + item_told("2902"));
    // 21.75 degrees, in hundredths.
    EXPECT_EQ(sim.client.event(), "KD0001" + kSensor + told + "000002\x7F\x08");
}

TEST(SimGattClient, EachClientIsNotifiedOverItsOwnConnection) {
    GattSim sim(kStrap, notifying_pace());
    EXPECT_EQ(sim.answers("KA" + kNoUuid), Strings{"KA0002" + kNoUuid});
    sim.send("KE02" + kStrap + "0102");
    EXPECT_EQ(sim.client.event(), "KE02000200" + kStrap);
    EXPECT_EQ(sim.answers("KQ01" + kStrap + kPulse + "01").size(), 1U);
    EXPECT_EQ(sim.answers("KQ02" + kStrap + kPulse + "01"), Strings{"KL00020001" + kPulseTold});
    sim.send(write_configuration(kPulse, kNotify));
    EXPECT_EQ(sim.client.events(3), (Strings{"KQ000100" + kPulseTold + item_told("2902"),
                                             "KD0001" + kStrap + kPulseTold + "010003\xDC\xDDJ",
                                             "KD0002" + kStrap + kPulseTold + "010003\xDC\xDDJ"}));
}

TEST(SimGattClient, RegistrationIsRefusedWithTheReason) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers("KQ01" + kSensor + kPulse + "01"), Strings{"KL00008500" + kPulseTold});
    EXPECT_EQ(sim.answers("KQ01" + kStrap + kControl + "01"), Strings{"KL00010600" + kControlTold});
    EXPECT_EQ(sim.answers("KQ01" + kStrap + service("180D") + item("2A00") + "01"),
              Strings{"KL00010A00" + service_told("180D") + item_told("2A00")});
}

TEST(SimGattClient, AStrangersSubscriptionEndsWithTheLink) {
    GattSim sim(kStrap);
    EXPECT_EQ(sim.answers(write_configuration(kPulse, kNotify)),
              Strings{"KQ000100" + kPulseTold + item_told("2902")});
    EXPECT_EQ(sim.answers("KF01" + kStrap + "0001").size(), 2U);
    sim.send("KE01" + kStrap + "0102");
    EXPECT_EQ(sim.client.events(2), (Strings{"BI00" + kStrap + "00", "KE01000200" + kStrap}));
    EXPECT_EQ(sim.answers("KN0002" + kPulse + item("2902") + "00"),
              Strings{"KP000200" + kPulseTold + item_told("2902") + "000004\xDC\xDD\xDC\xDD"});
}

TEST(SimAttributes, APieceOfALongWriteMustTouchWhatIsThere) {
    std::string value = "abc";
    EXPECT_EQ(sim::splice(value, 4, "x"), 7);
    EXPECT_EQ(sim::splice(value, 3, "def"), 0);
    EXPECT_EQ(sim::splice(value, 1, "B"), 0);
    EXPECT_EQ(value, "aBcdef");
    EXPECT_EQ(sim::splice(value, 6, std::string(507, 'x')), 13);
}

// In a crowded hall.

TEST(SimHall, ABadgeCanBeConnectedToAndOffersItsService) {
    sim::World world = sim::built_in_world();
    world.hall = 10;
    PhoneSim sim(low_energy_pace(), std::move(world));
    EXPECT_EQ(sim.answers("KA" + kAppInCommand), Strings{"KA0001" + kAppInEvent});
    const std::string badge = "F44841000003";
    sim.send("KE01" + badge + "0102");
    EXPECT_EQ(sim.until("KE"), (Strings{"BI00" + badge + "00", "KE01000100" + badge}));
    EXPECT_EQ(sim.answers("KH0001010000"), (Strings{"KH0001000000" + in_event("1809"),
                                                    "KH0001000000" + in_event("180A"), "KG000100"}));
}

} // namespace
