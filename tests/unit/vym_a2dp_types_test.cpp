// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What applications have compiled in, and the table of the music profile's events.

#include "vym_a2dp_event.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

TEST(A2dpTypes, TheTableHasItsMembersInOrder) {
    constexpr size_t kPointer = sizeof(void (*)());
    EXPECT_EQ(offsetof(a2dp_callback_t, connection_state_changed_cb), 0U);
    EXPECT_EQ(offsetof(a2dp_callback_t, audio_state_changed_cb), kPointer);
    EXPECT_EQ(offsetof(a2dp_callback_t, audio_config_changed_cb), 2 * kPointer);
    EXPECT_EQ(offsetof(a2dp_callback_t, audio_stream_cb), 3 * kPointer);
    EXPECT_EQ(offsetof(a2dp_callback_t, a2dp_devices_event_cb), 4 * kPointer);
    EXPECT_EQ(sizeof(a2dp_callback_t), 5 * kPointer);
}

TEST(A2dpTypes, TheParserBeginsWithTheCommonPart) {
    EXPECT_EQ(offsetof(a2dp_event_parser_t, base), 0U);
    EXPECT_EQ(offsetof(a2dp_event_parser_t, cbk), sizeof(event_parser_t));
}

TEST(A2dpParser, HasFourEventsInTheirOrder) {
    constexpr struct {
        const char* keyword;
        const char* name;
        int minimum;
    } kExpected[] = {
        {"AA", "onConnectionStateChanged", 14},
        {"AB", "onAudioStateChanged", 14},
        {"AC", "onAudioConfigChanged", 22},
        {"AE", "onA2dpDevicesEvent", 16},
    };
    event_parser_t* parser = create_a2dp_event_parser(nullptr);
    ASSERT_NE(parser, nullptr);
    ASSERT_EQ(parser->num_of_parsers, 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(parser->parser_list[i].get_keyword(), kExpected[i].keyword);
        EXPECT_STREQ(parser->parser_list[i].get_tag(), kExpected[i].name);
        EXPECT_EQ(parser->parser_list[i].get_min_expected_length(), kExpected[i].minimum);
    }
    destroy_a2dp_event_parser(parser);
}

TEST(A2dpParser, ReturnsWhereItsFieldsEndAndNeedsNoTable) {
    event_parser_t* parser = create_a2dp_event_parser(nullptr);
    ASSERT_NE(parser, nullptr);
    uint8_t config[] = "AC5544332211000000AC4402surplus";
    EXPECT_EQ(parser->parser_list[2].parse(config, 2), 24);
    uint8_t event[] = "AE0000000100000003surplus";
    EXPECT_EQ(parser->parser_list[3].parse(event, 2), 18);
    destroy_a2dp_event_parser(parser);
    destroy_a2dp_event_parser(nullptr);
}

TEST(A2dpParser, DestroyedIsNoLongerCalledThrough) {
    static int calls;
    calls = 0;
    a2dp_callback_t table = {};
    table.a2dp_devices_event_cb = [](int, int) { ++calls; };
    event_parser_t* parser = create_a2dp_event_parser(&table);
    ASSERT_NE(parser, nullptr);
    const parser_t devices_event = parser->parser_list[3];
    uint8_t event[] = "AE0000000100000003";
    EXPECT_EQ(devices_event.parse(event, 2), 18);
    EXPECT_EQ(calls, 1);
    destroy_a2dp_event_parser(parser);
    EXPECT_EQ(devices_event.parse(event, 2), 18);
    EXPECT_EQ(calls, 1);
}

} // namespace
