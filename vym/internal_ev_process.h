/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file internal_ev_process.h
 * Short typed messages from any thread to the receive thread, for work that must not run beside the
 * decoding of events.
 *
 * A message is a type, a length and up to 64 bytes. Handlers run on the receive thread, newest first,
 * with the list's lock held: a handler must not register or unregister. Each message delays the reading
 * of the server's events by half a second.
 */
#ifndef VYM_INTERNAL_EV_PROCESS_H
#define VYM_INTERNAL_EV_PROCESS_H

#include <stddef.h>
#include <stdint.h>
#ifndef VYM_API_ONLY
#include <sys/types.h>
#endif /* VYM_API_ONLY */

#ifdef __cplusplus
extern "C" {
#endif

/** The most value bytes a message can carry. */
#define VYM_INTERNAL_EVENT_MAX_LEN 64

/** A message as a handler receives it; valid until the handler returns. */
typedef struct tag_ev_data {
    /** Chosen by the sender; the hands-free profile uses 1. */
    uint8_t type;
    /** Value bytes as sent; may exceed 64 with a foreign writer, so use the smaller of `len` and 64. */
    uint8_t len;
    /** Bytes beyond `len` are left over from earlier messages. */
    uint8_t value[VYM_INTERNAL_EVENT_MAX_LEN];
    /** Used while a message is put together; 0 in a handler. */
    size_t off;
} ev_data_t;

/** Handles one message, on the receive thread. */
typedef void (*internal_event_callback)(ev_data_t* ev);

/** Prepares the channel. Called by vym_sdk_init_ex(); handlers registered before do not survive it. */
void vym_internal_event_init(void);

/** Closes the channel and forgets every handler. Called by vym_sdk_done(). */
void vym_internal_event_done(void);

/**
 * Adds a handler in front of the others. A handler added twice is called twice. Without memory, or with
 * NULL, nothing is added.
 */
void vym_internal_event_register(internal_event_callback cbk);

/** Removes the most recently added registration of `cbk`; nothing if there is none. */
void vym_internal_event_unregister(internal_event_callback cbk);

/**
 * Sends a message; any thread may call.
 *
 * @param event    the type.
 * @param data_len bytes of `data`, cut to 64.
 * @param data     copied before the call returns; NULL counts as no data.
 * @return 1 when the whole message was written; 0 when the library is not started, or when nobody would
 *         read it (no receive thread, or called on it) and the channel is full.
 */
int vym_internal_event_send(uint8_t event, uint8_t data_len, void* data);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

struct list_head {
    struct list_head* next;
    struct list_head* prev;
};

/** One registered handler. */
typedef struct tag_internal_ev_node_cbk {
    internal_event_callback cbk;
    struct list_head node;
} internal_ev_cbk_node_t;

void INIT_LIST_HEAD(struct list_head* list);
void __list_add(struct list_head* node, struct list_head* prev, struct list_head* next);
/** Inserts `node` right after `head`. */
void list_add(struct list_head* node, struct list_head* head);
void __list_del(struct list_head* prev, struct list_head* next);
void list_del(struct list_head* entry);

/** @return a handler node, to be freed with free(); NULL without memory. */
internal_ev_cbk_node_t* node_alloc(internal_event_callback cbk);

/**
 * Waits until the server or an internal message has something to read.
 *
 * @return bytes of the server's text read into `buf`; 0 when an internal message was handled or the
 * server closed; -1 on failure. `buf` is touched only by the server's text.
 */
ssize_t read_all(int fd, void* buf, size_t count);

/** Appends raw bytes of the channel to the staging buffer. */
void push_ev_data(void* buf, size_t count);

/** Takes messages out of the staging buffer and hands on each complete one. */
void process_ev_data(void);

/** Calls every handler, newest first. */
void notify_internal_event(ev_data_t* ev);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
