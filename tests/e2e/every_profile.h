/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* What an application of all profiles does, step by step. Any step may find the server dead. */
#ifndef VYM_TESTS_E2E_EVERY_PROFILE_H
#define VYM_TESTS_E2E_EVERY_PROFILE_H

#include "awaiting.h"

#include <vym/vym_sdk.h>

#include <pthread.h>

#define SHORT_UUID(high, low)                                                                          \
    {                                                                                                  \
        { 0, 0, high, low, 0, 0, 0x10, 0, 0x80, 0, 0, 0x80, 0x5F, 0x9B, 0x34, 0xFB }                   \
    }

static bt_bdaddr_t phone = {{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};
static bt_bdaddr_t laptop = {{0x70, 0x6F, 0x74, 0x70, 0x4C, 0x2E}};
static bt_bdaddr_t receiver = {{0x01, 0x53, 0x53, 0x4E, 0x47, 0x2A}};
static bt_uuid_t serial_port = SHORT_UUID(0x11, 0x01);
static bt_uuid_t heart_rate = SHORT_UUID(0x18, 0x0D);
static bt_uuid_t measurement = SHORT_UUID(0x2A, 0x37);
static bt_uuid_t configuration = SHORT_UUID(0x29, 0x02);

/* What waits without limit for an answer that may never come has a thread that the end of main() ends.
 */
static void aside(void* (*work)(void*)) {
    pthread_t thread;
    if (pthread_create(&thread, NULL, work, NULL) == 0) {
        pthread_detach(thread);
    }
}

#endif
