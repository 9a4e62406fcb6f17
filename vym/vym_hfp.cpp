// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_hfp.h"

#include "internal_ev_process.h"
#include "vym_command.h"
#include "vym_hfp_event.h"
#include "vym_hfp_impl.h"
#include "vym_sdk.h"

#include <cstdio>

namespace {

using vym::hex2;
using vym::hex4;
using vym::send_command;
using vym::tag;
using vym::text;

// The number that the log line has always shown.
constexpr int kDoneLine = 590;

event_parser_t* s_hfp_event_parser;

// Sends an action that the list of calls has chosen; -1 is none.
bt_status_t send_action(int action, uint8_t idx) {
    if (action < 0) {
        return BT_STATUS_FAIL;
    }
    return vym_hfp_handle_call_action(static_cast<uint8_t>(action), idx);
}

} // namespace

extern "C" {

void vym_hfp_init(hfp_callback_t* cbk) {
    vym_hfp_forget_calls();
    vym_hfp_set_delegate(cbk);
    api_cb_clear();
    vym_profile_start(&s_hfp_event_parser, create_hfp_event_parser(vym_hfp_handlers()),
                      destroy_hfp_event_parser);
    vym_internal_event_unregister(internal_ev_process_callback); // initialised twice
    vym_internal_event_register(internal_ev_process_callback);
}

void vym_hfp_done(void) {
    printf("%s -- %d\r\n", __func__, kDoneLine);
    api_cb_clear();
    vym_internal_event_unregister(internal_ev_process_callback);
    vym_profile_stop(&s_hfp_event_parser, destroy_hfp_event_parser);
}

bt_status_t vym_hfp_connect(bt_bdaddr_t address) {
    return send_command<tag("HA")>(address);
}

bt_status_t vym_hfp_disconnect(bt_bdaddr_t address) {
    return send_command<tag("HB")>(address);
}

bt_status_t vym_hfp_connect_audio(bt_bdaddr_t address) {
    return send_command<tag("HC")>(address);
}

bt_status_t vym_hfp_disconnect_audio(bt_bdaddr_t address) {
    return send_command<tag("HD")>(address);
}

bt_status_t vym_hfp_start_voice_recognition(void) {
    return send_command<tag("HE")>();
}

bt_status_t vym_hfp_stop_voice_recognition(void) {
    return send_command<tag("HF")>();
}

bt_status_t vym_hfp_volume_control(uint8_t type, uint16_t volume) {
    return send_command<tag("HG")>(hex2(type), hex4(volume));
}

bt_status_t vym_hfp_dial(char* number) {
    return send_command<tag("HH")>(text(number));
}

bt_status_t vym_hfp_dial_memory(uint8_t location) {
    return send_command<tag("HI")>(hex2(location));
}

bt_status_t vym_hfp_send_dtmf(uint8_t code) {
    return send_command<tag("HN")>(hex2(code));
}

bt_status_t vym_hfp_query_last_voice_tag_name(void) {
    return send_command<tag("HO")>();
}

bt_status_t vym_hfp_switch_mic_state(uint8_t to_mute) {
    return send_command<tag("HR")>(hex2(to_mute));
}

bt_status_t vym_hfp_accept_call(bt_bdaddr_t address, accept_flag_t flag) {
    return vym_hfp_accept_call_with_retry(address, flag, 0);
}

bt_status_t vym_hfp_reject_call(bt_bdaddr_t address) {
    (void)address;
    return send_action(vym_hfp_reject_action(), 0);
}

bt_status_t vym_hfp_terminate_call(bt_bdaddr_t address, int index) {
    (void)address;
    if (index == 0) {
        return send_action(CALL_ACTION_CHUP, 0);
    }
    return send_action(vym_hfp_terminate_action(index), static_cast<uint8_t>(index));
}

bt_status_t vym_hfp_accept_call_with_retry(bt_bdaddr_t address, accept_flag_t flag, int retry) {
    (void)address;
    return send_action(vym_hfp_accept_action(flag, retry), 0);
}

bt_status_t vym_hfp_handle_call_action(uint8_t action, uint8_t idx) {
    return send_command<tag("HJ")>(hex2(action), hex2(idx));
}

bt_status_t vym_hfp_query_current_calls(void) {
    return send_command<tag("HK")>();
}

bt_status_t vym_hfp_query_current_operator_name(void) {
    return send_command<tag("HL")>();
}

bt_status_t vym_hfp_retrieve_subscriber_info(void) {
    return send_command<tag("HM")>();
}

bt_status_t vym_hfp_send_at_command(uint16_t command, uint16_t val1, uint16_t val2, char* arg) {
    return send_command<tag("HP")>(hex4(command), hex4(val1), hex4(val2), text(arg));
}

bt_status_t vym_hfp_switch_audio_hw(uint8_t on) {
    return send_command<tag("HQ")>(hex2(on));
}

} // extern "C"
