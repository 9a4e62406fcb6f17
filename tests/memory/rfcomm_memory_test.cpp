// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial module without memory: nothing is sent, nothing is lost but what had no room, and nobody
// waits for it.

#include "memory/profile_memory.h"
#include "vym_rfcomm_event.h"
#include "wire/rfcomm_support.h"

namespace {

using memory::FailingAllocations;
using wire::ConnectionResult;
using wire::kPhone;
using wire::kSerialPort;
using wire::Message;
using wire::Sleeper;
using ClientSocket = vym_bluetooth_socket_t*;
using ServerSocket = vym_bluetooth_server_socket_t*;

class RfcommWithoutMemory : public wire::RfcommTest {
protected:
    void SetUp() override {
        wire::RfcommTest::SetUp();
        // The records of connections are used again, so from now on only their buffers need memory.
        ASSERT_NO_FATAL_FAILURE(Finish(Connect()));
    }
};

TEST_F(RfcommWithoutMemory, CommandsAreNotSentAndSaySo) {
    {
        const FailingAllocations failing;
        EXPECT_EQ(vym_rfcomm_connect_impl(kPhone, kSerialPort, 5), BT_STATUS_NOMEM);
        EXPECT_EQ(vym_rfcomm_disconnect(1), BT_STATUS_NOMEM);
        EXPECT_EQ(vym_rfcomm_listen_impl(kSerialPort, 0, nullptr), BT_STATUS_NOMEM);
        EXPECT_EQ(vym_rfcomm_fetch_channels(kPhone, kSerialPort), BT_STATUS_NOMEM);
        EXPECT_EQ(vym_rfcomm_server_disconnect(3), BT_STATUS_NOMEM);
        EXPECT_EQ(vym_rfcomm_connect(kPhone, kSerialPort, 5), nullptr) << "without a wait";
        EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 5, nullptr), nullptr) << "without a wait";
    }
    Server().ExpectNothingMore();
}

TEST_F(RfcommWithoutMemory, AConnectionWithoutMemoryIsNoneAndEndsTheWait) {
    int failed = 0;
    for (int skip = 0; skip < 2; ++skip) { // the buffer and its storage
        {
            const FailingAllocations failing(skip, 1);
            Handle({ConnectionResult("00001234")});
            failed += failing.Failed();
        }
        EXPECT_EQ(vym_rfcomm_connect(kPhone, kSerialPort, 5), nullptr);
        Server().ExpectCommand("AT#SEA1B2C3D4E5F6" + wire::kSerialPortDigits + "05\r\n");
    }
    EXPECT_EQ(failed, 2);
    Finish(Connect());
}

TEST_F(RfcommWithoutMemory, AServersConnectionWithoutMemoryEndsItsAccepts) {
    const ServerSocket server = Listen();
    std::list<Sleeper<ClientSocket>> accepting;
    for (int i = 0; i < 2; ++i) {
        accepting.emplace_back([=] { return vym_rfcomm_accept(server); });
        EXPECT_TRUE(accepting.back().FallsAsleep());
    }
    {
        const FailingAllocations failing;
        Handle({ConnectionResult("00001234", true)});
    }
    for (auto& one : accepting) {
        EXPECT_EQ(one.Get(), nullptr);
    }
    EXPECT_EQ(vym_rfcomm_accept(server), nullptr) << "the server was given up";
    CloseServer(server);
}

TEST_F(RfcommWithoutMemory, AServerWithoutMemoryHasNothingToAcceptOn) {
    Handle({"SL0005"});
    ServerSocket server = nullptr;
    {
        const FailingAllocations failing(2, 1); // after the command and the socket
        server = vym_rfcomm_listen(kSerialPort, 0, nullptr);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectCommand("AT#SL" + wire::kSerialPortDigits + "00\r\n");
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->server_channel, 5);
    EXPECT_EQ(vym_rfcomm_accept(server), nullptr);
    CloseServer(server);
}

TEST_F(RfcommWithoutMemory, ASocketOfAServerWithoutMemoryIsNone) {
    Handle({"SL0005"});
    {
        const FailingAllocations failing(1, 1);
        EXPECT_EQ(vym_rfcomm_listen(kSerialPort, 0, nullptr), nullptr);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Server().ExpectCommand("AT#SL" + wire::kSerialPortDigits + "00\r\n");
}

TEST_F(RfcommWithoutMemory, AWriteFailsAndTheNextSucceeds) {
    const support::SocketPair& end = HandOver();
    const ClientSocket sock = Connect();
    {
        const FailingAllocations failing;
        EXPECT_EQ(Write(sock, "lost"), -1);
    }
    EXPECT_EQ(Credit(sock), 6);
    EXPECT_EQ(Write(sock, "sent"), 4);
    EXPECT_EQ(support::ReadBytes(end.Near(), 11), Message(0x1234, 3, "sent"));
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AMessageWithoutMemoryEndsTheChannel) {
    const support::SocketPair& end = HandOver();
    const ClientSocket sock = Connect();
    {
        const FailingAllocations failing;
        Feed(end, Message(0x1234, 9, "lost"));
        EXPECT_TRUE(Output().WaitForOut("data_transport_thread_proc quit.\n"));
        EXPECT_EQ(failing.Failed(), 1);
    }
    EXPECT_EQ(Credit(sock), 7);
    EXPECT_EQ(Write(sock, "x"), -1);
    const support::SocketPair& next = HandOver();
    Feed(next, Message(0x1234, 9, "data"));
    EXPECT_EQ(Read(sock), "data");
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AHandOverWithoutMemoryIsClosed) {
    const ClientSocket sock = Connect();
    {
        const FailingAllocations failing(0, 1);
        const support::SocketPair& end = HandOver();
        EXPECT_EQ(failing.Failed(), 1);
        EXPECT_TRUE(support::ReadsEndOfStream(end.Near()));
    }
    EXPECT_EQ(Write(sock, "x"), -1);
    const support::SocketPair& next = HandOver();
    EXPECT_EQ(Write(sock, "x"), 1);
    EXPECT_EQ(support::ReadBytes(next.Near(), 8), Message(0x1234, 3, "x"));
    Finish(sock);
}

TEST_F(RfcommWithoutMemory, AParserIsNotMade) {
    memory::ExpectNoParser(create_rfcomm_event_parser);
}

} // namespace
