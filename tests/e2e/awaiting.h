/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Waiting for callbacks or the server's end. */
#ifndef VYM_TESTS_E2E_AWAITING_H
#define VYM_TESTS_E2E_AWAITING_H

#include "callbacks/reading.h"

#include <poll.h>
#include <time.h>

/* A server that is gone cannot be seen in a condition, so it is looked for between slices. */
enum { SLICE_MS = 15, SLICES = 10, SLICES_FOR_MARK = 70 };

/* The connection's descriptor, as the library gave it. */
static int server = -1;

static void forget_marks(void) {
    pthread_mutex_lock(&seen.lock);
    seen.marks = 0;
    pthread_mutex_unlock(&seen.lock);
}

static int server_is_gone(void) {
    struct pollfd watched = {.fd = server};
    return poll(&watched, 1, 0) > 0;
}

static struct timespec slice_end(void) {
    struct timespec until;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_nsec += SLICE_MS * 1000000L;
    until.tv_sec += until.tv_nsec / 1000000000L;
    until.tv_nsec %= 1000000000L;
    return until;
}

/* Until there are so many callbacks and these marks, or patience ends: an evil server may owe them. The
 * lock is held. */
static void await_until(unsigned callbacks, unsigned marks, int slices) {
    for (int i = 0; i < slices && !server_is_gone(); ++i) {
        const struct timespec until = slice_end();
        int result = 0;
        while (result == 0) {
            if (seen.callbacks >= callbacks && (seen.marks & marks) == marks) {
                return;
            }
            result = pthread_cond_timedwait(&seen.changed, &seen.lock, &until);
        }
    }
}

static void await(unsigned further) {
    pthread_mutex_lock(&seen.lock);
    await_until(seen.callbacks + further, 0, SLICES);
    pthread_mutex_unlock(&seen.lock);
}

static void await_mark(unsigned marks) {
    pthread_mutex_lock(&seen.lock);
    await_until(0, marks, SLICES_FOR_MARK);
    pthread_mutex_unlock(&seen.lock);
}

#endif
