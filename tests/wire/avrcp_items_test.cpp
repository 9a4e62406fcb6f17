// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Items of a player's folders: each kind whole, short, and with counts that claim more than came.

#include "wire/avrcp_support.h"

namespace {

using avrcp::Bytes;
using avrcp::Item;
using avrcp::Padded;

const char* const kUid = "\x01"
                         "bcdefg\xFF";

// Up to the number of attributes: 266 bytes.
std::string Media(const std::string& name) {
    return std::string(kUid) + Bytes({2, 0x6A, 0x03}) + Padded(name, 255);
}

std::string Attribute(unsigned id, const std::string& text) {
    return wire::Number(id) + Padded(text, 255);
}

class AvrcpItems : public avrcp::AvrcpWireTest {
protected:
    void ExpectItem(int status, const std::string& type_and_item, const std::string& entry) {
        ExpectDelivered(Item(status, type_and_item),
                        entry.empty() ? std::vector<std::string>{} : std::vector<std::string>{entry});
    }
    void ExpectMedia(const std::string& item, const std::string& rest) {
        ExpectItem(4, "\x03" + item,
                   R"(get_media_item(A1B2C3D4E5F6, 4, uid "\x01bcdefg\xFF" type 2 charset 874 name )" +
                       rest + ")");
    }
};

TEST_F(AvrcpItems, OfTypeOneArePlayers) {
    const std::string player = Bytes({0x02, 0x01, 0x03, 0x07, 0x06, 0x05, 0x04, 0x08}) +
                               Padded("features-16bytes", 16) + Bytes({0x6A, 0x01}) +
                               Padded("Player", 255);
    EXPECT_EQ(player.size(), 281U);
    ExpectItem(4, "\x01" + player,
               "get_player_item(A1B2C3D4E5F6, 4, id 258 type 3 67438087 status 8 features "
               "\"features-16bytes\" charset 362 name \"Player\")");
}

TEST_F(AvrcpItems, OfTypeTwoAreFolders) {
    const std::string folder =
        std::string(kUid) + Bytes({5, 1, 0x6A, 0x02}) + Padded(std::string(255, 'f'), 255);
    EXPECT_EQ(folder.size(), 267U);
    ExpectItem(
        0, "\x02" + folder,
        R"(get_folder_item(A1B2C3D4E5F6, 0, uid "\x01bcdefg\xFF" type 5 playable 1 charset 618 name ")" +
            std::string(255, 'f') + "\")");
}

TEST_F(AvrcpItems, OfTypeThreeAreMediaWithTheirAttributes) {
    ExpectMedia(Media("Song") + wire::Number(0), "\"Song\" attributes 0");
    ExpectMedia(Media("Song") + wire::Number(2) + Attribute(1, "Title") + Attribute(0x01020304, "x"),
                "\"Song\" attributes 2 1:\"Title\" 16909060:\"x\"");
    ExpectMedia(Media("Song") + wire::Number(1) + Attribute(1, "Title") + Attribute(2, "hidden"),
                "\"Song\" attributes 1 1:\"Title\"");
}

TEST_F(AvrcpItems, OfOtherTypesAreDropped) {
    const std::string item(267, 'i');
    for (const int type : {0x00, 0x04, 0x31, 0x32, 0x33, 0xFF}) {
        ExpectItem(4, Bytes({type}) + item, "");
    }
}

TEST_F(AvrcpItems, WithoutATypeAreDropped) {
    ExpectItem(4, "", "");
    ExpectDelivered("RMA1B2C3D4E5F60400010001\xDC", {});
}

TEST_F(AvrcpItems, ThatRunPastTheEventAreDropped) {
    for (const char* count : {"0005", "0119", "0FFF", "1000", "FFFF"}) {
        ExpectDelivered("RMA1B2C3D4E5F6040001" + std::string(count) + "\x02" + "abc", {});
    }
}

TEST_F(AvrcpItems, ArriveWholeHoweverFewBytesCame) {
    // Something long first, so that what is left of it would show.
    const std::string full(281, 'L');
    const std::string player = R"(get_player_item(A1B2C3D4E5F6, 9, id 0 type 0 0 status 0 features "" )"
                               R"(charset 0 name ""))";
    const std::string folder = R"(get_folder_item(A1B2C3D4E5F6, 9, uid "\0\0\0\0\0\0\0\0" type 0 )"
                               R"(playable 0 charset 0 name ""))";
    const std::string media = R"(get_media_item(A1B2C3D4E5F6, 9, uid "\0\0\0\0\0\0\0\0" type 0 )"
                              R"(charset 0 name "" attributes 0))";
    for (int i = 0; i < 2; ++i) {
        Handle({Item(9, "\x01" + full), Item(9, "\x02" + full), Item(9, "\x03" + full)});
        EXPECT_EQ(avrcp::Record().Take().size(), 3U);
        ExpectItem(9, "\x01", player);
        ExpectItem(9, "\x02", folder);
        ExpectItem(9, "\x03", media);
    }
    ExpectItem(
        9, "\x01" + Bytes({0x02}),
        R"(get_player_item(A1B2C3D4E5F6, 9, id 2 type 0 0 status 0 features "" charset 0 name ""))");
    ExpectItem(
        9, "\x02" + std::string(kUid),
        R"(get_folder_item(A1B2C3D4E5F6, 9, uid "\x01bcdefg\xFF" type 0 playable 0 charset 0 name ""))");
}

TEST_F(AvrcpItems, ClaimNoMoreAttributesThanCame) {
    for (const unsigned claimed : {2U, 1000U, 0x01010101U, 0x7FFFFFFFU, 0xFFFFFFFFU, 0x80000000U}) {
        ExpectMedia(Media("S") + wire::Number(claimed), "\"S\" attributes 0");
        ExpectMedia(Media("S") + wire::Number(claimed) + Attribute(7, "t"),
                    "\"S\" attributes 1 7:\"t\"");
    }
}

TEST_F(AvrcpItems, FillTheirLastAttributeWithZeroes) {
    ExpectMedia(Media("S") + wire::Number(3) + Attribute(1, "a") + wire::Number(2) + "b",
                "\"S\" attributes 2 1:\"a\" 2:\"b\"");
    // As long as an event can be, with the fifteenth attribute begun and not ended.
    std::string item = Media(std::string(255, 'n')) + wire::Number(0x01010110);
    std::string entry = "\"" + std::string(255, 'n') + "\" attributes 15";
    for (int i = 0; i < 14; ++i) {
        item += std::string(4, '\x01') + std::string(255, 't');
        entry += " 16843009:\"" + std::string(255, 't') + "\"";
    }
    item += std::string(4, '\x02') + std::string(160, 'u');
    entry += " 33686018:\"" + std::string(160, 'u') + "\"";
    ExpectMedia(item, entry);
}

TEST_F(AvrcpItems, PrintTheirStatusCountAndLength) {
    Handle({"RMA1B2C3D4E5F60B01020000"});
    EXPECT_EQ(
        Printed("on_get_folder_items_rsp_cbk, status is 11, count is 258, items_data_len is 0.\r\n"),
        1U);
    Handle({"RMA1B2C3D4E5F6FFFFFF0005\x02\xDC\xDD\xDC\xDD"}); // the length without escapes
    EXPECT_EQ(
        Printed("on_get_folder_items_rsp_cbk, status is 255, count is 65535, items_data_len is 3.\r\n"),
        1U);
}

} // namespace
