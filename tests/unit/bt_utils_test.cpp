// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "bt_utils.h"

#include "support/fake_server.h"
#include "support/leak_check.h"
#include "support/limits.h"
#include "support/output_capture.h"
#include "support/text.h"
#include "support/wait.h"

#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using support::Bytes;
using support::OutputCapture;
using support::SocketPair;

// A field in a block of exactly its width, so that a look behind it is an error that a sanitizer sees.
class Field {
public:
    Field(const std::string& text, size_t width) : bytes_(new char[width]()) {
        EXPECT_LE(text.size(), width);
        text.copy(bytes_.get(), width);
    }
    [[nodiscard]] char* Text() const { return bytes_.get(); }

private:
    std::unique_ptr<char[]> bytes_;
};

struct NumberCase {
    const char* text;
    int64_t value;
};

void CheckNumbers(size_t width, const std::vector<NumberCase>& cases,
                  const std::function<int64_t(char*)>& read) {
    for (const NumberCase& one : cases) {
        const Field field(one.text, width);
        EXPECT_EQ(read(field.Text()), one.value) << "field \"" << support::Escaped(one.text) << "\"";
    }
}

const std::vector<NumberCase> kByteCases = {{"", 0},
                                            {"0", 0},
                                            {"7", 7},
                                            {"00", 0},
                                            {"01", 1},
                                            {"7F", 0x7F},
                                            {"80", 0x80},
                                            {"FF", 0xFF},
                                            {"ff", 0xFF},
                                            {"aB", 0xAB},
                                            {"1G", 1},
                                            {"G1", 0},
                                            {"ZZ", 0},
                                            {" 9", 9},
                                            {"\t9", 9},
                                            {"\r9", 9},
                                            {"  ", 0},
                                            {"-1", 0xFF},
                                            {"-F", 0xF1},
                                            {"+A", 10},
                                            {"+", 0},
                                            {"0x", 0},
                                            {"1 ", 1},
                                            {"\x80"
                                             "1",
                                             0}};

const std::vector<NumberCase> kShortCases = {
    {"", 0},          {"1", 1},         {"110A", 0x110A}, {"110a", 0x110A}, {"0000", 0},
    {"8000", 0x8000}, {"FFFF", 0xFFFF}, {"ffff", 0xFFFF}, {"12G4", 0x12},   {"G234", 0},
    {"0xFF", 0xFF},   {"0XFF", 0xFF},   {"0xG1", 0},      {" 0x1", 1},      {"-001", 0xFFFF},
    {"-FFF", 0xF001}, {"+0FF", 0xFF},   {"  12", 0x12},   {"    ", 0},      {"- 12", 0},
    {"--12", 0},      {"12 4", 0x12},   {"\n\v\f1", 1},   {"0x", 0}};

const std::vector<NumberCase> kIntCases = {{"", 0},
                                           {"1", 1},
                                           {"00000000", 0},
                                           {"00500104", 0x00500104},
                                           {"7FFFFFFE", 0x7FFFFFFE},
                                           {"7FFFFFFF", 0x7FFFFFFF},
                                           {"80000000", 0x7FFFFFFF},
                                           {"FFFFFFFF", 0x7FFFFFFF},
                                           {"ffffffff", 0x7FFFFFFF},
                                           {"-0000001", 0xFFFFFFFF},
                                           {"-FFFFFFF", 0xF0000001},
                                           {"+7FFFFFF", 0x7FFFFFF},
                                           {"0xABCDEF", 0xABCDEF},
                                           {"0x", 0},
                                           {" 1234567", 0x1234567},
                                           {"1234567G", 0x1234567},
                                           {"12 45678", 0x12},
                                           {"GARBAGE!", 0}};

const std::vector<NumberCase> kLongCases = {{"", 0},
                                            {"1", 1},
                                            {"0000000000000000", 0},
                                            {"000000007FFFFFFF", 0x7FFFFFFF},
                                            {"0000000080000000", 0x7FFFFFFF},
                                            {"00000000FFFFFFFF", 0x7FFFFFFF},
                                            {"0000000100000000", 0x7FFFFFFF},
                                            {"FFFFFFFFFFFFFFFF", 0x7FFFFFFF},
                                            {"-000000000000001", -1},
                                            {"-00000007FFFFFFF", -0x7FFFFFFFLL},
                                            {"-000000080000000", -0x80000000LL},
                                            {"-000000080000001", -0x80000000LL},
                                            {"-FFFFFFFFFFFFFFF", -0x80000000LL},
                                            {"0x0000000000001F", 0x1F},
                                            {"12345G7890123456", 0x12345},
                                            {"            1234", 0x1234}};

TEST(BtUtilsNumber, AByteIsTwoDigits) {
    CheckNumbers(2, kByteCases, parse_byte);
}

TEST(BtUtilsNumber, AShortIsFourDigits) {
    CheckNumbers(4, kShortCases, parse_short);
}

TEST(BtUtilsNumber, AUuid16IsFourDigits) {
    CheckNumbers(4, kShortCases, parse_uuid16);
}

TEST(BtUtilsNumber, AnIntIsEightDigitsAndSaturatesAt7FFFFFFF) {
    CheckNumbers(8, kIntCases, parse_int);
}

TEST(BtUtilsNumber, ALongIsSixteenDigitsAndSaturatesBothWaysAt32Bits) {
    CheckNumbers(16, kLongCases, parse_long);
}

TEST(BtUtilsNumber, AFieldEndsAtItsWidth) {
    char digits[] = "123456789ABCDEF01";
    EXPECT_EQ(parse_byte(digits), 0x12);
    EXPECT_EQ(parse_short(digits), 0x1234);
    EXPECT_EQ(parse_uuid16(digits), 0x1234);
    EXPECT_EQ(parse_int(digits), 0x12345678U);
    EXPECT_EQ(parse_char_with_base(digits, 16), 1);
    EXPECT_EQ(parse_byte_with_base(digits, 10), 12);
}

TEST(BtUtilsNumber, AByteCanBeReadInAnotherBase) {
    CheckNumbers(2, {{"99", 99}, {"09", 9}, {"1A", 1}, {"A1", 0}, {"", 0}, {"-1", 0xFF}},
                 [](char* p) { return parse_byte_with_base(p, 10); });
    CheckNumbers(2, {{"11", 3}, {"12", 1}, {"20", 0}},
                 [](char* p) { return parse_byte_with_base(p, 2); });
    CheckNumbers(2, {{"17", 15}, {"18", 1}}, [](char* p) { return parse_byte_with_base(p, 8); });
    CheckNumbers(2, kByteCases, [](char* p) { return parse_byte_with_base(p, 16); });
    CheckNumbers(2, {{"ZZ", 35 * 36 + 35 - 256 * 5}},
                 [](char* p) { return parse_byte_with_base(p, 36); });
}

TEST(BtUtilsNumber, ACharacterIsOneDigit) {
    CheckNumbers(1, {{"0", 0}, {"9", 9}, {"F", 15}, {"f", 15}, {"G", 0}, {"-", 0}, {" ", 0}, {"", 0}},
                 [](char* p) { return parse_char_with_base(p, 16); });
    CheckNumbers(1, {{"9", 9}, {"A", 0}}, [](char* p) { return parse_char_with_base(p, 10); });
    CheckNumbers(1, {{"1", 1}, {"2", 0}}, [](char* p) { return parse_char_with_base(p, 2); });
}

struct AddressCase {
    const char* text;
    std::vector<int> bytes; // address[0] first
};

TEST(BtUtilsAddress, TheFirstDigitsAreTheLastByte) {
    const std::vector<AddressCase> cases = {
        {"A1B2C3D4E5F6", {0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"001122334455", {0x55, 0x44, 0x33, 0x22, 0x11, 0x00}},
        {"a1b2c3d4e5f6", {0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}},
        {"FFFFFFFFFFFF", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"", {0, 0, 0, 0, 0, 0}},
        {"A1B2", {0, 0, 0, 0, 0xB2, 0xA1}},
        {"A1B2C", {0, 0, 0, 0x0C, 0xB2, 0xA1}},
        {"ZZB2C3D4E5F6", {0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0x00}},
        {"1GG1-1 10x+1", {0x01, 0x00, 0x01, 0xFF, 0x00, 0x01}},
    };
    for (const AddressCase& one : cases) {
        const Field field(one.text, 12);
        const bt_bdaddr_t address = parse_address(field.Text());
        const std::string bytes(reinterpret_cast<const char*>(address.address),
                                sizeof(address.address));
        EXPECT_TRUE(support::SameBytes(Bytes(one.bytes), bytes)) << one.text;
    }
}

const char* const kSixteenBytes = "000102030405060708090a0B0CfDFeFF";
const std::vector<int> kSixteenValues = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0xFD, 0xFE, 0xFF};

TEST(BtUtilsBlock, AUuid128IsSixteenBytesInArrayOrder) {
    const Field field(kSixteenBytes, 32);
    bt_uuid_t uuid{};
    parse_uuid128(field.Text(), &uuid);
    EXPECT_TRUE(support::SameBytes(Bytes(kSixteenValues), {reinterpret_cast<char*>(uuid.uu), 16}));
}

TEST(BtUtilsBlock, OutOfBandDataIsSixteenBytesInArrayOrder) {
    const Field field(kSixteenBytes, 32);
    bt_oob_data_t oob{};
    parse_oob_data(field.Text(), &oob);
    EXPECT_TRUE(support::SameBytes(Bytes(kSixteenValues), {reinterpret_cast<char*>(oob.data), 16}));
}

TEST(BtUtilsBlock, GarbageDigitsAreZeroAndTheRestIsRead) {
    const Field field("ZZ01", 32);
    bt_uuid_t uuid;
    std::fill(std::begin(uuid.uu), std::end(uuid.uu), uint8_t{0xAA});
    parse_uuid128(field.Text(), &uuid);
    EXPECT_EQ(uuid.uu[0], 0x00);
    EXPECT_EQ(uuid.uu[1], 0x01);
    EXPECT_EQ(uuid.uu[15], 0x00);
}

const unsigned char* Unsigned(const std::string& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

struct EscapeCase {
    std::vector<int> raw;
    std::vector<int> escaped;
};

TEST(BtUtilsEscape, FourBytesAreEscapedAndAllOthersStandForThemselves) {
    const std::vector<EscapeCase> cases = {
        {{}, {}},
        {{0x00}, {0xDC, 0xDD}},
        {{0x0D}, {0xDC, 0xDE}},
        {{0x0A}, {0xDC, 0xDF}},
        {{0xDC}, {0xDC, 0xDC}},
        {{0xDD, 0xDE, 0xDF, 0x01, 0xFF}, {0xDD, 0xDE, 0xDF, 0x01, 0xFF}},
        {{0x00, 0x0D, 0x0A, 0xDC, 0x41}, {0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC, 0x41}},
    };
    for (const EscapeCase& one : cases) {
        const std::string raw = Bytes(one.raw);
        std::vector<unsigned char> room(2 * raw.size() + 1, 0x55);
        unsigned short length = 99;
        EXPECT_EQ(raw_bytes_to_str_bytes(Unsigned(raw), static_cast<unsigned short>(raw.size()),
                                         room.data(), &length),
                  room.data());
        EXPECT_TRUE(
            support::SameBytes(Bytes(one.escaped), {reinterpret_cast<char*>(room.data()), length}));
        EXPECT_EQ(room[length], 0x55) << "something was written behind the text";
        EXPECT_EQ(vym_escaped_length(Unsigned(raw), static_cast<unsigned>(raw.size())),
                  one.escaped.size());
    }
}

// Long blocks are looked at a word at a time, with a rest of any length.
TEST(BtUtilsEscape, AByteIsEscapedWhereverItStands) {
    const std::map<int, std::string> pairs = {{0x00, Bytes({0xDC, 0xDD})},
                                              {0x0D, Bytes({0xDC, 0xDE})},
                                              {0x0A, Bytes({0xDC, 0xDF})},
                                              {0xDC, Bytes({0xDC, 0xDC})}};
    for (size_t size = 1; size <= 25; ++size) {
        for (size_t at = 0; at < size; ++at) {
            for (int value = 0; value < 256; ++value) {
                std::string raw(size, 'A');
                raw[at] = static_cast<char>(value);
                std::string expected = raw;
                if (pairs.count(value) != 0) {
                    expected.replace(at, 1, pairs.at(value));
                }
                std::string room(2 * size, '\x55');
                unsigned short length = 0;
                raw_bytes_to_str_bytes(Unsigned(raw), static_cast<unsigned short>(size),
                                       reinterpret_cast<unsigned char*>(room.data()), &length);
                ASSERT_TRUE(support::SameBytes(expected, room.substr(0, length)))
                    << value << " at " << at << " of " << size;
            }
        }
    }
}

TEST(BtUtilsEscape, NoInputGivesLengthZero) {
    unsigned char room[4] = {0x55};
    unsigned short length = 99;
    EXPECT_EQ(raw_bytes_to_str_bytes(nullptr, 3, room, &length), nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(raw_bytes_to_str_bytes(nullptr, 3, room, nullptr), nullptr);
    EXPECT_EQ(room[0], 0x55);
}

TEST(BtUtilsEscape, WithoutRoomOnlyTheLengthIsCounted) {
    const std::string raw = Bytes({0x00, 0x41});
    unsigned short length = 99;
    EXPECT_EQ(raw_bytes_to_str_bytes(Unsigned(raw), 2, nullptr, &length), nullptr);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(raw_bytes_to_str_bytes(Unsigned(raw), 2, nullptr, nullptr), nullptr);
}

TEST(BtUtilsEscape, ALengthAbove16BitsIsToldWhole) {
    const std::string raw(65535, '\0');
    EXPECT_EQ(vym_escaped_length(Unsigned(raw), 65535), 131070U);
}

struct UnescapeCase {
    std::vector<int> text;
    int length; // -1: nothing to decode
    std::vector<int> raw;
};

TEST(BtUtilsUnescape, PairsBecomeBytesAndOddOnesAreKeptAsSpecified) {
    const std::vector<UnescapeCase> cases = {
        {{0x41}, 1, {0x41}},
        {{0xDC, 0xDD}, 1, {0x00}},
        {{0xDC, 0xDE}, 1, {0x0D}},
        {{0xDC, 0xDF}, 1, {0x0A}},
        {{0xDC, 0xDC}, 1, {0xDC}},
        {{0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC, 0x41}, 5, {0x00, 0x0D, 0x0A, 0xDC, 0x41}},
        {{0xDD, 0xDE, 0xDF}, 3, {0xDD, 0xDE, 0xDF}},
        {{0xDC, 0xDC, 0xDD}, 2, {0xDC, 0xDD}},
        {{0xDC, 0x41}, 1, {0x00}}, // an unknown second byte leaves the room's zero
        {{0x42, 0xDC, 0x41, 0x43}, 3, {0x42, 0x00, 0x43}},
        {{0x41, 0xDC}, 1, {0x41}}, // the last DC is counted as a pair's first half
        {{0xDC, 0xDC, 0xDC}, 1, {0xDC}},
        {{0x00, 0x0D, 0x0A}, 3, {0x00, 0x0D, 0x0A}},
        {{}, -1, {}},
        {{0xDC}, -1, {}},
    };
    for (const UnescapeCase& one : cases) {
        const std::string text = Bytes(one.text);
        std::vector<unsigned char> room(text.size() + 1, 0);
        unsigned short length = 99;
        unsigned char* result = str_bytes_to_raw_bytes(
            Unsigned(text), static_cast<unsigned short>(text.size()), room.data(), &length);
        EXPECT_EQ(result, one.length < 0 ? nullptr : room.data()) << support::Escaped(text);
        EXPECT_TRUE(support::SameBytes(Bytes(one.raw), {reinterpret_cast<char*>(room.data()), length}))
            << support::Escaped(text);
    }
}

TEST(BtUtilsUnescape, NoInputGivesLengthZero) {
    unsigned char room[4] = {};
    unsigned short length = 99;
    EXPECT_EQ(str_bytes_to_raw_bytes(nullptr, 3, room, &length), nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(str_bytes_to_raw_bytes(nullptr, 3, room, nullptr), nullptr);
}

TEST(BtUtilsUnescape, UndoesTheEscapingOfEveryByte) {
    std::string raw;
    for (int value = 0; value < 256; ++value) {
        raw.push_back(static_cast<char>(value));
    }
    std::vector<unsigned char> text(512);
    std::vector<unsigned char> back(512);
    unsigned short text_length = 0;
    unsigned short length = 0;
    raw_bytes_to_str_bytes(Unsigned(raw), 256, text.data(), &text_length);
    EXPECT_EQ(text_length, 260);
    str_bytes_to_raw_bytes(text.data(), text_length, back.data(), &length);
    EXPECT_TRUE(support::SameBytes(raw, {reinterpret_cast<char*>(back.data()), length}));
}

TEST(BtUtilsParseBytes, DecodesUpTo256Characters) {
    std::string text(252, 'x');
    text += Bytes({0xDC, 0xDD, 0xDC, 0xDC});
    int length = 256;
    const unsigned char* bytes = parse_bytes(text.data(), &length);
    ASSERT_NE(bytes, nullptr);
    EXPECT_TRUE(
        support::SameBytes(std::string(252, 'x') + Bytes({0x00, 0xDC}),
                           {reinterpret_cast<const char*>(bytes), static_cast<size_t>(length)}));
}

TEST(BtUtilsParseBytes, RefusesMoreThan256Characters) {
    std::string text(257, 'x');
    int length = 257;
    EXPECT_EQ(parse_bytes(text.data(), &length), nullptr);
    EXPECT_EQ(length, 0);
}

TEST(BtUtilsParseBytes, NothingToDecodeHasLengthZero) {
    char text[] = "x";
    for (const int count : {0, -1}) {
        int length = count;
        parse_bytes(text, &length);
        EXPECT_EQ(length, 0) << "of " << count << " characters";
    }
    std::string lone = Bytes({0xDC});
    int length = 1;
    parse_bytes(lone.data(), &length);
    EXPECT_EQ(length, 0);
}

TEST(BtUtilsParseBytes, AnUnknownPairHandsOutNothingOfTheCallBefore) {
    std::string secret = "SECRET";
    int length = 6;
    parse_bytes(secret.data(), &length);
    std::string unknown = Bytes({0xDC, 'a', 0xDC, 'b'});
    length = 4;
    const unsigned char* bytes = parse_bytes(unknown.data(), &length);
    ASSERT_EQ(length, 2);
    EXPECT_EQ(bytes[0], 0x00);
    EXPECT_EQ(bytes[1], 0x00);
}

TEST(BtUtilsCopy, CopiesWhatFits) {
    struct Case {
        int room;
        int length;
        int result;
        const char* copied;
    };
    for (const Case& one :
         {Case{4, 3, 1, "abc."}, Case{3, 3, 1, "abc."}, Case{2, 3, 0, "ab.."}, Case{0, 3, 0, "...."},
          Case{-1, 3, 0, "...."}, Case{0, 0, 0, "...."}, Case{1, 0, 1, "...."}}) {
        unsigned char source[] = "abc";
        unsigned char target[] = "....";
        EXPECT_EQ(reliable_memcpy(target, one.room, source, one.length), one.result) << one.room;
        EXPECT_STREQ(reinterpret_cast<char*>(target), one.copied);
    }
}

struct NameCase {
    const char* raw;
    const char* name;
};

std::string CombinedName(const std::string& raw, size_t room) {
    std::vector<unsigned char> bytes(raw.begin(), raw.end()); // without a NUL
    std::vector<unsigned char> name(room + 1, 0);
    name[room] = '|';
    combine_name(name.data(), static_cast<int>(room), bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_EQ(name[room], '|') << "written behind the room";
    name[room] = 0;
    return reinterpret_cast<char*>(name.data());
}

TEST(BtUtilsName, PartsAreOrderedByTheScript) {
    const OutputCapture output;
    for (const NameCase& one : {
             NameCase{"Smith;John;Paul;;", "JohnPaulSmith"},
             NameCase{"Smith;John;Paul;", "JohnPaulSmith"},
             NameCase{"Smith;John;Paul", "JohnSmith"},
             NameCase{"Smith;John;", "JohnSmith"},
             NameCase{"Doe;John", "Doe"},
             NameCase{"Doe", ""},
             NameCase{"", ""},
             NameCase{";;;", ""},
             NameCase{";John;;", "John"},
             NameCase{"Smith;;;", "Smith"},
             NameCase{";;Paul;", "Paul"},
             NameCase{"\xE5\xB1\xB1;\xE5\xA4\xAA;\xE9\x83\x8E;;",
                      "\xE5\xB1\xB1\xE9\x83\x8E\xE5\xA4\xAA"},
             NameCase{"\xE5\xB1\xB1;\xE5\xA4\xAA;\xE9\x83\x8E;Dr;",
                      "\xE5\xB1\xB1\xE9\x83\x8E\xE5\xA4\xAA"},
             NameCase{"\xE5\xB1\xB1;\xE5\xA4\xAA;x", "\xE5\xA4\xAA\xE5\xB1\xB1"},
             NameCase{"\xE5\xB1\xB1; ;\xE9\x83\x8E;", " \xE9\x83\x8E\xE5\xB1\xB1"},
             NameCase{"12;34;56;", "125634"},
             NameCase{"12;34\t;56;", "34\t5612"},
             NameCase{"12;34\n;56;", "125634\n"},
         }) {
        EXPECT_TRUE(support::SameBytes(one.name, CombinedName(one.raw, 64))) << one.raw;
    }
    EXPECT_EQ(output.Out(), "");
}

TEST(BtUtilsName, ANameThatJustFitsIsWholeButTold) {
    const OutputCapture output;
    EXPECT_EQ(CombinedName("Smith;John;Paul;", 13), "JohnPaulSmith");
    EXPECT_EQ(output.Out(), "Name Len Error. MAX_NAME_LEN = 13, real_len = 13");
}

TEST(BtUtilsName, ANameTooLongIsCutAndNothingFollowsTheCut) {
    struct Case {
        size_t room;
        const char* name;
    };
    const OutputCapture output;
    for (const Case& one :
         {Case{12, "JohnPaulSmit"}, Case{8, "JohnPaul"}, Case{6, "JohnPa"}, Case{2, "Jo"}}) {
        EXPECT_EQ(CombinedName("Smith;John;Paul;", one.room), one.name);
    }
    EXPECT_EQ(CombinedName("1;234567;8;", 2), "18");
}

TEST(BtUtilsDescriptor, CrossesASocketOnOneZeroByte) {
    const OutputCapture output;
    const SocketPair wire;
    const SocketPair passed;
    EXPECT_EQ(sendfd_client(wire.Near(), passed.Far()), 1);
    EXPECT_TRUE(support::WriteBytes(wire.Near(), "X"));
    const int fd = recvfd_client(wire.Far());
    ASSERT_GT(fd, 0);
    EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_TRUE(support::WriteBytes(fd, "through"));
    close(fd);
    const std::string passed_on = support::ReadBytes(passed.Near(), 7);
    EXPECT_EQ(passed_on + support::ReadBytes(wire.Far(), 1), "throughX");
    EXPECT_EQ(output.Out(), "recvfd_client ret 1.\n");
}

TEST(BtUtilsDescriptor, TheByteThatCarriesItIsZero) {
    const SocketPair wire;
    EXPECT_EQ(sendfd_client(wire.Near(), wire.Near()), 1);
    EXPECT_TRUE(support::SameBytes(std::string("\0", 1), support::ReadBytes(wire.Far(), 1)));
}

TEST(BtUtilsDescriptor, SendingFailsOnABadSocket) {
    SocketPair wire;
    EXPECT_EQ(sendfd_client(-1, wire.Near()), 0);
    EXPECT_EQ(sendfd_client(wire.Near(), -1), 0);
    wire.CloseFar();
    EXPECT_EQ(sendfd_client(wire.Near(), wire.Near()), 0) << "and no SIGPIPE";
}

// What one receipt says of a byte that carries no descriptor.
void ExpectProtocolFailure(int receiver, const char* out, const char* err) {
    const OutputCapture output(OutputCapture::Streams::kOutAndErr);
    EXPECT_EQ(recvfd_client(receiver), 0);
    EXPECT_EQ(output.Out(), out);
    if (*err == 0) {
        EXPECT_EQ(output.Err(), "");
    } else {
        EXPECT_TRUE(support::Fits(output.Err(), err));
    }
}

TEST(BtUtilsDescriptor, AByteWithoutOneIsAProtocolFailure) {
    const SocketPair wire;
    EXPECT_TRUE(support::WriteBytes(wire.Near(), "X"));
    ExpectProtocolFailure(wire.Far(), "recvfd_client ret 1.\n",
                          "bt_utils\\.cpp:546: protocol failure: NULL cmsghdr\\*\n");
}

TEST(BtUtilsDescriptor, TheEndOfTheStreamIsAProtocolFailure) {
    SocketPair wire;
    wire.CloseNear();
    ExpectProtocolFailure(wire.Far(), "recvfd_client ret 0.\n",
                          "bt_utils\\.cpp:546: protocol failure: NULL cmsghdr\\*\n");
}

TEST(BtUtilsDescriptor, OtherControlDataIsAProtocolFailure) {
    const SocketPair wire;
    const int on = 1;
    ASSERT_EQ(setsockopt(wire.Far(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)), 0);
    EXPECT_TRUE(support::WriteBytes(wire.Near(), "X"));
    // Level 1 is SOL_SOCKET, type 2 SCM_CREDENTIALS.
    ExpectProtocolFailure(wire.Far(), "recvfd_client ret 1.\n",
                          "bt_utils\\.cpp:540: protocol failure: [0-9]+ 1 2\n");
}

TEST(BtUtilsDescriptor, AFailedReceiptIsSilent) {
    ExpectProtocolFailure(-1, "", "");
}

TEST(BtUtilsDescriptor, NumberZeroIsMovedUp) {
    const OutputCapture output;
    const support::LeakCheck leaks;
    const SocketPair wire;
    EXPECT_EQ(sendfd_client(wire.Near(), wire.Near()), 1);
    support::StandardInput standard_input;
    standard_input.Close();
    const int fd = recvfd_client(wire.Far());
    EXPECT_FALSE(support::IsOpen(STDIN_FILENO));
    standard_input.Restore();
    EXPECT_GT(fd, 0);
    EXPECT_TRUE(support::IsOpen(fd));
    EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    close(fd);
}

TEST(BtUtilsTime, IsHoursMinutesSecondsMicroseconds) {
    const std::string text = get_current_time_string();
    EXPECT_TRUE(support::Fits(text, "\\[[0-2][0-9]:[0-5][0-9]:[0-6][0-9]:[0-9]{1,6}\\]"));
}

TEST(BtUtilsTime, MicrosecondsAreNotPadded) {
    const size_t padded = std::string("[00:00:00:000000]").size();
    EXPECT_TRUE(support::WaitUntil([=] {
        const std::string text = get_current_time_string();
        return text.size() < padded && text[10] != '0';
    })) << "a tenth of all times have fewer than six digits";
}

// Sets the time zone for as long as it lives.
class TimeZone {
public:
    explicit TimeZone(const char* zone) {
        const char* before = getenv("TZ");
        had_one_ = before != nullptr;
        before_ = had_one_ ? before : "";
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone() {
        had_one_ ? setenv("TZ", before_.c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    TimeZone(TimeZone&&) = delete;
    TimeZone& operator=(TimeZone&&) = delete;

private:
    bool had_one_;
    std::string before_;
};

TEST(BtUtilsTime, IsThatOfTheTimeZone) {
    const TimeZone zone("EAST-5:30");
    constexpr time_t kHour = 60; // minutes
    const auto minute_of_day = [](time_t seconds) {
        return (seconds / 60 + 5 * kHour + 30) % (24 * kHour);
    };
    time_t before = 0;
    time_t after = 0;
    std::string text;
    do { // once more when the minute has changed meanwhile
        before = time(nullptr);
        text = get_current_time_string();
        after = time(nullptr);
    } while (before / 60 != after / 60);
    const int shown = std::stoi(text.substr(1, 2)) * 60 + std::stoi(text.substr(4, 2));
    EXPECT_EQ(shown, minute_of_day(before)) << text;
}

TEST(BtUtilsTime, EachThreadHasItsOwnText) {
    const char* mine = get_current_time_string();
    const std::string before = mine;
    const char* other_text = nullptr;
    std::thread other([&] { other_text = get_current_time_string(); });
    other.join();
    EXPECT_NE(mine, other_text);
    EXPECT_EQ(before, mine);
}

} // namespace
