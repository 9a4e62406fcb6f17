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
    EXPECT_EQ(BT_STATUS_SUCCESS, 0);
    EXPECT_EQ(BT_STATUS_FAIL, 1);
    EXPECT_EQ(BT_STATUS_NOT_READY, 2);
    EXPECT_EQ(BT_STATUS_NOMEM, 3);
    EXPECT_EQ(BT_STATUS_BUSY, 4);
    EXPECT_EQ(BT_STATUS_DONE, 5);
    EXPECT_EQ(BT_STATUS_UNSUPPORTED, 6);
    EXPECT_EQ(BT_STATUS_PARM_INVALID, 7);
    EXPECT_EQ(BT_STATUS_UNHANDLED, 8);
    EXPECT_EQ(BT_STATUS_AUTH_FAILURE, 9);
    EXPECT_EQ(BT_STATUS_RMT_DEV_DOWN, 10);
    EXPECT_EQ(BT_STATUS_AUTH_REJECTED, 11);
    EXPECT_EQ(BT_STATUS_JNI_ENVIRONMENT_ERROR, 12);
    EXPECT_EQ(BT_STATUS_JNI_THREAD_ATTACH_ERROR, 13);
    EXPECT_EQ(BT_STATUS_WAKELOCK_ERROR, 14);
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
    EXPECT_EQ(sizeof(bt_manufacturer_code_t), 4U);
    EXPECT_EQ(IPC_ID_SPP, 0);
    EXPECT_EQ(IPC_ID_AUDIO, 1);
    EXPECT_EQ(AUDIO_STREAM_TYPE_SCO, 0);
    EXPECT_EQ(AUDIO_STREAM_TYPE_A2DP, 1);
}

TEST(BluetoothTypes, TheAdaptersTableHasItsMembersInOrder) {
    constexpr size_t kPointer = sizeof(void (*)());
    EXPECT_EQ(offsetof(bluetooth_callback_t, state_changed_cb), 0U);
    EXPECT_EQ(offsetof(bluetooth_callback_t, bt_version_cb), kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, device_found_cb), 2 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, discovery_state_changed_cb), 3 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, pin_request_cb), 4 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, ssp_request_cb), 5 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, bond_state_changed_cb), 6 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, acl_state_changed_cb), 7 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, app_gap_started_cb), 8 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, connection_auth_req_cb), 9 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, le_rx_test_cb), 10 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, le_tx_test_cb), 11 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, le_test_end_cb), 12 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, read_bt_address_cb), 13 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, read_rssi_cb), 14 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, read_local_device_oob_data_cb), 15 * kPointer);
    EXPECT_EQ(offsetof(bluetooth_callback_t, read_local_device_oob_data_ex_cb), 16 * kPointer);
    EXPECT_EQ(sizeof(bluetooth_callback_t), 17 * kPointer);
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
