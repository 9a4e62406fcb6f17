// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "wire.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace std::string_literals;

TEST(SimWire, BytesThatWouldEndALineAreEscaped) {
    EXPECT_EQ(sim::escape("\x00\x0D\x0A\xDC\x41"s), "\xDC\xDD\xDC\xDE\xDC\xDF\xDC\xDC\x41");
    EXPECT_EQ(sim::escape(""), "");
}

TEST(SimWire, UnescapingGivesTheBytesBack) {
    EXPECT_EQ(sim::unescape("\xDC\xDD\xDC\xDE\xDC\xDF\xDC\xDC\x41"), "\x00\x0D\x0A\xDC\x41"s);
}

TEST(SimWire, APairThatIsNoEscapeIsRefused) {
    EXPECT_THROW(sim::unescape("\xDC\x41"), sim::BadCommand);
    EXPECT_THROW(sim::unescape("\x41\xDC"), sim::BadCommand);
}

TEST(SimWire, AnAddressIsWrittenMostSignificantByteFirst) {
    const sim::Address address = sim::to_address("00:11:22:33:44:55");
    EXPECT_EQ(address.octets[5], 0x00);
    EXPECT_EQ(address.octets[0], 0x55);
    EXPECT_EQ(sim::to_string(address), "001122334455");
    EXPECT_EQ(sim::raw(address), "\x55\x44\x33\x22\x11\x00"s);
}

TEST(SimWire, TextThatIsNoAddressIsRefused) {
    EXPECT_THROW(sim::to_address("00:11:22:33:44"), std::invalid_argument);
    EXPECT_THROW(sim::to_address("00:11:22:33:44:5G"), std::invalid_argument);
}

TEST(SimWire, FieldsAreReadFromLeftToRight) {
    sim::Fields fields("0AbCdE12345678001122334455");
    EXPECT_EQ(fields.byte("a"), 0x0A);
    EXPECT_EQ(fields.word("b"), 0xBCDE);
    EXPECT_EQ(fields.dword("c"), 0x12345678U);
    EXPECT_EQ(fields.address(), sim::to_address("001122334455"));
    EXPECT_NO_THROW(fields.end());
}

TEST(SimWire, SixteenBytesAreReadInTheOrderAskedFor) {
    const char* digits = "000102030405060708090A0B0C0D0E0F";
    EXPECT_EQ(sim::Fields(digits).octets("x")[15], 0x0F);
    EXPECT_EQ(sim::Fields(digits).octets_reversed("x")[15], 0x00);
    EXPECT_EQ(sim::Fields(digits).octets_reversed("x")[0], 0x0F);
}

TEST(SimWire, ABlockIsUnescapedToItsCount) {
    sim::Fields fields("0004\xDC\xDD\x41\x42rest");
    EXPECT_EQ(fields.block("value"), "\x00\x41\x42"s);
    EXPECT_THROW(fields.end(), sim::BadCommand);
}

TEST(SimWire, ShortSignedAndForeignDigitsAreRefused) {
    EXPECT_THROW(sim::Fields("").byte("x"), sim::BadCommand);
    EXPECT_THROW(sim::Fields("1").byte("x"), sim::BadCommand);
    EXPECT_THROW(sim::Fields("1G").byte("x"), sim::BadCommand);
    EXPECT_THROW(sim::Fields("-1").byte("x"), sim::BadCommand);
    EXPECT_THROW(sim::Fields("0x12").word("x"), sim::BadCommand);
    EXPECT_THROW(sim::Fields("00112233445").address(), sim::BadCommand);
    EXPECT_THROW(sim::Fields("0005abcd").block("x"), sim::BadCommand);
}

TEST(SimWire, TheRefusalNamesTheField) {
    try {
        sim::Fields("ZZ").byte("scan mode");
        FAIL() << "not refused";
    } catch (const sim::BadCommand& error) {
        EXPECT_STREQ(error.what(), "scan mode: \"ZZ\" is not hexadecimal");
    }
}

TEST(SimWire, AnEventIsItsTagAndItsFields) {
    const sim::Event event = sim::Event("BX")
                                 .byte(0x0A)
                                 .word(0xBCD)
                                 .dword(0x12345678)
                                 .address(sim::to_address("A1B2C3D4E5F6"))
                                 .block("\x00z"s)
                                 .text("name");
    EXPECT_EQ(event.bytes(), "BX0A0BCD12345678A1B2C3D4E5F60003\xDC\xDDzname");
}

TEST(SimWire, TextOfAnEventEndsAtItsFirstNul) {
    EXPECT_EQ(sim::Event("BX").text("ab\0cd"s).bytes(), "BXab");
}

TEST(SimWire, ARecordIsCutAtWhatItsLengthCanSay) {
    EXPECT_EQ(sim::property_record(0x24, "ab"), "2402ab");
    EXPECT_EQ(sim::property_record(1, std::string(300, 'x')), "01FF" + std::string(255, 'x'));
}

TEST(SimWire, SixteenBitUuidsStandOnTheBaseUuid) {
    EXPECT_EQ(sim::raw(sim::uuid_from_16bit(0x110A)),
              "\x00\x00\x11\x0A\x00\x00\x10\x00\x80\x00\x00\x80\x5F\x9B\x34\xFB"s);
}

TEST(SimWire, NumbersOfRecordsAreLittleEndian) {
    EXPECT_EQ(sim::le32(0x12345678), "\x78\x56\x34\x12");
    EXPECT_EQ(sim::le16(0x1234), "\x34\x12");
    EXPECT_EQ(sim::from_le32("\x78\x56\x34\x12"), 0x12345678U);
}

TEST(SimWire, UnprintableBytesAreShownAndLongTextIsCut) {
    EXPECT_EQ(sim::printable("a\r\xFF"), "a\\x0D\\xFF");
    EXPECT_EQ(sim::printable("abcdef", 3), "abc... (6 bytes)");
}

} // namespace
