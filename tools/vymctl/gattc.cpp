// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <vym/vym_gatt_client.h>

namespace vymctl {
namespace {

using callbacks = gatt_client_callback_t;

#define TYPE "service_type=primary|secondary"
#define SERVICE TYPE " service_instance=0..65535 service"
#define CHARACTERISTIC SERVICE " instance=0..65535 characteristic"
#define DESCRIPTOR CHARACTERISTIC " descriptor_instance=0..65535 descriptor"
#define AUTH "auth=none|encrypted|protected?none"
#define WRITING "write=command:1|request|prepare auth=none|encrypted|protected value"
#define TRANSPORT "transport=auto|br-edr|le?le"

void client_registered(uint8_t client_if, bt_uuid_t uuid) {
    publish(event_type("gattc.registered"), {client_if, to_text(uuid)});
}

std::vector<Verb> link_verbs() {
    return {
        verb(
            "init", "vym_gatt_client_init", [] { restart("gattc"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_gatt_client_done", [] { halt("gattc"); }, "", "stops the module")
            .alone(),
        verb("scan", VYMCTL_CALL(vym_gatt_client_scan), "state=off|on", "starts or stops a scan"),
        verb(
            "register", "vym_gatt_client_register",
            [](bt_uuid_t uuid) { return vym_gatt_client_register(uuid, nullptr); }, "uuid",
            "registers a client and waits for it"),
        verb(
            "register-for-server", "vym_gatt_client_register_client_for_server",
            [](bt_uuid_t uuid) {
                return vym_gatt_client_register_client_for_server(uuid, client_registered);
            },
            "uuid", "registers a client on behalf of a server", "gattc.registered"),
        verb("unregister-for-server", VYMCTL_CALL(vym_gatt_client_unregister_client_for_server),
             "client_if", "takes that back"),
        verb("unregister", VYMCTL_CALL(vym_gatt_client_unregister), "client_if",
             "unregisters a client"),
        verb("connect", VYMCTL_CALL(vym_gatt_client_connect), "address direct=no|yes?yes " TRANSPORT,
             "registers a client and connects", "gattc.connected"),
        verb("connect-as", VYMCTL_CALL(vym_gatt_client_connect_ex),
             "client_if address direct=no|yes?yes " TRANSPORT, "connects a client that is registered",
             "gattc.connected"),
        verb("disconnect", VYMCTL_CALL(vym_gatt_client_disconnect), "client_if address conn_id",
             "ends a connection, or an attempt to connect", "gattc.disconnected"),
        verb("refresh", VYMCTL_CALL(vym_gatt_client_refresh), "client_if address",
             "forgets what is cached of a device's services"),
        verb("rssi", VYMCTL_CALL(vym_gatt_client_read_remote_rssi), "client_if address",
             "shows the signal strength of a connection", "gattc.rssi"),
        verb("mtu", VYMCTL_CALL(vym_gatt_client_configure_mtu), "conn_id mtu=23..517",
             "asks for longer packets", "gattc.mtu"),
        verb("parameters", VYMCTL_CALL(vym_gatt_connection_parameter_update),
             "client_if address min_interval=6..3200 max_interval=6..3200 latency=0..499 "
             "timeout=10..3200",
             "asks for other parameters of a connection"),
    };
}

std::vector<Verb> attribute_verbs() {
    return {
        verb("search", VYMCTL_CALL(vym_gatt_client_search_service), "conn_id all=no|yes?yes uuid16?0",
             "searches the services of a device", "gattc.search-end"),
        verb("included", VYMCTL_CALL(vym_gatt_client_get_included_service),
             "conn_id " SERVICE " included_type=primary|secondary included_instance=0..65535 included",
             "asks for an included service", "gattc.included"),
        verb("characteristic", VYMCTL_CALL(vym_gatt_client_get_characteristic),
             "conn_id " CHARACTERISTIC, "asks for a characteristic", "gattc.characteristic"),
        verb("descriptor", VYMCTL_CALL(vym_gatt_client_get_descriptor), "conn_id " DESCRIPTOR,
             "asks for a descriptor", "gattc.descriptor"),
        verb("read", VYMCTL_CALL(vym_gatt_client_read_characteristic),
             "conn_id " CHARACTERISTIC " " AUTH, "reads a characteristic", "gattc.read"),
        verb("write", VYMCTL_CALL(vym_gatt_client_write_characteristic),
             "conn_id " CHARACTERISTIC " " WRITING, "writes a characteristic", "gattc.written"),
        verb("read-descriptor", VYMCTL_CALL(vym_gatt_client_read_descriptor),
             "conn_id " DESCRIPTOR " " AUTH, "reads a descriptor", "gattc.descriptor-read"),
        verb("write-descriptor", VYMCTL_CALL(vym_gatt_client_write_descriptor),
             "conn_id " DESCRIPTOR " " WRITING, "writes a descriptor", "gattc.descriptor-written"),
        verb("execute", VYMCTL_CALL(vym_gatt_client_execute_write), "conn_id execute=no|yes",
             "writes what was prepared, or drops it", "gattc.executed"),
        verb("notifications", VYMCTL_CALL(vym_gatt_client_register_for_notifications),
             "client_if address " CHARACTERISTIC " state=off|on",
             "has gattc.notification tell a characteristic's values", "gattc.notifications"),
    };
}

std::vector<Verb> advertising_verbs() {
#define CONTENT "scan_response=no|yes name=no|yes power=no|yes"
#define BLOCKS "appearance manufacturer_data? service_data? services?"
    return {
        verb("listen", VYMCTL_CALL(vym_gatt_client_listen), "client_if state=off|on",
             "makes this device connectable"),
        verb("listen-every", VYMCTL_CALL(vym_gatt_client_listen_ex),
             "client_if state=off|on min_interval max_interval",
             "the same with the interval between advertisements, in units of 0.625 ms"),
        verb("advertise", VYMCTL_CALL(vym_gatt_client_set_adv_data), "client_if " CONTENT " " BLOCKS,
             "sets what a client advertises"),
        verb("advertise-server", VYMCTL_CALL(vym_gatt_set_adv_data),
             "server_if " CONTENT " min_interval max_interval " BLOCKS,
             "sets what a server advertises"),
        verb("advertise-bytes", VYMCTL_CALL(vym_gatt_set_user_def_adv_data),
             "server_if scan_response=no|yes data", "sets what a server advertises, byte by byte"),
        verb("advertising", VYMCTL_CALL(vym_gatt_client_set_adv_command), "state=off|on",
             "switches advertising"),
    };
}

std::vector<Verb> verbs() {
    std::vector<Verb> all = link_verbs();
    for (std::vector<Verb> part : {attribute_verbs(), advertising_verbs()}) {
        std::move(part.begin(), part.end(), std::back_inserter(all));
    }
    return all;
}

std::vector<EventRow> connection_events() {
    return {
        own<uint8_t, bt_uuid_t>("gattc.registered", "client_if uuid"),
        on<&callbacks::scan_result_cb>("gattc.advertisement", "address rssi=signed data type"),
        on<&callbacks::scan_address_name_cb>("gattc.name", "address name=text"),
        on<&callbacks::connected_cb>("gattc.connected", "client_if conn_id " VYMCTL_CODE " address"),
        on<&callbacks::disconnected_cb>("gattc.disconnected", "client_if conn_id reason address"),
        on<&callbacks::read_remote_rssi_cb>("gattc.rssi", "client_if address rssi=signed " VYMCTL_CODE),
        on<&callbacks::receive_data_from_central_cb>("gattc.central-data", "conn_id address data"),
        on<&callbacks::configure_mtu_cb>("gattc.mtu", "conn_id " VYMCTL_CODE " mtu"),
        on<&callbacks::advertise_callback_cb>("gattc.advertising", VYMCTL_CODE " client_if"),
    };
}

std::vector<EventRow> attribute_events() {
#define ANSWER "conn_id " VYMCTL_CODE " "
    return {
        on<&callbacks::notify_cb>("gattc.notification", "conn_id address " CHARACTERISTIC
                                                        " kind=indication|notification value"),
        on<&callbacks::search_completed_cb>("gattc.search-end", "conn_id " VYMCTL_CODE),
        on<&callbacks::search_result_cb>("gattc.service", "conn_id " SERVICE),
        on<&callbacks::get_characteristic_cb>("gattc.characteristic",
                                              ANSWER CHARACTERISTIC " properties"),
        on<&callbacks::get_descriptor_cb>("gattc.descriptor", ANSWER DESCRIPTOR),
        on<&callbacks::get_included_service_cb>(
            "gattc.included",
            ANSWER SERVICE " included_type=primary|secondary included_instance included"),
        on<&callbacks::register_for_notifications_cb>("gattc.notifications",
                                                      ANSWER "state=off|on " CHARACTERISTIC),
        on<&callbacks::read_characteristic_cb>("gattc.read", ANSWER CHARACTERISTIC " type value"),
        on<&callbacks::write_characteristic_cb>("gattc.written", ANSWER CHARACTERISTIC),
        on<&callbacks::execute_completed_cb>("gattc.executed", "conn_id " VYMCTL_CODE),
        on<&callbacks::read_descriptor_cb>("gattc.descriptor-read", ANSWER DESCRIPTOR " type value"),
        on<&callbacks::write_descriptor_cb>("gattc.descriptor-written", ANSWER DESCRIPTOR),
    };
}

} // namespace

Profile gattc_profile() {
    std::vector<EventRow> events = connection_events();
    std::vector<EventRow> more = attribute_events();
    std::move(more.begin(), more.end(), std::back_inserter(events));
    return make_profile<callbacks, vym_gatt_client_init, vym_gatt_client_done>(
        "gattc", "GATT client, scanning and advertising", verbs(), std::move(events));
}

} // namespace vymctl
