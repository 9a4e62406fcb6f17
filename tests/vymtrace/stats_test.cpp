// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A capture in numbers.

#include "vymtrace/capture_bytes.h"
#include "vymtrace/round_trips.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::Result;
using capture_bytes::Traces;
using namespace std::string_literals;

std::string Conversation() {
    return Command("AT#PV\r\n") + Events("PV1\0"s, 4) + Command("AT#PV\r\n", 500) +
           Events("PV2\0PA01\0"s, 502) + Command("AT#PV\r\n", 1000) + Command("AT#PV\r\n", 3000) +
           Events("ZZ\0"s, 8000) + Command("AT#BA01\r\n", 10000);
}

TEST(Stats, CountsRatesRoundTripsAndGaps) {
    const Result result = Traces().Run(Conversation(), {"--stats"});
    EXPECT_EQ(result.out,
              "from      2026-11-22 14:03:07.000000\n"
              "to        2026-11-22 14:03:17.000000  (10.0 s)\n"
              "commands             5          0.5/s\n"
              "events               4          0.4/s\n"
              "bytes               49          4.9/s\n"
              "unknown              1\n"
              "\n"
              "       count       per s        bytes\n"
              "           4         0.4           28  > bluetooth get_version\n"
              "           2         0.2            6  < bluetooth onBtVersion\n"
              "           1         0.1            9  > bluetooth get_adapter_property\n"
              "           1         0.1            4  < bluetooth onStateChanged\n"
              "\n"
              "Round trips\n"
              "    answered  unanswered     shortest         mean      longest\n"
              "           2           2     2.000 ms     3.000 ms     4.000 ms  bluetooth get_version "
              "-> onBtVersion\n"
              "           0           1     0.000 ms     0.000 ms     0.000 ms  bluetooth "
              "get_adapter_property -> onAdapterProperties\n"
              "\n"
              "The longest gaps\n"
              "         5.0 s  from 2026-11-22 14:03:10.000000 to record 7\n"
              "         2.0 s  from 2026-11-22 14:03:08.000000 to record 6\n"
              "         2.0 s  from 2026-11-22 14:03:15.000000 to record 8\n");
    EXPECT_EQ(result.code, 0);
}

TEST(Stats, AreAnObjectForPrograms) {
    const Result result = Traces().Run(Conversation(), {"--stats", "--json"});
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["commands"], 5);
    EXPECT_EQ(json["events"], 4);
    EXPECT_EQ(json["unknown"], 1);
    EXPECT_EQ(json["first"], "2026-11-22T14:03:07.000000Z");
    EXPECT_EQ(json["messages"][1],
              nlohmann::json::parse(R"({"direction":"event","profile":"bluetooth","name":"onBtVersion",
                  "tag":"PV","count":2,"per_second":0.2,"bytes":6})"));
    EXPECT_EQ(json["round_trips"][0],
              nlohmann::json::parse(R"({"profile":"bluetooth","command":"get_version",
                  "event":"onBtVersion","answered":2,"unanswered":2,"shortest_ms":2.0,"mean_ms":3.0,
                  "longest_ms":4.0})"));
    EXPECT_EQ(
        json["gaps"][0],
        nlohmann::json::parse(R"({"seconds":5.0,"from":"2026-11-22T14:03:10.000000Z","to_record":7})"));
}

TEST(Stats, AreOfWhatTheFilterWants) {
    const Result result = Traces().Run(Conversation(), {"--stats", "--json", "--tag", "PA"});
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["events"], 1);
    EXPECT_EQ(json["commands"], 0);
    EXPECT_EQ(Traces().Run("", {"--stats"}).out, "no commands and no events\n");
}

TEST(Stats, TellThatTheClockWentBack) {
    const Result result =
        Traces().Run(Command("AT#PB\r\n", 1000) + Command("AT#PC\r\n", 0), {"--stats", "--json"});
    EXPECT_EQ(nlohmann::json::parse(result.out)["clock_steps_back"], 1);
}

TEST(Stats, CountAnswersThatCameAgesLater) {
    std::string asked = Command("AT#PV\r\n");
    std::string answered = Events("PV1\0"s);
    asked.replace(16, 8, "\x81\0\0\0\0\0\0\0"s);
    answered.replace(16, 8, "\x7F\0\0\0\0\0\0\0"s);
    const std::string three = asked + answered + asked + answered + asked + answered;
    const auto json = nlohmann::json::parse(Traces().Run(three, {"--stats", "--json"}).out);
    EXPECT_EQ(json["round_trips"][0]["answered"], 3);
    EXPECT_DOUBLE_EQ(json["round_trips"][0]["mean_ms"].get<double>(), 9223372036854775.806);
    EXPECT_DOUBLE_EQ(json["round_trips"][0]["longest_ms"].get<double>(), 9223372036854775.806);
}

TEST(RoundTrips, EachRequestIsInTheDescription) {
    for (const trace::Request& request : trace::requests()) {
        bool found = false;
        for (const protocol::Profile* profile : protocol::profiles()) {
            if (profile->name != request.profile) {
                continue;
            }
            for (const protocol::Message& command : profile->commands) {
                for (const protocol::Message& event : profile->events) {
                    found |= command.name == request.command && event.name == request.event;
                }
            }
        }
        EXPECT_TRUE(found) << request.profile << ' ' << request.command;
    }
}

} // namespace
