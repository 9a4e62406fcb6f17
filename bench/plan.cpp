// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "plan.h"

#include <iterator>

namespace bench {
namespace {

constexpr long kMany = 400000;
constexpr long kSome = 20000;
constexpr long kTenMillion = 10000000;
constexpr long kFew = 100;

constexpr Run kRuns[] = {
    {"event", "floor", "plain", "floor", kSome},
    {"event", "floor", "poll", "floor, waiting for two", kSome},
    {"event", "floor", "poll second", "the same with a second thread", kSome},
    {"event", "floor", "append", "floor + append", kSome},
    {"event", "vym", "open", "vym", kSome},
    {"event", "vym", "closed", "vym, no capture", kSome},
    {"event", "wayland", "plain", "libwayland", kSome},
    {"event", "sdbus", "plain", "sd-bus", kSome},
    {"event", "libdbus", "plain", "libdbus", kSome},

    {"flood", "floor", "plain", "floor", kMany},
    {"flood", "floor", "decode", "floor, decoded", kMany},
    {"flood", "floor", "append", "floor + append", kMany},
    {"flood", "vym", "open", "vym", kMany},
    {"flood", "vym", "closed", "vym, no capture", kMany},
    {"flood", "vym", "nine closed", "vym, nine profiles, no capture", kMany},
    {"flood", "wayland", "plain", "libwayland", kMany},
    {"flood", "sdbus", "plain", "sd-bus", kMany / 8},
    {"flood", "libdbus", "plain", "libdbus", kMany / 8},

    {"command", "floor", "plain", "floor", kSome},
    {"command", "floor", "append", "floor + append", kSome},
    {"command", "floor", "append second", "the same with a second thread", kSome},
    {"command", "vym", "open", "vym", kSome},
    {"command", "vym", "closed", "vym, no capture", kSome},
    {"command", "wayland", "plain", "libwayland", kSome},
    {"command", "sdbus", "plain", "sd-bus", kSome},
    {"command", "libdbus", "plain", "libdbus", kSome},

    {"round-trip", "floor", "plain", "floor", kSome},
    {"round-trip", "floor", "handover", "floor, answer handed over", kSome},
    {"round-trip", "floor", "append", "floor + append", kSome},
    {"round-trip", "floor", "handover append", "floor + append, handed over", kSome},
    {"round-trip", "vym", "open", "vym", kSome},
    {"round-trip", "vym", "closed", "vym, no capture", kSome},
    {"round-trip", "wayland", "plain", "libwayland", kSome},
    {"round-trip", "sdbus", "plain", "sd-bus", kSome},
    {"round-trip", "libdbus", "plain", "libdbus", kSome},

    {"mixed", "floor", "plain", "floor", kMany},
    {"mixed", "vym", "nine open", "vym", kMany},
    {"mixed", "vym", "nine closed", "vym, no capture", kMany},

    {"phone-book", "floor", "plain", "floor", kMany},
    {"phone-book", "vym", "open", "vym", kMany},
    {"phone-book", "vym", "closed", "vym, no capture", kMany},

    {"hall", "floor", "plain", "floor", kMany},
    {"hall", "vym", "open", "vym", kMany},
    {"hall", "vym", "closed", "vym, no capture", kMany},

    {"first-tag", "vym", "closed", "vym, no capture", kMany},
    {"last-tag", "vym", "closed", "vym, no capture", kMany},

    {"ten-million", "vym", "closed", "vym, no capture", kTenMillion},

    {"start", "vym", "open", "vym, core", kFew},
    {"start", "vym", "nine open", "vym, nine profiles", kFew},
};

} // namespace

const std::vector<Run>& plan() {
    static const std::vector<Run> runs(std::begin(kRuns), std::end(kRuns));
    return runs;
}

std::string_view title_of(std::string_view workload) {
    struct Title {
        std::string_view workload;
        std::string_view title;
    };
    static constexpr Title kTitles[] = {
        {"event", "Event alone: one write for each notification"},
        {"flood", "Flood: notifications in writes of 16 KB"},
        {"command", "Command: a write of 20 bytes"},
        {"round-trip", "Synchronous round trip: a getter"},
        {"mixed", "Events of all profiles, in writes of 16 KB"},
        {"phone-book", "Phone book of 5,000 entries, in writes of 16 KB"},
        {"hall", "5,000 advertisers, in writes of 16 KB"},
        {"ten-million", "Ten million notifications, in writes of 16 KB"},
        {"first-tag", "An event from the beginning of a table"},
        {"last-tag", "The same from its end"},
        {"start", "Start and shut-down"},
    };
    for (const Title& title : kTitles) {
        if (title.workload == workload) {
            return title.title;
        }
    }
    return workload;
}

const std::vector<Goal>& goals() {
    static const std::vector<Goal> all = {
        {"flood, no capture / libwayland", "flood", "vym, no capture", "flood", "libwayland", 0.5},
        {"flood / libwayland, which captures nothing", "flood", "vym", "flood", "libwayland", 1.0},
        {"event alone, no capture / floor", "event", "vym, no capture", "event", "floor", 1.1},
        {"event alone / floor + append", "event", "vym", "event", "floor + append", 1.0},
        {"event alone / sd-bus, which captures nothing", "event", "vym", "event", "sd-bus", 1.0},
        {"event alone / libdbus, which captures nothing", "event", "vym", "event", "libdbus", 1.0},
        {"command / floor + append", "command", "vym", "command", "floor + append", 1.15},
        {"getter / ping-pong floor", "round-trip", "vym", "round-trip", "floor", 1.7},
        {"nine profiles / one, an event", "flood", "vym, nine profiles, no capture", "flood",
         "vym, no capture", 1.1, true},
        {"last tag / first tag of a table, an event", "last-tag", "vym, no capture", "first-tag",
         "vym, no capture", 1.1, true},
    };
    return all;
}

} // namespace bench
