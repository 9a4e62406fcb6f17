// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Starting and stopping the remote control, in order and out of it.

#include "wire/avrcp_support.h"

namespace {

using avrcp::kDevice;
using avrcp::Record;

class AvrcpLifecycle : public avrcp::AvrcpWireTest {};

int& SecondTable() {
    static int calls = 0;
    return calls;
}

TEST_F(AvrcpLifecycle, NothingIsCalledAfterDone) {
    vym_avrcp_done();
    for (const auto& one : avrcp::AllEvents()) {
        Server().Send(wire::Event(one.event));
    }
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Record().Size(), 0U);
}

TEST_F(AvrcpLifecycle, DoneTwiceIsDoneOnce) {
    vym_avrcp_done();
    vym_avrcp_done();
    vym_avrcp_init(avrcp::RecordingTable());
    ExpectDelivered("RA4401", {"handle_passthrough_rsp(68, 1)"});
}

TEST_F(AvrcpLifecycle, AfterTwoInitsAnEventArrivesOnceInTheNewerTable) {
    static avrcp_callback_t table{};
    table.handle_passthrough_rsp_cb = [](uint8_t id, uint8_t) { SecondTable() += id; };
    SecondTable() = 0;
    vym_avrcp_init(&table);
    Handle({"RA4401"});
    EXPECT_EQ(SecondTable(), 0x44);
    EXPECT_EQ(Record().Size(), 0U);
    vym_avrcp_done();
    Handle({"RA4401"});
    EXPECT_EQ(SecondTable(), 0x44);
}

TEST_F(AvrcpLifecycle, ManyPairsOfInitAndDoneLeaveRoomForMore) {
    for (int i = 0; i < 40; ++i) {
        vym_avrcp_done();
        vym_avrcp_init(avrcp::RecordingTable());
        vym_avrcp_init(avrcp::RecordingTable());
    }
    ExpectDelivered("RA4401", {"handle_passthrough_rsp(68, 1)"});
}

TEST_F(AvrcpLifecycle, AMemberMayBeChangedInACallback) {
    static avrcp_callback_t table{};
    table = {};
    table.handle_play_status_changed_cb = [](bt_bdaddr_t, uint8_t) {
        table.handle_passthrough_rsp_cb = avrcp::RecordingTable()->handle_passthrough_rsp_cb;
    };
    vym_avrcp_init(&table);
    ExpectDelivered("RA4401", {});
    ExpectDelivered("RLA1B2C3D4E5F601", {});
    ExpectDelivered("RA4501", {"handle_passthrough_rsp(69, 1)"});
}

TEST_F(AvrcpLifecycle, CommandsNeedNoInit) {
    vym_avrcp_done();
    EXPECT_EQ(vym_avrcp_connect_bip(kDevice, 5), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RZAA1B2C3D4E5F600000005\r\n");
    EXPECT_EQ(vym_avrcp_stop(kDevice), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RCA1B2C3D4E5F64500\r\n");
    Server().ExpectCommand("AT#RCA1B2C3D4E5F64501\r\n");
}

TEST_F(AvrcpLifecycle, ACallbackMayCallCommands) {
    Record().SetHook([](const std::string&) { vym_avrcp_pause(kDevice); });
    ExpectDelivered("RLA1B2C3D4E5F601", {"handle_play_status_changed(A1B2C3D4E5F6, 1)"});
    Server().ExpectCommand("AT#RCA1B2C3D4E5F64600\r\n");
    Server().ExpectCommand("AT#RCA1B2C3D4E5F64601\r\n");
}

class AvrcpUnconnected : public support::QuietTest {};

TEST_F(AvrcpUnconnected, CommandsAreDroppedWithSuccess) {
    uint8_t uid[] = {1, 2};
    EXPECT_EQ(vym_avrcp_play(kDevice), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_avrcp_play_item(kDevice, 1, 2, uid), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_avrcp_send_abs_vol_rsp(kDevice, 1), BT_STATUS_SUCCESS);
}

TEST_F(AvrcpUnconnected, DoneWithoutInitDoesNothing) {
    vym_avrcp_done();
    EXPECT_EQ(Output().Out(), "");
}

} // namespace
