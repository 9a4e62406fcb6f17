// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What stands for a private value.

#include "vymtrace/pseudonyms.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using trace::Pseudonyms;

TEST(Pseudonyms, AnAddressKeepsItsKindAndIsAlwaysTheSame) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.address("\x13\x71\xDA\x7D\x1A\x00"s), "\x21\x20\x20\x20\x20\x20");
    EXPECT_EQ(pseudonyms.address("\x01\x02\x03\x04\x05\xC6"s), "\x22\x20\x20\x20\x20\xE0");
    EXPECT_EQ(pseudonyms.address("\x01\x02\x03\x04\x05\x46"s), "\x23\x20\x20\x20\x20\x60");
    EXPECT_EQ(pseudonyms.address("\x13\x71\xDA\x7D\x1A\x00"s), "\x21\x20\x20\x20\x20\x20");
    EXPECT_EQ(pseudonyms.address("\0\0\0\0\0\0"s), "\0\0\0\0\0\0"s);
    EXPECT_EQ(pseudonyms.address("\xFF\xFF\xFF\xFF\xFF\xFF"), "\xFF\xFF\xFF\xFF\xFF\xFF");
}

TEST(Pseudonyms, ANameIsAsLongAsItWas) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.name("Anna's phone"), "Name1xxxxxxx");
    EXPECT_EQ(pseudonyms.name("Bob"), "xxa");
    EXPECT_EQ(pseudonyms.name("M\xC3\xBCller;J\xC3\xBCrgen;;"), "Name2xx;Name3xx;;");
    EXPECT_EQ(pseudonyms.name("Anna's phone"), "Name1xxxxxxx");
    EXPECT_EQ(pseudonyms.name(""), "");
    EXPECT_EQ(pseudonyms.name("A"), "a");
}

TEST(Pseudonyms, ATitleThatIsANumberStays) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.title("Radio Silence"), "Title1xxxxxxx");
    EXPECT_EQ(pseudonyms.title("215000"), "215000");
}

TEST(Pseudonyms, ANumberKeepsItsSigns) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.number("+49 (30) 123456"), "+00 (00) 000001");
    EXPECT_EQ(pseudonyms.number("*#06#"), "*#02#");
    EXPECT_EQ(pseudonyms.number("+49 (30) 123456"), "+00 (00) 000001");
    EXPECT_EQ(pseudonyms.number("call Bob on 17"), "xxxx xxx xx 03");
    EXPECT_EQ(pseudonyms.number("\"Bob\""), "\"xxx\"");
}

TEST(Pseudonyms, ASecretKeepsItsLengthAlone) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.secret("4711"), "0001");
    EXPECT_EQ(pseudonyms.secret("\x01\x02\x03\x04"), "xxxb");
    EXPECT_EQ(pseudonyms.secret("4711"), "0001");
    EXPECT_EQ(pseudonyms.secret("\0\0\0"s), "\0\0\0"s);
    EXPECT_EQ(pseudonyms.passkey(123456), 3U);
    EXPECT_EQ(pseudonyms.passkey(123456), 3U);
    EXPECT_EQ(pseudonyms.passkey(0), 0U);
}

TEST(Pseudonyms, ALineOfAVcardKeepsItsKind) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.contact_line("BEGIN:VCARD"), "BEGIN:VCARD");
    EXPECT_EQ(pseudonyms.contact_line("VERSION:2.1"), "VERSION:2.1");
    EXPECT_EQ(pseudonyms.contact_line("N;CHARSET=UTF-8:Bergmann;Anna"),
              "N;CHARSET=UTF-0:Name1xxx;xxxb");
    EXPECT_EQ(pseudonyms.contact_line("TEL;CELL:+491701"), "TEL;CELL:+000001");
    EXPECT_EQ(pseudonyms.contact_line("NOTE:met at CERN, 2012"), "NOTE:xxx xx xxxx, 0000");
    EXPECT_EQ(pseudonyms.contact_line("X-SECRET:Bob"), "X-xxxxxx:xxx");
    EXPECT_EQ(pseudonyms.contact_line("abc+/dEf1"), "xxx+/xxx0");
}

TEST(Pseudonyms, RawContactsAreMaskedWhereverTheyAreCut) {
    EXPECT_EQ(Pseudonyms::masked("ann;Anna\r\nTEL;CELL:+4917\r\nEND:VC"),
              "xxx;xxxx\r\nTEL;CELL:+0000\r\nEND:xx");
    EXPECT_EQ(Pseudonyms::masked(""), "");
}

TEST(Pseudonyms, AdvertisingDataLosesItsNamesOnly) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.advertised("\x02\x01\x06\x03\x03\x0D\x18\x06\x09H.ann\x06\xFF\x4C\0AB\1"s),
              "\x02\x01\x06\x03\x03\x0D\x18\x06\x09Name1\x06\xFF\x4C\0AB\1"s);
    EXPECT_EQ(pseudonyms.advertised("\x08\xFF\x4C\x02 Bob.\0\0"s), "\x08\xFF\x4C\x02Name2\0\0"s);
    EXPECT_EQ(pseudonyms.advertised("\x30Peter"s), "Name3x"s);
    EXPECT_EQ(pseudonyms.advertised(""), "");
    // The Base UUID is full of letters.
    const std::string uuid = "\x11\x07\xFB\x34\x9B\x5F\x80\0\0\x80\0\x10\0\0\x0D\x18\0\0"s;
    EXPECT_EQ(pseudonyms.advertised(uuid), uuid);
}

TEST(Pseudonyms, TextAmongOtherDataIsFound) {
    Pseudonyms pseudonyms;
    EXPECT_EQ(pseudonyms.data("\1\0Heart strap\0\xC8"s), "\1\0Name1xxxxxx\0\xC8"s);
    EXPECT_EQ(pseudonyms.data("\1\0\2"s), "\1\0\2"s);
    EXPECT_EQ(pseudonyms.data("abc\1"), "abc\1");
    EXPECT_EQ(pseudonyms.data("Heart strap"), "Name1xxxxxx");
}

} // namespace
