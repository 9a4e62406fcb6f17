// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_bluetooth_impl.h"

#include "support/adapter_record.h"
#include "support/output_capture.h"

#include <array>
#include <memory>
#include <thread>

namespace {

using Texts = std::vector<std::string>;

constexpr bt_bdaddr_t kA = {{0xA0, 1, 2, 3, 4, 5}};
constexpr bt_bdaddr_t kB = {{0xB0, 1, 2, 3, 4, 5}};
constexpr bt_bdaddr_t kC = {{0xC0, 1, 2, 3, 4, 5}};
constexpr char kNoResort[] = "no resort is required, return\r\n";

class BondedList : public ::testing::Test {
protected:
    void SetUp() override {
        vym_bonded_list_clear();
        output_ = std::make_unique<support::OutputCapture>();
    }
    void TearDown() override {
        output_.reset();
        vym_bonded_list_clear();
    }

    static void Bond(const bt_bdaddr_t& address) {
        handle_device_bond_state_change(address, BT_BOND_STATE_BONDED);
    }
    static void Unbond(const bt_bdaddr_t& address) {
        handle_device_bond_state_change(address, BT_BOND_STATE_NONE);
    }
    static void Name(const bt_bdaddr_t& address, std::string name) {
        handle_bond_device_name_update(address, name.data(), static_cast<int>(name.size()));
    }

    static std::array<bt_remote_device_t, 8> Entries() {
        std::array<bt_remote_device_t, 8> entries{};
        vym_bonded_list_copy(entries.data(), static_cast<int>(entries.size()));
        return entries;
    }

    // First bytes and names of the entries in the list's own order: "A0", "B0 name".
    static Texts List() {
        const auto entries = Entries();
        Texts texts;
        for (int i = handle_get_bonded_device_count() - 1; i >= 0; --i) {
            const bt_remote_device_t& entry = entries[static_cast<size_t>(i)];
            const std::string name = reinterpret_cast<const char*>(entry.name.name);
            texts.push_back(support::AddressText(entry.address).substr(10) +
                            (name.empty() ? "" : " " + name));
        }
        return texts;
    }

    [[nodiscard]] std::string Out() const { return output_->Out(); }

private:
    std::unique_ptr<support::OutputCapture> output_;
};

TEST_F(BondedList, BeginsEmpty) {
    EXPECT_EQ(handle_get_bonded_device_count(), 0);
    EXPECT_EQ(vym_bonded_list_copy(nullptr, 5), 0);
    bt_remote_device_t device{};
    EXPECT_EQ(vym_bonded_list_copy(&device, 1), 0);
}

TEST_F(BondedList, ABondIsAppendedWithNothingButItsAddress) {
    Bond(kA);
    Bond(kB);
    EXPECT_EQ(List(), (Texts{"A0", "B0"}));
    const bt_remote_device_t first = Entries()[1];
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&first), 6), "\xA0\x01\x02\x03\x04\x05");
    const std::string rest(reinterpret_cast<const char*>(&first) + 6, sizeof first - 6);
    EXPECT_EQ(rest, std::string(sizeof first - 6, '\0'));
}

TEST_F(BondedList, ABondThatIsListedStaysWhereItIs) {
    Bond(kA);
    Bond(kB);
    Name(kA, "Anna");
    Bond(kA);
    EXPECT_EQ(List(), (Texts{"A0 Anna", "B0"}));
}

TEST_F(BondedList, OtherStatesChangeNothing) {
    Bond(kA);
    for (const int state : {1, 3, 4, 255}) {
        handle_device_bond_state_change(kA, static_cast<uint8_t>(state));
        handle_device_bond_state_change(kB, static_cast<uint8_t>(state));
    }
    EXPECT_EQ(List(), (Texts{"A0"}));
}

TEST_F(BondedList, RemovalClosesTheGap) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    Name(kC, "Carl");
    Unbond(kB);
    EXPECT_EQ(List(), (Texts{"A0", "C0 Carl"}));
    Unbond(kA);
    EXPECT_EQ(List(), (Texts{"C0 Carl"}));
    Unbond(kA);
    EXPECT_EQ(List(), (Texts{"C0 Carl"})) << "one that is not listed";
}

TEST_F(BondedList, RemovalOfTheOnlyOneLeavesItEmptyAndUsable) {
    Bond(kA);
    Unbond(kA);
    EXPECT_EQ(handle_get_bonded_device_count(), 0);
    Unbond(kA);
    resort_bonded_dev_by_last_connect(kA);
    Bond(kB);
    EXPECT_EQ(List(), (Texts{"B0"}));
}

TEST_F(BondedList, ThoseThatDifferInOneByteAreDifferentDevices) {
    for (size_t i = 0; i < 6; ++i) {
        bt_bdaddr_t address = kA;
        address.address[i] = 0xFF;
        Bond(address);
    }
    Bond(kA);
    EXPECT_EQ(handle_get_bonded_device_count(), 7);
}

TEST_F(BondedList, AConnectionMovesItsDeviceToTheFront) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    Name(kB, "Bert");
    resort_bonded_dev_by_last_connect(kB);
    EXPECT_EQ(List(), (Texts{"B0 Bert", "A0", "C0"}));
    resort_bonded_dev_by_last_connect(kC);
    EXPECT_EQ(List(), (Texts{"C0", "B0 Bert", "A0"}));
    EXPECT_EQ(Out(), "");
}

TEST_F(BondedList, AConnectionOfTheFirstOrOfAStrangerIsPrintedAndChangesNothing) {
    Bond(kA);
    Bond(kB);
    resort_bonded_dev_by_last_connect(kA);
    EXPECT_EQ(Out(), kNoResort);
    resort_bonded_dev_by_last_connect(kC);
    EXPECT_EQ(Out(), std::string(kNoResort) + kNoResort);
    EXPECT_EQ(List(), (Texts{"A0", "B0"}));
}

TEST_F(BondedList, AConnectionOnAnEmptyListIsNotPrinted) {
    resort_bonded_dev_by_last_connect(kA);
    EXPECT_EQ(Out(), "");
}

TEST_F(BondedList, AShorterNameKeepsTheTailOfTheLonger) {
    Bond(kA);
    Name(kA, "Anna");
    Name(kA, "Xy");
    EXPECT_EQ(List(), (Texts{"A0 Xyna"}));
    Name(kA, "");
    EXPECT_EQ(List(), (Texts{"A0 Xyna"}));
    Name(kB, "Bert");
    EXPECT_EQ(List(), (Texts{"A0 Xyna"})) << "a stranger's name";
}

TEST_F(BondedList, ANameOfNoLengthOrLessIsIgnored) {
    Bond(kA);
    Name(kA, "Anna");
    char name[] = "Never";
    handle_bond_device_name_update(kA, name, -1);
    handle_bond_device_name_update(kA, name, 0);
    handle_bond_device_name_update(kA, nullptr, 0);
    EXPECT_EQ(List(), (Texts{"A0 Anna"}));
}

TEST_F(BondedList, ANameIsCutAt248BytesAndEndsWithItsNul) {
    Bond(kA);
    Name(kA, std::string(300, 'n'));
    EXPECT_EQ(List(), (Texts{"A0 " + std::string(248, 'n')}));
    EXPECT_EQ(Entries()[0].name.name[248], 0);
    EXPECT_EQ(Entries()[0].class_of_device, 0U) << "nothing was written behind the name";
}

TEST_F(BondedList, AClassIsThatOfItsDevice) {
    Bond(kA);
    Bond(kB);
    handle_bond_device_class_update(kA, 0xFEDCBA98U);
    handle_bond_device_class_update(kC, 7);
    EXPECT_EQ(Entries()[1].class_of_device, 0xFEDCBA98U);
    EXPECT_EQ(Entries()[0].class_of_device, 0U);
}

TEST_F(BondedList, IsCopiedFromItsEndAsFarAsThereIsRoom) {
    Bond(kA);
    Bond(kB);
    Bond(kC);
    std::array<bt_remote_device_t, 4> devices{};
    EXPECT_EQ(vym_bonded_list_copy(devices.data(), 2), 3);
    EXPECT_EQ(devices[0].address.address[0], 0xC0);
    EXPECT_EQ(devices[1].address.address[0], 0xB0);
    EXPECT_EQ(devices[2].address.address[0], 0);
    EXPECT_EQ(vym_bonded_list_copy(devices.data(), 4), 3);
    EXPECT_EQ(devices[2].address.address[0], 0xA0);
    EXPECT_EQ(devices[3].address.address[0], 0);
}

TEST_F(BondedList, WithoutRoomOnlyItsLengthIsTold) {
    Bond(kA);
    bt_remote_device_t device{};
    for (const int room : {0, -1, -2147483647 - 1}) {
        EXPECT_EQ(vym_bonded_list_copy(&device, room), 1);
    }
    EXPECT_EQ(device.address.address[0], 0);
    EXPECT_EQ(vym_bonded_list_copy(nullptr, 5), 1);
}

TEST_F(BondedList, MayBeUsedByManyThreads) {
    const auto work = [](uint8_t first) {
        const bt_bdaddr_t mine = {{first, 0, 0, 0, 0, 0}};
        for (int i = 0; i < 200; ++i) {
            Bond(mine);
            Name(mine, "name");
            handle_bond_device_class_update(mine, first);
            resort_bonded_dev_by_last_connect(mine);
            Entries();
            if (i < 199) {
                Unbond(mine);
            }
        }
    };
    std::thread one(work, uint8_t{1});
    std::thread two(work, uint8_t{2});
    one.join();
    two.join();
    EXPECT_EQ(handle_get_bonded_device_count(), 2);
    for (const Texts& expected : {Texts{"01 name", "02 name"}, Texts{"02 name", "01 name"}}) {
        if (List() == expected) {
            return;
        }
    }
    ADD_FAILURE() << "the list holds " << ::testing::PrintToString(List());
}

} // namespace
