// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "stats_text.h"

#include "times.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace trace {
namespace {

constexpr double kSecond = 1e6;
constexpr double kMillisecond = 1e3;

double seconds(const Stats::Summary& summary) {
    return static_cast<double>(summary.last_us - summary.first_us) / kSecond;
}

/// A second; 0 when the capture has no length.
double rate(uint64_t count, const Stats::Summary& summary) {
    return seconds(summary) > 0 ? static_cast<double>(count) / seconds(summary) : 0;
}

double milliseconds(int64_t us) {
    return static_cast<double>(us) / kMillisecond;
}

double mean_ms(const RoundTrips::Times& times) {
    return times.answered == 0 ? 0 : times.sum_us / kMillisecond / static_cast<double>(times.answered);
}

template <typename... Values>
std::string formatted(const char* format, Values... values) {
    char text[256];
    const int length = std::snprintf(text, sizeof(text), format, values...);
    return {text, std::min(static_cast<size_t>(length), sizeof(text) - 1)};
}

std::string time_text(int64_t us, bool utc, char between = ' ') {
    std::string text;
    TimeWriter(utc, between).append(&text, us);
    return text;
}

std::string name_of(const protocol::Found& found) {
    return std::string(found.profile->name) + ' ' + std::string(found.message->name);
}

unsigned long long as_printed(uint64_t number) {
    return number;
}

std::string totals_text(const Stats::Summary& summary, bool utc) {
    const auto total = [&summary](const char* name, uint64_t count) {
        return formatted("%-9s %12llu %12.1f/s\n", name, as_printed(count), rate(count, summary));
    };
    std::string text = "from      " + time_text(summary.first_us, utc) + "\nto        " +
                       time_text(summary.last_us, utc) + formatted("  (%.1f s)\n", seconds(summary));
    text += total("commands", summary.commands) + total("events", summary.events) +
            total("bytes", summary.bytes);
    if (summary.unknown > 0) {
        text += formatted("unknown   %12llu\n", as_printed(summary.unknown));
    }
    if (summary.steps_back > 0) {
        text += formatted("The clock went back %llu times.\n", as_printed(summary.steps_back));
    }
    return text;
}

std::string messages_text(const Stats::Summary& summary) {
    std::string text = "\n       count       per s        bytes\n";
    for (const Stats::Count& count : summary.messages) {
        text +=
            formatted("%12llu %11.1f %12llu  %s ", as_printed(count.count), rate(count.count, summary),
                      as_printed(count.bytes), count.is_command ? ">" : "<") +
            name_of(count.found) + '\n';
    }
    return text;
}

std::string round_trips_text(const Stats::Summary& summary) {
    if (summary.round_trips.empty()) {
        return "";
    }
    std::string text =
        "\nRound trips\n    answered  unanswered     shortest         mean      longest\n";
    for (const RoundTrips::Times& times : summary.round_trips) {
        text += formatted("%12llu %11llu %9.3f ms %9.3f ms %9.3f ms  ", as_printed(times.answered),
                          as_printed(times.unanswered), milliseconds(times.shortest_us), mean_ms(times),
                          milliseconds(times.longest_us)) +
                std::string(times.request->profile) + ' ' + std::string(times.request->command) +
                " -> " + std::string(times.request->event) + '\n';
    }
    return text;
}

std::string gaps_text(const Stats::Summary& summary, bool utc) {
    std::string text = summary.gaps.empty() ? "" : "\nThe longest gaps\n";
    for (const Stats::Gap& gap : summary.gaps) {
        text += formatted("%12.1f s  from ", static_cast<double>(gap.us) / kSecond) +
                time_text(gap.begin_us, utc) + formatted(" to record %llu\n", as_printed(gap.record));
    }
    return text;
}

} // namespace

std::string stats_text(const Stats::Summary& summary, bool utc) {
    if (summary.commands + summary.events == 0) {
        return "no commands and no events\n";
    }
    return totals_text(summary, utc) + messages_text(summary) + round_trips_text(summary) +
           gaps_text(summary, utc);
}

std::string stats_json(const Stats::Summary& summary) {
    using Json = nlohmann::ordered_json;
    Json json = {{"commands", summary.commands},
                 {"events", summary.events},
                 {"unknown", summary.unknown},
                 {"bytes", summary.bytes},
                 {"first", time_text(summary.first_us, true, 'T') + 'Z'},
                 {"last", time_text(summary.last_us, true, 'T') + 'Z'},
                 {"seconds", seconds(summary)},
                 {"clock_steps_back", summary.steps_back},
                 {"messages", Json::array()},
                 {"round_trips", Json::array()},
                 {"gaps", Json::array()}};
    for (const Stats::Count& count : summary.messages) {
        json["messages"].push_back({{"direction", count.is_command ? "command" : "event"},
                                    {"profile", count.found.profile->name},
                                    {"name", count.found.message->name},
                                    {"tag", count.found.message->tag},
                                    {"count", count.count},
                                    {"per_second", rate(count.count, summary)},
                                    {"bytes", count.bytes}});
    }
    for (const RoundTrips::Times& times : summary.round_trips) {
        json["round_trips"].push_back({{"profile", times.request->profile},
                                       {"command", times.request->command},
                                       {"event", times.request->event},
                                       {"answered", times.answered},
                                       {"unanswered", times.unanswered},
                                       {"shortest_ms", milliseconds(times.shortest_us)},
                                       {"mean_ms", mean_ms(times)},
                                       {"longest_ms", milliseconds(times.longest_us)}});
    }
    for (const Stats::Gap& gap : summary.gaps) {
        json["gaps"].push_back({{"seconds", static_cast<double>(gap.us) / kSecond},
                                {"from", time_text(gap.begin_us, true, 'T') + 'Z'},
                                {"to_record", gap.record}});
    }
    return json.dump() + '\n';
}

} // namespace trace
