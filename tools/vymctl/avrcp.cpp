// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <algorithm>
#include <vym/vym_avrcp.h>

namespace vymctl {

#define ITEM_STATUS "status=success:4"

// Records. Lists are shown as "1=Title" or {"id":1,"value":"Title"}.

template <>
struct slot::Record<AVRCP_NumIDPairStru> {
    static constexpr const char* kFields = "settings=list";
    static void add(Collector& to, const AVRCP_NumIDPairStru& settings) {
        Json list = Json::array();
        for (size_t i = 0; settings.id_value != nullptr && i < settings.num; ++i) {
            list.push_back(
                {{"id", settings.id_value[i].attr_id}, {"value", settings.id_value[i].value}});
        }
        to.add(std::move(list));
    }
};

namespace {

constexpr const char* kAttributeNames[] = {"uid",    "title", "artist",      "album", "track",
                                           "tracks", "genre", "duration_ms", "cover"};

std::string attribute_name(uint32_t id) {
    return id < std::size(kAttributeNames) ? kAttributeNames[id] : "attribute_" + std::to_string(id);
}

/// A text that fills its array when it has no NUL.
template <size_t Size>
std::string text_of(const uint8_t (&array)[Size]) {
    return {array, std::find(array, array + Size, 0)};
}

template <size_t Size>
std::string bytes_of(const uint8_t (&array)[Size]) {
    return {array, array + Size};
}

} // namespace

template <>
struct slot::Record<AVRCP_Num4IDValueStru> {
    static constexpr const char* kFields = "attributes=list";
    static void add(Collector& to, const AVRCP_Num4IDValueStru& track) {
        Json attributes = Json::object();
        for (size_t i = 0; track.id_value != nullptr && i < track.num; ++i) {
            const AVRCP_4IDStringStru& one = track.id_value[i];
            std::string value(reinterpret_cast<const char*>(one.value),
                              one.value == nullptr ? 0 : one.len);
            if (one.attr_id == 0) {
                value = to_hex(value);
            } else if (!value.empty() && value.back() == '\0') {
                value.pop_back();
            }
            attributes[attribute_name(one.attr_id)] = value;
        }
        to.add(std::move(attributes));
    }
};

template <>
struct slot::Record<btrc_item_player_t*> {
    static constexpr const char* kFields =
        "player major_type sub_type play_status features charset name=text";
    static void add(Collector& to, const btrc_item_player_t* item) {
        to.add(item->player_id);
        to.add(item->major_type);
        to.add(static_cast<int64_t>(item->sub_type));
        to.add(item->play_status);
        to.add(to_hex(bytes_of(item->features)));
        to.add(item->charset_id);
        to.add(text_of(item->name));
    }
};

template <>
struct slot::Record<btrc_item_folder_t*> {
    static constexpr const char* kFields = "uid=text type playable=no|yes charset name=text";
    static void add(Collector& to, const btrc_item_folder_t* item) {
        to.add(to_hex(bytes_of(item->uid)));
        to.add(item->type);
        to.add(item->playable);
        to.add(item->charset_id);
        to.add(text_of(item->name));
    }
};

template <>
struct slot::Record<btrc_item_media_t*> {
    static constexpr const char* kFields =
        "uid=text type=audio|video charset name=text attributes=list";
    static void add(Collector& to, const btrc_item_media_t* item) {
        to.add(to_hex(bytes_of(item->uid)));
        to.add(item->type);
        to.add(item->charset_id);
        to.add(text_of(item->name));
        Json attributes = Json::object();
        for (int i = 0; i < item->num_attrs; ++i) {
            attributes[attribute_name(item->p_attrs[i].attr_id)] = text_of(item->p_attrs[i].text);
        }
        to.add(std::move(attributes));
    }
};

namespace {

using callbacks = avrcp_callback_t;

#define KEY "state=released|pressed"

/// Bytes of identifiers that a function wants counted as well.
uint8_t* data_of(std::string& bytes) {
    return reinterpret_cast<uint8_t*>(bytes.data());
}

Outcome get_settings(bt_bdaddr_t address, std::string ids) {
    const size_t size = ids.size();
    return status_outcome(vym_avrcp_get_player_app_setting(address, static_cast<uint8_t>(size),
                                                           static_cast<uint16_t>(size), data_of(ids)));
}

Outcome set_settings(bt_bdaddr_t address, const std::string& pairs) {
    if (pairs.size() % 2 != 0 || pairs.size() > 510) {
        throw Usage("settings are pairs of bytes, identifier and value, such as 0202");
    }
    std::vector<AVRCP_IDPairStru> list;
    for (size_t i = 0; i < pairs.size(); i += 2) {
        list.push_back({static_cast<uint8_t>(pairs[i]), static_cast<uint8_t>(pairs[i + 1])});
    }
    return status_outcome(
        vym_avrcp_set_player_app_setting(address, {static_cast<uint8_t>(list.size()), list.data()}));
}

/// Each identifier has four bytes on the way, the highest first.
Outcome get_attributes(bt_bdaddr_t address, std::string ids) {
    return status_outcome(vym_avrcp_get_element_attribute(
        address, static_cast<int>(ids.size() / 4), static_cast<uint16_t>(ids.size()), data_of(ids)));
}

/// The server writes it; where it is, is the answer.
Outcome picture(bt_status_t status, const std::string& path) {
    Outcome outcome = status_outcome(status);
    outcome.value = Json{{"file", path}};
    return outcome;
}

Outcome thumbnail(bt_bdaddr_t address, std::string handle, std::string path) {
    return picture(vym_avrcp_get_linked_thumbnail(address, static_cast<uint16_t>(handle.size()),
                                                  data_of(handle), static_cast<uint16_t>(path.size()),
                                                  data_of(path)),
                   path);
}

Outcome image(bt_bdaddr_t address, std::string handle, std::string path, int most, std::string encoding,
              std::string pixels) {
    const auto size = [](const std::string& text) { return static_cast<uint16_t>(text.size()); };
    return picture(vym_avrcp_get_image(address, most, size(handle), data_of(handle), size(encoding),
                                       data_of(encoding), size(pixels), data_of(pixels), size(path),
                                       data_of(path)),
                   path);
}

std::vector<Verb> key_verbs() {
    return {
        verb(
            "init", "vym_avrcp_init", [] { restart("avrcp"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_avrcp_done", [] { halt("avrcp"); }, "", "stops the module")
            .alone(),
        verb("play", VYMCTL_CALL(vym_avrcp_play), "address", "starts the music"),
        verb("pause", VYMCTL_CALL(vym_avrcp_pause), "address", "pauses it"),
        verb("stop", VYMCTL_CALL(vym_avrcp_stop), "address", "stops it"),
        verb("next", VYMCTL_CALL(vym_avrcp_forward), "address", "goes to the next track"),
        verb("previous", VYMCTL_CALL(vym_avrcp_backward), "address", "goes to the track before"),
        verb("fast-forward", VYMCTL_CALL(vym_avrcp_fast_forward), "address " KEY,
             "holds the key down, or lets it go"),
        verb("rewind", VYMCTL_CALL(vym_avrcp_rewind), "address " KEY,
             "holds the key down, or lets it go"),
        verb("next-group", VYMCTL_CALL(vym_avrcp_next_group), "address", "goes to the next group"),
        verb("previous-group", VYMCTL_CALL(vym_avrcp_previous_group), "address",
             "goes to the group before"),
        verb("settings", "vym_avrcp_get_player_app_setting", &get_settings, "address ids?01020304",
             "asks for settings of the player", "avrcp.settings"),
        verb("set-settings", "vym_avrcp_set_player_app_setting", &set_settings, "address settings",
             "changes settings: pairs of bytes, identifier and value"),
        verb("volume-reply", VYMCTL_CALL(vym_avrcp_send_abs_vol_rsp), "address volume=0..127",
             "answers avrcp.set-volume"),
        verb("volume-changed", VYMCTL_CALL(vym_avrcp_send_register_abs_val_rsp),
             "address type=changed:13|interim:15 volume=0..127", "answers avrcp.volume-wanted"),
    };
}

std::vector<Verb> browsing_verbs() {
    return {
        verb("folder", VYMCTL_CALL(vym_avrcp_get_folder_list),
             "address start=0..2147483647?0 count=0..2147483647?20",
             "asks for items of the current folder"),
        verb("change-folder", VYMCTL_CALL(vym_avrcp_change_folder_path),
             "address direction=up|down uid?0000000000000000", "goes to another folder",
             "avrcp.folder-changed"),
        verb("count", VYMCTL_CALL(vym_avrcp_get_total_number_of_items), "address",
             "asks for the size of the current folder", "avrcp.count"),
        verb("play-item", VYMCTL_CALL(vym_avrcp_play_item),
             "address scope=players|folders|search|now-playing uid", "plays an item",
             "avrcp.item-played"),
        verb("players", VYMCTL_CALL(vym_avrcp_get_player_list), "address start?0 count?20",
             "asks for the players of the device"),
        verb("now-playing", VYMCTL_CALL(vym_avrcp_get_nowplaying_list),
             "address start=0..2147483647?0 count=0..2147483647?20", "asks for the list being played"),
        verb("set-player", VYMCTL_CALL(vym_avrcp_set_addressed_player), "address player",
             "chooses the player that the keys go to"),
        verb("cancel-browsing", VYMCTL_CALL(vym_avrcp_cancel_browsing), "address",
             "ends a list that is being sent"),
        verb("cover-connect", VYMCTL_CALL(vym_avrcp_connect_bip), "address psm=0..65535",
             "connects to the player's cover art", "avrcp.cover-connected"),
        verb("attributes", "vym_avrcp_get_element_attribute", &get_attributes,
             "address ids?000000010000000200000003", "asks for attributes of the track: 4 bytes each"),
        verb("thumbnail", "vym_avrcp_get_linked_thumbnail", &thumbnail, "address handle=text path=text",
             "has the server write a small picture to a file", "avrcp.thumbnail"),
        verb("image", "vym_avrcp_get_image", &image,
             "address handle=text path=text most=0..2147483647?1000000 encoding=text?JPEG "
             "pixels=text?200*200",
             "has the server write a picture to a file", "avrcp.image"),
        verb("version", VYMCTL_CALL(convert_feature_to_avrcp_version), "features=0..255",
             "shows the version that avrcp.features stands for")
            .alone(),
    };
}

std::vector<Verb> verbs() {
    std::vector<Verb> all = key_verbs();
    std::vector<Verb> more = browsing_verbs();
    std::move(more.begin(), more.end(), std::back_inserter(all));
    return all;
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::handle_passthrough_rsp_cb>("avrcp.key", "key state=pressed|released"),
        on<&callbacks::connection_state_changed_cb>("avrcp.connection",
                                                    "state=disconnected|connected address"),
        on<&callbacks::get_rc_features_cb>("avrcp.features", "address features cover_psm"),
        on<&callbacks::handle_player_app_setting_cb>("avrcp.settings", "address length current"),
        on<&callbacks::handle_player_app_setting_changed_cb>("avrcp.settings-changed",
                                                             "address length"),
        on<&callbacks::handle_set_abs_volume_cb>("avrcp.set-volume", "address volume"),
        on<&callbacks::handle_register_notification_abs_vol_cb>("avrcp.volume-wanted", "address"),
        on<&callbacks::handle_track_changed_cb>("avrcp.track", "address length"),
        on<&callbacks::handle_play_position_changed_cb>("avrcp.position",
                                                        "address length_ms position_ms"),
        on<&callbacks::handle_play_status_changed_cb>(
            "avrcp.play", "address state=stopped|playing|paused|seeking-forward|seeking-backward"),
        on<&callbacks::change_folder_path_rsp_cb>("avrcp.folder-changed",
                                                  "address " VYMCTL_CODE " count"),
        on<&callbacks::get_total_number_of_items_rsp_cb>("avrcp.count",
                                                         "address " ITEM_STATUS " count"),
        on<&callbacks::play_item_rsp_cb>("avrcp.item-played", "address " ITEM_STATUS),
        on<&callbacks::get_player_item_cb>("avrcp.player", "address " ITEM_STATUS),
        on<&callbacks::get_folder_item_cb>("avrcp.folder", "address " ITEM_STATUS),
        on<&callbacks::get_media_item_cb>("avrcp.item", "address " ITEM_STATUS),
        on<&callbacks::now_playing_content_changed_cb>("avrcp.now-playing-changed", "address state"),
        on<&callbacks::addressed_player_changed_cb>("avrcp.player-changed", "address player"),
        on<&callbacks::available_player_changed_cb>("avrcp.players-changed", "address state"),
        on<&callbacks::connect_bip_result_cb>("avrcp.cover-connected", "address " VYMCTL_CODE),
        on<&callbacks::get_linked_thumbnail_result_cb>("avrcp.thumbnail", "address " VYMCTL_CODE),
        on<&callbacks::get_image_result_cb>("avrcp.image", "address " VYMCTL_CODE),
    };
}

} // namespace

Profile avrcp_profile() {
    return make_profile<callbacks, vym_avrcp_init, vym_avrcp_done>(
        "avrcp", "Remote control of a player (AVRCP)", verbs(), events());
}

} // namespace vymctl
