// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Events with a list in an escaped block: settings of a player and attributes of a track, also those
// whose counts claim more than came.

#include "wire/avrcp_support.h"

namespace {

using avrcp::Block;
using avrcp::Bytes;
using avrcp::kAddress;

class AvrcpLists : public avrcp::AvrcpWireTest {
protected:
    void ExpectSetting(const std::string& list, const std::string& rest) {
        ExpectDelivered("RF" + kAddress + Block(list),
                        {"handle_player_app_setting(A1B2C3D4E5F6, " + rest + ")"});
    }
    void ExpectSettings(const std::string& list, const std::string& rest) {
        ExpectDelivered("RG" + kAddress + Block(list),
                        {"handle_player_app_setting_changed(A1B2C3D4E5F6, " + rest + ")"});
    }
    void ExpectTrack(const std::string& list, const std::string& rest) {
        ExpectDelivered("RJ" + kAddress + Block(list),
                        {"handle_track_changed(A1B2C3D4E5F6, " + rest + ")"});
    }
    void ExpectNoTrack(const std::string& list) { ExpectDelivered("RJ" + kAddress + Block(list), {}); }
};

// A text and its NUL.
std::string Z(const std::string& text) {
    return text + '\0';
}

TEST_F(AvrcpLists, ThatAreEmptyHaveNoEntriesAndTheLengthOfTheirBlock) {
    for (const std::string& list :
         {std::string(), Bytes({0}), Bytes({0, 2, 3}), std::string("0"), std::string("0217abc")}) {
        const std::string length = std::to_string(list.size());
        ExpectSetting(list, length + ", 0, 0 null");
        ExpectSettings(list, length + ", 0 null");
        ExpectTrack(list, length + ", 0 null");
    }
}

TEST_F(AvrcpLists, ThatAreALoneEscapeAreEmpty) {
    ExpectDelivered("RFA1B2C3D4E5F60001\xDC",
                    {"handle_player_app_setting(A1B2C3D4E5F6, 0, 0, 0 null)"});
    ExpectDelivered("RGA1B2C3D4E5F60001\xDC",
                    {"handle_player_app_setting_changed(A1B2C3D4E5F6, 0, 0 null)"});
    ExpectDelivered("RJA1B2C3D4E5F60001\xDC", {"handle_track_changed(A1B2C3D4E5F6, 0, 0 null)"});
}

TEST_F(AvrcpLists, ThatRunPastTheEventCallNothing) {
    for (const char* tag : {"RF", "RG", "RJ"}) {
        for (const char* count : {"0006", "0100", "0FFF", "1000", "7FFF", "8000", "FFFF", "-001"}) {
            ExpectDelivered(tag + kAddress + count + "\x02\x01\x03\x02\x01", {});
        }
    }
    ExpectSettings(Bytes({2, 1, 3, 2, 1}), "5, 2 [1=2 3=1]");
}

TEST_F(AvrcpLists, HaveTheLengthOfTheirBytesNotOfTheirEscapes) {
    ExpectDelivered("RFA1B2C3D4E5F60009" + Bytes({0x0B, 3, 0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDC}) + "!",
                    {"handle_player_app_setting(A1B2C3D4E5F6, 6, 11, 3 [0=0 1=13 2=220])"});
    ExpectDelivered("RGA1B2C3D4E5F60006" + Bytes({1, 0xDC, 0xDF, 0xDC, 0xDD, 7}) + "zz",
                    {"handle_player_app_setting_changed(A1B2C3D4E5F6, 4, 1 [10=0])"});
}

TEST_F(AvrcpLists, NeverShowWhatABadEscapeLeftOut) {
    ExpectDelivered("RGA1B2C3D4E5F60005" + Bytes({1, 0xDC, 'x', 0xDC, 0x01}),
                    {"handle_player_app_setting_changed(A1B2C3D4E5F6, 3, 1 [0=0])"});
}

TEST_F(AvrcpLists, OfOneSettingNumberTheirValuesByTheirPlace) {
    ExpectSetting(Bytes({1, 3, 1, 2, 4}), "5, 1, 3 [0=1 1=2 2=4]");
    ExpectSetting(Bytes({2, 1, 9, 8, 7}), "5, 2, 1 [0=9]");
    ExpectSetting(Bytes({3, 0, 5}), "3, 3, 0 []");
}

TEST_F(AvrcpLists, OfSettingsThatClaimMoreThanCameAreFilledWithZeroes) {
    ExpectSetting(Bytes({1, 3, 7}), "3, 1, 3 [0=7 1=0 2=0]");
    ExpectSetting(Bytes({5}), "1, 5, 0 []");
    ExpectSettings(Bytes({2, 1, 3, 2}), "4, 2 [1=2 3=0]");
    ExpectSettings(Bytes({2, 1}), "2, 2 [1=0 0=0]");
    ExpectSettings(Bytes({1}), "1, 1 [0=0]");
    std::string zeroes = "0=9";
    std::string pairs = "4=0";
    for (int i = 1; i < 255; ++i) {
        zeroes += " " + std::to_string(i) + "=0";
        pairs += " 0=0";
    }
    ExpectSetting(Bytes({1, 255, 9}), "3, 1, 255 [" + zeroes + "]");
    ExpectSettings(Bytes({255, 4}), "2, 255 [" + pairs + "]");
}

TEST_F(AvrcpLists, OfSettingsHoldUpTo255) {
    std::string bytes = Bytes({255});
    std::string entries;
    for (int i = 0; i < 255; ++i) {
        bytes += static_cast<char>(255 - i);
        entries += (i == 0 ? "" : " ") + std::to_string(255 - i) + "=" + std::to_string(i);
    }
    for (int i = 0; i < 255; ++i) {
        bytes += static_cast<char>(i);
    }
    ExpectSettings(bytes, "511, 255 [" + entries + "]");
}

TEST_F(AvrcpLists, OfATrackAreIdentifiersAndThenTexts) {
    ExpectTrack("217" + Z("Title") + Z("Artist"), R"(16, 2 [1:6 "Title\0" 7:7 "Artist\0"])");
    ExpectTrack("1a" + Z(""), R"(3, 1 [10:1 "\0"])");
    ExpectTrack("3cD2" + Z("") + Z("\xC3\x84\r\n\xDC") + Z("2"),
                R"(13, 3 [12:1 "\0" 13:6 "\xC3\x84\r\n\xDC\0" 2:2 "2\0"])");
}

TEST_F(AvrcpLists, OfATrackHoldUpTo15Attributes) {
    std::string values;
    std::string entries;
    for (int i = 1; i <= 15; ++i) {
        const std::string letter(1, static_cast<char>('a' + i));
        values += Z(letter);
        entries += i == 1 ? "" : " ";
        entries += std::to_string(i) + ":2 \"" + letter + "\\0\"";
    }
    ExpectTrack("f123456789abcdef" + values, "46, 15 [" + entries + "]");
    ExpectTrack("F123456789ABCDEF" + values, "46, 15 [" + entries + "]");
}

TEST_F(AvrcpLists, OfATrackMayHaveLongTexts) {
    const std::string sixteen(16, 'p');
    const std::string long_text(3000, 'q');
    ExpectTrack("4"
                "1234" +
                    Z(sixteen.substr(1)) + Z(sixteen) + Z(long_text) + Z("end"),
                "3043, 4 [1:16 \"" + sixteen.substr(1) + "\\0\" 2:17 \"" + sixteen + "\\0\" 3:3001 \"" +
                    long_text + "\\0\" 4:4 \"end\\0\"]");
}

TEST_F(AvrcpLists, OfATrackWhoseNumberIsNoDigitAreEmpty) {
    for (const char first : {'g', 'G', 'z', '-', '+', ' ', '\x05', '\xFF'}) {
        ExpectTrack(first + ("17" + Z("Title")), "9, 0 null");
    }
}

TEST_F(AvrcpLists, OfATrackKeepTheEntriesBeforeATextWithoutItsNul) {
    ExpectTrack("217" + Z("Title") + "Artist", R"(15, 2 [1:6 "Title\0" 7:0 null])");
    ExpectTrack("312"
                "3" +
                    Z("a"),
                R"(6, 3 [1:2 "a\0" 2:0 null 3:0 null])");
    ExpectTrack("217", "3, 2 [1:0 null 7:0 null]");
}

TEST_F(AvrcpLists, OfATrackEndWithTheIdentifiersThatCame) {
    ExpectTrack("F1", "2, 1 [1:0 null]");
    ExpectTrack("F", "1, 0 null");
    ExpectTrack("9123" + Z("abc"),
                "8, 7 [1:0 null 2:0 null 3:0 null 10:0 null 11:0 null 12:0 null 0:0 null]");
}

TEST_F(AvrcpLists, OfATrackDoNotSearchBehindTheBlock) {
    // The NUL in the block is spent; the surplus looks like the missing text.
    ExpectDelivered("RJA1B2C3D4E5F60009"
                    "217T\xDC\xDD"
                    "Art"
                    "ist\xDC\xDD",
                    {R"(handle_track_changed(A1B2C3D4E5F6, 8, 2 [1:2 "T\0" 7:0 null]))"});
}

TEST_F(AvrcpLists, ThatStartWithAUidTellItAsEightBytes) {
    ExpectTrack("10" + Z("0123456789ABCDEF"), R"(19, 1 [0:8 "\x01#Eg\x89\xAB\xCD\xEF"])");
    ExpectTrack("20"
                "1" +
                    Z("fedcba9876543210") + Z("Title"),
                R"(26, 2 [0:8 "\xFE\xDC\xBA\x98vT2\x10" 1:6 "Title\0"])");
}

TEST_F(AvrcpLists, WithAShortUidFillItWithZeroes) {
    ExpectTrack("20"
                "1" +
                    Z("41424") + Z("Title"),
                R"(15, 2 [0:8 "AB\x04\0\0\0\0\0" 1:6 "Title\0"])");
    ExpectTrack("10" + Z(""), R"(3, 1 [0:8 "\0\0\0\0\0\0\0\0"])");
    ExpectTrack("10" + Z("41G24z43"), R"(11, 1 [0:8 "A\0\x04C\0\0\0\0"])");
}

TEST_F(AvrcpLists, WithALongUidTakeSixteenDigits) {
    ExpectTrack("20"
                "1" +
                    Z("4142434445464748494A") + Z("Title"),
                R"(30, 2 [0:8 "ABCDEFGH" 1:6 "Title\0"])");
}

TEST_F(AvrcpLists, WithAUidThatIsNotThereCallNothing) {
    ExpectNoTrack("10");
    ExpectNoTrack("20"
                  "1");
    ExpectNoTrack("10"
                  "0123456789ABCDEF");
    ExpectNoTrack("1x");
}

TEST_F(AvrcpLists, WithAUidInSecondPlaceLeaveItText) {
    ExpectTrack("21"
                "0" +
                    Z("Title") + Z("0123456789ABCDEF"),
                R"(26, 2 [1:6 "Title\0" 0:17 "0123456789ABCDEF\0"])");
}

} // namespace
