/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* What the examples share that has nothing to do with Bluetooth: a screen of their own, and waiting for
 * a callback. */
#ifndef VYM_EXAMPLES_SCENE_H
#define VYM_EXAMPLES_SCENE_H

#include <vym/bluetooth.h>

#include <fcntl.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

enum { SCENE_PATIENCE_S = 20 };

/* Callbacks run on the library's threads: the lock guards what they leave behind, the condition wakes
 * main(). The library writes its diagnostics to standard output; `screen` is where ours goes. */
static struct {
    const char* program;
    FILE* screen;
    pthread_mutex_t lock;
    pthread_cond_t changed;
    pthread_mutex_t last_words;
    /* NOLINTNEXTLINE(modernize-use-nullptr): this is C, too. */
} scene = {NULL, NULL, PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, PTHREAD_MUTEX_INITIALIZER};

/* One line on the screen. */
static inline void say(const char* format, ...) {
    va_list args;
    va_start(args, format);
    flockfile(scene.screen);
    vfprintf(scene.screen, format, args);
    fputc('\n', scene.screen);
    fflush(scene.screen);
    funlockfile(scene.screen);
    va_end(args);
}

/* Ends the program with one line that says why. When two threads give up, the first one is heard. */
__attribute__((noreturn)) static inline void give_up(const char* format, ...) {
    va_list args;
    pthread_mutex_lock(&scene.last_words); /* for good */
    va_start(args, format);
    fprintf(stderr, "%s: ", scene.program);
    vfprintf(stderr, format, args);
    fputc('\n', stderr);
    va_end(args);
    exit(1);
}

/* Sends the library's diagnostics to <directory>/<program>.log and keeps the screen for us. */
static inline void scene_begin(const char* program, const char* directory) {
    char path[300];
    int log = -1;
    const int terminal = dup(STDOUT_FILENO);
    scene.program = program;
    snprintf(path, sizeof path, "%s/%s.log", directory, program);
    log = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    scene.screen = fdopen(terminal, "w");
    if (!scene.screen || log < 0 || dup2(log, STDOUT_FILENO) < 0) {
        give_up("cannot write %s; name a directory that exists and is writable", path);
    }
    close(log);
}

/* In a callback: notes a value and wakes main(). */
static inline void note(int* place, int value) {
    pthread_mutex_lock(&scene.lock);
    *place = value;
    pthread_cond_broadcast(&scene.changed);
    pthread_mutex_unlock(&scene.lock);
}

/* In main(): the value that a callback has noted. */
static inline int noted(const int* place) {
    int value = 0;
    pthread_mutex_lock(&scene.lock);
    value = *place;
    pthread_mutex_unlock(&scene.lock);
    return value;
}

/* In main(): waits until a callback has noted this value (or another one); gives up when that takes too
 * long. Returns what was noted. */
static inline int scene_wait(const int* place, int value, int is_wanted, const char* what) {
    struct timespec until;
    int result = 0;
    int seen = 0;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += SCENE_PATIENCE_S;
    pthread_mutex_lock(&scene.lock);
    while ((*place == value) != is_wanted && result == 0) {
        result = pthread_cond_timedwait(&scene.changed, &scene.lock, &until);
    }
    seen = *place;
    pthread_mutex_unlock(&scene.lock);
    if (result != 0) {
        give_up("the server did not report %s within %d s; is it switched off or busy?", what,
                SCENE_PATIENCE_S);
    }
    return seen;
}

static inline void await(const int* place, int value, const char* what) {
    scene_wait(place, value, 1, what);
}

static inline int await_other(const int* place, int value, const char* what) {
    return scene_wait(place, value, 0, what);
}

/* 00:11:22:33:44:55, as people write an address. */
static inline const char* address_text(bt_bdaddr_t a, char text[18]) {
    snprintf(text, 18, "%02X:%02X:%02X:%02X:%02X:%02X", a.address[5], a.address[4], a.address[3],
             a.address[2], a.address[1], a.address[0]);
    return text;
}

#endif
