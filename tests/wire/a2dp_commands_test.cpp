// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the music profile writes.

#include "wire/a2dp_profile.h"

namespace {

constexpr bt_bdaddr_t kDevice = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};

class A2dpCommands : public wire::ProfileConformance<wire::A2dpProfile> {};

TEST_F(A2dpCommands, EachCallWritesItsBytes) {
    const struct {
        bt_status_t (*call)();
        const char* command;
    } cases[] = {
        {[] { return vym_a2dp_connect(kDevice); }, "AT#AAA1B2C3D4E5F6\r\n"},
        {[] { return vym_a2dp_connect(bt_bdaddr_t{}); }, "AT#AA000000000000\r\n"},
        {[] { return vym_a2dp_disconnect(kDevice); }, "AT#ABA1B2C3D4E5F6\r\n"},
        {[] { return vym_a2dp_inform_audio_focus_state(0x1F); }, "AT#AC1F\r\n"},
        {[] { return vym_a2dp_inform_audio_trace_gain(0x1234); }, "AT#AD1234\r\n"},
        {[] { return vym_a2dp_inform_audio_trace_gain(0xFEDC); }, "AT#ADFEDC\r\n"},
        {[] { return vym_a2dp_switch_audio_hw(0xAB); }, "AT#AQAB\r\n"},
        {[] { return vym_a2dp_switch_audio_hw(0); }, "AT#AQ00\r\n"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS) << one.command;
        Server().ExpectCommand(one.command);
    }
    Server().ExpectNothingMore();
}

TEST_F(A2dpCommands, AreSentWithoutTheProfileAndDroppedWithoutAConnection) {
    vym_a2dp_done();
    EXPECT_EQ(vym_a2dp_switch_audio_hw(1), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#AQ01\r\n");
    Session().Stop();
    EXPECT_EQ(vym_a2dp_connect(kDevice), BT_STATUS_SUCCESS);
}

TEST_F(A2dpCommands, MayBeSentFromACallback) {
    wire::ProfileRecord().SetHook([](const std::string&) {
        vym_a2dp_connect(kDevice);
        vym_a2dp_disconnect(kDevice);
        vym_a2dp_switch_audio_hw(2);
    });
    Server().Send(support::Event("AA55443322110002"));
    ExpectEntries({"connection_state(554433221100, 2)"});
    Server().ExpectCommand("AT#AAA1B2C3D4E5F6\r\n");
    Server().ExpectCommand("AT#ABA1B2C3D4E5F6\r\n");
    Server().ExpectCommand("AT#AQ02\r\n");
}

} // namespace
