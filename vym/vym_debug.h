/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_debug.h
 * Diagnosis: a capture of the traffic in a btsnoop file, and a TCP listener for an external parser.
 *
 * @par Capture
 * While a capture file is open, the library appends each command it sends and all text it receives, as
 * HCI vendor commands and events, so that common analysers show them. vym_sdk_init_ex() opens a capture
 * and vym_sdk_done() closes it; the writers below let an application add real HCI packets. A record is
 * complete in the file when the call returns. Write errors are not reported: diagnosis must not get in
 * the way.
 *
 * @par External parser
 * The application may run ext_parser_thread() on a thread of its own; a program that connects to TCP
 * port 4338 then receives what the application gives to send_ext_parser(). The library itself does
 * neither.
 *
 * @par Threads
 * Every function may be called from any thread. One lock, held for the length of one text's records,
 * one send or one opening, guards the capture file and the parser's descriptors; no callback is ever
 * called under it.
 */
#ifndef VYM_DEBUG_H
#define VYM_DEBUG_H

#include <stddef.h>
#include <stdint.h>
#ifndef VYM_API_ONLY
#include <sys/time.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Descriptor of the capture file, owned by the library; -1 while none is open. Only for looking at. */
extern int hci_vym_debug_fd;

/** Sets the debug status to 1 if it is 0. */
void vym_debug_init(void);

/** Sets the debug status to 0. */
void vym_debug_cleanup(void);

/** Sets the debug status, a number kept for the application: it does not switch the capture. */
void set_vym_debug_status(int status);

/** @return the debug status; 0 at first. */
int get_vym_debug_status(void);

/** Opens a capture file: vym_debug_log_open() without its result. */
void vym_debug_open(char* p_path);

/** Closes the capture file: vym_debug_log_close() without its result. */
void vym_debug_close(void);

/** @return 1 while a capture file is open, else 0. */
int vym_debug_is_open(void);

/**
 * Creates or empties a capture file (mode 0664) and writes its header. A file that is already open is
 * forgotten in any case, not closed: the caller who wants it closed calls vym_debug_log_close() first.
 *
 * @return 1 when the capture is open; 0 when the file cannot be opened (the reason is printed on
 *         standard error); 2 when the path is NULL or empty.
 */
int vym_debug_log_open(char* vym_debug_logfile);

/** Closes the capture file. @return 1; 0 when none is open. */
int vym_debug_log_close(void);

/**
 * Appends one packet to the capture; nothing while none is open.
 *
 * @param p_buf   packet type (1 command, 2 ACL, 3 SCO, 4 event; others are ignored), then the packet.
 * @param len     not used: the packet's own header says how long it is, and as much is read.
 * @param is_rcvd for ACL and SCO: any value but 0 means received from the controller.
 */
void vym_debug_capture(unsigned char* p_buf, uint32_t len, uint8_t is_rcvd);

/** Appends an HCI command, given without its type byte: opcode (2 bytes), length, parameters. */
void vym_debug_hci_cmd(unsigned char* p);

/** Appends an HCI event, given without its type byte: event code, length, parameters. */
void vym_debug_hci_evt(unsigned char* p);

/**
 * Appends an SCO packet, given without its type byte: handle (2 bytes), length, data.
 * See vym_debug_capture().
 */
void vym_debug_sco_data(unsigned char* p, uint8_t is_rcvd);

/**
 * Appends an ACL packet, given without its type byte: handle (2 bytes), length (2 bytes, low byte
 * first), data.
 * See vym_debug_capture().
 */
void vym_debug_acl_data(unsigned char* p, uint8_t is_rcvd);

/**
 * Body of the listener thread, to be started by the application. Accepts connections on TCP port 4338
 * of every local address; each new one replaces the parser attached before. Ends when
 * vym_debug_stop_listener() is called or the thread receives SIGUSR2 (an attached parser then stays
 * attached); a handler for that signal is installed and remains. When the port is taken, that is
 * printed on standard error and the next parser awaited on a port of the kernel's choice. Returns at
 * once while another listener is running.
 *
 * @param param not used.
 * @return NULL.
 */
void* ext_parser_thread(void* param);

/**
 * Disconnects the external parser, stops listening and makes the listener thread end, which the
 * application may then join. A thread that was created but has not yet begun to listen is not affected.
 */
void vym_debug_stop_listener(void);

/**
 * Sends `len` bytes to the external parser. The parser is disconnected when not one byte could be sent:
 * when it is gone, when it has not read for two seconds, and also when `len` is 0 or negative.
 *
 * @return how many bytes were sent, perhaps fewer than `len`; 0 when no parser is attached; -1 when
 *         sending failed.
 */
int send_ext_parser(char* p, int len);

/** Prints `len` bytes on standard output, 16 a line: offset, hexadecimal digits, ASCII characters. */
void hex_dump(unsigned char* data, size_t len);

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/**
 * Appends text of the wire as vendor commands (`received` 0) or vendor events, in pieces of at most 255
 * bytes: what vym_debug_capture() appends of each, but with one write for up to 4 KB of text.
 */
void vym_debug_capture_text(const uint8_t* text, size_t len, int received);

/** Takes the lock of this module, which is not recursive: call nothing else of the module under it. */
void utils_lock(void);

/** Releases the lock of this module. */
void utils_unlock(void);

/** Converts a time of day to microseconds since 1 January of year 0, in two halves. */
void tv_to_vym_debug_ts(uint32_t* out_lo, uint32_t* out_hi, struct timeval* tv);

/** @return `value` with its most significant byte first in memory. */
uint32_t l_to_be(uint32_t value);

/**
 * Listens on TCP `port`, in place of an earlier listening socket, and waits for one client. One caller
 * at a time. Failures are printed on standard error: without `port` a port of the kernel's choice is
 * listened on, and a failure that leaves nothing to wait for is followed by a pause of a second.
 *
 * @return the client's socket (close-on-exec, owned by the caller); -1 when it cannot listen or accept,
 *         when ext_parser_detached() was called meanwhile, or when the listener thread is to end.
 */
int ext_parser_accept(int port);

/** Disconnects the parser and closes the listening socket; the listener thread then listens anew. */
void ext_parser_detached(void);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
