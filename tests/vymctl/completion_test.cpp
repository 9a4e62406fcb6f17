// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "session.h"

#include "console/line_editor.h"

#include <gtest/gtest.h>
#include <vym/bluetooth.h>

namespace {

using Words = std::vector<std::string>;

TEST(Completion, OffersWhatTheTablesHave) {
    EXPECT_EQ(vymctl::complete("mon"), Words{"monitor"});
    EXPECT_EQ(vymctl::complete("hfp di"), (Words{"disconnect", "dial", "dial-memory"}));
    EXPECT_EQ(vymctl::complete("hfp volume "), (Words{"speaker", "microphone"}));
    EXPECT_EQ(vymctl::complete("hfp volume speaker "), Words{});
    EXPECT_EQ(vymctl::complete("nothing "), Words{});
    EXPECT_EQ(vymctl::complete("help hfp da"), Words{});
    EXPECT_EQ(vymctl::complete("help hfp dial"), (Words{"dial", "dial-memory"}));
    EXPECT_EQ(vymctl::complete("wait-for hfp.call.s"), Words{"hfp.call.state=="});
    EXPECT_EQ(vymctl::complete("monitor hid"), (Words{"hid", "hid.application", "hid.connection"}));
    EXPECT_EQ(vymctl::complete("rfcomm connect x 11"), Words{"1101"});
    EXPECT_EQ(vymctl::complete("hfp \"open"), Words{});
}

TEST(Completion, OffersAddressesThatWereHeardOf) {
    vymctl::publish(vymctl::event_type("adapter.address"), {"success", "2A:47:4E:53:53:01"});
    EXPECT_EQ(vymctl::complete("hfp connect 2A:47"), Words{"2A:47:4E:53:53:01"});
}

TEST(Completion, OfACommandLineSkipsOptions) {
    EXPECT_EQ(vymctl::complete_command_line("--dir /tmp hfp ac"), "accept");
    EXPECT_EQ(vymctl::complete_command_line("--ti"), "--timeout");
    EXPECT_EQ(vymctl::complete_command_line("--pairing a"), "accept\nask");
    EXPECT_EQ(vymctl::complete_command_line("--dir "), "") << "a directory is the shell's business";
}

TEST(Completion, ReplacesTheBegunWordByWhatAllHaveInCommon) {
    const auto completed = [](const std::string& line, const Words& found) {
        const console::Completion completion = console::complete_line(line, found);
        return line.substr(0, line.size() - completion.replaced) + completion.text;
    };
    EXPECT_EQ(completed("hfp di", {"dial", "dial-memory"}), "hfp dial");
    EXPECT_EQ(completed("hfp mu", {"mute"}), "hfp mute ");
    EXPECT_EQ(completed("hfp x", {}), "hfp x");
    EXPECT_EQ(console::complete_line("hfp dial", {"dial", "dial-memory"}).choices,
              (Words{"dial", "dial-memory"}));
}

} // namespace
