// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Low Energy: other devices' services, scanning and advertising.

#include "fields.h"

namespace protocol {
namespace {

constexpr Fields kConnection{word("conn_id")};
constexpr Fields kConnectionStatus{word("conn_id"), byte("status")};
constexpr Fields kClientAddress{byte("client_if"), address()};
constexpr Fields kClientStatus{byte("client_if"), byte("status")};
constexpr Fields kActionClientStatus{dword("action"), byte("client_if"), byte("status")};

// What names a service, a characteristic, a descriptor: in commands the UUID's last byte comes first,
// in events its first.
constexpr Fields kService{byte("service_type"), word("service_instance"), uuid_last("service")};
constexpr Fields kCharacteristic{word("characteristic_instance"), uuid_last("characteristic")};
constexpr Fields kDescriptor{word("descriptor_instance"), uuid_last("descriptor")};
constexpr Fields kServiceFound{byte("service_type"), word("service_instance"), uuid_first("service")};
constexpr Fields kCharacteristicFound{word("characteristic_instance"), uuid_first("characteristic")};
constexpr Fields kDescriptorFound{word("descriptor_instance"), uuid_first("descriptor")};
constexpr Fields kWrite{byte("write_type"), byte("auth_req"), of_peer(block("value"))};
constexpr Fields kAuthentication{byte("auth_req")};

constexpr Fields kFilter{byte("client_if"),      word("filter_type"),    word("filter_index"),
                         word("company"),        word("company_mask"),   dword("uuid_lsb"),
                         dword("uuid_msb"),      dword("uuid_mask_lsb"), dword("uuid_mask_msb"),
                         byte("address_type"),   a_name(block("name")),  an_address(block("address")),
                         of_peer(block("data")), of_peer(block("mask"))};
constexpr Fields kAdvertising{byte("client_if"), word("min_interval"), word("max_interval"),
                              byte("type"),      byte("channel_map"),  byte("tx_power"),
                              word("timeout_s")};
constexpr Fields kAdvertisedData{of_peer(block("manufacturer_data")), of_peer(block("service_data")),
                                 block("service_uuids")};

constexpr Message kCommands[] = {
    {"KA", "register", 0, {uuid_last("uuid")}},
    {"KB", "unregister", 0, {byte("client_if")}},
    {"KC", "scan", 0, {byte("start")}},
    {"KD", "listen", 0, {byte("client_if"), byte("enable")}},
    {"KE", "connect", 0, kClientAddress + Fields{byte("is_direct"), byte("transport")}},
    {"KF", "disconnect", 0, kClientAddress + kConnection},
    {"KG", "refresh", 0, kClientAddress},
    {"KH", "search_service", 0, {word("conn_id"), byte("search_all"), word("uuid16")}},
    {"KI", "get_included_service", 0,
     kConnection + kService +
         Fields{byte("included_type"), word("included_instance"), uuid_last("included")}},
    {"KJ", "get_characteristic", 0, kConnection + kService + kCharacteristic},
    {"KK", "get_descriptor", 0, kConnection + kService + kCharacteristic + kDescriptor},
    {"KL", "read_characteristic", 0, kConnection + kService + kCharacteristic + kAuthentication},
    {"KM", "write_characteristic", 0, kConnection + kService + kCharacteristic + kWrite},
    {"KN", "read_descriptor", 0,
     kConnection + kService + kCharacteristic + kDescriptor + kAuthentication},
    {"KO", "write_descriptor", 0, kConnection + kService + kCharacteristic + kDescriptor + kWrite},
    {"KP", "execute_write", 0, {word("conn_id"), byte("execute")}},
    {"KQ", "register_for_notifications", 0,
     kClientAddress + kService + kCharacteristic + Fields{byte("enable")}},
    {"KR", "connection_parameter_update", 0,
     kClientAddress +
         Fields{word("min_interval"), word("max_interval"), word("latency"), word("timeout")}},
    {"KSB", "send_data", 0, {of_peer(block("data"))}},
    {"KT",
     "test",
     0,
     {dword("command"), dword("uuid_lsb"), dword("uuid_msb"), address(), dword("p1"), dword("p2"),
      dword("p3"), dword("p4"), byte("p5")}},
    {"KU", "read_remote_rssi", 0, kClientAddress},
    {"KV", "dump", 0, kConnection},
    {"KW", "cleanup"},
    {"KY", "configure_mtu", 0, {word("conn_id"), word("mtu")}},
    {"KXB", "set_scan_parameters", 0, {byte("client_if"), word("interval"), word("window")}},
    {"KXC", "scan_filter_add", 0, kFilter},
    {"KXD", "scan_filter_delete", 0, kFilter},
    {"KXE",
     "scan_filter_param_add",
     0,
     {byte("client_if"), word("filter_index"), word("features"), word("list_logic"),
      word("filter_logic"), word("rssi_high"), word("rssi_low"), word("delivery_mode"),
      word("found_timeout"), word("lost_timeout"), word("found_timeout_count"),
      word("tracked_entries")}},
    {"KXF", "scan_filter_param_clear_all", 0, {byte("client_if")}},
    {"KXG", "scan_filter_param_delete", 0, {byte("client_if"), word("filter_index")}},
    {"KXH", "scan_filter_clear", 0, {byte("client_if"), word("filter_index")}},
    {"KXI", "scan_filter_enable", 0, {byte("client_if"), byte("enable")}},
    {"KXJ",
     "config_batch_scan_storage",
     0,
     {byte("client_if"), word("full_percent"), word("truncated_percent"), word("threshold_percent")}},
    {"KXK",
     "start_batch_scan",
     0,
     {byte("client_if"), word("mode"), word("interval"), word("window"), word("address_type"),
      word("discard_rule")}},
    {"KXL", "stop_batch_scan", 0, {byte("client_if")}},
    {"KXM", "read_scan_reports", 0, {byte("client_if"), word("scan_type")}},
    {"KXN", "disable_adv", 0, {byte("client_if")}},
    {"KXO", "enable_adv", 0, kAdvertising},
    {"KXP", "update_adv", 0, kAdvertising},
    {"KXQ", "set_client_adv_data", 0,
     Fields{byte("client_if"), byte("scan_response"), byte("include_name"), byte("include_tx_power"),
            word("appearance")} +
         kAdvertisedData},
    {"KXR", "set_adv_data", 0,
     Fields{byte("server_if"), byte("scan_response"), byte("include_name"), byte("include_tx_power"),
            word("min_interval"), word("max_interval"), word("appearance")} +
         kAdvertisedData},
    {"KZA",
     "listen_ex",
     0,
     {byte("client_if"), byte("enable"), word("min_interval"), word("max_interval")}},
    {"KZB",
     "set_user_def_adv_data",
     0,
     {byte("server_if"), byte("scan_response"), advertised(block("data"))}},
    {"KZC", "set_adv_command", 0, {byte("enable")}},
};

constexpr Message kEvents[] = {
    {"KA", "onClientRegistered", 36, {byte("status"), byte("client_if"), uuid_first("uuid")}},
    {"KB", "onScanResult", 18, {address(), byte("rssi"), byte("data_type"), advertised(block("data"))}},
    {"KC", "onScanAddressName", 16, {address(), a_name(block("name"))}},
    {"KD", "onNotify", 96,
     Fields{word("conn_id"), address()} + kServiceFound + kCharacteristicFound +
         Fields{byte("is_notification"), of_peer(block("value"))}},
    {"KE", "onConnected", 20, {byte("client_if"), word("conn_id"), byte("status"), address()}},
    {"KF", "onDisconnected", 20, {byte("client_if"), word("conn_id"), byte("status"), address()}},
    {"KG", "onSearchCompleted", 6, kConnectionStatus},
    {"KH", "onSearchResult", 42, kConnection + kServiceFound},
    {"KI", "onGetCharacteristic", 88,
     kConnectionStatus + kServiceFound + kCharacteristicFound + Fields{dword("properties")}},
    {"KJ", "onGetDescriptor", 116,
     kConnectionStatus + kServiceFound + kCharacteristicFound + kDescriptorFound},
    {"KK", "onGetIncludedService", 82,
     kConnectionStatus + kServiceFound +
         Fields{byte("included_type"), word("included_instance"), uuid_first("included")}},
    {"KL", "onRegisterForNotifications", 82,
     kConnectionStatus + Fields{byte("registered")} + kServiceFound + kCharacteristicFound},
    {"KM", "onReadCharacteristic", 86,
     kConnectionStatus + kServiceFound + kCharacteristicFound +
         Fields{byte("type"), of_peer(block("value"))}},
    {"KN", "onWriteCharacteristic", 80, kConnectionStatus + kServiceFound + kCharacteristicFound},
    {"KO", "onExecuteCompleted", 6, kConnectionStatus},
    {"KP", "onReadDescriptor", 122,
     kConnectionStatus + kServiceFound + kCharacteristicFound + kDescriptorFound +
         Fields{byte("type"), of_peer(block("value"))}},
    {"KQ", "onWriteDescriptor", 116,
     kConnectionStatus + kServiceFound + kCharacteristicFound + kDescriptorFound},
    {"KR", "onReadRemoteRssi", 18, {byte("client_if"), address(), byte("rssi"), byte("status")}},
    {"KS", "onReceiveDataFromCentral", 20, {word("conn_id"), address(), of_peer(block("data"))}},
    {"KT", "onConfigureMtu", 18, {dword("conn_id"), byte("status"), dword("mtu")}},
    {"KZA", "onAdvertiseCallback", 4, {byte("status"), byte("client_if")}},
    {"KZB", "onScanFilterConfig", 28,
     kActionClientStatus + Fields{dword("filter_type"), dword("space")}},
    {"KZC", "onScanFilterParamsConfigured", 20, kActionClientStatus + Fields{dword("space")}},
    {"KZD", "onScanFilterEnableDisabled", 12, kActionClientStatus},
    {"KZE", "onAdvertiseInstanceEnabled", 4, kClientStatus},
    {"KZF", "onAdvertiseDataUpdated", 4, kClientStatus},
    {"KZG", "onAdvertiseDataSet", 4, kClientStatus},
    {"KZH", "onAdvertiseInstanceDisabled", 4, kClientStatus},
    {"KZI", "onClientCongestion", 10, {dword("conn_id"), byte("congested")}},
    {"KZJ", "onBatchScanStorageConfigured", 4, kClientStatus},
    {"KZK", "onBatchScanStartStopped", 12, kActionClientStatus},
    {"KZL", "onBatchScanReports", 24,
     kClientStatus + Fields{dword("format"), dword("records"), a_secret(block("data"))}},
    {"KZM", "onBatchScanThresholdCrossed", 2, {byte("client_if")}},
    {"KZN", "onScanParamSetupCompleted", 4, kClientStatus},
};

} // namespace

const Profile kGattClient{"gatt_client", "GATT client, scanning and advertising", kCommands, kEvents};

} // namespace protocol
