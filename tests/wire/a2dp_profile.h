// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Music for tests: a table whose members record what they were given.
#ifndef VYM_TESTS_WIRE_A2DP_PROFILE_H
#define VYM_TESTS_WIRE_A2DP_PROFILE_H

#include "support/record_text.h"
#include "vym_a2dp.h"
#include "wire/profile_conformance.h"

namespace wire {

inline a2dp_callback_t A2dpTable() {
    a2dp_callback_t table = {};
    table.connection_state_changed_cb = [](bt_bdaddr_t address, uint8_t state) {
        ProfileRecord().Add(support::CallText("connection_state", address, state));
    };
    table.audio_state_changed_cb = [](bt_bdaddr_t address, uint8_t state) {
        ProfileRecord().Add(support::CallText("audio_state", address, state));
    };
    table.audio_config_changed_cb = [](bt_bdaddr_t address, int sample_rate, uint8_t channels) {
        ProfileRecord().Add(support::CallText("audio_config", address, sample_rate, channels));
    };
    table.audio_stream_cb = [](uint8_t codec, uint16_t length, uint8_t*) {
        ProfileRecord().Add(support::CallText("audio_stream", codec, length));
    };
    table.a2dp_devices_event_cb = [](int active, int event) {
        ProfileRecord().Add(support::CallText("devices_event", active, event));
    };
    return table;
}

struct A2dpProfile {
    static void Init(Table kind) {
        static a2dp_callback_t whole = A2dpTable();
        static a2dp_callback_t empty = {};
        vym_a2dp_init(kind == Table::kNone ? nullptr : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_a2dp_done(); }
    static std::vector<std::string> Unknown() {
        return {"AD0102", "AQ01", "aa55443322110002", "Aa55443322110002", " AA55443322110002"};
    }
    static std::vector<ProfileEvent> Events() {
        return {
            {"AA55443322110002", 14, "connection_state(554433221100, 2)"},
            {"AAa1b2c3d4e5f6fe", 14, "connection_state(A1B2C3D4E5F6, 254)"},
            {"ABA1B2C3D4E5F67F", 14, "audio_state(A1B2C3D4E5F6, 127)"},
            {"AC5544332211000000AC4402", 22, "audio_config(554433221100, 44100, 2)"},
            {"ACA1B2C3D4E5F612345678FD", 22, "audio_config(A1B2C3D4E5F6, 305419896, 253)"},
            {"AE0000000100000003", 16, "devices_event(1, -3)"},
            {"AE12345678fffffffd", 16, "devices_event(305419896, -3)"},
        };
    }
};

} // namespace wire

#endif
