// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the hands-free module's API, its events and its list of calls share.
#ifndef VYM_HFP_IMPL_H
#define VYM_HFP_IMPL_H

#include "internal_ev_process.h"
#include "vym_hfp.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread.
typedef struct tag_hfp_impl_callback {
    void (*connection_state_cb)(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address);
    void (*audio_state_cb)(uint8_t state, bt_bdaddr_t address);
    void (*vr_cmd_cb)(uint8_t state);
    void (*network_state_cb)(uint8_t state);
    void (*network_roaming_cb)(uint8_t state);
    void (*network_signal_cb)(uint16_t signal);
    void (*battery_level_cb)(uint16_t battery_level);
    void (*current_operator_cb)(char* name);
    void (*call_cb)(uint8_t call);
    void (*callsetup_cb)(uint8_t callsetup);
    void (*callheld_cb)(uint8_t callheld);
    void (*resp_and_hold_cb)(uint8_t resp_and_hold);
    void (*clip_cb)(char* number);
    void (*call_waiting_cb)(char* number);
    void (*current_calls_cb)(uint8_t idx, uint8_t direction, uint8_t state, uint8_t mpty, char* number);
    void (*volume_change_cb)(uint8_t type, uint16_t volume);
    void (*cmd_complete_cb)(uint8_t type, uint8_t cme);
    void (*subscriber_info_cb)(uint8_t type, char* name);
    void (*in_band_ring_tone_cb)(uint8_t state);
    void (*last_voice_tag_number_cb)(char* number);
    void (*ring_indication_cb)(void);
    void (*ag_model_name_cb)(char* name);
    void (*ag_manufacturer_id_cb)(char* name);
    void (*hfp_state_change_cb)(uint8_t state);
    void (*ios_aplsiri_cb)(uint8_t state);
} hfp_impl_callback_t;

// What the server is asked to do with a call: the procedures of the Hands-Free Profile behind "AT#HJ".
enum call_action_t {
    CALL_ACTION_CHLD_0 = 0,  // release all held calls, or reject the waiting one
    CALL_ACTION_CHLD_1 = 1,  // release all active calls, accept the other
    CALL_ACTION_CHLD_2 = 2,  // hold the active calls, accept the other
    CALL_ACTION_CHLD_3 = 3,  // add the held call to the conversation
    CALL_ACTION_CHLD_1X = 5, // release the active call with this index
    CALL_ACTION_ATA = 7,     // answer
    CALL_ACTION_CHUP = 8,    // hang up or reject
    CALL_ACTION_BTRH_1 = 10, // accept the call held by response and hold
    CALL_ACTION_BTRH_2 = 11, // reject it
};

// The result of a command that the server reports on.
enum { HFP_CMD_QUERY_CURRENT_CALLS = 21 };

// As many calls as are tracked.
enum { HFP_MAX_CALLS = 10 };

// Commands that only the module itself sends.
bt_status_t vym_hfp_handle_call_action(uint8_t action, uint8_t idx);
bt_status_t vym_hfp_query_current_calls(void);
bt_status_t vym_hfp_query_current_operator_name(void);
bt_status_t vym_hfp_retrieve_subscriber_info(void);
bt_status_t vym_hfp_send_at_command(uint16_t command, uint16_t val1, uint16_t val2, char* arg);
bt_status_t vym_hfp_switch_audio_hw(uint8_t on);
bt_status_t vym_hfp_accept_call_with_retry(bt_bdaddr_t address, accept_flag_t flag, int retry);

// The list of calls. Its lock is its own: never held while a command is sent or the application is
// called.

// Forgets the indicators and a running query; the list stays.
void api_cb_clear(void);
// Empties the list.
void vym_hfp_forget_calls(void);
// Asks the phone for its calls, unless it is being asked already.
void query_calls_start(void);
// Takes one line of the answer.
void query_calls_update(bluetooth_call_t call);
// Reports the calls that are gone and takes the answer for the list.
void query_calls_done(void);
// The phone has answered (`succeeded`) or refused. Nothing unless it was asked.
void vym_hfp_query_ended(int succeeded);
// Returns 0 when the indicator is to start a query, 1 when the gate has dealt with it.
int wait_for_indicators(uint8_t call, uint8_t callsetup, uint8_t callheld);
int current_call_num(void);
int current_update_call_num(void);
// Takes the first call whose number does not match for ended. Returns whether there was one. No event
// is wired to it.
int clip_calls_update(uint8_t* num);
// Notes the phone's state for inspection.
void vym_hfp_note_state(int state);
// Internal event 1 refreshes the list.
void internal_ev_process_callback(ev_data_t* ev);

// The action that fits the calls as they are, -1 when none does.
int vym_hfp_accept_action(accept_flag_t flag, int retry);
int vym_hfp_reject_action(void);
int vym_hfp_terminate_action(int index);

// The handlers, and the table they tell.
hfp_impl_callback_t* vym_hfp_handlers(void);
void vym_hfp_set_delegate(hfp_callback_t* cbk);
hfp_callback_t* vym_hfp_delegate(void);

} // extern "C"

#endif
