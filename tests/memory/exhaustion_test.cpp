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

// It takes a pair for internal events, then the capture file, then the server's socket.
TEST_F(StartOfTheLibrary, WithTooFewDescriptorsFailsAndLeavesNone) {
    constexpr int kTaken = 100;
    for (int left = 0; left < 4; ++left) {
        SCOPED_TRACE(std::to_string(left) + " descriptors are left");
        {
            const support::OccupiedDescriptors occupied(kTaken);
            const support::DescriptorLimit limit(kTaken + static_cast<rlim_t>(left));
            EXPECT_EQ(Start(), -1);
            EXPECT_EQ(vym_internal_event_send(7, 0, nullptr), left < 2 ? 0 : 1);
            EXPECT_EQ(vym_debug_is_open(), left == 1 || left == 3 ? 1 : 0);
            vym_bluetooth_enable();
            vym_sdk_done();
            for (int fd = kTaken; fd < kTaken + left; ++fd) {
                EXPECT_FALSE(support::IsOpen(fd));
            }
        }
        ExpectWholeStart();
    }
    const support::OccupiedDescriptors occupied(kTaken);
    const support::DescriptorLimit limit(kTaken + 4);
    ASSERT_GT(Start(), 0);
    vym_sdk_done();
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
    {
        const support::NoMoreDescriptors limit;
        Server().Send(Event("PD0100000007"));
        Server().SendDescriptor(pair.Far());
        EXPECT_TRUE(Session().EventsAreHandled());
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
