// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The data channel: framing, hand-overs, and its end from either side.

#include "vym_bluetooth.h"
#include "wire/rfcomm_support.h"

#include <limits>

namespace {

constexpr size_t kTooMuch = std::numeric_limits<int>::max();

using support::PeerHasRead;
using support::ReadBytes;
using support::ReadsEndOfStream;
using support::SameBytes;
using support::SocketPair;
using wire::Bytes;
using wire::Message;
using wire::Sleeper;
using Entries = std::vector<std::string>;

const std::string kBroken = "Data transport is broken!!! Type:Rfcomm";

std::atomic<pid_t> s_reader{0}; // the thread that delivered last

// "message(4660, 3, 2, ab)"
void Record(rfcomm_msg_header_t* message) {
    s_reader = gettid();
    wire::ProfileRecord().Add(
        "message(" + std::to_string(message->handle) + ", " + std::to_string(message->credit) + ", " +
        std::to_string(message->len) + ", " +
        support::Escaped({reinterpret_cast<const char*>(message->data), message->len}) + ")");
}

// The channel with a callback that records in the module's place.
class RfcommChannel : public wire::RfcommTest {
protected:
    void SetUp() override {
        wire::RfcommTest::SetUp();
        rfcomm_ipc_init_client(Record);
    }

    static auto& Messages() { return wire::ProfileRecord(); }

    // The channel's reader waits for its next message.
    static void ExpectReaderWaits(const SocketPair& end) {
        Feed(end, Message(1, 0, ""));
        EXPECT_TRUE(Messages().WaitFor(1));
        Messages().Take();
        EXPECT_TRUE(wire::FallsAsleep(s_reader));
    }

    // The reader may leave at any moment.
    static void FeedInVain(const SocketPair& end, const std::string& bytes) {
        (void)support::WriteBytes(end.Near(), bytes);
    }

    static int Send(uint32_t handle, uint8_t credit, std::string data) {
        return rfcomm_ipc_send_data_client(handle, credit, data.data(), data.size());
    }
    bool HasEnded(size_t readers = 1) {
        return support::WaitUntil([&] {
            const std::string out = Output().Out();
            size_t count = 0;
            const std::string text = "data_transport_thread_proc quit.\n";
            for (size_t at = out.find(text); at != std::string::npos; at = out.find(text, at + 1)) {
                ++count;
            }
            return count == readers;
        });
    }
};

TEST_F(RfcommChannel, AMessageIsHandleCreditLengthAndData) {
    const SocketPair& end = HandOver();
    Feed(end, Bytes({0x78, 0x56, 0x34, 0x92, 0xFE, 0x02, 0x00, 'a', 'b'}));
    EXPECT_TRUE(Messages().WaitForExactly({"message(2452903544, 254, 2, ab)"}));
    Messages().Take();
    Feed(end, Bytes({0x01, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00}));
    EXPECT_TRUE(Messages().WaitForExactly({"message(1, 3, 0, )"}));
}

TEST_F(RfcommChannel, MessagesCutAtEveryByteArriveWhole) {
    const SocketPair& end = HandOver();
    const std::string stream = Message(1, 2, "abc") + Message(3, 4, "") + Message(5, 6, "d");
    const Entries expected = {"message(1, 2, 3, abc)", "message(3, 4, 0, )", "message(5, 6, 1, d)"};
    for (size_t cut = 1; cut < stream.size(); ++cut) {
        Feed(end, stream.substr(0, cut));
        ASSERT_TRUE(PeerHasRead(end.Near()));
        Feed(end, stream.substr(cut));
        EXPECT_TRUE(Messages().WaitForExactly(expected)) << "cut at " << cut;
        Messages().Take();
    }
}

TEST_F(RfcommChannel, TheLongestMessageArrivesWhole) {
    const SocketPair& end = HandOver();
    const std::string data(65535, 'x');
    Feed(end, Message(1, 2, data) + Message(3, 4, "y"));
    EXPECT_TRUE(
        Messages().WaitForExactly({"message(1, 2, 65535, " + data + ")", "message(3, 4, 1, y)"}));
}

TEST_F(RfcommChannel, WhatItDoesIsPrinted) {
    const size_t before = Output().Out().size();
    SocketPair& end = HandOver();
    end.CloseNear();
    EXPECT_TRUE(HasEnded());
    const std::string out = Output().Out().substr(before);
    EXPECT_TRUE(support::HasPart(out, "on_data_transport_established\\(id=0, fd=[0-9]+\\)\n")) << out;
    EXPECT_NE(out.find("thread create success."), std::string::npos) << out;
    EXPECT_NE(out.find(kBroken), std::string::npos) << out;
    rfcomm_ipc_done_client();
    EXPECT_EQ(Printed("close_data_transport quit."), 1U);
}

TEST_F(RfcommChannel, AMessageIsSentWithItsHeader) {
    const SocketPair& end = HandOver();
    EXPECT_EQ(Send(0x92345678, 0xFE, "ab"), 2);
    EXPECT_TRUE(SameBytes(Bytes({0x78, 0x56, 0x34, 0x92, 0xFE, 0x02, 0x00, 'a', 'b'}),
                          ReadBytes(end.Near(), 9)));
    EXPECT_EQ(Send(1, 2, ""), 0);
    EXPECT_TRUE(SameBytes(Bytes({1, 0, 0, 0, 2, 0, 0}), ReadBytes(end.Near(), 7)));
}

TEST_F(RfcommChannel, WithoutDataZeroesAreSent) {
    const SocketPair& end = HandOver();
    EXPECT_EQ(rfcomm_ipc_send_data_client(7, 1, nullptr, 5), 5);
    EXPECT_TRUE(SameBytes(Bytes({7, 0, 0, 0, 1, 5, 0, 0, 0, 0, 0, 0}), ReadBytes(end.Near(), 12)));
}

TEST_F(RfcommChannel, SizesThatTheAnswerCannotTellAreRefused) {
    HandOver();
    EXPECT_EQ(rfcomm_ipc_send_data_client(1, 1, nullptr, kTooMuch), -1);
    EXPECT_EQ(rfcomm_ipc_send_data_client(1, 1, nullptr, kTooMuch - 6), -1);
    EXPECT_EQ(rfcomm_ipc_send_data_client(1, 1, nullptr, std::numeric_limits<size_t>::max()), -1);
}

TEST_F(RfcommChannel, WithoutAHandOverNothingCanBeSent) {
    EXPECT_EQ(Send(1, 2, "x"), -1);
}

TEST_F(RfcommChannel, AServerThatClosesInAMessageEndsTheChannel) {
    const std::string stream = Message(1, 2, "abc") + Message(3, 4, "half");
    size_t readers = 0;
    for (size_t length = 10; length < stream.size(); ++length) {
        SCOPED_TRACE(length);
        SocketPair& end = HandOver();
        Feed(end, stream.substr(0, length));
        end.CloseNear();
        EXPECT_TRUE(HasEnded(++readers));
        EXPECT_EQ(Messages().Take(), Entries{"message(1, 2, 3, abc)"});
        EXPECT_EQ(Send(1, 2, "x"), -1);
    }
}

TEST_F(RfcommChannel, SendingOnAChannelThatTheServerHasLeftRaisesNoSignal) {
    SocketPair& end = HandOver();
    Feed(end, Message(1, 2, "abc"));
    EXPECT_TRUE(Messages().WaitFor(1));
    end.CloseNear();
    // Whether the reader has noticed already or not.
    EXPECT_EQ(Send(1, 2, "x"), -1);
    EXPECT_TRUE(HasEnded());
    EXPECT_EQ(Send(1, 2, "x"), -1);
}

TEST_F(RfcommChannel, TheEndWakesASenderThatWaitsForRoom) {
    SocketPair& end = HandOver();
    const std::string much(4000000, 'x');
    Sleeper<int> sending([&] { return Send(1, 2, much); });
    EXPECT_TRUE(sending.FallsAsleep());
    end.CloseNear();
    EXPECT_EQ(sending.Get(), -1);
    EXPECT_TRUE(HasEnded());
}

TEST_F(RfcommChannel, ASecondHandOverIsTheNewWayOut) {
    SocketPair& first = HandOver();
    Feed(first, Message(1, 1, "old"));
    EXPECT_TRUE(Messages().WaitFor(1));
    const SocketPair& second = HandOver();
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(second.Near(), 8), Message(1, 2, "x"));
    // Both are read, each as a stream of its own.
    Feed(first, Message(2, 1, "still old").substr(0, 9));
    ASSERT_TRUE(PeerHasRead(first.Near()));
    Feed(second, Message(3, 1, "new"));
    EXPECT_TRUE(Messages().WaitFor(2));
    Feed(first, "ill old");
    EXPECT_TRUE(Messages().WaitFor(2));
    // The old reader's end is not the new channel's.
    first.CloseNear();
    EXPECT_TRUE(HasEnded());
    Feed(second, Message(4, 1, "newer"));
    EXPECT_TRUE(Messages().WaitForExactly({"message(1, 1, 3, old)", "message(3, 1, 3, new)",
                                           "message(2, 1, 9, still old)", "message(4, 1, 5, newer)"}));
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(second.Near(), 8), Message(1, 2, "x"));
}

TEST_F(RfcommChannel, AHandOverWithoutDescriptorEndsTheChannel) {
    const SocketPair& end = HandOver();
    ExpectReaderWaits(end);
    Server().Send(support::Event("PD0000000007") + support::Event("BE01"));
    EXPECT_TRUE(Adapter().WaitAndRemove("discovery_state_changed(1)"));
    EXPECT_EQ(Printed("on_data_transport_established(id=0, fd=0)"), 1U);
    EXPECT_TRUE(HasEnded()) << "the new reader has nothing to read";
    EXPECT_EQ(Send(1, 2, "x"), -1);
    // The old reader leaves at its next turn and closes what only it knows.
    Feed(end, Message(1, 2, "lost").substr(0, 4));
    EXPECT_TRUE(HasEnded(2));
    EXPECT_TRUE(ReadsEndOfStream(end.Near()));
    EXPECT_EQ(Messages().Size(), 0U);
    const SocketPair& next = HandOver();
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(next.Near(), 8), Message(1, 2, "x"));
}

TEST_F(RfcommChannel, AfterDoneTheReaderLeavesAtItsNextTurn) {
    const SocketPair& end = HandOver();
    ExpectReaderWaits(end);
    rfcomm_ipc_done_client();
    EXPECT_EQ(Printed(kBroken), 0U);
    EXPECT_EQ(Send(1, 2, "x"), 1) << "the channel is open until its reader leaves";
    Feed(end, Message(1, 2, "late").substr(0, 4));
    EXPECT_TRUE(HasEnded());
    EXPECT_EQ(Send(1, 2, "x"), -1);
    EXPECT_TRUE(ReadsEndOfStream(end.Near()));
    EXPECT_EQ(Messages().Size(), 0U);
}

TEST_F(RfcommChannel, ASocketOfAStoppedModuleCanStillBeWrittenToWhileItsChannelIsOpen) {
    const SocketPair& end = HandOver();
    vym_bluetooth_socket_t* sock = Connect();
    ExpectReaderWaits(end);
    vym_rfcomm_done();
    EXPECT_EQ(Write(sock, "bye"), 3);
    EXPECT_EQ(ReadBytes(end.Near(), 10), Message(0x1234, 3, "bye"));
    vym_rfcomm_init(nullptr);
    EXPECT_EQ(Write(sock, "again"), -1) << "init forgets the channel";
    EXPECT_EQ(Read(sock), "-1 10");
}

TEST_F(RfcommChannel, AMessageThatIsCompletedAfterDoneIsNotDelivered) {
    const std::string message = Message(1, 2, "late");
    size_t readers = 0;
    for (size_t length = 1; length < message.size(); ++length) {
        SCOPED_TRACE(length);
        rfcomm_ipc_init_client(Record);
        const SocketPair& end = HandOver();
        Feed(end, message.substr(0, length));
        ASSERT_TRUE(PeerHasRead(end.Near()));
        rfcomm_ipc_done_client();
        FeedInVain(end, message.substr(length));
        EXPECT_TRUE(HasEnded(++readers));
        EXPECT_EQ(Messages().Size(), 0U);
    }
}

TEST_F(RfcommChannel, AnotherInitBringsNoOldReaderBack) {
    const SocketPair& old = HandOver();
    rfcomm_ipc_done_client();
    rfcomm_ipc_init_client(Record);
    EXPECT_EQ(Send(1, 2, "x"), -1);
    const SocketPair& fresh = HandOver();
    FeedInVain(old, Message(1, 2, "old"));
    EXPECT_TRUE(HasEnded());
    EXPECT_TRUE(ReadsEndOfStream(old.Near()));
    Feed(fresh, Message(3, 4, "new"));
    EXPECT_TRUE(Messages().WaitForExactly({"message(3, 4, 3, new)"}));
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(fresh.Near(), 8), Message(1, 2, "x"));
}

TEST_F(RfcommChannel, AHandOverAfterDoneIsReadAndDropped) {
    rfcomm_ipc_done_client();
    const SocketPair& end = HandOver();
    Feed(end, Message(1, 2, "dropped"));
    ASSERT_TRUE(PeerHasRead(end.Near()));
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(end.Near(), 8), Message(1, 2, "x"));
    EXPECT_EQ(Messages().Size(), 0U);
    rfcomm_ipc_init_client(Record);
    FeedInVain(end, Message(1, 2, "still not"));
    EXPECT_TRUE(HasEnded());
    EXPECT_EQ(Messages().Size(), 0U);
}

TEST_F(RfcommChannel, DoneWaitsForTheMessageBeingDelivered) {
    support::Gate inside;
    support::Gate go_on;
    std::atomic<bool> left{false};
    Messages().SetHook([&](const std::string&) {
        inside.Open();
        EXPECT_TRUE(go_on.Wait());
        left = true;
    });
    const SocketPair& end = HandOver();
    Feed(end, Message(1, 2, "abc") + Message(1, 2, "def"));
    ASSERT_TRUE(inside.Wait());
    Sleeper<bool> done([&] {
        rfcomm_ipc_done_client();
        return left.load();
    });
    EXPECT_TRUE(done.FallsAsleep());
    go_on.Open();
    EXPECT_TRUE(done.Get());
    EXPECT_TRUE(HasEnded());
    EXPECT_EQ(Messages().All(), Entries{"message(1, 2, 3, abc)"});
}

TEST_F(RfcommChannel, ACallbackMaySend) {
    Messages().SetHook([](const std::string&) { EXPECT_EQ(Send(9, 8, "echo"), 4); });
    const SocketPair& end = HandOver();
    Feed(end, Message(1, 2, "abc"));
    EXPECT_EQ(ReadBytes(end.Near(), 11), Message(9, 8, "echo"));
}

TEST_F(RfcommChannel, WithoutACallbackMessagesAreDropped) {
    rfcomm_ipc_init_client(nullptr);
    const SocketPair& end = HandOver();
    Feed(end, Message(1, 2, "abc") + Message(1, 2, ""));
    ASSERT_TRUE(PeerHasRead(end.Near()));
    EXPECT_EQ(Send(1, 2, "x"), 1);
    EXPECT_EQ(ReadBytes(end.Near(), 8), Message(1, 2, "x"));
}

TEST_F(RfcommChannel, TheAudiosTransportIsNotItsOwn) {
    // The end of the audio module leaves its callback where it is.
    vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, nullptr);
    const SocketPair pair;
    Server().Send(support::Event("PD0100000007"));
    Server().SendDescriptor(pair.Far());
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Printed("on_data_transport_established(id="), 0U);
    EXPECT_EQ(Send(1, 2, "x"), -1);
}

} // namespace
