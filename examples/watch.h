/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Is the server still there? The library does not tell when it has gone: nothing is answered any more,
 * and a call that waits without limit waits for ever. So a thread of the application looks at the
 * connection, and at the clock while such a call is being made. */
#ifndef VYM_EXAMPLES_WATCH_H
#define VYM_EXAMPLES_WATCH_H

#include "scene.h"

#include <poll.h>

enum { WATCH_STEP_MS = 100 };

static struct {
    pthread_t thread;
    int connection; /* a descriptor of our own: the library may close its own at any time */
    int ends;
    time_t until; /* 0: no hurry */
    const char* awaited;
} watch;

static inline time_t watch_clock(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

/* One look; returns whether to go on. */
static inline int watch_look(int has_gone) {
    const char* late = NULL; /* NOLINT(modernize-use-nullptr): this is C, too. */
    int ends = 0;
    pthread_mutex_lock(&scene.lock);
    ends = watch.ends;
    if (watch.until != 0 && watch_clock() > watch.until) {
        late = watch.awaited;
    }
    pthread_mutex_unlock(&scene.lock);
    if (has_gone && !ends) {
        give_up("the server has gone; start it and this program again");
    }
    if (late && !ends) {
        give_up("the server did not report %s within %d s; is it switched off or busy?", late,
                SCENE_PATIENCE_S);
    }
    return !ends;
}

static inline void* watch_body(void* unused) {
    struct pollfd entry = {watch.connection, 0, 0}; /* a hang-up is always reported */
    (void)unused;
    do {
        poll(&entry, 1, WATCH_STEP_MS);
    } while (watch_look(entry.revents != 0));
    return unused;
}

/* With the descriptor that vym_sdk_init_ex() returned. */
static inline void watch_begin(int connection) {
    watch.connection = fcntl(connection, F_DUPFD_CLOEXEC, 0);
    /* NOLINTNEXTLINE(modernize-use-nullptr): this is C, too. */
    if (watch.connection < 0 || pthread_create(&watch.thread, NULL, watch_body, NULL) != 0) {
        give_up("the connection cannot be watched: there is no descriptor or no thread left");
    }
}

/* Before vym_sdk_done(), whose end of the connection is none to be reported. */
static inline void watch_end(void) {
    pthread_mutex_lock(&scene.lock);
    watch.ends = 1;
    pthread_mutex_unlock(&scene.lock);
    pthread_join(watch.thread, NULL); /* NOLINT(modernize-use-nullptr): this is C, too. */
    close(watch.connection);
}

/* Around calls that wait without limit: the program gives up when they take too long. */
static inline void hurry(const char* awaited) {
    pthread_mutex_lock(&scene.lock);
    watch.awaited = awaited;
    watch.until = watch_clock() + SCENE_PATIENCE_S;
    pthread_mutex_unlock(&scene.lock);
}

static inline void no_hurry(void) {
    pthread_mutex_lock(&scene.lock);
    watch.until = 0;
    pthread_mutex_unlock(&scene.lock);
}

#endif
