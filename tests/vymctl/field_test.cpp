// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "field.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using vymctl::Field;
using vymctl::Kind;
using vymctl::read_field;
using vymctl::read_value;

const vymctl::FieldType kByte{Kind::Number, 0, 255};

std::string complaint(const Field& field, const std::string& word) {
    try {
        read_value(field, word);
    } catch (const vymctl::Usage& error) {
        return error.what();
    }
    return "no complaint";
}

TEST(Field, IsReadFromTheTextOfItsRow) {
    const Field plain = read_field("level", kByte);
    EXPECT_EQ(plain.name, "level");
    EXPECT_EQ(plain.domain(), "a number from 0 to 255");
    const Field range = read_field("level=3..15?7", kByte);
    EXPECT_EQ(range.domain(), "a number from 3 to 15");
    EXPECT_EQ(range.fallback, "7");
    const Field words = read_field("state=gone:2|here|lost:9", kByte);
    EXPECT_EQ(words.domain(), "gone|here|lost");
    EXPECT_EQ(words.words, (decltype(words.words){{"gone", 2}, {"here", 3}, {"lost", 9}}));
    EXPECT_EQ(read_field("empty?", kByte).fallback, "");
    EXPECT_THROW(read_field("level=nonsense", kByte), std::logic_error);
    EXPECT_THROW(read_field("level=1..x", kByte), std::logic_error);
}

TEST(Field, NumbersAreDecimalOrHexadecimalAndInRange) {
    const Field field = read_field("level=-5..260", kByte);
    EXPECT_EQ(read_value(field, "-5").number, -5);
    EXPECT_EQ(read_value(field, "260").number, 260);
    EXPECT_EQ(read_value(field, "0xfF").number, 255);
    for (const char* word : {"", "-", "--1", "1x", "0x", "261", "-6", "99999999999999999999", "1.5"}) {
        EXPECT_EQ(complaint(field, word),
                  "level is a number from -5 to 260, not \"" + std::string(word) + '"');
    }
}

TEST(Field, WordsStandForNumbersAndNumbersStayAllowed) {
    const Field field = read_field("state=off|on", kByte);
    EXPECT_EQ(read_value(field, "on").number, 1);
    EXPECT_EQ(read_value(field, "7").number, 7);
    EXPECT_EQ(complaint(field, "maybe"), "state is off|on, not \"maybe\"");
    EXPECT_EQ(field.name_of(0), "off");
    EXPECT_EQ(field.name_of(7), 7);
}

TEST(Field, ASignedByteIsShownWithItsSign) {
    const Field field = read_field("rssi=signed", kByte);
    EXPECT_EQ(field.name_of(204), -52);
    EXPECT_EQ(field.name_of(127), 127);
    EXPECT_EQ(field.name_of(128), -128);
}

TEST(Field, AddressesAreReadWithAndWithoutSeparators) {
    const Field field = read_field("address", {Kind::Address, 0, 0});
    for (const char* word : {"2A:41:6E:6E:61:01", "2a-41-6e-6e-61-01", "2A416E6E6101"}) {
        EXPECT_EQ(vymctl::to_text(read_value(field, word).address), "2A:41:6E:6E:61:01") << word;
    }
    EXPECT_EQ(read_value(field, "2A:41:6E:6E:61:01").address.address[5], 0x2A);
    for (const char* word : {"", "2A:41:6E:6E:61", "2A:41:6E:6E:61:0", "2A:41:6E:6E:61:0G",
                             "2A.41.6E.6E.61.01", "2A:41:6E:6E:61:01:02"}) {
        EXPECT_EQ(complaint(field, word),
                  "address is an address such as 2A:41:6E:6E:61:01, not \"" + std::string(word) + '"');
    }
}

TEST(Field, UuidsAreShortOnTheBaseUuid) {
    const Field field = read_field("uuid", {Kind::Uuid, 0, 0});
    EXPECT_EQ(vymctl::to_text(read_value(field, "180d").uuid), "180D");
    EXPECT_EQ(vymctl::to_text(read_value(field, "0x180D").uuid), "180D");
    EXPECT_EQ(vymctl::to_text(read_value(field, "0000180D-0000-1000-8000-00805F9B34FB").uuid), "180D");
    EXPECT_EQ(vymctl::to_text(read_value(field, "0001180D-0000-1000-8000-00805f9b34fb").uuid),
              "0001180D-0000-1000-8000-00805F9B34FB");
    EXPECT_EQ(read_value(field, "180D").uuid.uu[2], 0x18);
    EXPECT_EQ(complaint(field, "18"), "uuid is a UUID of 4 or 32 digits, not \"18\"");
    EXPECT_EQ(complaint(field, "0000180D-0000-1000-8000+00805F9B34FB"),
              "uuid is a UUID of 4 or 32 digits, not \"0000180D-0000-1000-8000+00805F9B34FB\"");
}

TEST(Field, BytesAreDigitsOrAFile) {
    const Field field = read_field("data", {Kind::Bytes, 0, 3});
    EXPECT_EQ(read_value(field, "00fF").bytes, std::string("\0\xFF", 2));
    EXPECT_EQ(read_value(field, "").bytes, "");
    EXPECT_EQ(complaint(field, "0"), "data is hexadecimal digits or @FILE, not \"0\"");
    EXPECT_EQ(complaint(field, "0g"), "data is hexadecimal digits or @FILE, not \"0g\"");
    EXPECT_EQ(complaint(field, "00112233"), "data has at most 3 bytes, not 4");
    EXPECT_EQ(complaint(read_field("c192", {Kind::Bytes, 16, 16}), "00"), "c192 has 16 bytes, not 1");
    EXPECT_EQ(complaint(field, "@/nonexistent/file"),
              "data: the file \"/nonexistent/file\" cannot be read");
    const std::string path = ::testing::TempDir() + "vymctl_bytes_" + std::to_string(getpid());
    std::ofstream(path) << "abc";
    EXPECT_EQ(read_value(field, '@' + path).bytes, "abc");
    std::remove(path.c_str());
}

TEST(Field, ATextHasNoNul) {
    const Field field = read_field("number=text", {Kind::Bytes, 0, 5});
    EXPECT_EQ(read_value(field, "+4930").bytes, "+4930");
    EXPECT_EQ(complaint(field, "+49301"), "number has at most 5 bytes, not 6");
    EXPECT_EQ(complaint(field, std::string("a\0b", 3)), "number must not have a NUL in it");
}

TEST(Field, AWordIsQuotedWhenItNeedsToBe) {
    EXPECT_EQ(vymctl::to_word("+49*#"), "+49*#");
    EXPECT_EQ(vymctl::to_word("two words"), "\"two words\"");
    EXPECT_EQ(vymctl::to_word(""), "\"\"");
    EXPECT_EQ(vymctl::to_word("line\nend"), "\"line\\nend\"");
    EXPECT_EQ(vymctl::to_word("\xFF"), "\"\xEF\xBF\xBD\"");
    EXPECT_EQ(vymctl::to_word(-7), "-7");
    EXPECT_EQ(vymctl::to_word(vymctl::Json::array({"1101", "110A"})), "1101,110A");
    EXPECT_EQ(vymctl::to_word(vymctl::Json::array()), "-");
}

} // namespace
