/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_hfp.h
 * The hands-free unit: calls, voice recognition, volume and what the phone tells about itself.
 *
 * Every call writes one command and returns; what comes of it arrives in the callbacks, on the receive
 * thread (see vym_sdk.h). The library keeps its own list of the phone's calls: whenever an indicator
 * says that they changed it asks the phone for all of them, passes each on with `current_calls_cb`, and
 * reports a call that is gone once more, with the state CALL_STATE_TERMINATED. Accepting, rejecting and
 * ending a call look at that list and choose the procedure of the Hands-Free Profile that fits. They
 * see a call only when the refresh that brought it is complete, that is from `current_call_num_cb` on:
 * a call that was just passed to `current_calls_cb` for the first time cannot be accepted yet.
 *
 * Functions return BT_STATUS_SUCCESS when the command was written (or dropped because the library is
 * not connected), BT_STATUS_NOMEM when it could not be built, and BT_STATUS_FAIL where they say so.
 * Values are not checked: the server decides what to do with them. Any thread may call.
 */
#ifndef VYM_HFP_H
#define VYM_HFP_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What to do with a call in progress when another is accepted. */
typedef VYM_ENUM(tag_accept_flag){
    CALL_ACCEPT_NONE = 0, /**< there is no other call */
    /** Hold the current call and take the new one. */
    CALL_ACCEPT_HOLD = 1,
    /** End the current call and take the new one. */
    CALL_ACCEPT_TERMINATE = 2,
} accept_flag_t;

/** State of a call: the status codes of the Hands-Free Profile's list of current calls (+CLCC), and two
 * more. */
typedef VYM_ENUM(tag_call_state){
    CALL_STATE_ACTIVE = 0,   /**< both speak */
    CALL_STATE_HELD = 1,     /**< put on hold */
    CALL_STATE_DIALING = 2,  /**< outgoing, the network is looking for the other side */
    CALL_STATE_ALERTING = 3, /**< outgoing, it rings there */
    CALL_STATE_INCOMING = 4, /**< it rings here */
    CALL_STATE_WAITING = 5,  /**< a second one that comes in during another */
    /** An incoming call that was put on hold instead of answered (response and hold). */
    CALL_STATE_HELD_BY_RESP_HOLD = 6,
    /** The call is gone; set by the library. */
    CALL_STATE_TERMINATED = 7,
} call_state_t;

/** One call. */
typedef struct tag_bluetooth_call {
    /** The phone's index of the call, from 1. */
    uint8_t idx;
    /** 0: this side called; 1: this side was called. */
    uint8_t direction;
    /** call_state_t. */
    uint8_t state;
    /** 1 when the call is part of a conference. */
    uint8_t mpty;
    /** Ended by a NUL, cut to 31 characters. */
    char number[32];
} bluetooth_call_t;

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. Texts end with
 * a NUL and are valid until the callback returns. A member may be changed after init; it is looked up
 * for each event.
 */
typedef struct tag_hfp_callback {
    /** `state`: 0 disconnected, 2 connected, 3 service level connection; `peer_feat`, `chld_feat`:
     * feature bits of the phone (+BRSF) and of its call hold service (+CHLD). */
    void (*connection_state_cb)(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address);
    /** The voice channel came or went. */
    void (*audio_state_cb)(uint8_t state, bt_bdaddr_t address);
    /** Voice recognition was switched by the phone. */
    void (*vr_cmd_cb)(uint8_t state);
    /** 1: the phone has a network. The operator's name is then asked for by the library. */
    void (*network_state_cb)(uint8_t state);
    /** 1: the phone is roaming. */
    void (*network_roaming_cb)(uint8_t state);
    /** 0 to 5. */
    void (*network_signal_cb)(uint16_t signal);
    /** 0 to 5. */
    void (*battery_level_cb)(uint16_t battery_level);
    /** The name of the phone's network. */
    void (*current_operator_cb)(char* name);
    /** 0: a call is held by response and hold; 1: such a call was accepted; 2: it was rejected. */
    void (*resp_and_hold_cb)(uint8_t resp_and_hold);
    /** Who is calling. */
    void (*clip_cb)(char* number);
    /** Who is calling during a call. */
    void (*call_waiting_cb)(char* number);
    /** One call of the phone's list, in the phone's order, or with state CALL_STATE_TERMINATED a call
     * that ended. */
    void (*current_calls_cb)(bluetooth_call_t call);
    /** `type`: 0 speaker, 1 microphone; `volume`: 0 to 15. */
    void (*volume_change_cb)(uint8_t type, uint16_t volume);
    /** The phone's own number. `type`: service of +CNUM. */
    void (*subscriber_info_cb)(uint8_t type, char* name);
    /** 1: the phone sends its ring tone over the voice channel. */
    void (*in_band_ring_tone_cb)(uint8_t state);
    /** Answer to vym_hfp_query_last_voice_tag_name(). */
    void (*last_voice_tag_number_cb)(char* number);
    /** The phone rings; repeated while it does. */
    void (*ring_indication_cb)(void);
    /** The phone's model. */
    void (*ag_model_name_cb)(char* name);
    /** Who made the phone. */
    void (*ag_manufacturer_id_cb)(char* name);
    /** A command failed (`result` is not 0), or a refresh of the call list ended (`command` is 21). */
    void (*call_action_complete_cb)(int command, int result);
    /** The phone is idle again. */
    void (*standby_indication_cb)(void);
    /** State of the phone's own assistant. */
    void (*ios_aplsiri_cb)(uint8_t state);
    /** The number of calls, after each refresh of the list. */
    void (*current_call_num_cb)(int num);
} hfp_callback_t;

/**
 * Starts the hands-free module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_hfp_done() returns. NULL: events are
 * dropped, the list of calls is kept all the same.
 */
void vym_hfp_init(hfp_callback_t* cbk);

/** Stops the hands-free module; no callback runs after it returns. Must not be called from a callback.
 * The list of calls is left as it was until the next init. */
void vym_hfp_done(void);

/** Connects to a phone; answered by `connection_state_cb`. */
bt_status_t vym_hfp_connect(bt_bdaddr_t address);

/** Disconnects from a phone; answered by `connection_state_cb`. */
bt_status_t vym_hfp_disconnect(bt_bdaddr_t address);

/** Moves the voice to this device; answered by `audio_state_cb`. */
bt_status_t vym_hfp_connect_audio(bt_bdaddr_t address);

/** Moves the voice back to the phone. */
bt_status_t vym_hfp_disconnect_audio(bt_bdaddr_t address);

/** Starts the phone's voice recognition; `vr_cmd_cb` tells when it changes. */
bt_status_t vym_hfp_start_voice_recognition(void);

/** Ends it. */
bt_status_t vym_hfp_stop_voice_recognition(void);

/** @param type 0 speaker, 1 microphone. @param volume 0 to 15. */
bt_status_t vym_hfp_volume_control(uint8_t type, uint16_t volume);

/**
 * Calls a number.
 *
 * @param number as it is to be dialled; empty redials nothing but is sent.
 * @return BT_STATUS_FAIL, with nothing sent, for NULL and for a number with CR or LF inside.
 */
bt_status_t vym_hfp_dial(char* number);

/** Calls a number from the phone's memory. @param location the entry's place. */
bt_status_t vym_hfp_dial_memory(uint8_t location);

/** @param code the ASCII character of the tone: 0 to 9, *, #, A to D. */
bt_status_t vym_hfp_send_dtmf(uint8_t code);

/** Asks for the number behind the last voice tag; answered by `last_voice_tag_number_cb`. */
bt_status_t vym_hfp_query_last_voice_tag_name(void);

/** @param to_mute 1 mutes the microphone, 0 opens it. */
bt_status_t vym_hfp_switch_mic_state(uint8_t to_mute);

/**
 * Accepts the call that rings or waits, else takes up one that is held.
 *
 * @param address not used: the server has one phone.
 * @param flag    what becomes of a call in progress. A held call with CALL_ACCEPT_NONE joins the active
 * call.
 * @return BT_STATUS_FAIL, with nothing sent, when there is no such call or the flag does not fit: a
 * call that waits beside an active one needs HOLD or TERMINATE.
 */
bt_status_t vym_hfp_accept_call(bt_bdaddr_t address, accept_flag_t flag);

/**
 * Rejects the call that rings or waits, else releases one that is held.
 *
 * @param address not used.
 * @return BT_STATUS_FAIL, with nothing sent, when there is none.
 */
bt_status_t vym_hfp_reject_call(bt_bdaddr_t address);

/**
 * Ends a call.
 *
 * @param address not used.
 * @param index   the call's `idx`, or 0 to hang up whatever is active.
 * @return BT_STATUS_FAIL, with nothing sent, unless the call is active, dialing or alerting.
 */
bt_status_t vym_hfp_terminate_call(bt_bdaddr_t address, int index);

#ifdef __cplusplus
}
#endif

#endif
