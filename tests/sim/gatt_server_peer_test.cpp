// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "low_energy_sim.h"

#include <algorithm>

namespace {

const std::string kService = in_command("180F");
const std::string kServiceTold = in_event("180F");
const std::string kLevel = in_command("2A19");
const std::string kLevelTold = in_event("2A19");

/// A server with the number 1.
class ServerSim : public PhoneSim {
public:
    explicit ServerSim(const sim::Pace& pace = low_energy_pace(),
                       sim::World world = sim::built_in_world())
        : PhoneSim(pace, std::move(world)) {
        EXPECT_EQ(answers("JA" + kAppInCommand), Strings{"JA0001" + kAppInEvent});
    }

    bool logged(const std::string& line) { return log().find(line + "\n") != std::string::npos; }

    /// A service at 0020 with a value at 0022 to read and write, one at 0024 to subscribe to, and the
    /// configuration of that at 0025.
    void add_service() {
        EXPECT_EQ(answers("JF01000000" + kService + "06"),
                  Strings{"JC0001000000" + kServiceTold + "0020"});
        EXPECT_EQ(answers("JH010020" + kLevel + "0A0011"), Strings{"JE0001" + kLevelTold + "00200022"});
        EXPECT_EQ(answers("JH010020" + in_command("2A1A") + "100000"),
                  Strings{"JE0001" + in_event("2A1A") + "00200024"});
        EXPECT_EQ(answers("JI010020" + in_command("2902") + "000A"),
                  Strings{"JF0001" + in_event("2902") + "00200025"});
    }

    /// Starts it, advertises, and takes what announces the central.
    void attract() {
        EXPECT_EQ(answers("JJ01002002"), Strings{"JG00010020"});
        send("KZC01");
        EXPECT_EQ(client.events(4), (Strings{"KZA0000", "BI00" + kTablet + "00",
                                             "JB" + kTablet + "01000101", "JP000100F7"}));
    }

    /// Responds to a transaction of connection 1 about a handle; the value is counted already.
    void respond(const std::string& transaction, const std::string& handle,
                 const std::string& value = "0000", const std::string& status = "00") {
        send("JO010001" + transaction + status + handle + "000000" + value);
        EXPECT_EQ(client.event(), "JJ00" + handle);
    }

    /// The central's whole visit to the service of add_service().
    void receive_visit() {
        EXPECT_EQ(client.event(), "JK" + kTablet + "000100010022000000");
        receive_rest_of_visit();
    }

    void receive_rest_of_visit() {
        respond("0001", "0022", "0003abc");
        EXPECT_EQ(client.event(), "JL" + kTablet + "0001000200220000" + "0100" + "0005hello");
        respond("0002", "0022");
        EXPECT_EQ(client.event(), "JL" + kTablet + "0001000300220000" + "0101" + "0007hello, ");
        respond("0003", "0022", "0007hello, ");
        EXPECT_EQ(client.event(), "JL" + kTablet + "0001000400220007" + "0101" + "0005world");
        respond("0004", "0022", "0005world");
        EXPECT_EQ(client.event(), "JM" + kTablet + "0001000501");
        respond("0005", "0022");
        EXPECT_EQ(client.event(), "JL" + kTablet + "0001000600250000" + "0100" + "0003\x01\xDC\xDD");
        respond("0006", "0025");
    }
};

// Services.

TEST(SimGattServer, RegistrationsCountFromOne) {
    ServerSim sim;
    EXPECT_EQ(sim.answers("JA00112233445566778899AABBCCDDEEFF"),
              Strings{"JA0002FFEEDDCCBBAA99887766554433221100"});
    EXPECT_EQ(sim.answers("JC02"), Strings{});
    EXPECT_EQ(sim.answers("JC02"), Strings{});
    EXPECT_EQ(sim.answers("JA12"), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("no GATT server 2 is registered"));
}

TEST(SimGattServer, WithoutPowerEverythingIsRefused) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("JA" + kAppInCommand), Strings{"JA8500" + kAppInEvent});
    EXPECT_EQ(sim.answers("JF01000000" + kService + "08"),
              Strings{"JC8501000000" + kServiceTold + "0000"});
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG85010020"});
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH85010020"});
    EXPECT_EQ(sim.answers("JL010020"), Strings{"JI85010020"});
    EXPECT_EQ(sim.answers("JD01" + kTablet + "01"), Strings{"JB" + kTablet + "00000001"});
}

TEST(SimGattServer, AServiceHoldsAsManyAttributesAsWereAskedFor) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "0A0011"), Strings{"JE8001" + kLevelTold + "00200000"});
    EXPECT_EQ(sim.answers("JI010020" + in_command("2901") + "0002"),
              Strings{"JF8001" + in_event("2901") + "00200000"});
    EXPECT_EQ(sim.answers("JF01000000" + kService + "00"),
              Strings{"JC8001000000" + kServiceTold + "0000"});
    // The next service begins behind it.
    EXPECT_EQ(sim.answers("JF01010001" + kService + "03"),
              Strings{"JC0001010001" + kServiceTold + "0026"});
    EXPECT_EQ(sim.answers("JG0100260020"), Strings{"JD000100260020"});
    EXPECT_EQ(sim.answers("JG0100260026"), Strings{"JD850100260026"});
    EXPECT_EQ(sim.answers("JG0100260099"), Strings{"JD850100260099"});
    EXPECT_EQ(sim.answers("JH010026" + kLevel + "020001"), Strings{"JE8001" + kLevelTold + "00260000"});
}

TEST(SimGattServer, ADescriptorNeedsItsCharacteristic) {
    ServerSim sim;
    EXPECT_EQ(sim.answers("JF01000000" + kService + "08"),
              Strings{"JC0001000000" + kServiceTold + "0020"});
    EXPECT_EQ(sim.answers("JI010020" + in_command("2902") + "000A"),
              Strings{"JF8501" + in_event("2902") + "00200000"});
}

TEST(SimGattServer, ServicesOfOthersAndUnknownOnesAreRefused) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("JA" + kNoUuid), Strings{"JA0002" + kNoUuid});
    EXPECT_EQ(sim.answers("JH020020" + kLevel + "020001"), Strings{"JE8502" + kLevelTold + "00200000"});
    EXPECT_EQ(sim.answers("JJ02002002"), Strings{"JG85020020"});
    EXPECT_EQ(sim.answers("JL020020"), Strings{"JI85020020"});
    EXPECT_EQ(sim.answers("JF09000000" + kService + "08"),
              Strings{"JC8509000000" + kServiceTold + "0000"});
    EXPECT_EQ(sim.answers("JF01020000" + kService + "08"),
              Strings{"JC8501020000" + kServiceTold + "0000"});
}

TEST(SimGattServer, ARunningServiceIsClosedToChanges) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH85010020"});
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG85010020"});
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "020001"), Strings{"JE8501" + kLevelTold + "00200000"});
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH00010020"});
    EXPECT_EQ(sim.answers("JL010020"), Strings{"JI00010020"});
    EXPECT_EQ(sim.answers("JL010020"), Strings{"JI85010020"});
}

// The central.

TEST(SimGattServer, ACentralReadsWritesAndSubscribes) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    sim.receive_visit();
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet finds service 180F at handle 32"));
    EXPECT_TRUE(sim.logged("Tablet has read handle 34: 61 62 63"));
    EXPECT_TRUE(sim.logged("Tablet has written handle 34"));
    EXPECT_TRUE(sim.logged("Tablet has prepared to write handle 34"));
    EXPECT_TRUE(sim.logged("Tablet has executed its long write to handle 34"));
    EXPECT_TRUE(sim.logged("Tablet has subscribed to handle 36"));
}

TEST(SimGattServer, ACentralComesOnlyWhileItIsInvited) {
    ServerSim sim;
    sim.add_service();
    // Advertising without a service, then a service without advertising.
    EXPECT_EQ(sim.answers("KZC01"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("KZC00"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    // Not connectable.
    EXPECT_EQ(sim.answers("KA" + kNoUuid), Strings{"KA0001" + kNoUuid});
    EXPECT_EQ(sim.answers("KXO0100200040030701"
                          "0000"),
              Strings{"KZE0100"});
    EXPECT_EQ(sim.answers("KXN01"), Strings{"KZH0100"});
    sim.send("KXO0100200040000701"
             "0000");
    EXPECT_EQ(sim.client.events(3),
              (Strings{"KZE0100", "BI00" + kTablet + "00", "JB" + kTablet + "01000101"}));
}

TEST(SimGattServer, AnInvitationIsTakenBack) {
    sim::Pace pace = low_energy_pace();
    pace.central_approach = std::chrono::hours(1);
    ServerSim sim(pace);
    sim.add_service();
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    EXPECT_EQ(sim.answers("KZC01"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("KZC00"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("KZC01"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
}

TEST(SimGattServer, OnlyTheRightTransactionMovesTheCentralOn) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event(), "JK" + kTablet + "000100010022000000");
    EXPECT_EQ(sim.answers("JO01000100090000220000000001x"), Strings{"JJ850022"});
    EXPECT_EQ(sim.answers("JO01000900010000220000000001x"), Strings{"JJ850022"});
    EXPECT_EQ(sim.answers("JO09000100010000220000000001x"), Strings{"JJ850022"});
    sim.respond("0001", "0022", "0001y");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010002");
    sim.stop();
    EXPECT_TRUE(sim.logged("nothing waits for a response to transaction 9"));
    EXPECT_TRUE(sim.logged("Tablet has read handle 34: 79"));
}

TEST(SimGattServer, ARefusalMovesTheCentralOnToo) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 22), "JK" + kTablet + "00010001");
    sim.respond("0001", "0022", "0000", "02");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010002");
    sim.respond("0002", "0022", "0000", "0D");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010003");
    // Without its first piece the long write is called off.
    sim.respond("0003", "0022", "0000", "09");
    EXPECT_EQ(sim.client.event(), "JM" + kTablet + "0001000400");
    sim.respond("0004", "0022");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010005");
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet is refused at handle 34: status 2"));
    EXPECT_TRUE(sim.logged("Tablet is refused at handle 34: status 13"));
    EXPECT_TRUE(sim.logged("Tablet is refused at handle 34: status 9"));
}

TEST(SimGattServer, APieceThatComesBackChangedIsNotExecuted) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 22), "JK" + kTablet + "00010001");
    sim.respond("0001", "0022", "0001x");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010002");
    sim.respond("0002", "0022");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010003");
    sim.respond("0003", "0022", "0005other");
    EXPECT_EQ(sim.client.event(), "JM" + kTablet + "0001000400");
}

TEST(SimGattServer, ALongValueIsReadInPieces) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event(), "JK" + kTablet + "000100010022000000");
    sim.respond("0001", "0022", "00F6" + std::string(246, 'a')); // as much as fits: there may be more
    EXPECT_EQ(sim.client.event(), "JK" + kTablet + "00010002002200F601");
    sim.respond("0002", "0022", "0002bc");
    EXPECT_EQ(sim.client.event().substr(0, 22), "JL" + kTablet + "00010003");
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet has read handle 34: 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 "
                           "61 61 61 61 61 61 61 61 61 ... (248 bytes)"));
}

TEST(SimGattServer, WithoutAResponseTheCentralGivesUp) {
    sim::Pace pace = low_energy_pace();
    pace.att_timeout = std::chrono::milliseconds(1);
    ServerSim sim(pace);
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.events(3), (Strings{"JK" + kTablet + "000100010022000000",
                                             "JB" + kTablet + "00000101", "BI00" + kTablet + "01"}));
    EXPECT_EQ(sim.answers("JO01000100010000220000000001x"), Strings{"JJ850022"});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet had no response to transaction 1 about handle 34 and gives up"));
}

TEST(SimGattServer, WhatPermissionsForbidIsLeftAlone) {
    ServerSim sim;
    sim.answers("JF01000000" + kService + "08");
    // Readable by its properties only; then only for who is paired; then a write that needs no
    // response.
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "020000"), Strings{"JE0001" + kLevelTold + "00200022"});
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "0A0022"), Strings{"JE0001" + kLevelTold + "00200024"});
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "040010"), Strings{"JE0001" + kLevelTold + "00200026"});
    sim.attract();
    EXPECT_EQ(sim.client.event(), "JL" + kTablet + "0001000100260000" + "0000" + "0005hello");
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet may not read handle 34: status 2"));
    EXPECT_TRUE(sim.logged("Tablet may not read handle 36: status 5"));
    EXPECT_TRUE(sim.logged("Tablet may not write handle 36: status 5"));
}

TEST(SimGattServer, AStoppedServiceIsAskedForNothingMore) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 2), "JK");
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH00010020"});
    EXPECT_EQ(sim.answers("JO01000100010000220000000001x"), Strings{"JJ850022"});
    // Started again, it is looked at again over the same connection.
    sim.send("JJ01002002");
    EXPECT_EQ(sim.client.events(2), (Strings{"JG00010020", "JK" + kTablet + "000100020022000000"}));
    EXPECT_EQ(sim.answers("JL010020"), Strings{"JI00010020"});
}

TEST(SimGattServer, TwoServersHaveAConnectionEach) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("JA" + kNoUuid), Strings{"JA0002" + kNoUuid});
    EXPECT_EQ(sim.answers("JF02000000" + in_command("180A") + "03"),
              Strings{"JC0002000000" + in_event("180A") + "0026"});
    EXPECT_EQ(sim.answers("JH020026" + in_command("2A29") + "020001"),
              Strings{"JE0002" + in_event("2A29") + "00260028"});
    sim.attract();
    sim.receive_visit();
    sim.send("JJ02002602");
    EXPECT_EQ(sim.client.events(4), (Strings{"JG00020026", "JB" + kTablet + "01000202", "JP000200F7",
                                             "JK" + kTablet + "000200070028000000"}));
    EXPECT_EQ(sim.answers("JE02" + kTablet + "0002"), Strings{"JB" + kTablet + "00000202"});
    EXPECT_EQ(sim.answers("JC01"), (Strings{"JB" + kTablet + "00000101", "BI00" + kTablet + "01"}));
}

// Several centrals.

const std::string kSecondTablet = "D25461626C75";
const std::string kThirdTablet = "D25461626C76";

sim::World three_tablets() {
    sim::World world = sim::built_in_world();
    for (const std::string& address : {kSecondTablet, kThirdTablet}) {
        sim::Device tablet = *world.find(sim::to_address(kTablet));
        tablet.address = sim::to_address(address);
        tablet.name += address == kSecondTablet ? " 2" : " 3";
        world.devices.push_back(tablet);
    }
    return world;
}

/// With three tablets that have connected and wait for their first value.
class CrowdedServerSim : public ServerSim {
public:
    CrowdedServerSim() : ServerSim(low_energy_pace(), three_tablets()) {
        add_service();
        EXPECT_EQ(answers("JJ01002002"), Strings{"JG00010020"});
        send("KZC01");
        // They come one after the other, but what each does then is its own affair.
        Strings events = client.events(13);
        std::sort(events.begin(), events.end());
        EXPECT_EQ(events, (Strings{"BI00" + kTablet + "00", "BI00" + kSecondTablet + "00",
                                   "BI00" + kThirdTablet + "00", "JB" + kTablet + "01000101",
                                   "JB" + kSecondTablet + "01000201", "JB" + kThirdTablet + "01000301",
                                   "JK" + kTablet + "000100010022000000",
                                   "JK" + kSecondTablet + "000200010022000000",
                                   "JK" + kThirdTablet + "000300010022000000", "JP000100F7",
                                   "JP000200F7", "JP000300F7", "KZA0000"}));
    }
};

TEST(SimGattServer, ThreeCentralsEachHaveAConnectionAndAConversation) {
    CrowdedServerSim sim;
    sim.send("JO01000200010000220000000003abc");
    EXPECT_EQ(sim.client.events(2),
              (Strings{"JJ000022", "JL" + kSecondTablet + "0002000200220000" + "0100" + "0005hello"}));
    // The others still wait for their first response.
    EXPECT_EQ(sim.answers("JO01000300020000220000000000"), Strings{"JJ850022"});
    sim.receive_rest_of_visit();
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet 2 has read handle 34: 61 62 63"));
    EXPECT_TRUE(sim.logged("Tablet has executed its long write to handle 34"));
    EXPECT_FALSE(sim.logged("Tablet 3 has read handle 34: 61 62 63"));
}

TEST(SimGattServer, WhatOneCentralSubscribedToIsNotSentToAnother) {
    CrowdedServerSim sim;
    sim.receive_rest_of_visit();
    EXPECT_EQ(sim.answers("JN010024000100015"), Strings{"JN000100"});
    EXPECT_EQ(sim.answers("JN010024000300015"), Strings{"JN000385"});
}

TEST(SimGattServer, ACentralThatLeavesDoesNotTakeTheOthersAlong) {
    CrowdedServerSim sim;
    EXPECT_EQ(sim.answers("JE01" + kSecondTablet + "0002"),
              (Strings{"JB" + kSecondTablet + "00000201", "BI00" + kSecondTablet + "01"}));
    sim.receive_rest_of_visit();
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH00010020"});
    // Started again, the service is looked at by those who are here, and brings back who is not.
    sim.send("JJ01002002");
    Strings events = sim.client.events(7);
    std::sort(events.begin(), events.end());
    EXPECT_EQ(events, (Strings{"BI00" + kSecondTablet + "00", "JB" + kSecondTablet + "01000401",
                               "JG00010020", "JK" + kTablet + "000100070022000000",
                               "JK" + kSecondTablet + "000400020022000000",
                               "JK" + kThirdTablet + "000300020022000000", "JP000400F7"}));
}

TEST(SimGattServer, PowerOffDisconnectsEveryCentral) {
    CrowdedServerSim sim;
    Strings events = sim.answers("PC");
    std::sort(events.begin(), events.end());
    EXPECT_EQ(events,
              (Strings{"BI00" + kTablet + "01", "BI00" + kSecondTablet + "01",
                       "BI00" + kThirdTablet + "01", "JB" + kTablet + "00000101",
                       "JB" + kSecondTablet + "00000201", "JB" + kThirdTablet + "00000301", "PA00"}));
}

// Connections that the client asks for.

TEST(SimGattServer, ACentralIsConnectedTo) {
    ServerSim sim;
    sim.add_service();
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG00010020"});
    sim.send("JD01" + kTablet + "01");
    EXPECT_EQ(sim.client.events(3),
              (Strings{"BI00" + kTablet + "00", "JB" + kTablet + "01000101", "JP000100F7"}));
    sim.receive_visit();
    EXPECT_EQ(sim.answers("JD01" + kTablet + "01"), Strings{"JB" + kTablet + "01000101"});
    EXPECT_EQ(sim.answers("JE01" + kTablet + "0002"), Strings{});
    EXPECT_EQ(sim.answers("JE01" + kTablet + "0001"),
              (Strings{"JB" + kTablet + "00000101", "BI00" + kTablet + "01"}));
    sim.stop();
    EXPECT_TRUE(sim.logged("server 1 has no connection 2 to D25461626C74"));
}

TEST(SimGattServer, WhoDoesNotAnswerIsGivenUp) {
    ServerSim sim;
    sim.send("JD01" + kNobody + "01");
    EXPECT_EQ(sim.client.event(), "JB" + kNobody + "00000001");
    sim.send("JD01" + kSpeaker + "01");
    EXPECT_EQ(sim.client.event(), "JB" + kSpeaker + "00000001");
    EXPECT_EQ(sim.answers("JD09" + kTablet + "01"), Strings{"JB" + kTablet + "00000009"});
}

TEST(SimGattServer, AnAttemptIsCalledOff) {
    sim::Pace pace = low_energy_pace();
    pace.le_connect_timeout = std::chrono::hours(1);
    ServerSim sim(pace);
    EXPECT_EQ(sim.answers("JD01" + kNobody + "01"), Strings{});
    EXPECT_EQ(sim.answers("JD01" + kNobody + "01"), Strings{});
    EXPECT_EQ(sim.answers("JE01" + kNobody + "0000"), Strings{});
    EXPECT_EQ(sim.answers("JD01" + kNobody + "00"), Strings{});
    EXPECT_EQ(sim.answers("PC"), (Strings{"JB" + kNobody + "00000001", "PA00"}));
    sim.stop();
    EXPECT_TRUE(sim.logged("this connection is being made already"));
    EXPECT_TRUE(sim.logged("the connection is no longer tried"));
}

TEST(SimGattServer, PowerOffDisconnects) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 2), "JK");
    EXPECT_EQ(sim.answers("PC"),
              (Strings{"JB" + kTablet + "00000101", "BI00" + kTablet + "01", "PA00"}));
}

TEST(SimGattServer, NothingOutlivesTheClientThatAskedForIt) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 2), "JK");
    sim.client.close();
    sim.client = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.answers("JJ01002002"), Strings{"JG85010020"});
    EXPECT_EQ(sim.answers("JA" + kNoUuid), Strings{"JA0002" + kNoUuid});
}

// Notifications.

TEST(SimGattServer, ASubscribedValueIsNotified) {
    ServerSim sim;
    sim.add_service();
    sim.attract();
    EXPECT_EQ(sim.client.event().substr(0, 2), "JK");
    EXPECT_EQ(sim.answers("JN010024000100015"), Strings{"JN000185"}); // not yet
    sim.receive_rest_of_visit();
    EXPECT_EQ(sim.answers("JN01002400010002\xDC\xDF"), Strings{"JN000100"});
    EXPECT_EQ(sim.answers("JM01002400010000015"), Strings{"JN000100"}); // needs no confirmation
    EXPECT_EQ(sim.answers("JM01002400010100015"), Strings{"JN000185"}); // an indication
    EXPECT_EQ(sim.answers("JN010022000100015"), Strings{"JN000185"});
    EXPECT_EQ(sim.answers("JN010024000700015"), Strings{"JN000785"});
    EXPECT_EQ(sim.answers("JN020024000100015"), Strings{"JN000185"});
    EXPECT_EQ(sim.answers("JN010024000100F5" + std::string(245, 'v')), Strings{"JN00010D"});
    EXPECT_EQ(sim.answers("JN010024000100F4" + std::string(244, 'v')), Strings{"JN000100"});
    EXPECT_EQ(sim.answers("JK010020"), Strings{"JH00010020"});
    EXPECT_EQ(sim.answers("JN010024000100015"), Strings{"JN000185"});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet receives a notification of handle 36: 0A"));
    EXPECT_TRUE(sim.logged("refused: notifications of handle 36 are not subscribed to"));
    EXPECT_TRUE(sim.logged("refused: indications of handle 36 are not subscribed to"));
    EXPECT_TRUE(sim.logged("refused: the server has no such connection"));
    EXPECT_TRUE(sim.logged("refused: the value is longer than 244 bytes"));
}

TEST(SimGattServer, IndicationsAreSubscribedToWhereThereIsNothingElse) {
    ServerSim sim;
    sim.answers("JF01000000" + kService + "08");
    EXPECT_EQ(sim.answers("JH010020" + kLevel + "200000"), Strings{"JE0001" + kLevelTold + "00200022"});
    EXPECT_EQ(sim.answers("JI010020" + in_command("2902") + "000A"),
              Strings{"JF0001" + in_event("2902") + "00200023"});
    sim.attract();
    EXPECT_EQ(sim.client.event(), "JL" + kTablet + "0001000100230000" + "0100" + "0003\x02\xDC\xDD");
    sim.respond("0001", "0023");
    EXPECT_EQ(sim.answers("JM01002200010100015"), Strings{"JN000100"});
    sim.stop();
    EXPECT_TRUE(sim.logged("Tablet receives an indication of handle 34: 35"));
}

} // namespace
