// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

const std::string kSpeakerAsks = "BF1122334455660024041400Kitchen speaker";
const std::string kPhoneAsks = "BG2A416E6E6101005A020C000001E240Anna's phone";

struct PoweredSim {
    explicit PoweredSim(sim::World world = sim::built_in_world(), sim::Pace pace = RunningSim::quick())
        : sim(std::move(world), pace), client(sim.client()), audio(client.enable()) {}

    /// Sends commands and returns all that they caused.
    Strings answers(const std::string& commands) {
        client.send(commands);
        return client.events_until_version();
    }

    RunningSim sim;
    TestClient client;
    sim::UniqueFd audio;
};

TEST(SimBonding, TheRightPinBonds) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
    EXPECT_EQ(s.answers("AT#BR1122334455660100040000\r\n"),
              (Strings{"BI0011223344556600", "BH0011223344556602"}));
    // The newest bond is the last.
    EXPECT_EQ(s.answers("AT#BA08\r\n"),
              Strings{"BB0001001C0818\x2E\x43\x61\x72\x4B\x74\x26\x4B\x65\x79\x62\x64\x2E\x4C\x70\x74"
                      "\x6F\x70\x11\x22\x33\x44\x55\x66"});
}

TEST(SimBonding, AWrongOrRefusedPinFails) {
    PoweredSim s;
    for (const char* reply : {"AT#BR1122334455660100041234\r\n", "AT#BR112233445566000000\r\n",
                              "AT#BR1122334455660000040000\r\n", "AT#BR112233445566010000\r\n"}) {
        EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
        EXPECT_EQ(s.answers(reply), Strings{"BH0911223344556600"}) << reply;
    }
}

TEST(SimBonding, AConfirmedNumberBonds) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM2A416E6E6101\r\n"), (Strings{"BH002A416E6E610101", kPhoneAsks}));
    EXPECT_EQ(s.answers("AT#BS2A416E6E610100010001E240\r\n"),
              (Strings{"BI002A416E6E610100", "BH002A416E6E610102"}));
}

TEST(SimBonding, ARefusedNumberFails) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM2A416E6E6101\r\n"), (Strings{"BH002A416E6E610101", kPhoneAsks}));
    EXPECT_EQ(s.answers("AT#BS2A416E6E610100000001E240\r\n"), Strings{"BH092A416E6E610100"});
}

TEST(SimBonding, AReplyOfAnotherVariantFails) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM2A416E6E6101\r\n"), (Strings{"BH002A416E6E610101", kPhoneAsks}));
    EXPECT_EQ(s.answers("AT#BS2A416E6E610101010001E240\r\n"), Strings{"BH092A416E6E610100"});
}

TEST(SimBonding, ATypedNumberMustBeRight) {
    sim::World world = sim::built_in_world();
    world.bonded.clear();
    PoweredSim s(world);
    const Strings asked{"BH00264B6579626401", "BG264B657962640000254001"
                                              "00000000Office keyboard"};
    EXPECT_EQ(s.answers("AT#BM264B65796264\r\n"), asked);
    EXPECT_EQ(s.answers("AT#BS264B65796264010100000001\r\n"), Strings{"BH09264B6579626400"});
    EXPECT_EQ(s.answers("AT#BM264B65796264\r\n"), asked);
    EXPECT_EQ(s.answers("AT#BS264B6579626401010004"
                        "25D4\r\n"),
              (Strings{"BI00264B6579626400", "BH00264B6579626402"}));
}

TEST(SimBonding, JustWorksAsksNothing) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BMC64865617274\r\n"),
              (Strings{"BH00C6486561727401", "BI00C6486561727400", "BH00C6486561727402"}));
}

TEST(SimBonding, OutOfBandDataReplacesTheQuestion) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BN2A416E6E6101000000010004a\xDC\xDD"
                        "b\r\n"),
              (Strings{"BH002A416E6E610101", "BI002A416E6E610100", "BH002A416E6E610102"}));
}

TEST(SimBonding, ABondThatExistsIsReportedAtOnce) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM2E4361724B74\r\n"), Strings{"BH002E4361724B7402"});
}

TEST(SimBonding, AnUnknownDeviceIsDown) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM999999999999\r\n"), Strings{"BH0A99999999999900"});
    EXPECT_EQ(s.answers("AT#BN999999999999000000000001x\r\n"), Strings{"BH0A99999999999900"});
}

TEST(SimBonding, WithoutPowerItIsNotReady) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BM112233445566\r\nAT#BN112233445566000000000001x\r\n");
    EXPECT_EQ(client.events_until_version(), (Strings{"BH0211223344556600", "BH0211223344556600"}));
}

TEST(SimBonding, OnePairingAtATime) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
    EXPECT_EQ(s.answers("AT#BM2A416E6E6101\r\nAT#BM112233445566\r\n"),
              (Strings{"BH042A416E6E610100", "BH0411223344556601"}));
    EXPECT_EQ(s.answers("AT#BR1122334455660100040000\r\n"),
              (Strings{"BI0011223344556600", "BH0011223344556602"}));
}

TEST(SimBonding, RepliesToNoQuestionChangeNothing) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BR1122334455660100040000\r\nAT#BS2A416E6E610100010001E240\r\n"), Strings{});
    EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
    // A yes to a number does not answer the question for a PIN.
    EXPECT_EQ(s.answers("AT#BS11223344556600010001E240\r\n"), Strings{});
    EXPECT_EQ(s.answers("AT#BR1122334455660100040000\r\n").size(), 2U);
}

TEST(SimBonding, CancelEndsAPairing) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
    EXPECT_EQ(s.answers("AT#BP112233445566\r\n"), Strings{"BH0B11223344556600"});
    EXPECT_EQ(s.answers("AT#BR1122334455660100040000\r\n"), Strings{});
}

TEST(SimBonding, CancelOfNoPairingTellsTheState) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BP112233445566\r\nAT#BP2E4361724B74\r\nAT#BP999999999999\r\n"),
              (Strings{"BH0B11223344556600", "BH012E4361724B7402", "BH0A99999999999900"}));
}

TEST(SimBonding, CancelConnectingEndsTheConnectionOfAPairing) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BTD112233445566\r\n"), Strings{});
    EXPECT_EQ(s.answers("AT#BM112233445566\r\n"), (Strings{"BH0011223344556601", kSpeakerAsks}));
    EXPECT_EQ(s.answers("AT#BTD112233445566\r\n"), Strings{"BH0B11223344556600"});
}

TEST(SimBonding, NoReplyInTimeFails) {
    sim::Pace pace = RunningSim::quick();
    pace.pairing_timeout = std::chrono::milliseconds(1);
    PoweredSim s(sim::built_in_world(), pace);
    s.client.send("AT#BM112233445566\r\n");
    EXPECT_EQ(s.client.events(3), (Strings{"BH0011223344556601", kSpeakerAsks, "BH0911223344556600"}));
}

TEST(SimBonding, PowerOffEndsAPairing) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BM112233445566\r\nAT#PC\r\n"),
              (Strings{"BH0011223344556601", kSpeakerAsks, "BH0211223344556600", "PA00"}));
}

TEST(SimBonding, RemovingABondDropsItsLinkAndItsRecord) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BMC64865617274\r\n").size(), 3U);
    EXPECT_EQ(s.answers("AT#BOC64865617274\r\n"),
              (Strings{"BI00C6486561727401", "BH00C6486561727400"}));
    EXPECT_EQ(s.answers("AT#BO2E4361724B74\r\n"), Strings{"BH002E4361724B7400"});
    EXPECT_EQ(s.answers("AT#BA08\r\n"),
              Strings{"BB00010010080C\x26\x4B\x65\x79\x62\x64\x2E\x4C\x70\x74\x6F\x70"});
    EXPECT_EQ(s.answers("AT#BO999999999999\r\n"), Strings{"BH0A99999999999900"});
}

TEST(SimBonding, TheOldestBondMakesRoom) {
    sim::World world = sim::built_in_world();
    world.adapter.max_bonded = 3;
    PoweredSim s(world);
    EXPECT_EQ(s.answers("AT#BMC64865617274\r\n"),
              (Strings{"BH00C6486561727401", "BH002E4361724B7400", "BI00C6486561727400",
                       "BH00C6486561727402"}));
    EXPECT_EQ(
        s.answers("AT#BA08\r\n"),
        Strings{
            "BB000100160812\x26\x4B\x65\x79\x62\x64\x2E\x4C\x70\x74\x6F\x70\xC6\x48\x65\x61\x72\x74"});
}

TEST(SimBonding, ConnectionStateFollowsTheLink) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BQC64865617274\r\n"), Strings{"BI00C6486561727401"});
    EXPECT_EQ(s.answers("AT#BMC64865617274\r\n").size(), 3U);
    EXPECT_EQ(s.answers("AT#BQC64865617274\r\n"), Strings{"BI00C6486561727400"});
    EXPECT_EQ(s.answers("AT#BQ999999999999\r\n"), Strings{"BI0A99999999999901"});
}

TEST(SimBonding, AuthorisationIsNoted) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BTA1122334455660501\r\nAT#BTA1122334455660600\r\n"), Strings{});
    s.sim.stop();
    EXPECT_NE(s.sim.log().find("profile 5 of 112233445566 accepted\n"), std::string::npos);
    EXPECT_NE(s.sim.log().find("profile 6 of 112233445566 refused\n"), std::string::npos);
}

TEST(SimBonding, OutOfBandDataOfADeviceIsKept) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BEC112233445566000102030405060708090A0B0C0D0E0F"
                        "101112131415161718191A1B1C1D1E1F\r\n"),
              Strings{});
    s.sim.stop();
    EXPECT_EQ(s.sim.world().devices[1].oob_c192[15], 0x0F);
    EXPECT_EQ(s.sim.world().devices[1].oob_r192[0], 0x10);
}

TEST(SimBonding, AClientThatLeavesTakesItsQuestionWithIt) {
    PoweredSim s;
    EXPECT_EQ(s.answers("AT#BMC64865617274\r\nAT#BM112233445566\r\n").size(), 5U);
    s.client.close();
    TestClient second = s.sim.client();
    // Power, link and bond are as they were; the pairing is not.
    second.send("AT#BR1122334455660100040000\r\nAT#BQC64865617274\r\nAT#BA08\r\nAT#BM112233445566\r\n");
    EXPECT_EQ(second.events_until_version(),
              (Strings{"BI00C6486561727400",
                       "BB0001001C0818\x2E\x43\x61\x72\x4B\x74\x26\x4B\x65\x79\x62\x64\x2E\x4C\x70\x74"
                       "\x6F\x70\xC6\x48\x65\x61\x72\x74",
                       "BH0011223344556601", kSpeakerAsks}));
}

} // namespace
