// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_gatt_client_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = gatt_client_impl_callback_t;
using namespace vym;

std::atomic<gatt_client_event_parser_t*> s_evt_parser;

// A characteristic's properties: eight characters are read and only two of them count as read, so that
// the framework finds six left in every event that has its end. That is how this event is defined.
struct properties {
    static constexpr int width = 8;
    static int read(field_reader& in) {
        field_reader ahead = in;
        in.byte();
        return static_cast<int>(ahead.uint32());
    }
};

// KB: the kind of packet comes before the data here and after it in the callback.
bool KB_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t from = in.address();
    const uint8_t rssi = in.byte();
    const uint8_t data_type = in.byte();
    counted_block data(in);
    if (data.whole) {
        notify(cbk, &callbacks::scan_result_cb, from, rssi, data.len, data.data, data_type);
    }
    return data.whole;
}

bool KC_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t from = in.address();
    counted_block name(in);
    if (name.whole) {
        notify(cbk, &callbacks::scan_address_name_cb, from, name.len, name.data);
    }
    return name.whole;
}

bool KD_parse(field_reader& in, callbacks* cbk) {
    const uint16_t conn_id = in.uint16();
    const bt_bdaddr_t from = in.address();
    const uint8_t service_type = in.byte();
    const uint16_t service_instance = in.uint16();
    const bt_uuid_t service = in.uuid128();
    const uint16_t char_instance = in.uint16();
    const bt_uuid_t characteristic = in.uuid128();
    const uint8_t is_notify = in.byte();
    counted_block data(in);
    if (data.whole) {
        notify(cbk, &callbacks::notify_cb, conn_id, from, service_type, service_instance, service,
               char_instance, characteristic, is_notify, data.len, data.data);
    }
    return data.whole;
}

bool KM_parse(field_reader& in, callbacks* cbk) {
    const uint16_t conn_id = in.uint16();
    const uint8_t status = in.byte();
    const uint8_t service_type = in.byte();
    const uint16_t service_instance = in.uint16();
    const bt_uuid_t service = in.uuid128();
    const uint16_t char_instance = in.uint16();
    const bt_uuid_t characteristic = in.uuid128();
    const uint8_t type = in.byte();
    counted_block data(in);
    if (data.whole) {
        notify(cbk, &callbacks::read_characteristic_cb, conn_id, status, service_type, service_instance,
               service, char_instance, characteristic, type, data.len, data.data);
    }
    return data.whole;
}

bool KP_parse(field_reader& in, callbacks* cbk) {
    const uint16_t conn_id = in.uint16();
    const uint8_t status = in.byte();
    const uint8_t service_type = in.byte();
    const uint16_t service_instance = in.uint16();
    const bt_uuid_t service = in.uuid128();
    const uint16_t char_instance = in.uint16();
    const bt_uuid_t characteristic = in.uuid128();
    const uint16_t descr_instance = in.uint16();
    const bt_uuid_t descriptor = in.uuid128();
    const uint8_t type = in.byte();
    counted_block data(in);
    if (data.whole) {
        notify(cbk, &callbacks::read_descriptor_cb, conn_id, status, service_type, service_instance,
               service, char_instance, characteristic, descr_instance, descriptor, type, data.len,
               data.data);
    }
    return data.whole;
}

bool KS_parse(field_reader& in, callbacks* cbk) {
    const uint16_t conn_id = in.uint16();
    const bt_bdaddr_t from = in.address();
    counted_block data(in);
    if (data.whole) {
        notify(cbk, &callbacks::receive_data_from_central_cb, conn_id, from, data.len, data.data);
    }
    return data.whole;
}

bool KZL_parse(field_reader& in, callbacks* cbk) {
    const uint8_t client_if = in.byte();
    const uint8_t status = in.byte();
    const int report_format = static_cast<int>(in.uint32());
    const int num_records = static_cast<int>(in.uint32());
    counted_block reports(in);
    if (reports.whole) {
        notify(cbk, &callbacks::batch_scan_reports_cb, client_if, status, report_format, num_records,
               reports.len, reports.data);
    }
    return reports.whole;
}

using body = bodies<callbacks>;

constexpr event_row kEvents[] = {
    plain<&callbacks::client_registered_cb, byte, byte, uuid128>("KA", "onClientRegistered", 36),
    // The minimum is two short of the fields and stays so: a count of two digits passes.
    body::with_tail<KB_parse>("KB", "onScanResult", 18),
    body::with_tail<KC_parse>("KC", "onScanAddressName", 16),
    body::with_tail<KD_parse>("KD", "onNotify", 96),
    plain<&callbacks::connected_cb, byte, uint16, byte, address>("KE", "onConnected", 20),
    plain<&callbacks::disconnected_cb, byte, uint16, byte, address>("KF", "onDisconnected", 20),
    plain<&callbacks::search_completed_cb, uint16, byte>("KG", "onSearchCompleted", 6),
    plain<&callbacks::search_result_cb, uint16, byte, uint16, uuid128>("KH", "onSearchResult", 42),
    plain<&callbacks::get_characteristic_cb, uint16, byte, byte, uint16, uuid128, uint16, uuid128,
          properties>("KI", "onGetCharacteristic", 88),
    plain<&callbacks::get_descriptor_cb, uint16, byte, byte, uint16, uuid128, uint16, uuid128, uint16,
          uuid128>("KJ", "onGetDescriptor", 116),
    plain<&callbacks::get_included_service_cb, uint16, byte, byte, uint16, uuid128, byte, uint16,
          uuid128>("KK", "onGetIncludedService", 82),
    plain<&callbacks::register_for_notifications_cb, uint16, byte, byte, byte, uint16, uuid128, uint16,
          uuid128>("KL", "onRegisterForNotifications", 82),
    body::with_tail<KM_parse>("KM", "onReadCharacteristic", 86),
    plain<&callbacks::write_characteristic_cb, uint16, byte, byte, uint16, uuid128, uint16, uuid128>(
        "KN", "onWriteCharacteristic", 80),
    plain<&callbacks::execute_completed_cb, uint16, byte>("KO", "onExecuteCompleted", 6),
    body::with_tail<KP_parse>("KP", "onReadDescriptor", 122),
    plain<&callbacks::write_descriptor_cb, uint16, byte, byte, uint16, uuid128, uint16, uuid128, uint16,
          uuid128>("KQ", "onWriteDescriptor", 116),
    plain<&callbacks::read_remote_rssi_cb, byte, address, byte, byte>("KR", "onReadRemoteRssi", 18),
    body::with_tail<KS_parse>("KS", "onReceiveDataFromCentral", 20),
    plain<&callbacks::configure_mtu_cb, int32, byte, int32>("KT", "onConfigureMtu", 18),
    plain<&callbacks::advertise_callback_cb, byte, byte>("KZA", "onAdvertiseCallback", 4),
    plain<&callbacks::scan_filter_config_cb, int32, byte, byte, int32, int32>("KZB",
                                                                              "onScanFilterConfig", 28),
    plain<&callbacks::scan_filter_params_configured_cb, int32, byte, byte, int32>(
        "KZC", "onScanFilterParamsConfigured", 20),
    plain<&callbacks::scan_filter_enable_disabled_cb, int32, byte, byte>(
        "KZD", "onScanFilterEnableDisabled", 12),
    plain<&callbacks::advertise_instance_enabled_cb, byte, byte>("KZE", "onAdvertiseInstanceEnabled",
                                                                 4),
    plain<&callbacks::advertise_data_updated_cb, byte, byte>("KZF", "onAdvertiseDataUpdated", 4),
    plain<&callbacks::advertise_data_set_cb, byte, byte>("KZG", "onAdvertiseDataSet", 4),
    plain<&callbacks::advertise_instance_disabled_cb, byte, byte>("KZH", "onAdvertiseInstanceDisabled",
                                                                  4),
    plain<&callbacks::client_congestion_cb, int32, byte>("KZI", "onClientCongestion", 10),
    plain<&callbacks::batch_scan_storage_configured_cb, byte, byte>("KZJ",
                                                                    "onBatchScanStorageConfigured", 4),
    plain<&callbacks::batch_scan_start_stopped_cb, int32, byte, byte>("KZK", "onBatchScanStartStopped",
                                                                      12),
    body::with_tail<KZL_parse>("KZL", "onBatchScanReports", 24),
    plain<&callbacks::batch_scan_threshold_crossed_cb, byte>("KZM", "onBatchScanThresholdCrossed", 2),
    plain<&callbacks::scan_param_setup_completed_cb, byte, byte>("KZN", "onScanParamSetupCompleted", 4),
};

} // namespace

extern "C" {

event_parser_t* create_gatt_client_event_parser(gatt_client_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, gatt_client_event_parser_t>(cb);
}

void destroy_gatt_client_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
