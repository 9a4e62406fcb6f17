/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_pbap_queue.h
 * A queue of phone-book work items for applications that handle them on a thread of their own. The
 * library itself does not use it.
 *
 * Any number of threads may write and read between start_pbap_queue() and stop_pbap_queue(); writing
 * never blocks. A worker repeats: pbap_thread_wait(), readfrom_pbap_queue(), handle the item, free it.
 * Take one item for each wait, and be ready for NULL after a pbap_thread_post().
 */
#ifndef VYM_PBAP_QUEUE_H
#define VYM_PBAP_QUEUE_H

#include <semaphore.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A work item, from malloc() or calloc(). */
typedef struct pbap_queue {
    /** Which event it stands for. */
    uint8_t parse_index;
    /** Its data; whoever reads the item owns it. */
    void* param;
    /** The item behind it. */
    struct pbap_queue* next;
} pbap_queue_t;

/** Counts the items written: what pbap_thread_wait() waits on. */
extern sem_t sem;
#if defined(__has_attribute)
#if __has_attribute(nodirect_extern_access)
/* A program must not get a copy of its own, as programs do of a library's plain variables. */
extern sem_t sem __attribute__((nodirect_extern_access));
#endif
#endif

/** Starts the queue: nothing to wait for. Items that were left in it stay and can be read. Call it once
 * before use, and again only after stop_pbap_queue(). */
void start_pbap_queue(void);

/** Stops the queue; nobody may be waiting. Items that were left in it are neither freed nor taken out.
 */
void stop_pbap_queue(void);

/**
 * Appends an item and wakes a waiting thread.
 *
 * @param pbap_queue zeroed but for its content, and not in the queue. Items that its `next` points to
 * come along, to be read after it without being waited for; the first item of an empty queue comes
 * alone. NULL prints a message and does nothing.
 */
void writeto_pbap_queue(pbap_queue_t* pbap_queue);

/** @return the oldest item, owned by the caller, or NULL when there is none. Does not wait. */
pbap_queue_t* readfrom_pbap_queue(void);

/** Waits until an item has been written that no other wait was for. */
void pbap_thread_wait(void);

/** Wakes a waiting thread without an item, for example to end it. */
void pbap_thread_post(void);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** @return items written less items read since the start. */
int vym_pbap_queue_count(void);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
