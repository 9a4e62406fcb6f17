/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* An application of all profiles that trusts nobody: it reads every byte that a callback is given, and
 * when the server drops it, it starts again. Ends with 0 when it has come to its end and a server was
 * always there to be connected to, whatever that did. */
#include "classic_steps.h"
#include "end_all.h"
#include "low_energy_steps.h"

#include <stdio.h>

static void (*const steps[])(void) = {
    identify,
    discover,
    pair,
    look_at_the_phone,
    call,
    read_the_phone_book,
    play,
    browse,
    hang_up,
    scan,
    explore,
    subscribe,
    offer_a_service,
    advertise,
    answer_the_tablet,
    type,
    use_serial_services,
};

static void start(void) {
    vym_bluetooth_init(&bluetooth_callbacks);
    vym_rfcomm_init(&rfcomm_callbacks);
    vym_hfp_init(&hfp_callbacks);
    vym_a2dp_init(&a2dp_callbacks);
    vym_avrcp_init(&avrcp_callbacks);
    vym_pbap_init(&pbap_callbacks);
    vym_gatt_client_init(&gatt_client_callbacks);
    vym_gatt_server_init(&gatt_server_callbacks);
    vym_hid_init(&hid_callbacks);
    vym_audio_stream_init(&audio_callbacks);
    vym_bluetooth_enable();
    await(1);
    forget_marks();
}

static void finish(void) {
    end_all();
    server = -1;
}

static int join(const char* directory) {
    server = vym_sdk_init_ex(directory);
    if (server < 0) {
        fprintf(stderr, "every_profile: no server answers on %s/vym_socket\n", directory);
        return 0;
    }
    start();
    return 1;
}

/* Every other time without finishing first: the library shuts down by itself what was started. */
static int join_again(const char* directory, int times) {
    if (times % 2 == 0) {
        finish();
    }
    return join(directory);
}

static int take_steps(const char* directory) {
    int starts = 1;
    for (size_t i = 0; i < sizeof steps / sizeof *steps; ++i) {
        if (server_is_gone() && !join_again(directory, starts++)) {
            return -1;
        }
        steps[i]();
    }
    return starts;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: every_profile DIRECTORY   (where the server's vym_socket is)\n");
        return 2;
    }
    const int starts = join(argv[1]) ? take_steps(argv[1]) : -1;
    if (starts < 0) {
        return 1;
    }
    vym_bluetooth_disable();
    await(1);
    finish();
    pthread_mutex_lock(&seen.lock);
    fprintf(stderr, "every_profile: %u callbacks, %d starts, checksum %08X\n", seen.callbacks, starts,
            seen.sum);
    pthread_mutex_unlock(&seen.lock);
    return 0;
}
