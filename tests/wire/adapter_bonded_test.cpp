// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bonded devices as the server lists them.

#include "wire/adapter_bonded_support.h"

#include <atomic>

namespace {

using wire::AdapterProperties;
using wire::Bytes;
using wire::kA;
using wire::kB;
using wire::kC;
using wire::Record;
using wire::SavedDevice;
using Texts = std::vector<std::string>;

const wire::Saved kSavedA = {kA, "Anna", 0x0A0B0C};
const wire::Saved kSavedB = {kB, "Bert", 0x1A1B1C};
const wire::Saved kSavedC = {kC, "Carl", 0x2A2B2C};

class BondedDevices : public wire::BondedTest {};

TEST_F(BondedDevices, TheNewestComesFirst) {
    const auto got = Get(10, {kSavedA, kSavedB, kSavedC});
    EXPECT_EQ(got.devices, (Texts{"C504030201C0 Carl", "B504030201B0 Bert", "A504030201A0 Anna"}));
    EXPECT_EQ(got.size, 3);
    EXPECT_EQ(got.raw[0].class_of_device, 0x2A2B2CU);
    EXPECT_EQ(got.raw[2].class_of_device, 0x0A0B0CU);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, EachIsPrintedAsItComes) {
    Get(10, {kSavedA, kSavedB});
    EXPECT_EQ(Printed("get bonded device[1] name :Anna.\n"), 1U);
    EXPECT_EQ(Printed("get bonded device[2] name :Bert.\n"), 1U);
    Get(10, {kSavedC});
    EXPECT_EQ(Printed("get bonded device[1] name :Carl.\n"), 1U) << "each request counts afresh";
}

TEST_F(BondedDevices, ARecordFillsItsFieldsLowestByteFirst) {
    std::string value = Bytes({1, 0}) + "\x01\x02\x03\x04\x05\x06" + "\x11\x12\x13\x14" + "\x15";
    for (int i = 0; i < 16; ++i) {
        value += Bytes({0x20 + i, 0x40 + i});
    }
    value += "Name";
    const auto got = GetWith(1, {AdapterProperties({Record(15, value)})});
    ASSERT_EQ(got.devices, (Texts{"060504030201 Name"}));
    EXPECT_EQ(got.raw[0].class_of_device, 0x14131211U);
    EXPECT_EQ(got.raw[0].num_service, 0x15);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(got.raw[0].services[i], 0x4020 + 0x0101 * i) << i;
    }
}

TEST_F(BondedDevices, AnyNumberOfServicesIsPassedOn) {
    std::string value = SavedDevice(1, 0, kA, 0, "Anna");
    value[12] = '\xFF';
    const auto got = GetWith(1, {AdapterProperties({Record(15, value)})});
    ASSERT_EQ(got.devices.size(), 1U);
    EXPECT_EQ(got.raw[0].num_service, 255);
}

TEST_F(BondedDevices, SeveralRecordsMayComeInOneEvent) {
    const auto got =
        GetWith(5, {AdapterProperties({Record(15, SavedDevice(3, 0, kA, 1, "one")), Record(7, "\x01"),
                                       Record(15, SavedDevice(3, 1, kB, 2, "two")),
                                       Record(15, SavedDevice(3, 2, kC, 3, "three"))})});
    EXPECT_EQ(got.devices, (Texts{"C504030201C0 three", "B504030201B0 two", "A504030201A0 one"}));
    EXPECT_EQ(got.size, 3);
}

TEST_F(BondedDevices, ManyMakeTheListGrow) {
    std::vector<wire::Saved> list;
    Texts expected;
    for (int i = 0; i < 21; ++i) {
        const bt_bdaddr_t address = {{static_cast<uint8_t>(i), 1, 2, 3, 4, 5}};
        list.push_back({address, "device " + std::to_string(i), 0});
        expected.insert(expected.begin(),
                        support::AddressText(address) + " device " + std::to_string(i));
    }
    const auto got = Get(30, list);
    EXPECT_EQ(got.devices, expected);
    EXPECT_EQ(got.size, 21);
}

TEST_F(BondedDevices, TwiceTheSameIsDeliveredOnce) {
    const auto got = Get(10, {kSavedA, kSavedB, kSavedA});
    EXPECT_EQ(got.devices, (Texts{"A504030201A0 Anna", "B504030201B0 Bert"}));
    EXPECT_EQ(got.size, 2);
    EXPECT_EQ(Printed("index : 0 address is same at :2\n"), 1U);
    EXPECT_EQ(Printed("address is same"), 1U);
}

TEST_F(BondedDevices, ComparisonsPrintTheOuterBytesOfBothAddresses) {
    Get(10, {kSavedA, kSavedB});
    const std::string either = "compare dev\\[1\\]\\[A0----A5\\] with dev\\[0\\]\\[B0----B5\\]\n|"
                               "compare dev\\[0\\]\\[B0----B5\\] with dev\\[1\\]\\[A0----A5\\]\n";
    EXPECT_TRUE(wire::Occurs(either, Output().Out())) << Output().Out();
    EXPECT_EQ(Printed("compare dev["), 1U);
}

TEST_F(BondedDevices, EachDuplicateCountsOnce) {
    const auto got = Get(10, {kSavedA, kSavedA, kSavedA});
    EXPECT_EQ(got.devices, (Texts{"A504030201A0 Anna"}));
    EXPECT_EQ(got.size, 1);
    EXPECT_EQ(Printed("address is same"), 2U);
    EXPECT_EQ(Printed("index : 0 address is same at :1\n"), 1U);
    EXPECT_EQ(Printed("index : 0 address is same at :2\n"), 1U);
}

TEST_F(BondedDevices, ARoomThatIsSmallerGetsTheNewestAndTheCountOfAll) {
    const auto two = Get(2, {kSavedA, kSavedB, kSavedC});
    EXPECT_EQ(two.devices, (Texts{"C504030201C0 Carl", "B504030201B0 Bert"}));
    EXPECT_EQ(two.size, 3);
    const auto one = Get(1, {kSavedA, kSavedB, kSavedC});
    EXPECT_EQ(one.devices, (Texts{"C504030201C0 Carl"}));
    EXPECT_EQ(one.size, 3);
}

TEST_F(BondedDevices, OnlyDuplicatesWithinTheRoomAreSubtracted) {
    const auto within = Get(2, {kSavedA, kSavedB, kSavedB});
    EXPECT_EQ(within.devices, (Texts{"B504030201B0 Bert"}));
    EXPECT_EQ(within.size, 2);
    const auto beyond = Get(2, {kSavedC, kSavedA, kSavedB, kSavedC});
    EXPECT_EQ(beyond.devices, (Texts{"C504030201C0 Carl", "B504030201B0 Bert"}));
    EXPECT_EQ(beyond.size, 4);
}

TEST_F(BondedDevices, WithoutRoomOnlyTheCountIsTold) {
    for (const int room : {0, -1, -2147483647 - 1}) {
        const auto got = Get(room, {kSavedA, kSavedB, kSavedA});
        EXPECT_EQ(got.devices, Texts{}) << room;
        EXPECT_EQ(got.size, 3) << room;
    }
    EXPECT_EQ(Printed("compare dev["), 0U);
}

TEST_F(BondedDevices, WithoutAnArrayOnlyTheCountIsTold) {
    EXPECT_EQ(Count(10, {kSavedA, kSavedB, kSavedA}), 3);
    EXPECT_EQ(Count(-1, {kSavedA}), 1);
    EXPECT_EQ(Printed("compare dev["), 0U);
}

TEST_F(BondedDevices, NoneAnywhereIsASizeOfNone) {
    const auto got = Get(3, {});
    EXPECT_EQ(got.devices, Texts{});
    EXPECT_EQ(got.size, 0);
    EXPECT_EQ(Printed("vym_bluetooth_get_bonded_devices size is 0"), 1U);
    EXPECT_EQ(Printed("vym_bluetooth_get_bonded_devices size is 0\n"), 0U) << "the line stays open";
    EXPECT_EQ(Count(3, {}), 0);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, ATotalOfNoneEndsTheListWithWhatHasCome) {
    const auto got = GetWith(
        3, {AdapterProperties({Record(15, SavedDevice(9, 0, kA, 0, "Anna"))}), wire::NoSavedDevices()});
    EXPECT_EQ(got.devices, (Texts{"A504030201A0 Anna"}));
    EXPECT_EQ(got.size, 1);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, TheIndexEndsTheListNotTheCount) {
    const auto got = GetWith(3, {AdapterProperties({Record(15, SavedDevice(3, 2, kC, 0, "Carl"))})});
    EXPECT_EQ(got.devices, (Texts{"C504030201C0 Carl"}));
    EXPECT_EQ(got.size, 1);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, AListThatDoesNotEndIsGivenAsFarAsItCame) {
    const auto got = GetWith(3, {AdapterProperties({Record(15, SavedDevice(3, 0, kA, 0, "Anna"))}),
                                 AdapterProperties({Record(15, SavedDevice(3, 1, kB, 0, "Bert"))})});
    EXPECT_EQ(got.devices, (Texts{"B504030201B0 Bert", "A504030201A0 Anna"}));
    EXPECT_EQ(got.size, 2);
    EXPECT_EQ(Printed("wait for sync event(15) Failed!!!\n"), 1U);
}

TEST_F(BondedDevices, AShortRecordCountsAsZeroesBehindItsEnd) {
    const auto shortest = GetWith(2, {AdapterProperties({Record(15, "\x01")})});
    EXPECT_EQ(shortest.devices, (Texts{"000000000000 "}));
    EXPECT_EQ(shortest.size, 1);
    const std::string whole = SavedDevice(1, 0, kA, 0x01020304, "");
    const auto cut = GetWith(2, {AdapterProperties({Record(15, whole.substr(0, 10))})});
    ASSERT_EQ(cut.devices, (Texts{"A504030201A0 "}));
    EXPECT_EQ(cut.raw[0].class_of_device, 0x0304U);
    const auto nameless = GetWith(2, {AdapterProperties({Record(15, whole)})});
    EXPECT_EQ(nameless.devices, (Texts{"A504030201A0 "}));
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, AnEmptyRecordAnswersWithoutADevice) {
    const auto got = GetWith(2, {AdapterProperties({Record(15, "")})});
    EXPECT_EQ(got.size, 0);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(BondedDevices, TheLongestNameOfARecordIsDeliveredWhole) {
    std::string longest(210, 'n');
    longest.back() = '!';
    const auto got = Get(1, {{kA, longest, 0}});
    EXPECT_EQ(got.devices, (Texts{"A504030201A0 " + longest}));
}

TEST_F(BondedDevices, ThoseNobodyAskedForDoNotStayInTheList) {
    std::vector<std::string> unasked;
    for (int i = 0; i < 300; ++i) {
        const bt_bdaddr_t address = {{static_cast<uint8_t>(i), 9, 9, 9, 9, 9}};
        unasked.push_back(AdapterProperties({Record(15, SavedDevice(255, 0, address, 0, "u"))}));
    }
    Handle(unasked);
    const auto got = Get(5, {kSavedA});
    EXPECT_EQ(got.devices, (Texts{"A504030201A0 Anna"}));
    EXPECT_EQ(got.size, 1);
}

TEST_F(BondedDevices, AServerThatListsWithoutEndIsCutShort) {
    std::vector<std::string> answer;
    for (int i = 0; i < 300; ++i) {
        const bt_bdaddr_t address = {
            {static_cast<uint8_t>(i), static_cast<uint8_t>(i / 256), 9, 9, 9, 9}};
        answer.push_back(AdapterProperties({Record(15, SavedDevice(255, 0, address, 0, "u"))}));
    }
    answer.push_back(AdapterProperties({Record(15, SavedDevice(255, 254, kA, 0, "last"))}));
    const auto got = GetWith(1, answer);
    EXPECT_EQ(got.devices.size(), 1U);
    EXPECT_GE(got.size, 255) << "as many as a total can tell";
    EXPECT_LE(got.size, 256);
    EXPECT_EQ(TimeOuts(), 0U);
}

// The list is given up after a second while the server goes on.
TEST_F(BondedDevices, ARecordMayArriveWhileTheListIsHandedOut) {
    std::atomic<bool> ended{false};
    auto lists = Start([&ended] {
        int got_some = 0;
        for (int i = 0; i < 2; ++i) {
            bt_remote_device_t devices[8];
            int size = 8;
            vym_bluetooth_get_bonded_devices(devices, &size);
            got_some += size > 0 ? 1 : 0;
        }
        ended = true;
        return got_some;
    });
    for (uint8_t i = 0; !ended; ++i) {
        const bt_bdaddr_t address = {{i, 9, 9, 9, 9, 9}};
        Handle({AdapterProperties({Record(15, SavedDevice(255, 0, address, 0, "slow"))})});
    }
    EXPECT_EQ(lists.get(), 2);
    EXPECT_EQ(TimeOuts(), 2U);
}

TEST_F(BondedDevices, HowManyTheServerKeepsIsAskedForAndSet) {
    EXPECT_EQ(Ask(vym_bluetooth_get_number_of_bonded_devices, "AT#BA23\r\n",
                  {AdapterProperties({Record(35, wire::Number(0x01020304))})}),
              0x01020304);
    EXPECT_EQ(vym_bluetooth_set_number_of_bonded_devices(8), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB230007" + Bytes({8, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDD}) + "\r\n");
    EXPECT_EQ(TimeOuts(), 0U) << "the setter does not wait";
}

} // namespace
