// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT client's table of events, where its decoders stop, and what the events that no application
// is told of bring.

#include "vym_gatt_client_event.h"

#include "support/text.h"
#include "unit/event_table.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using unit::Logged;
using unit::Row;
using unit::Told;

constexpr Row kRows[] = {
    {"KA", "onClientRegistered", 36},
    {"KB", "onScanResult", 18},
    {"KC", "onScanAddressName", 16},
    {"KD", "onNotify", 96},
    {"KE", "onConnected", 20},
    {"KF", "onDisconnected", 20},
    {"KG", "onSearchCompleted", 6},
    {"KH", "onSearchResult", 42},
    {"KI", "onGetCharacteristic", 88},
    {"KJ", "onGetDescriptor", 116},
    {"KK", "onGetIncludedService", 82},
    {"KL", "onRegisterForNotifications", 82},
    {"KM", "onReadCharacteristic", 86},
    {"KN", "onWriteCharacteristic", 80},
    {"KO", "onExecuteCompleted", 6},
    {"KP", "onReadDescriptor", 122},
    {"KQ", "onWriteDescriptor", 116},
    {"KR", "onReadRemoteRssi", 18},
    {"KS", "onReceiveDataFromCentral", 20},
    {"KT", "onConfigureMtu", 18},
    {"KZA", "onAdvertiseCallback", 4},
    {"KZB", "onScanFilterConfig", 28},
    {"KZC", "onScanFilterParamsConfigured", 20},
    {"KZD", "onScanFilterEnableDisabled", 12},
    {"KZE", "onAdvertiseInstanceEnabled", 4},
    {"KZF", "onAdvertiseDataUpdated", 4},
    {"KZG", "onAdvertiseDataSet", 4},
    {"KZH", "onAdvertiseInstanceDisabled", 4},
    {"KZI", "onClientCongestion", 10},
    {"KZJ", "onBatchScanStorageConfigured", 4},
    {"KZK", "onBatchScanStartStopped", 12},
    {"KZL", "onBatchScanReports", 24},
    {"KZM", "onBatchScanThresholdCrossed", 2},
    {"KZN", "onScanParamSetupCompleted", 4},
};

template <typename... Numbers>
void Tell(const char* name, Numbers... numbers) {
    Told() += name;
    ((Told() += " " + std::to_string(numbers)), ...);
}

gatt_client_impl_callback_t* InnerTable() {
    static gatt_client_impl_callback_t table;
    table = {};
    table.client_registered_cb = [](uint8_t status, uint8_t client, bt_uuid_t uuid) {
        Tell("registered", status, client, uuid.uu[0], uuid.uu[1], uuid.uu[15]);
    };
    table.get_characteristic_cb = [](uint16_t conn, uint8_t, uint8_t, uint16_t, bt_uuid_t, uint16_t,
                                     bt_uuid_t,
                                     int properties) { Tell("characteristic", conn, properties); };
    table.scan_filter_config_cb = [](int action, uint8_t client, uint8_t status, int type, int space) {
        Tell("filter config", action, client, status, type, space);
    };
    table.scan_filter_params_configured_cb = [](int action, uint8_t client, uint8_t status, int space) {
        Tell("filter params", action, client, status, space);
    };
    table.scan_filter_enable_disabled_cb = [](int action, uint8_t client, uint8_t status) {
        Tell("filter enabled", action, client, status);
    };
    table.advertise_instance_enabled_cb = [](uint8_t client, uint8_t status) {
        Tell("enabled", client, status);
    };
    table.advertise_data_updated_cb = [](uint8_t client, uint8_t status) {
        Tell("updated", client, status);
    };
    table.advertise_data_set_cb = [](uint8_t client, uint8_t status) { Tell("set", client, status); };
    table.advertise_instance_disabled_cb = [](uint8_t client, uint8_t status) {
        Tell("disabled", client, status);
    };
    table.client_congestion_cb = [](int conn, uint8_t congested) {
        Tell("congestion", conn, congested);
    };
    table.batch_scan_storage_configured_cb = [](uint8_t client, uint8_t status) {
        Tell("storage", client, status);
    };
    table.batch_scan_start_stopped_cb = [](int action, uint8_t client, uint8_t status) {
        Tell("started", action, client, status);
    };
    table.batch_scan_reports_cb = [](uint8_t client, uint8_t status, int format, int records,
                                     uint16_t length, uint8_t* data) {
        Tell("reports", client, status, format, records, length);
        Told() += data == nullptr
                      ? " null"
                      : " " + support::Escaped({reinterpret_cast<const char*>(data), length});
    };
    table.batch_scan_threshold_crossed_cb = [](uint8_t client) { Tell("threshold", client); };
    table.scan_param_setup_completed_cb = [](uint8_t client, uint8_t status) {
        Tell("scan params", client, status);
    };
    return &table;
}

using GattClientEventTableBase =
    unit::EventTableTest<create_gatt_client_event_parser, destroy_gatt_client_event_parser, InnerTable>;

class GattClientEventTable : public GattClientEventTableBase {
protected:
    void ExpectTold(const std::string& event, const std::string& told) {
        EXPECT_EQ(Offer(event, static_cast<int>(event.size())), told);
        EXPECT_EQ(Logged(), "") << event;
    }
};

const std::string kUuid = "00112233445566778899AABBCCDDEEFF";
const std::string kCharacteristic = "KI1234"
                                    "05"
                                    "01"
                                    "0203" +
                                    kUuid + "0405" + kUuid;

TEST_F(GattClientEventTable, ListsEachTagWithItsNameAndMinimum) {
    ExpectRows(kRows);
}

TEST_F(GattClientEventTable, TellsTheModuleWhatNoApplicationHears) {
    ExpectTold("KA0105" + kUuid, "registered 1 5 0 17 255");
    ExpectTold("KZB0000000105020000000300000004", "filter config 1 5 2 3 4");
    ExpectTold("KZC00000001050200000003", "filter params 1 5 2 3");
    ExpectTold("KZD000000010502", "filter enabled 1 5 2");
    ExpectTold("KZE0501", "enabled 5 1");
    ExpectTold("KZF0602", "updated 6 2");
    ExpectTold("KZG0703", "set 7 3");
    ExpectTold("KZH0804", "disabled 8 4");
    ExpectTold("KZI0000123401", "congestion 4660 1");
    ExpectTold("KZJ0905", "storage 9 5");
    ExpectTold("KZK000000010502", "started 1 5 2");
    ExpectTold("KZL050600000001000000020003a\xDC\xDD", "reports 5 6 1 2 2 a\\0");
    ExpectTold("KZL050600000001000000020000", "reports 5 6 1 2 0 null");
    ExpectTold("KZL050600000001000000020001\xDC", "reports 5 6 1 2 0 ");
    ExpectTold("KZM0A", "threshold 10");
    ExpectTold("KZN0B06", "scan params 11 6");
}

TEST_F(GattClientEventTable, ReadsAllOfACharacteristicsPropertiesAndCountsTwoCharacters) {
    EXPECT_EQ(OfferBytes(support::Event(kCharacteristic + "12345678")), 90);
    EXPECT_EQ(Told(), "characteristic 4660 305419896");
    EXPECT_EQ(Logged(), "onGetCharacteristic: Still 6 characters not processed!!");
    EXPECT_EQ(OfferBytes(support::Event(kCharacteristic + "12345678abc")), 93);
    EXPECT_EQ(Logged(), "onGetCharacteristic: Still 9 characters not processed!!");
    EXPECT_EQ(OfferBytes(kCharacteristic + "12345678"), 84);
    EXPECT_EQ(Told(), "characteristic 4660 305419896");
    EXPECT_EQ(OfferBytes(kCharacteristic + "1234567"), -1);
    EXPECT_EQ(Told(), "");
}

TEST_F(GattClientEventTable, SaysWhatItSkipsOfOtherEventsToo) {
    EXPECT_EQ(OfferBytes(support::Event("KZM0Aabc")), 8);
    EXPECT_EQ(Logged(), "onBatchScanThresholdCrossed: Still 3 characters not processed!!");
}

TEST_F(GattClientEventTable, LooksAtNothingBehindTheNul) {
    const std::string next = support::Event("KZL050600000001000000020003abc");
    EXPECT_EQ(OfferBytes(support::Event("KZL050600000001000000020003ab") + next), 29);
    EXPECT_EQ(Told(), "");
    EXPECT_EQ(OfferBytes(support::Event("KZL05060000000100000002FFFF") + next), 27);
    EXPECT_EQ(Told(), "");
    EXPECT_EQ(OfferBytes(support::Event("KZM0") + next), 4);
    EXPECT_EQ(Told(), "");
}

TEST_F(GattClientEventTable, ConsumesWithoutATable) {
    destroy_gatt_client_event_parser(parser_);
    parser_ = create_gatt_client_event_parser(nullptr);
    ASSERT_NE(parser_, nullptr);
    ExpectTold("KZM0A", "");
    ExpectTold("KZL050600000001000000020003abc", "");
}

TEST_F(GattClientEventTable, LeavesOtherTagsAlone) {
    for (const char* event : {"KU01", "KX01", "KZ", "KZO01", "K", "kA", " KZM0A"}) {
        EXPECT_EQ(OfferBytes(support::Event(event)), -1) << event;
    }
}

TEST(GattClientEventParser, DestroyedIsNoLongerCalledThrough) {
    Told().clear();
    event_parser_t* parser = create_gatt_client_event_parser(InnerTable());
    ASSERT_NE(parser, nullptr);
    const parser_t threshold = parser->parser_list[32];
    uint8_t text[] = "KZM0A";
    EXPECT_EQ(threshold.parse(text, 3), 5);
    EXPECT_EQ(Told(), "threshold 10");
    destroy_gatt_client_event_parser(parser);
    EXPECT_EQ(threshold.parse(text, 3), 5);
    EXPECT_EQ(Told(), "threshold 10");
    destroy_gatt_client_event_parser(nullptr);
}

// The application's table has no registration in front: the slots behind it are one lower.
TEST(GattClientHandlers, AreAllThere) {
    const gatt_client_impl_callback_t* handlers = vym_gatt_client_handlers();
    void (*slots[34])();
    static_assert(sizeof *handlers == sizeof slots);
    static_assert(sizeof(gatt_client_callback_t) == 20 * sizeof slots[0]);
    memcpy(slots, handlers, sizeof slots);
    for (int i = 0; i < 34; ++i) {
        EXPECT_NE(slots[i], nullptr) << i;
    }
}

TEST(GattUuid, OnTheBaseIsFilledAsItIsWritten) {
    const bt_uuid_t uuid = GATT_UUID_FROM_16(0x2902);
    constexpr uint8_t kExpected[] = {0x00, 0x00, 0x29, 0x02, 0x00, 0x00, 0x10, 0x00,
                                     0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB};
    EXPECT_EQ(memcmp(uuid.uu, kExpected, sizeof kExpected), 0);
}

} // namespace
