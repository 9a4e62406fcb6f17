// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A simulated server that is switched on, and what talking to its phone takes.
#ifndef VYM_TESTS_PHONE_SIM_H
#define VYM_TESTS_PHONE_SIM_H

#include "running_sim.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using Strings = std::vector<std::string>;

/// Anna's phone, on the wire.
inline const std::string kPhone = "2A416E6E6101";
/// A loudspeaker: it offers nothing that a phone does.
inline const std::string kSpeaker = "112233445566";

/// Steps of a millisecond; what strikes by itself does not, unless a test lets it.
inline sim::Pace phone_pace() {
    sim::Pace pace = RunningSim::quick();
    pace.audio_packet = std::chrono::hours(1);
    pace.profile_connect = std::chrono::milliseconds(1);
    pace.call_step = std::chrono::milliseconds(1);
    pace.ring_period = std::chrono::hours(1);
    pace.ring_timeout = std::chrono::hours(1);
    pace.playback_second = std::chrono::hours(1);
    pace.list_step = std::chrono::milliseconds(1);
    return pace;
}

class PhoneSim : public RunningSim {
public:
    explicit PhoneSim(sim::Pace pace = phone_pace(), sim::World world = sim::built_in_world())
        : RunningSim(std::move(world), pace), client(RunningSim::client()), audio(client.enable()) {}

    void send(const std::string& command) { client.send("AT#" + command + "\r\n"); }

    /// Everything that a command brings at once.
    Strings answers(const std::string& command) {
        send(command);
        return client.events_until_version();
    }

    /// The events up to and with the first that begins so.
    Strings until(const std::string& beginning) {
        Strings all;
        do {
            all.push_back(client.event());
        } while (!all.back().empty() && all.back().rfind(beginning, 0) != 0);
        return all;
    }

    TestClient client;
    sim::UniqueFd audio;
};

/// Escaped zeros, as they fill a place in a record.
inline std::string zeros(size_t count) {
    std::string all;
    while (count-- > 0) {
        all += "\xDC\xDD";
    }
    return all;
}

#endif
