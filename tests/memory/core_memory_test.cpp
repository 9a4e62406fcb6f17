// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The core without memory: what cannot be made is not there, and everything else works on.

#include "internal_ev_process.h"
#include "ring_buffer.h"
#include "vym_audio_stream.h"
#include "vym_bluetooth.h"
#include "vym_sdk.h"
#include "vym_unknown_event.h"

#include "memory/profile_memory.h"
#include "support/probe_parser.h"

#include <memory>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using memory::FailingAllocations;
using support::Bytes;
using support::Event;
using support::SocketPair;

TEST(CoreWithoutMemory, ARingBufferIsNotMade) {
    for (int skip = 0; skip < 2; ++skip) {
        const FailingAllocations failing(skip, 1);
        EXPECT_EQ(ring_buffer_create(10, 0, 0), nullptr) << skip;
        EXPECT_EQ(failing.Failed(), 1);
    }
}

TEST(CoreWithoutMemory, AParserIsNotMade) {
    const FailingAllocations failing;
    EXPECT_EQ(create_event_parser(), nullptr);
    EXPECT_EQ(create_unknown_event_parser(), nullptr);
    EXPECT_EQ(failing.Failed(), 2);
}

void RecordMessage(ev_data_t* ev) {
    support::ProbeRecord().Add("internal(" + std::to_string(ev->type) + ")");
}

class StartWithoutMemory : public support::QuietTest {
protected:
    void TearDown() override {
        support::ProbeRecord().Reset();
        QuietTest::TearDown();
    }
};

// Neither the parser of unknown events nor the staging buffer of internal ones can be missed by the
// application.
TEST_F(StartWithoutMemory, ConnectsAndDeliversEventsAndMessages) {
    const support::TempDir directory;
    support::FakeServer server(directory.Path());
    support::ProbeParser probe;
    const size_t held = memory::BlocksHeld();
    int failures = 0;
    memory::ForEachFailure([&](int skip) {
        int failed = 0;
        {
            const FailingAllocations failing(skip, 1);
            EXPECT_GT(CALL(vym_sdk_init_ex)(directory.Path().c_str()), 0);
            failed = failing.Failed();
        }
        failures += failed;
        EXPECT_TRUE(server.Accept());
        register_event_parser(probe.Parser());
        server.Send(Event("QQ01") + Event("XA01"));
        EXPECT_TRUE(support::ProbeRecord().WaitForExactly({"XA(01)"})) << "the unknown one is consumed";
        CALL(vym_internal_event_register)(RecordMessage);
        EXPECT_EQ(vym_internal_event_send(7, 0, nullptr), 1);
        EXPECT_TRUE(support::ProbeRecord().WaitForExactly({"XA(01)", "internal(7)"}));
        vym_bluetooth_enable();
        server.ExpectCommand("AT#PB\r\n");
        server.ExpectNothingMore();
        unregister_event_parser(probe.Parser());
        const memory::CountedAllocations needed;
        CALL(vym_sdk_done)();
        EXPECT_EQ(needed.Asked(), 0);
        EXPECT_EQ(memory::BlocksHeld(), held);
        support::ProbeRecord().Reset();
        return failed > 0;
    });
    EXPECT_EQ(failures, 2);
}

// The start that knows its directory is the same: here without a server, which takes no memory either.
TEST_F(StartWithoutMemory, WithoutAServerFailsAsEver) {
    const support::TempDir root;
    const pid_t child = fork();
    if (child == 0) {
        const bool inside = chroot(root.Path().c_str()) == 0 ||
                            (unshare(CLONE_NEWUSER) == 0 && chroot(root.Path().c_str()) == 0);
        const size_t held = memory::BlocksHeld();
        bool as_ever = inside && chdir("/") == 0;
        for (int skip = 0; skip < 3; ++skip) {
            const FailingAllocations failing(skip, 1);
            as_ever = as_ever && CALL(vym_sdk_init)() == -1 && failing.Failed() == (skip < 2 ? 1 : 0);
            vym_sdk_done();
            as_ever = as_ever && memory::BlocksHeld() == held;
        }
        _exit(as_ever ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "changing the root directory needs root or user namespaces";
}

class MessagesWithoutMemory : public support::QuietTest {
protected:
    void SetUp() override {
        QuietTest::SetUp();
        CALL(vym_internal_event_init)();
    }
    void TearDown() override {
        const memory::CountedAllocations needed;
        CALL(vym_internal_event_done)();
        EXPECT_EQ(needed.Asked(), 0);
        support::ProbeRecord().Reset();
        QuietTest::TearDown();
    }
    void Push(std::string bytes) {
        push_ev_data(bytes.data(), bytes.size());
        process_ev_data();
    }
};

TEST_F(MessagesWithoutMemory, AHandlerIsSilentlyNotRegistered) {
    {
        const FailingAllocations failing;
        vym_internal_event_register(RecordMessage);
        EXPECT_EQ(failing.Failed(), 1);
    }
    Push(Bytes({1, 0}));
    EXPECT_EQ(support::ProbeRecord().Size(), 0U);
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(MessagesWithoutMemory, WhatDoesNotFitIsDroppedWhole) {
    vym_internal_event_register(RecordMessage);
    {
        const FailingAllocations failing;
        Push(Bytes({1, 64}) + std::string(64, 'x')); // two bytes more than there is room for
        EXPECT_EQ(failing.Failed(), 1);
        Push(Bytes({2, 0}));
    }
    Push(Bytes({3, 64}) + std::string(64, 'x'));
    EXPECT_EQ(support::ProbeRecord().All(), (std::vector<std::string>{"internal(2)", "internal(3)"}));
}

class AudioWithoutMemory : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        vym_audio_stream_init(&table_);
    }
    void TearDown() override {
        vym_audio_stream_done();
        AdapterTest::TearDown();
        support::ProbeRecord().Reset();
    }
    // The transport of a session is shut down at its end and stays open. One whose place another took
    // does not, whether or not it had a reader.
    void AfterStop(const support::LeakCheck& leaks) override {
        const std::vector<int> left = leaks.LeftOpen();
        EXPECT_EQ(left.size(), sessions_);
        for (const int fd : left) {
            close(fd);
        }
    }

    void HandOver(SocketPair& pair) {
        const size_t before = Printed("on_data_transport_established(");
        Server().Send(Event("PD0100000007"));
        Server().SendDescriptor(pair.Far());
        pair.CloseFar();
        EXPECT_TRUE(
            support::WaitUntil([&] { return Printed("on_data_transport_established(") > before; }));
        EXPECT_TRUE(Session().EventsAreHandled());
    }
    size_t Printed(const std::string& part) { return support::LinesWith(Output().Out(), part).size(); }

    // The packet is delivered, or its reader ends.
    bool IsDelivered(const SocketPair& pair) {
        const size_t ends = Printed(kEnd);
        EXPECT_TRUE(support::WriteBytes(pair.Near(), Bytes({0, 5, 1, 0, 'x'})));
        EXPECT_TRUE(support::WaitUntil(
            [&] { return support::ProbeRecord().Size() > 0 || Printed(kEnd) > ends; }));
        return support::ProbeRecord().Take() == std::vector<std::string>{"audio(1)"};
    }
    static void ExpectVoice(const SocketPair& pair) {
        uint8_t voice = 'v';
        EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 1, &voice), 1);
        EXPECT_EQ(support::ReadBytes(pair.Near(), 1), "v");
    }

    static constexpr const char* kReader = "data_transport_thread_proc";
    static constexpr const char* kEnd = "Data transport is broken!!! Type:Audio";
    size_t sessions_ = 1;
    audio_stream_callback_t table_{[](uint8_t, uint8_t, uint16_t len, uint8_t*) {
        support::ProbeRecord().Add("audio(" + std::to_string(len) + ")");
    }};
};

TEST_F(AudioWithoutMemory, AHandOverHasNoReaderAndThenNoPacket) {
    // Each in place of the one before.
    std::vector<std::unique_ptr<SocketPair>> pairs;
    memory::ForEachFailure([&](int skip) {
        const FailingAllocations failing(skip, 1);
        const size_t readers = Printed(kReader);
        const SocketPair& pair = *pairs.emplace_back(std::make_unique<SocketPair>());
        HandOver(*pairs.back());
        ExpectVoice(pair);
        if (skip == 0) {
            EXPECT_EQ(Printed(kReader), readers);
            return true;
        }
        EXPECT_EQ(IsDelivered(pair), skip > 1);
        return failing.Failed() > 0;
    });
    EXPECT_EQ(pairs.size(), 3U);
    sessions_ = 2; // the reader without a packet ended one
}

TEST_F(AudioWithoutMemory, WithoutAThreadVoiceGoesOut) {
    SocketPair deaf;
    {
        const memory::FailingThreads failing;
        HandOver(deaf);
        EXPECT_EQ(failing.Failed(), 1);
    }
    ExpectVoice(deaf);
    EXPECT_EQ(Printed(kReader), 0U);
    SocketPair next;
    HandOver(next);
    EXPECT_TRUE(support::ReadsEndOfStream(deaf.Near())) << "nobody could have closed it any more";
    EXPECT_TRUE(IsDelivered(next));
}

TEST_F(AudioWithoutMemory, AnotherInitClosesWhatHadNoReader) {
    SocketPair deaf;
    {
        const memory::FailingThreads failing;
        HandOver(deaf);
    }
    vym_audio_stream_init(&table_);
    EXPECT_TRUE(support::ReadsEndOfStream(deaf.Near()));
    SocketPair next;
    HandOver(next);
    EXPECT_TRUE(IsDelivered(next));
}

} // namespace
