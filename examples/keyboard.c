/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A keyboard: registers with a report descriptor, connects to a computer and types two letters.
 *
 * usage: keyboard DIRECTORY      (the directory of the server's socket)
 */
#include "radio.h"

#include <string.h>
#include <vym/vym_hid.h>

/* States as the simulated server numbers them. */
enum { APPLICATION_REGISTERED = 1, HOST_CONNECTED = 0, HOST_DISCONNECTED = 2, UNKNOWN = -1 };
/* Class of device, minor field: a keyboard (Assigned Numbers). Report type: input (HID 1.1, 3.1.2.9).
 */
enum { SUBCLASS_KEYBOARD = 0x40, REPORT_INPUT = 1, REPORT_ID = 1 };
/* Usage IDs of keys (HID Usage Tables, 10). */
enum { KEY_H = 0x0B, KEY_I = 0x0C };

/* "Work laptop" of the simulated world; a real application would have paired with it. */
static const bt_bdaddr_t laptop = {{0x70, 0x6F, 0x74, 0x70, 0x4C, 0x2E}};

/* One byte of modifiers, one that is reserved, six keys. */
static uint8_t report_descriptor[] = {
    0x05, 0x01,                  /* usage page: generic desktop */
    0x09, 0x06,                  /* usage: keyboard */
    0xA1, 0x01,                  /* collection: application */
    0x85, REPORT_ID,             /*   report ID */
    0x05, 0x07,                  /*   usage page: keys */
    0x19, 0xE0,      0x29, 0xE7, /*   from left control to right GUI, */
    0x15, 0x00,      0x25, 0x01, /*   each up or down, */
    0x75, 0x01,      0x95, 0x08, /*   eight times one bit, */
    0x81, 0x02,                  /*   input */
    0x75, 0x08,      0x95, 0x01, /*   one byte */
    0x81, 0x01,                  /*   that means nothing */
    0x19, 0x00,      0x29, 0x65, /*   keys from none to application, */
    0x15, 0x00,      0x25, 0x65, /*   by number, */
    0x75, 0x08,      0x95, 0x06, /*   six bytes, */
    0x81, 0x00,                  /*   input */
    0xC0,                        /* end of the collection */
};

static struct {
    int application;
    int host;
} state = {UNKNOWN, UNKNOWN};

/* Callbacks: one event of the server each, on the receive thread. */

static void on_application_state(bt_bdaddr_t address, int new_state) {
    note(&state.application, new_state);
}

static void on_connection_state(bt_bdaddr_t address, int new_state) {
    char text[18];
    say("   %s is in state %d", address_text(address, text), new_state);
    note(&state.host, new_state);
}

static hid_callback_t callbacks = {
    .application_state_changed_cb = on_application_state,
    .hid_connection_state_cb = on_connection_state,
};

/* A press is a report with the key in it, a release one without. */
static void type_key(uint8_t key) {
    uint8_t report[8] = {0, 0, key};
    vym_hid_send_report(REPORT_INPUT, REPORT_ID, sizeof report, report);
    report[2] = 0;
    vym_hid_send_report(REPORT_INPUT, REPORT_ID, sizeof report, report);
}

int main(int argc, char** argv) {
    uint8_t name[] = "vym keyboard";
    uint8_t description[] = "Two keys";
    uint8_t provider[] = "vym";
    radio_begin("keyboard", argc, argv);
    vym_hid_init(&callbacks);
    radio_on();

    say("1. Register as a keyboard");
    vym_hid_register_app(SUBCLASS_KEYBOARD, sizeof name - 1, name, sizeof description - 1, description,
                         sizeof provider - 1, provider, sizeof report_descriptor, report_descriptor, 0,
                         NULL, 0, NULL);
    await(&state.application, APPLICATION_REGISTERED, "the registration");

    say("2. Connect to the computer");
    vym_hid_connect(laptop);
    await(&state.host, HOST_CONNECTED, "the connection");

    say("3. Type \"hi\"");
    type_key(KEY_H);
    type_key(KEY_I);

    say("4. Disconnect");
    vym_hid_disconnect();
    await(&state.host, HOST_DISCONNECTED, "the end of the connection");
    vym_hid_unregister_app();
    radio_off();
    vym_hid_done();
    radio_end();
    return 0;
}
