// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The remote control's table of events, and what the events that no application is told of bring.

#include "vym_avrcp_event.h"

#include "support/adapter_record.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using unit::Row;
using unit::Told;

constexpr Row kRows[] = {
    {"RA", "onHandlePassthroughRsp", 4},
    {"RB", "onHandleGroupNavigationRsp", 4},
    {"RC", "onConnectionStateChanged", 14},
    {"RD", "onGetRcFeatures", 14},
    {"RE", "onSetPlayerAppSettingRsp", 14},
    {"RF", "onHandlePlayerAppSetting", 16},
    {"RG", "onHandlePlayerAppSettingChanged", 16},
    {"RH", "onHandleSetAbsVolume", 16},
    {"RI", "onHandleRegisterNotificationAbsVol", 14},
    {"RJ", "onHandleTrackChanged", 16},
    {"RK", "onHandlePlayPositionChanged", 28},
    {"RL", "onHandlePlayStatusChanged", 14},
    {"RM", "onGetFolderItemsRsp", 22},
    {"RN", "onChangeFolderPathRsp", 22},
    {"RO", "onGetTotalNumberOfItemsRsp", 22},
    {"RP", "onPlayItemRsp", 14},
    {"RQ", "onGetPlayerItemsRsp", 30},
    {"RR", "onSetBrowsedPlayerRsp", 6},
    {"RS", "onSetAddressedPlayerRsp", 2},
    {"RWA", "onNowPlayingContentChanged", 14},
    {"RWB", "onAddressedPlayerChanged", 16},
    {"RWC", "onAvailablePlayerChanged", 14},
    {"RWE", "onConnectBipResult", 14},
    {"RWF", "onGetLinkedThumbnailResult", 14},
    {"RWG", "onGetImageResult", 14},
};

template <typename... Numbers>
void Tell(const char* name, Numbers... numbers) {
    Told() += name;
    ((Told() += " " + std::to_string(numbers)), ...);
    Told() += "\n";
}

// A table that tells of the events that end in the module.
avrcp_impl_callback_t* InnerTable() {
    static avrcp_impl_callback_t table{};
    table.handle_group_navigation_rsp_cb = [](uint8_t id, uint8_t state) { Tell("group", id, state); };
    table.set_player_app_setting_rsp_cb = [](bt_bdaddr_t from, uint8_t accepted) {
        Tell(("set " + support::AddressText(from)).c_str(), accepted);
    };
    table.get_player_items_rsp_cb = [](uint16_t num, uint16_t idx, uint16_t id, uint8_t type,
                                       uint16_t sub_type, uint8_t status, uint8_t mask_len,
                                       uint8_t* mask, uint16_t charset, uint16_t name) {
        Tell("player", num, idx, id, type, sub_type, status, mask_len, charset, name);
        Told() += mask == nullptr ? "null"
                                  : support::Escaped({reinterpret_cast<const char*>(mask), mask_len});
    };
    table.set_browsed_player_rsp_cb = [](uint16_t items, uint8_t depth) {
        Tell("browsed", items, depth);
    };
    table.set_addressed_player_rsp_cb = [](uint8_t status) { Tell("addressed", status); };
    return &table;
}

using AvrcpEventTableBase =
    unit::EventTableTest<create_avrcp_event_parser, destroy_avrcp_event_parser, InnerTable>;

class AvrcpEventTable : public AvrcpEventTableBase {};

TEST_F(AvrcpEventTable, ListsEachTagWithItsNameAndMinimum) {
    ExpectRows(kRows);
}

TEST_F(AvrcpEventTable, TellsTheModuleOfAnswersThatNoApplicationGets) {
    EXPECT_EQ(Offer("RB010F", 6), "group 1 15\n");
    EXPECT_EQ(Offer("REA1B2C3D4E5F602", 16), "set A1B2C3D4E5F6 2\n");
    EXPECT_EQ(Offer("RRA1B2C3D4E5F6041234006A05", 26), "browsed 4660 5\n");
    EXPECT_EQ(Offer("RS16", 4), "addressed 22\n");
}

TEST_F(AvrcpEventTable, ReadsAPlayersFieldsAroundItsMask) {
    EXPECT_EQ(Offer("RQ"
                    "0102"
                    "0304"
                    "0506"
                    "07"
                    "0809"
                    "0A"
                    "05"
                    "ab\xDC\xDD"
                    "c"
                    "0B0C"
                    "0D0E",
                    37),
              "player 258 772 1286 7 2057 10 4 2828 3342\nab\\0c");
    EXPECT_EQ(Offer("RQ"
                    "0102"
                    "0304"
                    "0506"
                    "07"
                    "0809"
                    "0A"
                    "00"
                    "0B0C"
                    "0D0E",
                    32),
              "player 258 772 1286 7 2057 10 0 2828 3342\nnull");
}

TEST_F(AvrcpEventTable, ReadsZeroBehindAMaskThatFillsTheEvent) {
    EXPECT_EQ(Offer("RQ"
                    "0102"
                    "0304"
                    "0506"
                    "07"
                    "0809"
                    "0A"
                    "08"
                    "abcdefgh",
                    32),
              "player 258 772 1286 7 2057 10 8 0 0\nabcdefgh");
    EXPECT_EQ(Offer("RQ"
                    "0102"
                    "0304"
                    "0506"
                    "07"
                    "0809"
                    "0A"
                    "FF"
                    "abcdefgh",
                    32),
              "");
}

TEST_F(AvrcpEventTable, ReadsZeroBehindTheEndOfABrowsedPlayer) {
    EXPECT_EQ(Offer("RRA1B2C3", 8), "browsed 0 0\n");
    EXPECT_EQ(Offer("RRA1B2C3D4E5F60412", 18), "browsed 18 0\n");
    EXPECT_EQ(Offer("RRA1B2C3D4E5F604", 16), "browsed 0 0\n");
    EXPECT_EQ(Offer("RRA1B2C3D4E5F6040012006A", 24), "browsed 18 0\n");
    EXPECT_EQ(Offer("RRA1B2", 6), "");
}

TEST_F(AvrcpEventTable, ConsumesWithoutATable) {
    destroy_avrcp_event_parser(parser_);
    parser_ = create_avrcp_event_parser(nullptr);
    EXPECT_EQ(Offer("RS16", 4), "");
    EXPECT_EQ(Offer("RJA1B2C3D4E5F60000", 18), "");
}

TEST_F(AvrcpEventTable, IsReachedThroughTheNewestParser) {
    event_parser_t* const older = parser_;
    parser_ = create_avrcp_event_parser(nullptr);
    std::string text = support::Event("RS16");
    EXPECT_EQ(older->process_event(older, reinterpret_cast<uint8_t*>(text.data()), 0, 5), 4);
    EXPECT_EQ(Told(), "");
    destroy_avrcp_event_parser(older);
}

TEST(AvrcpEventParser, OfNullIsDestroyedInSilence) {
    destroy_avrcp_event_parser(nullptr);
}

} // namespace
