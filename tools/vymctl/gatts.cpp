// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <vym/vym_gatt_server.h>

namespace vymctl {
namespace {

using callbacks = gatt_server_callback_t;

void client_registered(uint8_t client_if, bt_uuid_t uuid) {
    publish(event_type("gatts.client-registered"), {client_if, to_text(uuid)});
}

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_gatt_server_init", [] { restart("gatts"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_gatt_server_done", [] { halt("gatts"); }, "", "stops the module")
            .alone(),
        verb("register", VYMCTL_CALL(vym_gatt_server_register_app), "uuid", "registers an application",
             "gatts.registered"),
        verb("unregister", VYMCTL_CALL(vym_gatt_server_unregister_app), "server_if",
             "unregisters an application"),
        verb(
            "register-client", "vym_gatt_server_register_client",
            [](bt_uuid_t uuid) { return vym_gatt_server_register_client(uuid, client_registered); },
            "uuid", "asks for a client interface", "gatts.client-registered"),
        verb("unregister-client", VYMCTL_CALL(vym_gatt_server_unregister_client), "client_if",
             "gives a client interface back"),
        verb("connect", VYMCTL_CALL(vym_gatt_server_connect), "server_if address direct=no|yes?yes",
             "connects to a device", "gatts.connection state==connected"),
        verb("disconnect", VYMCTL_CALL(vym_gatt_server_disconnect), "server_if address conn_id",
             "ends a connection", "gatts.connection state==disconnected"),
        verb("add-service", VYMCTL_CALL(vym_gatt_server_add_service),
             "server_if type=primary|secondary instance service handles=1..255",
             "adds a service: 1 handle, 2 for each characteristic, 1 for each descriptor",
             "gatts.service"),
        verb("add-included", VYMCTL_CALL(vym_gatt_server_add_included_service),
             "server_if service_handle included_handle", "includes a service in another",
             "gatts.included"),
        verb("add-characteristic", VYMCTL_CALL(vym_gatt_server_add_characteristic),
             "server_if service_handle characteristic properties permissions",
             "adds a characteristic to a service", "gatts.characteristic"),
        verb("add-descriptor", VYMCTL_CALL(vym_gatt_server_add_descriptor),
             "server_if service_handle descriptor permissions",
             "adds a descriptor to the characteristic before", "gatts.descriptor"),
        verb("start", VYMCTL_CALL(vym_gatt_server_start_service),
             "server_if service_handle transport=auto|br-edr|le?le", "shows a service to others",
             "gatts.started"),
        verb("stop", VYMCTL_CALL(vym_gatt_server_stop_service), "server_if service_handle",
             "hides a service", "gatts.stopped"),
        verb("delete", VYMCTL_CALL(vym_gatt_server_delete_service), "server_if service_handle",
             "removes a service", "gatts.deleted"),
        verb("indicate", VYMCTL_CALL(vym_gatt_server_send_indication),
             "server_if handle conn_id confirm=no|yes value", "sends a value that is confirmed",
             "gatts.sent"),
        verb("notify", VYMCTL_CALL(vym_gatt_server_send_notification), "server_if handle conn_id value",
             "sends a value that nobody confirms", "gatts.sent"),
        verb("respond", VYMCTL_CALL(vym_gatt_server_send_response),
             "server_if conn_id transaction code=0..255 handle offset auth value", "answers a request",
             "gatts.responded"),
    };
}

std::vector<EventRow> events() {
#define ADDED VYMCTL_CODE " server_if "
#define REQUEST "address conn_id transaction "
    return {
        own<uint8_t, bt_uuid_t>("gatts.client-registered", "client_if uuid"),
        on<&callbacks::server_registered_cb>("gatts.registered", ADDED "uuid"),
        on<&callbacks::client_connected_cb>("gatts.connection",
                                            "address state=disconnected|connected conn_id server_if"),
        on<&callbacks::service_added_cb>("gatts.service",
                                         ADDED "type=primary|secondary instance service handle"),
        on<&callbacks::included_service_added_cb>("gatts.included",
                                                  ADDED "service_handle included_handle"),
        on<&callbacks::characteristic_added_cb>("gatts.characteristic",
                                                ADDED "characteristic service_handle handle"),
        on<&callbacks::descriptor_added_cb>("gatts.descriptor",
                                            ADDED "descriptor service_handle handle"),
        on<&callbacks::service_started_cb>("gatts.started", ADDED "service_handle"),
        on<&callbacks::service_stopped_cb>("gatts.stopped", ADDED "service_handle"),
        on<&callbacks::service_deleted_cb>("gatts.deleted", ADDED "service_handle"),
        on<&callbacks::response_send_completed_cb>("gatts.responded", VYMCTL_CODE " handle"),
        on<&callbacks::attribute_read_cb>("gatts.read-request", REQUEST "handle offset long=no|yes"),
        on<&callbacks::attribute_write_cb>("gatts.write-request", REQUEST
                                           "handle offset respond=no|yes prepared=no|yes value"),
        on<&callbacks::execute_write_cb>("gatts.execute-request", REQUEST "execute=no|yes"),
        on<&callbacks::notification_sent_cb>("gatts.sent", "conn_id " VYMCTL_CODE),
        on<&callbacks::mtu_changed_cb>("gatts.mtu", "conn_id mtu"),
    };
}

} // namespace

Profile gatts_profile() {
    return make_profile<callbacks, vym_gatt_server_init, vym_gatt_server_done>("gatts", "GATT server",
                                                                               verbs(), events());
}

} // namespace vymctl
