// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Captures that can be given to others.

#include "support/text.h"
#include "vymtrace/capture_bytes.h"

#include <gtest/gtest.h>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::kHeader;
using capture_bytes::Record;
using capture_bytes::Result;
using capture_bytes::Traces;
using namespace std::string_literals;

/// The records that become of these.
std::string Scrubbed(const std::string& records) {
    const Traces traces;
    const std::string from = traces.Write(kHeader + records);
    const Result result = traces.Run({"scrub", from, traces.Path("scrubbed")});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out + result.err, "");
    const std::string bytes = support::ReadFile(traces.Path("scrubbed"));
    EXPECT_EQ(bytes.substr(0, kHeader.size()), kHeader);
    return bytes.substr(std::min(bytes.size(), kHeader.size()));
}

TEST(Scrub, RecordsStandWhereTheyStoodWithPseudonymsInThem) {
    EXPECT_TRUE(support::SameBytes(
        Command("AT#HA2020202020"
                "21\r\n") +
            Events("HO01010001+000001\0HA03000000FD0000002F202020202021\0"s, 7) +
            Command("AT#HH+000001\r\n", 8) +
            Command("AT#BR202020202021010004"
                    "0001\r\n",
                    9) +
            Events("BF2020202020220000010400Name1xx\0PA01\0"s, 10),
        Scrubbed(Command("AT#HA001A7DDA7113\r\n") +
                 Events("HO01010001+493012\0HA03000000FD0000002F001A7DDA7113\0"s, 7) +
                 Command("AT#HH+493012\r\n", 8) +
                 Command("AT#BR001A7DDA7113010004"
                         "9876\r\n",
                         9) +
                 Events("BF001A7DDA71140000010400Laptop2\0PA01\0"s, 10))));
}

TEST(Scrub, WhatIsNotPrivateStaysToTheByte) {
    const std::string records = Command("AT#PB\r\n") + Events("PA01\0PD0100000007\0\0PV1.0\0"s) +
                                Command("AT#BA01\r\n") +
                                Events("JL0000000000000001000100220000010000"
                                       "02\1\2\0"s) +
                                Record(1, "", 0).substr(0, 0);
    EXPECT_TRUE(support::SameBytes(records, Scrubbed(records)));
}

TEST(Scrub, ACutEventIsRepeatedAsItWas) {
    EXPECT_TRUE(support::SameBytes(Events("PA01\0HHName"s) + Command("AT#PB\r\n") +
                                       Events("HHName1xx"s, 1) + Events("HHName1xxxx\0"s, 2),
                                   Scrubbed(Events("PA01\0HHSecr"s) + Command("AT#PB\r\n") +
                                            Events("HHSecret "s, 1) + Events("HHSecret Co\0"s, 2))));
}

TEST(Scrub, LongTextIsCutIntoPiecesAgain) {
    const std::string digits(250, '7');
    const std::string zeros(250, '0');
    EXPECT_TRUE(support::SameBytes(Command("AT#HH" + zeros) + Command("001\r\n", 1) +
                                       Events("HM" + zeros + "000") + Events("2\0"s),
                                   Scrubbed(Command("AT#HH" + digits) + Command("789\r\n", 1) +
                                            Events("HM" + digits + "789") + Events("5\0"s))));
}

TEST(Scrub, ATextOfAnotherLengthMovesWhatIsBehindItInItsReadAlone) {
    // The zeros of the key take two bytes each, its pseudonym takes one.
    const std::string key = "\x01\xDC\xDD\xDC\xDD\xDC\xDD\xDC\xDD";
    const std::string before = "PV" + std::string(238, '7') + "\0"s;
    EXPECT_TRUE(
        support::SameBytes(Events("TP0100010005xxxxa\0PA01\0"s) + Events("PA00\0"s),
                           Scrubbed(Events("TP0100010009" + key + "\0PA01\0"s) + Events("PA00\0"s))));
    // Across two pieces: the second one gives to the first.
    EXPECT_TRUE(
        support::SameBytes(Events(before + "TP010001"
                                           "0005x") +
                               Events("xxxa\0PA01\0"s, 1) + Events("PA00\0"s, 2),
                           Scrubbed(Events(before +
                                           "TP010001"
                                           "0009" +
                                           key.substr(0, 1)) +
                                    Events(key.substr(1) + "\0PA01\0"s, 1) + Events("PA00\0"s, 2))));
}

TEST(Scrub, WhatCannotBeUnderstoodIsMasked) {
    EXPECT_TRUE(support::SameBytes(
        Command("AT#xx 000 xxx\r\n") + Events("BF000x0xxx\0PA01xxx\0?xxxx\0HM+00"s) +
            Command("xxxxx!\r\n"),
        Scrubbed(Command("AT#ZZ 123 Bob\r\n") + Events("BF001A7DDA\0PA01Bob\0?Anna\0HM+49"s) +
                 Command("hello!\r\n"))));
}

TEST(Scrub, PacketsOfOtherKindsAreLeftOut) {
    const Traces traces;
    traces.Write(kHeader + Record(2, "\x01\x03\x0C\x00"s, 0) + Events("PA01\0"s) +
                 Record(1, "\x02\x01\x00\x01\x00\x41"s, 0));
    const Result result =
        traces.Run({"scrub", traces.Path("client_sock.log"), traces.Path("scrubbed")});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.err.find("client_sock.log: 2 packets of other kinds are left out"),
              std::string::npos);
    EXPECT_EQ(support::ReadFile(traces.Path("scrubbed")), kHeader + Events("PA01\0"s));
}

TEST(Scrub, OfADamagedFileTheRestIsWritten) {
    const Traces traces;
    const std::string whole = kHeader + Events("PA01\0"s) + Events("HM+49\0"s);
    traces.Write(whole.substr(0, whole.size() - 1));
    const Result result =
        traces.Run({"scrub", traces.Path("client_sock.log"), traces.Path("scrubbed")});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("record 2 is cut off"), std::string::npos) << result.err;
    EXPECT_EQ(support::ReadFile(traces.Path("scrubbed")), kHeader + Events("PA01\0"s));
}

TEST(Scrub, TheCaptureItselfIsNotOverwritten) {
    const Traces traces;
    const std::string path = traces.Write(kHeader + Events("PA01\0"s));
    const Result result = traces.Run({"scrub", path, path});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "vymtrace: client_sock.log is the capture itself; give another name for what "
                          "is written\n");
    EXPECT_EQ(support::ReadFile(path), kHeader + Events("PA01\0"s));
    EXPECT_EQ(traces.Run({"scrub", path}).code, 2);
    EXPECT_EQ(traces.Run({"scrub", path, traces.Path("no/such")}).code, 1);
    EXPECT_EQ(traces.Run({"scrub", traces.Path("none"), traces.Path("out")}).code, 1);
}

} // namespace
