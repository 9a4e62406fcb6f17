// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <array>
#include <unistd.h>
#include <vym/vym_bluetooth.h>

namespace vymctl {
namespace {

using callbacks = bluetooth_callback_t;

constexpr const char* kScanModes = "mode=none|connectable|discoverable";
#define TRANSPORT "transport=br-edr:1|le"
#define PROPERTY                                                                                       \
    "property=name:1|address|uuids|class|scan-mode:7|bonded|discoverable-timeout|priority:32|"         \
    "manufacturer"

void take_transport(uint8_t id, int fd) {
    publish(event_type("adapter.transport"),
            {id == IPC_ID_AUDIO ? "audio" : "serial", fd > 0 ? "taken" : "missing"});
    if (fd > 0) {
        close(fd);
    }
}

Outcome version() {
    char* text = vym_bluetooth_get_version();
    // A status in the shape of a pointer.
    const bool no_memory = reinterpret_cast<uintptr_t>(text) == BT_STATUS_NOMEM;
    return no_memory ? status_outcome(BT_STATUS_NOMEM) : Outcome{"", text == nullptr ? "" : text};
}

Outcome scan_mode() {
    const Field field = read_field(kScanModes, {Kind::Number, 0, 255});
    return {"", field.name_of(vym_bluetooth_get_scan_mode())};
}

Outcome bonded() {
    constexpr int kRoom = 64;
    std::array<bt_remote_device_t, kRoom> devices{};
    int size = kRoom;
    const bt_status_t status = vym_bluetooth_get_bonded_devices(devices.data(), &size);
    Outcome outcome = status_outcome(status);
    outcome.value = Json::array();
    for (const bt_remote_device_t& device : devices) {
        const std::string address = to_text(device.address);
        // Room that was not used is still empty.
        if (address != "00:00:00:00:00:00") {
            outcome.value.push_back({{"address", address},
                                     {"name", reinterpret_cast<const char*>(device.name.name)},
                                     {"class", device.class_of_device}});
        }
    }
    return outcome;
}

Outcome uuids(bt_bdaddr_t address) {
    const bt_128_service_t services = vym_bluetooth_get_devices_uuids(address);
    Json list = Json::array();
    for (size_t i = 0; i < services.num_service_128bit && i < 5; ++i) {
        bt_uuid_t uuid{};
        std::copy_n(services.services_128bit + i * sizeof uuid.uu, sizeof uuid.uu, uuid.uu);
        list.push_back(to_text(uuid));
    }
    return {"", list};
}

std::vector<Verb> identity_verbs() {
    return {
        verb(
            "init", "vym_bluetooth_init", [] { restart("adapter"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_bluetooth_done", [] { halt("adapter"); }, "", "stops the module")
            .alone(),
        verb("preset-address", VYMCTL_CALL(vym_bluetooth_preset_addr), "address",
             "sets the address the adapter will have when it is switched on"),
        verb("enable", VYMCTL_CALL(vym_bluetooth_enable), "", "switches the adapter on",
             "adapter.state state==on"),
        verb("enable-with", VYMCTL_CALL(vym_bluetooth_enable_ex), "firmware=keep|load",
             "switches it on, with its firmware loaded or not", "adapter.state state==on"),
        verb("disable", VYMCTL_CALL(vym_bluetooth_disable), "", "switches the adapter off",
             "adapter.state state==off"),
        verb(
            "state", "vym_bluetooth_get_state",
            [] {
                return Outcome{"", vym_bluetooth_get_state() == BT_STATE_ON ? "on" : "off"};
            },
            "", "shows the power state that was heard of last")
            .alone(),
        verb("version", "vym_bluetooth_get_version", &version, "", "shows the server's version"),
        verb(
            "name", "vym_bluetooth_get_name",
            [] {
                return Outcome{"", reinterpret_cast<const char*>(vym_bluetooth_get_name()->name)};
            },
            "", "shows the adapter's name"),
        verb(
            "address", "vym_bluetooth_get_address", [] { return *vym_bluetooth_get_address(); }, "",
            "shows the adapter's address"),
        verb("read-address", VYMCTL_CALL(vym_bluetooth_read_address), "",
             "reads the controller's address", "adapter.address"),
        verb("scan-mode", "vym_bluetooth_get_scan_mode", &scan_mode, "", "shows who may find it"),
        verb("class", VYMCTL_CALL(vym_bluetooth_get_class), "", "shows its class of device"),
        verb("set-name", VYMCTL_CALL(vym_bluetooth_set_name), "name", "names the adapter"),
        verb("set-scan-mode", VYMCTL_CALL(vym_bluetooth_set_scan_mode), kScanModes,
             "says who may find it and connect to it"),
        verb("discoverable-timeout", VYMCTL_CALL(vym_bluetooth_set_discoverable_timeout),
             "seconds=0..65535", "ends being found after that long; 0 for never"),
        verb("discovery-interval", VYMCTL_CALL(vym_bluetooth_set_discovery_internval),
             "interval=1..255", "sets how long one discovery takes, in units of 1.28 s"),
        verb("properties", VYMCTL_CALL(vym_bluetooth_get_adapter_properties), "",
             "refreshes what the other verbs show"),
        verb("add-uuid", VYMCTL_CALL(vym_bluetooth_add_AA_uuid), "uuid",
             "adds a service to what a discovery finds"),
        verb("discover", VYMCTL_CALL(vym_bluetooth_start_discovery), "", "looks for devices",
             "adapter.discovery state==stopped"),
        verb("stop-discovery", VYMCTL_CALL(vym_bluetooth_stop_discovery), "",
             "ends looking for devices"),
    };
}

std::vector<Verb> bonding_verbs() {
    constexpr const char* kBonded = "adapter.bond state==bonded !state==none";
    return {
        verb("bond", VYMCTL_CALL(vym_bluetooth_create_bond), "address", "pairs with a device", kBonded),
        verb("bond-with-data", VYMCTL_CALL(vym_bluetooth_create_bond_out_of_bond),
             "address " TRANSPORT " data", "pairs with a device whose out-of-band data is known",
             kBonded),
        verb("remove-bond", VYMCTL_CALL(vym_bluetooth_remove_bond), "address", "forgets a device",
             "adapter.bond state==none"),
        verb("cancel-bond", VYMCTL_CALL(vym_bluetooth_cancel_bond), "address", "ends a pairing"),
        verb("pin-reply", VYMCTL_CALL(vym_bluetooth_pin_reply), "address answer=no|yes pin=text?",
             "answers adapter.pin-request"),
        verb("pairing-reply", VYMCTL_CALL(vym_bluetooth_ssp_reply),
             "address variant=confirm|enter|consent|notify answer=no|yes passkey=0..999999?0",
             "answers adapter.pairing-request"),
        verb("connection-reply", VYMCTL_CALL(vym_bluetooth_connection_auth),
             "address profile answer=no|yes", "answers adapter.connection-request"),
        verb("bond-mode", VYMCTL_CALL(vym_bluetooth_set_bond_mode), "mode=0..255",
             "says whether devices may pair with the adapter"),
        verb("bonded", "vym_bluetooth_get_bonded_devices", &bonded, "", "lists the bonded devices"),
        verb("bond-room", VYMCTL_CALL(vym_bluetooth_get_number_of_bonded_devices), "",
             "shows how many bonded devices the server keeps at most"),
        verb("set-bond-room", VYMCTL_CALL(vym_bluetooth_set_number_of_bonded_devices), "number=0..255",
             "sets how many bonded devices the server keeps at most"),
        verb("oob", VYMCTL_CALL(vym_bluetooth_read_local_device_oob_data), "",
             "shows this adapter's out-of-band data", "adapter.oob"),
        verb("oob-both", VYMCTL_CALL(vym_bluetooth_read_local_device_oob_data_ex), "",
             "the same of P-192 and P-256", "adapter.oob-both"),
        verb("set-oob", VYMCTL_CALL(vym_bluetooth_set_remote_device_oob_data), "address c192 r192",
             "gives the server a remote device's out-of-band data"),
    };
}

std::vector<Verb> device_verbs() {
    return {
        verb("property", VYMCTL_CALL(vym_bluetooth_get_remote_device_propertie), "address " PROPERTY,
             "asks for one property of a device"),
        verb("set-property", VYMCTL_CALL(vym_bluetooth_set_remote_device_propertie),
             "address " PROPERTY " value", "sets one property of a device"),
        verb("device-properties", VYMCTL_CALL(vym_bluetooth_get_remote_device_properties), "address",
             "asks for all properties of a device"),
        verb("service-record", VYMCTL_CALL(vym_bluetooth_get_remote_service_record), "address uuid",
             "asks for the record of a device's service"),
        verb("services", VYMCTL_CALL(vym_bluetooth_get_remote_services), "address",
             "asks for the services of a device"),
        verb("priority", VYMCTL_CALL(vym_bluetooth_get_device_priority), "address",
             "shows the priority the server gives a device"),
        verb("manufacturer", VYMCTL_CALL(vym_bluetooth_get_manufacturer_code), "address",
             "shows the manufacturer of a device's controller"),
        verb("uuids", "vym_bluetooth_get_devices_uuids", &uuids, "address",
             "shows the 128-bit services of a device"),
        verb(
            "link", "vym_bluetooth_get_connection_state",
            [](bt_bdaddr_t address) { vym_bluetooth_get_connection_state(address); }, "address",
            "asks for the state of a link", "adapter.link"),
        verb("rssi", VYMCTL_CALL(vym_bluetooth_read_connected_device_rssi), "address",
             "shows the signal strength of a link", "adapter.rssi"),
        verb("cancel-connect", VYMCTL_CALL(vym_bluetooth_acl_cancel_connect), "address",
             "gives up connecting"),
        verb("suspend", VYMCTL_CALL(vym_bluetooth_os_suspend_action), "",
             "tells the server that the system is about to sleep"),
        verb("wake", VYMCTL_CALL(vym_bluetooth_os_wakeup_action), "",
             "tells the server that the system is awake"),
        verb("test-receive", VYMCTL_CALL(vym_bluetooth_le_receiver_test), "channel=0..39",
             "starts the LE receiver test", "adapter.test-receive"),
        verb("test-transmit", VYMCTL_CALL(vym_bluetooth_le_transmitter_test),
             "channel=0..39 length=0..255 pattern=0..7", "starts the LE transmitter test",
             "adapter.test-transmit"),
        verb("test-end", VYMCTL_CALL(vym_bluetooth_le_test_end), "", "ends the LE test",
             "adapter.test-end"),
        verb("loopback", VYMCTL_CALL(vym_bluetooth_write_loopback_mode), "mode=none|local|remote",
             "sets the loopback mode"),
        verb(
            "take-transport", "vym_bluetooth_register_data_transport_callback",
            [](uint8_t id) { vym_bluetooth_register_data_transport_callback(id, take_transport); },
            "kind=serial|audio", "takes the descriptors of this kind, and closes them")
            .alone(),
    };
}

std::vector<Verb> verbs() {
    std::vector<Verb> all = identity_verbs();
    for (std::vector<Verb> part : {bonding_verbs(), device_verbs()}) {
        std::move(part.begin(), part.end(), std::back_inserter(all));
    }
    return all;
}

std::vector<EventRow> events() {
#define VARIANT "variant=confirm|enter|consent|notify"
    return {
        own<uint8_t, uint8_t>("adapter.transport", "kind=serial|audio state=missing|taken"),
        on<&callbacks::state_changed_cb>("adapter.state", "state=off|on"),
        on<&callbacks::bt_version_cb>("adapter.version", "version"),
        on<&callbacks::device_found_cb>("adapter.found",
                                        "address type=br-edr:1|le|both class rssi=signed name uuids"),
        on<&callbacks::discovery_state_changed_cb>("adapter.discovery", "state=stopped|started"),
        on<&callbacks::pin_request_cb>("adapter.pin-request",
                                       "address class sixteen_digits=no|yes name"),
        on<&callbacks::ssp_request_cb>("adapter.pairing-request",
                                       "address class " VARIANT " passkey name"),
        on<&callbacks::bond_state_changed_cb>("adapter.bond",
                                              VYMCTL_STATUS " address state=none|bonding|bonded"),
        on<&callbacks::acl_state_changed_cb>("adapter.link",
                                             VYMCTL_STATUS " address state=connected|disconnected"),
        on<&callbacks::app_gap_started_cb>("adapter.gap-started", "data"),
        on<&callbacks::connection_auth_req_cb>("adapter.connection-request", "address profile"),
        on<&callbacks::le_rx_test_cb>("adapter.test-receive", VYMCTL_CODE),
        on<&callbacks::le_tx_test_cb>("adapter.test-transmit", VYMCTL_CODE),
        on<&callbacks::le_test_end_cb>("adapter.test-end", VYMCTL_CODE " packets"),
        on<&callbacks::read_bt_address_cb>("adapter.address", VYMCTL_STATUS " address"),
        on<&callbacks::read_rssi_cb>("adapter.rssi", "address " VYMCTL_STATUS " rssi=signed"),
        on<&callbacks::read_local_device_oob_data_cb>("adapter.oob", VYMCTL_STATUS " c192 r192"),
        on<&callbacks::read_local_device_oob_data_ex_cb>("adapter.oob-both",
                                                         VYMCTL_STATUS " c192 r192 c256 r256"),
    };
}

} // namespace

Profile adapter_profile() {
    return make_profile<callbacks, vym_bluetooth_init, vym_bluetooth_done>(
        "adapter", "The adapter, pairing and links", verbs(), events());
}

} // namespace vymctl
