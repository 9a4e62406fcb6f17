/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Reading whatever a callback is given, to the last byte, and waiting for callbacks or the server's
 * end. */
#ifndef VYM_TESTS_E2E_READING_H
#define VYM_TESTS_E2E_READING_H

#include <poll.h>
#include <pthread.h>
#include <stddef.h>
#include <string.h>
#include <time.h>

/* A server that is gone cannot be seen in a condition, so it is looked for between slices. */
enum { SLICE_MS = 25, SLICES = 10 };

/* The connection's descriptor, as the library gave it. */
static int server = -1;

static struct {
    pthread_mutex_t lock;
    pthread_cond_t changed;
    unsigned sum;
    unsigned callbacks;
} seen = {.lock = PTHREAD_MUTEX_INITIALIZER, .changed = PTHREAD_COND_INITIALIZER};

static unsigned sum_of(const void* data, size_t length) {
    const unsigned char* bytes = data;
    unsigned sum = 0;
    for (size_t i = 0; bytes != NULL && i < length; ++i) {
        sum = sum * 31 + bytes[i];
    }
    return sum;
}

static void note(unsigned sum) {
    pthread_mutex_lock(&seen.lock);
    seen.sum += sum;
    ++seen.callbacks;
    pthread_cond_broadcast(&seen.changed);
    pthread_mutex_unlock(&seen.lock);
}

static unsigned text_sum(const char* text) {
    return text == NULL ? 0 : sum_of(text, strlen(text));
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

/* Until this many further callbacks have come, or patience ends: an evil server may owe them. */
static void await(unsigned further) {
    pthread_mutex_lock(&seen.lock);
    const unsigned wanted = seen.callbacks + further;
    for (int i = 0; i < SLICES && seen.callbacks < wanted && !server_is_gone(); ++i) {
        const struct timespec until = slice_end();
        while (seen.callbacks < wanted &&
               pthread_cond_timedwait(&seen.changed, &seen.lock, &until) == 0) {
        }
    }
    pthread_mutex_unlock(&seen.lock);
}

#define BYTES(value) sum_of(&(value), sizeof(value))

#endif
