// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The hands-free profile for tests: a table whose members record what they were given.
#ifndef VYM_TESTS_WIRE_HFP_PROFILE_H
#define VYM_TESTS_WIRE_HFP_PROFILE_H

#include "support/record_text.h"
#include "vym_hfp.h"
#include "wire/profile_conformance.h"

namespace wire {

template <class... Values>
void Say(const char* name, const Values&... values) {
    ProfileRecord().Add(support::CallText(name, values...));
}

inline std::string CallOf(const bluetooth_call_t& call) {
    return support::CallText("call", call.idx, call.direction, call.state, call.mpty, call.number);
}

inline hfp_callback_t HfpTable() {
    hfp_callback_t table = {};
    table.connection_state_cb = [](uint8_t state, int peer, int chld, bt_bdaddr_t address) {
        Say("connection_state", state, peer, chld, address);
    };
    table.audio_state_cb = [](uint8_t state, bt_bdaddr_t address) {
        Say("audio_state", state, address);
    };
    table.vr_cmd_cb = [](uint8_t state) { Say("vr_cmd", state); };
    table.network_state_cb = [](uint8_t state) { Say("network_state", state); };
    table.network_roaming_cb = [](uint8_t state) { Say("network_roaming", state); };
    table.network_signal_cb = [](uint16_t signal) { Say("network_signal", signal); };
    table.battery_level_cb = [](uint16_t level) { Say("battery_level", level); };
    table.current_operator_cb = [](char* name) { Say("current_operator", name); };
    table.resp_and_hold_cb = [](uint8_t state) { Say("resp_and_hold", state); };
    table.clip_cb = [](char* number) { Say("clip", number); };
    table.call_waiting_cb = [](char* number) { Say("call_waiting", number); };
    table.current_calls_cb = [](bluetooth_call_t call) { ProfileRecord().Add(CallOf(call)); };
    table.volume_change_cb = [](uint8_t type, uint16_t volume) { Say("volume_change", type, volume); };
    table.subscriber_info_cb = [](uint8_t type, char* name) { Say("subscriber_info", type, name); };
    table.in_band_ring_tone_cb = [](uint8_t state) { Say("in_band_ring_tone", state); };
    table.last_voice_tag_number_cb = [](char* number) { Say("last_voice_tag_number", number); };
    table.ring_indication_cb = [] { Say("ring_indication"); };
    table.ag_model_name_cb = [](char* name) { Say("ag_model_name", name); };
    table.ag_manufacturer_id_cb = [](char* name) { Say("ag_manufacturer_id", name); };
    table.call_action_complete_cb = [](int command, int result) {
        Say("call_action_complete", command, result);
    };
    table.standby_indication_cb = [] { Say("standby_indication"); };
    table.ios_aplsiri_cb = [](uint8_t state) { Say("ios_aplsiri", state); };
    table.current_call_num_cb = [](int num) { Say("current_call_num", num); };
    return table;
}

struct HfpProfile {
    static void Init(Table kind) {
        static hfp_callback_t whole = HfpTable();
        static hfp_callback_t empty = {};
        vym_hfp_init(kind == Table::kNone ? nullptr : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_hfp_done(); }
    static std::vector<std::string> Unknown() {
        return {"HY01", "ha0100000003000001FF554433221100", " HU"};
    }
    static std::vector<ProfileEvent> Events() {
        return {
            {"HA0100000003000001FFA1B2C3D4E5F6", 30, "connection_state(1, 3, 511, A1B2C3D4E5F6)"},
            {"HA0380000000FFFFFFFFA1B2C3D4E5F6", 30,
             "connection_state(3, 2147483647, 2147483647, A1B2C3D4E5F6)"},
            {"HB02A1B2C3D4E5F6", 14, "audio_state(2, A1B2C3D4E5F6)"},
            {"HC01", 2, "vr_cmd(1)"},
            {"HD00", 2, "network_state(0)"},
            {"HD01", 2, "network_state(1)"},
            {"HEfe", 2, "network_roaming(254)"},
            {"HF1234", 4, "network_signal(4660)"},
            {"HG0005", 4, "battery_level(5)"},
            {"HHTelefónica\r\n", 0, "current_operator(\"Telefónica\r\n\")", true},
            {"HH", 0, "current_operator(\"\")", true},
            {"HI01", 2, ""},
            {"HJ01", 2, ""},
            {"HK01", 2, ""},
            {"HL02", 2, "resp_and_hold(2)"},
            {"HM+4930123456", 0, "clip(\"+4930123456\")", true},
            {"HN5551234", 0, "call_waiting(\"5551234\")", true},
            {"HO010004015551234", 8, "call(1, 0, 4, 1, \"5551234\")", true},
            {"HO01000300", 8, "call(1, 0, 3, 0, \"\")", true},
            {"HP01000F", 6, "volume_change(1, 15)"},
            {"HQ0103", 4, "call_action_complete(3, 1)"},
            {"HQ0003", 4, ""},
            {"HR3C+49301", 2, "subscriber_info(60, \"+49301\")", true},
            {"HS01", 2, "in_band_ring_tone(1)"},
            {"HT112", 0, "last_voice_tag_number(\"112\")", true},
            {"HU", 0, "ring_indication()"},
            {"HVPhone 7", 0, "ag_model_name(\"Phone 7\")", true},
            {"HWAnyone", 0, "ag_manufacturer_id(\"Anyone\")", true},
            {"HX05", 2, "standby_indication()"},
            {"HX10", 2, ""},
            {"HZ01", 2, "ios_aplsiri(1)"},
        };
    }
};

} // namespace wire

#endif
