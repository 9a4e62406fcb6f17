// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_a2dp.h"

#include "vym_a2dp_event.h"
#include "vym_command.h"
#include "vym_sdk.h"

namespace {

using vym::hex2;
using vym::hex4;
using vym::send_command;
using vym::tag;

event_parser_t* s_a2dp_event_parser;

} // namespace

extern "C" {

void vym_a2dp_init(a2dp_callback_t* cbk) {
    vym_profile_start(&s_a2dp_event_parser, create_a2dp_event_parser(cbk), destroy_a2dp_event_parser);
}

void vym_a2dp_done(void) {
    vym_profile_stop(&s_a2dp_event_parser, destroy_a2dp_event_parser);
}

bt_status_t vym_a2dp_connect(bt_bdaddr_t address) {
    return send_command<tag("AA")>(address);
}

bt_status_t vym_a2dp_disconnect(bt_bdaddr_t address) {
    return send_command<tag("AB")>(address);
}

bt_status_t vym_a2dp_inform_audio_focus_state(uint8_t state) {
    return send_command<tag("AC")>(hex2(state));
}

bt_status_t vym_a2dp_inform_audio_trace_gain(uint16_t gain) {
    return send_command<tag("AD")>(hex4(gain));
}

bt_status_t vym_a2dp_switch_audio_hw(uint8_t mode) {
    return send_command<tag("AQ")>(hex2(mode));
}

} // extern "C"
