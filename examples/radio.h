/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* How an application begins, pairs and ends, for the examples that are about something else: see
 * first_steps.c for what else the adapter can do. */
#ifndef VYM_EXAMPLES_RADIO_H
#define VYM_EXAMPLES_RADIO_H

#include "watch.h"

#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

static int radio_powered;

static void radio_state_changed(uint8_t state) {
    note(&radio_powered, state == BT_STATE_ON);
}

static int radio_bonded;

/* The other device shows a number; a real application would show it, too, and ask. */
static void radio_pairing_requested(bt_bdaddr_t address, int class_of_device, uint8_t variant,
                                    int passkey, char* name) {
    (void)class_of_device;
    (void)name;
    vym_bluetooth_ssp_reply(address, variant, 1, passkey);
}

static void radio_bond_changed(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    (void)address;
    note(&radio_bonded, status == BT_STATUS_SUCCESS && state == BT_BOND_STATE_BONDED);
}

static bluetooth_callback_t radio_callbacks;

/* Connects to the server; the profiles' init functions come next. */
static inline void radio_begin(const char* program, int argc, char** argv) {
    int connection = -1;
    if (argc != 2) {
        fprintf(stderr, "usage: %s DIRECTORY   (where the server's vym_socket is)\n", program);
        exit(2);
    }
    scene_begin(program, argv[1]);
    connection = vym_sdk_init_ex(argv[1]);
    if (connection < 0) {
        give_up("no server answers on %s/vym_socket; start vym-sim --dir %s", argv[1], argv[1]);
    }
    watch_begin(connection);
    radio_callbacks.state_changed_cb = radio_state_changed;
    radio_callbacks.ssp_request_cb = radio_pairing_requested;
    radio_callbacks.bond_state_changed_cb = radio_bond_changed;
    vym_bluetooth_init(&radio_callbacks);
}

/* Once every profile listens. */
static inline void radio_on(void) {
    vym_bluetooth_enable();
    await(&radio_powered, 1, "power on");
}

/* Pairs with a device, which is then trusted for good. */
static inline void radio_bond(bt_bdaddr_t address) {
    vym_bluetooth_create_bond(address);
    await(&radio_bonded, 1, "the bond");
}

/* Before the profiles' done functions. */
static inline void radio_off(void) {
    vym_bluetooth_disable();
    await(&radio_powered, 0, "power off");
}

/* After them. */
static inline void radio_end(void) {
    watch_end();
    vym_bluetooth_done();
    vym_sdk_done();
    say("Done.");
}

#endif
