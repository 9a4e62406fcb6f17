// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

TEST(SimPower, EnableReportsOnAndHandsOverTwoDescriptors) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.event(), "PA01");
    const std::string transport = client.event();
    EXPECT_EQ(transport.substr(0, 4), "PD01");
    EXPECT_EQ(transport.size(), 12U);
    EXPECT_EQ(transport.find_first_not_of("0123456789ABCDEF", 2), std::string::npos);
    EXPECT_TRUE(client.descriptor());
    EXPECT_EQ(client.event().substr(0, 4), "PD00");
    EXPECT_TRUE(client.descriptor());
    EXPECT_EQ(client.events_until_version(), Strings{});
}

TEST(SimPower, EnableWithoutFirmwareDownloadIsTheSame) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#PE\r\n");
    EXPECT_EQ(client.event(), "PA01");
    EXPECT_EQ(client.event().substr(0, 4), "PD01");
    EXPECT_TRUE(client.descriptor());
}

TEST(SimPower, ASecondEnableHandsOverNothing) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#PB\r\n");
    EXPECT_EQ(client.events_until_version(), Strings{"PA01"});
    EXPECT_EQ(client.descriptors_waiting(), 0U);
}

TEST(SimPower, DisableDropsLinksAndClosesTheDescriptor) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BMC64865617274\r\n");
    EXPECT_EQ(client.events(3),
              (Strings{"BH00C6486561727401", "BI00C6486561727400", "BH00C6486561727402"}));
    client.send("AT#PC\r\n");
    EXPECT_EQ(client.event(), "BI00C6486561727401");
    EXPECT_EQ(client.event(), "PA00");
    // Reads what was streamed, then the end.
    std::string last;
    do {
        last = read_exactly(audio.get(), 324);
    } while (last.size() == 324);
    EXPECT_EQ(last, "");
}

TEST(SimPower, EnableAfterDisableHandsOverANewDescriptor) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd first = client.enable();
    client.send("AT#PC\r\n");
    EXPECT_EQ(client.event(), "PA00");
    EXPECT_TRUE(client.enable());
}

TEST(SimPower, TheDescriptorComesBetweenItsEventAndTheNext) {
    RunningSim sim;
    TestClient client = sim.client();
    std::string burst;
    for (int i = 0; i < 50; ++i) {
        burst += "AT#PB\r\nAT#PV\r\nAT#PC\r\n";
    }
    client.send(burst);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(client.event(), "PA01");
        EXPECT_EQ(client.event().substr(0, 4), "PD01");
        EXPECT_TRUE(client.descriptor());
        EXPECT_EQ(client.event().substr(0, 4), "PD00");
        EXPECT_TRUE(client.descriptor());
        EXPECT_EQ(client.event(), "PVvym-sim 1.0");
        EXPECT_EQ(client.event(), "PA00");
    }
}

TEST(SimPower, VersionIsATextWithItsNul) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(read_exactly(client.fd(), 14), std::string("PVvym-sim 1.0\0", 14));
}

TEST(SimPower, PresetAddressBecomesTheAddress) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#PDA1B2C3D4E5F6\r\nAT#BTOR\r\n");
    EXPECT_EQ(client.event(), "BR00A1B2C3D4E5F6");
}

TEST(SimPower, SuspendHintsChangeTheWorldAndAnswerNothing) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BTOS\r\nAT#BTOW\r\nAT#BTOS\r\n");
    EXPECT_EQ(client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.world().adapter.suspended);
    EXPECT_NE(sim.log().find("<- bluetooth os_wakeup_action\n"), std::string::npos);
}

} // namespace
