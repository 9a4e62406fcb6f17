// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_bluetooth_event.h"

#include "vym_event_table.h"

#include <atomic>
#include <cstdio>

namespace {

using callbacks = bluetooth_impl_callback_t;
using namespace vym;

std::atomic<bluetooth_event_parser_t*> s_evt_parser;

// BB: property records, escaped as a whole.
bool BB_parse(field_reader& in, callbacks* cbk) {
    const uint8_t status = in.byte();
    const uint8_t num_of_props = in.byte();
    unescaped_block value(in, in.uint16());
    if (value.whole) {
        notify(cbk, &callbacks::on_adapter_properties_cbk, status, num_of_props, value.len, value.data);
    }
    return value.whole;
}

// BC: property records of a remote device.
bool BC_parse(field_reader& in, callbacks* cbk) {
    const uint8_t status = in.byte();
    const bt_bdaddr_t address = in.address();
    const uint8_t num_of_props = in.byte();
    unescaped_block value(in, in.uint16());
    if (value.whole) {
        notify(cbk, &callbacks::on_remote_device_properties_cbk, status, address, num_of_props,
               value.len, value.data);
    }
    return value.whole;
}

// BD: the services are 16-bit values in memory order; the device's name is the rest.
bool BD_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    const uint8_t type_of_device = in.byte();
    const int class_of_device = static_cast<int>(in.uint32());
    const uint8_t rssi = in.byte();
    unescaped_block services(in, in.uint16());
    if (services.whole) {
        const int count = services.len / 2;
        // The count is a byte: more services than it can tell are not told.
        notify(cbk, &callbacks::on_device_found_cbk, address, type_of_device, class_of_device, rssi,
               in.rest(), static_cast<uint8_t>(count < UINT8_MAX ? count : UINT8_MAX),
               reinterpret_cast<uint16_t*>(services.data));
    }
    return services.whole;
}

// BN: the whole block is skipped, but only the low byte of its count is decoded. Servers have come to
// rely on either half of this, so it stays.
bool BN_parse(field_reader& in, callbacks* cbk) {
    const int len = in.uint16();
    unescaped_block data(in, len, len & 0xFF);
    if (data.whole) {
        notify(cbk, &callbacks::on_app_gap_started_cbk, data.len, data.data);
    }
    return data.whole;
}

bool BO_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t from = in.address();
    const uint8_t profile_id = in.byte();
    const uint8_t* a = from.address;
    printf("%s->%d, addr[%02x%02x%02x%02x%02x%02x], profile_id[%d]\r\n", __func__, __LINE__, a[0], a[1],
           a[2], a[3], a[4], a[5], profile_id);
    notify(cbk, &callbacks::on_connection_auth_req_cbk, from, profile_id);
    return true;
}

bool BQ_parse(field_reader& in, callbacks* cbk) {
    const uint8_t op_code = in.byte();
    const uint8_t status = in.byte();
    const uint16_t num_packets = in.uint16();
    printf("%s->%d, op_code[%d], status[0x%x], num_packets[%d]\r\n", __func__, __LINE__, op_code,
           status, num_packets);
    notify(cbk, &callbacks::on_le_test_cmd_complete_cbk, op_code, status, num_packets);
    return true;
}

using body = bodies<callbacks>;

constexpr event_row kEvents[] = {
    plain<&callbacks::on_state_changed_cbk, byte>("PA", "onStateChanged", 2),
    plain<&callbacks::on_bt_version_cbk, rest>("PV", "onBtVersion", 0),
    plain<&callbacks::on_data_transport_established_cbk, byte, int32>("PD",
                                                                      "onDataTransportEstablished", 10),
    body::with_tail<BB_parse>("BB", "onAdapterProperties", 8),
    body::with_tail<BC_parse>("BC", "onRemoteDeviceProperties", 20),
    body::with_tail<BD_parse>("BD", "onDeviceFound", 28),
    plain<&callbacks::on_discovery_state_changed_cbk, byte>("BE", "onDiscoveryStateChanged", 2),
    plain<&callbacks::on_pin_request_cbk, address, int32, byte, rest>("BF", "onPinRequest", 22),
    plain<&callbacks::on_ssp_request_cbk, address, int32, byte, int32, rest>("BG", "onSspRequest", 30),
    plain<&callbacks::on_bond_state_changed_cbk, byte, address, byte>("BH", "onBondStateChanged", 16),
    plain<&callbacks::on_acl_state_changed_cbk, byte, address, byte>("BI", "onAclStateChanged", 16),
    body::with_tail<BN_parse>("BN", "onAppGapStarted", 4),
    body::fixed<BO_parse>("BO", "onConnectionAuthReq", 14, 14),
    body::fixed<BQ_parse>("BQ", "onLETestCmdComplete", 8, 8),
    plain<&callbacks::on_read_bt_address_cbk, byte, address>("BR", "onReadBTAddress", 14),
    plain<&callbacks::on_read_rssi_cbk, address, byte, byte>("BS", "onReadRssi", 16),
    plain<&callbacks::on_read_local_oob_data_cbk, byte, oob_data, oob_data>("BU", "onReadLocalOobData",
                                                                            66),
    plain<&callbacks::on_read_local_oob_data_ex_cbk, byte, oob_data, oob_data, oob_data, oob_data>(
        "BV", "onReadLocalOobDataEX", 130),
};

} // namespace

extern "C" {

event_parser_t* create_bluetooth_event_parser(bluetooth_impl_callback_t* cbks) {
    return create_profile_parser<kEvents, s_evt_parser, bluetooth_event_parser_t>(cbks);
}

void destroy_bluetooth_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
