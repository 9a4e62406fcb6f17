// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The receive thread: however the stream is cut, every event arrives once and whole.

#include "vym_sdk.h"

#include "support/probe_parser.h"

#include <atomic>
#include <csignal>
#include <thread>

#include <pthread.h>

namespace {

using support::Event;
using Entries = std::vector<std::string>;

class ReceiveLoop : public support::ProbeTest {
protected:
    // Each part is read on its own before the next is sent.
    void SendParts(const std::vector<std::string>& parts) {
        for (const std::string& part : parts) {
            Server().Send(part);
            ASSERT_TRUE(Server().ClientHasRead());
        }
    }

    // Whatever was sent before has come to exactly these entries.
    void ExpectEvents(const Entries& expected, const std::string& what = "") {
        EXPECT_TRUE(EventsAreHandled()) << what;
        EXPECT_EQ(Events().Take(), expected) << what;
    }
};

// Events of all kinds, NULs where they may be, and what must come of them.
std::string Burst() {
    return std::string("\0", 1) + Event("XA01") + Event("XB00112233445566") + Event("XT05some text") +
           std::string("\0\0", 2) + Event("ZZunknown") + Event("XA02surplus") + Event("XB0011") +
           Event("XN00") + Event("XT06") + Event("XA03");
}

Entries BurstEntries() {
    return {"XA(01)", "XB(00112233445566)", "XT(05, some text)", "XA(02)", "XT(06, )", "XA(03)"};
}

TEST_F(ReceiveLoop, ABurstInOneRead) {
    Server().Send(Burst());
    ExpectEvents(BurstEntries());
}

TEST_F(ReceiveLoop, ABurstCutAtEveryByte) {
    const std::string burst = Burst();
    for (size_t cut = 1; cut < burst.size(); ++cut) {
        SendParts({burst.substr(0, cut), burst.substr(cut)});
        ExpectEvents(BurstEntries(), "cut at " + std::to_string(cut));
    }
}

TEST_F(ReceiveLoop, ABurstCutAtTwoPlaces) {
    const std::string burst = Event("XA01") + Event("XT05ab") + Event("XA02x") + Event("XA03");
    const Entries expected = {"XA(01)", "XT(05, ab)", "XA(02)", "XA(03)"};
    for (size_t first = 1; first < burst.size() - 1; ++first) {
        for (size_t second = first + 1; second < burst.size(); ++second) {
            SendParts(
                {burst.substr(0, first), burst.substr(first, second - first), burst.substr(second)});
            ExpectEvents(expected,
                         "cut at " + std::to_string(first) + " and " + std::to_string(second));
        }
    }
}

TEST_F(ReceiveLoop, ABurstByteByByte) {
    for (const char byte : Burst()) {
        SendParts({std::string(1, byte)});
    }
    ExpectEvents(BurstEntries());
}

TEST_F(ReceiveLoop, TwoEventsAndAHalfAreKeptAndCompleted) {
    SendParts({Event("XA01") + Event("XA02") + "XB0011223"});
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)", "XA(02)"}));
    Server().Send(Event("3445566"));
    ExpectEvents({"XA(01)", "XA(02)", "XB(00112233445566)"});
}

TEST_F(ReceiveLoop, FixedFieldsAreDeliveredBeforeTheirNul) {
    Server().Send("XA01");
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)"}));
    Server().Send(std::string("\0", 1) + Event("XA02") + Event("XA03"));
    ExpectEvents({"XA(01)", "XA(02)", "XA(03)"});
}

TEST_F(ReceiveLoop, ATextTailIsDeliveredWithItsNulOnly) {
    SendParts({"XT05Han", "s Mei"});
    EXPECT_TRUE(Events().All().empty());
    Server().Send(Event("er"));
    ExpectEvents({"XT(05, Hans Meier)"});
}

TEST_F(ReceiveLoop, SurplusThatComesAfterAnEarlyDeliveryIsNoEvent) {
    Server().Send("XA01");
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)"}));
    SendParts({"XA02", "XA", "03", "XT05text"});
    Server().Send(Event("XA04") + Event("XA05"));
    ExpectEvents({"XA(01)", "XA(05)"});
}

TEST_F(ReceiveLoop, SurplusInTheSameReadIsNoEvent) {
    Server().Send(Event("XA01XA02") + Event("XA03"));
    ExpectEvents({"XA(01)", "XA(03)"});
}

TEST_F(ReceiveLoop, AnUnfinishedEventDiesWithItsNul) {
    SendParts({"XB0011"});
    Server().Send(std::string("\0", 1) + Event("XA01"));
    ExpectEvents({"XA(01)"});
}

TEST_F(ReceiveLoop, UnknownTagsAreConsumed) {
    Server().Send(Event("QQ") + Event("Q") + Event("QQQ0011") + Event("XA01") + Event("xa02") +
                  Event(" XA03") + Event("\r\nXA04") + Event("XA05\r\n"));
    ExpectEvents({"XA(01)", "XA(05)"});
}

TEST_F(ReceiveLoop, ManyNulsAreNothing) {
    Server().Send(std::string(3000, '\0'));
    Server().Send(std::string(100, '\0') + Event("XA01") + std::string(2000, '\0') + Event("XA02"));
    ExpectEvents({"XA(01)", "XA(02)"});
}

TEST_F(ReceiveLoop, BytesOfAnyValueAreHarmless) {
    std::string all;
    for (int value = 1; value < 256; ++value) {
        all.push_back(static_cast<char>(value));
    }
    Server().Send(Event(all) + Event("XT05" + all));
    ExpectEvents({"XT(05, " + all + ")"});
}

TEST_F(ReceiveLoop, ManyEventsKeepTheirOrder) {
    Entries expected;
    std::string stream;
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(10 + i % 89);
        stream += Event("XT" + number + std::to_string(i));
        expected.push_back("XT(" + number + ", " + std::to_string(i) + ")");
    }
    Server().Send(stream);
    ExpectEvents(expected);
}

TEST_F(ReceiveLoop, EachReadIsPrinted) {
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    const std::string line(
        "\n\\[\\[[0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{1,6}\\] *\\], buf\\[0000 \\+ 0005\\]"
        " evt_num:   1 , evt_buf:XA01 {21}\r\n");
    EXPECT_TRUE(support::HasPart(Output().Out(), line));
}

// The part of the last printed read behind the time.
std::string LastRead(const std::string& output) {
    const Entries lines = support::LinesWith(output, "], buf[");
    return lines.empty() ? "" : lines.back().substr(lines.back().find("buf["));
}

TEST_F(ReceiveLoop, ThePrintedTimeIsPaddedTo17Characters) {
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    const Entries lines = support::LinesWith(Output().Out(), "], buf[");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_GE(lines[0].find("], buf["), 18U);
}

TEST_F(ReceiveLoop, ThePrintedTextIsCutTo25Characters) {
    Server().Send(Event("XT05abcdefghijklmnopqrstuvwxyz"));
    EXPECT_TRUE(Events().WaitFor(1));
    EXPECT_EQ(LastRead(Output().Out()),
              "buf[0000 + 0031] evt_num:   1 , evt_buf:XT05abcdefghijklmnopqrstu");
}

TEST_F(ReceiveLoop, ThePrintedTextHoldsNothingOfEarlierReads) {
    Server().Send(Event("XT05abcdefghijklmnopqrstuvwxyz"));
    EXPECT_TRUE(Events().WaitFor(1));
    SendParts({"XB00"});
    EXPECT_TRUE(
        Output().WaitForOut("buf[0000 + 0004] evt_num:   0 , evt_buf:XB00                     \r\n"));
    SendParts({"11"});
    EXPECT_TRUE(
        Output().WaitForOut("buf[0004 + 0002] evt_num:   0 , evt_buf:XB0011                   \r\n"));
}

TEST_F(ReceiveLoop, RunsOfNulsAreCountedAndANulInFrontEmptiesThePrintedText) {
    Server().Send(std::string("\0\0", 2) + Event("XA01") + std::string("\0\0", 2) + Event("XA02") +
                  "XB");
    EXPECT_TRUE(Events().WaitForEntry("XA(02)"));
    EXPECT_EQ(LastRead(Output().Out()),
              "buf[0000 + 0016] evt_num:   3 , evt_buf:" + std::string(25, ' '));
}

TEST_F(ReceiveLoop, ASignalDuringTheWaitLosesNothing) {
    struct sigaction ignored {};
    struct sigaction before {};
    ignored.sa_handler = [](int) {};
    sigaction(SIGUSR1, &ignored, &before); // without SA_RESTART, so that the wait is interrupted
    std::atomic<pthread_t> receiver{};
    Events().SetHook([&](const std::string&) { receiver = pthread_self(); });
    Server().Send(Event("XA01"));
    ASSERT_TRUE(support::WaitUntil([&] { return receiver != pthread_t{}; }));
    Events().SetHook(nullptr);
    for (int i = 0; i < 5; ++i) {
        pthread_kill(receiver, SIGUSR1);
        Server().Send("XB001122");
        pthread_kill(receiver, SIGUSR1);
        Server().Send(Event("33445566"));
    }
    ExpectEvents({"XA(01)", "XB(00112233445566)", "XB(00112233445566)", "XB(00112233445566)",
                  "XB(00112233445566)", "XB(00112233445566)"});
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(ReceiveLoop, TheTextIsTheServersUntilTheCallbackReturns) {
    support::Gate gate;
    Events().SetHook([&](const std::string& entry) {
        if (entry == "XA(01)") {
            EXPECT_TRUE(gate.Wait());
        }
    });
    Server().Send(Event("XA01"));
    EXPECT_TRUE(Events().WaitForEntry("XA(01)"));
    Server().Send(Event("XA02"));
    Server().Send(Event("XA03"));
    EXPECT_EQ(Events().Size(), 1U) << "callbacks run one after the other";
    gate.Open();
    ExpectEvents({"XA(01)", "XA(02)", "XA(03)"});
}

TEST_F(ReceiveLoop, EventsBehindTheLastWordOfADeadServerAreDelivered) {
    Server().Send(Event("XA01") + Event("XA02") + "XA03");
    Server().CloseClient();
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)", "XA(02)", "XA(03)"}));
}

} // namespace
