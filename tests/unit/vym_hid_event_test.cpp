// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The HID device's table of events, and what the host's requests bring, of which no application is
// told.

#include "vym_hid_event.h"

#include "support/record_text.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using unit::Row;
using unit::Told;

constexpr Row kRows[] = {
    {"DA", "onApplicationStateChanged", 20},
    {"DB", "onConnectionState", 20},
    {"DC", "onGetReport", 12},
    {"DE", "onSetReport", 8},
    {"DF", "onSetProtocol", 2},
    {"DG", "onIntrData", 6},
    {"DH", "onVirCableUnplug", 0},
};

template <class... Values>
void Tell(const char* name, const Values&... values) {
    Told() += support::CallText(name, values...);
}

hid_impl_callback_t* InnerTable() {
    static hid_impl_callback_t table = {
        [](bt_bdaddr_t address, int state) { Tell("application", address, state); },
        [](bt_bdaddr_t address, int state) { Tell("connection", address, state); },
        [](uint8_t type, uint8_t id, int size) { Tell("get_report", type, id, size); },
        [](uint8_t type, uint8_t id, uint16_t length, uint8_t* data) {
            Tell("set_report", type, id, length, support::BytesOf{data, length});
        },
        [](uint8_t protocol) { Tell("set_protocol", protocol); },
        [](uint8_t id, uint16_t length, uint8_t* data) {
            Tell("intr_data", id, length, support::BytesOf{data, length});
        },
        [] { Tell("unplug"); },
    };
    return &table;
}

using HidEventTableBase =
    unit::EventTableTest<create_hid_event_parser, destroy_hid_event_parser, InnerTable>;

class HidEventTable : public HidEventTableBase {};

TEST_F(HidEventTable, ListsEachTagWithItsNameAndMinimum) {
    ExpectRows(kRows);
}

TEST_F(HidEventTable, TellsTheModuleOfStates) {
    EXPECT_EQ(Offer("DAA1B2C3D4E5F612345678", 22), "application(A1B2C3D4E5F6, 305419896)");
    EXPECT_EQ(Offer("DBA1B2C3D4E5F6FFFFFFFF", 22), "connection(A1B2C3D4E5F6, 2147483647)");
}

TEST_F(HidEventTable, TellsTheModuleWhatTheHostAsksFor) {
    EXPECT_EQ(Offer("DC01AB00001234", 14), "get_report(1, 171, 4660)");
    EXPECT_EQ(Offer("DE01AB0003abc", 13), "set_report(1, 171, 3, 616263)");
    EXPECT_EQ(Offer("DE01AB0005a\xDC\xDD\xDC\xDE", 15), "set_report(1, 171, 3, 61000D)");
    EXPECT_EQ(Offer("DE01AB0000", 10), "set_report(1, 171, 0, null)");
    EXPECT_EQ(Offer("DE01AB0001\xDC", 11), "set_report(1, 171, 0, )");
    EXPECT_EQ(Offer("DFFE", 4), "set_protocol(254)");
    EXPECT_EQ(Offer("DG070002\xDC\xDC", 10), "intr_data(7, 1, DC)");
    EXPECT_EQ(Offer("DG070001\xDC", 9), "intr_data(7, 0, )");
    EXPECT_EQ(Offer("DG070000", 8), "intr_data(7, 0, null)");
    EXPECT_EQ(Offer("DH", 2), "unplug()");
}

TEST_F(HidEventTable, TellsOncePerEventWhateverFollows) {
    Offer("DH"
          "DF01",
          6);
    EXPECT_EQ(Told(), "unplug()");
    Offer("DE01AB0001x"
          "DH",
          13);
    EXPECT_EQ(Told(), "set_report(1, 171, 1, 78)");
}

TEST_F(HidEventTable, TellsNothingOfDataThatIsNotThere) {
    std::string event = "01AB0004abc";
    EXPECT_LT(parser_->parser_list[3].parse(reinterpret_cast<uint8_t*>(event.data()), 0), 0);
    event = "01FFFFabc";
    EXPECT_LT(parser_->parser_list[5].parse(reinterpret_cast<uint8_t*>(event.data()), 0), 0);
    EXPECT_EQ(Told(), "");
}

TEST_F(HidEventTable, DoesNotKnowDd) {
    std::string text = support::Event("DD010203");
    EXPECT_LE(parser_->process_event(parser_, reinterpret_cast<uint8_t*>(text.data()), 0,
                                     static_cast<int>(text.size())),
              0);
    EXPECT_EQ(Told(), "");
}

TEST_F(HidEventTable, ConsumesWithoutATable) {
    destroy_hid_event_parser(parser_);
    parser_ = create_hid_event_parser(nullptr);
    EXPECT_EQ(Offer("DH", 2), "");
    EXPECT_EQ(Offer("DG070001x", 9), "");
}

TEST(HidEventParser, OfNullIsDestroyedInSilence) {
    destroy_hid_event_parser(nullptr);
}

TEST(HidTables, TheApplicationHasTwoMembersAndTheEventsSeven) {
    constexpr size_t kSlot = sizeof(void (*)());
    EXPECT_EQ(sizeof(hid_callback_t), 2 * kSlot);
    EXPECT_EQ(offsetof(hid_callback_t, application_state_changed_cb), 0U);
    EXPECT_EQ(offsetof(hid_callback_t, hid_connection_state_cb), kSlot);
    EXPECT_EQ(sizeof(hid_impl_callback_t), 7 * kSlot);
}

} // namespace
