// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Connecting, listening, accepting and closing: how the calls that wait go together with the server's
// results.

#include "wire/rfcomm_support.h"

namespace {

using wire::ConnectionResult;
using wire::kOther;
using wire::kPhone;
using wire::kSerialPort;
using wire::kSerialPortDigits;
using wire::Sleeper;
using ClientSocket = vym_bluetooth_socket_t*;
using ServerSocket = vym_bluetooth_server_socket_t*;

const std::string kConnectNothing = "vym_rfcomm_connect, can not find connection info, return NULL";
const std::string kAcceptNothing = "vym_rfcomm_accept, can not find connection info, return NULL";
const std::string kNoServer = "vym_rfcomm_accept can not find saved server info";

class RfcommConnect : public wire::RfcommTest {
protected:
    void ExpectConnectCommand() {
        Server().ExpectCommand("AT#SEA1B2C3D4E5F6" + kSerialPortDigits + "05\r\n");
    }
};

TEST_F(RfcommConnect, ASuccessIsASocketWithTheResultsValues) {
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    ExpectConnectCommand();
    EXPECT_TRUE(connecting.FallsAsleep());
    Server().Send(support::Event(ConnectionResult("00001234")));
    auto* const sock = connecting.Get();
    ASSERT_NE(sock, nullptr);
    EXPECT_EQ(sock->status, 0);
    EXPECT_EQ(support::ValueText(sock->address), "A1B2C3D4E5F6");
    EXPECT_EQ(sock->server_handle, 5);
    EXPECT_EQ(sock->incoming_credit, 3);
    EXPECT_EQ(sock->outgoing_credit, 7);
    EXPECT_EQ(sock->incoming_mfs, 0x02A5) << "max_rx, the second of the event";
    EXPECT_EQ(sock->outgoing_mfs, 0x03F1) << "max_tx, the first";
    EXPECT_EQ(sock->handle, 0x1234);
    EXPECT_EQ(sock->connected, 1);
    ASSERT_NE(sock->buffer, nullptr);
    EXPECT_EQ(Available(sock), 0);
    EXPECT_EQ(support::ValueText(vym_rfcomm_get_address(sock)), "A1B2C3D4E5F6");
    Server().ExpectNothingMore();
    Finish(sock);
}

TEST_F(RfcommConnect, AFailureIsNone) {
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    ExpectConnectCommand();
    Server().Send(support::Event(ConnectionResult("00001234", false, "05", "A1B2C3D4E5F6", "0A")));
    EXPECT_EQ(connecting.Get(), nullptr);
    EXPECT_EQ(Printed(kConnectNothing), 1U);
}

TEST_F(RfcommConnect, AnyClientsResultEndsTheWait) {
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    ExpectConnectCommand();
    Server().Send(support::Event(ConnectionResult("00000001", false, "05", "060504030201")));
    EXPECT_EQ(connecting.Get(), nullptr) << "the other device's connection is none to this one";
    // The connection is there all the same.
    Handle({ConnectionResult("00000002")});
    auto* const other = vym_rfcomm_connect(kOther, kSerialPort, 5);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->handle, 1);
}

TEST_F(RfcommConnect, AResultOnAnotherChannelIsNotFound) {
    Handle({ConnectionResult("00001234")});
    EXPECT_EQ(vym_rfcomm_connect(kPhone, kSerialPort, 0), nullptr);
    EXPECT_EQ(Printed(kConnectNothing), 1U);
}

TEST_F(RfcommConnect, AServersResultDoesNotEndTheWait) {
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    ExpectConnectCommand();
    EXPECT_TRUE(connecting.FallsAsleep());
    Handle({ConnectionResult("00000001", true), "SL0005", "SF0000000001"});
    EXPECT_TRUE(connecting.FallsAsleep());
    Server().Send(support::Event(ConnectionResult("00000002")));
    auto* const sock = connecting.Get();
    ASSERT_NE(sock, nullptr);
    EXPECT_EQ(sock->handle, 2) << "the connection of the server side is not a client's";
}

TEST_F(RfcommConnect, AnEarlierConnectionThatWasNotReadToItsEndIsFoundFirst) {
    auto* const first = Connect("00000001");
    Handle({"SF0000000001"});
    EXPECT_EQ(Connect("00000002"), first);
    EXPECT_EQ(Read(first), "rfcomm_quit");
    EXPECT_EQ(Read(first), "-1 10");
    auto* const second = Connect("00000003");
    EXPECT_EQ(second->handle, 2);
}

TEST_F(RfcommConnect, OneResultReleasesOneCaller) {
    Sleeper<ClientSocket> first([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    Sleeper<ClientSocket> second([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    EXPECT_TRUE(first.FallsAsleep());
    EXPECT_TRUE(second.FallsAsleep());
    Handle({ConnectionResult("00001234")});
    EXPECT_TRUE(support::WaitUntil([&] { return first.IsAsleep() != second.IsAsleep(); }));
    Handle({ConnectionResult("00001235")});
    auto* const sock = first.Get();
    EXPECT_NE(sock, nullptr);
    EXPECT_EQ(second.Get(), sock);
}

TEST_F(RfcommConnect, DoneDoesNotEndAWaitForAConnection) {
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    EXPECT_TRUE(connecting.FallsAsleep());
    vym_rfcomm_done();
    EXPECT_TRUE(connecting.FallsAsleep());
    vym_rfcomm_init(nullptr);
    Handle({ConnectionResult("00001234")});
    EXPECT_NE(connecting.Get(), nullptr);
}

TEST_F(RfcommConnect, InitForgetsResultsAndConnections) {
    auto* const sock = Connect("00001234");
    Handle({ConnectionResult("00001235")});
    vym_rfcomm_init(nullptr);
    Sleeper<ClientSocket> connecting([] { return vym_rfcomm_connect(kPhone, kSerialPort, 5); });
    EXPECT_TRUE(connecting.FallsAsleep());
    Handle({ConnectionResult("00001236")});
    auto* const fresh = connecting.Get();
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->handle, 0x1236);
    EXPECT_EQ(Read(sock), "-1 10");
}

TEST_F(RfcommConnect, ClosingOnlyAsks) {
    auto* const sock = Connect("00001234");
    EXPECT_EQ(vym_rfcomm_close(sock), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#SF00001234\r\n");
    EXPECT_EQ(vym_rfcomm_close(sock), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#SF00001234\r\n");
    EXPECT_TRUE(IsConnected(sock));
    Handle({"SF0000001234"});
    EXPECT_FALSE(IsConnected(sock));
    EXPECT_EQ(Read(sock), "rfcomm_quit");
    EXPECT_EQ(Read(sock), "-1 10");
    EXPECT_EQ(vym_rfcomm_close(sock), BT_STATUS_PARM_INVALID) << "the socket is gone";
    EXPECT_EQ(support::ValueText(vym_rfcomm_get_address(sock)), "000000000000");
    Server().ExpectNothingMore();
}

class RfcommListen : public wire::RfcommTest {
protected:
    std::string ServerConnection(const std::string& handle, const std::string& channel = "05") {
        return ConnectionResult(handle, true, channel);
    }
};

TEST_F(RfcommListen, TheServerChoosesTheChannel) {
    char name[] = "SPP";
    Sleeper<ServerSocket> listening([&] { return vym_rfcomm_listen(kSerialPort, 0, name); });
    Server().ExpectCommand("AT#SLFB349B5F80000080001000000111000000SPP\r\n");
    EXPECT_TRUE(listening.FallsAsleep());
    Server().Send(support::Event("SL010C")); // the status is not looked at
    auto* const server = listening.Get();
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->status, 0);
    EXPECT_EQ(memcmp(&server->uuid, &kSerialPort, sizeof kSerialPort), 0);
    EXPECT_EQ(server->server_channel, 12);
    EXPECT_STREQ(server->service_name, "SPP");
    EXPECT_EQ(vym_rfcomm_server_close(server), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#SN0C\r\n");
    EXPECT_EQ(Printed("vym_rfcomm_server_close(12)"), 1U);
}

TEST_F(RfcommListen, TheNameIsCutInTheRecordOnly) {
    const std::string digits(63, 'n');
    const std::string command = "AT#SL" + kSerialPortDigits + "FF";
    for (const std::string& more : {std::string(), std::string("1"), std::string("12")}) {
        std::string name = digits + more;
        Handle({"SL0005"});
        auto* const server = vym_rfcomm_listen(kSerialPort, 255, name.data());
        Server().ExpectCommand(command + name + "\r\n");
        ASSERT_NE(server, nullptr);
        EXPECT_EQ(server->service_name, digits);
        CloseServer(server);
    }
}

TEST_F(RfcommListen, NoNameIsAnEmptyOne) {
    Handle({"SL0005"});
    auto* const server = vym_rfcomm_listen(kSerialPort, 0, nullptr);
    Server().ExpectCommand("AT#SL" + kSerialPortDigits + "00\r\n");
    ASSERT_NE(server, nullptr);
    EXPECT_STREQ(server->service_name, "");
    CloseServer(server);
}

TEST_F(RfcommListen, WithoutAResultItGivesUp) {
    char name[] = "SPP";
    EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 0, name), nullptr);
    Server().ExpectCommand("AT#SL" + kSerialPortDigits + "00SPP\r\n");
    // The result that comes too late is the next one's.
    ServerSocket server = Listen("07");
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->server_channel, 7);
    CloseServer(server, "07");
}

TEST_F(RfcommListen, AClientsResultEndsTheWaitAsWell) {
    char name[] = "SPP";
    for (const char* channel : {"00", "07"}) {
        SCOPED_TRACE(channel);
        Sleeper<ServerSocket> listening([&] { return vym_rfcomm_listen(kSerialPort, 0, name); });
        Server().ExpectCommand("AT#SL" + kSerialPortDigits + "00SPP\r\n");
        EXPECT_TRUE(listening.FallsAsleep());
        Server().Send(support::Event(ConnectionResult("00001234")));
        auto* const server = listening.Get();
        ASSERT_NE(server, nullptr);
        // The channel of the result before, 0 at first.
        CloseServer(server, channel);
        CloseServer(Listen("07"), "07");
    }
    // No lock was left behind, and the client's result is still there.
    auto* const sock = vym_rfcomm_connect(kPhone, kSerialPort, 5);
    EXPECT_NE(sock, nullptr);
}

TEST_F(RfcommListen, AcceptWaitsForAConnection) {
    auto* const server = Listen();
    Sleeper<ClientSocket> accepting([=] { return vym_rfcomm_accept(server); });
    EXPECT_TRUE(accepting.FallsAsleep());
    Handle({ServerConnection("00000009", "06")});
    EXPECT_EQ(Printed("on_rfcomm_connection_result_cbk rfcomm_svr_info is null"), 1U);
    EXPECT_TRUE(accepting.FallsAsleep()) << "another channel's connection is not its own";
    Handle({ConnectionResult("00000008")});
    EXPECT_TRUE(accepting.FallsAsleep()) << "a client's connection is not its own";
    Server().Send(support::Event(ServerConnection("00001234")));
    auto* const sock = accepting.Get();
    ASSERT_NE(sock, nullptr);
    EXPECT_EQ(sock->handle, 0x1234);
    EXPECT_EQ(sock->incoming_mfs, 0x02A5);
    EXPECT_EQ(sock->connected, 1);
    CloseServer(server);
    Finish(sock);
}

TEST_F(RfcommListen, AConnectionBeforeTheAcceptIsNotLost) {
    auto* const server = Listen();
    Handle({ServerConnection("00001234")});
    auto* const sock = vym_rfcomm_accept(server);
    ASSERT_NE(sock, nullptr);
    EXPECT_EQ(sock->handle, 0x1234);
    CloseServer(server);
    Finish(sock);
}

TEST_F(RfcommListen, ASecondAcceptReturnsTheFirstConnectionAgain) {
    auto* const server = Listen();
    Handle({ServerConnection("00000001"), ServerConnection("00000002")});
    auto* const sock = vym_rfcomm_accept(server);
    EXPECT_EQ(vym_rfcomm_accept(server), sock);
    Finish(sock, "00000001");
    Handle({ServerConnection("00000003")});
    auto* const next = vym_rfcomm_accept(server);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->handle, 2);
    CloseServer(server);
}

TEST_F(RfcommListen, AFailedConnectionIsIgnored) {
    auto* const server = Listen();
    Sleeper<ClientSocket> accepting([=] { return vym_rfcomm_accept(server); });
    EXPECT_TRUE(accepting.FallsAsleep());
    Handle({ConnectionResult("00001234", true, "05", "A1B2C3D4E5F6", "0A"),
            ConnectionResult("00001234", true, "06", "A1B2C3D4E5F6", "0A")});
    EXPECT_TRUE(accepting.FallsAsleep());
    EXPECT_EQ(Printed("rfcomm_svr_info is null"), 0U) << "a failed connection needs no server";
    CloseServer(server);
    EXPECT_EQ(accepting.Get(), nullptr);
}

TEST_F(RfcommListen, AConnectionThatNobodyListensForIsKept) {
    Handle({ServerConnection("00001234")});
    EXPECT_EQ(Printed("on_rfcomm_connection_result_cbk rfcomm_svr_info is null"), 1U);
    auto* const server = Listen();
    Handle({ServerConnection("00001235")});
    auto* const sock = vym_rfcomm_accept(server);
    ASSERT_NE(sock, nullptr);
    EXPECT_EQ(sock->handle, 0x1234) << "the channel's first connection";
    CloseServer(server);
}

TEST_F(RfcommListen, ClosingTheServerEndsEveryAccept) {
    auto* const server = Listen();
    std::list<Sleeper<ClientSocket>> accepting;
    for (int i = 0; i < 3; ++i) {
        accepting.emplace_back([=] { return vym_rfcomm_accept(server); });
    }
    for (auto& one : accepting) {
        EXPECT_TRUE(one.FallsAsleep());
    }
    CloseServer(server);
    for (auto& one : accepting) {
        EXPECT_EQ(one.Get(), nullptr);
    }
    EXPECT_EQ(Printed(kAcceptNothing), 3U);
    EXPECT_EQ(Printed(kNoServer), 3U);
}

TEST_F(RfcommListen, AServerThatHasAcceptedIsNotSignalledWhenItCloses) {
    auto* const server = Listen();
    Handle({ServerConnection("00001234")});
    auto* const sock = vym_rfcomm_accept(server);
    Sleeper<ClientSocket> accepting([=] { return vym_rfcomm_accept(server); });
    EXPECT_TRUE(accepting.FallsAsleep());
    CloseServer(server);
    Handle({ServerConnection("00001235")});
    EXPECT_TRUE(accepting.FallsAsleep());
    // A server of the same channel is another one.
    auto* const again = Listen();
    Handle({ServerConnection("00001236")});
    EXPECT_EQ(vym_rfcomm_accept(again), sock);
    EXPECT_TRUE(accepting.FallsAsleep());
    CloseServer(again);
    EXPECT_TRUE(accepting.FallsAsleep());
    vym_rfcomm_done();
    EXPECT_EQ(accepting.Get(), nullptr);
    vym_rfcomm_init(nullptr);
}

TEST_F(RfcommListen, AServerIsFoundByChannelForClosingAndByUuidTooForAccepting) {
    auto* const first = Listen();
    Handle({"SL0005"});
    auto* const second = vym_rfcomm_listen(bt_uuid_t{}, 0, nullptr);
    Server().ExpectCommand("AT#SL0000000000000000000000000000000000\r\n");
    ASSERT_NE(second, nullptr);
    Sleeper<ClientSocket> accepting([=] { return vym_rfcomm_accept(first); });
    EXPECT_TRUE(accepting.FallsAsleep());
    CloseServer(second); // ends the first of the channel
    EXPECT_EQ(accepting.Get(), nullptr);
    EXPECT_EQ(vym_rfcomm_accept(first), nullptr);
    CloseServer(first);
}

TEST_F(RfcommListen, DoneEndsAccepts) {
    auto* const server = Listen();
    Sleeper<ClientSocket> accepting([=] { return vym_rfcomm_accept(server); });
    EXPECT_TRUE(accepting.FallsAsleep());
    vym_rfcomm_done();
    EXPECT_EQ(accepting.Get(), nullptr);
    EXPECT_EQ(vym_rfcomm_accept(server), nullptr) << "there is no such server any more";
    CloseServer(server);
    vym_rfcomm_init(nullptr);
}

TEST_F(RfcommListen, AClosedServersConnectionStaysOpen) {
    auto* const server = Listen();
    Handle({ServerConnection("00001234")});
    auto* const sock = vym_rfcomm_accept(server);
    CloseServer(server);
    EXPECT_TRUE(IsConnected(sock));
    Finish(sock);
}

} // namespace
