/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Callbacks that read everything: the attribute protocol, both roles. */
#ifndef VYM_TESTS_SUPPORT_LOW_ENERGY_CALLBACKS_H
#define VYM_TESTS_SUPPORT_LOW_ENERGY_CALLBACKS_H

#include "reading.h"

#include <vym/vym_gatt_client.h>
#include <vym/vym_gatt_server.h>

/* The sensor whose appearance is marked. */
static bt_bdaddr_t strap = {{0x74, 0x72, 0x61, 0x65, 0x48, 0xC6}};

static void gatt_client_scan_result(bt_bdaddr_t address, uint8_t rssi, uint16_t adv_dataLen,
                                    uint8_t* adv_data, uint8_t data_type) {
    note(BYTES(address) + BYTES(rssi) + BYTES(adv_dataLen) + sum_of(adv_data, adv_dataLen) +
         BYTES(data_type));
    mark(memcmp(address.address, strap.address, sizeof strap.address) == 0 ? STRAP_FOUND : 0);
}

static void gatt_client_scan_address_name(bt_bdaddr_t address, uint16_t nameLen, uint8_t* name) {
    note(BYTES(address) + BYTES(nameLen) + sum_of(name, nameLen));
}

static void gatt_client_notify(uint16_t conn_id, bt_bdaddr_t address, uint8_t srvcType,
                               uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                               bt_uuid_t charUuid, uint8_t isNotify, uint16_t dataLen, uint8_t* data) {
    note(BYTES(conn_id) + BYTES(address) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(isNotify) + BYTES(dataLen) +
         sum_of(data, dataLen));
    mark(STRAP_NOTIFIED);
}

static void gatt_client_connected(uint8_t client_if, uint16_t conn_id, uint8_t status,
                                  bt_bdaddr_t address) {
    learn(&named.client_if, client_if);
    learn(&named.conn_id, conn_id);
    note(BYTES(client_if) + BYTES(conn_id) + BYTES(status) + BYTES(address));
    mark(status == 0 ? STRAP_UP : 0);
}

static void gatt_client_disconnected(uint8_t client_if, uint16_t conn_id, uint8_t status,
                                     bt_bdaddr_t address) {
    note(BYTES(client_if) + BYTES(conn_id) + BYTES(status) + BYTES(address));
}

static void gatt_client_search_completed(uint16_t conn_id, uint8_t status) {
    note(BYTES(conn_id) + BYTES(status));
    mark(STRAP_SEARCHED);
}

static void gatt_client_search_result(uint16_t conn_id, uint8_t srvcType, uint16_t srvcInstId,
                                      bt_uuid_t srvcUuid) {
    note(BYTES(conn_id) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid));
}

static void gatt_client_get_characteristic(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                           uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                           bt_uuid_t charUuid, int charProp) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(charProp));
}

static void gatt_client_get_descriptor(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                       uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                       bt_uuid_t charUuid, uint16_t descrInstId, bt_uuid_t descrUuid) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(descrInstId) + BYTES(descrUuid));
}

static void gatt_client_get_included_service(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                             uint16_t srvcInstId, bt_uuid_t srvcUuid,
                                             uint8_t inclSrvcType, uint16_t inclSrvcInstId,
                                             bt_uuid_t inclSrvcUuid) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(inclSrvcType) + BYTES(inclSrvcInstId) + BYTES(inclSrvcUuid));
}

static void gatt_client_register_for_notifications(uint16_t conn_id, uint8_t status, uint8_t registered,
                                                   uint8_t srvcType, uint16_t srvcInstId,
                                                   bt_uuid_t srvcUuid, uint16_t charInstId,
                                                   bt_uuid_t charUuid) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(registered) + BYTES(srvcType) + BYTES(srvcInstId) +
         BYTES(srvcUuid) + BYTES(charInstId) + BYTES(charUuid));
}

static void gatt_client_read_characteristic(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                            uint16_t srvcInstId, bt_uuid_t srvcUuid,
                                            uint16_t charInstId, bt_uuid_t charUuid, uint8_t charType,
                                            uint16_t dataLen, uint8_t* data) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(charType) + BYTES(dataLen) +
         sum_of(data, dataLen));
}

static void gatt_client_write_characteristic(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                             uint16_t srvcInstId, bt_uuid_t srvcUuid,
                                             uint16_t charInstId, bt_uuid_t charUuid) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid));
}

static void gatt_client_execute_completed(uint16_t conn_id, uint8_t status) {
    note(BYTES(conn_id) + BYTES(status));
}

static void gatt_client_read_descriptor(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                        uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                        bt_uuid_t charUuid, uint16_t descrInstId, bt_uuid_t descrUuid,
                                        uint8_t charType, uint16_t dataLen, uint8_t* data) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(descrInstId) + BYTES(descrUuid) + BYTES(charType) +
         BYTES(dataLen) + sum_of(data, dataLen));
}

static void gatt_client_write_descriptor(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                         uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                         bt_uuid_t charUuid, uint16_t descrInstId,
                                         bt_uuid_t descrUuid) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(srvcType) + BYTES(srvcInstId) + BYTES(srvcUuid) +
         BYTES(charInstId) + BYTES(charUuid) + BYTES(descrInstId) + BYTES(descrUuid));
}

static void gatt_client_read_remote_rssi(uint8_t client_if, bt_bdaddr_t address, uint8_t rssi,
                                         uint8_t status) {
    note(BYTES(client_if) + BYTES(address) + BYTES(rssi) + BYTES(status));
}

static void gatt_client_receive_data_from_central(uint16_t conn_id, bt_bdaddr_t address,
                                                  uint16_t dataLen, uint8_t* data) {
    note(BYTES(conn_id) + BYTES(address) + BYTES(dataLen) + sum_of(data, dataLen));
}

static void gatt_client_configure_mtu(int conn_id, uint8_t status, int mtu) {
    note(BYTES(conn_id) + BYTES(status) + BYTES(mtu));
}

static void gatt_client_advertise_callback(uint8_t status, uint8_t client_if) {
    note(BYTES(status) + BYTES(client_if));
}

static gatt_client_callback_t gatt_client_callbacks = {
    .scan_result_cb = gatt_client_scan_result,
    .scan_address_name_cb = gatt_client_scan_address_name,
    .notify_cb = gatt_client_notify,
    .connected_cb = gatt_client_connected,
    .disconnected_cb = gatt_client_disconnected,
    .search_completed_cb = gatt_client_search_completed,
    .search_result_cb = gatt_client_search_result,
    .get_characteristic_cb = gatt_client_get_characteristic,
    .get_descriptor_cb = gatt_client_get_descriptor,
    .get_included_service_cb = gatt_client_get_included_service,
    .register_for_notifications_cb = gatt_client_register_for_notifications,
    .read_characteristic_cb = gatt_client_read_characteristic,
    .write_characteristic_cb = gatt_client_write_characteristic,
    .execute_completed_cb = gatt_client_execute_completed,
    .read_descriptor_cb = gatt_client_read_descriptor,
    .write_descriptor_cb = gatt_client_write_descriptor,
    .read_remote_rssi_cb = gatt_client_read_remote_rssi,
    .receive_data_from_central_cb = gatt_client_receive_data_from_central,
    .configure_mtu_cb = gatt_client_configure_mtu,
    .advertise_callback_cb = gatt_client_advertise_callback,
};

static void gatt_server_server_registered(uint8_t status, uint8_t server_if, bt_uuid_t uuid) {
    learn(&named.server_if, server_if);
    note(BYTES(status) + BYTES(server_if) + BYTES(uuid));
}

static void gatt_server_client_connected(bt_bdaddr_t address, uint8_t connected, uint16_t conn_id,
                                         uint8_t server_if) {
    learn(&named.tablet, conn_id);
    note(BYTES(address) + BYTES(connected) + BYTES(conn_id) + BYTES(server_if));
    mark(connected == 1 ? TABLET_UP : 0);
}

static void gatt_server_service_added(uint8_t status, uint8_t server_if, uint8_t svc_type,
                                      uint16_t svc_inst_id, bt_uuid_t srvc_uuid, uint16_t handle) {
    learn(&named.service, handle);
    note(BYTES(status) + BYTES(server_if) + BYTES(svc_type) + BYTES(svc_inst_id) + BYTES(srvc_uuid) +
         BYTES(handle));
}

static void gatt_server_included_service_added(uint8_t status, uint8_t server_if, uint16_t srvc_handle,
                                               uint16_t incl_srvc_handle) {
    note(BYTES(status) + BYTES(server_if) + BYTES(srvc_handle) + BYTES(incl_srvc_handle));
}

static void gatt_server_characteristic_added(uint8_t status, uint8_t server_if, bt_uuid_t char_uuid,
                                             uint16_t srvc_handle, uint16_t char_handle) {
    learn(&named.characteristic, char_handle);
    note(BYTES(status) + BYTES(server_if) + BYTES(char_uuid) + BYTES(srvc_handle) + BYTES(char_handle));
}

static void gatt_server_descriptor_added(uint8_t status, uint8_t server_if, bt_uuid_t descr_uuid,
                                         uint16_t srvc_handle, uint16_t descr_handle) {
    note(BYTES(status) + BYTES(server_if) + BYTES(descr_uuid) + BYTES(srvc_handle) +
         BYTES(descr_handle));
}

static void gatt_server_service_started(uint8_t status, uint8_t server_if, uint16_t srvc_handle) {
    note(BYTES(status) + BYTES(server_if) + BYTES(srvc_handle));
}

static void gatt_server_service_stopped(uint8_t status, uint8_t server_if, uint16_t srvc_handle) {
    note(BYTES(status) + BYTES(server_if) + BYTES(srvc_handle));
}

static void gatt_server_service_deleted(uint8_t status, uint8_t server_if, uint16_t srvc_handle) {
    note(BYTES(status) + BYTES(server_if) + BYTES(srvc_handle));
}

static void gatt_server_response_send_completed(uint8_t status, uint16_t handle) {
    note(BYTES(status) + BYTES(handle));
}

static void gatt_server_attribute_read(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                       uint16_t attr_handle, uint16_t offset, uint8_t is_long) {
    note(BYTES(address) + BYTES(conn_id) + BYTES(trans_id) + BYTES(attr_handle) + BYTES(offset) +
         BYTES(is_long));
    uint8_t value[] = {0, 72};
    vym_gatt_server_send_response((uint8_t)known(&named.server_if), conn_id, trans_id, 0, attr_handle,
                                  offset, 0, sizeof value, value);
    mark(TABLET_ASKED);
}

static void gatt_server_attribute_write(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                        uint16_t attr_handle, uint16_t offset, uint8_t need_rsp,
                                        uint8_t is_prep, uint16_t valueLen, uint8_t* value) {
    note(BYTES(address) + BYTES(conn_id) + BYTES(trans_id) + BYTES(attr_handle) + BYTES(offset) +
         BYTES(need_rsp) + BYTES(is_prep) + BYTES(valueLen) + sum_of(value, valueLen));
    vym_gatt_server_send_response((uint8_t)known(&named.server_if), conn_id, trans_id, 0, attr_handle,
                                  offset, 0, valueLen, value);
}

static void gatt_server_execute_write(bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                      uint8_t exec_write) {
    note(BYTES(address) + BYTES(conn_id) + BYTES(trans_id) + BYTES(exec_write));
    vym_gatt_server_send_response((uint8_t)known(&named.server_if), conn_id, trans_id, 0, 0, 0, 0, 0,
                                  NULL);
}

static void gatt_server_notification_sent(uint16_t conn_id, uint8_t status) {
    note(BYTES(conn_id) + BYTES(status));
}

static void gatt_server_mtu_changed(uint16_t conn_id, uint16_t mtu) {
    note(BYTES(conn_id) + BYTES(mtu));
}

static gatt_server_callback_t gatt_server_callbacks = {
    .server_registered_cb = gatt_server_server_registered,
    .client_connected_cb = gatt_server_client_connected,
    .service_added_cb = gatt_server_service_added,
    .included_service_added_cb = gatt_server_included_service_added,
    .characteristic_added_cb = gatt_server_characteristic_added,
    .descriptor_added_cb = gatt_server_descriptor_added,
    .service_started_cb = gatt_server_service_started,
    .service_stopped_cb = gatt_server_service_stopped,
    .service_deleted_cb = gatt_server_service_deleted,
    .response_send_completed_cb = gatt_server_response_send_completed,
    .attribute_read_cb = gatt_server_attribute_read,
    .attribute_write_cb = gatt_server_attribute_write,
    .execute_write_cb = gatt_server_execute_write,
    .notification_sent_cb = gatt_server_notification_sent,
    .mtu_changed_cb = gatt_server_mtu_changed,
};

static void client_registered(uint8_t client_if, bt_uuid_t uuid) {
    learn(&named.client_if, client_if);
    note(BYTES(client_if) + BYTES(uuid));
}

#endif
