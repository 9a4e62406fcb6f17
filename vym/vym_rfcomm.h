/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_rfcomm.h
 * Serial channels (RFCOMM): sockets to remote devices, as a client and as a server.
 *
 * Connecting, listening and accepting are calls that wait for the server; data arrives over a
 * descriptor of its own and is kept for each socket until it is read. The hand-over of that descriptor
 * is an adapter event, so vym_bluetooth_init() must have been called.
 *
 * @par Threads
 * Any thread may call, but for the calls that wait: vym_rfcomm_connect(), vym_rfcomm_listen(),
 * vym_rfcomm_accept() and vym_rfcomm_read() must not be called from a callback, because what they wait
 * for is read by the very thread that calls back.
 *
 * @par Life of a socket
 * A socket belongs to the library. It ends when vym_rfcomm_read() answers -1 for want of a connection,
 * and in no other way; vym_rfcomm_close() only asks for the disconnection that the read then sees. So
 * one thread should read each socket, up to that -1. Threads that are inside a call on the socket at
 * that moment get -1 too. The pointer must not be used after that: a later connection may get the same
 * one.
 */
#ifndef VYM_RFCOMM_H
#define VYM_RFCOMM_H

#include "bluetooth.h"
#include "ring_buffer.h"

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A connected socket. The fields are for information: `connected` and `outgoing_credit` are changed by
 * other threads while the application looks, the others stay as they are.
 */
typedef struct vym_bluetooth_socket {
    /** 0, as the connection was made. */
    uint8_t status;
    /** The remote device. */
    bt_bdaddr_t address;
    /** The RFCOMM server channel, 1 to 30. */
    uint8_t server_handle;
    /** Sent along with each message; it stays as the connection result gave it. */
    uint8_t incoming_credit;
    /** What the remote device has granted, less the messages sent, modulo 256. It may run out: writing
     * does not wait for it. */
    uint8_t outgoing_credit;
    /** The longest frame that is received, in bytes (maximum frame size, RFCOMM with TS 07.10). */
    uint16_t incoming_mfs;
    /** The longest frame that is sent. */
    uint16_t outgoing_mfs;
    /** The server's number for the connection. */
    int handle;
    /** 1; 0 once the remote device or this one has disconnected. */
    uint8_t connected;
    /** What was received and not read yet; owned by the library. */
    ring_buffer_t* buffer;
} vym_bluetooth_socket_t;

/** A server socket, which vym_rfcomm_listen() makes and vym_rfcomm_server_close() frees. */
typedef struct vym_bluetooth_server_socket {
    /** 0. */
    uint8_t status;
    /** The service that is offered. */
    bt_uuid_t uuid;
    /** The RFCOMM server channel that the server chose. */
    uint8_t server_channel;
    /** Ended by a NUL, cut to 63 bytes. */
    char service_name[64];
} vym_bluetooth_server_socket_t;

/** The application's callbacks. They run on the receive thread; NULL members are skipped. */
typedef struct tag_rfcomm_callback {
    /** Answer to vym_rfcomm_fetch_channels(), once for each channel found. */
    void (*rfcomm_fetch_channels_cb)(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel);
    /** The last one has been reported; the arguments are as the server gives them. */
    void (*rfcomm_fetch_channels_end_cb)(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel);
} rfcomm_callback_t;

/**
 * Starts the serial module. Call it after vym_sdk_init_ex() and vym_bluetooth_init(). Connections and
 * servers of before are forgotten: see vym_rfcomm_done().
 *
 * @param cbk owned by the application, must live until vym_rfcomm_done() returns. NULL: discovered
 *            channels are dropped.
 */
void vym_rfcomm_init(rfcomm_callback_t* cbk);

/**
 * Stops the serial module; no callback runs and no data arrives after it returns. Threads that wait in
 * vym_rfcomm_accept() and vym_rfcomm_read() return with NULL and -1; one that waits in
 * vym_rfcomm_connect() goes on waiting. Sockets are not freed: what they have received can be read,
 * then a read answers -1. Server sockets are still to be closed. The data descriptor is closed when the
 * server sends on it or closes it. Must not be called from a callback.
 */
void vym_rfcomm_done(void);

/**
 * Connects to a serial service. Waits without limit for a result, and any result will do: that of
 * another connection, a failed one, or one that came before and that nobody awaited.
 *
 * @param address the remote device.
 * @param uuid    the service; sent uu[15] first.
 * @param port    the server channel.
 * @return the first connection to this device and channel, which may be an earlier one that has ended
 * and has not been read to its end. NULL when there is none: the connection failed, or it was made on
 *         another channel than `port` (so with 0 it cannot be found), or the command could not be
 * built.
 */
vym_bluetooth_socket_t* vym_rfcomm_connect(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t port);

/**
 * Asks the server to end a connection. vym_rfcomm_close() does it for a socket.
 *
 * @param handle the connection's, as in its socket.
 * @return BT_STATUS_SUCCESS when the command was written (or dropped because the library is not
 *         connected), BT_STATUS_NOMEM when it could not be built.
 */
bt_status_t vym_rfcomm_disconnect(int handle);

/**
 * Offers a serial service. Waits for the result, five seconds at most. A connection result that arrives
 * in that time ends the wait as well; the channel is then that of the listen result before, 0 at first.
 *
 * @param uuid         the service, see vym_rfcomm_connect().
 * @param port         the server channel wanted, 0 for any; the server chooses.
 * @param service_name for the service record, without CR and LF; NULL counts as "".
 * @return the server socket, to be released with vym_rfcomm_server_close(), whatever the result's
 * status says. NULL when none came in time (the server may still have opened the channel), when the
 * name has a CR or LF in it, or without memory. When memory is short the socket may come without
 *         anything to accept on.
 */
vym_bluetooth_server_socket_t* vym_rfcomm_listen(bt_uuid_t uuid, uint8_t port, char* service_name);

/**
 * Waits for a connection to a server socket, without limit.
 *
 * @return the first connection to the server's channel, which is an earlier one for as long as that has
 *         not been read to its end. NULL for a NULL `server` and when the server was closed while it
 * had not accepted anything yet. A call that waits when a server which has accepted is closed waits for
 * ever (until vym_rfcomm_done()).
 */
vym_bluetooth_socket_t* vym_rfcomm_accept(vym_bluetooth_server_socket_t* server);

/**
 * Reads from a socket. Waits until there is something.
 *
 * When the connection ends the library itself appends the 11 bytes "rfcomm_quit" to what was received:
 * unread data comes with them at its end (unless the buffer, 128000 bytes, was full), and the next read
 * answers -1.
 *
 * @param sock  as connect or accept returned it.
 * @param buf   room for `count` bytes; on -1 its content is undefined.
 * @param count more than 0.
 * @return the number of bytes, 1 to `count`. -1 when an argument is NULL or 0, and when the connection
 *         has ended: the socket is gone then.
 */
ssize_t vym_rfcomm_read(vym_bluetooth_socket_t* sock, void* buf, size_t count);

/**
 * Writes to a socket: one message, in one piece. Blocks while the data channel is full. Writes of
 * several threads do not mix. It neither looks at nor waits for the remote device's credit.
 *
 * @param sock  as connect or accept returned it.
 * @param count 1 to 65535. More is sent all the same, but a message's length has 16 bits, so that the
 *              server loses step.
 * @return `count`; -1 when an argument is NULL or 0, the socket is not connected or was disconnected
 *         meanwhile, the data channel is missing or broken, or memory is short.
 */
ssize_t vym_rfcomm_write(vym_bluetooth_socket_t* sock, const void* buf, size_t count);

/**
 * Asks the server to end a socket's connection. The socket stays valid until a read has seen the end.
 *
 * @return BT_STATUS_SUCCESS; BT_STATUS_PARM_INVALID for NULL and for a socket that has ended.
 */
bt_status_t vym_rfcomm_close(vym_bluetooth_socket_t* sock);

/**
 * Ends a service and frees its server socket. A thread that waits for the first connection in
 * vym_rfcomm_accept() returns NULL.
 *
 * @return BT_STATUS_SUCCESS; BT_STATUS_PARM_INVALID for NULL.
 */
bt_status_t vym_rfcomm_server_close(vym_bluetooth_server_socket_t* sock);

/**
 * Asks the server to end a service. vym_rfcomm_server_close() does it for a server socket.
 *
 * @return see vym_rfcomm_disconnect().
 */
bt_status_t vym_rfcomm_server_disconnect(uint8_t channel);

/** @return the remote device's address, all zero for NULL and for a socket that has ended. */
bt_bdaddr_t vym_rfcomm_get_address(vym_bluetooth_socket_t* socket);

/**
 * Asks for the server channels that a device offers for a service; answered by the callbacks.
 *
 * @param uuid the service, see vym_rfcomm_connect(); the callbacks give it uu[0] first.
 * @return see vym_rfcomm_disconnect().
 */
bt_status_t vym_rfcomm_fetch_channels(bt_bdaddr_t address, bt_uuid_t uuid);

#ifdef __cplusplus
}
#endif

#endif
