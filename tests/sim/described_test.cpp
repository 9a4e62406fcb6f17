// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulator and the description of the protocol: its lines of the log, and its handlers.

#include "described.h"

#include "modules.h"
#include "protocol/codec.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace {

using protocol::Direction;

std::string command(const std::string& text) {
    return sim::described(Direction::Command, text);
}

std::string event(const std::string& text) {
    return sim::described(Direction::Event, text);
}

TEST(SimDescribed, NamesTheProfileTheMessageAndTheValues) {
    EXPECT_EQ(command("HH+4930123"), "hfp dial number=\"+4930123\"");
    EXPECT_EQ(command("BK"), "bluetooth start_discovery");
    EXPECT_EQ(event("HI01"), "hfp onCall call=1");
    EXPECT_EQ(event("BI00A1B2C3D4E5F601"),
              "bluetooth onAclStateChanged status=0 address=A1:B2:C3:D4:E5:F6 state=1");
}

TEST(SimDescribed, LongValuesAreCut) {
    EXPECT_EQ(command("HH" + std::string(119, '7')),
              "hfp dial number=\"" + std::string(119, '7') + "...");
    EXPECT_EQ(command("HH" + std::string(118, '7')),
              "hfp dial number=\"" + std::string(118, '7') + "\"");
    std::string block = "<AB";
    for (int i = 1; i < 39; ++i) {
        block += " AB";
    }
    EXPECT_EQ(command("DC01000000020200" + std::string(512, '\xAB')),
              "hid send_report type=1 id=2 report=" + block + " AB...");
}

TEST(SimDescribed, ACutValueEndsWithAWholeCharacter) {
    const std::string text = std::string(118, 'a') + "\xE2\x82\xAC" + "bc";
    EXPECT_EQ(event("HH" + text), "hfp onCurrentOperator name=\"" + std::string(118, 'a') + "...");
}

TEST(SimDescribed, LongLinesAreCut) {
    const std::string blocks = "00C8" + std::string(200, 'x');
    const std::string line = command("DA01" + blocks + blocks + blocks + blocks + blocks + blocks);
    EXPECT_EQ(line.size(), 403U);
    EXPECT_EQ(line.substr(400), "...");
}

TEST(SimDescribed, WhatIsWrongStandsAtTheEnd) {
    EXPECT_EQ(command("HG01xx"), "hfp volume_control type=1 (volume: ends after 2 of 4 characters)");
    EXPECT_EQ(event("BEG\x01"), "bluetooth onDiscoveryStateChanged (state: \"G\\x01\" is no number)");
    EXPECT_EQ(command("BKhello"), "bluetooth start_discovery (surplus \"hello\")");
    EXPECT_EQ(command("ZZ\x01"), "unknown: ZZ\\x01");
}

class Nowhere : public sim::Outbox {
    void send(const sim::Event&) override {}
    void hand_over(uint8_t, sim::UniqueFd) override {}
};

TEST(SimModules, CarryOutEveryCommandOfTheDescriptionAndNoOther) {
    asio::io_context loop(1);
    sim::World world = sim::built_in_world();
    Nowhere out;
    std::ostringstream text;
    sim::Log log(sim::LogLevel::All, text);
    const sim::Pace pace;
    sim::Hub hub{loop, world, out, log, pace, {}, {}, {}};
    std::multiset<std::string_view> handled;
    const auto modules = sim::make_modules(hub);
    for (const auto& module : modules) {
        for (const sim::Command& one : module->commands()) {
            handled.insert(one.tag);
        }
    }
    std::multiset<std::string_view> described;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& message : profile->commands) {
            described.insert(message.tag);
        }
    }
    EXPECT_EQ(handled, described);
}

} // namespace
