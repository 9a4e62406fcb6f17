// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The adapter: state, properties, discovery, pairing, links, tests.

#include "fields.h"

namespace protocol {
namespace {

// What a bonded device's record says. The services are 16 whatever their number.
constexpr Layout kSavedDevice{"saved_device",
                              0,
                              {u8("total"),
                               u8("index"),
                               {"address", Type::RawAddress},
                               le32("class"),
                               u8("service_count"),
                               times(le16("services"), 16),
                               a_name(all_text("name"))}};

constexpr Layout kOther{"other", 0, {of_peer(all_bytes("value"))}};
constexpr Layout kInterval{"discovery_interval", 36, {le32("interval")}, &kOther};
constexpr Layout kBondedMaximum{"bonded_maximum", 35, {le32("maximum")}, &kInterval};
constexpr Layout kVersion{"version", 34, {all_text("version")}, &kBondedMaximum};
constexpr Layout kManufacturer{"manufacturer", 33, {all_bytes("code")}, &kVersion};
constexpr Layout kPriority{"priority", 32, {u8("priority")}, &kManufacturer};
constexpr Layout kSaved{"saved_device", 15, {group("device", &kSavedDevice)}, &kPriority};
constexpr Layout kTimeout{"discoverable_timeout", 9, {le32("seconds")}, &kSaved};
constexpr Layout kBonded{"bonded_devices", 8, {to_end({"addresses", Type::BigAddress})}, &kTimeout};
constexpr Layout kScanMode{"scan_mode", 7, {le32("mode")}, &kBonded};
constexpr Layout kClass{"class", 4, {le32("class")}, &kScanMode};
constexpr Layout kUuids{"uuids", 3, {to_end({"uuids", Type::RawUuid})}, &kClass};
constexpr Layout kAddress{"address", 2, {{"address", Type::RawAddress}}, &kUuids};
constexpr Layout kName{"name", 1, {a_name(all_text("name"))}, &kAddress};

// Type and length are digits, the value is bytes.
constexpr Layout kProperty{
    "property", 0, {byte("type"), byte("length"), choice("value", "type", &kName)}};
constexpr Layout kProperties{"properties", 0, {times(group("properties", &kProperty), "count")}};
// The value that a setter sends has no record around it.
constexpr Layout kServices{"services", 0, {to_end(le16("services"))}};

constexpr Field value() {
    return choice("value", "type", &kName);
}

constexpr Layout kValue{"value", 0, {value()}};

constexpr Message kCommands[] = {
    {"PB", "enable"},
    {"PC", "disable"},
    {"PD", "preset_addr", 0, {address()}},
    {"PE", "enable_without_firmware"},
    {"PV", "get_version"},
    {"BA", "get_adapter_property", 0, {byte("type")}},
    {"BB", "set_adapter_property", 0, {byte("type"), block("value", &kValue)}},
    {"BC", "get_remote_device_property", 0, {address(), byte("type")}},
    {"BD", "set_remote_device_property", 0, {address(), byte("type"), block("value", &kValue)}},
    {"BEA", "read_local_device_oob_data"},
    {"BEB", "read_local_device_oob_data_ex"},
    {"BEC", "set_remote_device_oob_data", 0, {address(), oob("c192"), oob("r192")}},
    {"BF", "set_bond_mode", 0, {dword("mode")}},
    {"BG", "get_adapter_properties"},
    {"BH", "get_remote_device_properties", 0, {address()}},
    {"BI", "get_remote_service_record", 0, {address(), uuid_last("uuid")}},
    {"BJ", "get_remote_services", 0, {address()}},
    {"BK", "start_discovery"},
    {"BL", "stop_discovery"},
    {"BM", "create_bond", 0, {address()}},
    {"BN", "create_bond_out_of_band", 0, {address(), dword("transport"), a_secret(block("data"))}},
    {"BO", "remove_bond", 0, {address()}},
    {"BP", "cancel_bond", 0, {address()}},
    {"BQ", "get_connection_state", 0, {address()}},
    {"BR", "pin_reply", 0, {address(), byte("accept"), a_secret(block("pin"))}},
    {"BS", "ssp_reply", 0, {address(), byte("variant"), byte("accept"), a_secret(dword("passkey"))}},
    {"BTA", "connection_auth", 0, {address(), byte("profile"), byte("accept")}},
    {"BTB", "read_connected_device_rssi", 0, {address()}},
    {"BTD", "acl_cancel_connect", 0, {address()}},
    {"BTE", "add_uuid", 0, {uuid_first("uuid")}},
    {"BTL",
     "le_test",
     0,
     {word("operation"), word("count"), of_length("parameters", Type::HexBytes, "count")}},
    {"BTOR", "read_address"},
    {"BTOS", "os_suspend_action"},
    {"BTOW", "os_wakeup_action"},
    {"BTP", "write_loopback_mode", 0, {byte("mode")}},
};

constexpr Message kEvents[] = {
    {"PA", "onStateChanged", 2, {byte("state")}},
    {"PV", "onBtVersion", 0, {text("version")}},
    {"PD", "onDataTransportEstablished", 10, {byte("id"), dword("number")}},
    {"BB", "onAdapterProperties", 8, {byte("status"), byte("count"), block("value", &kProperties)}},
    {"BC",
     "onRemoteDeviceProperties",
     20,
     {byte("status"), address(), byte("count"), block("value", &kProperties)}},
    {"BD",
     "onDeviceFound",
     28,
     {address(), byte("type"), dword("class"), byte("rssi"), block("services", &kServices),
      a_name(text("name"))}},
    {"BE", "onDiscoveryStateChanged", 2, {byte("state")}},
    {"BF", "onPinRequest", 22, {address(), dword("class"), byte("min_16_digit"), a_name(text("name"))}},
    {"BG",
     "onSspRequest",
     30,
     {address(), dword("class"), byte("variant"), a_secret(dword("passkey")), a_name(text("name"))}},
    {"BH", "onBondStateChanged", 16, {byte("status"), address(), byte("state")}},
    {"BI", "onAclStateChanged", 16, {byte("status"), address(), byte("state")}},
    {"BN", "onAppGapStarted", 4, {of_peer(block("data"))}},
    {"BO", "onConnectionAuthReq", 14, {address(), byte("profile")}},
    {"BQ", "onLETestCmdComplete", 8, {byte("operation"), byte("status"), word("packets")}},
    {"BR", "onReadBTAddress", 14, {byte("status"), address()}},
    {"BS", "onReadRssi", 16, {address(), byte("status"), byte("rssi")}},
    {"BU", "onReadLocalOobData", 66, {byte("status"), oob("c192"), oob("r192")}},
    {"BV",
     "onReadLocalOobDataEX",
     130,
     {byte("status"), oob("c192"), oob("r192"), oob("c256"), oob("r256")}},
};

} // namespace

const Profile kBluetooth{"bluetooth", "Adapter", kCommands, kEvents};

} // namespace protocol
