// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Remote control of a player, its lists and its pictures.

#include "fields.h"

namespace protocol {
namespace {

// A setter names its settings first and gives their values afterwards.
constexpr Layout kSettings{"settings", 0, {times(u8("ids"), "count"), times(u8("values"), "count")}};
constexpr Layout kSettingIds{"setting_ids", 0, {to_end(u8("ids"))}};
// What may be chosen for one setting.
constexpr Layout kSettingValues{
    "setting_values", 0, {u8("id"), u8("count"), times(u8("values"), "count")}};
constexpr Layout kSettingsChanged{
    "settings_changed", 0, {u8("count"), times(u8("ids"), "count"), times(u8("values"), "count")}};

// The number and the ids are digits, the values end with a NUL each.
constexpr Layout kTrack{"track",
                        0,
                        {{"count", Type::HexDigit},
                         times({"ids", Type::HexDigit}, "count"),
                         a_title(times({"values", Type::NulText}, "count"))}};

// The items lie without padding, their texts are padded with NULs.
constexpr Layout kAttribute{"attribute", 0, {le32("id"), a_title(fixed_text("text", 255))}};
constexpr Layout kMedia{"media",
                        3,
                        {bytes("uid", 8), u8("type"), le16("charset"), a_title(fixed_text("name", 255)),
                         le32("attribute_count"),
                         times(group("attributes", &kAttribute), "attribute_count")}};
constexpr Layout kFolder{
    "folder",
    2,
    {bytes("uid", 8), u8("type"), u8("playable"), le16("charset"), a_title(fixed_text("name", 255))},
    &kMedia};
constexpr Layout kPlayer{"player",
                         1,
                         {le16("id"), u8("major_type"), le32("sub_type"), u8("play_status"),
                          bytes("features", 16), le16("charset"), a_title(fixed_text("name", 255))},
                         &kFolder};
constexpr Layout kItem{"item", 0, {u8("item_type"), choice("item", "item_type", &kPlayer)}};

constexpr Message kCommands[] = {
    {"RA", "connect", 0, {address()}},
    {"RB", "disconnect", 0, {address()}},
    {"RC", "passthrough", 0, {address(), byte("key"), byte("state")}},
    {"RD", "group_navigation", 0, {address(), byte("key"), byte("state")}},
    {"RE", "get_player_app_setting", 0, {address(), byte("count"), block("ids", &kSettingIds)}},
    {"RF", "set_player_app_setting", 0, {address(), byte("count"), block("settings", &kSettings)}},
    {"RG", "send_abs_vol_rsp", 0, {address(), byte("volume"), byte("label")}},
    {"RH",
     "send_register_abs_vol_rsp",
     0,
     {address(), byte("response_type"), byte("volume"), byte("label")}},
    {"RI", "get_folder_list", 0, {address(), dword("start"), dword("items")}},
    {"RJ", "change_folder_path", 0, {address(), byte("direction"), block("uid")}},
    {"RK", "get_total_number_of_items", 0, {address()}},
    {"RL", "play_item", 0, {address(), byte("scope"), block("uid")}},
    {"RM", "get_player_list", 0, {address(), byte("start"), byte("items")}},
    {"RN", "get_playback_state", 0, {address()}},
    {"RO", "get_nowplaying_list", 0, {address(), dword("start"), dword("items")}},
    {"RP", "set_browsed_player", 0, {address(), word("player")}},
    {"RQ", "set_addressed_player", 0, {address(), word("player")}},
    {"RV", "cancel_browsing", 0, {address()}},
    {"RZA", "connect_bip", 0, {address(), dword("psm")}},
    {"RZB", "get_element_attribute", 0, {address(), dword("count"), block("ids")}},
    {"RZC", "get_linked_thumbnail", 0, {address(), block("handle"), block("path")}},
    {"RZD",
     "get_image",
     0,
     {address(), dword("max_size"), block("handle"), block("encoding"), block("pixel"), block("path")}},
};

constexpr Message kEvents[] = {
    {"RA", "onHandlePassthroughRsp", 4, {byte("key"), byte("state")}},
    {"RB", "onHandleGroupNavigationRsp", 4, {byte("key"), byte("state")}},
    {"RC", "onConnectionStateChanged", 14, {byte("connected"), address()}},
    {"RD", "onGetRcFeatures", 14, {address(), byte("features"), dword("psm")}},
    {"RE", "onSetPlayerAppSettingRsp", 14, {address(), byte("accepted")}},
    {"RF", "onHandlePlayerAppSetting", 16, {address(), block("setting", &kSettingValues)}},
    {"RG", "onHandlePlayerAppSettingChanged", 16, {address(), block("settings", &kSettingsChanged)}},
    {"RH", "onHandleSetAbsVolume", 16, {address(), byte("volume"), byte("label")}},
    {"RI", "onHandleRegisterNotificationAbsVol", 14, {address(), byte("label")}},
    {"RJ", "onHandleTrackChanged", 16, {address(), block("track", &kTrack)}},
    {"RK", "onHandlePlayPositionChanged", 28, {address(), dword("length"), dword("position")}},
    {"RL", "onHandlePlayStatusChanged", 14, {address(), byte("play_status")}},
    {"RM",
     "onGetFolderItemsRsp",
     22,
     {address(), byte("status"), word("count"), block("item", &kItem)}},
    {"RN", "onChangeFolderPathRsp", 22, {address(), byte("status"), dword("count")}},
    {"RO", "onGetTotalNumberOfItemsRsp", 22, {address(), byte("status"), dword("count")}},
    {"RP", "onPlayItemRsp", 14, {address(), byte("status")}},
    {"RQ",
     "onGetPlayerItemsRsp",
     30,
     {word("items"), word("index"), word("id"), byte("type"), word("sub_type"), byte("play_status"),
      byte("feature_length"), of_length("features", Type::ShortBlock, "feature_length"),
      word("charset"), word("display_name")}},
    {"RR",
     "onSetBrowsedPlayerRsp",
     6,
     {address(), byte("status"), word("items"), word("charset"), byte("depth")}},
    {"RS", "onSetAddressedPlayerRsp", 2, {byte("status")}},
    {"RWA", "onNowPlayingContentChanged", 14, {address(), byte("state")}},
    {"RWB", "onAddressedPlayerChanged", 16, {address(), word("player")}},
    {"RWC", "onAvailablePlayerChanged", 14, {address(), byte("state")}},
    {"RWE", "onConnectBipResult", 14, {address(), byte("status")}},
    {"RWF", "onGetLinkedThumbnailResult", 14, {address(), byte("status")}},
    {"RWG", "onGetImageResult", 14, {address(), byte("status")}},
};

} // namespace

const Profile kAvrcp{"avrcp", "Remote control (AVRCP)", kCommands, kEvents};

} // namespace protocol
