/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Reading whatever a callback is given, to the last byte, and telling those that wait for it. */
#ifndef VYM_TESTS_SUPPORT_READING_H
#define VYM_TESTS_SUPPORT_READING_H

#include <pthread.h>
#include <stddef.h>
#include <string.h>

static struct {
    pthread_mutex_t lock;
    pthread_cond_t changed;
    unsigned sum;
    unsigned callbacks;
    unsigned marks;
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

/* What later steps build on. */
enum mark {
    HANDS_FREE_UP = 1U << 0,
    MUSIC_UP = 1U << 1,
    REMOTE_CONTROL_UP = 1U << 2,
    PHONE_BOOK_UP = 1U << 3,
    PHONE_BOOK_READ = 1U << 4,
    STRAP_FOUND = 1U << 5,
    STRAP_UP = 1U << 6,
    STRAP_SEARCHED = 1U << 7,
    STRAP_NOTIFIED = 1U << 8,
    TABLET_UP = 1U << 9,
    TABLET_ASKED = 1U << 10,
    HOST_UP = 1U << 11,
    SERVER_GREETED = 1U << 12,
    COVER_ART_UP = 1U << 13,
};

static void mark(unsigned marks) {
    pthread_mutex_lock(&seen.lock);
    seen.marks |= marks;
    pthread_cond_broadcast(&seen.changed);
    pthread_mutex_unlock(&seen.lock);
}

/* What the server has called things, or claims to have. */
static struct {
    unsigned client_if;
    unsigned conn_id;
    unsigned server_if;
    unsigned service;
    unsigned characteristic;
    unsigned tablet;
    unsigned cover_art;
} named = {1, 1, 1, 40, 42, 1, 1};

static void learn(unsigned* name, unsigned value) {
    pthread_mutex_lock(&seen.lock);
    *name = value;
    pthread_mutex_unlock(&seen.lock);
}

static unsigned known(const unsigned* name) {
    pthread_mutex_lock(&seen.lock);
    const unsigned value = *name;
    pthread_mutex_unlock(&seen.lock);
    return value;
}

static unsigned text_sum(const char* text) {
    return text == NULL ? 0 : sum_of(text, strlen(text));
}

#define BYTES(value) sum_of(&(value), sizeof(value))

#endif
