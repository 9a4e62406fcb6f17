// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_field_reader.h"

#include "support/text.h"

#include <functional>
#include <memory>

namespace {

using support::Bytes;
using vym::counted_block;
using vym::field_reader;
using vym::unescaped_block;

// The text and its NUL in a block of exactly their size, so that a read behind them is noticed.
class Text {
public:
    explicit Text(const std::string& text) : buffer_(new uint8_t[text.size() + 1]) {
        memcpy(buffer_.get(), text.c_str(), text.size() + 1);
    }
    [[nodiscard]] field_reader At(int pos) const { return {buffer_.get(), pos}; }
    [[nodiscard]] uint8_t* Data() const { return buffer_.get(); }

private:
    std::unique_ptr<uint8_t[]> buffer_;
};

struct Row {
    std::string text;
    int64_t value;
    int pos;
};

// Reads one number from the start of each text.
void ExpectNumbers(const std::vector<Row>& rows, const std::function<int64_t(field_reader& in)>& read) {
    for (const Row& row : rows) {
        SCOPED_TRACE(support::Escaped(row.text));
        const Text text(row.text);
        field_reader in = text.At(0);
        EXPECT_EQ(read(in), row.value);
        EXPECT_EQ(in.pos(), row.pos);
    }
}

TEST(FieldReader, ABytesTwoDigits) {
    ExpectNumbers({{"", 0, 0},
                   {"7", 7, 1},
                   {"7F", 0x7F, 2},
                   {"ff", 0xFF, 2},
                   {"FFF", 0xFF, 2},
                   {"1G", 1, 2},
                   {"G1", 0, 2},
                   {"-1", 0xFF, 2},
                   {" 5", 5, 2},
                   {"0x", 0, 2}},
                  [](field_reader& in) { return in.byte(); });
}

TEST(FieldReader, AShortsFourDigits) {
    ExpectNumbers({{"", 0, 0},
                   {"123", 0x123, 3},
                   {"1234", 0x1234, 4},
                   {"ffff", 0xFFFF, 4},
                   {"12345", 0x1234, 4},
                   {"-001", 0xFFFF, 4},
                   {"0x1F", 0x1F, 4},
                   {"zzzz", 0, 4}},
                  [](field_reader& in) { return in.uint16(); });
}

TEST(FieldReader, AnIntsEightDigitsStopAt7FFFFFFF) {
    ExpectNumbers({{"", 0, 0},
                   {"1234567", 0x1234567, 7},
                   {"12345678", 0x12345678, 8},
                   {"7FFFFFFF", 0x7FFFFFFF, 8},
                   {"80000000", 0x7FFFFFFF, 8},
                   {"FFFFFFFF", 0x7FFFFFFF, 8},
                   {"-0000002", 0xFFFFFFFE, 8},
                   {"123456789", 0x12345678, 8}},
                  [](field_reader& in) { return in.uint32(); });
}

TEST(FieldReader, AnAddresssTwelveDigitsEndWithItsFirstByte) {
    const Text text("A1B2C3D4E5F6");
    field_reader in = text.At(0);
    const bt_bdaddr_t address = in.address();
    EXPECT_EQ(address.address[0], 0xF6);
    EXPECT_EQ(address.address[5], 0xA1);
    EXPECT_EQ(in.pos(), 12);
}

TEST(FieldReader, AnAddressThatEndsEarlyIsZeroBehindItsEnd) {
    const Text text("A1B2C");
    field_reader in = text.At(0);
    const bt_bdaddr_t address = in.address();
    EXPECT_EQ(address.address[5], 0xA1);
    EXPECT_EQ(address.address[4], 0xB2);
    EXPECT_EQ(address.address[3], 0x0C);
    EXPECT_EQ(address.address[2], 0);
    EXPECT_EQ(address.address[0], 0);
    EXPECT_EQ(in.pos(), 5);
}

TEST(FieldReader, SixteenBytesKeepTheirOrder) {
    const Text text("000102030405060708090A0B0C0D0EF0");
    field_reader oob_in = text.At(0);
    const bt_oob_data_t oob = oob_in.oob_data();
    field_reader uuid_in = text.At(0);
    const bt_uuid_t uuid = uuid_in.uuid128();
    for (size_t i = 0; i < 15; ++i) {
        EXPECT_EQ(oob.data[i], i);
        EXPECT_EQ(uuid.uu[i], i);
    }
    EXPECT_EQ(oob.data[15], 0xF0);
    EXPECT_EQ(uuid.uu[15], 0xF0);
    EXPECT_EQ(oob_in.pos(), 32);
    EXPECT_EQ(uuid_in.pos(), 32);
}

TEST(FieldReader, SixteenBytesThatEndEarlyAreZeroBehindTheirEnd) {
    const Text text("FFFEF");
    field_reader in = text.At(0);
    const bt_oob_data_t oob = in.oob_data();
    EXPECT_EQ(oob.data[0], 0xFF);
    EXPECT_EQ(oob.data[1], 0xFE);
    EXPECT_EQ(oob.data[2], 0x0F);
    EXPECT_EQ(oob.data[3], 0);
    EXPECT_EQ(oob.data[15], 0);
}

TEST(FieldReader, FieldsAreReadOneAfterTheOther) {
    const Text text("XX0A0B0CA1B2C3D4E5F600000102name");
    field_reader in = text.At(2);
    EXPECT_TRUE(in.complete());
    EXPECT_EQ(in.byte(), 0x0A);
    EXPECT_EQ(in.uint16(), 0x0B0C);
    EXPECT_EQ(in.address().address[0], 0xF6);
    EXPECT_EQ(in.uint32(), 0x102U);
    EXPECT_STREQ(in.rest(), "name");
    EXPECT_EQ(in.pos(), 28) << "the rest is left to the framework";
}

TEST(FieldReader, BehindTheEndEverythingIsZero) {
    const Text text("X");
    field_reader in = text.At(1);
    EXPECT_EQ(in.byte(), 0);
    EXPECT_EQ(in.uint16(), 0);
    EXPECT_EQ(in.uint32(), 0U);
    EXPECT_EQ(in.address().address[5], 0);
    EXPECT_EQ(in.uuid128().uu[0], 0);
    EXPECT_STREQ(in.rest(), "");
    EXPECT_EQ(in.pos(), 1);
}

TEST(FieldReader, CharactersAreGivenOnlyWhole) {
    const Text text("abc");
    field_reader in = text.At(0);
    EXPECT_EQ(in.chars(4), nullptr);
    EXPECT_EQ(in.chars(65535), nullptr);
    EXPECT_EQ(in.pos(), 0) << "a refusal takes nothing";
    EXPECT_EQ(in.chars(2), text.Data());
    EXPECT_EQ(in.chars(2), nullptr);
    EXPECT_EQ(in.chars(1), text.Data() + 2);
    EXPECT_EQ(in.chars(0), text.Data() + 3);
    EXPECT_EQ(in.chars(1), nullptr);
    EXPECT_EQ(in.pos(), 3);
}

// The bytes of a block of so many characters at the start of the text, of which so many are decoded.
struct BlockRow {
    std::string wire;
    int wire_len;
    int decode_len;
    std::string bytes;
};

TEST(UnescapedBlock, GivesTheBytesThatWereEscaped) {
    const std::vector<BlockRow> rows = {
        {"abc", 3, 3, "abc"},
        {"abcdef", 3, 3, "abc"},
        {"abc", 0, 0, ""},
        {"abc", 3, 2, "ab"},
        {"abc", 3, 0, ""},
        {Bytes({0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC}), 8, 8, Bytes({0, 0x0D, 0x0A, 0xDC})},
        {Bytes({'a', 0xDC, 'x', 'b'}), 4, 4, Bytes({'a', 0, 'b'})},
        {Bytes({0xDC}), 1, 1, ""},
        {Bytes({'a', 0xDC, 0xDD}), 3, 2, "a"},
    };
    for (const BlockRow& row : rows) {
        SCOPED_TRACE(support::Escaped(row.wire));
        const Text text(row.wire);
        field_reader in = text.At(0);
        const unescaped_block block(in, row.wire_len, row.decode_len);
        EXPECT_TRUE(block.whole);
        EXPECT_EQ(in.pos(), row.wire_len);
        ASSERT_EQ(block.len, row.bytes.size());
        EXPECT_EQ(block.data == nullptr, row.bytes.empty());
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.data), block.len), row.bytes);
    }
}

TEST(UnescapedBlock, IsNotWholeWhenTheTextEndsBeforeIt) {
    const Text text("abc");
    for (const int count : {4, 255, 4096, 65535}) {
        field_reader in = text.At(0);
        const unescaped_block block(in, count);
        EXPECT_FALSE(block.whole) << count;
        EXPECT_EQ(block.data, nullptr);
        EXPECT_EQ(block.len, 0);
        EXPECT_EQ(in.pos(), 0);
    }
}

TEST(CountedBlock, HasNoDataOnlyWhenItsCountIsZero) {
    const struct {
        std::string text;
        bool has_data;
        std::string bytes;
    } cases[] = {
        {"0000abc", false, ""},
        {"0003abc", true, "abc"},
        {"0002" + Bytes({0xDC, 0xDD}), true, Bytes({0})},
        {"0001" + Bytes({0xDC}), true, ""},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(support::Escaped(one.text));
        const Text text(one.text);
        field_reader in = text.At(0);
        const counted_block block(in);
        EXPECT_TRUE(block.whole);
        EXPECT_EQ(block.data != nullptr, one.has_data);
        ASSERT_EQ(block.len, one.bytes.size());
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.data), block.len), one.bytes);
    }
    const Text cut("0004abc");
    field_reader in = cut.At(0);
    const counted_block block(in);
    EXPECT_FALSE(block.whole);
    EXPECT_EQ(block.data, nullptr);
}

TEST(UnescapedBlock, HoldsTheLongestThatAReadCanBring) {
    const std::string longest(4095, 'x');
    const Text text(longest);
    field_reader in = text.At(0);
    const unescaped_block block(in, 4095);
    EXPECT_TRUE(block.whole);
    ASSERT_EQ(block.len, 4095);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block.data), block.len), longest);
}

TEST(UnescapedBlock, IsAlignedForTheValuesItIsReadAs) {
    const Text text("abcd");
    field_reader in = text.At(0);
    const unescaped_block block(in, 4);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block.data) % alignof(uint16_t), 0U);
}

} // namespace
