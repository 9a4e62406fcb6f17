/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_gatt_client.h
 * The GATT client: finding, connecting and using Low Energy peripherals; scanning and advertising.
 *
 * @par The usual way
 * vym_gatt_client_connect() registers a client with the server and connects; `connected_cb` brings the
 * connection's number. vym_gatt_client_search_service() then reports the services one by one in
 * `search_result_cb` and their end in `search_completed_cb`; characteristics and descriptors are asked
 * for by the names that the answers bring. Every disconnection ends with the library unregistering the
 * client, so that each connection begins with a new registration.
 *
 * @par Names of attributes
 * The server tells equal UUIDs apart by instance numbers: a service is its type (gatt_service_type_t),
 * instance and UUID, a characteristic or descriptor its instance and UUID. UUIDs have 128 bits, also
 * where a parameter is called uuid16. Commands write `uu[15]` first, in events `uu[0]` comes first;
 * what an event brought can be given to a command as it is. GATT_UUID_FROM_16() makes one of an
 * assigned number.
 *
 * @par Results
 * Except for two that wait and say so, every call writes one command and returns; what comes of it
 * arrives in the callbacks, on the receive thread (see vym_sdk.h). Functions return BT_STATUS_SUCCESS
 * when the command was written (or dropped because the library is not connected) and BT_STATUS_NOMEM,
 * with nothing sent, when it could not be built: without memory, or when a block has more than 65535
 * bytes once the bytes 00, 0A, 0D and DC are written as two. Values are not checked: the server decides
 * what to do with them. Any thread may call. Blocks stay the caller's and are not used after the call;
 * a NULL block is empty, whatever its length.
 */
#ifndef VYM_GATT_CLIENT_H
#define VYM_GATT_CLIENT_H

#include "bluetooth.h"
#include "gatt_defines.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Told of every client that the server registers: its id and the UUID that it was registered with.
 * Runs on the receive thread. */
typedef void (*server_register_client_cbk_hlp)(uint8_t client_if, bt_uuid_t uuid);

/** Parameter type of vym_gatt_client_register(), which never calls it. */
typedef void (*client_register_cbk)(uint8_t client_if, bt_uuid_t uuid);

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. A member may be
 * changed after init; it is looked up for each event. Blocks are valid until the callback returns and
 * NULL when they are empty. `status` is as the server numbers it, 0 being success; `conn_id` is the
 * connection's number, `client_if` the client's.
 */
typedef struct tag_gatt_client_callback {
    /** An advertisement. `rssi` is a signed byte in dBm; `adv_data` holds the AD structures (Core
     * Specification Supplement, Part A); `data_type` says what kind of packet it was. */
    void (*scan_result_cb)(bt_bdaddr_t address, uint8_t rssi, uint16_t adv_dataLen, uint8_t* adv_data,
                           uint8_t data_type);
    /** The name of a device that was scanned; it has no NUL. */
    void (*scan_address_name_cb)(bt_bdaddr_t address, uint16_t nameLen, uint8_t* name);
    /** A characteristic's new value. `isNotify`: 1 notification, 0 indication. */
    void (*notify_cb)(uint16_t conn_id, bt_bdaddr_t address, uint8_t srvcType, uint16_t srvcInstId,
                      bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid, uint8_t isNotify,
                      uint16_t dataLen, uint8_t* data);
    /** The connection is there, or could not be made. `status`: GATT status, 0 is success. */
    void (*connected_cb)(uint8_t client_if, uint16_t conn_id, uint8_t status, bt_bdaddr_t address);
    /** The connection is gone. When the callback has returned, the library unregisters the client. */
    void (*disconnected_cb)(uint8_t client_if, uint16_t conn_id, uint8_t status, bt_bdaddr_t address);
    /** All services have been reported. */
    void (*search_completed_cb)(uint16_t conn_id, uint8_t status);
    /** One service. */
    void (*search_result_cb)(uint16_t conn_id, uint8_t srvcType, uint16_t srvcInstId,
                             bt_uuid_t srvcUuid);
    /** Answer to vym_gatt_client_get_characteristic(). `charProp`: gatt_char_prop_t. */
    void (*get_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                  uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                  bt_uuid_t charUuid, int charProp);
    /** Answer to vym_gatt_client_get_descriptor(). */
    void (*get_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                              bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                              uint16_t descrInstId, bt_uuid_t descrUuid);
    /** Answer to vym_gatt_client_get_included_service(). */
    void (*get_included_service_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                    uint16_t srvcInstId, bt_uuid_t srvcUuid, uint8_t inclSrvcType,
                                    uint16_t inclSrvcInstId, bt_uuid_t inclSrvcUuid);
    /** Answer to vym_gatt_client_register_for_notifications(). `registered`: 1 on, 0 off. */
    void (*register_for_notifications_cb)(uint16_t conn_id, uint8_t status, uint8_t registered,
                                          uint8_t srvcType, uint16_t srvcInstId, bt_uuid_t srvcUuid,
                                          uint16_t charInstId, bt_uuid_t charUuid);
    /** Answer to vym_gatt_client_read_characteristic(). `charType`: the server's kind of value. */
    void (*read_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                   uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                   bt_uuid_t charUuid, uint8_t charType, uint16_t dataLen,
                                   uint8_t* data);
    /** Answer to vym_gatt_client_write_characteristic(). */
    void (*write_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                    uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                    bt_uuid_t charUuid);
    /** Answer to vym_gatt_client_execute_write(). */
    void (*execute_completed_cb)(uint16_t conn_id, uint8_t status);
    /** Answer to vym_gatt_client_read_descriptor(). `charType`: the server's kind of value. */
    void (*read_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                               bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                               uint16_t descrInstId, bt_uuid_t descrUuid, uint8_t charType,
                               uint16_t dataLen, uint8_t* data);
    /** Answer to vym_gatt_client_write_descriptor(). */
    void (*write_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                                bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                                uint16_t descrInstId, bt_uuid_t descrUuid);
    /** Answer to vym_gatt_client_read_remote_rssi(). `rssi` is a signed byte in dBm. */
    void (*read_remote_rssi_cb)(uint8_t client_if, bt_bdaddr_t address, uint8_t rssi, uint8_t status);
    /** Bytes from a central outside any attribute. */
    void (*receive_data_from_central_cb)(uint16_t conn_id, bt_bdaddr_t address, uint16_t dataLen,
                                         uint8_t* data);
    /** Answer to vym_gatt_client_configure_mtu(). `mtu`: bytes of an attribute packet, what was agreed
     * on. Values above 0x7FFFFFFF arrive as that. */
    void (*configure_mtu_cb)(int conn_id, uint8_t status, int mtu);
    /** Advertising was switched. The status comes first here. */
    void (*advertise_callback_cb)(uint8_t status, uint8_t client_if);
} gatt_client_callback_t;

/**
 * Starts the GATT client. Call it after vym_sdk_init_ex(). Registrations that nobody waited for are
 * forgotten; the callback of vym_gatt_client_register_client_for_server() stays.
 *
 * @param cbk owned by the application, must live until vym_gatt_client_done() returns. NULL: events are
 * dropped; registrations are waited for and disconnections unregister their clients all the same.
 */
void vym_gatt_client_init(gatt_client_callback_t* cbk);

/**
 * Stops the GATT client; no callback runs after it returns. Must not be called from a callback. Sends
 * nothing. A thread that waits in vym_gatt_client_register() or vym_gatt_client_connect() goes on
 * waiting, until the module is started again and a registration arrives.
 */
void vym_gatt_client_done(void);

/**
 * Registers a client on behalf of a GATT server. Does not wait.
 *
 * @param uuid names the client to the server.
 * @param cb   called for every client that is registered from now on, other modules' included, whatever
 * the status. Replaces the one before; NULL removes it.
 */
bt_status_t vym_gatt_client_register_client_for_server(bt_uuid_t uuid,
                                                       server_register_client_cbk_hlp cb);

/**
 * Removes the callback of vym_gatt_client_register_client_for_server() and unregisters the client. A
 * call of the callback that is in progress on the receive thread may still end after this returns.
 */
bt_status_t vym_gatt_client_unregister_client_for_server(uint8_t client_if);

/**
 * Registers a client and waits, without limit, until the server reports a registration; successful or
 * not, and of whichever client. A report that came earlier and that nobody has waited for ends the wait
 * at once; one report releases one caller. Prints a line of 48 '#' when it came. Must not be called
 * from a callback: the report would have to be read by the very thread that waits. Without a connection
 * it waits for ever; vym_sdk_done() does not end it.
 *
 * @param uuid16 names the client to the server; 128 bits.
 * @param cb     not used.
 * @return BT_STATUS_SUCCESS, also when there was no memory and nothing was sent.
 */
bt_status_t vym_gatt_client_register(bt_uuid_t uuid16, client_register_cbk cb);

/** Unregisters a client. */
bt_status_t vym_gatt_client_unregister(uint8_t client_if);

/**
 * Registers a client under a UUID of the library's own, waits as vym_gatt_client_register() does, and
 * connects with the id that was reported last; `connected_cb` tells it. Two threads that connect at the
 * same time may each get the other's id.
 *
 * @param address   the peripheral.
 * @param is_direct 1 connects now, 0 whenever the peripheral is seen.
 * @param transport gatt_transport_t.
 * @return BT_STATUS_SUCCESS, also when there was no memory for a command.
 */
bt_status_t vym_gatt_client_connect(bt_bdaddr_t address, uint8_t is_direct, uint8_t transport);

/** Connects a client that is registered already. Does not wait. */
bt_status_t vym_gatt_client_connect_ex(uint8_t client_if, bt_bdaddr_t address, uint8_t is_direct,
                                       uint8_t transport);

/** Ends a connection, or an attempt to connect (`conn_id` 0); answered by `disconnected_cb`. */
bt_status_t vym_gatt_client_disconnect(uint8_t client_if, bt_bdaddr_t address, uint16_t conn_id);

/** @param enable 1 makes this device connectable for centrals, 0 ends that. */
bt_status_t vym_gatt_client_listen(uint8_t client_if, uint8_t enable);

/** The same with the interval between advertisements, in units of 0.625 ms (Core Specification, Vol 4,
 * Part E, 7.8.5). */
bt_status_t vym_gatt_client_listen_ex(uint8_t client_if, uint8_t enable, uint16_t min_interval,
                                      uint16_t max_interval);

/** Forgets what is cached of the peripheral's services. */
bt_status_t vym_gatt_client_refresh(uint8_t client_if, bt_bdaddr_t address);

/**
 * Searches the peripheral's services; answered by `search_result_cb` for each and
 * `search_completed_cb`.
 *
 * @param search_all 1 for all, 0 for those of `uuid16`.
 * @param uuid16     a 16-bit service UUID (Assigned Numbers), here really of 16 bits.
 */
bt_status_t vym_gatt_client_search_service(uint16_t conn_id, uint8_t search_all, uint16_t uuid16);

/** Asks for an included service; answered by `get_included_service_cb`. */
bt_status_t vym_gatt_client_get_included_service(uint16_t conn_id, uint8_t service_type,
                                                 uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                 uint8_t incl_service_type,
                                                 uint16_t incl_service_id_inst_id,
                                                 bt_uuid_t incl_uuid16);

/** Asks for a characteristic of a service; answered by `get_characteristic_cb`. */
bt_status_t vym_gatt_client_get_characteristic(uint16_t conn_id, uint8_t service_type,
                                               uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                               uint16_t char_id_inst_id, bt_uuid_t char_uuid16);

/** Asks for a descriptor of a characteristic; answered by `get_descriptor_cb`. */
bt_status_t vym_gatt_client_get_descriptor(uint16_t conn_id, uint8_t service_type,
                                           uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                           uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                           uint16_t descr_id_inst_id, bt_uuid_t desc_uuid16);

/** Answered by `read_characteristic_cb`. @param authReq gatt_auth_req_t. */
bt_status_t vym_gatt_client_read_characteristic(uint16_t conn_id, uint8_t service_type,
                                                uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                                uint8_t authReq);

/**
 * Answered by `write_characteristic_cb`.
 *
 * @param write_type gatt_write_type_t. @param auth_req gatt_auth_req_t.
 * @param value      `val_len` bytes.
 */
bt_status_t vym_gatt_client_write_characteristic(uint16_t conn_id, uint8_t service_type,
                                                 uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                 uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                                 uint8_t write_type, uint8_t auth_req, uint16_t val_len,
                                                 uint8_t* value);

/** Answered by `read_descriptor_cb`. @param authReq gatt_auth_req_t. */
bt_status_t vym_gatt_client_read_descriptor(uint16_t conn_id, uint8_t service_type,
                                            uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                            uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                            uint16_t descr_id_inst_id, bt_uuid_t descr_uuid16,
                                            uint8_t authReq);

/** Answered by `write_descriptor_cb`; the parameters are those of a characteristic. Notifications need
 * a gatt_cccd_t in the descriptor GATT_UUID16_CLIENT_CHAR_CONFIG. */
bt_status_t vym_gatt_client_write_descriptor(uint16_t conn_id, uint8_t service_type,
                                             uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                             uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                             uint16_t descr_id_inst_id, bt_uuid_t descr_uuid16,
                                             uint8_t write_type, uint8_t auth_req, uint16_t len,
                                             uint8_t* value);

/** Ends a series of prepared writes; answered by `execute_completed_cb`. @param execute 1 writes them,
 * 0 drops them. */
bt_status_t vym_gatt_client_execute_write(uint16_t conn_id, uint8_t execute);

/** Has `notify_cb` called for a characteristic (`enable` 1) or no longer (0). */
bt_status_t vym_gatt_client_register_for_notifications(
    uint8_t client_if, bt_bdaddr_t address, uint8_t service_type, uint16_t service_id_inst_id,
    bt_uuid_t service_uuid16, uint16_t char_id_inst_id, bt_uuid_t char_uuid16, uint8_t enable);

/**
 * Asks for other parameters of the connection (Core Specification, Vol 3, Part A, 4.20).
 *
 * @param minInterval in units of 1.25 ms, 6 to 3200. @param maxInterval likewise.
 * @param latency     connection events that the peripheral may skip, 0 to 499.
 * @param timeout     supervision time-out in units of 10 ms, 10 to 3200.
 */
bt_status_t vym_gatt_connection_parameter_update(uint8_t client_if, bt_bdaddr_t address,
                                                 uint16_t minInterval, uint16_t maxInterval,
                                                 uint16_t latency, uint16_t timeout);

/** Answered by `read_remote_rssi_cb`. */
bt_status_t vym_gatt_client_read_remote_rssi(uint8_t client_if, bt_bdaddr_t address);

/** Asks for longer attribute packets; answered by `configure_mtu_cb`. @param mtu in bytes, 23 to 517
 * (Core Specification, Vol 3, Part F, 3.2.8 and 3.2.9). */
bt_status_t vym_gatt_client_configure_mtu(uint16_t conn_id, uint16_t mtu);

/** @param start 1 starts a scan, answered by `scan_result_cb` and `scan_address_name_cb` until 0 stops
 * it. */
bt_status_t vym_gatt_client_scan(uint8_t start);

/**
 * Sets what a client advertises.
 *
 * @param client_if         the client.
 * @param set_scan_rsp      1: the scan response, 0: the advertisement itself.
 * @param incl_name         1 adds the device's name.
 * @param incl_txpower      1 adds the transmit power.
 * @param appearance        Assigned Numbers, "Appearance Values"; 0 for none.
 * @param manufacturer_data `manufacturer_dataLen` bytes: company identifier, low byte first, and data.
 * @param service_data      `service_dataLen` bytes.
 * @param service_uuid      `service_uuidLen` bytes: UUIDs, one after the other.
 */
bt_status_t vym_gatt_client_set_adv_data(uint8_t client_if, uint8_t set_scan_rsp, uint8_t incl_name,
                                         uint8_t incl_txpower, uint16_t appearance,
                                         uint16_t manufacturer_dataLen, uint8_t* manufacturer_data,
                                         uint16_t service_dataLen, uint8_t* service_data,
                                         uint16_t service_uuidLen, uint8_t* service_uuid);

/**
 * Sets what a server advertises; as vym_gatt_client_set_adv_data(), and with the interval that it
 * prefers for connections.
 *
 * @param server_if                  the server.
 * @param minSlaveConnectionInterval in units of 1.25 ms. @param maxSlaveConnectionInterval likewise.
 */
bt_status_t vym_gatt_set_adv_data(uint8_t server_if, uint8_t setScanRsp, uint8_t inclName,
                                  uint8_t inclTxPower, uint16_t minSlaveConnectionInterval,
                                  uint16_t maxSlaveConnectionInterval, uint16_t appearance,
                                  uint16_t manufacturerDataLen, uint8_t* manufacturerData,
                                  uint16_t serviceDataLen, uint8_t* serviceData,
                                  uint16_t serviceUuidLen, uint8_t* serviceUuid);

/** Sets what a server advertises, byte by byte. @param adv_data `data_len` bytes of AD structures (Core
 * Specification Supplement, Part A). */
bt_status_t vym_gatt_set_user_def_adv_data(uint8_t server_if, uint8_t setScanRsp, uint16_t data_len,
                                           uint8_t* adv_data);

/** Switches advertising on (1) or off (0); answered by `advertise_callback_cb`. */
bt_status_t vym_gatt_client_set_adv_command(uint8_t enable);

#ifdef __cplusplus
}
#endif

#endif
