// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The sizes and values that applications have compiled in.

#include "bluetooth.h"
#include "internal_ev_process.h"
#include "vym_audio_stream.h"
#include "vym_bluetooth.h"
#include "vym_event_parser.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

TEST(BluetoothTypes, StatusValuesAreThoseOfTheServer) {
    const bt_status_t in_order[] = {
        BT_STATUS_SUCCESS,
        BT_STATUS_FAIL,
        BT_STATUS_NOT_READY,
        BT_STATUS_NOMEM,
        BT_STATUS_BUSY,
        BT_STATUS_DONE,
        BT_STATUS_UNSUPPORTED,
        BT_STATUS_PARM_INVALID,
        BT_STATUS_UNHANDLED,
        BT_STATUS_AUTH_FAILURE,
        BT_STATUS_RMT_DEV_DOWN,
        BT_STATUS_AUTH_REJECTED,
        BT_STATUS_JNI_ENVIRONMENT_ERROR,
        BT_STATUS_JNI_THREAD_ATTACH_ERROR,
        BT_STATUS_WAKELOCK_ERROR,
    };
    int expected = 0;
    for (const bt_status_t status : in_order) {
        EXPECT_EQ(status, expected++);
    }
    EXPECT_EQ(expected, 15);
}

TEST(BluetoothTypes, AddressesUuidsAndKeysAreBareBytes) {
    EXPECT_EQ(sizeof(bt_bdaddr_t), 6U);
    EXPECT_EQ(sizeof(bt_uuid_t), 16U);
    EXPECT_EQ(sizeof(bt_oob_data_t), 16U);
    EXPECT_EQ(sizeof(bt_bdname_t), 249U);
    EXPECT_EQ(sizeof(bt_bdaddr_t::address), 6U);
    EXPECT_EQ(sizeof(bt_uuid_t::uu), 16U);
    EXPECT_EQ(sizeof(bt_oob_data_t::data), 16U);
    EXPECT_EQ(sizeof(bt_bdname_t::name), 249U);
}

TEST(BluetoothTypes, ARemoteDeviceIsNaturallyAligned) {
    EXPECT_EQ(offsetof(bt_remote_device_t, address), 0U);
    EXPECT_EQ(offsetof(bt_remote_device_t, name), 6U);
    EXPECT_EQ(offsetof(bt_remote_device_t, class_of_device), 256U);
    EXPECT_EQ(offsetof(bt_remote_device_t, num_service), 260U);
    EXPECT_EQ(offsetof(bt_remote_device_t, services), 262U);
    EXPECT_EQ(sizeof(bt_remote_device_t::services), 32U);
    EXPECT_EQ(sizeof(bt_remote_device_t), 296U);
}

TEST(BluetoothTypes, TheLongServicesAreEightyBytesBehindTheirCount) {
    EXPECT_EQ(offsetof(bt_128_service_t, num_service_128bit), 0U);
    EXPECT_EQ(offsetof(bt_128_service_t, services_128bit), 1U);
    EXPECT_EQ(sizeof(bt_128_service_t), 81U);
}

template <typename Enumeration>
void ExpectIntThatKeepsAnyValue() {
    EXPECT_EQ(sizeof(Enumeration), sizeof(int));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Enumeration>, int>));
    for (const int value : {-1, 0, 99, 0x7FFFFFFF}) {
        EXPECT_EQ(static_cast<int>(static_cast<Enumeration>(value)), value);
    }
}

TEST(BluetoothTypes, EnumerationsAreIntsThatKeepAnyValue) {
    ExpectIntThatKeepsAnyValue<bt_status_t>();
    ExpectIntThatKeepsAnyValue<bt_state_t>();
    ExpectIntThatKeepsAnyValue<bt_scan_mode_t>();
    ExpectIntThatKeepsAnyValue<bt_acl_state_t>();
}

TEST(BluetoothTypes, NumbersOnTheWireHaveTheirValues) {
    EXPECT_EQ(BT_ACL_STATE_CONNECTED, 0) << "connected is 0";
    EXPECT_EQ(BT_BOND_STATE_NONE, 0);
    EXPECT_EQ(BT_BOND_STATE_BONDING, 1);
    EXPECT_EQ(BT_BOND_STATE_BONDED, 2);
    EXPECT_EQ(sizeof(bt_manufacturer_code_t), 4U);
    EXPECT_EQ(IPC_ID_SPP, 0);
    EXPECT_EQ(IPC_ID_AUDIO, 1);
    EXPECT_EQ(AUDIO_STREAM_TYPE_SCO, 0);
    EXPECT_EQ(AUDIO_STREAM_TYPE_A2DP, 1);
}

TEST(BluetoothTypes, PropertiesHaveTheirNumbers) {
    EXPECT_EQ(BT_PROPERTY_BDNAME, 1);
    EXPECT_EQ(BT_PROPERTY_BDADDR, 2);
    EXPECT_EQ(BT_PROPERTY_UUIDS, 3);
    EXPECT_EQ(BT_PROPERTY_CLASS_OF_DEVICE, 4);
    EXPECT_EQ(BT_PROPERTY_ADAPTER_SCAN_MODE, 7);
    EXPECT_EQ(BT_PROPERTY_ADAPTER_BONDED_DEVICES, 8);
    EXPECT_EQ(BT_PROPERTY_ADAPTER_DISCOVERY_TIMEOUT, 9);
    EXPECT_EQ(BT_PROPERTY_ADAPTER_SAVED_DEVICES, 15);
    EXPECT_EQ(BT_PROPERTY_REMOTE_DEVICE_PRIORITY, 32);
    EXPECT_EQ(BT_PROPERTY_REMOTE_MANUFACTURER_CODE, 33);
    EXPECT_EQ(BT_PROPERTY_VERSION, 34);
    EXPECT_EQ(BT_PROPERTY_BONDED_DEVICE_NUM, 35);
    EXPECT_EQ(BT_PROPERTY_DISCOVERY_INTERVAL, 36);
}

TEST(BluetoothTypes, TheAdaptersTableHasItsMembersInOrder) {
    const size_t in_order[] = {
        offsetof(bluetooth_callback_t, state_changed_cb),
        offsetof(bluetooth_callback_t, bt_version_cb),
        offsetof(bluetooth_callback_t, device_found_cb),
        offsetof(bluetooth_callback_t, discovery_state_changed_cb),
        offsetof(bluetooth_callback_t, pin_request_cb),
        offsetof(bluetooth_callback_t, ssp_request_cb),
        offsetof(bluetooth_callback_t, bond_state_changed_cb),
        offsetof(bluetooth_callback_t, acl_state_changed_cb),
        offsetof(bluetooth_callback_t, app_gap_started_cb),
        offsetof(bluetooth_callback_t, connection_auth_req_cb),
        offsetof(bluetooth_callback_t, le_rx_test_cb),
        offsetof(bluetooth_callback_t, le_tx_test_cb),
        offsetof(bluetooth_callback_t, le_test_end_cb),
        offsetof(bluetooth_callback_t, read_bt_address_cb),
        offsetof(bluetooth_callback_t, read_rssi_cb),
        offsetof(bluetooth_callback_t, read_local_device_oob_data_cb),
        offsetof(bluetooth_callback_t, read_local_device_oob_data_ex_cb),
    };
    size_t expected = 0;
    for (const size_t offset : in_order) {
        EXPECT_EQ(offset, expected);
        expected += sizeof(void (*)());
    }
    EXPECT_EQ(sizeof(bluetooth_callback_t), expected);
}

TEST(BluetoothTypes, AnInternalMessageIsNaturallyAligned) {
    EXPECT_EQ(offsetof(ev_data_t, type), 0U);
    EXPECT_EQ(offsetof(ev_data_t, len), 1U);
    EXPECT_EQ(offsetof(ev_data_t, value), 2U);
    EXPECT_EQ(sizeof(ev_data_t::value), 64U);
    EXPECT_EQ(offsetof(ev_data_t, off), sizeof(size_t) == 8 ? 72U : 68U);
}

TEST(BluetoothTypes, AParsersTableHasItsMembersInOrder) {
    constexpr size_t kPointer = sizeof(void (*)());
    EXPECT_EQ(offsetof(parser_t, get_keyword), 0U);
    EXPECT_EQ(offsetof(parser_t, get_tag), kPointer);
    EXPECT_EQ(offsetof(parser_t, get_min_expected_length), 2 * kPointer);
    EXPECT_EQ(offsetof(parser_t, parse), 3 * kPointer);
    EXPECT_EQ(offsetof(event_parser_t, event_end_pos), 0U);
    EXPECT_EQ(offsetof(event_parser_t, num_of_parsers), sizeof(int));
    EXPECT_EQ(offsetof(event_parser_t, parser_list), 2 * sizeof(int));
    EXPECT_EQ(offsetof(event_parser_t, process_event), 2 * sizeof(int) + kPointer);
}

} // namespace
