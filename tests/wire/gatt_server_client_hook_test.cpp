// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server's own client interface: asked for here, answered through the GATT client module.

#include "vym_gatt_client.h"
#include "wire/full_socket.h"
#include "wire/gatt_server_profile.h"

#include <atomic>
#include <thread>

namespace {

using wire::gatt_server::kUuid;
using Entries = std::vector<std::string>;

const std::string kUuidDigits = "00112233445566778899AABBCCDDEEFF";

void Told(uint8_t client_if, bt_uuid_t uuid) {
    wire::ProfileRecord().Add(support::CallText("client", client_if, uuid));
}

void ToldOther(uint8_t client_if, bt_uuid_t) {
    wire::ProfileRecord().Add(support::CallText("other", client_if));
}

class GattServerClientHook : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        wire::ProfileRecord().Reset();
        vym_gatt_client_init(nullptr);
        wire::GattServerProfile::Init(wire::Table::kWhole);
    }
    void TearDown() override {
        vym_gatt_server_unregister_client(0); // the hook outlives init and done
        vym_gatt_server_done();
        vym_gatt_client_done();
        AdapterTest::TearDown();
        wire::ProfileRecord().Reset();
    }

    void Register(server_register_client_cbk hook) {
        EXPECT_EQ(vym_gatt_server_register_client(kUuid, hook), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#KAFFEEDDCCBBAA99887766554433221100\r\n");
    }
    void ExpectFrom(const std::string& event, const Entries& entries) {
        SCOPED_TRACE(event);
        Server().Send(support::Event(event));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(wire::ProfileRecord().Take(), entries);
    }
};

TEST_F(GattServerClientHook, HearsOfTheInterfaceItAskedFor) {
    Register(Told);
    ExpectFrom("KA0007" + kUuidDigits, {"client(7, " + kUuidDigits + ")"});
    Server().ExpectNothingMore();
}

TEST_F(GattServerClientHook, HearsOfEveryInterfaceWhateverItsStatus) {
    Register(Told);
    ExpectFrom("KA0007" + kUuidDigits, {"client(7, " + kUuidDigits + ")"});
    ExpectFrom("KA0108" + std::string(32, 'A'), {"client(8, " + std::string(32, 'A') + ")"});
}

TEST_F(GattServerClientHook, HearsNothingOfAnEventThatIsTooShort) {
    Register(Told);
    ExpectFrom("KA0007" + kUuidDigits.substr(1), {});
}

TEST_F(GattServerClientHook, IsGoneWithItsInterface) {
    Register(Told);
    EXPECT_EQ(vym_gatt_server_unregister_client(0x17), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KB17\r\n");
    ExpectFrom("KA0007" + kUuidDigits, {});
}

TEST_F(GattServerClientHook, GivesWayToANewerOne) {
    Register(Told);
    Register(ToldOther);
    ExpectFrom("KA0007" + kUuidDigits, {"other(7)"});
    Register(nullptr);
    ExpectFrom("KA0007" + kUuidDigits, {});
}

TEST_F(GattServerClientHook, OutlivesDoneAndInitOfBothModules) {
    Register(Told);
    vym_gatt_server_done();
    vym_gatt_client_done();
    ExpectFrom("KA0007" + kUuidDigits, {}); // nobody reads the event
    vym_gatt_client_init(nullptr);
    ExpectFrom("KA0008" + kUuidDigits, {"client(8, " + kUuidDigits + ")"});
    wire::GattServerProfile::Init(wire::Table::kWhole);
}

TEST_F(GattServerClientHook, MaySendCommands) {
    Register(Told);
    wire::ProfileRecord().SetHook([](const std::string&) { vym_gatt_server_unregister_client(7); });
    ExpectFrom("KA0007" + kUuidDigits, {"client(7, " + kUuidDigits + ")"});
    Server().ExpectCommand("AT#KB07\r\n");
    ExpectFrom("KA0008" + kUuidDigits, {});
}

// Slots of the registry are given out by count: whoever stops and starts again while a later module
// runs takes that module's slot.
TEST_F(GattServerClientHook, AClientThatStartsAgainTakesTheServersEvents) {
    ExpectFrom("JP00010017", {"mtu_changed(1, 23)"});
    vym_gatt_client_done();
    ExpectFrom("JP00010017", {"mtu_changed(1, 23)"});
    vym_gatt_client_init(nullptr);
    ExpectFrom("JP00010017", {});
}

TEST_F(GattServerClientHook, IsGoneBeforeItsCommandIsWritten) {
    Register(Told);
    const wire::FullSocket full(Server());
    std::atomic<pid_t> id{0};
    std::thread unregistering([&id] {
        id = wire::ThreadId();
        EXPECT_EQ(vym_gatt_server_unregister_client(7), BT_STATUS_SUCCESS);
    });
    EXPECT_TRUE(support::WaitUntil([&id] { return id != 0 && support::IsAsleep(id); }));
    EXPECT_TRUE(support::WaitUntil([&id] { return support::IsAsleep(id); })); // and not by chance
    ExpectFrom("KA0007" + kUuidDigits, {});
    const std::string command = "AT#KB07\r\n";
    const std::string sent = Server().ReceiveBytes(full.Left() + command.size());
    EXPECT_NE(sent.find(command), std::string::npos);
    unregistering.join();
}

class GattServerWithoutClient : public support::AdapterTest {};

TEST_F(GattServerWithoutClient, NobodyReadsTheAnswer) {
    wire::ProfileRecord().Reset();
    wire::GattServerProfile::Init(wire::Table::kWhole);
    EXPECT_EQ(vym_gatt_server_register_client(kUuid, Told), BT_STATUS_SUCCESS);
    Server().Send(support::Event("KA0007" + kUuidDigits));
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(wire::ProfileRecord().Take(), Entries{});
    vym_gatt_server_unregister_client(7);
    vym_gatt_server_done();
}

} // namespace
