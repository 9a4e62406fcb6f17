// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the hands-free events do. Most are passed on to the application; those about calls feed the
// list.

#include "vym_hfp_impl.h"

#include "vym_delegate.h"

#include <cstdio>
#include <cstring>

namespace {

using app = hfp_callback_t;
using vym::pass_on;

// The number that the log line has always shown.
constexpr int kStateLine = 545;
constexpr uint8_t kFiller = 255; // in the place of the indicators that did not come

// Values of the connection's state.
enum connection_t { CONNECTION_NONE = 0, CONNECTION_UP = 2 };

// Values of the phone's state: idle, then the kinds of call.
enum phone_state_t {
    PHONE_STANDBY = 5,
    PHONE_FIRST_CALL = 6,
    PHONE_LAST_NOTED = 8,
    PHONE_LAST_CALL = 10
};

std::atomic<hfp_callback_t*> s_delegate; // the application's table

template <class Slot, class... Values>
void tell(Slot slot, Values... values) {
    vym::notify(s_delegate.load(), slot, values...);
}

void on_indicator(uint8_t call, uint8_t callsetup, uint8_t callheld) {
    if (wait_for_indicators(call, callsetup, callheld) == 0) {
        query_calls_start();
    }
}

void on_call_cbk(uint8_t call) {
    on_indicator(call, kFiller, kFiller);
}

void on_callsetup_cbk(uint8_t callsetup) {
    on_indicator(kFiller, callsetup, kFiller);
}

void on_callheld_cbk(uint8_t callheld) {
    on_indicator(kFiller, kFiller, callheld);
}

void on_connection_state_cbk(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address) {
    if (state == CONNECTION_NONE || state == CONNECTION_UP) {
        api_cb_clear();
    }
    if (state == CONNECTION_NONE) {
        // Also without a query: the calls are gone. What a running query has brought stays in the list.
        query_calls_done();
    }
    tell(&app::connection_state_cb, state, peer_feat, chld_feat, address);
}

void on_network_state_cbk(uint8_t state) {
    printf("%s:%d\r\n", __func__, state);
    if (state == 1) {
        vym_hfp_query_current_operator_name();
    }
    tell(&app::network_state_cb, state);
}

void on_current_calls_cbk(uint8_t idx, uint8_t direction, uint8_t state, uint8_t mpty, char* number) {
    bluetooth_call_t call = {idx, direction, state, mpty, {}};
    memcpy(call.number, number, strnlen(number, sizeof call.number - 1));
    query_calls_update(call);
    tell(&app::current_calls_cb, call);
}

void on_cmd_complete_cbk(uint8_t type, uint8_t cme) {
    if (cme == HFP_CMD_QUERY_CURRENT_CALLS) {
        vym_hfp_query_ended(type == 0 ? 1 : 0);
        tell(&app::call_action_complete_cb, int{cme}, int{type});
        tell(&app::current_call_num_cb, current_call_num());
    } else if (type != 0) {
        tell(&app::call_action_complete_cb, int{cme}, int{type});
    }
}

void on_hfp_state_change_cbk(uint8_t state) {
    if (state == PHONE_STANDBY) {
        tell(&app::standby_indication_cb);
    } else if (state >= PHONE_FIRST_CALL && state <= PHONE_LAST_CALL) {
        query_calls_start();
    }
    if (state >= PHONE_STANDBY && state <= PHONE_LAST_NOTED) {
        printf("%s -- %d state=%d\r\n", __func__, kStateLine, state);
        vym_hfp_note_state(state);
    }
}

hfp_impl_callback_t s_handlers = {
    on_connection_state_cbk,
    pass_on<s_delegate, &app::audio_state_cb>::handler,
    pass_on<s_delegate, &app::vr_cmd_cb>::handler,
    on_network_state_cbk,
    pass_on<s_delegate, &app::network_roaming_cb>::handler,
    pass_on<s_delegate, &app::network_signal_cb>::handler,
    pass_on<s_delegate, &app::battery_level_cb>::handler,
    pass_on<s_delegate, &app::current_operator_cb>::handler,
    on_call_cbk,
    on_callsetup_cbk,
    on_callheld_cbk,
    pass_on<s_delegate, &app::resp_and_hold_cb>::handler,
    pass_on<s_delegate, &app::clip_cb>::handler,
    pass_on<s_delegate, &app::call_waiting_cb>::handler,
    on_current_calls_cbk,
    pass_on<s_delegate, &app::volume_change_cb>::handler,
    on_cmd_complete_cbk,
    pass_on<s_delegate, &app::subscriber_info_cb>::handler,
    pass_on<s_delegate, &app::in_band_ring_tone_cb>::handler,
    pass_on<s_delegate, &app::last_voice_tag_number_cb>::handler,
    pass_on<s_delegate, &app::ring_indication_cb>::handler,
    pass_on<s_delegate, &app::ag_model_name_cb>::handler,
    pass_on<s_delegate, &app::ag_manufacturer_id_cb>::handler,
    on_hfp_state_change_cbk,
    pass_on<s_delegate, &app::ios_aplsiri_cb>::handler,
};

} // namespace

extern "C" {

hfp_impl_callback_t* vym_hfp_handlers(void) {
    return &s_handlers;
}

void vym_hfp_set_delegate(hfp_callback_t* cbk) {
    s_delegate = cbk;
}

hfp_callback_t* vym_hfp_delegate(void) {
    return s_delegate;
}

} // extern "C"
