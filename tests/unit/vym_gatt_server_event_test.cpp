// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server's table of events, and the one event that no application is told of.

#include "vym_gatt_server_event.h"

#include "support/record_text.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <gtest/gtest.h>

namespace {

using unit::Row;
using unit::Told;

constexpr Row kRows[] = {
    {"JA", "onServerRegistered", 36},    {"JB", "onClientConnected", 20},
    {"JC", "onServiceAdded", 46},        {"JD", "onIncludedServiceAdded", 12},
    {"JE", "onCharacteristicAdded", 44}, {"JF", "onDescriptorAdded", 44},
    {"JG", "onServiceStarted", 8},       {"JH", "onServiceStopped", 8},
    {"JI", "onServiceDeleted", 8},       {"JJ", "onResponseSendCompleted", 6},
    {"JK", "onAttributeRead", 30},       {"JL", "onAttributeWrite", 36},
    {"JM", "onExecuteWrite", 22},        {"JN", "onNotificationSent", 6},
    {"JO", "onServerCongestion", 6},     {"JP", "onMtuChanged", 8},
};

gatt_server_impl_callback_t* InnerTable() {
    static gatt_server_impl_callback_t table{};
    table.server_congestion_cb = [](uint16_t conn_id, uint8_t congested) {
        Told() += support::CallText("congestion", conn_id, congested);
    };
    table.mtu_changed_cb = [](uint16_t conn_id, uint16_t mtu) {
        Told() += support::CallText("mtu", conn_id, mtu);
    };
    table.attribute_write_cb = [](bt_bdaddr_t, uint16_t, uint16_t, uint16_t, uint16_t, uint8_t, uint8_t,
                                  uint16_t length, uint8_t* value) {
        Told() += support::CallText("write", length, support::BytesOf{value, length});
    };
    return &table;
}

using GattServerEventTableBase =
    unit::EventTableTest<create_gatt_server_event_parser, destroy_gatt_server_event_parser, InnerTable>;

class GattServerEventTable : public GattServerEventTableBase {};

TEST_F(GattServerEventTable, ListsEachTagWithItsNameAndMinimum) {
    ExpectRows(kRows);
}

TEST_F(GattServerEventTable, TellsTheModuleOfCongestion) {
    EXPECT_EQ(Offer("JO123401", 8), "congestion(4660, 1)");
    EXPECT_EQ(Offer("JP12345678", 10), "mtu(4660, 22136)");
}

TEST_F(GattServerEventTable, ConsumesExactlyTheFieldsAndTheValue) {
    std::string text = "A1B2C3D4E5F600010002000900000100"
                       "0003abc"
                       "JP00010017";
    auto* const buffer = reinterpret_cast<uint8_t*>(text.data());
    EXPECT_EQ(parser_->parser_list[11].parse(buffer, 0), 39);
    EXPECT_EQ(Told(), "write(3, 616263)");
    EXPECT_EQ(parser_->parser_list[15].parse(buffer, 41), 49);
    EXPECT_EQ(Told(), "write(3, 616263)mtu(1, 23)");
}

TEST_F(GattServerEventTable, RefusesAValueThatIsNotThere) {
    std::string text = "A1B2C3D4E5F600010002000900000100"
                       "0004abc";
    EXPECT_LT(parser_->parser_list[11].parse(reinterpret_cast<uint8_t*>(text.data()), 0), 0);
    EXPECT_EQ(Told(), "");
}

TEST_F(GattServerEventTable, ConsumesWithoutATable) {
    destroy_gatt_server_event_parser(parser_);
    parser_ = create_gatt_server_event_parser(nullptr);
    EXPECT_EQ(Offer("JO123401", 8), "");
    EXPECT_EQ(Offer("JLA1B2C3D4E5F6000100020009000001000001x", 39), "");
}

TEST(GattServerEventParser, OfNullIsDestroyedInSilence) {
    destroy_gatt_server_event_parser(nullptr);
}

} // namespace
