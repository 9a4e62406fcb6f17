// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Starting and ending in every order, from every thread, under traffic.

#include "vym_sdk.h"

#include "internal_ev_process.h"
#include "vym_audio_stream.h"

#include "support/probe_parser.h"

#include <atomic>
#include <thread>

#include <unistd.h>

namespace {

using support::ClientSession;
using support::Event;
using Entries = std::vector<std::string>;

class Lifecycle : public support::QuietTest {};

// Everything the core does, once: a command, events, a descriptor, an internal message.
void UseEverything(ClientSession& session) {
    session.StartAdapter();
    vym_bluetooth_enable();
    session.Server().ExpectCommand("AT#PB\r\n");
    session.Server().Send(Event("PA01") + Event("BH00") + Event("BE01"));
    const support::SocketPair unasked;
    session.Server().SendDescriptor(unasked.Far());
    EXPECT_TRUE(session.EventsAreHandled());
    EXPECT_EQ(session.Adapter().Take(), (Entries{"state_changed(1)", "discovery_state_changed(1)"}));
    vym_internal_event_register([](ev_data_t*) {});
}

TEST_F(Lifecycle, FiftyCyclesLeaveNothingBehind) {
    const support::TempDir directory;
    support::FakeServer server(directory.Path());
    const support::LeakCheck leaks;
    for (int i = 0; i < 50; ++i) {
        ASSERT_GT(vym_sdk_init_ex(directory.Path().c_str()), 0);
        ASSERT_TRUE(server.Accept());
        vym_bluetooth_init(support::AdapterRecordingTable());
        vym_bluetooth_enable();
        server.ExpectCommand("AT#PB\r\n");
        vym_bluetooth_done();
        vym_sdk_done();
    }
    server.CloseClient();
    EXPECT_TRUE(leaks.NothingLeft());
}

TEST_F(Lifecycle, ACycleThatUsedEverythingLeavesNothingBehind) {
    for (int i = 0; i < 3; ++i) {
        ClientSession session;
        UseEverything(session);
    }
}

TEST_F(Lifecycle, EndingTwiceOrWithoutAStartIsHarmless) {
    vym_sdk_done();
    {
        ClientSession session;
        vym_sdk_done();
        vym_sdk_done();
    }
    vym_sdk_done();
    EXPECT_TRUE(support::IsOpen(STDIN_FILENO));
}

TEST_F(Lifecycle, AGoodRunThenAFailedStartThenTheEnd) {
    const support::TempDir empty;
    {
        ClientSession session;
        session.Stop();
        EXPECT_EQ(vym_sdk_init_ex(empty.Path().c_str()), -1);
        vym_sdk_done();
    }
    ClientSession session;
    UseEverything(session);
}

TEST_F(Lifecycle, HalfAnEventOfTheLastConnectionIsForgotten) {
    ClientSession session;
    session.StartAdapter();
    session.Server().Send(Event("BE01") + "BH000011");
    EXPECT_TRUE(session.Adapter().WaitForExactly({"discovery_state_changed(1)"}));
    ASSERT_TRUE(session.Restart());
    session.Server().Send(Event("BE02"));
    EXPECT_TRUE(session.EventsAreHandled());
    EXPECT_EQ(session.Adapter().Take(),
              (Entries{"discovery_state_changed(1)", "discovery_state_changed(2)"}));
}

TEST_F(Lifecycle, ATextWithoutEndOfTheLastConnectionIsForgotten) {
    ClientSession session;
    session.StartAdapter();
    session.Server().Send("BE01" + std::string(6000, 'q'));
    EXPECT_TRUE(session.Adapter().WaitForExactly({"discovery_state_changed(1)"}));
    ASSERT_TRUE(session.Server().ClientHasRead());
    ASSERT_TRUE(session.Restart());
    session.Server().Send(Event("BE02"));
    EXPECT_TRUE(session.Adapter().WaitForEntry("discovery_state_changed(2)"));
}

TEST_F(Lifecycle, CallsAfterTheEndAreHarmless) {
    static char command[] = "AT#PB\r\n";
    support::ProbeParser probe;
    ClientSession session;
    UseEverything(session);
    vym_sdk_done();
    vym_bluetooth_enable();
    send_at_command(command, 7);
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 0);
    register_event_parser(probe.Parser());
    unregister_event_parser(probe.Parser());
    vym_audio_stream_done();
    session.StopAdapter();
    EXPECT_TRUE(session.Server().SeesEndOfStream());
}

TEST_F(Lifecycle, TheAdapterMayBeEndedAndStartedInOneConnection) {
    ClientSession session;
    for (int i = 0; i < 3; ++i) {
        session.StartAdapter();
        session.Server().Send(Event("BE01"));
        EXPECT_TRUE(session.EventsAreHandled());
        EXPECT_EQ(session.Adapter().Take(), (Entries{"discovery_state_changed(1)"}));
        session.StopAdapter();
    }
}

TEST_F(Lifecycle, TheEndWaitsForACallbackInProgress) {
    ClientSession session;
    session.StartAdapter();
    support::Gate entered;
    support::Gate leave;
    std::atomic<bool> left{false};
    session.Adapter().SetHook([&](const std::string&) {
        entered.Open();
        EXPECT_TRUE(leave.Wait());
        left = true;
    });
    session.Server().Send(Event("BE01"));
    ASSERT_TRUE(entered.Wait());
    bool left_first = false;
    std::thread ender([&] {
        vym_sdk_done();
        left_first = left;
    });
    leave.Open();
    ender.join();
    EXPECT_TRUE(left_first);
}

TEST_F(Lifecycle, TheEndFromACallbackDisconnects) {
    ClientSession session;
    session.StartAdapter();
    session.Adapter().SetHook([](const std::string&) { vym_sdk_done(); });
    session.Server().Send(Event("BE01") + Event("BE02"));
    EXPECT_TRUE(session.Adapter().WaitForEntry("discovery_state_changed(1)"));
    EXPECT_TRUE(session.Server().SeesEndOfStream());
}

TEST_F(Lifecycle, TheEndFromACallbackAndAStartFromElsewhere) {
    ClientSession session;
    session.StartAdapter();
    session.Adapter().SetHook([](const std::string&) { vym_sdk_done(); });
    session.Server().Send(Event("BE01"));
    EXPECT_TRUE(session.Server().SeesEndOfStream());
    session.Adapter().SetHook(nullptr);
    session.StopAdapter();
    ASSERT_GT(vym_sdk_init_ex(session.Directory().c_str()), 0);
    ASSERT_TRUE(session.Server().Accept());
    session.StartAdapter();
    session.Server().Send(Event("BE02"));
    EXPECT_TRUE(session.EventsAreHandled());
}

TEST_F(Lifecycle, TheEndFromAnInternalHandlerDisconnects) {
    ClientSession session;
    vym_internal_event_register([](ev_data_t*) { vym_sdk_done(); });
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    EXPECT_TRUE(session.Server().SeesEndOfStream());
}

TEST_F(Lifecycle, TwoThreadsMayEndTogether) {
    ClientSession session;
    session.StartAdapter();
    std::thread other(vym_sdk_done);
    vym_sdk_done();
    other.join();
    EXPECT_TRUE(session.Server().SeesEndOfStream());
}

// Writes events until the client has gone.
class Pouring {
public:
    explicit Pouring(int fd)
        : thread_([fd] {
              const std::string events = Event("BE01") + Event("PVversion") + "BH0000112233445502";
              while (support::WriteBytes(fd, Event(events))) {
              }
          }) {}
    ~Pouring() { thread_.join(); }
    Pouring(const Pouring&) = delete;
    Pouring& operator=(const Pouring&) = delete;
    Pouring(Pouring&&) = delete;
    Pouring& operator=(Pouring&&) = delete;

private:
    std::thread thread_;
};

TEST_F(Lifecycle, TheEndWhileEventsPourIn) {
    for (int i = 0; i < 3; ++i) {
        ClientSession session;
        session.StartAdapter();
        const Pouring server(session.Server().ClientFd());
        EXPECT_TRUE(session.Adapter().WaitFor(200));
        vym_sdk_done();
    }
}

TEST_F(Lifecycle, TheAdaptersEndWhileEventsPourIn) {
    ClientSession session;
    const Pouring server(session.Server().ClientFd());
    const auto reads = [this] { return support::LinesWith(Output().Out(), "], buf[").size(); };
    for (int i = 0; i < 5; ++i) {
        session.StartAdapter();
        EXPECT_TRUE(session.Adapter().WaitFor(50));
        session.StopAdapter();
        session.Adapter().Take();
        const size_t before = reads();
        EXPECT_TRUE(support::WaitUntil([&] { return reads() > before + 1; }));
        EXPECT_EQ(session.Adapter().Size(), 0U) << "no callback runs after the adapter's end";
    }
    vym_sdk_done();
}

TEST_F(Lifecycle, TheServerGoesFirst) {
    for (const bool half_event : {false, true}) {
        ClientSession session;
        session.StartAdapter();
        session.Server().Send(Event("BE01") + (half_event ? "BH00" : ""));
        EXPECT_TRUE(session.Adapter().WaitForExactly({"discovery_state_changed(1)"}));
        session.Server().CloseClient();
        vym_bluetooth_enable();
    }
}

TEST_F(Lifecycle, AfterTheServersDeathTheLibraryCanBeStartedAgain) {
    ClientSession session;
    session.StartAdapter();
    session.Server().CloseClient();
    ASSERT_TRUE(session.Restart());
    session.Server().Send(Event("BE01"));
    EXPECT_TRUE(session.EventsAreHandled());
}

} // namespace
