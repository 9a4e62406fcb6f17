// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of music and its remote control, against the simulated phone.

#include "e2e/every_function.h"
#include "support/capture_reader.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::Bytes;
using e2e::kPhone;
using e2e::kSpeaker;

enum Key { kPlay = 0x44, kStop, kPause, kRewind = 0x48, kFastForward, kForward = 0x4B, kBackward };
enum KeyState { kPressed, kReleased };
enum PlayStatus { kStopped, kPlaying, kPaused, kSeekForward, kSeekBack };

// As eight bytes, the most significant first.
uint8_t third_track[] = {0, 0, 0, 0, 0, 0, 0, 3};
uint8_t second_folder[] = {0, 0, 0, 0, 0, 1, 0, 1};

class EveryMusicFunction : public e2e::EveryFunction {
protected:
    void Connect() {
        EXPECT_EQ(vym_a2dp_connect(kPhone), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("avrcp.connection_state_changed", 1, kPhone));
        EXPECT_TRUE(Hears("avrcp.get_rc_features", kPhone, 0xCF, 0x1003));
        EXPECT_TRUE(Hears("avrcp.handle_play_status_changed", kPhone, kStopped));
        EXPECT_TRUE(HearsTrack(1, "First Light", "The Simulators", "Radio Silence", "8000"));
    }

    /** The player has taken the key, pressed and released. */
    ::testing::AssertionResult HearsKey(int key) {
        const ::testing::AssertionResult pressed = Hears("avrcp.handle_passthrough_rsp", key, kPressed);
        return pressed ? Hears("avrcp.handle_passthrough_rsp", key, kReleased) : pressed;
    }

    ::testing::AssertionResult HearsStatus(PlayStatus status) {
        return Hears("avrcp.handle_play_status_changed", kPhone, status);
    }

    ::testing::AssertionResult HearsTrack(int number, const std::string& title,
                                          const std::string& artist, const std::string& album,
                                          const std::string& length) {
        // A count, an identifier each, the UID's digits, and a NUL behind each value.
        const size_t block =
            1 + 5 + 16 + 5 + title.size() + artist.size() + album.size() + length.size();
        return Hears("avrcp.handle_track_changed", kPhone, block,
                     "0=000000000000000" + std::to_string(number), "1=" + title, "2=" + artist,
                     "3=" + album, "7=" + length);
    }
};

TEST_F(EveryMusicFunction, ConnectsAndDisconnectsTheStream) {
    EXPECT_EQ(CALL(vym_a2dp_connect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("a2dp.connection_state_changed", kPhone, 1));
    EXPECT_TRUE(Hears("a2dp.connection_state_changed", kPhone, 2));
    EXPECT_TRUE(Hears("a2dp.audio_config_changed", kPhone, 44100, 2));
    EXPECT_TRUE(Hears("avrcp.connection_state_changed", 1, kPhone));
    EXPECT_EQ(CALL(vym_a2dp_switch_audio_hw)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("music hardware in mode 1\n"));
    EXPECT_EQ(CALL(vym_a2dp_disconnect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("a2dp.connection_state_changed", kPhone, 0));
    EXPECT_TRUE(Hears("avrcp.connection_state_changed", 0, kPhone));
    EXPECT_EQ(vym_a2dp_connect(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("a2dp.connection_state_changed", kSpeaker, 0)) << "it plays, it is no source";
}

TEST_F(EveryMusicFunction, PlaysPausesAndStops) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_play)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsKey(kPlay));
    EXPECT_TRUE(HearsStatus(kPlaying));
    EXPECT_TRUE(Hears("a2dp.audio_state_changed", kPhone, 2));
    EXPECT_TRUE(Hears("audio.packet", AUDIO_STREAM_TYPE_A2DP, 0, 3528));
    EXPECT_EQ(CALL(vym_avrcp_pause)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsKey(kPause));
    EXPECT_TRUE(HearsStatus(kPaused));
    EXPECT_TRUE(Hears("a2dp.audio_state_changed", kPhone, 1));
    EXPECT_EQ(CALL(vym_avrcp_stop)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsKey(kStop));
    EXPECT_TRUE(HearsStatus(kStopped));
}

TEST_F(EveryMusicFunction, GoesFromTrackToTrackAndFromAlbumToAlbum) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_forward)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsKey(kForward));
    EXPECT_TRUE(HearsTrack(2, "Carrier Wave", "The Simulators", "Radio Silence", "187000"));
    EXPECT_EQ(CALL(vym_avrcp_backward)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsKey(kBackward));
    EXPECT_TRUE(HearsTrack(1, "First Light", "The Simulators", "Radio Silence", "8000"));
    EXPECT_EQ(CALL(vym_avrcp_next_group)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        HearsTrack(3, "Grüße aus dem Äther", "Frau Müller & das Echo", "Überreichweite", "204000"));
    EXPECT_EQ(CALL(vym_avrcp_previous_group)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsTrack(1, "First Light", "The Simulators", "Radio Silence", "8000"));
}

TEST_F(EveryMusicFunction, WindsWhileAKeyIsHeld) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_fast_forward)(kPhone, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.handle_passthrough_rsp", kFastForward, kPressed));
    EXPECT_TRUE(HearsStatus(kSeekForward));
    EXPECT_EQ(vym_avrcp_fast_forward(kPhone, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.handle_passthrough_rsp", kFastForward, kReleased));
    EXPECT_TRUE(HearsStatus(kStopped));
    EXPECT_EQ(CALL(vym_avrcp_rewind)(kPhone, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsStatus(kSeekBack));
    EXPECT_EQ(vym_avrcp_rewind(kPhone, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(HearsStatus(kStopped));
}

TEST_F(EveryMusicFunction, AsksForSettingsAndChangesThem) {
    Connect();
    uint8_t repeat = 2;
    EXPECT_EQ(CALL(vym_avrcp_get_player_app_setting)(kPhone, 1, 1, &repeat), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.handle_player_app_setting", kPhone, 5, 2, std::string("0=1, 1=2, 2=3")));
    EXPECT_TRUE(Hears("avrcp.handle_player_app_setting_changed", kPhone, 3, std::string("2=1")));
    AVRCP_IDPairStru all{2, 3};
    EXPECT_EQ(CALL(vym_avrcp_set_player_app_setting)(kPhone, {1, &all}), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.handle_player_app_setting_changed", kPhone, 3, std::string("2=3")));
}

TEST_F(EveryMusicFunction, AnswersThePlayersWishesForTheVolume) {
    Connect();
    EXPECT_TRUE(Hears("avrcp.handle_set_abs_volume", kPhone, 64));
    EXPECT_EQ(CALL(vym_avrcp_send_abs_vol_rsp)(kPhone, 30), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("volume 30 set\n"));
    EXPECT_TRUE(Hears("avrcp.handle_register_notification_abs_vol", kPhone));
    EXPECT_EQ(CALL(vym_avrcp_send_register_abs_val_rsp)(kPhone, 13, 31), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("volume 31 notified with type 13\n"));
}

TEST_F(EveryMusicFunction, BrowsesFoldersAndPlaysWhatIsInThem) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_get_total_number_of_items)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_total_number_of_items_rsp", kPhone, 4, 3));
    EXPECT_EQ(CALL(vym_avrcp_get_folder_list)(kPhone, 1, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("avrcp.get_folder_item", kPhone, 4, std::string("0000000000010001"), "Überreichweite"));
    EXPECT_EQ(CALL(vym_avrcp_change_folder_path)(kPhone, 1, 8, second_folder), BT_STATUS_SUCCESS);
    // The library exchanges 0 and 4 here.
    EXPECT_TRUE(Hears("avrcp.change_folder_path_rsp", kPhone, 0, 2));
    EXPECT_EQ(CALL(vym_avrcp_play_item)(kPhone, 1, 8, third_track), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.play_item_rsp", kPhone, 4));
    EXPECT_TRUE(
        HearsTrack(3, "Grüße aus dem Äther", "Frau Müller & das Echo", "Überreichweite", "204000"));
    EXPECT_TRUE(HearsStatus(kPlaying));
}

TEST_F(EveryMusicFunction, ListsTheQueueAndCancelsLists) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_get_nowplaying_list)(kPhone, 3, 9), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_media_item", kPhone, 4, std::string("0000000000000004"), "夜の電波",
                      std::string("夜の電波"), std::string("短波"), std::string("Überreichweite")));
    EXPECT_EQ(CALL(vym_avrcp_cancel_browsing)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("no list is under way\n"));
}

TEST_F(EveryMusicFunction, ListsPlayersAndChoosesOne) {
    Connect();
    EXPECT_EQ(CALL(vym_avrcp_get_player_list)(kPhone, 0, 255), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_player_item", kPhone, 4, 1, kStopped, "Music"));
    EXPECT_TRUE(Hears("avrcp.get_player_item", kPhone, 4, 2, kStopped, "Podcasts"));
    EXPECT_EQ(CALL(vym_avrcp_set_addressed_player)(kPhone, 2), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.addressed_player_changed", kPhone, 2));
    EXPECT_TRUE(
        HearsTrack(1, "How a badge finds its reader", "Anna Bergmann", "On the Air", "1800000"));
    EXPECT_TRUE(Hears("avrcp.now_playing_content_changed", kPhone, 1));
    EXPECT_EQ(vym_avrcp_set_addressed_player(kPhone, 77), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("status=17\n"));
}

TEST_F(EveryMusicFunction, AsksForMoreAboutTheTrack) {
    Connect();
    uint8_t genre_and_number[] = {6, 4};
    EXPECT_EQ(CALL(vym_avrcp_get_element_attribute)(kPhone, 2, 2, genre_and_number), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.handle_track_changed", kPhone, 16, std::string("6=Electronic"),
                      std::string("4=1")));
}

TEST_F(EveryMusicFunction, FetchesCoverArt) {
    Connect();
    const std::string path = Directory() + "/cover.jpg";
    const auto length = static_cast<uint16_t>(path.size());
    const auto thumbnail = [&] {
        return CALL(vym_avrcp_get_linked_thumbnail)(kPhone, 7, Bytes("0000001"), length,
                                                    Bytes(path.c_str()));
    };
    EXPECT_EQ(thumbnail(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_linked_thumbnail_result", kPhone, 1)) << "nothing is connected";
    EXPECT_EQ(CALL(vym_avrcp_connect_bip)(kPhone, 0x1003), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.connect_bip_result", kPhone, 0));
    EXPECT_EQ(thumbnail(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_linked_thumbnail_result", kPhone, 0));
    EXPECT_EQ(support::ReadFile(path).substr(0, 2), "\xFF\xD8");

    const std::string second = path + "2";
    EXPECT_EQ(CALL(vym_avrcp_get_image)(kPhone, 0, 7, Bytes("0000002"), 4, Bytes("JPEG"), 7,
                                        Bytes("200*200"), static_cast<uint16_t>(length + 1),
                                        Bytes(second.c_str())),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("avrcp.get_image_result", kPhone, 0));
    EXPECT_EQ(support::ReadFile(second).substr(0, 2), "\xFF\xD8");
}

TEST_F(EveryMusicFunction, AVersionIsReadFromTheFeatures) {
    EXPECT_EQ(CALL(convert_feature_to_avrcp_version)(0xCF), AVRCP_1_6);
    EXPECT_EQ(convert_feature_to_avrcp_version(0x6F), AVRCP_1_3);
}

} // namespace
