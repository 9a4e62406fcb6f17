// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bonds that events tell of: they are what the application gets when the server lists none.

#include "wire/adapter_bonded_support.h"

#include <atomic>

namespace {

using wire::AdapterProperties;
using wire::Bytes;
using wire::DeviceProperties;
using wire::kA;
using wire::kB;
using wire::kC;
using wire::Number;
using wire::Record;
using Texts = std::vector<std::string>;

constexpr char kNoResort[] = "no resort is required, return\r\n";

class LocalBonds : public wire::BondedTest {
protected:
    void Bond(const bt_bdaddr_t& address) { Handle({"BH00" + support::AddressText(address) + "02"}); }
    void Unbond(const bt_bdaddr_t& address) { Handle({"BH00" + support::AddressText(address) + "00"}); }
    void Connect(const bt_bdaddr_t& address) {
        Handle({"BI00" + support::AddressText(address) + "00"});
    }
    void TearDown() override {
        Handle({"BI0000000000000001"}); // no link for the tests that follow
        EXPECT_EQ(TimeOuts(), 0U);
        wire::BondedTest::TearDown();
    }
    // The entry's class of device, 0 when it is not listed.
    uint32_t ClassOf(const std::string& digits) {
        for (const bt_remote_device_t& device : Get(10, {}).raw) {
            if (support::AddressText(device.address) == digits) {
                return device.class_of_device;
            }
        }
        return 0;
    }
};

TEST_F(LocalBonds, AreDeliveredNewestFirst) {
    Bond(kA);
    Bond(kB);
    const auto got = Get(10, {});
    EXPECT_EQ(got.devices, (Texts{"B504030201B0 ", "A504030201A0 "}));
    EXPECT_EQ(got.size, 2);
    EXPECT_EQ(got.raw[0].class_of_device, 0U);
    EXPECT_EQ(got.raw[0].num_service, 0);
    EXPECT_EQ(Printed("vym_bluetooth_get_bonded_devices size is 0"), 1U);
}

TEST_F(LocalBonds, AreDeliveredAsFarAsThereIsRoomAndAllCounted) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    const auto two = Get(2, {});
    EXPECT_EQ(two.devices, (Texts{"C504030201C0 ", "B504030201B0 "}));
    EXPECT_EQ(two.size, 3);
    for (const int room : {0, -1, -2147483647 - 1}) {
        const auto none = Get(room, {});
        EXPECT_EQ(none.devices, Texts{}) << room;
        EXPECT_EQ(none.size, 3) << room;
    }
    EXPECT_EQ(Count(1, {}), 3);
}

TEST_F(LocalBonds, AreNotAskedWhenTheServerHasAny) {
    Bond(kA);
    EXPECT_EQ(Get(10, {{kB, "Bert"}}).devices, (Texts{"B504030201B0 Bert"}));
    EXPECT_EQ(Count(10, {{kB, "Bert"}, {kC, "Carl"}}), 2);
}

TEST_F(LocalBonds, OfTheSameDeviceAreOne) {
    Bond(kA);
    Bond(kB);
    Bond(kA);
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 "}));
}

TEST_F(LocalBonds, FailedOrInProgressAreNone) {
    Handle({"BH01A504030201A002", "BHFFA504030201A002", "BH00A504030201A001", "BH00A504030201A003"});
    EXPECT_EQ(LocalList(), Texts{});
    Bond(kA);
    Handle({"BH01A504030201A000", "BH00A504030201A001"});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 "})) << "a failed removal removes nothing";
}

TEST_F(LocalBonds, AreKnownBeforeTheCallbackHearsOfThem) {
    std::atomic<int> size{0};
    Adapter().SetHook([&](const std::string&) {
        // Nothing is read while the callback runs: the request ends without an answer.
        int count = 0;
        vym_bluetooth_get_bonded_devices(nullptr, &count);
        size = count;
    });
    Server().SendEvents({wire::NoSavedDevices(), "BH00A504030201A002"});
    Server().ExpectCommand("AT#BA0F\r\n");
    EXPECT_TRUE(support::WaitUntil([&size] { return size == 1; })) << size;
    Adapter().SetHook(nullptr);
}

TEST_F(LocalBonds, ThatAreRemovedLeaveTheOthersInOrder) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    Unbond(kB);
    EXPECT_EQ(LocalList(), (Texts{"C504030201C0 ", "A504030201A0 "}));
    Unbond(kB);
    Unbond(kC);
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 "}));
    Unbond(kA);
    EXPECT_EQ(LocalList(), Texts{});
    EXPECT_EQ(Count(5, {}), 0);
    Bond(kA);
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 "}));
}

TEST_F(LocalBonds, TheServerTellsOfAreTakenMostSignificantByteFirst) {
    Bond(kB);
    const std::string addresses =
        Bytes({0xA5, 4, 3, 2, 1, 0xA0, 0xB5, 4, 3, 2, 1, 0xB0, 0, 0, 0, 0, 0, 1});
    Handle({AdapterProperties({Record(8, addresses)})});
    EXPECT_EQ(LocalList(), (Texts{"000000000001 ", "A504030201A0 ", "B504030201B0 "}));
}

TEST_F(LocalBonds, FromLessThanAnAddressAreNone) {
    const std::string one_and_a_half = Bytes({0xA5, 4, 3, 2, 1, 0xA0, 0xB5, 4, 3, 2, 1});
    Handle({AdapterProperties({Record(8, one_and_a_half), Record(8, "short"), Record(8, "")})});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 "}));
}

TEST_F(LocalBonds, ThatConnectMoveToTheFrontAndSoAreDeliveredLast) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    Connect(kC);
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 ", "C504030201C0 "}));
    EXPECT_EQ(Printed(kNoResort), 0U);
    Connect(kA);
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "C504030201C0 ", "A504030201A0 "}));
}

TEST_F(LocalBonds, ThatConnectAgainStayInFront) {
    Bond(kA);
    Bond(kB);
    Connect(kA);
    EXPECT_EQ(Printed(kNoResort), 1U);
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 "}));
}

TEST_F(LocalBonds, AreNotMovedByStrangers) {
    Connect(kA);
    EXPECT_EQ(Printed(kNoResort), 0U) << "nothing to sort";
    Bond(kA);
    Bond(kB);
    Connect(kC);
    EXPECT_EQ(Printed(kNoResort), 1U);
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 "}));
}

TEST_F(LocalBonds, AreMovedOnlyByAConnection) {
    Bond(kA);
    Bond(kB);
    Handle({"BI00B504030201B001", "BI00B504030201B002"});
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 "}));
    Handle({"BI13B504030201B000"});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 ", "B504030201B0 "})) << "whatever the status";
}

TEST_F(LocalBonds, GetNameAndClassFromThePropertiesOfTheDevice) {
    Bond(kA);
    Bond(kB);
    Handle({DeviceProperties(kA, {Record(1, "Anna"), Record(4, Number(0x01020304))}),
            DeviceProperties(kC, {Record(1, "Carl"), Record(4, Number(5))})});
    EXPECT_EQ(LocalList(), (Texts{"B504030201B0 ", "A504030201A0 Anna"}));
    EXPECT_EQ(ClassOf("A504030201A0"), 0x01020304U);
    EXPECT_EQ(ClassOf("B504030201B0"), 0U);
}

TEST_F(LocalBonds, IgnoreAClassOfFewerThanFourBytes) {
    Bond(kA);
    Handle({DeviceProperties(kA, {Record(4, Number(0x01020304))}),
            DeviceProperties(kA, {Record(4, "abc"), Record(4, "")})});
    EXPECT_EQ(ClassOf("A504030201A0"), 0x01020304U);
    Handle({DeviceProperties(kA, {Record(4, "\x05\x06\x07\x08more")})});
    EXPECT_EQ(ClassOf("A504030201A0"), 0x08070605U);
}

TEST_F(LocalBonds, KeepTheTailOfALongerName) {
    Bond(kA);
    Handle({DeviceProperties(kA, {Record(1, "Anna")}), DeviceProperties(kA, {Record(1, "Xy")})});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 Xyna"}));
    Handle({DeviceProperties(kA, {Record(1, "")})});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 Xyna"}));
}

TEST_F(LocalBonds, CutANameAt248Bytes) {
    Bond(kA);
    Handle({DeviceProperties(kA, {Record(1, std::string(255, 'n'))})});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 " + std::string(248, 'n')}));
}

TEST_F(LocalBonds, KeepNameAndClassWhenTheyMove) {
    Bond(kA);
    Bond(kB);
    Handle({DeviceProperties(kB, {Record(1, "Bert"), Record(4, Number(7))})});
    Connect(kB);
    Bond(kC);
    Unbond(kA);
    EXPECT_EQ(LocalList(), (Texts{"C504030201C0 ", "B504030201B0 Bert"}));
    EXPECT_EQ(ClassOf("B504030201B0"), 7U);
}

TEST_F(LocalBonds, AreRefreshedFromWhatIsDeliveredOfTheServersList) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    Get(2, {{kA, "Anna", 1}, {kB, "Bert", 2}, {kC, "Carl", 3}});
    EXPECT_EQ(LocalList(), (Texts{"C504030201C0 Carl", "B504030201B0 Bert", "A504030201A0 "}))
        << "beyond the room nothing is refreshed";
    EXPECT_EQ(ClassOf("C504030201C0"), 3U);
    EXPECT_EQ(ClassOf("A504030201A0"), 0U);
    Count(3, {{kA, "Anna", 1}});
    EXPECT_EQ(LocalList().back(), "A504030201A0 ") << "nor when only the count was asked for";
    Get(3, {{kA, "Old name", 4}, {kA, "Anna", 1}});
    EXPECT_EQ(LocalList().back(), "A504030201A0 Anna") << "nor by a duplicate";
    EXPECT_EQ(ClassOf("A504030201A0"), 1U);
}

TEST_F(LocalBonds, KeepTheTailOfALongerNameAlsoWhenTheServersListRefreshesThem) {
    Bond(kA);
    Handle({DeviceProperties(kA, {Record(1, "Annabel")})});
    Get(1, {{kA, "Xy"}});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 Xynabel"}));
}

TEST_F(LocalBonds, AreNotExtendedByTheServersList) {
    Bond(kA);
    Get(3, {{kB, "Bert", 1}});
    EXPECT_EQ(LocalList(), (Texts{"A504030201A0 "}));
}

TEST_F(LocalBonds, AreForgottenWhenTheAdapterIsStartedAgain) {
    Bond(kA);
    Session().StopAdapter();
    Session().StartAdapter();
    EXPECT_EQ(LocalList(), Texts{});
}

class UnansweredRequest : public wire::BondedTest {};

TEST_F(UnansweredRequest, IsServedFromTheLocalBonds) {
    Handle({"BH00A504030201A002"});
    bt_remote_device_t device{};
    int size = 1;
    vym_bluetooth_get_bonded_devices(&device, &size);
    Server().ExpectCommand("AT#BA0F\r\n");
    EXPECT_EQ(size, 1);
    EXPECT_EQ(support::AddressText(device.address), "A504030201A0");
    EXPECT_EQ(Printed("wait for sync event(15) Failed!!!\n"), 1U);
}

} // namespace
