// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_gatt_client.h"

#include "vym_command.h"
#include "vym_gatt_client_event.h"
#include "vym_gatt_client_impl.h"
#include "vym_sdk.h"

#include <cstdio>

namespace {

using vym::block;
using vym::hex2;
using vym::hex2_or_more;
using vym::hex4;
using vym::hex8;
using vym::send_command;
using vym::tag;
using vym::uuid_reverse;

// Under which vym_gatt_client_connect() registers.
constexpr bt_uuid_t kConnectUuid = {
    {0x00, 0x00, 0x12, 0x34, 0x45, 0x56, 0x78, 0x00, 0x10, 0x11, 0x20, 0x21, 0x30, 0x31, 0x40, 0x41}};

// Printed without a line end, as it always was.
constexpr char kRegisteredLine[] = "################################################";

event_parser_t* s_gatt_client_event_parser;

// Returns false when there was no memory for the command: nobody would answer it.
bool register_and_wait(const bt_uuid_t& uuid, uint8_t* client_if) {
    if (vym_gatt_client_register_client(uuid) != BT_STATUS_SUCCESS) {
        return false;
    }
    *client_if = vym_gatt_client_wait_for_registration();
    fputs(kRegisteredLine, stdout);
    return true;
}

} // namespace

extern "C" {

void vym_gatt_client_init(gatt_client_callback_t* cbk) {
    vym_gatt_client_forget_registrations();
    vym_gatt_client_set_delegate(cbk);
    vym_profile_start(&s_gatt_client_event_parser,
                      create_gatt_client_event_parser(vym_gatt_client_handlers()),
                      destroy_gatt_client_event_parser);
}

void vym_gatt_client_done(void) {
    vym_profile_stop(&s_gatt_client_event_parser, destroy_gatt_client_event_parser);
}

bt_status_t vym_gatt_client_register_client_for_server(bt_uuid_t uuid,
                                                       server_register_client_cbk_hlp cb) {
    vym_gatt_client_set_server_hook(cb);
    return vym_gatt_client_register_client(uuid);
}

bt_status_t vym_gatt_client_unregister_client_for_server(uint8_t client_if) {
    // First, so that what the server answers finds it gone.
    vym_gatt_client_set_server_hook(nullptr);
    return vym_gatt_client_unregister_client(client_if);
}

bt_status_t vym_gatt_client_register(bt_uuid_t uuid16, client_register_cbk cb) {
    (void)cb;
    uint8_t client_if = 0;
    register_and_wait(uuid16, &client_if);
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_gatt_client_unregister(uint8_t client_if) {
    return vym_gatt_client_unregister_client(client_if);
}

bt_status_t vym_gatt_client_connect(bt_bdaddr_t address, uint8_t is_direct, uint8_t transport) {
    uint8_t client_if = 0;
    if (register_and_wait(kConnectUuid, &client_if)) {
        vym_gatt_client_connect_impl(client_if, address, is_direct, transport);
    }
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_gatt_client_connect_ex(uint8_t client_if, bt_bdaddr_t address, uint8_t is_direct,
                                       uint8_t transport) {
    return vym_gatt_client_connect_impl(client_if, address, is_direct, transport);
}

bt_status_t vym_gatt_client_disconnect(uint8_t client_if, bt_bdaddr_t address, uint16_t conn_id) {
    return send_command<tag("KF")>(hex2(client_if), address, hex4(conn_id));
}

bt_status_t vym_gatt_client_listen(uint8_t client_if, uint8_t enable) {
    return send_command<tag("KD")>(hex2(client_if), hex2(enable));
}

bt_status_t vym_gatt_client_listen_ex(uint8_t client_if, uint8_t enable, uint16_t min_interval,
                                      uint16_t max_interval) {
    return send_command<tag("KZA")>(hex2(client_if), hex2(enable), hex4(min_interval),
                                    hex4(max_interval));
}

bt_status_t vym_gatt_client_refresh(uint8_t client_if, bt_bdaddr_t address) {
    return send_command<tag("KG")>(hex2(client_if), address);
}

bt_status_t vym_gatt_client_search_service(uint16_t conn_id, uint8_t search_all, uint16_t uuid16) {
    return send_command<tag("KH")>(hex4(conn_id), hex2(search_all), hex4(uuid16));
}

bt_status_t vym_gatt_client_get_included_service(uint16_t conn_id, uint8_t service_type,
                                                 uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                 uint8_t incl_service_type,
                                                 uint16_t incl_service_id_inst_id,
                                                 bt_uuid_t incl_uuid16) {
    return send_command<tag("KI")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex2(incl_service_type),
                                   hex4(incl_service_id_inst_id), uuid_reverse(incl_uuid16));
}

bt_status_t vym_gatt_client_get_characteristic(uint16_t conn_id, uint8_t service_type,
                                               uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                               uint16_t char_id_inst_id, bt_uuid_t char_uuid16) {
    return send_command<tag("KJ")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex4(char_id_inst_id),
                                   uuid_reverse(char_uuid16));
}

bt_status_t vym_gatt_client_get_descriptor(uint16_t conn_id, uint8_t service_type,
                                           uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                           uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                           uint16_t descr_id_inst_id, bt_uuid_t desc_uuid16) {
    return send_command<tag("KK")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex4(char_id_inst_id),
                                   uuid_reverse(char_uuid16), hex4(descr_id_inst_id),
                                   uuid_reverse(desc_uuid16));
}

bt_status_t vym_gatt_client_read_characteristic(uint16_t conn_id, uint8_t service_type,
                                                uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                                uint8_t authReq) {
    return send_command<tag("KL")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex4(char_id_inst_id),
                                   uuid_reverse(char_uuid16), hex2(authReq));
}

bt_status_t vym_gatt_client_write_characteristic(uint16_t conn_id, uint8_t service_type,
                                                 uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                                 uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                                 uint8_t write_type, uint8_t auth_req, uint16_t val_len,
                                                 uint8_t* value) {
    return send_command<tag("KM")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex4(char_id_inst_id),
                                   uuid_reverse(char_uuid16), hex2(write_type), hex2(auth_req),
                                   block(value, val_len));
}

bt_status_t vym_gatt_client_read_descriptor(uint16_t conn_id, uint8_t service_type,
                                            uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                            uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                            uint16_t descr_id_inst_id, bt_uuid_t descr_uuid16,
                                            uint8_t authReq) {
    return send_command<tag("KN")>(hex4(conn_id), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid16), hex4(char_id_inst_id),
                                   uuid_reverse(char_uuid16), hex4(descr_id_inst_id),
                                   uuid_reverse(descr_uuid16), hex2(authReq));
}

bt_status_t vym_gatt_client_write_descriptor(uint16_t conn_id, uint8_t service_type,
                                             uint16_t service_id_inst_id, bt_uuid_t service_uuid16,
                                             uint16_t char_id_inst_id, bt_uuid_t char_uuid16,
                                             uint16_t descr_id_inst_id, bt_uuid_t descr_uuid16,
                                             uint8_t write_type, uint8_t auth_req, uint16_t len,
                                             uint8_t* value) {
    return send_command<tag("KO")>(
        hex4(conn_id), hex2(service_type), hex4(service_id_inst_id), uuid_reverse(service_uuid16),
        hex4(char_id_inst_id), uuid_reverse(char_uuid16), hex4(descr_id_inst_id),
        uuid_reverse(descr_uuid16), hex2(write_type), hex2(auth_req), block(value, len));
}

bt_status_t vym_gatt_client_execute_write(uint16_t conn_id, uint8_t execute) {
    return send_command<tag("KP")>(hex4(conn_id), hex2(execute));
}

bt_status_t vym_gatt_client_register_for_notifications(
    uint8_t client_if, bt_bdaddr_t address, uint8_t service_type, uint16_t service_id_inst_id,
    bt_uuid_t service_uuid16, uint16_t char_id_inst_id, bt_uuid_t char_uuid16, uint8_t enable) {
    return send_command<tag("KQ")>(hex2(client_if), address, hex2(service_type),
                                   hex4(service_id_inst_id), uuid_reverse(service_uuid16),
                                   hex4(char_id_inst_id), uuid_reverse(char_uuid16), hex2(enable));
}

bt_status_t vym_gatt_connection_parameter_update(uint8_t client_if, bt_bdaddr_t address,
                                                 uint16_t minInterval, uint16_t maxInterval,
                                                 uint16_t latency, uint16_t timeout) {
    return send_command<tag("KR")>(hex2(client_if), address, hex4(minInterval), hex4(maxInterval),
                                   hex4(latency), hex4(timeout));
}

bt_status_t vym_gatt_client_read_remote_rssi(uint8_t client_if, bt_bdaddr_t address) {
    return send_command<tag("KU")>(hex2(client_if), address);
}

bt_status_t vym_gatt_client_configure_mtu(uint16_t conn_id, uint16_t mtu) {
    return send_command<tag("KY")>(hex4(conn_id), hex4(mtu));
}

bt_status_t vym_gatt_client_register_client(bt_uuid_t uuid) {
    return send_command<tag("KA")>(uuid_reverse(uuid));
}

bt_status_t vym_gatt_client_unregister_client(uint8_t client_if) {
    return send_command<tag("KB")>(hex2(client_if));
}

bt_status_t vym_gatt_client_connect_impl(uint8_t client_if, bt_bdaddr_t address, uint8_t is_direct,
                                         uint8_t transport) {
    return send_command<tag("KE")>(hex2(client_if), address, hex2(is_direct), hex2(transport));
}

bt_status_t vym_gatt_client_dump(uint16_t conn_id) {
    return send_command<tag("KV")>(hex4(conn_id));
}

bt_status_t vym_gatt_cleanup(void) {
    return send_command<tag("KW")>();
}

bt_status_t vym_gatt_send_data(uint16_t len, uint8_t* data) {
    return send_command<tag("KSB")>(block(data, len));
}

bt_status_t vym_gatt_test(int command, long int uuid1_lsb, long int uuid1_msb, bt_bdaddr_t address,
                          int p1, int p2, int p3, int p4, int p5) {
    return send_command<tag("KT")>(hex8(command), hex8(uuid1_lsb), hex8(uuid1_msb), address, hex8(p1),
                                   hex8(p2), hex8(p3), hex8(p4), hex2_or_more(p5));
}

} // extern "C"
