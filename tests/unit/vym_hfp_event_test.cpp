// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The hands-free table of events, where its decoders stop, and what applications have compiled in.

#include "vym_hfp_event.h"

#include "support/record_text.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <iterator>
#include <type_traits>

namespace {

using unit::Logged;
using unit::Row;
using unit::Told;

constexpr size_t kSlot = sizeof(void (*)());

constexpr Row kRows[] = {
    {"HA", "onConnectionState", 30},
    {"HB", "onAudioState", 14},
    {"HC", "onVrCmd", 2},
    {"HD", "onNetworkState", 2},
    {"HE", "onNetworkRoaming", 2},
    {"HF", "onNetworkSignal", 4},
    {"HG", "onBatteryLevel", 4},
    {"HH", "onCurrentOperator", 0},
    {"HI", "onCall", 2},
    {"HJ", "onCallsetup", 2},
    {"HK", "onCallheld", 2},
    {"HL", "onRespAndHold", 2},
    {"HM", "onClip", 0},
    {"HN", "onCallWaiting", 0},
    {"HO", "onCurrentCalls", 8},
    {"HP", "onVolumeChange", 6},
    {"HQ", "onCmdComplete", 4},
    {"HR", "onSubscriberInfo", 2},
    {"HS", "onInBandRingTone", 2},
    {"HT", "onLastVoiceTagNumber", 0},
    {"HU", "onRingIndication", 0},
    {"HV", "onAgModelName", 0},
    {"HW", "onAgManufacturerId", 0},
    {"HX", "onHfpStateChange", 2},
    {"HZ", "onHfpIosAplsiri", 2},
};

hfp_impl_callback_t* InnerTable() {
    static hfp_impl_callback_t table{};
    table.call_cb = [](uint8_t call) { Told() += support::CallText("call", call); };
    table.callsetup_cb = [](uint8_t setup) { Told() += support::CallText("callsetup", setup); };
    table.callheld_cb = [](uint8_t held) { Told() += support::CallText("callheld", held); };
    table.clip_cb = [](char* number) { Told() += support::CallText("clip", number); };
    table.current_calls_cb = [](uint8_t idx, uint8_t direction, uint8_t state, uint8_t mpty,
                                char* number) {
        Told() += support::CallText("line", idx, direction, state, mpty, number);
    };
    table.cmd_complete_cb = [](uint8_t type, uint8_t cme) {
        Told() += support::CallText("complete", type, cme);
    };
    table.hfp_state_change_cb = [](uint8_t state) { Told() += support::CallText("state", state); };
    return &table;
}

using HfpEventTableBase =
    unit::EventTableTest<create_hfp_event_parser, destroy_hfp_event_parser, InnerTable>;

class HfpEventTable : public HfpEventTableBase {
protected:
    std::string Offer(const std::string& event) {
        return HfpEventTableBase::Offer(event, static_cast<int>(event.size()));
    }

    // Where the decoder of a row says that its fields end, of a text that begins behind the tag.
    int Parse(int row, std::string text) {
        return parser_->parser_list[row].parse(reinterpret_cast<uint8_t*>(text.data()), 0);
    }
};

TEST_F(HfpEventTable, ListsEachTagWithItsNameAndMinimum) {
    ExpectRows(kRows);
}

TEST_F(HfpEventTable, TellsTheModuleOfCallsAndIndicators) {
    EXPECT_EQ(Offer("HI01"), "call(1)");
    EXPECT_EQ(Offer("HJ02"), "callsetup(2)");
    EXPECT_EQ(Offer("HKFF"), "callheld(255)");
    EXPECT_EQ(Offer("HO010203045551234"), "line(1, 2, 3, 4, \"5551234\")");
    EXPECT_EQ(Offer("HQ0115"), "complete(1, 21)");
    EXPECT_EQ(Offer("HX0A"), "state(10)");
}

TEST_F(HfpEventTable, StopsBehindTheFixedFieldsAndLeavesTexts) {
    EXPECT_EQ(Parse(0, "0100000003000001FF554433221100"), 30);
    EXPECT_EQ(Parse(7, "Operator"), 0);
    EXPECT_EQ(Parse(12, "+4930"), 0);
    EXPECT_EQ(Parse(14, "010004005551234"), 8);
    EXPECT_EQ(Parse(15, "01000F"), 6);
    EXPECT_EQ(Parse(17, "3C+49301"), 2);
    EXPECT_EQ(Parse(20, ""), 0);
    EXPECT_EQ(Parse(24, "01"), 2);
}

// Like a text, the state counts as not read: the framework skips it to the event's end.
TEST_F(HfpEventTable, ReadsAStateOfThePhoneWithoutMovingOn) {
    EXPECT_EQ(Parse(23, "06"), 0);
    EXPECT_EQ(Told(), "state(6)");
    EXPECT_EQ(Offer("HX06"), "state(6)");
    EXPECT_EQ(Logged(), "onHfpStateChange: Still 2 characters not processed!!");
    EXPECT_EQ(Offer("HM123"), "clip(\"123\")");
    EXPECT_EQ(Logged(), "onClip: Still 3 characters not processed!!");
}

TEST_F(HfpEventTable, SaysWhyAnEventThatIsTooShortIsDropped) {
    EXPECT_EQ(Offer("HP01000"), "");
    EXPECT_EQ(Logged(), "onVolumeChange: Invalid parameters!\n");
    EXPECT_EQ(OfferBytes("HI0"), -1);
    EXPECT_EQ(Logged(), "onCall: Not enough information!\n");
}

TEST_F(HfpEventTable, LeavesOtherTagsAlone) {
    for (const char* event : {"HY01", "H", "hI01", " HI01"}) {
        EXPECT_EQ(OfferBytes(support::Event(event)), -1) << event;
    }
}

TEST_F(HfpEventTable, ConsumesWithoutATable) {
    destroy_hfp_event_parser(parser_);
    parser_ = create_hfp_event_parser(nullptr);
    ASSERT_NE(parser_, nullptr);
    EXPECT_EQ(Offer("HI01"), "");
    EXPECT_EQ(Offer("HM123"), "");
}

TEST(HfpEventParser, DestroyedIsNoLongerCalledThrough) {
    Told().clear();
    event_parser_t* parser = create_hfp_event_parser(InnerTable());
    ASSERT_NE(parser, nullptr);
    const parser_t call = parser->parser_list[8];
    uint8_t text[] = "HI01";
    EXPECT_EQ(call.parse(text, 2), 4);
    EXPECT_EQ(Told(), "call(1)");
    destroy_hfp_event_parser(parser);
    EXPECT_EQ(call.parse(text, 2), 4);
    EXPECT_EQ(Told(), "call(1)");
    destroy_hfp_event_parser(nullptr);
}

TEST(HfpTypes, ACallHasNoPadding) {
    EXPECT_EQ(offsetof(bluetooth_call_t, idx), 0U);
    EXPECT_EQ(offsetof(bluetooth_call_t, direction), 1U);
    EXPECT_EQ(offsetof(bluetooth_call_t, state), 2U);
    EXPECT_EQ(offsetof(bluetooth_call_t, mpty), 3U);
    EXPECT_EQ(offsetof(bluetooth_call_t, number), 4U);
    EXPECT_EQ(sizeof(bluetooth_call_t), 36U);
    EXPECT_TRUE(std::is_trivially_copyable_v<bluetooth_call_t>);
}

TEST(HfpTypes, FlagsAndStatesHaveTheirValues) {
    EXPECT_EQ(CALL_ACCEPT_NONE, 0);
    EXPECT_EQ(CALL_ACCEPT_HOLD, 1);
    EXPECT_EQ(CALL_ACCEPT_TERMINATE, 2);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<accept_flag_t>, int>));
    EXPECT_EQ(CALL_STATE_ACTIVE, 0);
    EXPECT_EQ(CALL_STATE_HELD, 1);
    EXPECT_EQ(CALL_STATE_DIALING, 2);
    EXPECT_EQ(CALL_STATE_ALERTING, 3);
    EXPECT_EQ(CALL_STATE_INCOMING, 4);
    EXPECT_EQ(CALL_STATE_WAITING, 5);
    EXPECT_EQ(CALL_STATE_HELD_BY_RESP_HOLD, 6);
    EXPECT_EQ(CALL_STATE_TERMINATED, 7);
}

TEST(HfpTypes, TheApplicationsTableHasItsMembersInOrder) {
    const size_t offsets[] = {
        offsetof(hfp_callback_t, connection_state_cb),
        offsetof(hfp_callback_t, audio_state_cb),
        offsetof(hfp_callback_t, vr_cmd_cb),
        offsetof(hfp_callback_t, network_state_cb),
        offsetof(hfp_callback_t, network_roaming_cb),
        offsetof(hfp_callback_t, network_signal_cb),
        offsetof(hfp_callback_t, battery_level_cb),
        offsetof(hfp_callback_t, current_operator_cb),
        offsetof(hfp_callback_t, resp_and_hold_cb),
        offsetof(hfp_callback_t, clip_cb),
        offsetof(hfp_callback_t, call_waiting_cb),
        offsetof(hfp_callback_t, current_calls_cb),
        offsetof(hfp_callback_t, volume_change_cb),
        offsetof(hfp_callback_t, subscriber_info_cb),
        offsetof(hfp_callback_t, in_band_ring_tone_cb),
        offsetof(hfp_callback_t, last_voice_tag_number_cb),
        offsetof(hfp_callback_t, ring_indication_cb),
        offsetof(hfp_callback_t, ag_model_name_cb),
        offsetof(hfp_callback_t, ag_manufacturer_id_cb),
        offsetof(hfp_callback_t, call_action_complete_cb),
        offsetof(hfp_callback_t, standby_indication_cb),
        offsetof(hfp_callback_t, ios_aplsiri_cb),
        offsetof(hfp_callback_t, current_call_num_cb),
    };
    EXPECT_EQ(std::size(offsets), 23U);
    for (size_t i = 0; i < std::size(offsets); ++i) {
        EXPECT_EQ(offsets[i], i * kSlot) << i;
    }
    EXPECT_EQ(sizeof(hfp_callback_t), 23 * kSlot);
    EXPECT_EQ(sizeof(hfp_impl_callback_t), 25 * kSlot);
}

} // namespace
