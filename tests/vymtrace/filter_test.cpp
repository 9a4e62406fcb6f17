// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is shown of a capture.

#include "support/text.h"
#include "vymtrace/capture_bytes.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::Result;
using capture_bytes::Traces;
using namespace std::string_literals;

using Strings = std::vector<std::string>;

// From 14:03:07 UTC on.
std::string Conversation() {
    return Command("AT#PB\r\n") + Events("PA01\0"s, 1000) + Command("AT#HA001A7DDA7113\r\n", 2500) +
           Events("HB01001A7DDA7113\0"s, 3000) +
           // A bonded device inside a list of properties.
           Events("BB000100310F2B\x01\xDC\xDD\x14\x71\xDA\x7D\x1A\xDC\xDD"s + std::string(3, 'c') +
                      "\x01\x01" + std::string(32, 's') + "\0"s,
                  4000) +
           Command("AT#ZZ\r\n", 65000);
}

/// The numbers of the records that are shown.
std::string Shown(std::vector<std::string> options) {
    const Result result = Traces().Run(Conversation(), std::move(options));
    EXPECT_EQ(result.code, 0) << result.err;
    std::string numbers;
    for (const std::string& line : support::Lines(result.out)) {
        numbers += line.substr(27, 6) + ",";
    }
    std::string digits;
    for (const char c : numbers) {
        digits += c == ' ' ? "" : std::string(1, c);
    }
    return digits;
}

TEST(Filter, WithoutOneEverythingIsShown) {
    EXPECT_EQ(Shown({}), "1,2,3,4,5,6,");
}

TEST(Filter, TakesWhatFitsOneOfAKindAndAllKinds) {
    EXPECT_EQ(Shown({"--profile", "hfp"}), "3,4,");
    EXPECT_EQ(Shown({"--profile", "bluetooth"}), "1,2,5,");
    EXPECT_EQ(Shown({"--profile", "hfp", "--profile", "bluetooth"}), "1,2,3,4,5,");
    EXPECT_EQ(Shown({"--direction", "command"}), "1,3,6,");
    EXPECT_EQ(Shown({"--direction", "event", "--profile", "hfp"}), "4,");
    EXPECT_EQ(Shown({"--tag", "HA"}), "3,");
    EXPECT_EQ(Shown({"--tag", "P", "--tag", "ZZ"}), "1,2,6,");
    EXPECT_EQ(Shown({"--name", "onAudioState"}), "4,");
    EXPECT_EQ(Shown({"--address", "00:1a:7d:DA:71:13"}), "3,4,");
    EXPECT_EQ(Shown({"--address", "001A7DDA7113", "--direction", "event"}), "4,");
    EXPECT_EQ(Shown({"--address", "00-1A-7D-DA-71-14"}), "5,");
}

TEST(Filter, TakesATimeInManyForms) {
    EXPECT_EQ(Shown({"--since", "14:03:09.5"}), "3,4,5,6,");
    EXPECT_EQ(Shown({"--since", "14:04"}), "6,");
    EXPECT_EQ(Shown({"--until", "14:03:08"}), "1,2,");
    EXPECT_EQ(Shown({"--since", "+1", "--until", "+2.5"}), "2,3,");
    EXPECT_EQ(Shown({"--since", "2026-11-22 14:03:10"}), "4,5,6,");
    EXPECT_EQ(Shown({"--since", "2026-11-22T14:03:10.000001Z"}), "5,6,");
    EXPECT_EQ(Shown({"--since", "2026-11-23"}), "");
    EXPECT_EQ(Shown({"--until", "2026-11-22"}), "");
}

TEST(Filter, ReadsTimesInTheLocalZoneWithoutUtc) {
    setenv("TZ", "XXX-2", 1);
    const Traces traces;
    const std::string path = traces.Write(capture_bytes::kHeader + Conversation());
    const Result result = traces.Run({"--since", "16:04", path});
    unsetenv("TZ");
    EXPECT_EQ(result.out, "2026-11-22 16:04:12.000000      6 > ?           \"ZZ\" (unknown tag)\n");
}

TEST(Filter, AWrongOneIsAnErrorOfUsageThatSaysHowItIsRight) {
    const std::vector<std::pair<Strings, std::string>> wrong = {
        {{"--profile", "hpf"},
         "--profile: there is no profile \"hpf\"; the profiles are bluetooth, rfcomm, hfp, a2dp, "
         "avrcp, "
         "pbap, gatt_client, gatt_server, hid"},
        {{"--tag", "hh"}, "--tag: \"hh\" is no tag; a tag is two to four capital letters, such as HH"},
        {{"--name", "onNothing"}, "--name: no command and no event is called \"onNothing\""},
        {{"--address", "00:1A:7D:DA:71"},
         "--address: \"00:1A:7D:DA:71\" is no address; an address looks like 00:1A:7D:DA:71:13"},
        {{"--since", "yesterday"},
         "--since: \"yesterday\" is no time; a time is a time of day like 14:03 or 14:03:07.5, such a "
         "time behind a date and a space, or seconds from the first record on, like +12.5"},
    };
    for (const auto& [options, message] : wrong) {
        const Result result = Traces().Run("", options);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "vymtrace: " + message + " (vymtrace --help shows the options)\n");
    }
    for (const char* time : {"", "+", "+x", "25:00", "12:60", "12", "12:00:00.", "12:00 ", "2026-13-01",
                             "2026-11-22 12", "2026-11-22X12:00", "-1"}) {
        EXPECT_EQ(Traces().Run("", {"--since="s + time}).code, 2) << time;
    }
}

TEST(CommandLine, WithoutAFileOrWithTwoItIsAnErrorOfUsage) {
    EXPECT_EQ(Traces().Run({}).code, 2);
    EXPECT_EQ(Traces().Run({"a", "b"}).code, 2);
    EXPECT_EQ(Traces().Run({"--unknown", "a"}).code, 2);
    EXPECT_EQ(Traces().Run({"--stats", "-f", "a"}).code, 2);
}

TEST(CommandLine, HelpAndVersionGoToStandardOutput) {
    const Result help = Traces().Run({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("--follow"), std::string::npos);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(Traces().Run({"--version"}).out, "vymtrace 1.0\n");
}

} // namespace
