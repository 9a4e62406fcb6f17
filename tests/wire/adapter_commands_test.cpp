// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the adapter writes. Values differ in every byte, so that a swapped or
// reversed field shows.

#include "wire/adapter_support.h"

#include <atomic>

namespace {

using wire::kDevice;

constexpr bt_uuid_t kUuid = {
    {0x00, 0x0A, 0x0D, 0x31, 0x42, 0x53, 0x64, 0x75, 0x86, 0x97, 0xA8, 0xB9, 0xCA, 0xDB, 0xDC, 0xFF}};
constexpr bt_oob_data_t kHash = {
    {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
constexpr bt_oob_data_t kRandomizer = {
    {0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0}};

// A call that sends one command and does not wait.
struct CommandCase {
    const char* name;
    int (*call)();
    std::string_view command;
};

class AdapterCommands : public wire::AdapterWireTest {
protected:
    template <size_t Count>
    void ExpectCommands(const CommandCase (&cases)[Count]) {
        for (const CommandCase& one : cases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            Server().ExpectCommand(one.command);
        }
        Server().ExpectNothingMore();
        EXPECT_EQ(TimeOuts(), 0U) << "these calls do not wait";
    }
};

TEST_F(AdapterCommands, CallsWithoutArgumentsSendTheirTagAlone) {
    const CommandCase cases[] = {
        {"enable", [] { return int{vym_bluetooth_enable()}; }, "AT#PB\r\n"},
        {"disable", [] { return int{vym_bluetooth_disable()}; }, "AT#PC\r\n"},
        {"read_address", [] { return int{vym_bluetooth_read_address()}; }, "AT#BTOR\r\n"},
        {"get_adapter_properties", [] { return int{vym_bluetooth_get_adapter_properties()}; },
         "AT#BG\r\n"},
        {"start_discovery", [] { return int{vym_bluetooth_start_discovery()}; }, "AT#BK\r\n"},
        {"stop_discovery", [] { return int{vym_bluetooth_stop_discovery()}; }, "AT#BL\r\n"},
        {"os_suspend_action", [] { return int{vym_bluetooth_os_suspend_action()}; }, "AT#BTOS\r\n"},
        {"os_wakeup_action", [] { return int{vym_bluetooth_os_wakeup_action()}; }, "AT#BTOW\r\n"},
        {"le_test_end", [] { return int{vym_bluetooth_le_test_end()}; }, "AT#BTL00030000\r\n"},
        {"read_local_device_oob_data", [] { return int{vym_bluetooth_read_local_device_oob_data()}; },
         "AT#BEA\r\n"},
        {"read_local_device_oob_data_ex",
         [] { return int{vym_bluetooth_read_local_device_oob_data_ex()}; }, "AT#BEB\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(AdapterCommands, OnlyOneLoadsTheFirmware) {
    const CommandCase cases[] = {
        {"1", [] { return int{vym_bluetooth_enable_ex(1)}; }, "AT#PB\r\n"},
        {"0", [] { return int{vym_bluetooth_enable_ex(0)}; }, "AT#PE\r\n"},
        {"2", [] { return int{vym_bluetooth_enable_ex(2)}; }, "AT#PE\r\n"},
        {"-1", [] { return int{vym_bluetooth_enable_ex(-1)}; }, "AT#PE\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(AdapterCommands, AddressesGoMostSignificantByteFirst) {
    const CommandCase cases[] = {
        {"preset_addr", [] { return int{vym_bluetooth_preset_addr(kDevice)}; },
         "AT#PDA1B2C3D4E5F6\r\n"},
        {"get_remote_device_properties",
         [] { return int{vym_bluetooth_get_remote_device_properties(kDevice)}; },
         "AT#BHA1B2C3D4E5F6\r\n"},
        {"get_remote_services", [] { return int{vym_bluetooth_get_remote_services(kDevice)}; },
         "AT#BJA1B2C3D4E5F6\r\n"},
        {"create_bond", [] { return int{vym_bluetooth_create_bond(kDevice)}; },
         "AT#BMA1B2C3D4E5F6\r\n"},
        {"remove_bond", [] { return int{vym_bluetooth_remove_bond(kDevice)}; },
         "AT#BOA1B2C3D4E5F6\r\n"},
        {"cancel_bond", [] { return int{vym_bluetooth_cancel_bond(kDevice)}; },
         "AT#BPA1B2C3D4E5F6\r\n"},
        {"get_connection_state", [] { return int{vym_bluetooth_get_connection_state(kDevice)}; },
         "AT#BQA1B2C3D4E5F6\r\n"},
        {"read_connected_device_rssi",
         [] { return int{vym_bluetooth_read_connected_device_rssi(kDevice)}; },
         "AT#BTBA1B2C3D4E5F6\r\n"},
        {"an address of zeroes", [] { return int{vym_bluetooth_create_bond(bt_bdaddr_t{})}; },
         "AT#BM000000000000\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(AdapterCommands, NumbersAreUpperCaseDigitsOfFixedWidth) {
    const CommandCase cases[] = {
        {"get_remote_device_propertie",
         [] { return int{vym_bluetooth_get_remote_device_propertie(kDevice, 0x2F)}; },
         "AT#BCA1B2C3D4E5F62F\r\n"},
        {"ssp_reply", [] { return int{vym_bluetooth_ssp_reply(kDevice, 0x02, 0x01, 0x000F1206)}; },
         "AT#BSA1B2C3D4E5F60201000F1206\r\n"},
        {"ssp_reply with a negative passkey",
         [] { return int{vym_bluetooth_ssp_reply(kDevice, 0xFE, 0xDC, -2)}; },
         "AT#BSA1B2C3D4E5F6FEDCFFFFFFFE\r\n"},
        {"connection_auth", [] { return int{vym_bluetooth_connection_auth(kDevice, 0x1B, 0x01)}; },
         "AT#BTAA1B2C3D4E5F61B01\r\n"},
        {"le_receiver_test", [] { return int{vym_bluetooth_le_receiver_test(0x27)}; },
         "AT#BTL0001000127\r\n"},
        {"le_transmitter_test", [] { return int{vym_bluetooth_le_transmitter_test(0x12, 0x25, 0x07)}; },
         "AT#BTL00020003122507\r\n"},
        {"set_bond_mode", [] { return int{vym_bluetooth_set_bond_mode(0x01020304)}; },
         "AT#BF01020304\r\n"},
        {"set_bond_mode of a negative number", [] { return int{vym_bluetooth_set_bond_mode(-1)}; },
         "AT#BFFFFFFFFF\r\n"},
        {"write_loopback_mode", [] { return int{vym_bluetooth_write_loopback_mode(0xAB)}; },
         "AT#BTPAB\r\n"},
        {"get_adapter_property", [] { return int{vym_bluetooth_get_adapter_property(0x24)}; },
         "AT#BA24\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(AdapterCommands, AServiceRecordIsAskedForWithItsUuidReversed) {
    EXPECT_EQ(vym_bluetooth_get_remote_service_record(kDevice, kUuid), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BIA1B2C3D4E5F6FFDCDBCAB9A8978675645342310D0A00\r\n");
}

TEST_F(AdapterCommands, AnInquiryUuidGoesForward) {
    EXPECT_EQ(vym_bluetooth_add_AA_uuid(kUuid), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BTE000A0D31425364758697A8B9CADBDCFF\r\n");
}

TEST_F(AdapterCommands, OutOfBandDataOfADeviceIsItsHashAndThenItsRandomizer) {
    EXPECT_EQ(vym_bluetooth_set_remote_device_oob_data(kDevice, kHash, kRandomizer), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BECA1B2C3D4E5F6"
                           "00112233445566778899AABBCCDDEEFF"
                           "0F1E2D3C4B5A69788796A5B4C3D2E1F0\r\n");
}

TEST_F(AdapterCommands, PresettingTheAddressPrintsTheCommand) {
    EXPECT_EQ(vym_bluetooth_preset_addr(kDevice), BT_STATUS_SUCCESS);
    const std::string time = "\\[\\[[0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]+\\]\\]";
    const std::string expected =
        time + " -vym- \\[vym_bluetooth_preset_addr\\] \\[AT#PDA1B2C3D4E5F6\r\n\\]\r\n";
    EXPECT_TRUE(wire::Occurs(expected, Output().Out())) << Output().Out();
}

// The flag is one for all devices: whatever happened before, these events settle it.
class AclCancel : public wire::AdapterWireTest {
protected:
    void TearDown() override {
        Handle({"BI0000112233445501"});
        wire::AdapterWireTest::TearDown();
    }

    void ExpectSent() {
        const size_t before = Printed("is acl connected = 0\r\n");
        EXPECT_EQ(vym_bluetooth_acl_cancel_connect(kDevice), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#BTDA1B2C3D4E5F6\r\n");
        EXPECT_EQ(Printed("is acl connected = 0\r\n"), before + 1);
    }

    void ExpectRefused() {
        const size_t before = Printed("is acl connected = 1\r\n");
        EXPECT_EQ(vym_bluetooth_acl_cancel_connect(kDevice), BT_STATUS_FAIL);
        Server().ExpectNothingMore();
        EXPECT_EQ(Printed("is acl connected = 1\r\n"), before + 1);
    }
};

TEST_F(AclCancel, IsSentWhileNoLinkIsUp) {
    Handle({"BI00A1B2C3D4E5F601"});
    ExpectSent();
}

TEST_F(AclCancel, IsRefusedWhileALinkToAnyDeviceIsUp) {
    Handle({"BI0000112233445500"});
    ExpectRefused();
    Handle({"BI0000112233445501"});
    ExpectSent();
}

TEST_F(AclCancel, GoesByTheStateWhateverTheStatus) {
    Handle({"BI0900112233445500"});
    ExpectRefused();
    Handle({"BI0900112233445502"});
    ExpectSent();
}

TEST_F(AclCancel, KnowsOfALinkBeforeTheCallbackHearsOfIt) {
    std::atomic<int> when_up{-1};
    std::atomic<int> when_down{-1};
    Adapter().SetHook([&](const std::string& entry) {
        if (entry == "acl_state_changed(0, 001122334455, 0)") {
            when_up = vym_bluetooth_acl_cancel_connect(kDevice);
        } else if (entry == "acl_state_changed(0, 001122334455, 1)") {
            when_down = vym_bluetooth_acl_cancel_connect(kDevice);
        }
    });
    Handle({"BI0000112233445500", "BI0000112233445501"});
    Adapter().SetHook(nullptr);
    EXPECT_EQ(when_up, BT_STATUS_FAIL);
    EXPECT_EQ(when_down, BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BTDA1B2C3D4E5F6\r\n");
}

TEST_F(AclCancel, IsAllowedAgainOnceAnyDeviceHasGone) {
    Handle({"BI0000112233445500", "BI00A1B2C3D4E5F600", "BI0000112233445501"});
    ExpectSent();
}

} // namespace
