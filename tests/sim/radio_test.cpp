// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

Strings answers(TestClient& client, const std::string& commands) {
    client.send(commands);
    return client.events_until_version();
}

TEST(SimRadio, SignalStrengthNeedsALink) {
    RunningSim sim;
    TestClient client = sim.client();
    EXPECT_EQ(answers(client, "AT#BTBC64865617274\r\n"), Strings{"BSC648656172740200"});
    const sim::UniqueFd audio = client.enable();
    EXPECT_EQ(answers(client, "AT#BTBC64865617274\r\n"), Strings{"BSC648656172740100"});
    EXPECT_EQ(answers(client, "AT#BTB999999999999\r\n"), Strings{"BS9999999999990100"});
    EXPECT_EQ(answers(client, "AT#BMC64865617274\r\n").size(), 3U);
    EXPECT_EQ(answers(client, "AT#BTBC64865617274\r\n"), Strings{"BSC6486561727400B6"});
}

TEST(SimRadio, TheLocalAddressIsRead) {
    RunningSim sim;
    TestClient client = sim.client();
    EXPECT_EQ(answers(client, "AT#BTOR\r\n"), Strings{"BR00001A7DDA7113"});
}

TEST(SimRadio, AReceiverTestCountsPackets) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    EXPECT_EQ(answers(client, "AT#BTL0001000113\r\n"), Strings{"BQ01000000"});
    const Strings end = answers(client, "AT#BTL00030000\r\n");
    ASSERT_EQ(end.size(), 1U);
    EXPECT_EQ(end[0].substr(0, 6), "BQ0300");
    EXPECT_EQ(end[0].size(), 10U);
    EXPECT_NE(end[0].substr(6), "0000");
}

TEST(SimRadio, ATransmitterTestCountsNone) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    EXPECT_EQ(answers(client, "AT#BTL00020003272507\r\nAT#BTL00030000\r\n"),
              (Strings{"BQ02000000", "BQ03000000"}));
}

TEST(SimRadio, TestsThatCannotBeAreRefused) {
    RunningSim sim;
    TestClient client = sim.client();
    EXPECT_EQ(answers(client, "AT#BTL0001000113\r\n"), Strings{"BQ01020000"});
    const sim::UniqueFd audio = client.enable();
    EXPECT_EQ(answers(client, "AT#BTL00030000\r\n"), Strings{"BQ03010000"});       // none is running
    EXPECT_EQ(answers(client, "AT#BTL0001000128\r\n"), Strings{"BQ01070000"});     // channel 40
    EXPECT_EQ(answers(client, "AT#BTL00040000\r\n"), Strings{"BQ04070000"});       // no such operation
    EXPECT_EQ(answers(client, "AT#BTL00020003000008\r\n"), Strings{"BQ02070000"}); // no such payload
    EXPECT_EQ(answers(client, "AT#BTL0001000113\r\nAT#BTL0001000113\r\n"),
              (Strings{"BQ01000000", "BQ01040000"}));
}

TEST(SimRadio, AParameterCountBeyondTheCommandIsMalformed) {
    RunningSim sim;
    TestClient client = sim.client();
    EXPECT_EQ(answers(client, "AT#BTL0001FFFF13\r\n"), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("vym-sim: malformed command, ignored: bluetooth le_test: parameter:"),
              std::string::npos);
}

TEST(SimRadio, OutOfBandDataNeedsThePower) {
    RunningSim sim;
    TestClient client = sim.client();
    const std::string none(32, '0');
    EXPECT_EQ(answers(client, "AT#BEA\r\nAT#BEB\r\n"),
              (Strings{"BU02" + none + none, "BV02" + none + none + none + none}));
    const sim::UniqueFd audio = client.enable();
    const std::string c192 = "101112131415161718191A1B1C1D1E1F";
    const std::string r192 = "303132333435363738393A3B3C3D3E3F";
    const std::string c256 = "505152535455565758595A5B5C5D5E5F";
    const std::string r256 = "707172737475767778797A7B7C7D7E7F";
    EXPECT_EQ(answers(client, "AT#BEA\r\nAT#BEB\r\n"),
              (Strings{"BU00" + c192 + r192, "BV00" + c192 + r192 + c256 + r256}));
}

TEST(SimRadio, LoopbackModeIsKeptAndAnswersNothing) {
    RunningSim sim;
    TestClient client = sim.client();
    EXPECT_EQ(answers(client, "AT#BTP02\r\n"), Strings{});
    sim.stop();
    EXPECT_EQ(sim.world().adapter.loopback_mode, 2);
}

} // namespace
