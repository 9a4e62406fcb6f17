// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Captures as lines of text and as JSON Lines.

#include "vymtrace/capture_bytes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::kHeader;
using capture_bytes::Record;
using capture_bytes::Result;
using capture_bytes::Traces;
using namespace std::string_literals;

// A connection, a call list, blocks and lists, and what nobody knows.
std::string Conversation() {
    return Command("AT#HA001A7DDA7113\r\n") + Events("HA03000000FD0000002F001A7DDA7113\0"s, 250) +
           Events("HO01010001+49 \"30\"\0HH\xC3\x9Cnet\0"s, 1500) + Command("AT#HH+4930\r\n", 2000) +
           Events("KB001A7DDA7113C8000006\x02\x01\x06\x03\xDC\xDD\0"s, 2500) +
           Events("BB0001000B0704\x01\xDC\xDD\xDC\xDD\xDC\xDD\0"s, 3000) +
           Command("AT#ZZtop\r\n", 3001) + Events("PA\0"s, 3002) + Events("PA01more\0"s, 60000) +
           Command("hello\r\n", 61000) + Events("PV1.", 62000);
}

TEST(Lines, EachCommandAndEventIsALine) {
    const Result result = Traces().Run(Conversation(), {});
    EXPECT_EQ(result.out,
              "2026-11-22 14:03:07.000000      1 > hfp         connect address=00:1A:7D:DA:71:13\n"
              "2026-11-22 14:03:07.250000      2 < hfp         onConnectionState state=3 "
              "peer_features=253 call_hold_features=47 address=00:1A:7D:DA:71:13\n"
              "2026-11-22 14:03:08.500000      3 < hfp         onCurrentCalls index=1 direction=1 "
              "state=0 multiparty=1 number=\"+49 \\\"30\\\"\"\n"
              "2026-11-22 14:03:08.500000      3 < hfp         onCurrentOperator name=\"\xC3\x9Cnet\"\n"
              "2026-11-22 14:03:09.000000      4 > hfp         dial number=\"+4930\"\n"
              "2026-11-22 14:03:09.500000      5 < gatt_client onScanResult "
              "address=00:1A:7D:DA:71:13 rssi=200 data_type=0 data=<02 01 06 03 00>\n"
              "2026-11-22 14:03:10.000000      6 < bluetooth   onAdapterProperties status=0 count=1 "
              "value={properties=[{type=7 length=4 value={mode=1}}]}\n"
              "2026-11-22 14:03:10.001000      7 > ?           \"ZZtop\" (unknown tag)\n"
              "2026-11-22 14:03:10.002000      8 < bluetooth   onStateChanged (state: ends after 0 of "
              "2 characters)\n"
              "2026-11-22 14:04:07.000000      9 < bluetooth   onStateChanged state=1 (surplus "
              "\"more\")\n"
              "2026-11-22 14:04:08.000000     10 > ?           \"hello\" (does not begin with AT#)\n"
              "2026-11-22 14:04:09.000000     11 < bluetooth   onBtVersion version=\"1.\" (has no "
              "end)\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.code, 0);
}

TEST(JsonLines, EachCommandAndEventIsAnObject) {
    const Result result = Traces().Run(Conversation(), {"--json"});
    EXPECT_EQ(result.out,
              R"({"time":"2026-11-22T14:03:07.000000Z","record":1,"offset":16,"direction":"command",)"
              R"("profile":"hfp","name":"connect","tag":"HA","fields":{"address":"00:1A:7D:DA:71:13"}})"
              "\n"
              R"({"time":"2026-11-22T14:03:07.250000Z","record":2,"offset":63,"direction":"event",)"
              R"("profile":"hfp","name":"onConnectionState","tag":"HA","fields":{"state":3,)"
              R"("peer_features":253,"call_hold_features":47,"address":"00:1A:7D:DA:71:13"}})"
              "\n"
              R"({"time":"2026-11-22T14:03:08.500000Z","record":3,"offset":123,"direction":"event",)"
              R"("profile":"hfp","name":"onCurrentCalls","tag":"HO","fields":{"index":1,"direction":1,)"
              R"("state":0,"multiparty":1,"number":"+49 \"30\""}})"
              "\n"
              R"({"time":"2026-11-22T14:03:08.500000Z","record":3,"offset":123,"direction":"event",)"
              R"("profile":"hfp","name":"onCurrentOperator","tag":"HH","fields":{"name":"Ünet"}})"
              "\n"
              R"({"time":"2026-11-22T14:03:09.000000Z","record":4,"offset":177,"direction":"command",)"
              R"("profile":"hfp","name":"dial","tag":"HH","fields":{"number":"+4930"}})"
              "\n"
              R"({"time":"2026-11-22T14:03:09.500000Z","record":5,"offset":217,"direction":"event",)"
              R"("profile":"gatt_client","name":"onScanResult","tag":"KB","fields":{)"
              R"("address":"00:1A:7D:DA:71:13","rssi":200,"data_type":0,"data":"0201060300"}})"
              "\n"
              R"({"time":"2026-11-22T14:03:10.000000Z","record":6,"offset":273,"direction":"event",)"
              R"("profile":"bluetooth","name":"onAdapterProperties","tag":"BB","fields":{"status":0,)"
              R"("count":1,"value":{"properties":[{"type":7,"length":4,"value":{"mode":1}}]}}})"
              "\n"
              R"({"time":"2026-11-22T14:03:10.001000Z","record":7,"offset":322,"direction":"command",)"
              R"("text":"ZZtop","problem":"unknown tag"})"
              "\n"
              R"({"time":"2026-11-22T14:03:10.002000Z","record":8,"offset":360,"direction":"event",)"
              R"("profile":"bluetooth","name":"onStateChanged","tag":"PA","fields":{},)"
              R"("problem":"state: ends after 0 of 2 characters"})"
              "\n"
              R"({"time":"2026-11-22T14:04:07.000000Z","record":9,"offset":390,"direction":"event",)"
              R"("profile":"bluetooth","name":"onStateChanged","tag":"PA","fields":{"state":1},)"
              R"("surplus":"more"})"
              "\n"
              R"({"time":"2026-11-22T14:04:08.000000Z","record":10,"offset":426,"direction":"command",)"
              R"("text":"hello","problem":"does not begin with AT#"})"
              "\n"
              R"({"time":"2026-11-22T14:04:09.000000Z","record":11,"offset":461,"direction":"event",)"
              R"("profile":"bluetooth","name":"onBtVersion","tag":"PV","fields":{"version":"1."},)"
              R"("problem":"has no end"})"
              "\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.code, 0);
}

TEST(JsonLines, WhateverBytesComeEachLineIsJson) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    const Result result = Traces().Run(Events("HM" + bytes.substr(0, 250) + "\0"s) +
                                           Events(bytes.substr(250) + "\0"s) + Command("AT#\xFF\r\n"),
                                       {"--json"});
    std::istringstream lines(result.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_TRUE(nlohmann::json::accept(line)) << line;
    }
    EXPECT_EQ(count, 3);
}

TEST(Lines, TextIsJoinedAndARepeatedBeginningIsTakenOnce) {
    const std::string digits(250, '7');
    const Result result = Traces().Run(Command("AT#HH" + digits) + Command("89\r\n", 1) +
                                           Events("PA01\0HHno"s, 2) + Command("AT#PB\r\n", 3) +
                                           Events("HHnone\0"s, 4) + Record(2, "\x01\x03\x0C\x00"s, 5),
                                       {});
    EXPECT_EQ(result.out,
              "2026-11-22 14:03:07.001000      2 > hfp         dial number=\"" + digits +
                  "89\"\n"
                  "2026-11-22 14:03:07.002000      3 < bluetooth   onStateChanged state=1\n"
                  "2026-11-22 14:03:07.003000      4 > bluetooth   enable\n"
                  "2026-11-22 14:03:07.004000      5 < hfp         onCurrentOperator name=\"none\"\n");
    EXPECT_EQ(result.code, 0);
}

TEST(Damage, EverythingBeforeTheCutIsShown) {
    const Traces traces;
    const std::string whole = kHeader + Command("AT#PV\r\n") + Events("PV1\0"s);
    traces.Write(whole.substr(0, whole.size() - 1));
    const Result result = traces.Run({"--utc", traces.Path("client_sock.log")});
    EXPECT_EQ(result.out, "2026-11-22 14:03:07.000000      1 > bluetooth   get_version\n");
    EXPECT_EQ(result.err, "client_sock.log: at byte 51: record 2 is cut off: 6 bytes of a packet of 7; "
                          "expected a whole capture\n");
    EXPECT_EQ(result.code, 1);
}

TEST(Damage, WhatFollowsADamagedPlaceIsShown) {
    std::string damaged = Command("AT#PB\r\n");
    damaged[0] = '\x7F';
    const Result result = Traces().Run(
        Command("AT#PV\r\n") + damaged + Events("PV1\0"s) + "noise" + Events("PA01\0"s), {});
    EXPECT_EQ(result.out, "2026-11-22 14:03:07.000000      1 > bluetooth   get_version\n"
                          "2026-11-22 14:03:07.000000      3 < bluetooth   onBtVersion version=\"1\"\n"
                          "2026-11-22 14:03:07.000000      5 < bluetooth   onStateChanged state=1\n");
    EXPECT_EQ(result.err, "client_sock.log: at byte 51: record 2 has a wrong length (11 of 2130706443 "
                          "bytes); the capture is damaged (and 1 more damaged places behind it)\n");
    EXPECT_EQ(result.code, 1);
}

TEST(Damage, ARecordThatIsNotAsLongAsItSaysIsPassedOver) {
    std::string counted = Command("AT#PB\r\n");
    counted[24 + 3] = 8;
    const Result result = Traces().Run(counted + Events("PA01\0"s), {});
    EXPECT_EQ(result.out, "2026-11-22 14:03:07.000000      2 < bluetooth   onStateChanged state=1\n");
    EXPECT_EQ(
        result.err,
        "client_sock.log: at byte 40: record 1 is not as long as it says; the capture is damaged\n");
    EXPECT_EQ(result.code, 1);
}

TEST(Damage, AFileThatIsNoCaptureIsRefusedInOneLine) {
    const Traces traces;
    const std::string path = traces.Path("client_sock.log");
    traces.Write("");
    EXPECT_EQ(traces.Run({path}).err,
              "client_sock.log: is empty; expected a capture (client_sock.log)\n");
    traces.Write("root:x:0:0:root:/root:/bin/bash\n");
    EXPECT_EQ(traces.Run({path}).err, "client_sock.log: at byte 0: this is no capture; expected the "
                                      "library's client_sock.log\n");
    traces.Write("btsnoop\0\0\0\0\1\0\0\x03\xE9"s + Command("AT#PV\r\n"));
    const Result other = traces.Run({path});
    EXPECT_EQ(other.err,
              "client_sock.log: at byte 8: this is another kind of capture; expected version "
              "1 and link type 1002\n");
    EXPECT_EQ(other.code, 1);
    const Result missing = traces.Run({traces.Path("nothing")});
    EXPECT_EQ(missing.err, "nothing: cannot be read: No such file or directory; expected a capture\n");
    EXPECT_EQ(missing.code, 1);
}

TEST(Damage, ACaptureWithNothingInItIsSound) {
    const Result result = Traces().Run("", {});
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(result.code, 0);
}

std::string Few() {
    return Command("AT#HA001A7DDA7113\r\n") + Events("PA01\0HHno"s, 2) + Events("HHnone\0"s, 4);
}

// Where a record ends the file is sound; everywhere else something is said, and nothing is made up.
TEST(Damage, ACaptureMayEndAtAnyByte) {
    const Traces traces;
    const std::string whole = kHeader + Few();
    const std::string all = traces.Run(Few(), {"--json"}).out;
    size_t sound = 0;
    for (size_t size = 0; size < whole.size(); ++size) {
        const std::string path = traces.Write(whole.substr(0, size));
        const Result result = traces.Run({"--json", path});
        EXPECT_EQ(result.code == 0, result.err.empty()) << size;
        sound += result.code == 0 ? 1 : 0;
        // But for a text without its end, what is shown is what the whole capture shows.
        const size_t cut = result.out.find("has no end");
        const std::string shown =
            result.out.substr(0, cut == std::string::npos ? cut : result.out.rfind('\n', cut) + 1);
        EXPECT_EQ(shown, all.substr(0, shown.size())) << size;
    }
    // Behind the header and behind each record but the last.
    EXPECT_EQ(sound, 3U);
}

// Each byte damaged in turn: whatever it does, the reader comes to its end and each line is whole.
TEST(Damage, ATimeFarBeforeTheFirstYearIsBroughtNearer) {
    std::string damaged = Events("PA01\0"s);
    damaged.replace(16, 8, "\x81\0\0\0\0\0\0\0"s);
    const std::string out = Traces().Run(damaged + Events("PA00\0"s), {}).out;
    // How far back a machine can date depends on its clock's width.
    const size_t end = out.find('\n');
    EXPECT_EQ(out.substr(out.find("  1 <"), end - out.find("  1 <")),
              "  1 < bluetooth   onStateChanged state=1");
    EXPECT_EQ(out.substr(end + 1),
              "2026-11-22 14:03:07.000000      2 < bluetooth   onStateChanged state=0\n");
}

TEST(Damage, AnyByteMayBeDamaged) {
    const Traces traces;
    const std::string whole = kHeader + Few();
    for (size_t at = 0; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        const Result result = traces.Run({"--json", traces.Write(damaged)});
        std::istringstream lines(result.out);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_TRUE(nlohmann::json::accept(line)) << at << ": " << line;
        }
    }
}

} // namespace
