// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The adapter without memory: nothing is sent, nothing is lost, no lock stays taken.

#include "memory/profile_memory.h"
#include "wire/adapter_bonded_support.h"

#include "vym_bluetooth_event.h"

namespace {

using memory::CommandCase;
using memory::FailingAllocations;
using wire::AdapterProperties;
using wire::DeviceProperties;
using wire::kA;
using wire::kB;
using wire::kDevice;
using wire::Number;
using wire::Record;
using Texts = std::vector<std::string>;

uint8_t s_value[] = {'v'};

const CommandCase kCommands[] = {
    {"preset_addr",
     [] { return int{CALL(vym_bluetooth_preset_addr)(kDevice)}; },
     {"AT#PDA1B2C3D4E5F6\r\n"}},
    {"enable", [] { return int{CALL(vym_bluetooth_enable)()}; }, {"AT#PB\r\n"}},
    {"enable_ex 0", [] { return int{CALL(vym_bluetooth_enable_ex)(0)}; }, {"AT#PE\r\n"}},
    {"enable_ex 1", [] { return int{CALL(vym_bluetooth_enable_ex)(1)}; }, {"AT#PB\r\n"}},
    {"disable", [] { return int{CALL(vym_bluetooth_disable)()}; }, {"AT#PC\r\n"}},
    {"read_address", [] { return int{CALL(vym_bluetooth_read_address)()}; }, {"AT#BTOR\r\n"}},
    {"set_discoverable_timeout",
     [] { return int{CALL(vym_bluetooth_set_discoverable_timeout)(1)}; },
     {"AT#BB090007\x01\xDC\xDD\xDC\xDD\xDC\xDD\r\n"}},
    {"set_discovery_internval",
     [] { return int{CALL(vym_bluetooth_set_discovery_internval)(1)}; },
     {"AT#BB240007\x01\xDC\xDD\xDC\xDD\xDC\xDD\r\n"}},
    {"set_number_of_bonded_devices",
     [] { return int{CALL(vym_bluetooth_set_number_of_bonded_devices)(1)}; },
     {"AT#BB230007\x01\xDC\xDD\xDC\xDD\xDC\xDD\r\n"}},
    {"get_adapter_properties",
     [] { return int{CALL(vym_bluetooth_get_adapter_properties)()}; },
     {"AT#BG\r\n"}},
    {"add_AA_uuid",
     [] { return int{CALL(vym_bluetooth_add_AA_uuid)(bt_uuid_t{})}; },
     {"AT#BTE00000000000000000000000000000000\r\n"}},
    {"start_discovery", [] { return int{CALL(vym_bluetooth_start_discovery)()}; }, {"AT#BK\r\n"}},
    {"stop_discovery", [] { return int{CALL(vym_bluetooth_stop_discovery)()}; }, {"AT#BL\r\n"}},
    {"create_bond",
     [] { return int{CALL(vym_bluetooth_create_bond)(kDevice)}; },
     {"AT#BMA1B2C3D4E5F6\r\n"}},
    {"create_bond_out_of_bond",
     [] { return int{CALL(vym_bluetooth_create_bond_out_of_bond)(kDevice, 1, 1, s_value)}; },
     {"AT#BNA1B2C3D4E5F6000000010001v\r\n"}},
    {"remove_bond",
     [] { return int{CALL(vym_bluetooth_remove_bond)(kDevice)}; },
     {"AT#BOA1B2C3D4E5F6\r\n"}},
    {"cancel_bond",
     [] { return int{CALL(vym_bluetooth_cancel_bond)(kDevice)}; },
     {"AT#BPA1B2C3D4E5F6\r\n"}},
    {"pin_reply",
     [] { return int{CALL(vym_bluetooth_pin_reply)(kDevice, 1, 1, s_value)}; },
     {"AT#BRA1B2C3D4E5F6010001v\r\n"}},
    {"pin_reply without a PIN",
     [] { return int{CALL(vym_bluetooth_pin_reply)(kDevice, 0, 0, nullptr)}; },
     {"AT#BRA1B2C3D4E5F6000000\r\n"}},
    {"ssp_reply",
     [] { return int{CALL(vym_bluetooth_ssp_reply)(kDevice, 1, 1, 1)}; },
     {"AT#BSA1B2C3D4E5F6010100000001\r\n"}},
    {"set_bond_mode", [] { return int{CALL(vym_bluetooth_set_bond_mode)(1)}; }, {"AT#BF00000001\r\n"}},
    {"read_local_device_oob_data",
     [] { return int{CALL(vym_bluetooth_read_local_device_oob_data)()}; },
     {"AT#BEA\r\n"}},
    {"read_local_device_oob_data_ex",
     [] { return int{CALL(vym_bluetooth_read_local_device_oob_data_ex)()}; },
     {"AT#BEB\r\n"}},
    {"set_remote_device_oob_data",
     [] {
         return int{
             CALL(vym_bluetooth_set_remote_device_oob_data)(kDevice, bt_oob_data_t{}, bt_oob_data_t{})};
     },
     {"AT#BECA1B2C3D4E5F60000000000000000000000000000000000000000000000000000000000000000\r\n"}},
    {"get_remote_device_propertie",
     [] { return int{CALL(vym_bluetooth_get_remote_device_propertie)(kDevice, 1)}; },
     {"AT#BCA1B2C3D4E5F601\r\n"}},
    {"set_remote_device_propertie",
     [] { return int{CALL(vym_bluetooth_set_remote_device_propertie)(kDevice, 1, 1, s_value)}; },
     {"AT#BDA1B2C3D4E5F6010001v\r\n"}},
    {"get_remote_device_properties",
     [] { return int{CALL(vym_bluetooth_get_remote_device_properties)(kDevice)}; },
     {"AT#BHA1B2C3D4E5F6\r\n"}},
    {"get_remote_service_record",
     [] { return int{CALL(vym_bluetooth_get_remote_service_record)(kDevice, bt_uuid_t{})}; },
     {"AT#BIA1B2C3D4E5F600000000000000000000000000000000\r\n"}},
    {"get_remote_services",
     [] { return int{CALL(vym_bluetooth_get_remote_services)(kDevice)}; },
     {"AT#BJA1B2C3D4E5F6\r\n"}},
    {"get_connection_state",
     [] { return int{CALL(vym_bluetooth_get_connection_state)(kDevice)}; },
     {"AT#BQA1B2C3D4E5F6\r\n"}},
    {"read_connected_device_rssi",
     [] { return int{CALL(vym_bluetooth_read_connected_device_rssi)(kDevice)}; },
     {"AT#BTBA1B2C3D4E5F6\r\n"}},
    {"acl_cancel_connect",
     [] { return int{CALL(vym_bluetooth_acl_cancel_connect)(kDevice)}; },
     {"AT#BTDA1B2C3D4E5F6\r\n"}},
    {"connection_auth",
     [] { return int{CALL(vym_bluetooth_connection_auth)(kDevice, 1, 1)}; },
     {"AT#BTAA1B2C3D4E5F60101\r\n"}},
    {"os_suspend_action", [] { return int{CALL(vym_bluetooth_os_suspend_action)()}; }, {"AT#BTOS\r\n"}},
    {"os_wakeup_action", [] { return int{CALL(vym_bluetooth_os_wakeup_action)()}; }, {"AT#BTOW\r\n"}},
    {"le_receiver_test",
     [] { return int{CALL(vym_bluetooth_le_receiver_test)(1)}; },
     {"AT#BTL0001000101\r\n"}},
    {"le_transmitter_test",
     [] { return int{CALL(vym_bluetooth_le_transmitter_test)(1, 1, 1)}; },
     {"AT#BTL00020003010101\r\n"}},
    {"le_test_end", [] { return int{CALL(vym_bluetooth_le_test_end)()}; }, {"AT#BTL00030000\r\n"}},
    {"write_loopback_mode",
     [] { return int{CALL(vym_bluetooth_write_loopback_mode)(1)}; },
     {"AT#BTP01\r\n"}},
    {"get_adapter_property",
     [] { return int{vym_bluetooth_get_adapter_property(1)}; },
     {"AT#BA01\r\n"}},
    {"set_adapter_property",
     [] { return int{vym_bluetooth_set_adapter_property(1, 1, s_value)}; },
     {"AT#BB010001v\r\n"}},
};

class AdapterWithoutMemory : public wire::BondedTest {};

TEST_F(AdapterWithoutMemory, CommandsAreNotSentAndSaySo) {
    Handle({"BI0000000000000001"});
    memory::ExpectCommandsSurvive(Server(), kCommands);
}

TEST_F(AdapterWithoutMemory, ACommandThatDoesNotExistIsNotPrinted) {
    const FailingAllocations failing;
    EXPECT_EQ(vym_bluetooth_preset_addr(kDevice), BT_STATUS_NOMEM);
    EXPECT_EQ(Printed("-vym-"), 0U);
}

/** A call that waits for the server's answer: what it answers before and after that came. */
struct WaitingCall {
    const char* name;
    std::function<std::string()> call;
    std::string without_memory;
    std::string sent;
    std::string answer;
    std::string answered;
};

std::string Version() {
    const char* version = CALL(vym_bluetooth_get_version)();
    // Without memory the status stands in place of a pointer.
    return reinterpret_cast<uintptr_t>(version) == BT_STATUS_NOMEM ? "no memory" : version;
}

std::string Uuids() {
    const bt_128_service_t uuids = CALL(vym_bluetooth_get_devices_uuids)(kDevice);
    return std::to_string(uuids.num_service_128bit) + " " + std::to_string(uuids.services_128bit[0]);
}

std::string BondedDevices() {
    int size = 0;
    const int status = CALL(vym_bluetooth_get_bonded_devices)(nullptr, &size);
    return std::to_string(status) + " " + std::to_string(size);
}

const WaitingCall kWaitingCalls[] = {
    {"get_version", Version, "no memory", "AT#PV\r\n", "PV2.0", "2.0"},
    {"get_name", [] { return wire::NameText(*CALL(vym_bluetooth_get_name)()); }, "Old", "AT#BA01\r\n",
     AdapterProperties({Record(1, "Car")}), "Car"},
    {"get_address", [] { return support::AddressText(*CALL(vym_bluetooth_get_address)()); },
     "000000000000", "AT#BA02\r\n", AdapterProperties({Record(2, wire::Raw(kDevice))}), "A1B2C3D4E5F6"},
    {"get_scan_mode", [] { return std::to_string(CALL(vym_bluetooth_get_scan_mode)()); }, "1",
     "AT#BA07\r\n", AdapterProperties({Record(7, Number(2))}), "2"},
    {"get_class", [] { return std::to_string(CALL(vym_bluetooth_get_class)()); }, "4", "AT#BA04\r\n",
     AdapterProperties({Record(4, Number(5))}), "5"},
    {"get_number_of_bonded_devices",
     [] { return std::to_string(CALL(vym_bluetooth_get_number_of_bonded_devices)()); }, "6",
     "AT#BA23\r\n", AdapterProperties({Record(35, Number(7))}), "7"},
    {"get_bonded_devices", BondedDevices, "0 0", "AT#BA0F\r\n",
     AdapterProperties({Record(15, wire::SavedDevice(1, 0, kB, 0, "Bert"))}), "0 1"},
    {"get_device_priority",
     [] { return std::to_string(CALL(vym_bluetooth_get_device_priority)(kDevice)); }, "0",
     "AT#BCA1B2C3D4E5F620\r\n", DeviceProperties(kDevice, {Record(32, "\x09")}), "9"},
    {"get_manufacturer_code",
     [] { return std::to_string(CALL(vym_bluetooth_get_manufacturer_code)(kDevice)); }, "0",
     "AT#BCA1B2C3D4E5F621\r\n", DeviceProperties(kDevice, {Record(33, Number(10))}), "10"},
    {"get_devices_uuids", Uuids, "0 0", "AT#BCA1B2C3D4E5F603\r\n",
     DeviceProperties(kDevice, {Record(3, std::string(16, 'u'))}), "1 117"},
    {"set_name",
     [] {
         return std::to_string(CALL(vym_bluetooth_set_name)({{'C', 'a', 'r'}}));
     },
     "3", "AT#BB010003Car\r\n", AdapterProperties({Record(1, "Car")}), "0"},
    {"set_scan_mode",
     [] {
         return std::to_string(
             CALL(vym_bluetooth_set_scan_mode)(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE));
     },
     "3", "AT#BB070007\x02\xDC\xDD\xDC\xDD\xDC\xDD\r\n", AdapterProperties({Record(7, Number(2))}),
     "0"},
};

// What is known of a remote device is not told either, though it is there.
TEST_F(AdapterWithoutMemory, CallsThatWaitAnswerAtOnceWithWhatTheyHave) {
    Handle({"PV1.0",
            AdapterProperties(
                {Record(1, "Old"), Record(7, Number(1)), Record(4, Number(4)), Record(35, Number(6))}),
            DeviceProperties(kDevice, {Record(32, "\x01"), Record(33, Number(2)),
                                       Record(3, std::string(16, 'o'))})});
    for (const WaitingCall& one : kWaitingCalls) {
        SCOPED_TRACE(one.name);
        const size_t held = memory::BlocksHeld();
        {
            const FailingAllocations failing;
            EXPECT_EQ(one.call(), one.without_memory);
            EXPECT_EQ(failing.Failed(), 1);
        }
        Server().ExpectNothingMore();
        const memory::CountedAllocations needed;
        EXPECT_EQ(Ask(one.call, one.sent, {one.answer}), one.answered);
        EXPECT_EQ(needed.Asked(), 1);
        EXPECT_EQ(memory::BlocksHeld(), held);
        Server().ExpectNothingMore();
    }
    EXPECT_EQ(TimeOuts(), 0U) << "there was nothing to wait for";
}

// What was awaited is forgotten with the call.
TEST_F(AdapterWithoutMemory, AnAnswerToWhatWasNotAskedWakesNobody) {
    {
        const FailingAllocations failing;
        EXPECT_EQ(Version(), "no memory");
    }
    Handle({"PV2.0"});
    EXPECT_STREQ(AskInVain(vym_bluetooth_get_version, "AT#PV\r\n"), "2.0");
    EXPECT_EQ(TimeOuts(), 1U);
}

TEST_F(AdapterWithoutMemory, TheBondedDevicesAreTheLocalOnes) {
    Handle({"BH00A504030201A002"});
    bt_remote_device_t device{};
    int size = 1;
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_bluetooth_get_bonded_devices(&device, &size), BT_STATUS_SUCCESS);
    }
    EXPECT_EQ(size, 1);
    EXPECT_EQ(support::AddressText(device.address), "A504030201A0");
    Server().ExpectNothingMore();
}

TEST_F(AdapterWithoutMemory, TheLocalBondsStayAsTheyWere) {
    Handle({"BH00A504030201A002", "BH00B504030201B002", DeviceProperties(kA, {Record(1, "Anna")})});
    {
        const FailingAllocations failing;
        Handle({"BH00C504030201C002", "BH00A504030201A000"});
        EXPECT_EQ(failing.Failed(), 2);
    }
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 Anna"}));
    Handle({"BH00A504030201A000"});
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 "}));
}

TEST_F(AdapterWithoutMemory, AMoveToTheFrontNeedsNone) {
    Handle({"BH00A504030201A002", "BH00B504030201B002"});
    {
        const FailingAllocations failing;
        Handle({"BI00B504030201B000", "BI00B504030201B001"});
    }
    const Texts moved = {"A504030201A0 ", "B504030201B0 "};
    const Texts as_it_was = {"B504030201B0 ", "A504030201A0 "};
    const Texts list = LocalList();
    EXPECT_TRUE(list == moved || list == as_it_was) << ::testing::PrintToString(list);
}

TEST_F(AdapterWithoutMemory, AListThatCannotGrowKeepsWhatItHas) {
    const std::vector<wire::Saved> five = {{{{0, 9, 9, 9, 9, 9}}, "n0"},
                                           {{{1, 9, 9, 9, 9, 9}}, "n1"},
                                           {{{2, 9, 9, 9, 9, 9}}, "n2"},
                                           {{{3, 9, 9, 9, 9, 9}}, "n3"},
                                           {{{4, 9, 9, 9, 9, 9}}, "n4"}};
    int size = 8;
    bt_remote_device_t devices[8] = {};
    auto result = Start([&] { return vym_bluetooth_get_bonded_devices(devices, &size); });
    Server().ExpectCommand("AT#BA0F\r\n");
    {
        const FailingAllocations failing;
        Server().SendEvents(Stream(five));
        EXPECT_EQ(result.get(), BT_STATUS_SUCCESS);
        EXPECT_GE(failing.Failed(), 1);
    }
    EXPECT_EQ(TimeOuts(), 0U) << "the last record ends the wait all the same";
    ASSERT_EQ(size, 4);
    EXPECT_EQ(wire::NameText(devices[0].name), "n3");
    EXPECT_EQ(wire::NameText(devices[3].name), "n0");
    EXPECT_EQ(Get(8, five).size, 5) << "with memory it grows again";
}

TEST_F(AdapterWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_bluetooth_event_parser);
}

// Its fourth is room for the server's bonded devices, which is made when it is needed otherwise.
TEST_F(AdapterWithoutMemory, InitMayFailAndBeRepeated) {
    Session().StopAdapter();
    const size_t held = memory::BlocksHeld();
    int failures = 0;
    memory::ForEachFailure([&](int skip) {
        bool failed = false;
        {
            const FailingAllocations failing(skip, 1);
            CALL(vym_bluetooth_init)(support::AdapterRecordingTable());
            failed = failing.Failed() > 0;
        }
        failures += failed ? 1 : 0;
        Server().SendEvents(
            {"BE01", AdapterProperties({Record(15, wire::SavedDevice(2, 0, kB, 0, "Bert"))})});
        CALL(vym_bluetooth_done)();
        EXPECT_EQ(memory::BlocksHeld(), held);
        Session().StartAdapter();
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Get(2, {{kB, "Bert"}}).devices, (Texts{"B504030201B0 Bert"}));
        Session().StopAdapter();
        EXPECT_EQ(memory::BlocksHeld(), held);
        return failed;
    });
    EXPECT_EQ(failures, 4);
}

TEST_F(AdapterWithoutMemory, AnInitWithoutItsFirstEntriesMakesThemLater) {
    Session().StopAdapter();
    {
        const FailingAllocations failing(0, 1);
        Session().StartAdapter();
        ASSERT_EQ(failing.Failed(), 1);
    }
    EXPECT_EQ(Get(2, {{kB, "Bert"}}).devices, (Texts{"B504030201B0 Bert"}));
}

} // namespace
