// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Reading and writing: messages, credits, ends of connections, and what is left of those.

#include "wire/rfcomm_support.h"

#include <limits>

namespace {

constexpr size_t kTooMuch = std::numeric_limits<int>::max();

using support::ReadBytes;
using support::SameBytes;
using support::SocketPair;
using wire::Bytes;
using wire::ConnectionResult;
using wire::Message;
using wire::Sleeper;
using ClientSocket = vym_bluetooth_socket_t*;

class RfcommData : public wire::RfcommTest {
protected:
    // A socket with a post left over: what was announced has been read without a wait.
    ClientSocket SocketWithAPostLeft(const SocketPair& end) {
        auto* const sock = Connect();
        Deliver(end, sock, Message(0x1234, 0, "early"));
        EXPECT_EQ(Read(sock), "early");
        return sock;
    }
    // Waits until a thread is inside the buffer's pull.
    static void ExpectBlockedInPull(ClientSocket sock) {
        auto* buffer = reinterpret_cast<ring_buffer_impl_t*>(sock->buffer);
        EXPECT_TRUE(support::WaitUntil([buffer] {
            pthread_mutex_lock(&buffer->mutex);
            const bool waits = buffer->waiters > 0;
            pthread_mutex_unlock(&buffer->mutex);
            return waits;
        }));
    }
};

TEST_F(RfcommData, AReadWaitsForAMessage) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Sleeper<std::string> reading([=] { return Read(sock); });
    EXPECT_TRUE(reading.FallsAsleep());
    Feed(end, Bytes({0x34, 0x12, 0x00, 0x00, 0x02, 0x03, 0x00, 0x01, 0xFF, 0x00}));
    EXPECT_TRUE(SameBytes(Bytes({0x01, 0xFF, 0x00}), reading.Get()));
    EXPECT_EQ(Credit(sock), 9);
    Finish(sock);
}

TEST_F(RfcommData, AReadTakesWhatThereIsUpToItsCount) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Deliver(end, sock, Message(0x1234, 0, "abc") + Message(0x1234, 0, "defg"));
    EXPECT_EQ(Read(sock, 2), "ab");
    EXPECT_EQ(Read(sock, 4), "cdef");
    EXPECT_EQ(Read(sock, 100), "g");
    Finish(sock);
}

TEST_F(RfcommData, APostThatIsLeftOverNeverMakesAReadReturnNothing) {
    const SocketPair& end = HandOver();
    auto* const sock = SocketWithAPostLeft(end);
    Sleeper<std::string> reading([=] { return Read(sock); });
    ExpectBlockedInPull(sock);
    Feed(end, Message(0x1234, 0, "late"));
    EXPECT_EQ(reading.Get(), "late");
    Finish(sock);
}

TEST_F(RfcommData, CreditAloneWakesNobody) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Sleeper<std::string> reading([=] { return Read(sock); });
    EXPECT_TRUE(reading.FallsAsleep());
    Feed(end, Message(0x1234, 3, ""));
    EXPECT_TRUE(support::WaitUntil([=] { return Credit(sock) == 10; }));
    EXPECT_TRUE(reading.FallsAsleep());
    Feed(end, Message(0x1234, 250, "x"));
    EXPECT_EQ(reading.Get(), "x");
    EXPECT_EQ(Credit(sock), 4) << "modulo 256";
    Finish(sock);
}

TEST_F(RfcommData, MessagesForOthersAreDropped) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Deliver(end, sock, Message(0x1235, 9, "not mine") + Message(0x12340000, 9, "nor this"));
    EXPECT_EQ(Available(sock), 0);
    EXPECT_EQ(Credit(sock), 8);
}

TEST_F(RfcommData, DataGoesToTheLastConnectionOfAHandleAndTheEndToTheFirst) {
    const SocketPair& end = HandOver();
    auto* const first = Connect();
    Handle({ConnectionResult("00001234", false, "06")});
    auto* const last = vym_rfcomm_connect(wire::kPhone, wire::kSerialPort, 6);
    ASSERT_NE(last, nullptr);
    Deliver(end, last, Message(0x1234, 0, "data"));
    EXPECT_EQ(Available(first), 0);
    EXPECT_EQ(Read(last), "data");
    Handle({"SF0000001234"});
    EXPECT_TRUE(IsConnected(last));
    EXPECT_FALSE(IsConnected(first));
    Finish(first);
    Finish(last);
}

TEST_F(RfcommData, AHandleOfMoreThan31BitsGetsNoData) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect("80000001");
    EXPECT_EQ(sock->handle, 0x7FFFFFFF);
    Feed(end, Message(0x80000001, 1, "lost"));
    Deliver(end, sock, Message(0x7FFFFFFF, 0, "found"));
    EXPECT_EQ(Read(sock), "found");
    Finish(sock, "80000001");
}

TEST_F(RfcommData, TheEndIsDataWhileThereIsUnreadData) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Deliver(end, sock, Message(0x1234, 0, "unread"));
    Handle({"SF0000001234"});
    EXPECT_FALSE(IsConnected(sock));
    EXPECT_EQ(Read(sock), "unreadrfcomm_quit");
    EXPECT_EQ(Read(sock), "-1 10");
    EXPECT_EQ(Read(sock), "-1 7") << "the socket is gone";
    EXPECT_EQ(Write(sock, "x"), -1);
}

TEST_F(RfcommData, TheEndWakesABlockedRead) {
    auto* const sock = Connect();
    Sleeper<std::string> reading([=] { return Read(sock); });
    EXPECT_TRUE(reading.FallsAsleep());
    Server().SendEvents({"SFFF00001234"}); // the status is not looked at
    EXPECT_EQ(reading.Get(), "-1 10");
    EXPECT_EQ(Read(sock), "-1 7");
}

TEST_F(RfcommData, TheEndWakesAReadThatIsBlockedInThePull) {
    const SocketPair& end = HandOver();
    auto* const sock = SocketWithAPostLeft(end);
    std::string room(20, '.');
    Sleeper<ssize_t> reading([&] { return vym_rfcomm_read(sock, room.data(), room.size()); });
    ExpectBlockedInPull(sock);
    Server().SendEvents({"SF0000001234"});
    EXPECT_EQ(reading.Get(), -1);
    EXPECT_EQ(vym_rfcomm_read_error(), BT_STATUS_RMT_DEV_DOWN);
    EXPECT_EQ(room, "rfcomm_quit.........") << "the marker ended the pull";
}

TEST_F(RfcommData, ASecondEndPutsASecondMarkerAndLaterDataIsStillTaken) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Handle({"SF0000001234", "SF0000001234"});
    Deliver(end, sock, Message(0x1234, 0, "later"));
    EXPECT_EQ(Read(sock), "rfcomm_quitrfcomm_quitlater");
    EXPECT_EQ(Read(sock), "-1 10");
}

TEST_F(RfcommData, AnEndOfAnUnknownHandleIsIgnored) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Handle({"SF0000001235"});
    EXPECT_TRUE(IsConnected(sock));
    Deliver(end, sock, Message(0x1234, 0, "data"));
    EXPECT_EQ(Read(sock), "data");
    Finish(sock);
}

TEST_F(RfcommData, AMessageThatDoesNotFitIsDroppedWholeAndItsCreditCounts) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    Feed(end, Message(0x1234, 0, std::string(65535, 'a')) +
                  Message(0x1234, 0, std::string(62456, 'b')) +
                  Message(0x1234, 5, std::string(10, 'c')) + Message(0x1234, 1, "d"));
    EXPECT_TRUE(support::WaitUntil([=] { return Available(sock) == 127992; }));
    EXPECT_EQ(Credit(sock), 7 + 5 + 1);
    EXPECT_EQ(
        Printed("Overrun! push 10 byte, remain 127991 bytes not be consumed. buffer size:128000."), 1U);
    // The marker has no room either, and the end comes all the same.
    Handle({"SF0000001234"});
    EXPECT_EQ(
        Printed("Overrun! push 11 byte, remain 127992 bytes not be consumed. buffer size:128000."), 1U);
    EXPECT_TRUE(Read(sock, 200000) ==
                std::string(65535, 'a') + std::string(62456, 'b') + std::string(1, 'd'));
    EXPECT_EQ(Read(sock), "-1 10");
}

TEST_F(RfcommData, BadArgumentsOfAReadLeaveTheSocket) {
    auto* const sock = Connect();
    char room = 0;
    EXPECT_EQ(vym_rfcomm_read(sock, nullptr, 1), -1);
    EXPECT_EQ(vym_rfcomm_read_error(), BT_STATUS_PARM_INVALID);
    EXPECT_EQ(vym_rfcomm_read(sock, &room, 0), -1);
    EXPECT_TRUE(IsConnected(sock));
    Finish(sock);
}

TEST_F(RfcommData, EveryBlockedReaderLeavesWhenTheConnectionEnds) {
    const SocketPair& end = HandOver();
    auto* const sock = SocketWithAPostLeft(end);
    std::list<Sleeper<std::string>> readers;
    for (int i = 0; i < 4; ++i) { // one of them in the pull
        readers.emplace_back([=] { return Read(sock); });
    }
    for (auto& one : readers) {
        EXPECT_TRUE(one.FallsAsleep());
    }
    Server().SendEvents({"SF0000001234"});
    for (auto& one : readers) {
        EXPECT_EQ(one.Get(), "-1 10");
    }
}

TEST_F(RfcommData, DoneEndsBlockedReadersAndLeavesWhatWasReceived) {
    const SocketPair& end = HandOver();
    auto* const full = Connect("00000001");
    Deliver(end, full, Message(1, 0, "unread"));
    Handle({ConnectionResult("00001234", false, "06")});
    auto* const empty = vym_rfcomm_connect(wire::kPhone, wire::kSerialPort, 6);
    Sleeper<std::string> reading([=] { return Read(empty); });
    EXPECT_TRUE(reading.FallsAsleep());
    vym_rfcomm_done();
    EXPECT_EQ(reading.Get(), "-1 10");
    EXPECT_EQ(Read(full, 3), "unr");
    vym_rfcomm_init(nullptr);
    EXPECT_EQ(support::ValueText(vym_rfcomm_get_address(full)), "A1B2C3D4E5F6");
    EXPECT_EQ(Read(full), "ead");
    EXPECT_EQ(Read(full), "-1 10");
}

TEST_F(RfcommData, AWriteIsOneMessageWithTheIncomingCredit) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    EXPECT_EQ(Write(sock, Bytes({0x00, 0xDC, 0x0A})), 3);
    EXPECT_TRUE(SameBytes(Bytes({0x34, 0x12, 0x00, 0x00, 0x03, 0x03, 0x00, 0x00, 0xDC, 0x0A}),
                          ReadBytes(end.Near(), 10)));
    EXPECT_EQ(Credit(sock), 6);
    EXPECT_EQ(sock->incoming_credit, 3);
    Server().ExpectNothingMore();
    Finish(sock);
}

TEST_F(RfcommData, AWriteDoesNotWaitForCredit) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(Write(sock, "x"), 1);
    }
    EXPECT_EQ(Credit(sock), 255);
    EXPECT_EQ(ReadBytes(end.Near(), 64).size(), 64U);
    Finish(sock);
}

TEST_F(RfcommData, RefusedWritesCostNoCredit) {
    HandOver();
    auto* const sock = Connect();
    char byte = 0;
    EXPECT_EQ(vym_rfcomm_write(sock, nullptr, 1), -1);
    EXPECT_EQ(vym_rfcomm_write(sock, &byte, 0), -1);
    EXPECT_EQ(Credit(sock), 7);
    Handle({"SF0000001234"});
    EXPECT_EQ(vym_rfcomm_write(sock, &byte, 1), -1);
    EXPECT_EQ(Credit(sock), 7);
    Finish(sock);
}

TEST_F(RfcommData, AWriteWithoutAChannelFailsAndCostsACredit) {
    auto* const sock = Connect();
    EXPECT_EQ(Write(sock, "x"), -1);
    EXPECT_EQ(Credit(sock), 6);
    const char byte = 0;
    EXPECT_EQ(vym_rfcomm_write(sock, &byte, kTooMuch), -1);
    EXPECT_EQ(Credit(sock), 5);
    Finish(sock);
}

TEST_F(RfcommData, MoreThanAHeaderCanTellIsSentAllTheSame) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    for (const size_t size : {65535U, 65536U, 65541U}) {
        const std::string data(size, 'w');
        Sleeper<ssize_t> writing([&] { return Write(sock, data); });
        const int low = static_cast<int>(size & 0xFFFF);
        EXPECT_TRUE(SameBytes(Bytes({0x34, 0x12, 0x00, 0x00, 0x03, low & 0xFF, low >> 8}) + data,
                              ReadBytes(end.Near(), size + 7)));
        EXPECT_EQ(writing.Get(), static_cast<ssize_t>(size));
    }
    Finish(sock);
}

TEST_F(RfcommData, AWriteDuringWhichTheConnectionEndsFails) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    const std::string data(4000000, 'w');
    Sleeper<ssize_t> writing([&] { return Write(sock, data); });
    EXPECT_TRUE(writing.FallsAsleep()); // the channel is full
    Handle({"SF0000001234"});
    EXPECT_EQ(ReadBytes(end.Near(), data.size() + 7).size(), data.size() + 7);
    EXPECT_EQ(writing.Get(), -1) << "although all of it was sent";
    Finish(sock);
}

TEST_F(RfcommData, AnAcceptedSocketReadsAndWritesLikeAnyOther) {
    const SocketPair& end = HandOver();
    vym_bluetooth_server_socket_t* server = Listen();
    Handle({ConnectionResult("0000ABCD", true)});
    auto* const sock = vym_rfcomm_accept(server);
    ASSERT_NE(sock, nullptr);
    Feed(end, Message(0xABCD, 1, "ping"));
    EXPECT_EQ(Read(sock), "ping");
    EXPECT_EQ(Write(sock, "pong"), 4);
    EXPECT_EQ(ReadBytes(end.Near(), 11), Message(0xABCD, 3, "pong"));
    CloseServer(server);
    Finish(sock, "0000ABCD");
}

} // namespace
