// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "ring_buffer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t capacity = 128000;

ring_buffer_impl_t* impl_of(ring_buffer_t* rb) {
    return reinterpret_cast<ring_buffer_impl_t*>(rb);
}

/// Where `at`, which is at most one round ahead, is in the buffer. Not by dividing: 32-bit ARM may have
/// to do that in software.
size_t wrapped(const ring_buffer_impl_t* rb, size_t at) {
    return at < rb->buf_size ? at : at - rb->buf_size;
}

void copy_in(ring_buffer_impl_t* rb, const unsigned char* from, size_t n) {
    const size_t first = std::min(n, rb->buf_size - rb->write_idx);
    memcpy(rb->audio_data_queue + rb->write_idx, from, first);
    memcpy(rb->audio_data_queue, from + first, n - first);
    rb->write_idx = wrapped(rb, rb->write_idx + n);
    rb->delta += n;
}

void copy_out(ring_buffer_impl_t* rb, unsigned char* to, size_t n) {
    const size_t first = std::min(n, rb->buf_size - rb->read_idx);
    memcpy(to, rb->audio_data_queue + rb->read_idx, first);
    memcpy(to + first, rb->audio_data_queue, n - first);
    rb->read_idx = wrapped(rb, rb->read_idx + n);
    rb->delta -= n;
}

/// A null pointer has no bytes, and a negative length would become a huge size_t.
bool is_refused(const unsigned char* buffer, int length) {
    return length < 0 || (buffer == nullptr && length > 0);
}

void wait_for_change(ring_buffer_impl_t* rb) {
    ++rb->waiters;
    pthread_cond_wait(&rb->cond, &rb->mutex);
    --rb->waiters;
    if (rb->avail == 0) {
        // A signal wakes one thread only: pass it on, to the next waiter or to ring_buffer_free().
        pthread_cond_signal(&rb->cond);
    }
}

/// @return bytes stored, or -1 to be asked again after a change.
int try_push(ring_buffer_impl_t* rb, const unsigned char* buffer, int length) {
    if (rb->avail == 0) {
        return 0;
    }
    const auto n = static_cast<size_t>(length);
    if (rb->delta + n <= rb->buf_size) {
        if (n > 0) {
            copy_in(rb, buffer, n);
        }
        pthread_cond_signal(&rb->cond);
        return length;
    }
    printf("Overrun! push %d byte, remain %d bytes not be consumed. buffer size:%d.\n", length,
           static_cast<int>(rb->delta), static_cast<int>(rb->buf_size));
    return rb->push_block != 0 ? -1 : 0;
}

/// @return bytes taken out, or -1 to be asked again after a change.
int try_pull(ring_buffer_impl_t* rb, unsigned char* buffer, int length) {
    if (rb->avail == 0) {
        return 0;
    }
    if (rb->delta == 0) {
        return rb->pull_block != 0 ? -1 : 0;
    }
    const size_t n = std::min(rb->delta, static_cast<size_t>(length));
    if (n > 0) {
        copy_out(rb, buffer, n);
    }
    pthread_cond_signal(&rb->cond);
    return static_cast<int>(n);
}

int push(ring_buffer_t* obj, unsigned char* buffer, int length) {
    if (is_refused(buffer, length)) {
        return 0;
    }
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    int stored = try_push(rb, buffer, length);
    while (stored < 0) {
        wait_for_change(rb);
        stored = try_push(rb, buffer, length);
    }
    pthread_mutex_unlock(&rb->mutex);
    return stored;
}

int pull(ring_buffer_t* obj, unsigned char* buffer, int length) {
    if (is_refused(buffer, length)) {
        return 0;
    }
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    int taken = try_pull(rb, buffer, length);
    while (taken < 0) {
        wait_for_change(rb);
        taken = try_pull(rb, buffer, length);
    }
    pthread_mutex_unlock(&rb->mutex);
    return taken;
}

int avail(ring_buffer_t* obj) {
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    const size_t stored = rb->avail == 1 ? rb->delta : 0;
    pthread_mutex_unlock(&rb->mutex);
    return static_cast<int>(stored);
}

} // namespace

ring_buffer_t* ring_buffer_create(int /*buf_size*/, int push_block, int pull_block) {
    auto* rb = static_cast<ring_buffer_impl_t*>(calloc(1, sizeof(ring_buffer_impl_t)));
    if (rb == nullptr) {
        return nullptr;
    }
    rb->audio_data_queue = static_cast<unsigned char*>(malloc(capacity));
    if (rb->audio_data_queue == nullptr) {
        free(rb);
        return nullptr;
    }
    rb->common = {push, pull, avail};
    rb->buf_size = capacity;
    rb->avail = 1;
    rb->push_block = static_cast<unsigned char>(push_block);
    rb->pull_block = static_cast<unsigned char>(pull_block);
    pthread_mutex_init(&rb->mutex, nullptr);
    pthread_cond_init(&rb->cond, nullptr);
    return &rb->common;
}

void ring_buffer_close(ring_buffer_t* obj) {
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    rb->avail = 0;
    pthread_cond_signal(&rb->cond);
    pthread_mutex_unlock(&rb->mutex);
}

void ring_buffer_free(ring_buffer_t* obj) {
    if (obj == nullptr) {
        return;
    }
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    rb->avail = 0;
    pthread_cond_signal(&rb->cond);
    while (rb->waiters > 0) {
        // A leaving thread's signal may have come here instead of to another waiter: give it back.
        pthread_cond_wait(&rb->cond, &rb->mutex);
        pthread_cond_signal(&rb->cond);
    }
    pthread_mutex_unlock(&rb->mutex);
    free(rb->audio_data_queue);
    pthread_mutex_destroy(&rb->mutex);
    pthread_cond_destroy(&rb->cond);
    free(rb);
}
