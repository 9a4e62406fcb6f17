// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The start and the receipt of descriptors when the system has no thread or no descriptor left.

#include "internal_ev_process.h"
#include "memory/failing_calls.h"
#include "support/limits.h"
#include "support/probe_parser.h"
#include "vym_bluetooth.h"
#include "vym_debug.h"
#include "vym_sdk.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using support::Event;
using support::ProbeRecord;

class StartOfTheLibrary : public support::QuietTest {
protected:
    void SetUp() override {
        QuietTest::SetUp();
        server_ = std::make_unique<support::FakeServer>(directory_.Path());
    }
    void TearDown() override {
        server_.reset();
        ProbeRecord().Reset();
        QuietTest::TearDown();
    }

    int Start() { return vym_sdk_init_ex(directory_.Path().c_str()); }

    void ExpectCommandArrives() {
        ASSERT_TRUE(server_->Accept());
        vym_bluetooth_enable();
        server_->ExpectCommand("AT#PB\r\n");
        server_->ExpectNothingMore();
    }

    // The next start finds everything again.
    void ExpectWholeStart() {
        ASSERT_GT(Start(), 0);
        ExpectCommandArrives();
        support::ProbeParser probe;
        register_event_parser(probe.Parser());
        server_->Send(Event("XA01"));
        EXPECT_TRUE(ProbeRecord().WaitForExactly({"XA(01)"}));
        ProbeRecord().Reset();
        unregister_event_parser(probe.Parser());
        EXPECT_EQ(vym_internal_event_send(7, 0, nullptr), 1);
        EXPECT_EQ(vym_debug_is_open(), 1);
        vym_sdk_done();
    }

    support::TempDir directory_;
    std::unique_ptr<support::FakeServer> server_;
};

TEST_F(StartOfTheLibrary, WithoutAThreadSendsCommandsAndHearsNothing) {
    {
        const memory::FailingThreads failing;
        ASSERT_GT(Start(), 0);
        EXPECT_EQ(failing.Failed(), 1);
    }
    support::ProbeParser probe;
    register_event_parser(probe.Parser());
    ExpectCommandArrives();
    server_->Send(Event("XA01"));
    unregister_event_parser(probe.Parser());
    vym_sdk_done();
    EXPECT_EQ(ProbeRecord().Size(), 0U);
    ExpectWholeStart();
}

/** What came of a start with few descriptors, and of what an application does all the same. */
struct Outcome {
    int start;
    int message;
    int capture;
    int left_open;
};

constexpr int kTaken = 100;

// No object with virtual functions is touched meanwhile: the undefined-behaviour sanitizer needs a
// descriptor to look at it.
Outcome StartWith(int descriptors, const char* directory) {
    const support::OccupiedDescriptors occupied(kTaken);
    const support::DescriptorLimit limit(kTaken + static_cast<rlim_t>(descriptors));
    Outcome outcome{};
    outcome.start = vym_sdk_init_ex(directory);
    outcome.message = vym_internal_event_send(7, 0, nullptr);
    outcome.capture = vym_debug_is_open();
    vym_bluetooth_enable();
    vym_sdk_done();
    for (int fd = kTaken; fd < kTaken + descriptors; ++fd) {
        outcome.left_open += support::IsOpen(fd) ? 1 : 0;
    }
    return outcome;
}

// It takes a pair for internal events, then the capture file, then the server's socket.
TEST_F(StartOfTheLibrary, WithTooFewDescriptorsFailsAndLeavesNone) {
    for (int left = 0; left < 4; ++left) {
        SCOPED_TRACE(std::to_string(left) + " descriptors are left");
        const Outcome outcome = StartWith(left, directory_.Path().c_str());
        EXPECT_EQ(outcome.start, -1);
        EXPECT_EQ(outcome.message, left < 2 ? 0 : 1);
        EXPECT_EQ(outcome.capture, left == 1 || left == 3 ? 1 : 0);
        EXPECT_EQ(outcome.left_open, 0);
        ExpectWholeStart();
    }
    EXPECT_GT(StartWith(4, directory_.Path().c_str()).start, 0);
}

// Not even a directory of that name keeps the library from its work.
TEST_F(StartOfTheLibrary, WithoutACaptureFileIsWhole) {
    const std::string capture = directory_.Path() + "/client_sock.log";
    std::filesystem::create_directory(capture);
    ASSERT_GT(Start(), 0);
    EXPECT_EQ(vym_debug_is_open(), 0);
    ExpectCommandArrives();
    vym_sdk_done();
    std::filesystem::remove(capture);
    ExpectWholeStart();
}

std::vector<std::pair<int, int>>& Transports() {
    static std::vector<std::pair<int, int>> transports;
    return transports;
}

class ReceivedDescriptor : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, [](uint8_t id, int fd) {
            Transports().emplace_back(id, fd);
            if (fd > 0) {
                close(fd);
            }
        });
    }
    void TearDown() override {
        AdapterTest::TearDown();
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, nullptr);
        Transports().clear();
    }
};

TEST_F(ReceivedDescriptor, WithoutRoomForItIsReportedAsZero) {
    const support::SocketPair pair;
    support::FakeServer& server = Server();
    support::ClientSession& session = Session();
    {
        const support::NoMoreDescriptors limit;
        server.Send(Event("PD0100000007"));
        server.SendDescriptor(pair.Far());
        EXPECT_TRUE(session.EventsAreHandled());
    }
    EXPECT_EQ(Transports(), (std::vector<std::pair<int, int>>{{1, 0}}));
    Transports().clear();
    Server().Send(Event("PD0100000007"));
    Server().SendDescriptor(pair.Far());
    EXPECT_TRUE(Session().EventsAreHandled());
    ASSERT_EQ(Transports().size(), 1U);
    EXPECT_EQ(Transports()[0].first, 1);
    EXPECT_GT(Transports()[0].second, 0);
    vym_bluetooth_enable();
    Server().ExpectCommand("AT#PB\r\n");
}

} // namespace
