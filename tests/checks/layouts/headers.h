/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

#include <vym/bluetooth.h>
#include <vym/bt_utils.h>
#include <vym/gatt_defines.h>
#include <vym/internal_ev_process.h>
#include <vym/ring_buffer.h>
#include <vym/vym_a2dp.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_debug.h>
#include <vym/vym_event_parser.h>
#include <vym/vym_gatt_client.h>
#include <vym/vym_gatt_server.h>
#include <vym/vym_hfp.h>
#include <vym/vym_hid.h>
#include <vym/vym_pbap.h>
#include <vym/vym_pbap_queue.h>
#include <vym/vym_rfcomm.h>
#include <vym/vym_sdk.h>
