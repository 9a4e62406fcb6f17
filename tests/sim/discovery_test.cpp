// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

const Strings kDevices{
    "BD2A416E6E610103005A020CCC000E\x01\x11\xDC\xDF\x11\x0C\x11\x1F\x11\x2F\x11\xDC\xDD\x18"
    "Anna's phone",
    "BD1122334455660100240414BD0006\x0B\x11\x0E\x11\x1E\x11Kitchen speaker",
    "BDC648656172740200000000B60008\xDC\xDE\x18\x0F\x18\xDC\xDF\x18Heart strap",
};

void expect_whole_discovery(TestClient& client) {
    EXPECT_EQ(client.event(), "BE01");
    EXPECT_EQ(client.events(3), kDevices);
    EXPECT_EQ(client.event(), "BE00");
}

sim::Pace never_a_step() {
    sim::Pace pace = RunningSim::quick();
    pace.discovery_step = std::chrono::hours(1);
    return pace;
}

TEST(SimDiscovery, FindsThreeDevicesAndEnds) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BK\r\n");
    expect_whole_discovery(client);
}

TEST(SimDiscovery, FindsThemAgain) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BK\r\n");
    expect_whole_discovery(client);
    client.send("AT#BK\r\n");
    expect_whole_discovery(client);
}

TEST(SimDiscovery, StopEndsItAtOnce) {
    RunningSim sim(sim::built_in_world(), never_a_step());
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BK\r\nAT#BL\r\n");
    EXPECT_EQ(client.events_until_version(), (Strings{"BE01", "BE00"}));
}

TEST(SimDiscovery, PowerOffEndsItFirst) {
    RunningSim sim(sim::built_in_world(), never_a_step());
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BK\r\nAT#PC\r\n");
    EXPECT_EQ(client.events_until_version(), (Strings{"BE01", "BE00", "PA00"}));
}

TEST(SimDiscovery, WithoutPowerThereIsNone) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BK\r\n");
    EXPECT_EQ(client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("no discovery: the adapter is off\n"), std::string::npos);
}

TEST(SimDiscovery, EndsWithTheClientThatAskedForIt) {
    sim::Pace pace = RunningSim::quick();
    pace.discovery_step = std::chrono::milliseconds(50);
    RunningSim sim(sim::built_in_world(), pace);
    TestClient first = sim.client();
    const sim::UniqueFd audio = first.enable();
    first.send("AT#BK\r\n");
    EXPECT_EQ(first.events(2).back(), kDevices[0]);
    first.close();
    TestClient second = sim.client();
    second.send("AT#BK\r\n");
    // From the first device on: nothing of the first client's discovery is left.
    expect_whole_discovery(second);
}

} // namespace
