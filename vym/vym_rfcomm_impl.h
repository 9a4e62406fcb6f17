// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the serial module's API, its events and its lists share.
#ifndef VYM_RFCOMM_IMPL_H
#define VYM_RFCOMM_IMPL_H

#include "vym_rfcomm.h"
#include "vym_rfcomm_ipc.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread.
typedef struct tag_rfcomm_impl_callback {
    void (*rfcomm_connection_result_cb)(uint8_t status, bt_bdaddr_t address, uint8_t server_channel,
                                        int handle, uint16_t max_tx, uint16_t max_rx, uint8_t credit_in,
                                        uint8_t credit_out, uint8_t is_server);
    void (*rfcomm_disconnection_result_cb)(uint8_t status, int handle);
    void (*rfcomm_listen_result_cb)(uint8_t status, uint8_t server_channel);
    void (*rfcomm_fetch_channels_cb)(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel);
    void (*rfcomm_fetch_channels_end_cb)(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel);
} rfcomm_impl_callback_t;

rfcomm_impl_callback_t* vym_rfcomm_handlers(void);
void vym_rfcomm_set_delegate(rfcomm_callback_t* cbk);

// Commands of calls that wait for their result.
bt_status_t vym_rfcomm_connect_impl(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t port);
bt_status_t vym_rfcomm_listen_impl(bt_uuid_t uuid, uint8_t port, char* service_name);

// Results that have come and that no call has taken yet, one bit each.
enum { RFCOMM_EVENT_LISTEN = 1, RFCOMM_EVENT_CONNECT = 2 };

// Forgets the results.
void vym_rfcomm_clear_events(void);
// Waits for a result and takes it. With a limit of `timeout` seconds (0: none) any other result ends
// the wait as well. Returns 0 and the channel of the last listen result, or an error number.
int vym_rfcomm_wait_for_event(uint32_t event_flag, int timeout, uint8_t* listen_channel);

// The lists of connections and servers. Their lock is their own: never held while a thread waits, while
// anything is sent, or while the application is called.

// Ends what is waited on, forgets all servers, and sets all connections aside: no event and no data
// finds them any more, the application can still read what they hold.
void vym_rfcomm_forget_all(void);

// Adds a connection of its own with these values and a new buffer; without memory it does nothing.
// Signals the server of the channel, if `is_server`. Returns 0 when there is no such server, else 1.
int vym_rfcomm_add_connection(const vym_bluetooth_socket_t* values, uint8_t is_server);
// The first connection with this handle was disconnected.
void vym_rfcomm_mark_disconnected(int handle);
// A message from the data channel, for the last connection with its handle.
void on_rfcomm_ipc_message(rfcomm_msg_header_t* message);
// The first connection made as a client to this device and channel; NULL when there is none.
vym_bluetooth_socket_t* vym_rfcomm_find_client(bt_bdaddr_t address, uint8_t channel);

// Returns 0 without memory.
int vym_rfcomm_add_server(const vym_bluetooth_server_socket_t* values);
// Waits once for a connection to the first server with this UUID and channel. Returns 0 when there is
// no such server, else 1; `sock` is the connection, NULL when the wait was for nothing: the server is
// gone.
int vym_rfcomm_wait_for_client(const bt_uuid_t* uuid, uint8_t channel, vym_bluetooth_socket_t** sock);
// Forgets the first server with this channel.
void vym_rfcomm_remove_server(uint8_t channel);

// Reads from a connection: bytes, 1 to `count`; 0 when it has ended (it is freed then); -1 when `sock`
// is not a connection.
ssize_t vym_rfcomm_take_data(vym_bluetooth_socket_t* sock, void* buf, size_t count);
// Takes a credit for one message and tells how to address it. Returns 0 when the socket is not
// connected.
int vym_rfcomm_begin_write(vym_bluetooth_socket_t* sock, uint32_t* handle, uint8_t* credit);
int vym_rfcomm_is_connected(const vym_bluetooth_socket_t* sock);
// Returns 0 when the socket has ended. Otherwise `address` and `handle` (either may be NULL) are its
// own.
int vym_rfcomm_look_up(const vym_bluetooth_socket_t* sock, bt_bdaddr_t* address, int* handle);

// What the last vym_rfcomm_read() that failed had to say: BT_STATUS_PARM_INVALID or
// BT_STATUS_RMT_DEV_DOWN, 0 before. Only the library's own tests ask.
int vym_rfcomm_read_error(void);

} // extern "C"

#endif
