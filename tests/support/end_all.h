/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

#ifndef VYM_TESTS_SUPPORT_END_ALL_H
#define VYM_TESTS_SUPPORT_END_ALL_H

#include <vym/vym_a2dp.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_gatt_client.h>
#include <vym/vym_gatt_server.h>
#include <vym/vym_hfp.h>
#include <vym/vym_hid.h>
#include <vym/vym_pbap.h>
#include <vym/vym_rfcomm.h>
#include <vym/vym_sdk.h>

/* Ends all profiles and the library. The audio comes last: until the adapter's end a hand-over may
 * start its reader again. */
static inline void end_all(void) {
    vym_hid_done();
    vym_gatt_server_done();
    vym_gatt_client_done();
    vym_pbap_done();
    vym_avrcp_done();
    vym_a2dp_done();
    vym_hfp_done();
    vym_rfcomm_done();
    vym_bluetooth_done();
    vym_sdk_done();
    vym_audio_stream_done();
}

#endif
