/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file ring_buffer.h
 * A bounded queue of bytes between the thread that receives the data of an RFCOMM channel and the
 * thread of the application that reads it.
 *
 * Users hold a ring_buffer_t and call its three operations with it: `rb->push(rb, bytes, n)`. Any
 * number of threads may do so at the same time; the copies are made under the buffer's lock.
 */
#ifndef VYM_RING_BUFFER_H
#define VYM_RING_BUFFER_H

#include <pthread.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes on their way from the thread that receives them to the one that reads them. */
typedef struct tag_ring_buffer_base ring_buffer_t;

/** The operations of a ring buffer. */
struct tag_ring_buffer_base {
    /**
     * Stores all `length` bytes or none of them. When they do not fit, the overrun is reported on
     * standard output; a buffer created with `push_block` then waits for room and reports again each
     * time it wakes up without finding enough. More than the capacity never fits: such a push waits
     * until the buffer is freed.
     *
     * @return `length`; 0 when the bytes did not fit, the buffer is being freed, `length` is negative
     *         or `buffer` is NULL although `length` is not 0.
     */
    int (*push)(ring_buffer_t* rb, unsigned char* buffer, int length);

    /**
     * Takes out up to `length` bytes, oldest first. On an empty buffer created with `pull_block` it
     * waits for data, also when `length` is 0.
     *
     * @return the number of bytes copied to `buffer`; 0 when there are none, the buffer is being freed,
     *         `length` is negative, or `buffer` is NULL although `length` is not 0.
     */
    int (*pull)(ring_buffer_t* rb, unsigned char* buffer, int length);

    /** @return the number of bytes stored; 0 once the buffer is being freed. */
    int (*avail)(ring_buffer_t* rb);
};

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** What stands behind a ring_buffer_t; everything after `common` is guarded by `mutex`. */
typedef struct tag_ring_buffer {
    /** First, so that a pointer to it is a pointer to the whole. */
    ring_buffer_t common;
    pthread_mutex_t mutex;
    /** For both directions: room was made, or data came, or the buffer is being freed. */
    pthread_cond_t cond;
    /** Capacity in bytes. */
    size_t buf_size;
    unsigned char* audio_data_queue;
    size_t read_idx;
    size_t write_idx;
    /** Bytes stored; `write_idx` is (`read_idx` + `delta`) modulo `buf_size`. */
    size_t delta;
    /** 1 while the buffer is usable, 0 once it is being freed. */
    unsigned char avail;
    unsigned char pull_block;
    unsigned char push_block;
    /** Threads that wait in push or pull; ring_buffer_free() lets them leave before it destroys the
     * lock. */
    unsigned int waiters;
} ring_buffer_impl_t;

/**
 * Makes an empty ring buffer of 128000 bytes.
 *
 * @param buf_size   not used: the capacity is fixed.
 * @param push_block non-zero (as a byte): a push that does not fit waits for room.
 * @param pull_block non-zero (as a byte): a pull from an empty buffer waits for data.
 * @return the buffer, to be released with ring_buffer_free(); NULL when memory is short.
 */
ring_buffer_t* ring_buffer_create(int buf_size, int push_block, int pull_block);

/**
 * Ends a ring buffer's use: every thread that waits in push or pull, and every later one, gets 0. May
 * be called twice; ring_buffer_free() still has to follow.
 */
void ring_buffer_close(ring_buffer_t* obj);

/**
 * Releases a ring buffer; NULL is accepted. Threads that wait in push or pull return 0 before the
 * memory goes. No thread may enter an operation any more once this is called.
 */
void ring_buffer_free(ring_buffer_t* obj);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
