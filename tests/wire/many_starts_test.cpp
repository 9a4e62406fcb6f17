// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Starting and ending a thousand times under traffic, and what a program inherits that the application
// starts.

#include "support/process.h"
#include "support/session.h"
#include "vym_audio_stream.h"
#include "vym_hfp.h"
#include "vym_rfcomm.h"
#include "vym_sdk.h"

#include <atomic>
#include <thread>
#include <unistd.h>

namespace {

using support::Event;

constexpr int kStarts = 1000;

std::atomic<int> s_heard;

class ManyStarts : public support::QuietTest {};

// Takes so many clients, one after the other, and writes events to each until it has gone.
void Pour(support::FakeServer& server) {
    const std::string events = Event("BE01") + Event("PVversion") + Event("HI01") + Event("HX06");
    for (int i = 0; i < kStarts && server.Accept(); ++i) {
        while (support::WriteBytes(server.ClientFd(), events)) {
        }
    }
    server.CloseClient();
}

TEST_F(ManyStarts, LeaveNothingBehindWhileEventsPourIn) {
    const support::TempDir directory;
    support::FakeServer server(directory.Path());
    s_heard = 0;
    bluetooth_callback_t bluetooth{};
    bluetooth.discovery_state_changed_cb = [](uint8_t) { ++s_heard; };
    hfp_callback_t hfp{};
    std::thread pouring([&] { Pour(server); });
    for (int i = 0; i < kStarts && !HasFailure(); ++i) {
        EXPECT_GT(vym_sdk_init_ex(directory.Path().c_str()), 0);
        vym_bluetooth_init(&bluetooth);
        vym_hfp_init(&hfp);
        if (i % 50 == 0) {
            const int before = s_heard;
            EXPECT_TRUE(support::WaitUntil([&] { return s_heard > before; }));
        }
        if (i % 2 == 0) { // the profiles may end after the connection
            vym_sdk_done();
        }
        vym_hfp_done();
        vym_bluetooth_done();
        vym_sdk_done();
    }
    pouring.join();
    EXPECT_GE(s_heard, kStarts / 50);
}

// What a program has open that is started now, by number.
std::string OpenInAChild() {
    return support::OutputOf({"ls", "/proc/self/fd"});
}

class Children : public support::QuietTest {};

TEST_F(Children, InheritNoDescriptorOfTheLibrary) {
    const support::SocketPair audio;
    support::SocketPair serial;
    const support::SocketPair stray;
    const std::string before = OpenInAChild();
    const support::LeakCheck own;
    audio_stream_callback_t callbacks{};
    {
        support::ClientSession session;
        session.StartAdapter();
        vym_audio_stream_init(&callbacks);
        vym_rfcomm_init(nullptr);
        session.Server().Send(Event("PD0100000007"));
        session.Server().SendDescriptor(audio.Far());
        session.Server().Send(Event("PD0000000007"));
        session.Server().SendDescriptor(serial.Far());
        EXPECT_TRUE(session.EventsAreHandled());
        // One that nobody asks for, with half an event, is still in the library's hands.
        session.Server().SendWithDescriptors("PD01", {stray.Far()});
        EXPECT_TRUE(session.Server().ClientHasRead());
        EXPECT_GT(own.LeftOpen().size(), 6U) << "capture, socket, a pair, audio, serial, stray";
        EXPECT_EQ(OpenInAChild(), before);
        vym_audio_stream_done();
        vym_rfcomm_done();
    }
    EXPECT_EQ(OpenInAChild(), before);
    // The reader of the serial descriptor ends with that, and closes it.
    serial.CloseFar();
    serial.CloseNear();
    EXPECT_TRUE(support::WaitUntil([&] { return own.LeftOpen().size() == 1; }));
    for (const int fd : own.LeftOpen()) {
        close(fd); // the audio descriptor stays open at the end of a session
    }
}

} // namespace
