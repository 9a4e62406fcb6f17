// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_command.h"

#include "vym_os.h"

#include "support/text.h"

#include <cstring>

namespace {

using namespace std::string_literals;
using support::Bytes;
using vym::tag;

// What building answers: the command's text, or the status in front of nothing.
struct Built {
    std::string text;
    bt_status_t status;
};

template <uint32_t Tag, class... Fields>
Built Build(const Fields&... fields) {
    auto status = static_cast<bt_status_t>(-1);
    const vym::malloc_ptr<char> command(vym::build_command<Tag>(&status, fields...));
    EXPECT_EQ(command != nullptr, status == BT_STATUS_SUCCESS);
    return {command != nullptr ? std::string(command.get()) : "", status};
}

// The text of a command that can be built.
template <uint32_t Tag, class... Fields>
std::string Text(const Fields&... fields) {
    const Built built = Build<Tag>(fields...);
    EXPECT_EQ(built.status, BT_STATUS_SUCCESS);
    return built.text;
}

const uint8_t* Data(const std::string& bytes) {
    return reinterpret_cast<const uint8_t*>(bytes.data());
}

vym::block_field Block(const std::string& bytes) {
    return vym::block(Data(bytes), static_cast<uint32_t>(bytes.size()));
}

TEST(Command, WithoutFieldsIsPrefixTagAndLineEnd) {
    EXPECT_EQ(Text<tag("PB")>(), "AT#PB\r\n");
    EXPECT_EQ(Text<tag("BTOS")>(), "AT#BTOS\r\n");
}

TEST(Command, NumbersHaveTheirFixedWidthInUpperCase) {
    EXPECT_EQ(Text<tag("X")>(vym::hex2(0)), "AT#X00\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex2(0xAB)), "AT#XAB\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex4(0x1)), "AT#X0001\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex4(0xFACE)), "AT#XFACE\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex8(0x12ABCDEFU)), "AT#X12ABCDEF\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex8(-1)), "AT#XFFFFFFFF\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex8(-2147483647 - 1)), "AT#X80000000\r\n");
}

TEST(Command, FieldsFollowEachOtherWithNothingBetween) {
    EXPECT_EQ(Text<tag("X")>(vym::hex2(1), vym::hex4(2), vym::hex8(3), vym::text("four")),
              "AT#X01000200000003four\r\n");
}

TEST(Command, AddressesGoLastByteFirst) {
    const bt_bdaddr_t address = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0x0A}};
    EXPECT_EQ(Text<tag("X")>(address), "AT#X0AB2C3D4E5F6\r\n");
}

TEST(Command, OutOfBandDataGoesFirstByteFirst) {
    const bt_oob_data_t oob = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xF0}};
    EXPECT_EQ(Text<tag("X")>(oob), "AT#X000102030405060708090A0B0C0D0EF0\r\n");
}

TEST(Command, UuidsGoEitherWay) {
    const bt_uuid_t uuid = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xF0}};
    EXPECT_EQ(Text<tag("X")>(vym::uuid_forward(uuid)), "AT#X000102030405060708090A0B0C0D0EF0\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::uuid_reverse(uuid)), "AT#XF00E0D0C0B0A09080706050403020100\r\n");
}

TEST(Command, ABlockIsEscapedBehindTheCountOfItsEscapedBytes) {
    const std::string bytes = Bytes({0x00, 0x0D, 0x0A, 0xDC, 0x41});
    EXPECT_EQ(Text<tag("X")>(Block(bytes)),
              "AT#X0009" + Bytes({0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC, 0x41}) + "\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::block(Data(bytes), 1), vym::hex2(7)),
              "AT#X0002" + Bytes({0xDC, 0xDD}) + "07\r\n");
}

TEST(Command, AnEmptyBlockIsItsCountAlone) {
    EXPECT_EQ(Text<tag("X")>(vym::block(Data("x"), 0)), "AT#X0000\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::block(nullptr, 0)), "AT#X0000\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::block(nullptr, 65536)), "AT#X0000\r\n");
}

TEST(Command, ABlockOf65535EscapedBytesIsTheLargest) {
    std::string bytes(65535, 'b');
    EXPECT_EQ(Text<tag("X")>(Block(bytes)), "AT#XFFFF" + bytes + "\r\n");
    bytes[0] = '\n';
    EXPECT_EQ(Build<tag("X")>(Block(bytes)).status, BT_STATUS_NOMEM);
    EXPECT_EQ(Text<tag("X")>(vym::block(Data(bytes), 65534)),
              "AT#XFFFF\xDC\xDF" + bytes.substr(1, 65533) + "\r\n");
    bytes.assign(65536, 'b');
    EXPECT_EQ(Build<tag("X")>(Block(bytes)).status, BT_STATUS_NOMEM);
    bytes.assign(65535, '\0');
    EXPECT_EQ(Build<tag("X")>(Block(bytes)).status, BT_STATUS_NOMEM);
}

TEST(Command, ATextStandsAsItIs) {
    EXPECT_EQ(Text<tag("HH")>(vym::text("+49 (0)30;1*#")), "AT#HH+49 (0)30;1*#\r\n");
    EXPECT_EQ(Text<tag("HH")>(vym::text("")), "AT#HH\r\n");
    EXPECT_EQ(Text<tag("HH")>(vym::text("\xC3\x84\xDC")), "AT#HH\xC3\x84\xDC\r\n");
}

TEST(Command, ATextThatWouldMakeASecondCommandIsRefused) {
    for (const char* text : {"1\r\nAT#PC", "\r", "\n", "1\r", "1\n2"}) {
        EXPECT_EQ(Build<tag("HH")>(vym::text(text)).status, BT_STATUS_FAIL) << support::Escaped(text);
    }
    EXPECT_EQ(Build<tag("HH")>(vym::text(nullptr)).status, BT_STATUS_FAIL);
    EXPECT_EQ(Build<tag("HH")>(vym::hex2(1), vym::text("\n"), vym::hex2(2)).status, BT_STATUS_FAIL);
}

TEST(Command, TheFirstFieldThatFailsGivesTheStatus) {
    const std::string bytes(65536, 'b');
    EXPECT_EQ(Build<tag("X")>(vym::text("\n"), Block(bytes)).status, BT_STATUS_FAIL);
    EXPECT_EQ(Build<tag("X")>(Block(bytes), vym::text("\n")).status, BT_STATUS_NOMEM);
}

TEST(Command, OnlyItsEndHoldsALineEndOrANul) {
    std::string every;
    for (int i = 0; i < 256; ++i) {
        every += static_cast<char>(i);
    }
    const std::string command = Text<tag("X")>(Block(every));
    EXPECT_EQ(command.size(), strlen("AT#X0104") + 260 + 2);
    EXPECT_EQ(command.find_first_of("\r\n\0"s), command.size() - 2);
}

TEST(Command, SendingAnswersWhatBuildingAnswered) {
    const auto good = vym::hex2(1);
    const auto bad = vym::text("\n");
    EXPECT_EQ(vym_command_send("X", nullptr), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym::send_command<tag("X")>(), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym::send_command<tag("X")>(good), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym::send_command<tag("X")>(bad), BT_STATUS_FAIL);
    EXPECT_EQ(vym::send_command<tag("X")>(good, bad), BT_STATUS_FAIL);
}

// What the compiler makes of a command's fields.
TEST(Command, ItsFormatIsTheTagAndALetterForEachField) {
    const auto format =
        vym::format_of<tag("BTOS"), decltype(vym::hex2(0)), decltype(vym::hex4(0)),
                       decltype(vym::hex8(0)), decltype(vym::hex2_or_more(0)),
                       decltype(vym::as_field(bt_bdaddr_t{})), decltype(vym::as_field(bt_oob_data_t{})),
                       decltype(vym::uuid_forward({})), decltype(vym::uuid_reverse({})),
                       decltype(vym::block(nullptr, 0)), decltype(vym::text(""))>();
    EXPECT_STREQ(format.data(), "BTOS248maffrbt");
    EXPECT_STREQ(vym::format_of<tag("PB")>().data(), "PB");
}

TEST(Command, ANumberMayHaveMoreThanTwoDigitsWhenItNeedsThem) {
    EXPECT_EQ(Text<tag("X")>(vym::hex2_or_more(0)), "AT#X00\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex2_or_more(0xFF)), "AT#XFF\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex2_or_more(0x100)), "AT#X100\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex2_or_more(0x12345)), "AT#X12345\r\n");
    EXPECT_EQ(Text<tag("X")>(vym::hex2_or_more(-1)), "AT#XFFFFFFFF\r\n");
}

TEST(Command, ABlockOfANegativeLengthIsRefused) {
    const int length = -1;
    EXPECT_EQ(Build<tag("X")>(vym::block(Data("x"), static_cast<uint32_t>(length))).status,
              BT_STATUS_NOMEM);
}

} // namespace
