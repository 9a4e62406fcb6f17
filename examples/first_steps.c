/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Switches Bluetooth on, looks around, pairs with a phone, counts a second of its audio, and switches
 * off.
 *
 * usage: first_steps DIRECTORY      (the directory of the server's socket)
 */
#include "watch.h"

#include <vym/vym_audio_stream.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

enum { MAX_BONDED = 8, MAJOR_CLASS_PHONE = 2 };

/* What the callbacks have told us. */
static struct {
    int powered;
    int discovery_ended;
    int has_phone;
    bt_bdaddr_t phone;
    int bond_ended;
    int bonded;
    int rssi_known;
    int rssi_dbm;
    int audio_packets;
    int audio_bytes;
} world;

/* Callbacks: one event of the server each, on the receive thread. */

static void on_state_changed(uint8_t state) {
    note(&world.powered, state == BT_STATE_ON);
}

static void on_discovery_state_changed(uint8_t state) {
    note(&world.discovery_ended, state == BT_DISCOVERY_STOPPED);
}

static void on_device_found(bt_bdaddr_t address, uint8_t type_of_device, int class_of_device,
                            uint8_t rssi, char* name, uint8_t num_of_uuid16, uint16_t* uuids) {
    char text[18];
    say("   found %s  %4d dBm  class %06X  %d services  \"%s\"", address_text(address, text),
        (int8_t)rssi, (unsigned)class_of_device, num_of_uuid16, name);
    if (((class_of_device >> 8) & 0x1F) == MAJOR_CLASS_PHONE) {
        world.phone = address;
        note(&world.has_phone, 1);
    }
}

static void on_ssp_request(bt_bdaddr_t address, int class_of_device, uint8_t pairing_variant,
                           int passkey, char* name) {
    say("   \"%s\" shows %06d; we see the same number and accept", name, passkey);
    vym_bluetooth_ssp_reply(address, pairing_variant, 1, passkey);
}

static void on_bond_state_changed(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    if (state != BT_BOND_STATE_BONDING) {
        world.bonded = status == BT_STATUS_SUCCESS && state == BT_BOND_STATE_BONDED;
        note(&world.bond_ended, 1);
    }
}

static void on_read_rssi(bt_bdaddr_t address, uint8_t status, uint8_t rssi) {
    if (status == 0) {
        world.rssi_dbm = (int8_t)rssi;
        note(&world.rssi_known, 1);
    }
}

/* On the audio thread: one packet of samples. */
static void on_audio(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    note(&world.audio_packets, world.audio_packets + 1);
    note(&world.audio_bytes, world.audio_bytes + len);
}

static bluetooth_callback_t bluetooth_callbacks = {
    .state_changed_cb = on_state_changed,
    .device_found_cb = on_device_found,
    .discovery_state_changed_cb = on_discovery_state_changed,
    .ssp_request_cb = on_ssp_request,
    .bond_state_changed_cb = on_bond_state_changed,
    .read_rssi_cb = on_read_rssi,
};

static audio_stream_callback_t audio_callbacks = {.vym_audio_stream_cb = on_audio};

static void show_adapter(void) {
    char text[18];
    bt_bdname_t name = {"vym first steps"};
    vym_bluetooth_set_name(name);
    vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
    say("   name      \"%s\"", (const char*)vym_bluetooth_get_name()->name);
    say("   address   %s", address_text(*vym_bluetooth_get_address(), text));
    say("   version   \"%s\"", vym_bluetooth_get_version());
    say("   scan mode %d (2: others can find and connect to us)", (int)vym_bluetooth_get_scan_mode());
}

static void pair_with_phone(void) {
    if (!noted(&world.has_phone)) {
        give_up("no phone is near; bring one within reach and make it discoverable");
    }
    vym_bluetooth_create_bond(world.phone);
    await(&world.bond_ended, 1, "the end of pairing");
    if (!world.bonded) {
        give_up("the phone refused to pair; accept the number on its screen");
    }
    say("   paired");
}

static void show_bonded_devices(void) {
    bt_remote_device_t devices[MAX_BONDED];
    int size = MAX_BONDED;
    char text[18];
    vym_bluetooth_get_bonded_devices(devices, &size);
    for (int i = 0; i < size && i < MAX_BONDED; i++) {
        say("   %d. %s  \"%s\"", i + 1, address_text(devices[i].address, text),
            (const char*)devices[i].name.name);
    }
}

static void count_audio(void) {
    const struct timespec second = {1, 0};
    const int packets = noted(&world.audio_packets);
    const int bytes = noted(&world.audio_bytes);
    nanosleep(&second, NULL);
    const int new_packets = noted(&world.audio_packets) - packets;
    say("   %d packets, %d bytes", new_packets, noted(&world.audio_bytes) - bytes);
    if (new_packets == 0) {
        give_up("no audio arrived; the server may have handed over no descriptor");
    }
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: first_steps DIRECTORY   (where the server's vym_socket is)\n");
        return 2;
    }
    scene_begin("first_steps", argv[1]);

    say("1. Connect to the server in %s", argv[1]);
    const int connection = vym_sdk_init_ex(argv[1]);
    if (connection < 0) {
        give_up("no server answers on %s/vym_socket; start vym-sim --dir %s", argv[1], argv[1]);
    }
    watch_begin(connection);
    vym_bluetooth_init(&bluetooth_callbacks);
    vym_audio_stream_init(&audio_callbacks);

    say("2. Switch the adapter on and see what it is");
    vym_bluetooth_enable();
    await(&world.powered, 1, "power on");
    show_adapter();

    say("3. Look for devices");
    vym_bluetooth_start_discovery();
    await(&world.discovery_ended, 1, "the end of discovery");

    say("4. Pair with the phone");
    pair_with_phone();

    say("5. The devices we are bonded with, newest first");
    show_bonded_devices();

    say("6. How strong is the phone's signal?");
    vym_bluetooth_read_connected_device_rssi(world.phone);
    await(&world.rssi_known, 1, "the signal strength");
    say("   %d dBm", world.rssi_dbm);

    say("7. Listen to its audio for a second");
    count_audio();

    say("8. Switch the adapter off");
    vym_bluetooth_disable();
    await(&world.powered, 0, "power off");

    watch_end();
    vym_bluetooth_done();
    vym_sdk_done();
    vym_audio_stream_done();
    say("Done. Diagnostics: %s/first_steps.log, capture: %s/client_sock.log", argv[1], argv[1]);
    return 0;
}
