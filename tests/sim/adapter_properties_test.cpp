// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

/// `count` zero bytes as they travel.
std::string zeros(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "\xDC\xDD";
    }
    return text;
}

struct Case {
    const char* command;
    std::string answer;
};

TEST(SimAdapterProperties, EachPropertyHasItsRecord) {
    RunningSim sim;
    TestClient client = sim.client();
    const std::vector<Case> cases{
        {"AT#BA01\r\n", "BB0001000B0107vym-sim"},
        {"AT#BA02\r\n", "BB0001000B0206\x13\x71\xDA\x7D\x1A\xDC\xDD"},
        {"AT#BA03\r\n", "BB000100040300"},
        {"AT#BA04\r\n", "BB000100090404\x04\x04\x24\xDC\xDD"},
        {"AT#BA07\r\n", "BB0001000C0704" + zeros(4)},
        {"AT#BA08\r\n",
         "BB000100160812\x2E\x43\x61\x72\x4B\x74\x26\x4B\x65\x79\x62\x64\x2E\x4C\x70\x74\x6F\x70"},
        {"AT#BA09\r\n", "BB0001000B0904x" + zeros(3)},
        {"AT#BA23\r\n", "BB0001000B2304\x08" + zeros(3)},
        {"AT#BA24\r\n", "BB0001000B2404$" + zeros(3)},
    };
    for (const Case& c : cases) {
        client.send(c.command);
        EXPECT_EQ(client.event(), c.answer) << c.command;
    }
}

TEST(SimAdapterProperties, AnUnknownPropertyIsRefusedWithoutRecords) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BA63\r\nAT#BA22\r\nAT#BA00\r\n");
    EXPECT_EQ(client.events(3), (Strings{"BB01000000", "BB01000000", "BB01000000"}));
}

TEST(SimAdapterProperties, BondedDevicesComeOnePerEventWithTotalAndIndex) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BA0F\r\n");
    EXPECT_EQ(client.event(), "BB000100560F34\x03\xDC\xDD\x74\x4B\x72\x61\x43\x2E\x08\x04\x24\xDC\xDD"
                              "\x02\x1E\x11\x08\x11" +
                                  zeros(28) + "Car kit");
    EXPECT_EQ(client.event(), "BB000100600F3C\x03\x01\x64\x62\x79\x65\x4B\x26\x40\x25\xDC\xDD\xDC\xDD"
                              "\x01\x24\x11" +
                                  zeros(30) + "Office keyboard");
    EXPECT_EQ(client.event(), "BB0001005D0F38\x03\x02\x70\x6F\x74\x70\x4C\x2E\x0C\x01\xDC\xDD\xDC\xDD"
                              "\x01\xDC\xDD\x12" +
                                  zeros(30) + "Work laptop");
    EXPECT_EQ(client.events_until_version(), Strings{});
}

TEST(SimAdapterProperties, NoBondedDeviceIsATotalOfZero) {
    sim::World world = sim::built_in_world();
    world.bonded.clear();
    RunningSim sim(world);
    TestClient client = sim.client();
    client.send("AT#BA0F\r\nAT#BA08\r\n");
    EXPECT_EQ(client.event(), "BB000100060F01\xDC\xDD");
    EXPECT_EQ(client.event(), "BB000100040800");
}

TEST(SimAdapterProperties, ADeviceWithManyServicesHasSixteenInItsRecord) {
    sim::World world = sim::built_in_world();
    world.devices[3].services.assign(20, 0x1122);
    world.devices[3].name = std::string(248, 'n');
    world.bonded.resize(2);
    world.bonded.pop_back();
    RunningSim sim(world);
    TestClient client = sim.client();
    client.send("AT#BA0F\r\n");
    std::string services;
    for (int i = 0; i < 16; ++i) {
        services += "\x22\x11";
    }
    // The record ends at 255 bytes: 210 of the name.
    EXPECT_EQ(client.event(),
              "BB000101050FFF\x01\xDC\xDD\x74\x4B\x72\x61\x43\x2E\x08\x04\x24\xDC\xDD\x10" + services +
                  std::string(210, 'n'));
}

TEST(SimAdapterProperties, AllPropertiesComeOnePerEvent) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BG\r\n");
    std::string types;
    for (const std::string& event : client.events_until_version()) {
        EXPECT_EQ(event.substr(0, 6), "BB0001");
        types += event.substr(10, 2) + " ";
    }
    EXPECT_EQ(types, "01 02 03 04 07 08 09 23 24 ");
}

TEST(SimAdapterProperties, ASetPropertyIsEchoedAndKept) {
    RunningSim sim;
    TestClient client = sim.client();
    const std::vector<Case> cases{
        {"AT#BB010004Door\r\n", "BB000100080104Door"},
        {"AT#BB070007\x02\xDC\xDD\xDC\xDD\xDC\xDD\r\n", "BB0001000B0704\x02" + zeros(3)},
        {"AT#BB090007\x3C\xDC\xDD\xDC\xDD\xDC\xDD\r\n", "BB0001000B0904\x3C" + zeros(3)},
        {"AT#BB230007\x03\xDC\xDD\xDC\xDD\xDC\xDD\r\n", "BB0001000B2304\x03" + zeros(3)},
        {"AT#BB240008\xDC\xDF\xDC\xDD\xDC\xDD\xDC\xDD\r\n", "BB0001000C2404\xDC\xDF" + zeros(3)},
    };
    for (const Case& c : cases) {
        client.send(c.command);
        EXPECT_EQ(client.event(), c.answer) << c.command;
        client.send("AT#BA" + std::string(c.command).substr(5, 2) + "\r\n");
        EXPECT_EQ(client.event(), c.answer) << c.command;
    }
}

TEST(SimAdapterProperties, ANameLongerThanNamesCanBeIsCut) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BB0100F9" + std::string(249, 'x') + "\r\n");
    EXPECT_EQ(client.event(), "BB000100FC01F8" + std::string(248, 'x'));
}

TEST(SimAdapterProperties, WhatCannotBeSetIsRefusedAndStays) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BB020006abcdef\r\n"                       // the address is not a setting
                "AT#BB630001x\r\n"                            // unknown
                "AT#BB070001\x02\r\n"                         // too short
                "AT#BB070007\x03\xDC\xDD\xDC\xDD\xDC\xDD\r\n" // no such mode
                "AT#BB230008\xDC\xDD\xDC\xDD\xDC\xDD\xDC\xDD\r\n");
    EXPECT_EQ(client.events(5),
              (Strings{"BB01000000", "BB01000000", "BB07000000", "BB07000000", "BB07000000"}));
    client.send("AT#BA07\r\nAT#BA23\r\n");
    EXPECT_EQ(client.events(2),
              (Strings{"BB0001000C0704" + zeros(4), "BB0001000B2304\x08" + zeros(3)}));
}

TEST(SimAdapterProperties, DiscoverableEndsAfterItsTimeout) {
    sim::Pace pace = RunningSim::quick();
    pace.discoverable_second = std::chrono::milliseconds(1);
    RunningSim sim(sim::built_in_world(), pace);
    TestClient client = sim.client();
    client.send("AT#BB070007\x02\xDC\xDD\xDC\xDD\xDC\xDD\r\n");
    EXPECT_EQ(client.event(), "BB0001000B0704\x02" + zeros(3));
    EXPECT_EQ(client.event(), "BB0001000B0704\x01" + zeros(3));
}

TEST(SimAdapterProperties, AnnouncedUuidsAreAdapterProperty3) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BTE000102030405060708090A0B0C0D0E0F\r\n"
                "AT#BTE000102030405060708090A0B0C0D0E0F\r\n"
                "AT#BA03\r\n");
    EXPECT_EQ(client.event(),
              "BB000100170310\xDC\xDD\x01\x02\x03\x04\x05\x06\x07\x08\x09\xDC\xDF\x0B\x0C\xDC\xDE"
              "\x0E\x0F");
}

TEST(SimAdapterProperties, BondModeIsKeptAndAnswersNothing) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BF00000002\r\n");
    EXPECT_EQ(client.events_until_version(), Strings{});
    sim.stop();
    EXPECT_EQ(sim.world().adapter.bond_mode, 2U);
}

} // namespace
