// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The core without memory: what cannot be made is not there, and everything else works on.

#include "internal_ev_process.h"
#include "ring_buffer.h"
#include "vym_audio_stream.h"
#include "vym_sdk.h"
#include "vym_unknown_event.h"

#include "memory/failing_allocations.h"
#include "support/probe_parser.h"

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

// Neither the parser of unknown events nor the staging buffer of internal ones can be made.
TEST_F(StartWithoutMemory, ConnectsAndDeliversEventsAndMessages) {
    const support::TempDir directory;
    support::FakeServer server(directory.Path());
    support::ProbeParser probe;
    {
        const FailingAllocations failing;
        ASSERT_GT(vym_sdk_init_ex(directory.Path().c_str()), 0);
        EXPECT_EQ(failing.Failed(), 2);
    }
    ASSERT_TRUE(server.Accept());
    register_event_parser(probe.Parser());
    server.Send(Event("QQ01") + Event("XA01"));
    EXPECT_TRUE(support::ProbeRecord().WaitForExactly({"XA(01)"})) << "the unknown one is consumed";
    vym_internal_event_register(RecordMessage);
    EXPECT_EQ(vym_internal_event_send(7, 0, nullptr), 1);
    EXPECT_TRUE(support::ProbeRecord().WaitForExactly({"XA(01)", "internal(7)"}));
    unregister_event_parser(probe.Parser());
    vym_sdk_done();
}

class MessagesWithoutMemory : public support::QuietTest {
protected:
    void SetUp() override {
        QuietTest::SetUp();
        vym_internal_event_init();
    }
    void TearDown() override {
        vym_internal_event_done();
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
    }
    // The transport of a session is shut down at its end and stays open.
    void AfterStop(const support::LeakCheck& leaks) override {
        const std::vector<int> left = leaks.LeftOpen();
        EXPECT_EQ(left.size(), 1U);
        for (const int fd : left) {
            close(fd);
        }
    }

    void HandOver(SocketPair& pair) {
        Server().Send(Event("PD0100000007"));
        Server().SendDescriptor(pair.Far());
        pair.CloseFar();
        EXPECT_TRUE(Output().WaitForOut("on_data_transport_established("));
        EXPECT_TRUE(Session().EventsAreHandled());
    }

    audio_stream_callback_t table_{[](uint8_t, uint8_t, uint16_t, uint8_t*) { ADD_FAILURE(); }};
};

TEST_F(AudioWithoutMemory, APacketEndsTheReader) {
    SocketPair pair;
    HandOver(pair);
    const FailingAllocations failing;
    EXPECT_TRUE(support::WriteBytes(pair.Near(), Bytes({0, 5, 1, 0, 'x'})));
    EXPECT_TRUE(Output().WaitForOut("Data transport is broken!!! Type:Audio"));
}

TEST_F(AudioWithoutMemory, AHandOverHasNoReader) {
    SocketPair pair;
    {
        const FailingAllocations failing;
        HandOver(pair);
        EXPECT_EQ(failing.Failed(), 1);
    }
    uint8_t voice = 'v';
    EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 1, &voice), 1) << "voice goes out";
    EXPECT_EQ(support::ReadBytes(pair.Near(), 1), "v");
    EXPECT_EQ(Output().Out().find("data_transport_thread_proc"), std::string::npos);
}

} // namespace
