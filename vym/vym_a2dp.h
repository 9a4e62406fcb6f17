/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_a2dp.h
 * Music (A2DP): connecting the stream, switching its path, hearing of its state and its codec.
 *
 * Every call writes one command and returns, whether or not a device is connected; what comes of it
 * arrives in the callbacks, on the receive thread (see vym_sdk.h). The music itself does not come this
 * way but over a transport of its own, see vym_audio_stream.h.
 *
 * Functions return BT_STATUS_SUCCESS when the command was written (or dropped because the library is
 * not connected) and BT_STATUS_NOMEM when it could not be built. Values are not checked: the server
 * decides what to do with them. Any thread may call.
 */
#ifndef VYM_A2DP_H
#define VYM_A2DP_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. A member may be
 * changed after init; it is looked up for each event. The address is that of the other device.
 */
typedef struct tag_a2dp_callback {
    /** The profile's connection came or went; `state` as the server numbers it. */
    void (*connection_state_changed_cb)(bt_bdaddr_t address, uint8_t state);
    /** The stream started or stopped; `state` as the server numbers it. */
    void (*audio_state_changed_cb)(bt_bdaddr_t address, uint8_t state);
    /** The devices agreed on a codec configuration: samples per second, and number of channels. */
    void (*audio_config_changed_cb)(bt_bdaddr_t address, int sample_rate, uint8_t channels);
    /** Never called: packets of audio arrive through vym_audio_stream.h. */
    void (*audio_stream_cb)(uint8_t codec_type, uint16_t len, uint8_t* data);
    /** Something happened among the devices; `event` is always 0 or less, whichever sign the server
     * wrote. */
    void (*a2dp_devices_event_cb)(int active, int event);
} a2dp_callback_t;

/**
 * Starts the A2DP module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_a2dp_done() returns. NULL: events are
 * dropped.
 */
void vym_a2dp_init(a2dp_callback_t* cbk);

/** Stops the A2DP module; no callback runs after it returns. Must not be called from a callback.
 * Harmless without init. */
void vym_a2dp_done(void);

/** Connects the profile; answered by `connection_state_changed_cb`. */
bt_status_t vym_a2dp_connect(bt_bdaddr_t address);

/** Ends the profile's connection; answered by `connection_state_changed_cb`. */
bt_status_t vym_a2dp_disconnect(bt_bdaddr_t address);

/** Switches the path that the audio takes in hardware. @param mode as the server numbers it. */
bt_status_t vym_a2dp_switch_audio_hw(uint8_t mode);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** Tells the server whether this device may play. @param state as the server numbers it. */
bt_status_t vym_a2dp_inform_audio_focus_state(uint8_t state);

/** Tells the server how loud this device plays. */
bt_status_t vym_a2dp_inform_audio_trace_gain(uint16_t gain);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
