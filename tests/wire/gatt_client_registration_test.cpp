// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Registering: the two calls that wait, and the callback that a server hangs in.

#include "vym_gatt_client_impl.h"
#include "wire/gatt_client_profile.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

namespace {

using gattc::kServiceUuid;

constexpr bt_bdaddr_t kRising = {{0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};
const std::string kOwnRegistration = "AT#KA41403130212011100078564534120000\r\n";
const std::string kRegistration = "AT#KAFFEEDDCCBBAA99887766554433221100\r\n";
const std::string kHashes = "################################################";

std::string Registered(const std::string& client, const std::string& status = "00") {
    return support::Event("KA" + status + client + gattc::kService);
}

void HookCallback(uint8_t client_if, bt_uuid_t uuid) {
    gattc::Say("hook", client_if, uuid);
}

void OtherHookCallback(uint8_t client_if, bt_uuid_t uuid) {
    gattc::Say("other hook", client_if, uuid);
}

class GattClientRegistration : public gattc::GattClientTest {
protected:
    void TearDown() override {
        // Nobody may be left waiting, whatever a test has found.
        if (HasFailure()) {
            gattc::Profile::Init(wire::Table::kNone);
        }
        while (returned_ < static_cast<int>(callers_.size()) && HasFailure()) {
            Server().Send(Registered("00"));
            EXPECT_TRUE(Session().EventsAreHandled());
        }
        for (std::thread& caller : callers_) {
            caller.join();
        }
        vym_gatt_client_set_server_hook(nullptr);
        GattClientTest::TearDown();
    }

    // Runs a call that waits on a thread of its own.
    void Call(const std::function<bt_status_t()>& call) {
        callers_.emplace_back([this, call] {
            EXPECT_EQ(call(), BT_STATUS_SUCCESS);
            ++returned_;
        });
    }
    void CallRegister() {
        Call([] { return vym_gatt_client_register(kServiceUuid, nullptr); });
    }
    void CallConnect() {
        Call([] { return vym_gatt_client_connect(kRising, 1, 2); });
    }

    int Returned() const { return returned_; }
    void ExpectReturned(int count) {
        EXPECT_TRUE(support::WaitUntil([&] { return returned_ >= count; }));
        EXPECT_EQ(returned_, count);
    }
    // Also after everything that was sent has been dealt with.
    void ExpectStillWaiting(int returned) {
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(returned_, returned);
    }

    void SendHandled(const std::string& bytes) {
        Server().Send(bytes);
        EXPECT_TRUE(Session().EventsAreHandled());
    }

    int64_t CountHashes() {
        const std::string out = Output().Out();
        return std::count(out.begin(), out.end(), '#');
    }

private:
    std::vector<std::thread> callers_;
    std::atomic<int> returned_{0};
};

TEST_F(GattClientRegistration, RegisterWaitsForTheReportAndPrintsItsLine) {
    CallRegister();
    Server().ExpectCommand(kRegistration);
    Server().Send(support::Event("KG123400"));
    ExpectStillWaiting(0);
    EXPECT_EQ(CountHashes(), 0);
    Server().Send(Registered("05"));
    ExpectReturned(1);
    const std::string out = Output().Out();
    EXPECT_EQ(CountHashes(), 48);
    const size_t at = out.find(kHashes);
    ASSERT_NE(at, std::string::npos);
    EXPECT_NE(out.substr(at + 48, 1), "\n") << "the line has no end of its own";
    EXPECT_NE(out.substr(at + 48, 1), "\r");
    Server().ExpectNothingMore();
}

TEST_F(GattClientRegistration, ConnectRegistersWaitsAndUsesTheReportedClient) {
    CallConnect();
    Server().ExpectCommand(kOwnRegistration);
    ExpectStillWaiting(0);
    Server().Send(Registered("05"));
    Server().ExpectCommand("AT#KE056655443322110102\r\n");
    ExpectReturned(1);
    EXPECT_EQ(CountHashes(), 48);
    Server().ExpectNothingMore();
}

TEST_F(GattClientRegistration, AFailedRegistrationIsUsedLikeAnyOther) {
    vym_gatt_client_set_server_hook(HookCallback);
    CallConnect();
    Server().ExpectCommand(kOwnRegistration);
    Server().Send(Registered("A5", "85"));
    Server().ExpectCommand("AT#KEA56655443322110102\r\n");
    ExpectReturned(1);
    ExpectEntries({"hook(165, " + gattc::kService + ")"});
}

TEST_F(GattClientRegistration, AReportThatIsTooShortReleasesNobody) {
    CallRegister();
    Server().ExpectCommand(kRegistration);
    Server().Send(support::Event("KA0005" + gattc::kService.substr(1)));
    ExpectStillWaiting(0);
    SendPart("KA0005" + gattc::kService); // whole without its end
    ExpectReturned(1);
    Server().Send(std::string(1, '\0'));
    EXPECT_TRUE(Session().EventsAreHandled());
}

TEST_F(GattClientRegistration, AReportNobodyWaitedForEndsTheNextWaitAtOnce) {
    EXPECT_EQ(vym_gatt_client_register_client_for_server(kServiceUuid, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand(kRegistration);
    SendHandled(Registered("07"));
    EXPECT_EQ(vym_gatt_client_connect(kRising, 0, 1), BT_STATUS_SUCCESS);
    Server().ExpectCommand(kOwnRegistration);
    Server().ExpectCommand("AT#KE076655443322110001\r\n");
    CallConnect();
    Server().ExpectCommand(kOwnRegistration);
    ExpectStillWaiting(0);
    Server().Send(Registered("08"));
    Server().ExpectCommand("AT#KE086655443322110102\r\n");
    ExpectReturned(1);
}

TEST_F(GattClientRegistration, TwoReportsBeforeAWaitAreOneAndTheLastCounts) {
    SendHandled(Registered("07") + Registered("09"));
    EXPECT_EQ(vym_gatt_client_connect(kRising, 0, 1), BT_STATUS_SUCCESS);
    Server().ExpectCommand(kOwnRegistration);
    Server().ExpectCommand("AT#KE096655443322110001\r\n");
    CallRegister();
    Server().ExpectCommand(kRegistration);
    ExpectStillWaiting(0);
    Server().Send(Registered("0A"));
    ExpectReturned(1);
}

TEST_F(GattClientRegistration, OneReportReleasesOneCaller) {
    constexpr int kCallers = 4;
    for (int i = 0; i < kCallers; ++i) {
        CallRegister();
        Server().ExpectCommand(kRegistration);
    }
    ExpectStillWaiting(0);
    for (int i = 1; i <= kCallers; ++i) {
        Server().Send(Registered("05"));
        ExpectReturned(i);
        ExpectStillWaiting(i);
    }
    EXPECT_EQ(CountHashes(), 48 * kCallers);
}

TEST_F(GattClientRegistration, InitForgetsReports) {
    SendHandled(Registered("07"));
    gattc::Profile::Init(wire::Table::kWhole);
    CallRegister();
    Server().ExpectCommand(kRegistration);
    ExpectStillWaiting(0);
    Server().Send(Registered("08"));
    ExpectReturned(1);
}

TEST_F(GattClientRegistration, WhoWaitsGoesOnWaitingThroughDoneAndInit) {
    CallRegister();
    Server().ExpectCommand(kRegistration);
    vym_gatt_client_done();
    Server().Send(Registered("07"));
    ExpectStillWaiting(0);
    gattc::Profile::Init(wire::Table::kWhole);
    ExpectStillWaiting(0);
    Server().Send(Registered("08"));
    ExpectReturned(1);
}

TEST_F(GattClientRegistration, ItsCallbackIsNeverCalled) {
    Call([] { return vym_gatt_client_register(kServiceUuid, HookCallback); });
    Server().ExpectCommand(kRegistration);
    Server().Send(Registered("05"));
    ExpectReturned(1);
    SendHandled(Registered("06"));
    ExpectEntries({});
}

TEST_F(GattClientRegistration, ManyThreadsMayRegisterAtOnce) {
    constexpr int kThreads = 3;
    constexpr int kRounds = 10;
    for (int i = 0; i < kThreads; ++i) {
        Call([] {
            for (int round = 0; round < kRounds; ++round) {
                vym_gatt_client_connect(kRising, 1, 2);
                vym_gatt_client_register(kServiceUuid, nullptr);
            }
            return BT_STATUS_SUCCESS;
        });
    }
    while (Returned() < kThreads && !HasFailure()) {
        SendHandled(Registered("05"));
    }
    ExpectReturned(kThreads);
    EXPECT_EQ(CountHashes(), 48 * 2 * kThreads * kRounds);
}

// ---- the server's callback ----

TEST_F(GattClientRegistration, TheServersCallbackHearsEveryRegistration) {
    EXPECT_EQ(vym_gatt_client_register_client_for_server(kServiceUuid, HookCallback),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand(kRegistration);
    Server().Send(Registered("05"));
    Server().Send(Registered("06", "01"));
    ExpectEntries({"hook(5, " + gattc::kService + ")", "hook(6, " + gattc::kService + ")"});
    EXPECT_EQ(vym_gatt_client_register(kServiceUuid, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand(kRegistration);
    Server().Send(Registered("07"));
    ExpectEntries({"hook(7, " + gattc::kService + ")"});
}

TEST_F(GattClientRegistration, TheServersCallbackIsReplacedAndRemoved) {
    vym_gatt_client_register_client_for_server(kServiceUuid, HookCallback);
    vym_gatt_client_register_client_for_server(kServiceUuid, OtherHookCallback);
    Server().ExpectCommand(kRegistration + kRegistration);
    Server().Send(Registered("05"));
    ExpectEntries({"other hook(5, " + gattc::kService + ")"});
    vym_gatt_client_register_client_for_server(kServiceUuid, nullptr);
    Server().ExpectCommand(kRegistration);
    Server().Send(Registered("06"));
    ExpectEntries({});
}

TEST_F(GattClientRegistration, AnAnswerToItsUnregistrationFindsTheServersCallbackGone) {
    vym_gatt_client_register_client_for_server(kServiceUuid, HookCallback);
    Server().ExpectCommand(kRegistration);
    std::thread unregister(
        [] { EXPECT_EQ(vym_gatt_client_unregister_client_for_server(0xA5), BT_STATUS_SUCCESS); });
    Server().ExpectCommand("AT#KBA5\r\n");
    Server().Send(Registered("05"));
    ExpectEntries({});
    unregister.join();
}

TEST_F(GattClientRegistration, AClientsUnregistrationLeavesTheServersCallback) {
    vym_gatt_client_register_client_for_server(kServiceUuid, HookCallback);
    vym_gatt_client_unregister(0x05);
    Server().ExpectCommand(kRegistration + "AT#KB05\r\n");
    Server().Send(support::Event("KF05123413A1B2C3D4E5F6") + Registered("06"));
    ExpectEntries({"disconnected(5, 4660, 19, A1B2C3D4E5F6)", "hook(6, " + gattc::kService + ")"});
}

TEST_F(GattClientRegistration, TheServersCallbackSurvivesDoneAndInit) {
    vym_gatt_client_register_client_for_server(kServiceUuid, HookCallback);
    vym_gatt_client_done();
    gattc::Profile::Init(wire::Table::kNone);
    Server().Send(Registered("05"));
    ExpectEntries({"hook(5, " + gattc::kService + ")"});
}

void ConnectingHook(uint8_t client_if, bt_uuid_t uuid) {
    gattc::Say("hook", client_if, uuid);
    vym_gatt_client_connect(kRising, 1, 2);
}

// The only wait that a callback can survive: the report is there already.
TEST_F(GattClientRegistration, TheServersCallbackRunsWhenTheReportIsThere) {
    vym_gatt_client_register_client_for_server(kServiceUuid, ConnectingHook);
    Server().ExpectCommand(kRegistration);
    Server().Send(Registered("0B"));
    Server().ExpectCommand(kOwnRegistration + "AT#KE0B6655443322110102\r\n");
    ExpectEntries({"hook(11, " + gattc::kService + ")"});
}

TEST_F(GattClientRegistration, TheServersCallbackMayComeAndGoWhileReportsArrive) {
    std::atomic<bool> stop{false};
    std::thread toggling([&stop] {
        while (!stop) {
            vym_gatt_client_set_server_hook(HookCallback);
            vym_gatt_client_set_server_hook(nullptr);
        }
    });
    for (int i = 0; i < 50; ++i) {
        SendHandled(Registered("05"));
    }
    stop = true;
    toggling.join();
    for (const std::string& entry : wire::ProfileRecord().Take()) {
        EXPECT_EQ(entry, "hook(5, " + gattc::kService + ")");
    }
}

} // namespace
