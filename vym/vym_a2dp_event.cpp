// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_a2dp_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = a2dp_callback_t;
using namespace vym;

std::atomic<a2dp_event_parser_t*> s_evt_parser;

// The devices' event is the one number of eight digits that has a sign: FFFFFFFD is -3, where every
// other such field stops at 7FFFFFFF.
struct signed_int32 {
    static constexpr int width = 8;
    static int read(field_reader& in) {
        char digits[width + 1] = {};
        const uint8_t* at = in.chars(width);
        if (at != nullptr) {
            memcpy(digits, at, width);
        }
        return static_cast<int32_t>(strtoll(digits, nullptr, 16));
    }
};

// AE: whatever sign the server wrote, the application gets 0 or less.
bool AE_parse(field_reader& in, callbacks* cbk) {
    const int active = int32::read(in);
    const int event = signed_int32::read(in);
    notify(cbk, &callbacks::a2dp_devices_event_cb, active, event > 0 ? -event : event);
    return true;
}

constexpr event_row kEvents[] = {
    plain<&callbacks::connection_state_changed_cb, address, byte>("AA", "onConnectionStateChanged", 14),
    plain<&callbacks::audio_state_changed_cb, address, byte>("AB", "onAudioStateChanged", 14),
    plain<&callbacks::audio_config_changed_cb, address, int32, byte>("AC", "onAudioConfigChanged", 22),
    bodies<callbacks>::fixed<AE_parse>("AE", "onA2dpDevicesEvent", 16, 16),
};

} // namespace

extern "C" {

event_parser_t* create_a2dp_event_parser(a2dp_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, a2dp_event_parser_t>(cb);
}

void destroy_a2dp_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
