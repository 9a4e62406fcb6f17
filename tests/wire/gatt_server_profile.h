// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server for tests: a table whose members record what they were given.
#ifndef VYM_TESTS_WIRE_GATT_SERVER_PROFILE_H
#define VYM_TESTS_WIRE_GATT_SERVER_PROFILE_H

#include "support/record_text.h"
#include "vym_gatt_server.h"
#include "wire/profile_conformance.h"

namespace wire {

namespace gatt_server {

constexpr bt_bdaddr_t kRemote = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};
constexpr bt_uuid_t kUuid = {
    {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

template <class... Values>
void Say(const char* name, const Values&... values) {
    ProfileRecord().Add(support::CallText(name, values...));
}

inline gatt_server_callback_t RecordingTable() {
    gatt_server_callback_t table = {};
    table.server_registered_cb = [](uint8_t status, uint8_t server_if, bt_uuid_t uuid) {
        Say("server_registered", status, server_if, uuid);
    };
    table.client_connected_cb = [](bt_bdaddr_t address, uint8_t connected, uint16_t conn_id,
                                   uint8_t server_if) {
        Say("client_connected", address, connected, conn_id, server_if);
    };
    table.service_added_cb = [](uint8_t status, uint8_t server_if, uint8_t type, uint16_t instance,
                                bt_uuid_t uuid, uint16_t handle) {
        Say("service_added", status, server_if, type, instance, uuid, handle);
    };
    table.included_service_added_cb = [](uint8_t status, uint8_t server_if, uint16_t service,
                                         uint16_t included) {
        Say("included_service_added", status, server_if, service, included);
    };
    table.characteristic_added_cb = [](uint8_t status, uint8_t server_if, bt_uuid_t uuid,
                                       uint16_t service, uint16_t characteristic) {
        Say("characteristic_added", status, server_if, uuid, service, characteristic);
    };
    table.descriptor_added_cb = [](uint8_t status, uint8_t server_if, bt_uuid_t uuid, uint16_t service,
                                   uint16_t descriptor) {
        Say("descriptor_added", status, server_if, uuid, service, descriptor);
    };
    table.service_started_cb = [](uint8_t status, uint8_t server_if, uint16_t service) {
        Say("service_started", status, server_if, service);
    };
    table.service_stopped_cb = [](uint8_t status, uint8_t server_if, uint16_t service) {
        Say("service_stopped", status, server_if, service);
    };
    table.service_deleted_cb = [](uint8_t status, uint8_t server_if, uint16_t service) {
        Say("service_deleted", status, server_if, service);
    };
    table.response_send_completed_cb = [](uint8_t status, uint16_t handle) {
        Say("response_send_completed", status, handle);
    };
    table.attribute_read_cb = [](bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                 uint16_t handle, uint16_t offset, uint8_t is_long) {
        Say("attribute_read", address, conn_id, trans_id, handle, offset, is_long);
    };
    table.attribute_write_cb = [](bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                  uint16_t handle, uint16_t offset, uint8_t need_rsp, uint8_t is_prep,
                                  uint16_t length, uint8_t* value) {
        Say("attribute_write", address, conn_id, trans_id, handle, offset, need_rsp, is_prep, length,
            support::BytesOf{value, length});
    };
    table.execute_write_cb = [](bt_bdaddr_t address, uint16_t conn_id, uint16_t trans_id,
                                uint8_t exec_write) {
        Say("execute_write", address, conn_id, trans_id, exec_write);
    };
    table.notification_sent_cb = [](uint16_t conn_id, uint8_t status) {
        Say("notification_sent", conn_id, status);
    };
    table.mtu_changed_cb = [](uint16_t conn_id, uint16_t mtu) { Say("mtu_changed", conn_id, mtu); };
    return table;
}

} // namespace gatt_server

struct GattServerProfile {
    static void Init(Table kind) {
        static gatt_server_callback_t whole = gatt_server::RecordingTable();
        static gatt_server_callback_t empty = {};
        vym_gatt_server_init(kind == Table::kNone ? nullptr
                                                  : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_gatt_server_done(); }
    static std::vector<std::string> Unknown() {
        return {"JQ12345678", "JZ01", "J", "jp12345678", "Jp12345678", " JP12345678"};
    }
    static std::vector<ProfileEvent> Events() {
        const std::string uuid = "00112233445566778899AABBCCDDEEFF";
        return {
            {"JA05A7" + uuid, 36, "server_registered(5, 167, " + uuid + ")"},
            {"JBA1B2C3D4E5F601123407", 20, "client_connected(A1B2C3D4E5F6, 1, 4660, 7)"},
            {"JBa1b2c3d4e5f600abcdfe", 20, "client_connected(A1B2C3D4E5F6, 0, 43981, 254)"},
            {"JC0102030405" + uuid + "0607", 46, "service_added(1, 2, 3, 1029, " + uuid + ", 1543)"},
            {"JD010203040506", 12, "included_service_added(1, 2, 772, 1286)"},
            {"JE0102" + uuid + "03040506", 44, "characteristic_added(1, 2, " + uuid + ", 772, 1286)"},
            {"JF0304" + uuid + "05060708", 44, "descriptor_added(3, 4, " + uuid + ", 1286, 1800)"},
            {"JG0102ABCD", 8, "service_started(1, 2, 43981)"},
            {"JH0304BCDE", 8, "service_stopped(3, 4, 48350)"},
            {"JI0506CDEF", 8, "service_deleted(5, 6, 52719)"},
            {"JJ051234", 6, "response_send_completed(5, 4660)"},
            {"JKA1B2C3D4E5F6010203040506070809", 30,
             "attribute_read(A1B2C3D4E5F6, 258, 772, 1286, 1800, 9)"},
            {"JLA1B2C3D4E5F60102030405060708090A0004\xDC\xDC\xDC\xDD", 40,
             "attribute_write(A1B2C3D4E5F6, 258, 772, 1286, 1800, 9, 10, 2, DC00)"},
            {"JLA1B2C3D4E5F60102030405060708090A0000", 36,
             "attribute_write(A1B2C3D4E5F6, 258, 772, 1286, 1800, 9, 10, 0, null)"},
            {"JMA1B2C3D4E5F60102030405", 22, "execute_write(A1B2C3D4E5F6, 258, 772, 5)"},
            {"JN123405", 6, "notification_sent(4660, 5)"},
            {"JO123401", 6, ""},
            {"JP12345678", 8, "mtu_changed(4660, 22136)"},
        };
    }
};

} // namespace wire

#endif
