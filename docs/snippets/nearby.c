/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* What is nearby: switches Bluetooth on, looks for devices, and says what it has found.
 *
 * usage: nearby DIRECTORY      (the directory of the server's socket)
 */
#define _POSIX_C_SOURCE 200809L
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

enum { PATIENCE_S = 30, ROOM = 16 };

struct device {
    bt_bdaddr_t address;
    int rssi; /* dBm */
    char name[BT_NAME_MAX_LEN + 1];
};

/* Written by callbacks on the library's receive thread, read by main(). */
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int is_on;
static int has_searched;
static struct device devices[ROOM];
static size_t count;

static void note(int* place) {
    pthread_mutex_lock(&lock);
    *place = 1;
    pthread_cond_signal(&changed);
    pthread_mutex_unlock(&lock);
}

/* Returns whether a callback has noted it in time. */
static int wait_for(const int* place) {
    struct timespec until;
    int seen = 0;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += PATIENCE_S;
    pthread_mutex_lock(&lock);
    while (!*place && pthread_cond_timedwait(&changed, &lock, &until) == 0) {
    }
    seen = *place;
    pthread_mutex_unlock(&lock);
    return seen;
}

static void on_state(uint8_t state) {
    if (state == BT_STATE_ON) {
        note(&is_on);
    }
}

static void on_discovery(uint8_t state) {
    if (state == BT_DISCOVERY_STOPPED) {
        note(&has_searched);
    }
}

/* The name is the library's until the callback returns: what is to be kept is copied. */
static void on_found(bt_bdaddr_t address, uint8_t type_of_device, int class_of_device, uint8_t rssi,
                     char* name, uint8_t num_of_uuid16, uint16_t* uuids) {
    size_t i = 0;
    pthread_mutex_lock(&lock);
    while (i < count && memcmp(&devices[i].address, &address, sizeof address) != 0) {
        ++i;
    }
    if (i < ROOM) { /* a new one, or one that is heard again */
        devices[i].address = address;
        devices[i].rssi = (int8_t)rssi;
        snprintf(devices[i].name, sizeof devices[i].name, "%s", name);
        count = i < count ? count : i + 1;
    }
    pthread_mutex_unlock(&lock);
}

static void show(const struct device* device) {
    const uint8_t* a = device->address.address; /* the last byte is written first */
    printf("%02X:%02X:%02X:%02X:%02X:%02X %4d dBm  %s\n", a[5], a[4], a[3], a[2], a[1], a[0],
           device->rssi, device->name);
}

static int search(void) {
    vym_bluetooth_enable();
    if (!wait_for(&is_on)) {
        fprintf(stderr, "nearby: the server did not switch Bluetooth on within %d s\n", PATIENCE_S);
        return 1;
    }
    vym_bluetooth_start_discovery();
    if (!wait_for(&has_searched)) {
        fprintf(stderr, "nearby: the search did not end within %d s\n", PATIENCE_S);
        return 1;
    }
    for (size_t i = 0; i < count; ++i) { /* the search has ended: nobody writes any more */
        show(&devices[i]);
    }
    return 0;
}

int main(int argc, char** argv) {
    /* Lives longer than the module that calls it: until vym_bluetooth_done() has returned. */
    static bluetooth_callback_t callbacks = {.state_changed_cb = on_state,
                                             .device_found_cb = on_found,
                                             .discovery_state_changed_cb = on_discovery};
    int result = 1;
    if (argc != 2) {
        fprintf(stderr, "usage: nearby DIRECTORY\n");
        return 2;
    }
    if (vym_sdk_init_ex(argv[1]) >= 0) {
        vym_bluetooth_init(&callbacks);
        result = search();
        vym_bluetooth_done();
    }
    vym_sdk_done();
    return result;
}
