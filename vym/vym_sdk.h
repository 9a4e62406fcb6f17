/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_sdk.h
 * Starting and stopping the library.
 *
 * @par Threads
 * `vym_sdk_init_ex` starts one receive thread. It reads the server's events and calls every callback of
 * every profile, one after the other, while it holds the lock of the parser registry. A callback may
 * call any command of any profile; it must not call a profile's `*_init` or `*_done` (they take that
 * lock). A call that waits for an answer, such as vym_bluetooth_get_name(), can only time out in a
 * callback, because the answer would have to be read by the very thread that waits. Pointers given to a
 * callback are valid until it returns. Audio data arrives on a thread of its own, see
 * vym_audio_stream.h.
 *
 * @par Order
 * vym_sdk_init_ex(), then the `*_init` of each profile in use; at the end the `*_done` of each profile,
 * in reverse order, then vym_sdk_done().
 */
#ifndef VYM_SDK_H
#define VYM_SDK_H

#ifndef VYM_API_ONLY
#include "vym_event_parser.h"

#include <stddef.h>
#include <stdint.h>
#endif /* VYM_API_ONLY */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Starts the library with the server's default socket directory, "/etc/backup".
 *
 * @return the socket descriptor (> 0) when connected, -1 otherwise; see vym_sdk_init_ex().
 */
int vym_sdk_init(void);

/**
 * Starts the library: connects to "<path>/vym_socket", captures all traffic in "<path>/client_sock.log"
 * and starts the receive thread. A library that is already started is shut down first.
 *
 * @param path directory of the server's socket, fewer than 256 characters; NULL for "/etc/backup". The
 *             socket's own path may have at most 107 characters.
 * @return the socket descriptor (> 0, owned by the library) when connected; -1 when the path is too
 * long or the connection failed (a message with the reason is printed). After -1 commands are dropped;
 * call vym_sdk_init_ex() again to retry, or vym_sdk_done() to release what was prepared.
 */
int vym_sdk_init_ex(const char* path);

/**
 * Shuts the library down: ends the capture, disconnects, and stops the receive thread. Waits for a
 * callback in progress. Harmless when the library is not started or already shut down. Called from a
 * callback it only disconnects; the next vym_sdk_done() or vym_sdk_init_ex() from another thread does
 * the rest.
 */
void vym_sdk_done(void);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/**
 * Sends one command and records it in the capture. Dropped silently while unconnected; a failed or
 * short write is not reported and not repeated.
 *
 * @param command the whole command with its CR LF, ended by a NUL.
 * @param len     ignored: strlen(command) bytes are sent.
 */
void send_at_command(char* command, int len);

/**
 * Takes the descriptor that belongs to the hand-over event in progress. Waits up to a second for it.
 *
 * @return the descriptor (> 0, close-on-exec, owned by the caller), or 0 when none came.
 */
int recv_data_transport_fd(void);

/**
 * Puts a profile's parser into the registry, at the next slot. The sixteenth overwrites the
 * unknown-event parser in slot 15; later ones and NULL are ignored.
 */
void register_event_parser(event_parser_t* parser);

/**
 * Takes a parser out of the registry; when it returns, the parser is not in use. Slots are not
 * compacted: the next registration goes to the decremented count, which may be a slot in use.
 * Unregister in reverse order.
 */
void unregister_event_parser(event_parser_t* parser);

/**
 * Registers a profile's new parser. When the profile was not shut down before, the new parser takes the
 * old one's slot, so that initialising twice neither uses up a slot nor disturbs another profile's.
 *
 * @param current the profile's parser so far, NULL for none; the new one afterwards.
 * @param fresh   the new parser; NULL (no memory) changes nothing.
 * @param destroy frees the old parser.
 */
void vym_profile_start(event_parser_t** current, event_parser_t* fresh,
                       void (*destroy)(event_parser_t*));

/** Unregisters and destroys a profile's parser, if it has one. When it returns, none of it is in use.
 */
void vym_profile_stop(event_parser_t** current, void (*destroy)(event_parser_t*));

/** Connects to "<path>/vym_socket" and starts the receive thread. @return descriptor > 0, or -1. */
int connect_to_server(const char* path);

/** Disconnects and joins the receive thread. */
void disconnect_from_server(void);

/** Body of the receive thread; `arg` is the socket descriptor. */
void* receive_message_proc(void* arg);

/** Runs the registered parsers over `buffer`. @return how many of the `n_bytes` they consumed. */
int process_event(uint8_t* buffer, int n_bytes);

/** Called when a read filled the receive buffer; a place for a debugger's breakpoint. */
void dump_at_event(void* buf, size_t len);

/** Whether a receive thread other than the caller is there to read internal events. */
int vym_receive_thread_will_read(void);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
