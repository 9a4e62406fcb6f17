// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_pbap_queue.h"

#include "vym_thread.h"

#include <cerrno>
#include <cstdio>

namespace {

vym::mutex s_queue_lock;

struct {
    pbap_queue_t* head VYM_GUARDED_BY(s_queue_lock);
    int count VYM_GUARDED_BY(s_queue_lock);
} s_pbap_queue;

// Links the item behind the last one.
void append(pbap_queue_t* item) VYM_REQUIRES(s_queue_lock) {
    if (s_pbap_queue.head == nullptr) {
        s_pbap_queue.head = item;
        item->next = nullptr;
        return;
    }
    pbap_queue_t* last = s_pbap_queue.head;
    while (last->next != nullptr) {
        last = last->next;
    }
    last->next = item; // its own `next` stays as the caller gave it
}

} // namespace

extern "C" {

// Many a program has a variable of this name. Protected: others may link to it, but the library's own
// references always lead here and never to the program's.
__attribute__((visibility("protected"))) sem_t sem;

void start_pbap_queue(void) {
    const vym::lock_guard guard(s_queue_lock);
    s_pbap_queue.count = 0;
    sem_init(&sem, 0, 0);
}

void stop_pbap_queue(void) {
    const vym::lock_guard guard(s_queue_lock);
    s_pbap_queue.count = 0;
    sem_destroy(&sem);
}

void writeto_pbap_queue(pbap_queue_t* pbap_queue) {
    if (pbap_queue == nullptr) {
        puts("ERROR: pbap_queue is NULL !!!\r");
        return;
    }
    const vym::lock_guard guard(s_queue_lock);
    append(pbap_queue);
    sem_post(&sem);
    ++s_pbap_queue.count;
}

pbap_queue_t* readfrom_pbap_queue(void) {
    const vym::lock_guard guard(s_queue_lock);
    pbap_queue_t* item = s_pbap_queue.head;
    if (item != nullptr) {
        --s_pbap_queue.count;
        s_pbap_queue.head = item->next;
    }
    return item;
}

void pbap_thread_wait(void) {
    while (sem_wait(&sem) != 0 && errno == EINTR) {
    }
}

void pbap_thread_post(void) {
    sem_post(&sem);
}

int vym_pbap_queue_count(void) {
    const vym::lock_guard guard(s_queue_lock);
    return s_pbap_queue.count;
}

} // extern "C"
