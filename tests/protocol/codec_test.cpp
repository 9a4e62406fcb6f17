// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands and events as they stand on the wire, and what is read out of them.

#include "protocol/codec.h"

#include "support/text.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using protocol::Decoded;
using protocol::Direction;
using support::Bytes;

std::string Command(const std::string& text) {
    const Decoded decoded = protocol::decode(Direction::Command, text);
    EXPECT_EQ(decoded.problem, "");
    EXPECT_EQ(decoded.surplus, "");
    return protocol::to_text(decoded.values);
}

std::string Event(const std::string& text) {
    const Decoded decoded = protocol::decode(Direction::Event, text);
    EXPECT_EQ(decoded.problem, "");
    return protocol::to_text(decoded.values);
}

std::string Problem(Direction direction, const std::string& text) {
    return protocol::decode(direction, text).problem;
}

// What was read is written as it was.
void ExpectSameAgain(Direction direction, const std::string& text) {
    const Decoded decoded = protocol::decode(direction, text);
    ASSERT_EQ(decoded.problem, "") << text;
    EXPECT_EQ(protocol::encode(*decoded.found.message, decoded.values), text);
}

TEST(ProtocolCodec, NumbersTextsAndAddressesAreRead) {
    EXPECT_EQ(Command("HA554433221100"), "address=55:44:33:22:11:00");
    EXPECT_EQ(Command("HG01000F"), "type=1 volume=15");
    EXPECT_EQ(Command("HH+4930123"), "number=\"+4930123\"");
    EXPECT_EQ(Command("HK"), "");
    EXPECT_EQ(Event("HO010004005551234"),
              "index=1 direction=0 state=4 multiparty=0 number=\"5551234\"");
    EXPECT_EQ(Event("AC5544332211000000AC4402"),
              "address=55:44:33:22:11:00 sample_rate=44100 channels=2");
    EXPECT_EQ(Event("KT0000000100000000FFFFFFF7").substr(0, 9), "conn_id=1");
}

TEST(ProtocolCodec, AUuidIsTheSameInBothDirections) {
    EXPECT_EQ(Command("SLFB349B5F80000080001000000111000000SPP"),
              "uuid=1101 port=0 service_name=\"SPP\"");
    EXPECT_EQ(Event("SM665544332211"
                    "0000110100001000800000805F9B34FB"
                    "05"),
              "address=66:55:44:33:22:11 uuid=1101 channel=5");
    EXPECT_EQ(Command("KA41403130212011100078564534120000"),
              "uuid=00001234-4556-7800-1011-202130314041");
    EXPECT_EQ(Command("BTE1234567800001000800000805F9B34FB"), "uuid=12345678");
}

TEST(ProtocolCodec, BlocksAreUnescaped) {
    EXPECT_EQ(Command("DC01000000020005" + Bytes({0xA1, 0xDC, 0xDD, 0xDC, 0xDE})),
              "type=1 id=2 report=<A1 00 0D>");
    EXPECT_EQ(Command("DC01000000020000"), "type=1 id=2 report=<>");
    EXPECT_EQ(Event("JL"
                    "A1B2C3D4E5F6"
                    "0001000200030004"
                    "0100"
                    "0004" +
                    Bytes({0xDC, 0xDC, 0xDC, 0xDD})),
              "address=A1:B2:C3:D4:E5:F6 conn_id=1 trans_id=2 attribute=3 offset=4 need_response=1 "
              "is_prepared=0 value=<DC 00>");
}

TEST(ProtocolCodec, PropertiesAreReadByTheirTypes) {
    EXPECT_EQ(Command("BB070007" + Bytes({2, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDD})),
              "type=7 value={value={mode=2}}");
    EXPECT_EQ(Command("BB010003Car"), "type=1 value={value={name=\"Car\"}}");
    EXPECT_EQ(Event("BB00020013"
                    "0103Car"
                    "2404" +
                    Bytes({4, 3, 2, 1}) + "3D02ab"),
              "status=0 count=2 value={properties=[{type=1 length=3 value={name=\"Car\"}}, "
              "{type=36 length=4 value={interval=16909060}}]}");
    EXPECT_EQ(Event("BC00A1B2C3D4E5F6010005"
                    "2001" +
                    Bytes({7})),
              "status=0 address=A1:B2:C3:D4:E5:F6 count=1 value={properties=[{type=32 length=1 "
              "value={priority=7}}]}");
}

TEST(ProtocolCodec, ASavedDeviceIsReadToItsName) {
    std::string device = Bytes({3, 1, 0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1, 0x04, 0x04, 0x24, 0, 1});
    device += Bytes({0x0A, 0x11}) + std::string(30, '\0') + "Car";
    const std::string escaped = protocol::escape("0F30" + device);
    char head[16];
    snprintf(head, sizeof head, "BB0001%04X", static_cast<unsigned>(escaped.size()));
    const std::string text = Event(head + escaped);
    EXPECT_NE(text.find("{device={total=3 index=1 address=A1:B2:C3:D4:E5:F6 class=2360324 "
                        "service_count=1 services=[4362, 0, 0"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("name=\"Car\""), std::string::npos) << text;
}

TEST(ProtocolCodec, ARecordMayEndBeforeItsFields) {
    EXPECT_EQ(Event("BB000100060F01\xDC\xDD"),
              "status=0 count=1 value={properties=[{type=15 length=1 value={device={total=0}}}]}");
    ExpectSameAgain(Direction::Event, "BB000100060F01\xDC\xDD");
    EXPECT_EQ(Event("BB000100040400"),
              "status=0 count=1 value={properties=[{type=4 length=0 value={}}]}");
}

TEST(ProtocolCodec, ListsOfSettingsAreRead) {
    EXPECT_EQ(Command("RF665544332211020004" + Bytes({2, 3, 1, 2})),
              "address=66:55:44:33:22:11 count=2 settings={ids=[2, 3] values=[1, 2]}");
    EXPECT_EQ(Event("RF6655443322110005" + Bytes({1, 3, 1, 2, 4})),
              "address=66:55:44:33:22:11 setting={id=1 count=3 values=[1, 2, 4]}");
    EXPECT_EQ(Event("RG6655443322110005" + Bytes({2, 1, 3, 2, 1})),
              "address=66:55:44:33:22:11 settings={count=2 ids=[1, 3] values=[2, 1]}");
}

TEST(ProtocolCodec, ATrackIsReadWithItsTexts) {
    const std::string block =
        protocol::escape("217Title" + std::string(1, '\0') + "1" + std::string(1, '\0'));
    EXPECT_EQ(Event("RJ665544332211000D" + block),
              "address=66:55:44:33:22:11 track={count=2 ids=[1, 7] values=[\"Title\", \"1\"]}");
}

TEST(ProtocolCodec, ItemsAreReadByTheirKind) {
    std::string player =
        Bytes({1, 5, 0, 1}) + Bytes({1, 0, 0, 0, 2}) + std::string(16, '\1') + Bytes({0x6A, 0});
    player += "Player" + std::string(249, '\0');
    const std::string escaped = protocol::escape(player);
    char length[8];
    snprintf(length, sizeof length, "%04X", static_cast<unsigned>(escaped.size()));
    EXPECT_EQ(Event("RM665544332211000001" + std::string(length) + escaped),
              "address=66:55:44:33:22:11 status=0 count=1 item={item_type=1 item={id=5 major_type=1 "
              "sub_type=1 play_status=2 features=<01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01> "
              "charset=106 name=\"Player\"}}");
}

TEST(ProtocolCodec, APhoneBookEntryIsReadByItsKind) {
    EXPECT_EQ(Event("TD60007205"
                    "11"
                    "Alice13800138000"),
              "target=6 index=7 tel_type=2 name_length=5 number_length=11 name=\"Alice\" "
              "number=\"13800138000\"");
    EXPECT_EQ(
        Event("TD700080303Bob123 20261121T120000"),
        "target=7 index=8 name_length=3 number_length=3 name=\"Bob\" number=\"123\" separator=\" \" "
        "time=\"20261121T120000\"");
    // The number's length is decimal.
    EXPECT_EQ(Event("TD300090010"
                    "0123456789"),
              "target=3 index=9 name_length=0 number_length=10 name=\"\" number=\"0123456789\"");
}

TEST(ProtocolCodec, AnEventMayLackTheFieldsThatTheLibraryDoesWithout) {
    EXPECT_EQ(Event("RD66554433221101"), "address=66:55:44:33:22:11 features=1");
    EXPECT_EQ(Event("RR665544"), "");
    EXPECT_EQ(Problem(Direction::Event, "RD665544332211"), "features: ends after 0 of 2 characters");
}

TEST(ProtocolCodec, SurplusIsLeftOver) {
    const Decoded decoded = protocol::decode(Direction::Event, "BE01\r\n");
    EXPECT_EQ(decoded.problem, "");
    EXPECT_EQ(decoded.surplus, "\r\n");
}

TEST(ProtocolCodec, WhatIsWrongIsSaidInOneLineAndTheRestIsKept) {
    EXPECT_EQ(Problem(Direction::Event, "ZZ00"), "unknown tag");
    EXPECT_EQ(Problem(Direction::Event, "BE0"), "state: ends after 1 of 2 characters");
    EXPECT_EQ(Problem(Direction::Event, "BEG1"), "state: \"G1\" is no number");
    EXPECT_EQ(Problem(Direction::Event, "BE\n\""), R"(state: "\x0A\"" is no number)") << "one line";
    EXPECT_EQ(Problem(Direction::Event, "KC665544332211FFFFab"),
              "name: ends after 2 of 65535 characters");
    EXPECT_EQ(Problem(Direction::Event, "KC6655443322110002a\xDC"),
              "name: is not escaped as a block must be");
    EXPECT_EQ(Problem(Direction::Event, "RM6655443322110000010001" + Bytes({9})),
              "item: item: of an unknown kind");
    const Decoded decoded = protocol::decode(Direction::Command, "HG01xx");
    EXPECT_EQ(decoded.problem, "volume: ends after 2 of 4 characters");
    EXPECT_EQ(protocol::to_text(decoded.values), "type=1");
}

TEST(ProtocolCodec, WhatWasReadIsWrittenAsItWas) {
    for (const std::string& command :
         {std::string("HK"), std::string("HHtext"),
          std::string("SLFB349B5F80000080001000000111000000SPP"),
          "BB070007" + Bytes({2, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDD}), std::string("BTL000100010F"),
          "RF665544332211020004" + Bytes({2, 3, 1, 2}),
          std::string("KXQ01020304050600000000"
                      "0000"),
          std::string("HJ0502"), "RZC6655443322110001a" + std::string("0004path")}) {
        ExpectSameAgain(Direction::Command, command);
    }
    for (const std::string& event : {std::string("HU"), std::string("TD6000720511Alice13800138000"),
                                     std::string("TD700080303Bob123 20261121T120000"),
                                     std::string("TD300090010"
                                                 "0123456789"),
                                     "RG6655443322110005" + Bytes({2, 1, 3, 2, 1}),
                                     std::string("BDA1B2C3D4E5F60100240404C80000Car"),
                                     "BC00A1B2C3D4E5F6010005"
                                     "2001" +
                                         Bytes({7}),
                                     "RQ0001000000010100000104" + Bytes({1, 2, 3, 4}) + "006A0000"}) {
        ExpectSameAgain(Direction::Event, event);
    }
}

} // namespace
