// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The audio transport: packets from the server on a descriptor of its own, voice in the other
// direction.

#include "vym_audio_stream.h"

#include "support/session.h"

#include <atomic>
#include <csignal>
#include <memory>
#include <thread>

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using support::Bytes;
using support::Event;
using support::SocketPair;
using Entries = std::vector<std::string>;

support::Recorder& AudioRecord() {
    static support::Recorder record;
    return record;
}

// "audio(0, 5, 3, abc)": stream type, codec, length, the data with unprintable bytes escaped.
void RecordAudio(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    AudioRecord().Add("audio(" + std::to_string(stream_type) + ", " + std::to_string(codec_type) +
                      ", " + std::to_string(len) + ", " +
                      support::Escaped({reinterpret_cast<const char*>(data), len}) + ")");
}

int SendVoice(std::string voice, uint8_t type = AUDIO_STREAM_TYPE_SCO) {
    return vym_audio_stream_send(type, 7, static_cast<uint16_t>(voice.size()),
                                 reinterpret_cast<uint8_t*>(voice.data()));
}

std::string Packet(int type, int codec, const std::string& data) {
    return Bytes({type, codec, static_cast<int>(data.size() & 0xFF),
                  static_cast<int>(data.size() >> 8)}) +
           data;
}

class AudioStream : public support::AdapterTest {
protected:
    void SetUp() override {
        support::AdapterTest::SetUp();
        vym_audio_stream_init(&table_);
    }
    void TearDown() override {
        vym_audio_stream_done();
        support::AdapterTest::TearDown();
        AudioRecord().Reset();
    }
    // The transport of a session is shut down at its end and stays open: one descriptor for each.
    void AfterStop(const support::LeakCheck& leaks) override {
        ends_.clear();
        const std::vector<int> left = leaks.LeftOpen();
        EXPECT_EQ(left.size(), sessions_);
        for (const int fd : left) {
            close(fd);
        }
    }

    // Hands one end of a new pair over; the other is the server's. Each counts as a session whose
    // descriptor stays open, unless it takes the place of another.
    SocketPair& HandOver(bool replaces = false) {
        sessions_ += replaces ? 0 : 1;
        SocketPair& pair = *ends_.emplace_back(std::make_unique<SocketPair>());
        const size_t before = Established().size();
        Server().Send(Event("PD0100000007"));
        Server().SendDescriptor(pair.Far());
        pair.CloseFar();
        EXPECT_TRUE(support::WaitUntil([&] { return Established().size() > before; }));
        EXPECT_TRUE(Session().EventsAreHandled());
        return pair;
    }

    Entries Established() {
        return support::LinesWith(Output().Out(), "on_data_transport_established(");
    }

    static void Feed(const SocketPair& pair, const std::string& bytes) {
        EXPECT_TRUE(support::WriteBytes(pair.Near(), bytes));
    }

    size_t BrokenLines() {
        return support::LinesWith(Output().Out(), "Data transport is broken!!! Type:Audio").size();
    }

    audio_stream_callback_t table_{RecordAudio};
    size_t sessions_ = 0;

private:
    std::vector<std::unique_ptr<SocketPair>> ends_;
};

TEST_F(AudioStream, APacketIsOneCallback) {
    const SocketPair& end = HandOver();
    Feed(end, Bytes({0x00, 0x05, 0x03, 0x00, 0x01, 0xFF, 0x00}));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, \\x01\\xFF\\0)"}));
}

TEST_F(AudioStream, AnEmptyPacketIsACallbackAtOnce) {
    const SocketPair& end = HandOver();
    Feed(end, Bytes({0x01, 0x02, 0x00, 0x00}));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(1, 2, 0, )"}));
    Feed(end, Bytes({0x00, 0x05, 0x01, 0x00, 'x'}));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(1, 2, 0, )", "audio(0, 5, 1, x)"}));
}

TEST_F(AudioStream, PacketsCutAtEveryByteArriveWhole) {
    const SocketPair& end = HandOver();
    const std::string stream =
        Packet(0, 5, "abc") + Packet(1, 2, "") + Packet(9, 255, std::string(300, 'x'));
    const Entries expected = {"audio(0, 5, 3, abc)", "audio(1, 2, 0, )",
                              "audio(9, 255, 300, " + std::string(300, 'x') + ")"};
    for (size_t cut = 1; cut < 20; ++cut) {
        Feed(end, stream.substr(0, cut));
        ASSERT_TRUE(support::PeerHasRead(end.Near()));
        Feed(end, stream.substr(cut));
        EXPECT_TRUE(AudioRecord().WaitForExactly(expected)) << "cut at " << cut;
        AudioRecord().Take();
    }
    for (const char byte : stream) {
        Feed(end, std::string(1, byte));
    }
    EXPECT_TRUE(AudioRecord().WaitForExactly(expected));
}

TEST_F(AudioStream, TheLongestPacketArrivesWhole) {
    const SocketPair& end = HandOver();
    const std::string data(65535, 'x');
    Feed(end, Packet(1, 2, data) + Packet(0, 5, "abc"));
    EXPECT_TRUE(
        AudioRecord().WaitForExactly({"audio(1, 2, 65535, " + data + ")", "audio(0, 5, 3, abc)"}));
}

TEST_F(AudioStream, ASignalDuringAPacketLosesNothing) {
    struct sigaction ignored {};
    struct sigaction before {};
    ignored.sa_handler = [](int) {};
    sigaction(SIGUSR1, &ignored, &before);
    std::atomic<pthread_t> reader{};
    AudioRecord().SetHook([&](const std::string&) { reader = pthread_self(); });
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc"));
    ASSERT_TRUE(support::WaitUntil([&] { return reader != pthread_t{}; }));
    AudioRecord().SetHook(nullptr);
    for (const char byte : Packet(0, 5, "def")) {
        pthread_kill(reader, SIGUSR1);
        Feed(end, std::string(1, byte));
    }
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, abc)", "audio(0, 5, 3, def)"}));
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(AudioStream, HasAThreadOfItsOwnThatHoldsNoLock) {
    support::Gate gate;
    std::atomic<bool> waited{false};
    AudioRecord().SetHook([&](const std::string&) { waited = gate.Wait(); });
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitFor(1));
    Server().Send(Event("BE01"));
    EXPECT_TRUE(Adapter().WaitForEntry("discovery_state_changed(1)")) << "events flow meanwhile";
    EXPECT_EQ(SendVoice("voice"), 5);
    EXPECT_EQ(support::ReadBytes(end.Near(), 5), "voice");
    gate.Open();
    EXPECT_TRUE(support::WaitUntil([&] { return waited.load(); }));
}

TEST_F(AudioStream, WhatItDoesIsPrinted) {
    HandOver();
    EXPECT_TRUE(Output().WaitForOut("data_transport_thread_proc"));
    vym_audio_stream_done();
    const std::string out = Output().Out();
    const Entries established = support::Match(
        out, "\non_data_transport_established\\(id=1, fd=([0-9]+)\\):[^\r\n]+:[^\r\n]+\n");
    ASSERT_EQ(established.size(), 2U) << out;
    for (const std::string& line : {
             std::string("vym_audio_stream_init->51:[^\r\n]+->[^\r\n]+\r\n"),
             "\ndata_transport_thread_proc->173, s_data_transport\\.alive:1, s_data_transport\\.fd:" +
                 established[1] + "\r\n",
             std::string("\nclose_data_transport fd closed\\.\n"),
             std::string(
                 "\nData transport is broken!!! Type:Audio\n(close_data_transport fd closed\\.\n)?"
                 "close_data_transport quit\\.\n$"),
         }) {
        EXPECT_TRUE(support::HasPart(out, line));
    }
}

TEST_F(AudioStream, EndsWhileTheReaderWaits) {
    const SocketPair& end = HandOver();
    vym_audio_stream_done();
    EXPECT_TRUE(support::ReadsEndOfStream(end.Near()));
    EXPECT_EQ(BrokenLines(), 1U);
    EXPECT_EQ(SendVoice("voice"), -1);
}

TEST_F(AudioStream, EndsInTheMiddleOfAPacket) {
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abcdef").substr(0, 7));
    ASSERT_TRUE(support::PeerHasRead(end.Near()));
    vym_audio_stream_done();
    EXPECT_EQ(AudioRecord().Size(), 0U);
    EXPECT_EQ(BrokenLines(), 1U);
}

TEST_F(AudioStream, MayBeEndedTwiceAndWithoutATransport) {
    vym_audio_stream_done();
    vym_audio_stream_done();
    EXPECT_EQ(support::LinesWith(Output().Out(), "close_data_transport"),
              (Entries{"close_data_transport fd closed.", "close_data_transport quit.",
                       "close_data_transport fd closed.", "close_data_transport quit."}));
    HandOver();
    vym_audio_stream_done();
    vym_audio_stream_done();
}

TEST_F(AudioStream, MayBeEndedInItsOwnCallback) {
    const SocketPair& end = HandOver();
    AudioRecord().SetHook([](const std::string&) { vym_audio_stream_done(); });
    Feed(end, Packet(0, 5, "abc") + Packet(0, 5, "def"));
    EXPECT_TRUE(support::WaitUntil([&] { return BrokenLines() == 1; }));
    EXPECT_EQ(AudioRecord().All(), (Entries{"audio(0, 5, 3, abc)"}));
    EXPECT_TRUE(support::ReadsEndOfStream(end.Near()));
}

TEST_F(AudioStream, AHandOverAfterTheEndStartsAgain) {
    HandOver();
    vym_audio_stream_done();
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, abc)"}));
    EXPECT_EQ(SendVoice("voice"), 5);
}

TEST_F(AudioStream, AHandOverDuringTheEndDoesNotOutliveIt) {
    support::Gate gate;
    AudioRecord().SetHook([&gate](const std::string&) { EXPECT_TRUE(gate.Wait()); });
    Feed(HandOver(), Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitFor(1));
    std::atomic<pid_t> waiting{0};
    std::atomic<bool> ended{false};
    std::thread end([&] {
        waiting = gettid();
        vym_audio_stream_done();
        ended = true;
    });
    EXPECT_TRUE(Output().WaitForOut("close_data_transport fd closed."));
    EXPECT_TRUE(support::WaitUntil([&] { return support::IsAsleep(waiting); }));
    SocketPair& second = HandOver();
    gate.Open();
    const bool in_time = support::WaitUntil([&] { return ended.load(); });
    EXPECT_TRUE(in_time) << "the end waits for a reader that nobody has stopped";
    if (!in_time) {
        second.CloseNear();
    }
    end.join();
}

TEST_F(AudioStream, AServerThatClosesEndsTheReaderOnly) {
    SocketPair& first = HandOver();
    Feed(first, Packet(0, 5, "abc") + Packet(0, 5, "half").substr(0, 6));
    first.CloseNear();
    EXPECT_TRUE(support::WaitUntil([&] { return BrokenLines() == 1; }));
    EXPECT_EQ(AudioRecord().Take(), (Entries{"audio(0, 5, 3, abc)"}));
    const SocketPair& second = HandOver();
    Feed(second, Packet(0, 5, "def"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, def)"}));
}

TEST_F(AudioStream, ASecondHandOverTakesThePlaceOfTheFirst) {
    const SocketPair& first = HandOver();
    Feed(first, Packet(0, 5, "abc") + Bytes({0x00, 0x05, 0x06, 0x00, 'h', 'a'}));
    EXPECT_TRUE(AudioRecord().WaitFor(1));
    const SocketPair& second = HandOver(true);
    Feed(second, Packet(1, 2, "def") + Packet(1, 2, "ghi"));
    EXPECT_TRUE(AudioRecord().WaitForExactly(
        {"audio(0, 5, 3, abc)", "audio(1, 2, 3, def)", "audio(1, 2, 3, ghi)"}))
        << "two readers must not share one stream";
    EXPECT_EQ(SendVoice("voice"), 5);
    EXPECT_EQ(support::ReadBytes(second.Near(), 5), "voice");
    EXPECT_TRUE(support::ReadsEndOfStream(first.Near()));
    vym_audio_stream_done();
    EXPECT_EQ(BrokenLines(), 2U);
}

TEST_F(AudioStream, ManyHandOversLeaveOneReader) {
    HandOver();
    for (int i = 0; i < 20; ++i) {
        HandOver(true);
    }
    const SocketPair& last = HandOver(true);
    Feed(last, Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, abc)"}));
    vym_audio_stream_done();
    EXPECT_EQ(BrokenLines(), 22U);
}

TEST_F(AudioStream, AHandOverWithoutDescriptorEndsAtOnce) {
    Server().Send(Event("PD0100000007") + Event("BE01"));
    EXPECT_TRUE(Adapter().WaitForEntry("discovery_state_changed(1)"));
    EXPECT_TRUE(support::WaitUntil([&] { return BrokenLines() == 1; }));
    EXPECT_EQ(support::LinesWith(Output().Out(), "on_data_transport_established(id=1, fd=0)").size(),
              1U);
    EXPECT_EQ(SendVoice("voice"), -1);
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, abc)"}));
}

TEST_F(AudioStream, AnotherKindOfTransportIsNotItsOwn) {
    const SocketPair pair;
    Server().Send(Event("PD0000000007"));
    Server().SendDescriptor(pair.Far());
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_TRUE(Established().empty());
    EXPECT_EQ(SendVoice("voice"), -1);
}

TEST_F(AudioStream, VoiceIsSentBare) {
    const SocketPair& end = HandOver();
    EXPECT_EQ(SendVoice(Bytes({0x00, 0x0D, 0x0A, 0xDC})), 4);
    EXPECT_EQ(SendVoice("abc"), 3);
    EXPECT_TRUE(support::SameBytes(Bytes({0x00, 0x0D, 0x0A, 0xDC, 'a', 'b', 'c'}),
                                   support::ReadBytes(end.Near(), 7)));
    EXPECT_EQ(SendVoice(""), 0);
}

TEST_F(AudioStream, OtherTypesAreNotSent) {
    const SocketPair& end = HandOver();
    EXPECT_EQ(SendVoice("music", AUDIO_STREAM_TYPE_A2DP), 0);
    EXPECT_EQ(SendVoice("other", 200), 0);
    EXPECT_EQ(SendVoice("voice"), 5);
    EXPECT_EQ(support::ReadBytes(end.Near(), 5), "voice");
}

TEST_F(AudioStream, MuchVoiceWaitsForTheServerToRead) {
    const SocketPair& end = HandOver();
    const std::string voice(65535, 'v');
    std::atomic<int> sent{0};
    std::thread sender([&] {
        for (int i = 0; i < 10; ++i) {
            sent += SendVoice(voice);
        }
    });
    const std::string received = support::ReadBytes(end.Near(), 655350);
    sender.join();
    EXPECT_EQ(sent, 655350);
    EXPECT_EQ(received.size(), 655350U);
}

TEST_F(AudioStream, WithoutATransportSendingFails) {
    EXPECT_EQ(SendVoice("voice"), -1);
    EXPECT_EQ(SendVoice("music", AUDIO_STREAM_TYPE_A2DP), -1);
    const std::string line = "s_data_transport.fd is error\r\n";
    const std::string out = Output().Out();
    ASSERT_GE(out.size(), 2 * line.size());
    EXPECT_TRUE(support::SameBytes(line + line, out.substr(out.size() - 2 * line.size())));
}

TEST_F(AudioStream, OnABrokenTransportSendingFailsWithoutASignal) {
    SocketPair& end = HandOver();
    end.CloseNear();
    EXPECT_TRUE(support::WaitUntil([&] { return BrokenLines() == 1; }));
    EXPECT_EQ(SendVoice("voice"), -1);
    EXPECT_EQ(SendVoice("music", AUDIO_STREAM_TYPE_A2DP), 0);
}

TEST_F(AudioStream, AnotherInitForgetsTheTransport) {
    HandOver();
    sessions_ = 0; // nobody knows its number any more, so it is closed
    vym_audio_stream_init(&table_);
    EXPECT_EQ(SendVoice("voice"), -1);
}

TEST_F(AudioStream, WithoutACallbackPacketsAreDropped) {
    table_.vym_audio_stream_cb = nullptr;
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "dropped") + Packet(0, 5, ""));
    ASSERT_TRUE(support::PeerHasRead(end.Near()));
    EXPECT_EQ(SendVoice("voice"), 5);
    vym_audio_stream_done();
    EXPECT_EQ(AudioRecord().Size(), 0U);
}

TEST_F(AudioStream, TheCallbackIsLookedUpForEachPacket) {
    static audio_stream_callback_t changing;
    changing.vym_audio_stream_cb = [](uint8_t, uint8_t, uint16_t, uint8_t*) {
        AudioRecord().Add("the first");
        changing.vym_audio_stream_cb = RecordAudio;
    };
    vym_audio_stream_init(&changing);
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc") + Packet(0, 5, "def"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"the first", "audio(0, 5, 3, def)"}));
}

TEST_F(AudioStream, WithoutATablePacketsAreDropped) {
    vym_audio_stream_init(nullptr);
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "dropped") + Packet(0, 5, ""));
    ASSERT_TRUE(support::PeerHasRead(end.Near()));
    EXPECT_EQ(SendVoice("voice"), 5);
    vym_audio_stream_done();
    EXPECT_EQ(AudioRecord().Size(), 0U);
}

TEST_F(AudioStream, CommandsMayBeSentFromItsCallback) {
    AudioRecord().SetHook([](const std::string&) { vym_bluetooth_enable(); });
    const SocketPair& end = HandOver();
    Feed(end, Packet(0, 5, "abc"));
    Server().ExpectCommand("AT#PB\r\n");
}

TEST_F(AudioStream, TheAdaptersEndIsNotItsEnd) {
    const SocketPair& end = HandOver();
    Session().Stop();
    Feed(end, Packet(0, 5, "abc"));
    EXPECT_TRUE(AudioRecord().WaitForExactly({"audio(0, 5, 3, abc)"}));
    EXPECT_EQ(SendVoice("voice"), 5);
}

} // namespace
