// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "files.h"

#include "profiles.h"

#include <gtest/gtest.h>

namespace {

using vymctl::Contact;
using vymctl::Event;

Event entry(int index, const char* name, const char* number, const char* time = "") {
    return {&vymctl::event_type("pbap.entry"), {6, index, name, 0, number, time}, {}};
}

TEST(PhoneBookFile, HasOneCardForAllNumbersOfAnIndex) {
    std::vector<Contact> contacts;
    for (const Event& one : {entry(1, "Anna; Berg", "+4930"), entry(1, "Anna; Berg", "112"),
                             entry(2, "", ""), entry(3, "B\\C,\nD", "1", "20230101T120000")}) {
        vymctl::add_entry(contacts, one);
    }
    EXPECT_EQ(vymctl::to_vcards(contacts),
              "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Anna\\; Berg;;;;\r\nFN:Anna\\; Berg\r\n"
              "TEL:+4930\r\nTEL:112\r\nEND:VCARD\r\n"
              "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;;;;\r\nFN:\r\nEND:VCARD\r\n"
              "BEGIN:VCARD\r\nVERSION:3.0\r\nN:B\\\\C\\,\\nD;;;;\r\nFN:B\\\\C\\,\\nD\r\nTEL:1\r\n"
              "X-IRMC-CALL-DATETIME:20230101T120000\r\nEND:VCARD\r\n");
    EXPECT_EQ(vymctl::Json::parse(vymctl::to_json_text(contacts))[2].dump(),
              R"({"index":3,"name":"B\\C,\nD","numbers":["1"],"time":"20230101T120000"})");
}

TEST(PhoneBookFile, CallsOfOneIndexAtDifferentTimesStayApart) {
    std::vector<Contact> contacts;
    vymctl::add_entry(contacts, entry(1, "Anna", "1", "20230101T120000"));
    vymctl::add_entry(contacts, entry(1, "Anna", "1", "20230101T130000"));
    EXPECT_EQ(contacts.size(), 2U);
}

TEST(WavFile, IsAHeaderAndTheSamples) {
    const std::string samples("\x01\x00\x02\x00\x03\x00\x04\x00", 8);
    EXPECT_EQ(
        vymctl::to_wav({44100, 2}, samples),
        std::string("RIFF\x2C\0\0\0WAVEfmt \x10\0\0\0\x01\0\x02\0\x44\xAC\0\0\x10\xB1\x02\0\x04\0\x10\0"
                    "data\x08\0\0\0",
                    44) +
            samples);
    EXPECT_EQ(vymctl::to_wav({8000, 1}, "").size(), 44U);
}

TEST(File, ThatCannotBeWrittenIsReported) {
    EXPECT_FALSE(vymctl::write_file("/nonexistent/book.vcf", ""));
}

} // namespace
