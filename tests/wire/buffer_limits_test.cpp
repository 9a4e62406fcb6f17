// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Reads that fill the receive buffer of 4095 bytes, and texts that never end.

#include "support/probe_parser.h"

#include <gtest/gtest.h>

namespace {

using support::Event;
using Entries = std::vector<std::string>;

class BufferLimits : public support::ProbeTest {
protected:
    void ExpectEvents(const Entries& expected) {
        EXPECT_TRUE(EventsAreHandled());
        EXPECT_EQ(Events().Take(), expected);
    }

    // The lines that a full buffer prints.
    [[nodiscard]] Entries FullLines() {
        Entries lines;
        for (const std::string& line : support::Lines(Output().Out())) {
            if (line.rfind("Buffer is full", 0) == 0 || line.rfind("tail position", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

std::string Filling(size_t count) {
    return std::string(count, 'q');
}

constexpr const char* kFullFromEmpty =
    "Buffer is full after read[4095] bytes(remain 0 bytes in buffer before "
    "read). should keep the tail part.";

TEST_F(BufferLimits, ATextOf4094CharactersAndItsNulFits) {
    Server().Send(Event("XT05" + Filling(4090)) + Event("XA01"));
    ExpectEvents({"XT(05, " + Filling(4090) + ")", "XA(01)"});
    EXPECT_EQ(FullLines(), (Entries{kFullFromEmpty, "tail position: 4094."}));
}

TEST_F(BufferLimits, ATextOf4094CharactersFitsInTwoReads) {
    const std::string event = Event("XT05" + Filling(4090));
    for (const size_t cut : {1U, 4U, 2000U, 4093U, 4094U}) {
        Server().Send(event.substr(0, cut));
        ASSERT_TRUE(Server().ClientHasRead());
        Server().Send(event.substr(cut) + Event("XA01"));
        ExpectEvents({"XT(05, " + Filling(4090) + ")", "XA(01)"});
    }
}

TEST_F(BufferLimits, OneCharacterMoreIsTooMuch) {
    Server().Send(Event("XT05" + Filling(4091)) + Event("XA01"));
    ExpectEvents({"XA(01)"});
}

TEST_F(BufferLimits, TheTailOfAFullBufferIsKept) {
    Server().Send(Event("XT05" + Filling(4000)) + Event("XT06" + Filling(200)) + Event("XA01"));
    const Entries expected = {"XT(05, " + Filling(4000) + ")", "XT(06, " + Filling(200) + ")",
                              "XA(01)"};
    EXPECT_TRUE(Events().WaitForExactly(expected));
    EXPECT_EQ(FullLines(), (Entries{kFullFromEmpty, "tail position: 4004."}));
    EXPECT_NE(Output().Out().find("buf[0000 + 4095] evt_num:   1 , evt_buf:XT05"), std::string::npos);
    EXPECT_NE(Output().Out().find("buf[0090 + 0120] evt_num:   2 , evt_buf:XT06"), std::string::npos);
}

TEST_F(BufferLimits, AFullBufferBehindAKeptHeadTellsBothParts) {
    Server().Send("XT05" + Filling(96));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event(Filling(3000)) + Event("XT06" + Filling(2000)));
    ExpectEvents({"XT(05, " + Filling(3096) + ")", "XT(06, " + Filling(2000) + ")"});
    EXPECT_EQ(FullLines(),
              (Entries{"Buffer is full after read[3995] bytes(remain 100 bytes in buffer before "
                       "read). should keep the tail part.",
                       "tail position: 3100."}));
}

TEST_F(BufferLimits, AStreamOfManyBuffersLosesNothing) {
    std::string stream;
    Entries expected;
    for (size_t i = 0; i < 300; ++i) {
        const std::string text = std::to_string(i) + Filling(i * 7 % 300);
        stream += Event("XT05" + text);
        expected.push_back("XT(05, " + text + ")");
    }
    Server().Send(stream);
    ExpectEvents(expected);
}

TEST_F(BufferLimits, ATailThatIsAlreadyWholeIsDeliveredOnce) {
    // The read ends behind the fields of an event and before its NUL.
    Server().Send(Event("XT05" + Filling(4086)) + "XA01" + std::string("\0", 1) + Event("XA02"));
    ExpectEvents({"XT(05, " + Filling(4086) + ")", "XA(01)", "XA(02)"});
}

TEST_F(BufferLimits, ATextWithoutEndIsDroppedUpToItsNul) {
    Server().Send(Filling(4095));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("XA05") + Event("XA01"));
    ExpectEvents({"XA(01)"});
    EXPECT_EQ(FullLines(), (Entries{kFullFromEmpty}));
}

TEST_F(BufferLimits, ATextOfManyBuffersIsDroppedUpToItsNul) {
    Server().Send(Filling(20000));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Filling(3) + Event("XA05") + Event("XA01"));
    ExpectEvents({"XA(01)"});
}

TEST_F(BufferLimits, ATextWithoutEndArrivingInPiecesIsDropped) {
    for (int i = 0; i < 50; ++i) {
        Server().Send(Filling(100));
        ASSERT_TRUE(Server().ClientHasRead());
    }
    Server().Send(Event("XA05") + Event("XA01"));
    ExpectEvents({"XA(01)"});
}

TEST_F(BufferLimits, AnEventAtTheHeadOfATextWithoutEndIsDeliveredOnce) {
    Server().Send("XA01" + Filling(4091));
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)"}));
    Server().Send(Filling(9000) + Event("XA05") + Event("XA02"));
    ExpectEvents({"XA(01)", "XA(02)"});
}

TEST_F(BufferLimits, ANulBeforeATextWithoutEndChangesNothing) {
    Server().Send(std::string("\0", 1) + Filling(4094));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Filling(100));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("XA05") + Event("XA01"));
    ExpectEvents({"XA(01)"});
}

TEST_F(BufferLimits, ANulBeforeALongTextLeavesItsRoom) {
    Server().Send(std::string("\0", 1) + "XT05" + Filling(4090));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("") + Event("XA01"));
    ExpectEvents({"XT(05, " + Filling(4090) + ")", "XA(01)"});
}

TEST_F(BufferLimits, AnEventBeforeATextWithoutEndIsDelivered) {
    Server().Send(Event("XA01") + Filling(6000));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("XA05") + Event("XA02"));
    ExpectEvents({"XA(01)", "XA(02)"});
}

TEST_F(BufferLimits, SurplusBehindAnEarlyDeliveryMayBeLongerThanTheBuffer) {
    Server().Send("XA01");
    EXPECT_TRUE(Events().WaitForExactly({"XA(01)"}));
    Server().Send(Filling(10000) + Event("XA05") + Event("XA02"));
    ExpectEvents({"XA(01)", "XA(02)"});
}

} // namespace
