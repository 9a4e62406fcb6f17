// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_gatt_server.h"

#include "vym_command.h"
#include "vym_delegate.h"
#include "vym_gatt_client.h"
#include "vym_gatt_server_event.h"
#include "vym_gatt_server_impl.h"
#include "vym_sdk.h"

namespace {

using app = gatt_server_callback_t;
using vym::block;
using vym::hex2;
using vym::hex4;
using vym::pass_on;
using vym::send_command;
using vym::tag;
using vym::uuid_reverse;

constexpr uint16_t kAnyRead =
    PERMISSION_READ | PERMISSION_READ_ENCRYPTED | PERMISSION_READ_ENCRYPTED_MITM;
constexpr uint16_t kAnyWrite = PERMISSION_WRITE | PERMISSION_WRITE_ENCRYPTED |
                               PERMISSION_WRITE_ENCRYPTED_MITM | PERMISSION_WRITE_SIGNED |
                               PERMISSION_WRITE_SIGNED_MITM;
constexpr unsigned kReadable = 0x0002;
constexpr unsigned kWritable = 0x0008;

event_parser_t* s_gatt_server_event_parser;
std::atomic<gatt_server_callback_t*> s_delegate; // the application's table

// Congestion has no place in the application's table.
void on_server_congestion_cbk(uint16_t /*conn_id*/, uint8_t /*congested*/) {}

gatt_server_impl_callback_t s_handlers = {
    pass_on<s_delegate, &app::server_registered_cb>::handler,
    pass_on<s_delegate, &app::client_connected_cb>::handler,
    pass_on<s_delegate, &app::service_added_cb>::handler,
    pass_on<s_delegate, &app::included_service_added_cb>::handler,
    pass_on<s_delegate, &app::characteristic_added_cb>::handler,
    pass_on<s_delegate, &app::descriptor_added_cb>::handler,
    pass_on<s_delegate, &app::service_started_cb>::handler,
    pass_on<s_delegate, &app::service_stopped_cb>::handler,
    pass_on<s_delegate, &app::service_deleted_cb>::handler,
    pass_on<s_delegate, &app::response_send_completed_cb>::handler,
    pass_on<s_delegate, &app::attribute_read_cb>::handler,
    pass_on<s_delegate, &app::attribute_write_cb>::handler,
    pass_on<s_delegate, &app::execute_write_cb>::handler,
    pass_on<s_delegate, &app::notification_sent_cb>::handler,
    on_server_congestion_cbk,
    pass_on<s_delegate, &app::mtu_changed_cb>::handler,
};

} // namespace

extern "C" {

void vym_gatt_server_init(gatt_server_callback_t* cbk) {
    s_delegate = cbk;
    vym_profile_start(&s_gatt_server_event_parser, create_gatt_server_event_parser(&s_handlers),
                      destroy_gatt_server_event_parser);
}

void vym_gatt_server_done(void) {
    vym_profile_stop(&s_gatt_server_event_parser, destroy_gatt_server_event_parser);
    s_delegate = nullptr;
}

bt_status_t vym_gatt_server_register_client(bt_uuid_t uuid16, server_register_client_cbk cb) {
    return vym_gatt_client_register_client_for_server(uuid16, cb);
}

bt_status_t vym_gatt_server_unregister_client(uint8_t client_if) {
    return vym_gatt_client_unregister_client_for_server(client_if);
}

bt_status_t vym_gatt_server_register_app(bt_uuid_t uuid16) {
    return send_command<tag("JA")>(uuid_reverse(uuid16));
}

bt_status_t vym_gatt_server_unregister_app(uint8_t server_if) {
    return send_command<tag("JC")>(hex2(server_if));
}

bt_status_t vym_gatt_server_connect(uint8_t server_if, bt_bdaddr_t address, uint8_t is_direct) {
    return send_command<tag("JD")>(hex2(server_if), address, hex2(is_direct));
}

bt_status_t vym_gatt_server_disconnect(uint8_t server_if, bt_bdaddr_t address, uint16_t conn_id) {
    return send_command<tag("JE")>(hex2(server_if), address, hex4(conn_id));
}

bt_status_t vym_gatt_server_add_service(uint8_t server_if, uint8_t service_type,
                                        uint16_t service_id_inst_id, bt_uuid_t service_uuid,
                                        uint8_t num_handles) {
    return send_command<tag("JF")>(hex2(server_if), hex2(service_type), hex4(service_id_inst_id),
                                   uuid_reverse(service_uuid), hex2(num_handles));
}

bt_status_t vym_gatt_server_add_included_service(uint8_t server_if, uint16_t svc_handle,
                                                 uint16_t included_svc_handle) {
    return send_command<tag("JG")>(hex2(server_if), hex4(svc_handle), hex4(included_svc_handle));
}

// The permissions go as they are here and simplified with descriptors: servers expect just that.
bt_status_t vym_gatt_server_add_characteristic(uint8_t server_if, uint16_t svc_handle,
                                               bt_uuid_t char_uuid, uint8_t properties,
                                               uint16_t permissions) {
    return send_command<tag("JH")>(hex2(server_if), hex4(svc_handle), uuid_reverse(char_uuid),
                                   hex2(properties), hex4(permissions));
}

bt_status_t vym_gatt_server_add_descriptor(uint8_t server_if, uint16_t svc_handle, bt_uuid_t desc_uuid,
                                           uint16_t permissions) {
    return send_command<tag("JI")>(hex2(server_if), hex4(svc_handle), uuid_reverse(desc_uuid),
                                   hex4(convert_permissions(permissions)));
}

bt_status_t vym_gatt_server_start_service(uint8_t server_if, uint16_t svc_handle, uint8_t transport) {
    return send_command<tag("JJ")>(hex2(server_if), hex4(svc_handle), hex2(transport));
}

bt_status_t vym_gatt_server_stop_service(uint8_t server_if, uint16_t svc_handle) {
    return send_command<tag("JK")>(hex2(server_if), hex4(svc_handle));
}

bt_status_t vym_gatt_server_delete_service(uint8_t server_if, uint16_t svc_handle) {
    return send_command<tag("JL")>(hex2(server_if), hex4(svc_handle));
}

bt_status_t vym_gatt_server_send_indication(uint8_t server_if, uint16_t attr_handle, uint16_t conn_id,
                                            uint8_t confirm, uint16_t valLen, uint8_t* val) {
    return send_command<tag("JM")>(hex2(server_if), hex4(attr_handle), hex4(conn_id), hex2(confirm),
                                   block(val, valLen));
}

bt_status_t vym_gatt_server_send_notification(uint8_t server_if, uint16_t attr_handle, uint16_t conn_id,
                                              uint16_t valLen, uint8_t* val) {
    return send_command<tag("JN")>(hex2(server_if), hex4(attr_handle), hex4(conn_id),
                                   block(val, valLen));
}

bt_status_t vym_gatt_server_send_response(uint8_t server_if, uint16_t conn_id, uint16_t trans_id,
                                          uint8_t status, uint16_t handle, uint16_t off,
                                          uint8_t auth_req, uint16_t valLen, uint8_t* val) {
    return send_command<tag("JO")>(hex2(server_if), hex4(conn_id), hex4(trans_id), hex2(status),
                                   hex4(handle), hex4(off), hex2(auth_req), block(val, valLen));
}

uint16_t convert_permissions(uint16_t permission) {
    const unsigned reading = (permission & kAnyRead) != 0 ? kReadable : 0;
    const unsigned writing = (permission & kAnyWrite) != 0 ? kWritable : 0;
    return static_cast<uint16_t>(reading | writing);
}

} // extern "C"
