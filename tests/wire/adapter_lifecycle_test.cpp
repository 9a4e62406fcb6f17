// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Starting and stopping the adapter, in order and out of order.

#include "wire/adapter_support.h"

#include "vym_sdk.h"

namespace {

using wire::AdapterProperties;
using wire::kDevice;
using wire::Record;

// Every call of the adapter that waits or reads its state.
void CallAllGetters() {
    bt_remote_device_t device{};
    int size = 1;
    vym_bluetooth_get_state();
    EXPECT_NE(vym_bluetooth_get_version(), nullptr);
    EXPECT_NE(vym_bluetooth_get_name(), nullptr);
    EXPECT_NE(vym_bluetooth_get_address(), nullptr);
    vym_bluetooth_get_scan_mode();
    vym_bluetooth_get_class();
    vym_bluetooth_get_number_of_bonded_devices();
    EXPECT_EQ(vym_bluetooth_get_bonded_devices(&device, &size), BT_STATUS_SUCCESS);
    EXPECT_EQ(size, 0);
    vym_bluetooth_get_device_priority(kDevice);
    vym_bluetooth_get_manufacturer_code(kDevice);
    vym_bluetooth_get_devices_uuids(kDevice);
}

class AdapterOutsideASession : public support::QuietTest {};

TEST_F(AdapterOutsideASession, GettersAreHarmless) {
    CallAllGetters();
}

TEST_F(AdapterOutsideASession, CommandsAreDroppedAndSucceed) {
    EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_create_bond(kDevice), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_set_discoverable_timeout(1), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_set_name(bt_bdname_t{}), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_set_scan_mode(BT_SCAN_MODE_NONE), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_get_connection_state(kDevice), BT_ACL_STATE_CONNECTED)
        << "0 says nothing of the link";
}

TEST_F(AdapterOutsideASession, DoneWithoutInitIsHarmless) {
    vym_bluetooth_done();
    vym_bluetooth_done();
}

TEST_F(AdapterOutsideASession, InitAndDoneInPairsLeaveNothing) {
    for (int i = 0; i < 20; ++i) {
        vym_bluetooth_init(support::AdapterRecordingTable());
        vym_bluetooth_done();
    }
}

class StartedSession : public support::SessionTest {};

TEST_F(StartedSession, WithoutTheAdapterGettersAreHarmless) {
    CallAllGetters();
}

TEST_F(StartedSession, WithoutTheAdapterItsEventsAreDropped) {
    Server().SendEvents({"PA01", "BE01", "BH00A1B2C3D4E5F602", AdapterProperties({Record(1, "n")})});
    support::ProbeParser probe;
    register_event_parser(probe.Parser());
    Server().Send(wire::Event("XA01"));
    EXPECT_TRUE(support::ProbeRecord().WaitAndRemove("XA(01)"));
    unregister_event_parser(probe.Parser());
    EXPECT_EQ(Adapter().Size(), 0U);
}

class AdapterLifecycle : public wire::AdapterWireTest {};

TEST_F(AdapterLifecycle, AfterDoneNoCallbackRuns) {
    Session().StopAdapter();
    Server().SendEvents({"PA01", "BE01", "BH00A1B2C3D4E5F602", "PVlate"});
    support::ProbeParser probe;
    register_event_parser(probe.Parser());
    Server().Send(wire::Event("XA02"));
    EXPECT_TRUE(support::ProbeRecord().WaitAndRemove("XA(02)"));
    unregister_event_parser(probe.Parser());
    EXPECT_EQ(Adapter().Size(), 0U);
    CallAllGetters();
}

TEST_F(AdapterLifecycle, DoneAndInitWorkWithinOneConnection) {
    for (int i = 0; i < 5; ++i) {
        Session().StopAdapter();
        Session().StartAdapter();
        ExpectDelivered("BE01", {"discovery_state_changed(1)"});
        EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n",
                      {AdapterProperties({Record(4, wire::Number(0x240400))})}),
                  0x240400);
    }
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterLifecycle, DoneTwiceIsDoneOnce) {
    vym_bluetooth_done();
    vym_bluetooth_done();
    Session().StartAdapter();
    ExpectDelivered("BE02", {"discovery_state_changed(2)"});
}

TEST_F(AdapterLifecycle, InitTwiceUsesTheSecondTableAndDeliversOnce) {
    static bluetooth_callback_t second{};
    second.le_rx_test_cb = [](uint8_t status) {
        support::AdapterRecord().Add("second table " + std::to_string(status));
    };
    second.discovery_state_changed_cb = support::AdapterRecordingTable()->discovery_state_changed_cb;
    vym_bluetooth_init(&second);
    ExpectDelivered("BQ01070000", {"second table 7"});
    ExpectDelivered("BQ02070000", {});
    vym_bluetooth_init(support::AdapterRecordingTable());
    ExpectDelivered("BQ02070000", {"le_tx_test(7)"});
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n",
                  {AdapterProperties({Record(4, wire::Number(0x240408))})}),
              0x240408);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterLifecycle, ASecondConnectionServesTheSameAdapter) {
    ASSERT_TRUE(Session().Restart());
    ExpectDelivered("BE03", {"discovery_state_changed(3)"});
    EXPECT_EQ(vym_bluetooth_start_discovery(), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BK\r\n");
}

TEST_F(AdapterLifecycle, AGetterThatWaitsSurvivesDone) {
    auto waiting = Start(vym_bluetooth_get_class);
    Server().ExpectCommand("AT#BA04\r\n");
    Session().StopAdapter();
    waiting.get();
    Session().StartAdapter();
    ExpectDelivered("BE04", {"discovery_state_changed(4)"});
}

TEST_F(AdapterLifecycle, DoneMayComeWhileEventsPourIn) {
    for (int i = 0; i < 10; ++i) {
        auto pouring = Start([this] {
            for (int n = 0; n < 50; ++n) {
                Server().SendEvents(
                    {"PA01", "BH00A1B2C3D4E5F602", "BI00A1B2C3D4E5F601",
                     AdapterProperties({Record(15, wire::SavedDevice(1, 0, kDevice, 0, "n"))}),
                     "BO0A1B2C3D4E5FEB", "BH00A1B2C3D4E5F600"});
            }
        });
        Session().StopAdapter();
        Session().StartAdapter();
        pouring.get();
    }
    EXPECT_TRUE(Session().EventsAreHandled());
}

TEST_F(AdapterLifecycle, AServerThatIsGoneMakesGettersTimeOut) {
    Cache(4, wire::Number(0x240404));
    Server().CloseClient();
    EXPECT_EQ(vym_bluetooth_get_class(), 0x240404);
    EXPECT_EQ(Printed("wait for sync event(4) Failed!!!\n"), 1U);
    EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
}

} // namespace
