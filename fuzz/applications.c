/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

#include "applications.h"

#include "callbacks/classic_callbacks.h"
#include "callbacks/low_energy_callbacks.h"

#include <stdio.h>
#include <stdlib.h>

static bt_uuid_t any_client;

static void start_bluetooth(void) {
    vym_bluetooth_init(&bluetooth_callbacks);
}

static void start_rfcomm(void) {
    vym_rfcomm_init(&rfcomm_callbacks);
}

static void start_hfp(void) {
    vym_hfp_init(&hfp_callbacks);
}

static void start_a2dp(void) {
    vym_a2dp_init(&a2dp_callbacks);
}

static void start_avrcp(void) {
    vym_avrcp_init(&avrcp_callbacks);
}

static void start_pbap(void) {
    vym_pbap_init(&pbap_callbacks);
}

static void start_gatt_client(void) {
    vym_gatt_client_init(&gatt_client_callbacks);
}

static void start_gatt_server(void) {
    vym_gatt_server_init(&gatt_server_callbacks);
    vym_gatt_server_register_client(any_client, client_registered);
}

static void start_hid(void) {
    vym_hid_init(&hid_callbacks);
}

const vym_application_t vym_applications[VYM_APPLICATIONS] = {
    {"bluetooth", start_bluetooth, vym_bluetooth_done},
    {"rfcomm", start_rfcomm, vym_rfcomm_done},
    {"hfp", start_hfp, vym_hfp_done},
    {"a2dp", start_a2dp, vym_a2dp_done},
    {"avrcp", start_avrcp, vym_avrcp_done},
    {"pbap", start_pbap, vym_pbap_done},
    {"gatt_client", start_gatt_client, vym_gatt_client_done},
    {"gatt_server", start_gatt_server, vym_gatt_server_done},
    {"hid", start_hid, vym_hid_done},
};

const vym_application_t* vym_application_of(const char* profile) {
    for (int i = 0; i < VYM_APPLICATIONS; ++i) {
        if (strcmp(vym_applications[i].profile, profile) == 0) {
            return &vym_applications[i];
        }
    }
    fprintf(stderr, "no application for the profile %s\n", profile);
    abort();
}

void vym_listen_to_audio(void) {
    vym_audio_stream_init(&audio_callbacks);
}

unsigned vym_callbacks_seen(void) {
    pthread_mutex_lock(&seen.lock);
    const unsigned callbacks = seen.callbacks;
    pthread_mutex_unlock(&seen.lock);
    return callbacks;
}

unsigned vym_callbacks_sum(void) {
    pthread_mutex_lock(&seen.lock);
    const unsigned sum = seen.sum;
    pthread_mutex_unlock(&seen.lock);
    return sum;
}
