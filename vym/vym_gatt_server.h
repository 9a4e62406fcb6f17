/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_gatt_server.h
 * The GATT server of Bluetooth Low Energy: this device's own services, which remote devices read, write
 * and subscribe to.
 *
 * Register the application, which brings a `server_if`. Add a service and wait for its handle, add its
 * characteristics and each one's descriptors behind it, start the service. From then on each request of
 * a remote device arrives in `attribute_read_cb` or `attribute_write_cb` and is answered with
 * vym_gatt_server_send_response(); values that changed are sent with notifications and indications.
 * Adding is asynchronous: the handle that the next call needs comes in the callback of the one before.
 *
 * Every call writes one command and returns; what comes of it arrives in the callbacks, on the receive
 * thread (see vym_sdk.h), which may call every command here. Functions return BT_STATUS_SUCCESS when
 * the command was written (or dropped because the library is not connected) and BT_STATUS_NOMEM, with
 * nothing sent, when it could not be built: no memory, or a value that grows beyond 65535 bytes when it
 * is escaped (each 00, 0A, 0D and DC counts twice). Values are not checked: the server decides what to
 * do with them. Any thread may call.
 *
 * @par Numbers
 * Interfaces, connections and handles are the server's numbers as its callbacks gave them. A status is
 * 0 for success; others are error codes of the Attribute Protocol (Core Specification, Vol 3, Part F,
 * 3.4.1.1) or the server's own.
 *
 * @par UUIDs
 * Commands write a UUID `uu[15]` first, events bring it `uu[0]` first: a UUID that the server echoes
 * digit by digit comes back in the opposite order.
 */
#ifndef VYM_GATT_SERVER_H
#define VYM_GATT_SERVER_H

#include "bluetooth.h"
#include "gatt_defines.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Who may read and write an attribute, one bit each: for vym_gatt_server_add_characteristic() and
 * vym_gatt_server_add_descriptor(). */
enum {
    PERMISSION_READ = 0x0001,           /**< anybody may read */
    PERMISSION_READ_ENCRYPTED = 0x0002, /**< read over an encrypted link */
    /** The link must be encrypted and the pairing protected against a man in the middle. */
    PERMISSION_READ_ENCRYPTED_MITM = 0x0004,
    PERMISSION_WRITE = 0x0010,                /**< anybody may write */
    PERMISSION_WRITE_ENCRYPTED = 0x0020,      /**< write over an encrypted link */
    PERMISSION_WRITE_ENCRYPTED_MITM = 0x0040, /**< as PERMISSION_READ_ENCRYPTED_MITM, to write */
    PERMISSION_WRITE_SIGNED = 0x0080,         /**< write with a signature */
    PERMISSION_WRITE_SIGNED_MITM = 0x0100,    /**< the signature's key is of a protected pairing */
};

/** Told of a client interface; see vym_gatt_server_register_client(). */
typedef void (*server_register_client_cbk)(uint8_t client_if, bt_uuid_t uuid);

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. A member may be
 * changed after init; it is looked up for each event. `server_if` names the registered application,
 * `address` the remote device.
 */
typedef struct tag_gatt_server_callback {
    /** Answer to vym_gatt_server_register_app(): `server_if` is what the other commands want. */
    void (*server_registered_cb)(uint8_t status, uint8_t server_if, bt_uuid_t uuid);
    /** A remote device connected (`connected` not 0) or disconnected (0). */
    void (*client_connected_cb)(bt_bdaddr_t address, uint8_t connected, uint16_t conn_id,
                                uint8_t server_if);
    /** Answer to vym_gatt_server_add_service(): `handle` is the service's. */
    void (*service_added_cb)(uint8_t status, uint8_t server_if, uint8_t svc_type, uint16_t svc_inst_id,
                             bt_uuid_t srvc_uuid, uint16_t handle);
    /** Answer to vym_gatt_server_add_included_service(). */
    void (*included_service_added_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle,
                                      uint16_t incl_srvc_handle);
    /** Answer to vym_gatt_server_add_characteristic(): `char_handle` is that of its value. */
    void (*characteristic_added_cb)(uint8_t status, uint8_t server_if, bt_uuid_t char_uuid,
                                    uint16_t srvc_handle, uint16_t char_handle);
    /** Answer to vym_gatt_server_add_descriptor(). */
    void (*descriptor_added_cb)(uint8_t status, uint8_t server_if, bt_uuid_t descr_uuid,
                                uint16_t srvc_handle, uint16_t descr_handle);
    /** Answer to vym_gatt_server_start_service(). */
    void (*service_started_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    /** Answer to vym_gatt_server_stop_service(). */
    void (*service_stopped_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    /** Answer to vym_gatt_server_delete_service(). */
    void (*service_deleted_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    /** A response has gone out; `handle` is the attribute's. */
    void (*response_send_completed_cb)(uint8_t status, uint16_t handle);
    /** A remote device reads an attribute from `offset` (in bytes) on and waits for
     * vym_gatt_server_send_response() with this `conn_id` and `trans_id`. `is_long`: not 0 when it
     * reads on in a long value. */
    void (*attribute_read_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                              uint16_t attr_handle, uint16_t offset, uint8_t is_long);
    /**
     * A remote device writes `valueLen` bytes at `offset` (in bytes). With `need_rsp` not 0 it waits
     * for vym_gatt_server_send_response(). With `is_prep` not 0 the write counts only from
     * `execute_write_cb` on. `value` is valid until the callback returns; NULL when it is empty.
     */
    void (*attribute_write_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                               uint16_t attr_handle, uint16_t offset, uint8_t need_rsp, uint8_t is_prep,
                               uint16_t valueLen, uint8_t* value);
    /** The prepared writes are to take place (`exec_write` 1) or to be forgotten (0). It waits for
     * vym_gatt_server_send_response(). */
    void (*execute_write_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                             uint8_t exec_write);
    /** A notification has gone out, or an indication has been confirmed. */
    void (*notification_sent_cb)(uint16_t conn_id, uint8_t status);
    /** The connection's longest packet is now `mtu` bytes; a notification carries 3 less. */
    void (*mtu_changed_cb)(uint16_t conn_id, uint16_t mtu);
} gatt_server_callback_t;

/**
 * Starts the GATT server module. Call it after vym_sdk_init_ex().
 *
 * @param cbk owned by the application, must live until vym_gatt_server_done() returns. NULL: events are
 * dropped.
 */
void vym_gatt_server_init(gatt_server_callback_t* cbk);

/** Stops the GATT server module; no callback runs after it returns. Must not be called from a callback.
 * Harmless without init. Services and applications stay as they are at the server. */
void vym_gatt_server_done(void);

/**
 * Asks for a GATT client interface, for a server that acts as a client as well. The answer comes
 * through the GATT client module, so vym_gatt_client_init() must have been called; without it `cb` is
 * never called. There is one such callback: a second registration takes the place of the first.
 *
 * @param uuid16 names the application.
 * @param cb     called on the receive thread for every client interface that is registered from now on,
 *               by whomever, until vym_gatt_server_unregister_client(). NULL: nobody is told.
 */
bt_status_t vym_gatt_server_register_client(bt_uuid_t uuid16, server_register_client_cbk cb);

/** Forgets the callback of vym_gatt_server_register_client() and then gives the interface back, so that
 * nothing that comes later reaches the callback. */
bt_status_t vym_gatt_server_unregister_client(uint8_t client_if);

/** Registers the application; answered by `server_registered_cb`. @param uuid16 names it. */
bt_status_t vym_gatt_server_register_app(bt_uuid_t uuid16);

/** Takes the registration back; answered by no event. */
bt_status_t vym_gatt_server_unregister_app(uint8_t server_if);

/**
 * Connects to a remote device; answered by `client_connected_cb`.
 *
 * @param is_direct 1: at once; 0: whenever the device shows up.
 */
bt_status_t vym_gatt_server_connect(uint8_t server_if, bt_bdaddr_t address, uint8_t is_direct);

/** Ends a connection; answered by `client_connected_cb`. */
bt_status_t vym_gatt_server_disconnect(uint8_t server_if, bt_bdaddr_t address, uint16_t conn_id);

/**
 * Adds a service; answered by `service_added_cb`.
 *
 * @param service_type       primary or secondary, as the server numbers them.
 * @param service_id_inst_id tells several services with one UUID apart.
 * @param num_handles        how many handles to set aside: 1 for the service, 2 for each
 *                           characteristic, 1 for each descriptor and each included service.
 */
bt_status_t vym_gatt_server_add_service(uint8_t server_if, uint8_t service_type,
                                        uint16_t service_id_inst_id, bt_uuid_t service_uuid,
                                        uint8_t num_handles);

/** Includes a service in another; answered by `included_service_added_cb`. */
bt_status_t vym_gatt_server_add_included_service(uint8_t server_if, uint16_t svc_handle,
                                                 uint16_t included_svc_handle);

/**
 * Adds a characteristic to a service; answered by `characteristic_added_cb`.
 *
 * @param properties  bits of the Characteristic Properties (Core Specification, Vol 3, Part G,
 *                    3.3.1.1): 0x02 read, 0x08 write, 0x10 notify, 0x20 indicate, ...
 * @param permissions PERMISSION_ bits, sent as they are.
 */
bt_status_t vym_gatt_server_add_characteristic(uint8_t server_if, uint16_t svc_handle,
                                               bt_uuid_t char_uuid, uint8_t properties,
                                               uint16_t permissions);

/**
 * Adds a descriptor to the characteristic added last; answered by `descriptor_added_cb`.
 *
 * @param permissions PERMISSION_ bits. Unlike a characteristic's they are simplified: 0x0002 is sent
 *                    for any of the bits that allow reading, 0x0008 for any that allow writing; what is
 *                    asked of the link (encryption, protection, signature) is lost.
 */
bt_status_t vym_gatt_server_add_descriptor(uint8_t server_if, uint16_t svc_handle, bt_uuid_t desc_uuid,
                                           uint16_t permissions);

/**
 * Makes a service visible to remote devices; answered by `service_started_cb`.
 *
 * @param transport the kinds of link on which it is offered, as the server numbers them.
 */
bt_status_t vym_gatt_server_start_service(uint8_t server_if, uint16_t svc_handle, uint8_t transport);

/** Hides a service; answered by `service_stopped_cb`. */
bt_status_t vym_gatt_server_stop_service(uint8_t server_if, uint16_t svc_handle);

/** Removes a service; answered by `service_deleted_cb`. */
bt_status_t vym_gatt_server_delete_service(uint8_t server_if, uint16_t svc_handle);

/**
 * Sends a value that the remote device must confirm; answered by `notification_sent_cb`.
 *
 * @param confirm 1: the remote device confirms it; 0: it is sent as a notification.
 * @param valLen  bytes of the value.
 * @param val     the value; NULL is an empty one, whatever `valLen` says.
 */
bt_status_t vym_gatt_server_send_indication(uint8_t server_if, uint16_t attr_handle, uint16_t conn_id,
                                            uint8_t confirm, uint16_t valLen, uint8_t* val);

/** Sends a value that nobody confirms; answered by `notification_sent_cb`. The value is given as to
 * vym_gatt_server_send_indication(). */
bt_status_t vym_gatt_server_send_notification(uint8_t server_if, uint16_t attr_handle, uint16_t conn_id,
                                              uint16_t valLen, uint8_t* val);

/**
 * Answers a request; `response_send_completed_cb` tells when the answer has gone out. Note the order:
 * here the connection comes first, in notifications the attribute's handle.
 *
 * @param conn_id  of the request.
 * @param trans_id of the request.
 * @param status   0, or why the request is refused: an error code of the Attribute Protocol.
 * @param handle   the attribute.
 * @param off      where in the attribute's value `val` begins, in bytes: the request's offset.
 * @param auth_req what the link must fulfil, as the server numbers it; 0 for nothing.
 * @param valLen   bytes of the value.
 * @param val      the value read, or the one written; NULL is an empty one, whatever `valLen` says.
 */
bt_status_t vym_gatt_server_send_response(uint8_t server_if, uint16_t conn_id, uint16_t trans_id,
                                          uint8_t status, uint16_t handle, uint16_t off,
                                          uint8_t auth_req, uint16_t valLen, uint8_t* val);

#ifdef __cplusplus
}
#endif

#endif
