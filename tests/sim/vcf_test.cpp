// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "text_file.h"
#include "vcard.h"

#include <gtest/gtest.h>

namespace {

using sim::Contact;
using sim::NumberKind;

std::vector<Contact> contacts_of(const std::string& text) {
    return sim::contacts_from_vcards("book.vcf", text);
}

/// The only contact of a card in version 2.1 or 3.0 with these lines.
Contact contact_of(const std::string& version, const std::string& lines) {
    const auto all =
        contacts_of("BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + lines + "END:VCARD\r\n");
    EXPECT_EQ(all.size(), 1U);
    return all.empty() ? Contact{} : all.front();
}

template <typename Read>
std::string problem_of(Read read, const std::string& text) {
    try {
        read("book.vcf", text);
    } catch (const sim::FileError& error) {
        return error.what();
    }
    return "nothing";
}

// Names.

TEST(SimVcf, ANameHasItsParts) {
    const Contact c = contact_of("2.1", "N:Miller;Bob;Lee;Dr.;jr.\r\nFN:Dr. Bob Lee Miller jr.\r\n");
    EXPECT_EQ(c.last, "Miller");
    EXPECT_EQ(c.first, "Bob");
    EXPECT_EQ(c.middle, "Lee");
    EXPECT_TRUE(c.numbers.empty());
    EXPECT_EQ(c.photo, "");
}

TEST(SimVcf, WithoutANameTheFormattedOneServes) {
    EXPECT_EQ(contact_of("3.0", "FN:Pizza; quick\\, hot\r\nN:;;;;\r\n").last, "Pizza; quick, hot");
    EXPECT_EQ(contact_of("3.0", "FN:Pizza\r\n").last, "Pizza");
    EXPECT_EQ(contact_of("2.1", "N:\r\nTEL:1\r\n").last, "");
}

TEST(SimVcf, EscapesAreResolvedAsTheVersionHasThem) {
    const Contact three = contact_of("3.0", "N:Rock\\; Roll\\, Inc.;A\\\\B\\nC;\\x\r\n");
    EXPECT_EQ(three.last, "Rock; Roll, Inc.");
    EXPECT_EQ(three.first, "A\\B C");
    EXPECT_EQ(three.middle, "\\x");
    const Contact two = contact_of("2.1", "N:Rock\\; Roll\\, Inc.;\"Quote\" \\ AT#;100% %s%n\r\n");
    EXPECT_EQ(two.last, "Rock; Roll\\, Inc.");
    EXPECT_EQ(two.first, "\"Quote\" \\ AT#");
    EXPECT_EQ(two.middle, "100% %s%n");
}

TEST(SimVcf, OtherScriptsComeAsTheyAreOrQuotedPrintable) {
    const Contact plain = contact_of("3.0", "N:Толстой;小明;🦊\r\n");
    EXPECT_EQ(plain.last, "Толстой");
    EXPECT_EQ(plain.first, "小明");
    EXPECT_EQ(plain.middle, "🦊");
    const Contact encoded =
        contact_of("2.1", "N;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;J=c3=bcrgen=3B\r\n");
    EXPECT_EQ(encoded.last, "Müller");
    EXPECT_EQ(encoded.first, "Jürgen");
    // The encoded semicolon ends the part like a plain one; the next part is empty.
    EXPECT_EQ(encoded.middle, "");
}

TEST(SimVcf, QuotedPrintableGoesOnBehindASoftLineBreak) {
    const Contact c = contact_of("2.1", "N;QUOTED-PRINTABLE:=E7=8E=\r\n=8B;=\r\nMing\r\nTEL:1\r\n");
    EXPECT_EQ(c.last, "王");
    EXPECT_EQ(c.first, "Ming");
    EXPECT_EQ(c.numbers.size(), 1U);
}

TEST(SimVcf, LinesAreUnfoldedAsTheVersionFoldsThem) {
    EXPECT_EQ(contact_of("3.0", "N:Long\r\n er;Na\r\n\tme\r\n").last, "Longer");
    EXPECT_EQ(contact_of("3.0", "N:Long\r\n  er\r\n").last, "Long er");
    EXPECT_EQ(contact_of("2.1", "N:Long\r\n er\r\n").last, "Long er");
}

TEST(SimVcf, ANameOfTwoHundredCharactersIsKept) {
    std::string name;
    for (int i = 0; i < 200; ++i) {
        name += "長";
    }
    EXPECT_EQ(contact_of("3.0", "N:" + name + ";名\r\n").last, name);
}

TEST(SimVcf, VersionsMayChangeFromCardToCard) {
    const auto all = contacts_of("BEGIN:VCARD\nVERSION:3.0\nN:a\\,b\nEND:VCARD\n\n"
                                 "begin:vcard\nversion:2.1\nn:a\\,b\nend:vcard");
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].last, "a,b");
    EXPECT_EQ(all[1].last, "a\\,b");
}

TEST(SimVcf, AnEmptyFileIsAnEmptyBook) {
    EXPECT_TRUE(contacts_of("").empty());
    EXPECT_TRUE(contacts_of("\xEF\xBB\xBF\r\n  \r\n").empty());
}

// Numbers.

TEST(SimVcf, NumbersHaveTheirKinds) {
    const Contact c = contact_of("3.0", "N:X\r\n"
                                        "TEL;TYPE=HOME,VOICE:+49 (30) 111-222\r\n"
                                        "item1.TEL;type=pref;type=CELL:0171.111\r\n"
                                        "TEL;TYPE=\"work\":333/444\r\n"
                                        "TEL:0800,,,1#\r\n"
                                        "TEL:*#06#\r\n"
                                        "TEL;TYPE=home:1\\,2\r\n");
    ASSERT_EQ(c.numbers.size(), 6U);
    EXPECT_EQ(c.numbers[0].kind, NumberKind::Home);
    EXPECT_EQ(c.numbers[0].digits, "+4930111222");
    EXPECT_EQ(c.numbers[1].kind, NumberKind::Mobile);
    EXPECT_EQ(c.numbers[1].digits, "0171111");
    EXPECT_EQ(c.numbers[2].kind, NumberKind::Work);
    EXPECT_EQ(c.numbers[2].digits, "333444");
    EXPECT_EQ(c.numbers[3].kind, NumberKind::Other);
    EXPECT_EQ(c.numbers[3].digits, "0800,,,1#");
    EXPECT_EQ(c.numbers[4].digits, "*#06#");
    EXPECT_EQ(c.numbers[5].digits, "1,2");
    EXPECT_EQ(contact_of("2.1", "N:X\r\nTEL;CELL;PREF:1\r\n").numbers.at(0).kind, NumberKind::Mobile);
    EXPECT_TRUE(contact_of("2.1", "N:X\r\nTEL:\r\n").numbers.empty());
}

// Photos.

TEST(SimVcf, APhotoIsDecoded) {
    EXPECT_EQ(contact_of("3.0", "N:X\r\nPHOTO;ENCODING=b;TYPE=JPEG:/9j/\r\n 4A==\r\n").photo,
              "\xFF\xD8\xFF\xE0");
    EXPECT_EQ(contact_of("2.1", "N:X\r\nPHOTO;JPEG;ENCODING=BASE64:\r\n /9j/4A\r\n Dc\r\n\r\n").photo,
              std::string("\xFF\xD8\xFF\xE0\x00\xDC", 6));
    EXPECT_EQ(contact_of("3.0", "N:X\r\nPHOTO;VALUE=uri:http://example.com/a:b.jpg\r\n").photo, "");
}

TEST(SimVcf, ALongPhotoIsKeptAndATooLongOneRefused) {
    // Four digits are three bytes.
    std::string digits;
    for (size_t i = 0; i < 262144 / 3; ++i) {
        digits += "AAAA";
    }
    EXPECT_EQ(contact_of("3.0", "PHOTO;ENCODING=b:" + digits + "\r\n").photo,
              std::string(262143, '\0'));
    EXPECT_EQ(problem_of(sim::contacts_from_vcards,
                         "BEGIN:VCARD\nVERSION:3.0\nPHOTO;ENCODING=b:" + digits + "AAAA\nEND:VCARD\n"),
              "book.vcf:3: PHOTO: 262146 bytes are too many; expected at most 262144");
}

// Past calls.

TEST(SimVcf, PastCallsHaveTheirKindAndTime) {
    const auto calls = sim::calls_from_vcards(
        "log.vcf", "BEGIN:VCARD\nVERSION:2.1\nN:Bergmann;Anna\nTEL;CELL:+491701234567\n"
                   "X-IRMC-CALL-DATETIME;MISSED:20260130T201500\nEND:VCARD\n"
                   "BEGIN:VCARD\nVERSION:3.0\nN:;;;;\nTEL:\n"
                   "X-IRMC-CALL-DATETIME;TYPE=RECEIVED:20260129T093000Z\nEND:VCARD\n"
                   "BEGIN:VCARD\nVERSION:3.0\nTEL:1\nTEL:2\n"
                   "X-IRMC-CALL-DATETIME;TYPE=DIALED:20260128T000000\nEND:VCARD\n");
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].kind, sim::PastCallKind::Missed);
    EXPECT_EQ(calls[0].last, "Bergmann");
    EXPECT_EQ(calls[0].first, "Anna");
    EXPECT_EQ(calls[0].number, "+491701234567");
    EXPECT_EQ(calls[0].time, "20260130T201500");
    EXPECT_EQ(calls[1].kind, sim::PastCallKind::Incoming);
    EXPECT_EQ(calls[1].last, "");
    EXPECT_EQ(calls[1].number, "");
    EXPECT_EQ(calls[1].time, "20260129T093000Z");
    EXPECT_EQ(calls[2].kind, sim::PastCallKind::Outgoing);
    EXPECT_EQ(calls[2].number, "1");
}

// What is refused.

TEST(SimVcf, MalformedCardsAreRefusedInTheirLine) {
    const std::string head = "BEGIN:VCARD\nVERSION:2.1\n";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"N:X\n", R"(1: "N" stands outside of a card; expected BEGIN:VCARD)"},
        {"\n\nBEGIN:VCARD\nN:X\n", "3: this card has no end; expected END:VCARD"},
        {"BEGIN:VCARD\nN:X\nEND:VCARD\n",
         "1: this card has no version; expected VERSION:2.1 or VERSION:3.0"},
        {"BEGIN:VCARD\nVERSION:4.0\nEND:VCARD\n",
         R"(2: VERSION: "4.0" is not known; expected 2.1 or 3.0)"},
        {head + "BEGIN:VCARD\n",
         "3: a card begins inside of the one of line 1; expected END:VCARD first"},
        {head + "hello\n", R"(3: "hello" is no property; expected NAME:VALUE)"},
        {head + "N;\"a:b\n", R"(3: "N;"a:b" is no property; expected NAME:VALUE)"},
        {head + "TEL:12x4\n",
         R"(3: TEL: "12x4" is no telephone number; expected digits, *, #, + and pauses)"},
        {head + "N;ENCODING=QUOTED-PRINTABLE:a=\n b=G0\n",
         R"(3: N: no quoted-printable text; expected two hexadecimal digits behind each "=")"},
        {head + "N;ENCODING=QUOTED-PRINTABLE:=4",
         R"(3: N: no quoted-printable text; expected two hexadecimal digits behind each "=")"},
        {head + "N:a\xC0\xAF\n", R"(3: N: "a\xC0\xAF" is no UTF-8 text; expected UTF-8)"},
        {head + "N:\xED\xA0\x80\n", R"(3: N: "\xED\xA0\x80" is no UTF-8 text; expected UTF-8)"},
        {head + "N:\xE9\x95\n", R"(3: N: "\xE9\x95" is no UTF-8 text; expected UTF-8)"},
        {head + "\nPHOTO;BASE64:AAA\n", "4: PHOTO: no base 64; expected groups of four digits of it"},
        {head + "PHOTO;BASE64:A===\n", "3: PHOTO: no base 64; expected groups of four digits of it"},
        {head + "PHOTO;BASE64:AA=A\n", "3: PHOTO: no base 64; expected groups of four digits of it"},
        {head + "X-IRMC-CALL-DATETIME:20260131T235959\n",
         "3: X-IRMC-CALL-DATETIME: there is no kind of call; expected MISSED, RECEIVED or DIALED as a "
         "parameter"},
        {head + "X-IRMC-CALL-DATETIME;MISSED:yesterday\n",
         R"(3: X-IRMC-CALL-DATETIME: "yesterday" is no time; expected one as in 20260131T235959)"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(problem_of(sim::contacts_from_vcards, text), "book.vcf:" + problem) << text;
    }
    EXPECT_EQ(problem_of(sim::calls_from_vcards, head + "TEL:1\nEND:VCARD\n"),
              "book.vcf:1: this card has no time of a call; expected X-IRMC-CALL-DATETIME");
}

TEST(SimVcf, MoreCardsThanCanBeNumberedAreRefused) {
    std::string text;
    for (int i = 0; i < 65536; ++i) {
        text += "BEGIN:VCARD\nVERSION:2.1\nEND:VCARD\n";
    }
    EXPECT_EQ(problem_of(sim::contacts_from_vcards, text),
              "book.vcf:196606: too many cards; expected at most 65535");
}

} // namespace
