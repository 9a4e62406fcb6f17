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
    {"preset_addr", [] { return int{vym_bluetooth_preset_addr(kDevice)}; }},
    {"enable", [] { return int{vym_bluetooth_enable()}; }},
    {"enable_ex 0", [] { return int{vym_bluetooth_enable_ex(0)}; }},
    {"enable_ex 1", [] { return int{vym_bluetooth_enable_ex(1)}; }},
    {"disable", [] { return int{vym_bluetooth_disable()}; }},
    {"read_address", [] { return int{vym_bluetooth_read_address()}; }},
    {"set_discoverable_timeout", [] { return int{vym_bluetooth_set_discoverable_timeout(1)}; }},
    {"set_discovery_internval", [] { return int{vym_bluetooth_set_discovery_internval(1)}; }},
    {"set_number_of_bonded_devices", [] { return int{vym_bluetooth_set_number_of_bonded_devices(1)}; }},
    {"get_adapter_properties", [] { return int{vym_bluetooth_get_adapter_properties()}; }},
    {"add_AA_uuid", [] { return int{vym_bluetooth_add_AA_uuid(bt_uuid_t{})}; }},
    {"start_discovery", [] { return int{vym_bluetooth_start_discovery()}; }},
    {"stop_discovery", [] { return int{vym_bluetooth_stop_discovery()}; }},
    {"create_bond", [] { return int{vym_bluetooth_create_bond(kDevice)}; }},
    {"create_bond_out_of_bond",
     [] { return int{vym_bluetooth_create_bond_out_of_bond(kDevice, 1, 1, s_value)}; }},
    {"remove_bond", [] { return int{vym_bluetooth_remove_bond(kDevice)}; }},
    {"cancel_bond", [] { return int{vym_bluetooth_cancel_bond(kDevice)}; }},
    {"pin_reply", [] { return int{vym_bluetooth_pin_reply(kDevice, 1, 1, s_value)}; }},
    {"pin_reply without a PIN", [] { return int{vym_bluetooth_pin_reply(kDevice, 0, 0, nullptr)}; }},
    {"ssp_reply", [] { return int{vym_bluetooth_ssp_reply(kDevice, 1, 1, 1)}; }},
    {"set_bond_mode", [] { return int{vym_bluetooth_set_bond_mode(1)}; }},
    {"read_local_device_oob_data", [] { return int{vym_bluetooth_read_local_device_oob_data()}; }},
    {"read_local_device_oob_data_ex",
     [] { return int{vym_bluetooth_read_local_device_oob_data_ex()}; }},
    {"set_remote_device_oob_data",
     [] {
         return int{
             vym_bluetooth_set_remote_device_oob_data(kDevice, bt_oob_data_t{}, bt_oob_data_t{})};
     }},
    {"get_remote_device_propertie",
     [] { return int{vym_bluetooth_get_remote_device_propertie(kDevice, 1)}; }},
    {"set_remote_device_propertie",
     [] { return int{vym_bluetooth_set_remote_device_propertie(kDevice, 1, 1, s_value)}; }},
    {"get_remote_device_properties",
     [] { return int{vym_bluetooth_get_remote_device_properties(kDevice)}; }},
    {"get_remote_service_record",
     [] { return int{vym_bluetooth_get_remote_service_record(kDevice, bt_uuid_t{})}; }},
    {"get_remote_services", [] { return int{vym_bluetooth_get_remote_services(kDevice)}; }},
    {"get_connection_state", [] { return int{vym_bluetooth_get_connection_state(kDevice)}; }},
    {"read_connected_device_rssi",
     [] { return int{vym_bluetooth_read_connected_device_rssi(kDevice)}; }},
    {"acl_cancel_connect", [] { return int{vym_bluetooth_acl_cancel_connect(kDevice)}; }},
    {"connection_auth", [] { return int{vym_bluetooth_connection_auth(kDevice, 1, 1)}; }},
    {"os_suspend_action", [] { return int{vym_bluetooth_os_suspend_action()}; }},
    {"os_wakeup_action", [] { return int{vym_bluetooth_os_wakeup_action()}; }},
    {"le_receiver_test", [] { return int{vym_bluetooth_le_receiver_test(1)}; }},
    {"le_transmitter_test", [] { return int{vym_bluetooth_le_transmitter_test(1, 1, 1)}; }},
    {"write_loopback_mode", [] { return int{vym_bluetooth_write_loopback_mode(1)}; }},
    {"get_adapter_property", [] { return int{vym_bluetooth_get_adapter_property(1)}; }},
    {"set_adapter_property", [] { return int{vym_bluetooth_set_adapter_property(1, 1, s_value)}; }},
};

class AdapterWithoutMemory : public wire::BondedTest {
protected:
    // The lock of the getters is free, and what they awaited before is forgotten.
    void ExpectGettersWork() {
        const std::string answer = AdapterProperties({Record(7, Number(2))});
        EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", {answer}),
                  BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
        EXPECT_EQ(TimeOuts(), 0U);
    }
};

TEST_F(AdapterWithoutMemory, CommandsAreNotSentAndSaySo) {
    Handle({"BI0000000000000001"});
    {
        const FailingAllocations failing;
        for (const CommandCase& one : kCommands) {
            EXPECT_EQ(one.call(), BT_STATUS_NOMEM) << one.name;
        }
    }
    Server().ExpectNothingMore();
    EXPECT_EQ(Printed("-vym-"), 0U) << "a command that does not exist is not printed";
    for (const CommandCase& one : kCommands) {
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS) << one.name;
    }
}

TEST_F(AdapterWithoutMemory, TheVersionIsTheStatusInPlaceOfAPointer) {
    Handle({"PV1.0"});
    {
        const FailingAllocations failing;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(vym_bluetooth_get_version()), 3U);
    }
    Server().ExpectNothingMore();
    ExpectGettersWork();
    Handle({"PV2.0"});
    EXPECT_STREQ(AskInVain(vym_bluetooth_get_version, "AT#PV\r\n"), "2.0");
    EXPECT_EQ(TimeOuts(), 1U) << "nobody awaited the event before";
}

TEST_F(AdapterWithoutMemory, ARemoteDevicesPropertiesAreNone) {
    Handle({DeviceProperties(
        kDevice, {Record(32, "\x01"), Record(33, Number(2)), Record(3, std::string(16, 'u'))})});
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_bluetooth_get_device_priority(kDevice), 0);
        EXPECT_EQ(vym_bluetooth_get_manufacturer_code(kDevice), 0U);
        const bt_128_service_t uuids = vym_bluetooth_get_devices_uuids(kDevice);
        EXPECT_EQ(uuids.num_service_128bit, 0);
        EXPECT_EQ(uuids.services_128bit[0], 0);
    }
    Server().ExpectNothingMore();
    EXPECT_EQ(TimeOuts(), 0U) << "there was nothing to wait for";
    ExpectGettersWork();
}

TEST_F(AdapterWithoutMemory, TheAdaptersPropertiesAreTheOldOnes) {
    Handle({AdapterProperties({Record(4, Number(4)), Record(7, Number(1)), Record(1, "Car")})});
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_bluetooth_get_class(), 4);
        EXPECT_EQ(vym_bluetooth_get_scan_mode(), BT_SCAN_MODE_CONNECTABLE);
        EXPECT_EQ(wire::NameText(*vym_bluetooth_get_name()), "Car");
        EXPECT_EQ(support::AddressText(*vym_bluetooth_get_address()), "000000000000");
    }
    Server().ExpectNothingMore();
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

// Whichever allocation of init fails: nothing breaks, and the next pair of done and init mends it.
TEST_F(AdapterWithoutMemory, InitMayFailAndBeRepeated) {
    int failed = 0;
    for (int skip = 0; skip < 4; ++skip) {
        Session().StopAdapter();
        {
            const FailingAllocations failing(skip, 1);
            vym_bluetooth_init(support::AdapterRecordingTable());
            failed += failing.Failed();
        }
        Server().SendEvents(
            {"BE01", AdapterProperties({Record(15, wire::SavedDevice(2, 0, kB, 0, "Bert"))})});
        vym_bluetooth_done();
        Session().StartAdapter();
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Get(2, {{kB, "Bert"}}).devices, (Texts{"B504030201B0 Bert"}));
    }
    EXPECT_EQ(failed, 4) << "init makes four allocations";
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
