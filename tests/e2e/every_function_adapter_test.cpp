// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of the adapter, against the simulated radio and the devices around it.

#include "e2e/every_function.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace {

using e2e::Heard;
using e2e::kNobody;
using e2e::kPhone;
using e2e::kSpeaker;
using e2e::kStrap;

bt_bdname_t NameOf(std::string_view text) {
    bt_bdname_t name{};
    text.copy(reinterpret_cast<char*>(name.name), text.size());
    return name;
}

std::string TextOf(const bt_bdname_t& name) {
    return reinterpret_cast<const char*>(name.name);
}

bt_oob_data_t CountingFrom(uint8_t first) {
    bt_oob_data_t data;
    for (uint8_t& octet : data.data) {
        octet = first++;
    }
    return data;
}

constexpr bt_uuid_t kHandsFreeGateway = GATT_UUID_FROM_16(0x111F);
constexpr bt_uuid_t kBattery = GATT_UUID_FROM_16(0x180F);

class EveryAdapterFunction : public e2e::EveryFunction {
protected:
    /** What a setter that does not wait is answered must not come while a getter of the same property
     * waits: the second answer would end the wait of the next getter. */
    static void AnswersHaveArrived() { vym_bluetooth_get_version(); }

    void Bond(const bt_bdaddr_t& address) {
        EXPECT_EQ(vym_bluetooth_create_bond(address), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("bluetooth.bond_state_changed", 0, address, BT_BOND_STATE_BONDED));
    }
};

TEST_F(EveryAdapterFunction, SwitchesPower) {
    EXPECT_EQ(CALL(vym_bluetooth_disable)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.state_changed", BT_STATE_OFF));
    EXPECT_EQ(CALL(vym_bluetooth_get_state)(), BT_STATE_OFF);
    EXPECT_EQ(CALL(vym_bluetooth_enable)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.state_changed", BT_STATE_ON));
    EXPECT_EQ(vym_bluetooth_get_state(), BT_STATE_ON);

    vym_bluetooth_disable();
    EXPECT_TRUE(Hears("bluetooth.state_changed", BT_STATE_OFF));
    EXPECT_EQ(CALL(vym_bluetooth_enable_ex)(0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.state_changed", BT_STATE_ON));
}

TEST_F(EveryAdapterFunction, KnowsWhatTheAdapterIs) {
    EXPECT_STREQ(CALL(vym_bluetooth_get_version)(), "vym-sim 1.0");
    EXPECT_TRUE(Hears("bluetooth.bt_version", "vym-sim 1.0"));
    EXPECT_EQ(TextOf(*CALL(vym_bluetooth_get_name)()), "vym-sim");
    EXPECT_EQ(support::ValueText(*CALL(vym_bluetooth_get_address)()), "001A7DDA7113");
    EXPECT_EQ(CALL(vym_bluetooth_get_class)(), 0x240404);
    EXPECT_EQ(CALL(vym_bluetooth_get_scan_mode)(), BT_SCAN_MODE_NONE);
    EXPECT_EQ(CALL(vym_bluetooth_read_address)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.read_bt_address", 0, std::string("001A7DDA7113")));
}

TEST_F(EveryAdapterFunction, ChangesWhatTheAdapterIs) {
    EXPECT_EQ(CALL(vym_bluetooth_set_name)(NameOf("Kitchen display")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("adapter 00:1A:7D:DA:71:13 \"Kitchen display\" on"));
    EXPECT_EQ(CALL(vym_bluetooth_preset_addr)(kNobody), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("adapter 01:02:03:04:05:06 "));
    EXPECT_EQ(CALL(vym_bluetooth_get_adapter_properties)(), BT_STATUS_SUCCESS);
    // The last one of them.
    EXPECT_TRUE(Notes("{properties=[{type=36 length=4 value={interval=36}}]}"));
    EXPECT_EQ(support::ValueText(*vym_bluetooth_get_address()), "010203040506");

    EXPECT_EQ(CALL(vym_bluetooth_set_discoverable_timeout)(1), BT_STATUS_SUCCESS);
    EXPECT_EQ(CALL(vym_bluetooth_set_scan_mode)(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("{properties=[{type=7 length=4 value={mode=2}}]}"));
    EXPECT_TRUE(support::WaitUntil([] {
        return vym_bluetooth_get_scan_mode() == BT_SCAN_MODE_CONNECTABLE;
    })) << "a second is over";
    EXPECT_EQ(CALL(vym_bluetooth_set_discovery_internval)(5), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("-> bluetooth onAdapterProperties status=0 count=1 value={properties=[{type=36 "
                      "length=4 value={interval=5}}]}"));
    EXPECT_EQ(CALL(vym_bluetooth_add_AA_uuid)(kBattery), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("announces 180F"));
}

TEST_F(EveryAdapterFunction, FindsDevicesUntilItIsStopped) {
    EXPECT_EQ(CALL(vym_bluetooth_start_discovery)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.discovery_state_changed", BT_DISCOVERY_STARTED));
    EXPECT_TRUE(Hears("bluetooth.device_found", kPhone, 3, 0x5A020C, 204, "Anna's phone", 6, 0x1101,
                      0x110A, 0x110C, 0x111F, 0x112F, 0x1800));
    EXPECT_EQ(CALL(vym_bluetooth_stop_discovery)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.discovery_state_changed", BT_DISCOVERY_STOPPED));
}

TEST_F(EveryAdapterFunction, PairsByPinAndByNumberAndCancels) {
    EXPECT_EQ(CALL(vym_bluetooth_create_bond)(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.pin_request", kSpeaker, 0x240414, 0, "Kitchen speaker"));
    EXPECT_EQ(CALL(vym_bluetooth_pin_reply)(kSpeaker, 1, 4, e2e::Bytes("0000")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.bond_state_changed", 0, kSpeaker, BT_BOND_STATE_BONDED));

    EXPECT_EQ(vym_bluetooth_create_bond(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.ssp_request", kPhone, 0x5A020C, BT_SSP_VARIANT_PASSKEY_CONFIRMATION,
                      123456, "Anna's phone"));
    EXPECT_EQ(CALL(vym_bluetooth_cancel_bond)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("bluetooth.bond_state_changed", BT_STATUS_AUTH_REJECTED, kPhone, BT_BOND_STATE_NONE));

    EXPECT_EQ(vym_bluetooth_create_bond(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.ssp_request", kPhone, 0x5A020C, BT_SSP_VARIANT_PASSKEY_CONFIRMATION,
                      123456, "Anna's phone"));
    EXPECT_EQ(CALL(vym_bluetooth_ssp_reply)(kPhone, BT_SSP_VARIANT_PASSKEY_CONFIRMATION, 1, 0),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.bond_state_changed", 0, kPhone, BT_BOND_STATE_BONDED));
    EXPECT_TRUE(WorldShows("\"Anna's phone\" -52 dBm, connected, bonded\n"));

    EXPECT_EQ(CALL(vym_bluetooth_remove_bond)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.bond_state_changed", 0, kPhone, BT_BOND_STATE_NONE));
    EXPECT_TRUE(WorldShows("\"Anna's phone\" -52 dBm\n"));
}

TEST_F(EveryAdapterFunction, GivesUpConnectingOnlyWhileNoLinkIsUp) {
    EXPECT_EQ(vym_bluetooth_create_bond(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.pin_request", kSpeaker, 0x240414, 0, "Kitchen speaker"));
    EXPECT_EQ(CALL(vym_bluetooth_acl_cancel_connect)(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("bluetooth.bond_state_changed", BT_STATUS_AUTH_REJECTED, kSpeaker, BT_BOND_STATE_NONE));
    Bond(kStrap);
    EXPECT_EQ(vym_bluetooth_acl_cancel_connect(kStrap), BT_STATUS_FAIL);
}

TEST_F(EveryAdapterFunction, PairsOutOfBand) {
    EXPECT_EQ(CALL(vym_bluetooth_read_local_device_oob_data)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("bluetooth.read_local_device_oob_data", 0, CountingFrom(0x10), CountingFrom(0x30)));
    EXPECT_EQ(CALL(vym_bluetooth_read_local_device_oob_data_ex)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.read_local_device_oob_data_ex", 0, CountingFrom(0x10),
                      CountingFrom(0x30), CountingFrom(0x50), CountingFrom(0x70)));
    EXPECT_EQ(CALL(vym_bluetooth_set_remote_device_oob_data)(kSpeaker, CountingFrom(0x50),
                                                             CountingFrom(0x60)),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("out-of-band data 50 51 52 53 54 55 56 57 58 59 5A 5B 5C 5D 5E 5F "
                           "60 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F\n"));
    EXPECT_EQ(CALL(vym_bluetooth_create_bond_out_of_bond)(kSpeaker, 1, 1, e2e::Bytes("x")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.bond_state_changed", 0, kSpeaker, BT_BOND_STATE_BONDED));
}

TEST_F(EveryAdapterFunction, KeepsBondedDevices) {
    int count = 0;
    EXPECT_EQ(CALL(vym_bluetooth_get_bonded_devices)(nullptr, &count), BT_STATUS_SUCCESS);
    EXPECT_EQ(count, 3);
    Bond(kStrap);
    bt_remote_device_t devices[8] = {};
    count = 8;
    EXPECT_EQ(vym_bluetooth_get_bonded_devices(devices, &count), BT_STATUS_SUCCESS);
    ASSERT_EQ(count, 4);
    EXPECT_EQ(TextOf(devices[0].name), "Heart strap") << "the newest comes first";
    EXPECT_EQ(devices[0].services[0], 0x180D);

    EXPECT_EQ(CALL(vym_bluetooth_get_number_of_bonded_devices)(), 8);
    EXPECT_EQ(CALL(vym_bluetooth_set_number_of_bonded_devices)(7), BT_STATUS_SUCCESS);
    AnswersHaveArrived();
    EXPECT_EQ(vym_bluetooth_get_number_of_bonded_devices(), 7);
    EXPECT_EQ(CALL(vym_bluetooth_set_bond_mode)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("bond mode 1"));
}

TEST_F(EveryAdapterFunction, KnowsOtherDevices) {
    EXPECT_EQ(CALL(vym_bluetooth_get_device_priority)(kPhone), 2);
    uint8_t priority = 9;
    EXPECT_EQ(CALL(vym_bluetooth_set_remote_device_propertie)(
                  kPhone, BT_PROPERTY_REMOTE_DEVICE_PRIORITY, 1, &priority),
              BT_STATUS_SUCCESS);
    AnswersHaveArrived();
    EXPECT_EQ(vym_bluetooth_get_device_priority(kPhone), 9);
    EXPECT_EQ(CALL(vym_bluetooth_get_manufacturer_code)(kPhone), 0x000CFFFFU);
    const bt_128_service_t services = CALL(vym_bluetooth_get_devices_uuids)(kSpeaker);
    ASSERT_EQ(services.num_service_128bit, 3);
    EXPECT_EQ(services.services_128bit[2], 0x11);
    EXPECT_EQ(services.services_128bit[3], 0x0B);
}

TEST_F(EveryAdapterFunction, AsksOtherDevicesForTheirProperties) {
    const std::string answers = "-> bluetooth onRemoteDeviceProperties status=";
    const std::string speaker = answers + "0 address=11:22:33:44:55:66 count=";
    EXPECT_EQ(CALL(vym_bluetooth_get_remote_device_propertie)(kSpeaker, BT_PROPERTY_BDNAME),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes(speaker + "1 value={properties=[{type=1 length=15 value={name=\"Kitchen "));
    EXPECT_EQ(CALL(vym_bluetooth_get_remote_device_properties)(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes(speaker + "5 value={properties=[{type=1 length=15 value={name=\"Kitchen "));
    EXPECT_EQ(CALL(vym_bluetooth_get_remote_services)(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes(speaker + "1 value={properties=[{type=3 length=48 value={uuids=[110B, 110E, "));
    EXPECT_EQ(CALL(vym_bluetooth_get_remote_service_record)(kPhone, kHandsFreeGateway),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("properties=[{type=3 length=16 value={uuids=[111F]}}]"));
    EXPECT_EQ(vym_bluetooth_get_remote_service_record(kSpeaker, kHandsFreeGateway), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes(answers + "1 address=11:22:33:44:55:66 count=0")) << "it does not offer that";
}

TEST_F(EveryAdapterFunction, KnowsItsLinks) {
    EXPECT_EQ(CALL(vym_bluetooth_get_connection_state)(kStrap), 0);
    EXPECT_TRUE(Hears("bluetooth.acl_state_changed", 0, kStrap, BT_ACL_STATE_DISCONNECTED));
    EXPECT_EQ(CALL(vym_bluetooth_read_connected_device_rssi)(kStrap), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.read_rssi", kStrap, BT_STATUS_FAIL, 0));
    Bond(kStrap);
    EXPECT_EQ(vym_bluetooth_read_connected_device_rssi(kStrap), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.read_rssi", kStrap, 0, 256 - 74));
    EXPECT_EQ(CALL(vym_bluetooth_connection_auth)(kPhone, 3, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("profile 3 of 2A416E6E6101 accepted\n"));
}

TEST_F(EveryAdapterFunction, TestsTheRadio) {
    EXPECT_EQ(CALL(vym_bluetooth_le_receiver_test)(39), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.le_rx_test", 0));
    EXPECT_EQ(CALL(vym_bluetooth_le_transmitter_test)(0, 37, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.le_tx_test", BT_STATUS_BUSY));
    EXPECT_EQ(CALL(vym_bluetooth_le_test_end)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("-> bluetooth onLETestCmdComplete operation=3 status=0 packets="));
    EXPECT_EQ(vym_bluetooth_le_test_end(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("bluetooth.le_test_end", BT_STATUS_FAIL, 0)) << "it has ended already";
    EXPECT_EQ(CALL(vym_bluetooth_write_loopback_mode)(2), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows("loopback mode 2"));
}

TEST_F(EveryAdapterFunction, SleepsAndWakesUp) {
    EXPECT_EQ(CALL(vym_bluetooth_os_suspend_action)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows(" on, suspended"));
    EXPECT_EQ(CALL(vym_bluetooth_os_wakeup_action)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(WorldShows(" on, scan mode"));
}

TEST_F(EveryAdapterFunction, HandsDescriptorsToWhoeverWantsThem) {
    CALL(vym_bluetooth_register_data_transport_callback)
    (IPC_ID_AUDIO, [](uint8_t id, int fd) {
        Heard().Add(fd > 0 ? "descriptor of kind " + std::to_string(id) : "none");
        close(fd);
    });
    EXPECT_EQ(vym_bluetooth_disable(), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Heard().WaitForEntry("descriptor of kind 1"));
}

} // namespace
