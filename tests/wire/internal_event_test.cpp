// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Internal messages beside the server's events, on the receive thread.

#include "internal_ev_process.h"
#include "vym_sdk.h"

#include "support/probe_parser.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using support::Event;
using Entries = std::vector<std::string>;

// "internal(7, abc)" among the events.
void NoteMessage(ev_data_t* ev) {
    support::ProbeRecord().Add("internal(" + std::to_string(ev->type) + ", " +
                               std::string(reinterpret_cast<char*>(ev->value), ev->len) + ")");
}

int Send(uint8_t type, std::string value) {
    return vym_internal_event_send(type, static_cast<uint8_t>(value.size()), value.data());
}

class InternalMessage : public support::ProbeTest {
protected:
    void SetUp() override {
        support::ProbeTest::SetUp();
        vym_internal_event_register(NoteMessage);
    }
};

TEST_F(InternalMessage, ItsHandlerRunsOnTheReceiveThread) {
    std::atomic<std::thread::id> event_thread{};
    std::atomic<std::thread::id> message_thread{};
    Events().SetHook([&](const std::string& entry) {
        (entry == "XA(01)" ? event_thread : message_thread) = std::this_thread::get_id();
    });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    EXPECT_EQ(Send(7, "abc"), 1);
    EXPECT_TRUE(Events().WaitForEntry("internal(7, abc)"));
    EXPECT_TRUE(support::WaitUntil([&] { return message_thread.load() != std::thread::id(); }));
    EXPECT_EQ(event_thread.load(), message_thread.load());
    EXPECT_NE(message_thread.load(), std::this_thread::get_id());
}

TEST_F(InternalMessage, GoesBeforeTextThatIsReadyToo) {
    support::Gate gate;
    Events().SetHook([&](const std::string& entry) {
        if (entry == "XA(01)") {
            EXPECT_TRUE(gate.Wait());
        }
    });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    Server().Send(Event("XA02"));
    EXPECT_EQ(Send(7, "a"), 1);
    EXPECT_EQ(Send(8, "b"), 1);
    gate.Open();
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)", "internal(7, a)", "internal(8, b)", "XA(02)"}));
}

TEST_F(InternalMessage, HoldsTheServersTextUpForHalfASecond) {
    using std::chrono::steady_clock;
    support::Gate gate;
    steady_clock::time_point message;
    std::atomic<int> held_up_ms{-1};
    Events().SetHook([&](const std::string& entry) {
        if (entry == "XA(01)") {
            EXPECT_TRUE(gate.Wait());
        } else if (entry == "internal(7, a)") {
            message = steady_clock::now();
        } else {
            held_up_ms = static_cast<int>((steady_clock::now() - message) / support::Milliseconds(1));
        }
    });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    Server().Send(Event("XA02"));
    EXPECT_EQ(Send(7, "a"), 1);
    gate.Open();
    EXPECT_TRUE(support::WaitUntil([&] { return held_up_ms >= 0; }));
    EXPECT_GE(held_up_ms, 500);
}

TEST_F(InternalMessage, DoesNotDisturbAKeptHalfEvent) {
    Server().Send("XB0011");
    ASSERT_TRUE(Server().ClientHasRead());
    EXPECT_EQ(Send(7, std::string(64, 'x')), 1);
    EXPECT_TRUE(Events().WaitFor(1));
    Server().Send(Event("2233445566"));
    EXPECT_TRUE(
        Events().WaitForExactly({"internal(7, " + std::string(64, 'x') + ")", "XB(00112233445566)"}));
}

TEST_F(InternalMessage, IsReadWhenTheReceiveBufferIsAlmostFull) {
    Server().Send("XT05" + std::string(4090, 'q'));
    ASSERT_TRUE(Server().ClientHasRead());
    for (const char* text : {"one", "two", "three"}) {
        EXPECT_EQ(Send(7, text), 1);
    }
    EXPECT_TRUE(Events().WaitFor(3));
    Server().Send(Event(""));
    EXPECT_TRUE(Events().WaitForExactly({"internal(7, one)", "internal(7, two)", "internal(7, three)",
                                         "XT(05, " + std::string(4090, 'q') + ")"}));
}

TEST_F(InternalMessage, ItsHandlerMaySendCommandsAndRegisterParsers) {
    static support::ProbeParser other;
    vym_internal_event_register([](ev_data_t*) {
        char command[] = "AT#HK\r\n";
        send_at_command(command, 0);
        register_event_parser(other.Parser());
        unregister_event_parser(other.Parser());
    });
    EXPECT_EQ(Send(1, ""), 1);
    Server().ExpectCommand("AT#HK\r\n");
    EXPECT_TRUE(Events().WaitForEntry("internal(1, )"));
}

TEST_F(InternalMessage, ItsHandlerMaySendAnother) {
    vym_internal_event_register([](ev_data_t* ev) {
        if (ev->type == 1) {
            EXPECT_EQ(Send(2, "from the handler"), 1);
        }
    });
    EXPECT_EQ(Send(1, ""), 1);
    EXPECT_TRUE(Events().WaitForExactly({"internal(1, )", "internal(2, from the handler)"}));
}

// Fills the channel; the number of messages that went.
int SendUntilFull() {
    int sent = 0;
    while (sent < 100000 && Send(3, "") == 1) {
        ++sent;
    }
    return sent;
}

TEST_F(InternalMessage, AFullChannelDoesNotHangAnEventsCallback) {
    std::atomic<int> sent{-1};
    Events().SetHook([&](const std::string& entry) {
        if (entry == "XA(01)") {
            sent = SendUntilFull();
        }
    });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(support::WaitUntil([&] { return sent >= 0; }));
    EXPECT_GT(sent, 0);
    EXPECT_LT(sent, 100000);
    EXPECT_TRUE(Events().WaitFor(static_cast<size_t>(sent) + 1));
}

TEST_F(InternalMessage, AFullChannelDoesNotHangAHandler) {
    static std::atomic<int> sent;
    sent = -1;
    vym_internal_event_register([](ev_data_t* ev) {
        if (ev->type == 1) {
            sent = SendUntilFull();
        }
    });
    EXPECT_EQ(Send(1, ""), 1);
    EXPECT_TRUE(support::WaitUntil([&] { return sent >= 0; }));
    EXPECT_LT(sent, 100000);
}

TEST_F(InternalMessage, ASenderWaitsForRoomWhileTheReceiveThreadReads) {
    int sent = 0;
    for (int i = 0; i < 600; ++i) {
        sent += Send(4, "");
    }
    EXPECT_EQ(sent, 600);
    EXPECT_TRUE(support::WaitUntil([&] { return Events().Count("internal(4, )") == 600; }));
}

TEST_F(InternalMessage, AfterTheServersDeathMessagesStillArrive) {
    Server().CloseClient();
    EXPECT_EQ(Send(7, "abc"), 1);
    EXPECT_TRUE(Events().WaitForEntry("internal(7, abc)"));
}

class UnconnectedMessage : public support::QuietTest {};

TEST_F(UnconnectedMessage, AFullChannelDoesNotHangTheSender) {
    const support::TempDir directory;
    EXPECT_EQ(vym_sdk_init_ex(directory.Path().c_str()), -1);
    const int sent = SendUntilFull();
    EXPECT_GT(sent, 0);
    EXPECT_LT(sent, 100000);
    vym_sdk_done();
}

} // namespace
