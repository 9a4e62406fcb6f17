// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the GATT server's API and its events share.
#ifndef VYM_GATT_SERVER_IMPL_H
#define VYM_GATT_SERVER_IMPL_H

#include "vym_gatt_server.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread. This is the
// application's table with one member more, so neither may ever be taken for the other.
typedef struct tag_gatt_server_impl_callback {
    void (*server_registered_cb)(uint8_t status, uint8_t server_if, bt_uuid_t uuid);
    void (*client_connected_cb)(bt_bdaddr_t address, uint8_t connected, uint16_t conn_id,
                                uint8_t server_if);
    void (*service_added_cb)(uint8_t status, uint8_t server_if, uint8_t svc_type, uint16_t svc_inst_id,
                             bt_uuid_t srvc_uuid, uint16_t handle);
    void (*included_service_added_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle,
                                      uint16_t incl_srvc_handle);
    void (*characteristic_added_cb)(uint8_t status, uint8_t server_if, bt_uuid_t char_uuid,
                                    uint16_t srvc_handle, uint16_t char_handle);
    void (*descriptor_added_cb)(uint8_t status, uint8_t server_if, bt_uuid_t descr_uuid,
                                uint16_t srvc_handle, uint16_t descr_handle);
    void (*service_started_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    void (*service_stopped_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    void (*service_deleted_cb)(uint8_t status, uint8_t server_if, uint16_t srvc_handle);
    void (*response_send_completed_cb)(uint8_t status, uint16_t handle);
    void (*attribute_read_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                              uint16_t attr_handle, uint16_t offset, uint8_t is_long);
    void (*attribute_write_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                               uint16_t attr_handle, uint16_t offset, uint8_t need_rsp, uint8_t is_prep,
                               uint16_t valueLen, uint8_t* value);
    void (*execute_write_cb)(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                             uint8_t exec_write);
    void (*notification_sent_cb)(uint16_t conn_id, uint8_t status);
    void (*server_congestion_cb)(uint16_t conn_id, uint8_t congested); // the application has none
    void (*mtu_changed_cb)(uint16_t conn_id, uint16_t mtu);
} gatt_server_impl_callback_t;

// What a descriptor's command says of its permissions: any kind of reading is one bit, any kind of
// writing another.
uint16_t convert_permissions(uint16_t permission);

} // extern "C"

#endif
