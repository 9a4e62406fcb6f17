// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The data channel of the serial module: a stream socket that the server hands over, on which both
// sides exchange messages, each for one connection.
#ifndef VYM_RFCOMM_IPC_H
#define VYM_RFCOMM_IPC_H

#include <cstddef>
#include <cstdint>

extern "C" {

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wc99-extensions"
#endif

// A message as it lies on the wire, without padding. The numbers are in the order of this machine; on
// the wire they go low byte first.
typedef struct __attribute__((packed)) tag_rfcomm_msg_header {
    uint32_t handle; // of the connection
    uint8_t credit;  // granted to the receiver
    uint16_t len;    // bytes of data that follow; 0: only the credit
    __extension__ uint8_t data[];
} rfcomm_msg_header_t;

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

// Takes a received message, valid until it returns. Runs on the channel's own thread, one message at a
// time. It must not call rfcomm_ipc_init_client() or rfcomm_ipc_done_client().
typedef void (*rfcomm_ipc_message_cbk)(rfcomm_msg_header_t* message);

// Waits for a hand-over; forgets the channel of an earlier init.
void rfcomm_ipc_init_client(rfcomm_ipc_message_cbk cbk);

// Ends the channel. Its thread and descriptor go when the next bytes, or the end, come from the server;
// `cbk` is not called any more once this has returned.
void rfcomm_ipc_done_client(void);

// Sends one message; zeroes when `buf` is NULL. Blocks while the channel is full. Returns the number of
// bytes of data sent, -1 without a channel, without memory, or when the channel broke.
int rfcomm_ipc_send_data_client(uint32_t handle, uint8_t credit, void* buf, size_t size);

} // extern "C"

#endif
