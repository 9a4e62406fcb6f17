// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands that carry bytes of any value: escaping, empty blocks, and how long a block may be.

#include "wire/avrcp_support.h"

namespace {

using avrcp::kDevice;

class AvrcpBlocks : public avrcp::AvrcpWireTest {
protected:
    static bt_status_t SendUid(const std::vector<uint8_t>& uid) {
        std::vector<uint8_t> copy = uid;
        return vym_avrcp_play_item(kDevice, 3, static_cast<uint16_t>(copy.size()), copy.data());
    }

    // The command that play_item makes of this escaped block.
    static std::string UidCommand(const std::string& digits, const std::string& escaped) {
        return "AT#RLA1B2C3D4E5F603" + digits + escaped + "\r\n";
    }

    // Nothing has been sent, and the next command is whole.
    void ExpectIntact() {
        EXPECT_EQ(vym_avrcp_cancel_browsing(kDevice), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RVA1B2C3D4E5F6\r\n");
    }
};

TEST_F(AvrcpBlocks, FollowTheFixedFieldsBehindTheirCount) {
    uint8_t two[] = {0x01, 0x02};
    uint8_t uid[] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    uint8_t ids[] = {'1', '7', '8'};
    EXPECT_EQ(vym_avrcp_get_player_app_setting(kDevice, 0xFE, 2, two), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#REA1B2C3D4E5F6FE0002\x01\x02\r\n");
    EXPECT_EQ(vym_avrcp_change_folder_path(kDevice, 0x01, 8, uid), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RJA1B2C3D4E5F6010008abcdefgh\r\n");
    EXPECT_EQ(vym_avrcp_play_item(kDevice, 0x03, 8, uid), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RLA1B2C3D4E5F6030008abcdefgh\r\n");
    EXPECT_EQ(vym_avrcp_get_element_attribute(kDevice, 0x01020304, 3, ids), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RZBA1B2C3D4E5F6010203040003178\r\n");
    Server().ExpectNothingMore();
}

TEST_F(AvrcpBlocks, OfCoverArtFollowEachOther) {
    uint8_t handle[] = {'1', '0', '0'};
    uint8_t encoding[] = {'J', 'P', 'E', 'G'};
    uint8_t pixel[] = {'2', '*', '2', '0', 0x00};
    uint8_t path[] = {'/', 't', 0x0D};
    EXPECT_EQ(vym_avrcp_get_linked_thumbnail(kDevice, 3, handle, 3, path), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RZCA1B2C3D4E5F60003100"
                           "0004/t\xDC\xDE\r\n");
    EXPECT_EQ(vym_avrcp_get_image(kDevice, 0x01020304, 3, handle, 4, encoding, 5, pixel, 3, path),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RZDA1B2C3D4E5F601020304"
                           "0003100"
                           "0004JPEG"
                           "00062*20\xDC\xDD"
                           "0004/t\xDC\xDE\r\n");
    Server().ExpectNothingMore();
}

TEST_F(AvrcpBlocks, TheSizeOfAnImageIsItsLow32Bits) {
    struct {
        long size;
        const char* digits;
    } const cases[] = {
        {0, "00000000"},
        {-2, "FFFFFFFE"},
        {0x7FFFFFFF, "7FFFFFFF"},
        {static_cast<long>(0x8ABCDEF1UL), "8ABCDEF1"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(
            vym_avrcp_get_image(kDevice, one.size, 0, nullptr, 0, nullptr, 0, nullptr, 0, nullptr),
            BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RZDA1B2C3D4E5F6" + std::string(one.digits) + "0000000000000000\r\n");
    }
}

TEST_F(AvrcpBlocks, NeverHoldANulALineEndOrALoneEscape) {
    EXPECT_EQ(SendUid({0x00, 0x41, 0x0A}), BT_STATUS_SUCCESS);
    Server().ExpectCommand(UidCommand("0005", "\xDC\xDD\x41\xDC\xDF"));
    EXPECT_EQ(SendUid({0x0D, 0xDC, 0xDD, 0xFF}), BT_STATUS_SUCCESS);
    Server().ExpectCommand(UidCommand("0006", "\xDC\xDE\xDC\xDC\xDD\xFF"));
}

TEST_F(AvrcpBlocks, WithoutAPointerOrALengthAreEmpty) {
    uint8_t byte[] = {'x'};
    for (uint8_t* const data : {static_cast<uint8_t*>(nullptr), byte}) {
        const uint16_t length = data == nullptr ? 9 : 0;
        EXPECT_EQ(vym_avrcp_get_player_app_setting(kDevice, 1, length, data), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#REA1B2C3D4E5F6010000\r\n");
        EXPECT_EQ(vym_avrcp_change_folder_path(kDevice, 1, length, data), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RJA1B2C3D4E5F6010000\r\n");
        EXPECT_EQ(vym_avrcp_play_item(kDevice, 1, length, data), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RLA1B2C3D4E5F6010000\r\n");
        EXPECT_EQ(vym_avrcp_get_element_attribute(kDevice, 1, length, data), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RZBA1B2C3D4E5F6000000010000\r\n");
        EXPECT_EQ(vym_avrcp_get_linked_thumbnail(kDevice, length, data, length, data),
                  BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RZCA1B2C3D4E5F600000000\r\n");
        EXPECT_EQ(
            vym_avrcp_get_image(kDevice, 1, length, data, length, data, length, data, length, data),
            BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RZDA1B2C3D4E5F6000000010000000000000000\r\n");
    }
    Server().ExpectNothingMore();
}

TEST_F(AvrcpBlocks, MayBe65535BytesLong) {
    EXPECT_EQ(SendUid(std::vector<uint8_t>(65535, 'x')), BT_STATUS_SUCCESS);
    Server().ExpectCommand(UidCommand("FFFF", std::string(65535, 'x')));
    std::vector<uint8_t> uid(32767, 0x00);
    uid.push_back('y');
    std::string escaped;
    for (int i = 0; i < 32767; ++i) {
        escaped += "\xDC\xDD";
    }
    EXPECT_EQ(SendUid(uid), BT_STATUS_SUCCESS);
    Server().ExpectCommand(UidCommand("FFFF", escaped + "y"));
}

TEST_F(AvrcpBlocks, LongerThanTheirCountCanTellAreRefused) {
    EXPECT_EQ(SendUid(std::vector<uint8_t>(32768, 0x00)), BT_STATUS_NOMEM);
    EXPECT_EQ(SendUid(std::vector<uint8_t>(65535, 0xDC)), BT_STATUS_NOMEM);
    ExpectIntact();
}

TEST_F(AvrcpBlocks, AreRefusedWithTheirCommandByEveryCall) {
    std::vector<uint8_t> bytes(65535, 0x0A);
    uint8_t* const data = bytes.data();
    uint8_t one[] = {'1'};
    EXPECT_EQ(vym_avrcp_get_player_app_setting(kDevice, 1, 65535, data), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_change_folder_path(kDevice, 1, 65535, data), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_element_attribute(kDevice, 1, 65535, data), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_linked_thumbnail(kDevice, 65535, data, 1, one), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_linked_thumbnail(kDevice, 1, one, 65535, data), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_image(kDevice, 1, 65535, data, 1, one, 1, one, 1, one), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_image(kDevice, 1, 1, one, 65535, data, 1, one, 1, one), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_image(kDevice, 1, 1, one, 1, one, 65535, data, 1, one), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_avrcp_get_image(kDevice, 1, 1, one, 1, one, 1, one, 65535, data), BT_STATUS_NOMEM);
    ExpectIntact();
}

TEST_F(AvrcpBlocks, OfSettingsAreAllIdentifiersAndThenAllValues) {
    AVRCP_IDPairStru pairs[] = {{2, 1}, {3, 2}};
    EXPECT_EQ(vym_avrcp_set_player_app_setting(kDevice, {2, pairs}), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RFA1B2C3D4E5F6020004\x02\x03\x01\x02\r\n");
}

TEST_F(AvrcpBlocks, OfSettingsHoldUpTo255) {
    std::vector<AVRCP_IDPairStru> pairs(255, {'i', 'v'});
    EXPECT_EQ(vym_avrcp_set_player_app_setting(kDevice, {255, pairs.data()}), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RFA1B2C3D4E5F6FF01FE" + std::string(255, 'i') + std::string(255, 'v') +
                           "\r\n");
}

TEST_F(AvrcpBlocks, OfSettingsThatAreNotThereAreEmpty) {
    AVRCP_IDPairStru pair = {2, 1};
    EXPECT_EQ(vym_avrcp_set_player_app_setting(kDevice, {3, nullptr}), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RFA1B2C3D4E5F6030000\r\n");
    EXPECT_EQ(vym_avrcp_set_player_app_setting(kDevice, {0, &pair}), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#RFA1B2C3D4E5F6000000\r\n");
}

} // namespace
