// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What applications have compiled in: sizes, offsets, values; and the version that features tell.

#include "vym_avrcp.h"

#include "vym_avrcp_impl.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

TEST(AvrcpTypes, APlayerIsPacked) {
    EXPECT_EQ(offsetof(btrc_item_player_t, player_id), 0U);
    EXPECT_EQ(offsetof(btrc_item_player_t, major_type), 2U);
    EXPECT_EQ(offsetof(btrc_item_player_t, sub_type), 3U);
    EXPECT_EQ(offsetof(btrc_item_player_t, play_status), 7U);
    EXPECT_EQ(offsetof(btrc_item_player_t, features), 8U);
    EXPECT_EQ(offsetof(btrc_item_player_t, charset_id), 24U);
    EXPECT_EQ(offsetof(btrc_item_player_t, name), 26U);
    EXPECT_EQ(sizeof(btrc_item_player_t::name), 255U);
    EXPECT_EQ(sizeof(btrc_item_player_t), 281U);
    EXPECT_EQ(alignof(btrc_item_player_t), 1U);
}

TEST(AvrcpTypes, AFolderIsPacked) {
    EXPECT_EQ(offsetof(btrc_item_folder_t, uid), 0U);
    EXPECT_EQ(offsetof(btrc_item_folder_t, type), 8U);
    EXPECT_EQ(offsetof(btrc_item_folder_t, playable), 9U);
    EXPECT_EQ(offsetof(btrc_item_folder_t, charset_id), 10U);
    EXPECT_EQ(offsetof(btrc_item_folder_t, name), 12U);
    EXPECT_EQ(sizeof(btrc_item_folder_t::name), 255U);
    EXPECT_EQ(sizeof(btrc_item_folder_t), 267U);
    EXPECT_EQ(alignof(btrc_item_folder_t), 1U);
}

TEST(AvrcpTypes, MediaIsPackedAndEndsWithItsAttributes) {
    EXPECT_EQ(offsetof(btrc_item_media_t, uid), 0U);
    EXPECT_EQ(offsetof(btrc_item_media_t, type), 8U);
    EXPECT_EQ(offsetof(btrc_item_media_t, charset_id), 9U);
    EXPECT_EQ(offsetof(btrc_item_media_t, name), 11U);
    EXPECT_EQ(offsetof(btrc_item_media_t, num_attrs), 266U);
    EXPECT_EQ(offsetof(btrc_item_media_t, p_attrs), 270U);
    EXPECT_EQ(sizeof(btrc_item_media_t), 270U);
    EXPECT_EQ(alignof(btrc_item_media_t), 1U);
    EXPECT_EQ(offsetof(btrc_element_attr_val_t, attr_id), 0U);
    EXPECT_EQ(offsetof(btrc_element_attr_val_t, text), 4U);
    EXPECT_EQ(sizeof(btrc_element_attr_val_t), 259U);
    EXPECT_EQ(alignof(btrc_element_attr_val_t), 1U);
}

TEST(AvrcpTypes, AnItemFollowsItsTypeAtOnce) {
    EXPECT_EQ(offsetof(btrc_folder_items_t, item_type), 0U);
    EXPECT_EQ(offsetof(btrc_folder_items_t, item), 1U);
    EXPECT_EQ(sizeof(btrc_folder_items_t), 282U);
    EXPECT_EQ(alignof(btrc_folder_items_t), 1U);
}

TEST(AvrcpTypes, ListsAreNaturallyAligned) {
    EXPECT_EQ(sizeof(AVRCP_IDPairStru), 2U);
    EXPECT_EQ(offsetof(AVRCP_IDPairStru, value), 1U);
    EXPECT_EQ(offsetof(AVRCP_NumIDPairStru, id_value), sizeof(void*));
    EXPECT_EQ(sizeof(AVRCP_NumIDPairStru), 2 * sizeof(void*));
    EXPECT_EQ(offsetof(AVRCP_4IDStringStru, attr_id), 0U);
    EXPECT_EQ(offsetof(AVRCP_4IDStringStru, len), 4U);
    EXPECT_EQ(offsetof(AVRCP_4IDStringStru, value), 8U);
    EXPECT_EQ(sizeof(AVRCP_4IDStringStru), 8 + sizeof(void*));
    EXPECT_EQ(offsetof(AVRCP_Num4IDValueStru, id_value), sizeof(void*));
    EXPECT_EQ(sizeof(AVRCP_Num4IDValueStru), 2 * sizeof(void*));
    EXPECT_TRUE(std::is_trivially_copyable_v<AVRCP_NumIDPairStru>);
    EXPECT_TRUE(std::is_trivially_copyable_v<AVRCP_Num4IDValueStru>);
}

TEST(AvrcpTypes, TablesHaveAllTheirMembersInOrder) {
    constexpr size_t slot = sizeof(void (*)());
    EXPECT_EQ(sizeof(avrcp_callback_t), 22 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, handle_passthrough_rsp_cb), 0U);
    EXPECT_EQ(offsetof(avrcp_callback_t, handle_set_abs_volume_cb), 5 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, handle_track_changed_cb), 7 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, change_folder_path_rsp_cb), 10 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, get_player_item_cb), 13 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, get_folder_item_cb), 14 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, get_media_item_cb), 15 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, available_player_changed_cb), 18 * slot);
    EXPECT_EQ(offsetof(avrcp_callback_t, get_image_result_cb), 21 * slot);
    EXPECT_EQ(sizeof(avrcp_impl_callback_t), 25 * slot);
}

TEST(AvrcpVersion, IsTheTopThreeBitsOfTheFeatures) {
    const struct {
        uint8_t feature;
        int version;
    } cases[] = {
        {0x00, 0}, {0x1F, 0}, {0x20, 1}, {0x40, 2}, {0x60, 3}, {0x7F, 3}, {0x80, 4},
        {0xA0, 5}, {0xBF, 5}, {0xC0, 6}, {0xDF, 6}, {0xE0, 7}, {0xFF, 7},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(static_cast<int>(convert_feature_to_avrcp_version(one.feature)), one.version)
            << int{one.feature};
    }
}

TEST(AvrcpVersion, HasItsNames) {
    EXPECT_EQ(AVRCP_1_0, 0);
    EXPECT_EQ(AVRCP_1_3, 3);
    EXPECT_EQ(AVRCP_1_4, 4);
    EXPECT_EQ(AVRCP_1_5, 5);
    EXPECT_EQ(AVRCP_1_6, 6);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<avrcp_version_t>, int>));
}

} // namespace
