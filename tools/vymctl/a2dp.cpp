// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <vym/vym_a2dp.h>

namespace vymctl {
namespace {

using callbacks = a2dp_callback_t;

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_a2dp_init", [] { restart("a2dp"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_a2dp_done", [] { halt("a2dp"); }, "", "stops the module")
            .alone(),
        verb("connect", VYMCTL_CALL(vym_a2dp_connect), "address", "connects to a player",
             "a2dp.connection state==connected !state==disconnected"),
        verb("disconnect", VYMCTL_CALL(vym_a2dp_disconnect), "address",
             "ends the connection to a player", "a2dp.connection state==disconnected"),
        verb("path", VYMCTL_CALL(vym_a2dp_switch_audio_hw), "mode",
             "switches the way that the music takes in hardware"),
    };
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::connection_state_changed_cb>("a2dp.connection",
                                                    "address state=disconnected|connecting|connected"),
        on<&callbacks::audio_state_changed_cb>("a2dp.stream", "address state=stopped:1|started"),
        on<&callbacks::audio_config_changed_cb>("a2dp.config", "address rate channels"),
        on<&callbacks::audio_stream_cb>("a2dp.packet", "codec data"),
        on<&callbacks::a2dp_devices_event_cb>("a2dp.devices", "active code"),
    };
}

} // namespace

Profile a2dp_profile() {
    return make_profile<callbacks, vym_a2dp_init, vym_a2dp_done>("a2dp", "Music (A2DP sink)", verbs(),
                                                                 events());
}

} // namespace vymctl
