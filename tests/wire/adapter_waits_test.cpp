// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// How waiting goes together with late answers, answers nobody asked for, callbacks and other threads.

#include "wire/adapter_support.h"

#include <atomic>

namespace {

using wire::AdapterProperties;
using wire::DeviceProperties;
using wire::kDevice;
using wire::Number;
using wire::Record;
using wire::SavedDevice;

class AdapterWaits : public wire::AdapterWireTest {
protected:
    // A getter that nobody answers: it must wait its second out.
    void ExpectNoStalePost() {
        const size_t before = TimeOuts();
        AskInVain(vym_bluetooth_get_class, "AT#BA04\r\n");
        EXPECT_EQ(TimeOuts(), before + 1) << "something had been posted before";
    }

    // A getter that nobody answers: what an earlier event left behind ends its wait at once.
    void ExpectStalePost() {
        const size_t before = TimeOuts();
        AskInVain(vym_bluetooth_get_class, "AT#BA04\r\n");
        EXPECT_EQ(TimeOuts(), before) << "nothing had been posted before";
    }
};

TEST_F(AdapterWaits, PropertiesThatNobodyAwaitsPostNothing) {
    std::vector<std::string> records;
    for (unsigned type = 0; type < 48; ++type) {
        if (type != 15) {
            records.push_back(Record(type, Number(0x41414141)));
        }
    }
    Handle({AdapterProperties(records), DeviceProperties(kDevice, records), "PVunasked"});
    ExpectNoStalePost();
}

TEST_F(AdapterWaits, ALateAnswerPostsNothingButIsKept) {
    Cache(7, Number(1));
    EXPECT_EQ(AskInVain(vym_bluetooth_get_scan_mode, "AT#BA07\r\n"), BT_SCAN_MODE_CONNECTABLE);
    Handle({AdapterProperties({Record(7, Number(2))})});
    ExpectNoStalePost();
    const std::string empty = AdapterProperties({Record(7, "")});
    EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", {empty}),
              BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
}

TEST_F(AdapterWaits, TheLastBondedDeviceThatNobodyAskedForEndsTheNextWait) {
    Handle({AdapterProperties({Record(15, SavedDevice(2, 0, kDevice, 0, "not the last"))}),
            AdapterProperties({Record(15, SavedDevice(2, 1, kDevice, 0, "the last"))})});
    ExpectStalePost();
    ExpectNoStalePost();
}

TEST_F(AdapterWaits, AnEmptyBondedListThatNobodyAskedForEndsTheNextWait) {
    Handle({wire::NoSavedDevices()});
    ExpectStalePost();
    ExpectNoStalePost();
}

TEST_F(AdapterWaits, ABondedDeviceThatIsNotTheLastPostsNothing) {
    Handle({AdapterProperties({Record(15, SavedDevice(3, 0, kDevice, 0, "a")),
                               Record(15, SavedDevice(3, 1, kDevice, 0, "b")), Record(15, "")})});
    ExpectNoStalePost();
}

TEST_F(AdapterWaits, AStalePostEndsTheRequestForBondedDevicesAsWell) {
    Handle({"BH00A1B2C3D4E5F602", wire::NoSavedDevices()});
    bt_remote_device_t device{};
    int size = 1;
    EXPECT_EQ(vym_bluetooth_get_bonded_devices(&device, &size), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BA0F\r\n");
    EXPECT_EQ(size, 1);
    EXPECT_EQ(support::AddressText(device.address), "A1B2C3D4E5F6");
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterWaits, StalePostsDoNotOutliveTheAdapter) {
    Handle({wire::NoSavedDevices()});
    Session().StopAdapter();
    Session().StartAdapter();
    ExpectNoStalePost();
}

// The change of state waits for the getter, and so does the answer behind it.
TEST_F(AdapterWaits, AChangeOfStateDuringAWaitIsDeliveredAfterIt) {
    Handle({"PA00"});
    Adapter().Take();
    Cache(4, Number(1));
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n",
                  {"PA01", AdapterProperties({Record(4, Number(2))})}),
              1);
    EXPECT_EQ(TimeOuts(), 1U);
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Take(), (std::vector<std::string>{"state_changed(1)"}));
    EXPECT_EQ(vym_bluetooth_get_state(), BT_STATE_ON);
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {AdapterProperties({Record(4, "")})}), 2)
        << "the answer came too late for the first request only";
    EXPECT_EQ(TimeOuts(), 1U);
}

TEST_F(AdapterWaits, AGetterInACallbackTimesOutAndEventsFlowAgain) {
    Cache(4, Number(3));
    std::atomic<int> class_of_device{0};
    Adapter().SetHook([&](const std::string& entry) {
        if (entry == "discovery_state_changed(1)") {
            class_of_device = vym_bluetooth_get_class();
        }
    });
    Server().Send(wire::Event("BE01"));
    Server().ExpectCommand("AT#BA04\r\n");
    Handle({AdapterProperties({Record(4, Number(4))}), "BE00"});
    EXPECT_EQ(class_of_device, 3) << "the answer can only be read once the callback has returned";
    EXPECT_EQ(Printed("wait for sync event(4) Failed!!!\n"), 1U);
    EXPECT_EQ(Adapter().Take(),
              (std::vector<std::string>{"discovery_state_changed(1)", "discovery_state_changed(0)"}));
}

TEST_F(AdapterWaits, AGetterMayBeCalledWhenTheStateChanges) {
    Cache(7, Number(2));
    std::atomic<int> seen{-1};
    std::atomic<int> state{-1};
    Adapter().SetHook([&](const std::string& entry) {
        if (entry == "state_changed(1)") {
            state = vym_bluetooth_get_state();
            seen = vym_bluetooth_get_scan_mode();
        }
    });
    Server().Send(wire::Event("PA01"));
    Server().ExpectCommand("AT#BA07\r\n");
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(state, 1) << "the state is known before it is told";
    EXPECT_EQ(seen, 2);
    EXPECT_EQ(TimeOuts(), 1U);
    Handle({"PA00"});
}

TEST_F(AdapterWaits, ACallbackMaySendCommands) {
    Handle({"BI0000112233445501"});
    std::atomic<int> sum{0};
    Adapter().SetHook([&](const std::string& entry) {
        if (entry == "discovery_state_changed(0)") {
            sum += vym_bluetooth_start_discovery();
            sum += vym_bluetooth_acl_cancel_connect(kDevice);
            sum += vym_bluetooth_set_discoverable_timeout(0x01020304);
        }
    });
    Handle({"BE00"});
    Server().ExpectCommand("AT#BK\r\n");
    Server().ExpectCommand("AT#BTDA1B2C3D4E5F6\r\n");
    Server().ExpectCommand("AT#BB090004\x04\x03\x02\x01\r\n");
    EXPECT_EQ(sum, 0);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterWaits, AGetterInACallbackWaitsItsTurnBehindAnotherThread) {
    Cache(4, Number(5));
    Cache(7, Number(1));
    std::atomic<int> mode{-1};
    Adapter().SetHook([&](const std::string& entry) {
        if (entry == "discovery_state_changed(1)") {
            mode = vym_bluetooth_get_scan_mode();
        }
    });
    auto first = Start(vym_bluetooth_get_class);
    Server().ExpectCommand("AT#BA04\r\n");
    Server().Send(wire::Event("BE01")); // its callback cannot ask before the first has given up
    EXPECT_EQ(first.get(), 5);
    Server().ExpectCommand("AT#BA07\r\n");
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(TimeOuts(), 2U);
}

class AdapterThreads : public AdapterWaits {
protected:
    static constexpr int kRounds = 25;

    // Answers the next request as a server that has other things to tell as well.
    void AnswerOne(const std::string& command) {
        Server().SendEvents({"BE01", "BH00A1B2C3D4E5F602"});
        if (command == "AT#BA04\r\n") {
            Server().SendEvents({AdapterProperties({Record(4, Number(0x240404))})});
        } else if (command == "AT#BA07\r\n") {
            Server().SendEvents({AdapterProperties({Record(7, Number(2))})});
        } else if (command == "AT#BA23\r\n") {
            Server().SendEvents({AdapterProperties({Record(35, Number(17))})});
        } else if (command == "AT#BA0F\r\n") {
            Server().SendEvents(
                {AdapterProperties({Record(15, SavedDevice(2, 0, kDevice, 1, "one"))}),
                 AdapterProperties({Record(15, SavedDevice(2, 1, {{1, 2, 3, 4, 5, 6}}, 2, "two"))})});
        } else {
            ADD_FAILURE() << "unexpected command " << support::Escaped(command);
        }
        Server().SendEvents({"BI00A1B2C3D4E5F601", "BH0001020304050602", "BI0001020304050600",
                             "BH00A1B2C3D4E5F600", DeviceProperties(kDevice, {Record(1, "named")}),
                             "BN0003abc"});
    }

    static int CountWrong(int (*call)(), int right) {
        int wrong = 0;
        for (int i = 0; i < kRounds; ++i) {
            wrong += call() == right ? 0 : 1;
        }
        return wrong;
    }
};

int BondedDevices() {
    bt_remote_device_t devices[4] = {};
    int size = 4;
    vym_bluetooth_get_bonded_devices(devices, &size);
    const bool right = size == 2 && wire::NameText(devices[0].name) == "two" &&
                       wire::NameText(devices[1].name) == "one";
    return right ? size : -size;
}

TEST_F(AdapterThreads, GettersTakeTurnsWhileEventsFlow) {
    Handle({"PA00"});
    auto classes = Start([] { return CountWrong(vym_bluetooth_get_class, 0x240404); });
    auto modes = Start([] { return CountWrong([] { return int{vym_bluetooth_get_scan_mode()}; }, 2); });
    auto numbers = Start([] { return CountWrong(vym_bluetooth_get_number_of_bonded_devices, 17); });
    auto lists = Start([] { return CountWrong(BondedDevices, 2); });
    auto states = Start([] { return CountWrong([] { return int{vym_bluetooth_get_state()}; }, 0); });
    for (int i = 0; i < 4 * kRounds; ++i) {
        AnswerOne(Server().ReceiveBytes(9));
    }
    EXPECT_EQ(classes.get(), 0);
    EXPECT_EQ(modes.get(), 0);
    EXPECT_EQ(numbers.get(), 0);
    EXPECT_EQ(lists.get(), 0);
    EXPECT_EQ(states.get(), 0);
    EXPECT_EQ(TimeOuts(), 0U);
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Count("app_gap_started(3, 616263)"), static_cast<size_t>(4 * kRounds));
}

TEST_F(AdapterThreads, LinksMayComeAndGoWhileAConnectionIsGivenUp) {
    auto sent = Start([] {
        size_t count = 0;
        for (int i = 0; i < 100; ++i) {
            count += vym_bluetooth_acl_cancel_connect(kDevice) == BT_STATUS_SUCCESS ? 1U : 0U;
        }
        return count;
    });
    for (int i = 0; i < 50; ++i) {
        Server().SendEvents({"BI00A1B2C3D4E5F600", "BI00A1B2C3D4E5F601"});
    }
    for (size_t left = sent.get(); left > 0; --left) {
        Server().ExpectCommand("AT#BTDA1B2C3D4E5F6\r\n");
    }
    Server().ExpectNothingMore();
    EXPECT_TRUE(Session().EventsAreHandled());
}

TEST_F(AdapterThreads, PointersOfTheCacheMayBeAskedForByManyAtOnce) {
    const auto ask = [] {
        bool same = true;
        const bt_bdname_t* name = vym_bluetooth_get_name();
        const bt_bdaddr_t* address = vym_bluetooth_get_address();
        for (int i = 1; i < 5; ++i) {
            same = same && vym_bluetooth_get_name() == name;
            same = same && vym_bluetooth_get_address() == address;
        }
        return same;
    };
    auto one = Start(ask);
    auto two = Start(ask);
    const std::string both = AdapterProperties({Record(1, "Car"), Record(2, wire::Raw(kDevice))});
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(Server().ReceiveBytes(9).substr(0, 6), "AT#BA0");
        Server().Send(wire::Event(both));
    }
    EXPECT_TRUE(one.get());
    EXPECT_TRUE(two.get());
    EXPECT_EQ(TimeOuts(), 0U);
}

} // namespace
