/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The smallest application: switches Bluetooth on and says what the adapter is called.
 *
 * usage: smallest DIRECTORY      (the directory of the server's socket)
 */
#define _POSIX_C_SOURCE 200809L
#include <semaphore.h>
#include <stdio.h>
#include <time.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

static sem_t switched;

static void on_state(uint8_t state) { /* runs on the library's receive thread */
    printf("The adapter is %s.\n", state == BT_STATE_ON ? "on" : "off");
    sem_post(&switched);
}

int main(int argc, char** argv) {
    bluetooth_callback_t callbacks = {.state_changed_cb = on_state}; /* the others may stay NULL */
    sem_init(&switched, 0, 0);
    /* The directory holds the server's socket, "vym_socket"; the library puts its capture there. */
    if (vym_sdk_init_ex(argc > 1 ? argv[1] : NULL) < 0) {
        return 1;
    }
    vym_bluetooth_init(&callbacks);
    vym_bluetooth_enable();
    struct timespec until = {.tv_sec = time(NULL) + 10};
    if (sem_timedwait(&switched, &until) != 0) { /* a server that has gone says nothing */
        fprintf(stderr, "The server did not switch it on within 10 s.\n");
        return 1;
    }
    printf("It is called %s.\n", (const char*)vym_bluetooth_get_name()->name);
    vym_bluetooth_done();
    vym_sdk_done();
    return 0;
}
