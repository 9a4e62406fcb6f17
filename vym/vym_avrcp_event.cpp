// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_avrcp_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = avrcp_impl_callback_t;
using namespace vym;

std::atomic<avrcp_event_parser_t*> s_evt_parser;

// A list's counts promise nothing: what lies beyond its block is 0.
uint8_t byte_at(const unescaped_block& list, size_t i) {
    return i < list.len ? list.data[i] : uint8_t{0};
}

// An empty list comes as no block, or as one that starts with 0 or with the character.
bool is_empty(const unescaped_block& list) {
    return byte_at(list, 0) == 0 || byte_at(list, 0) == '0';
}

// RF: the setting asked for, how many values, the values.
bool RF_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    unescaped_block list(in, in.uint16());
    if (!list.whole) {
        return false;
    }
    AVRCP_IDPairStru values[UINT8_MAX];
    AVRCP_NumIDPairStru settings = {0, nullptr};
    if (!is_empty(list)) {
        settings = {byte_at(list, 1), values};
        for (uint8_t i = 0; i < settings.num; ++i) {
            values[i] = {i, byte_at(list, size_t{2} + i)};
        }
    }
    const uint8_t current_id = settings.id_value != nullptr ? list.data[0] : uint8_t{0};
    notify(cbk, &callbacks::handle_player_app_setting_cb, address, list.len, current_id, settings);
    return true;
}

// RG: how many settings, all their identifiers, all their values.
bool RG_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    unescaped_block list(in, in.uint16());
    if (!list.whole) {
        return false;
    }
    AVRCP_IDPairStru pairs[UINT8_MAX];
    AVRCP_NumIDPairStru settings = {0, nullptr};
    if (!is_empty(list)) {
        settings = {list.data[0], pairs};
        for (size_t i = 0; i < settings.num; ++i) {
            pairs[i] = {byte_at(list, 1 + i), byte_at(list, 1 + settings.num + i)};
        }
    }
    notify(cbk, &callbacks::handle_player_app_setting_changed_cb, address, list.len, settings);
    return true;
}

// The attributes of a track: their number in one hexadecimal digit, as many digits with identifiers,
// and the values, texts ended by NULs.
class track_attributes {
public:
    explicit track_attributes(unescaped_block& list) {
        if (is_empty(list)) {
            return;
        }
        const size_t announced = digit_at(list, 0);
        size_t pos = 1 + announced;
        for (size_t i = 0; i < announced && 1 + i < list.len; ++i, ++m_num) {
            m_entries[i] = {digit_at(list, 1 + i), 0, nullptr};
            pos += take_value(i, list, pos);
        }
    }

    AVRCP_Num4IDValueStru list() {
        return {static_cast<uint8_t>(m_num), m_num > 0 ? m_entries : nullptr};
    }

private:
    static constexpr size_t kMost = 0xF;
    static constexpr size_t kRoom = AVRCP_UID_TEXT_LEN + 1;

    static uint8_t digit_at(const unescaped_block& list, size_t i) {
        return parse_char_with_base(reinterpret_cast<char*>(list.data + i), 16);
    }

    // The text at `pos`, if its NUL is there; returns how long it is. A short one moves to room in
    // which a UID fits, a long one stays in the block.
    size_t take_value(size_t i, unescaped_block& list, size_t pos) {
        const size_t left = pos < list.len ? list.len - pos : 0;
        uint8_t* text = list.data + pos;
        const void* nul = left > 0 ? memchr(text, 0, left) : nullptr;
        if (nul == nullptr) {
            return 0;
        }
        const auto len = static_cast<size_t>(static_cast<const uint8_t*>(nul) - text) + 1;
        if (len < kRoom) {
            memcpy(m_short_values[i], text, len);
            text = m_short_values[i];
        }
        m_entries[i].len = static_cast<uint16_t>(len);
        m_entries[i].value = text;
        return len;
    }

    size_t m_num = 0;
    AVRCP_4IDStringStru m_entries[kMost];
    uint8_t m_short_values[kMost][kRoom] = {};
};

bool RJ_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    unescaped_block list(in, in.uint16());
    if (!list.whole) {
        return false;
    }
    track_attributes attributes(list);
    notify(cbk, &callbacks::handle_track_changed_cb, address, list.len, attributes.list());
    return true;
}

// RM: one item behind its type.
bool RM_parse(field_reader& in, callbacks* cbk) {
    const bt_bdaddr_t address = in.address();
    const uint8_t status = in.byte();
    const uint16_t count = in.uint16();
    unescaped_block items(in, in.uint16());
    if (items.whole) {
        notify(cbk, &callbacks::get_folder_items_rsp_cb, address, status, count, items.len, items.data);
    }
    return items.whole;
}

bool RQ_parse(field_reader& in, callbacks* cbk) {
    const uint16_t num_of_items = in.uint16();
    const uint16_t idx = in.uint16();
    const uint16_t id = in.uint16();
    const uint8_t type = in.byte();
    const uint16_t sub_type = in.uint16();
    const uint8_t play_status = in.byte();
    unescaped_block mask(in, in.byte());
    if (!mask.whole) {
        return false;
    }
    const uint16_t charset = in.uint16();
    const uint16_t display_name = in.uint16();
    notify(cbk, &callbacks::get_player_items_rsp_cb, num_of_items, idx, id, type, sub_type, play_status,
           static_cast<uint8_t>(mask.len), mask.data, charset, display_name);
    return true;
}

// RR: the player, its status and its character set are not told.
bool RR_parse(field_reader& in, callbacks* cbk) {
    in.address();
    in.byte();
    const uint16_t items = in.uint16();
    in.uint16();
    const uint8_t depth = in.byte();
    notify(cbk, &callbacks::set_browsed_player_rsp_cb, items, depth);
    return true;
}

using body = bodies<callbacks>;

// RD and RR have a minimum below their fields: a server may end them early, the rest is 0 then.
constexpr event_row kEvents[] = {
    plain<&callbacks::handle_passthrough_rsp_cb, byte, byte>("RA", "onHandlePassthroughRsp", 4),
    plain<&callbacks::handle_group_navigation_rsp_cb, byte, byte>("RB", "onHandleGroupNavigationRsp",
                                                                  4),
    plain<&callbacks::connection_state_changed_cb, byte, address>("RC", "onConnectionStateChanged", 14),
    plain<&callbacks::get_rc_features_cb, address, byte, int32>("RD", "onGetRcFeatures", 14),
    plain<&callbacks::set_player_app_setting_rsp_cb, address, byte>("RE", "onSetPlayerAppSettingRsp",
                                                                    14),
    body::with_tail<RF_parse>("RF", "onHandlePlayerAppSetting", 16),
    body::with_tail<RG_parse>("RG", "onHandlePlayerAppSettingChanged", 16),
    plain<&callbacks::handle_set_abs_volume_cb, address, byte, byte>("RH", "onHandleSetAbsVolume", 16),
    plain<&callbacks::handle_register_notification_abs_vol_cb, address, byte>(
        "RI", "onHandleRegisterNotificationAbsVol", 14),
    body::with_tail<RJ_parse>("RJ", "onHandleTrackChanged", 16),
    plain<&callbacks::handle_play_position_changed_cb, address, int32, int32>(
        "RK", "onHandlePlayPositionChanged", 28),
    plain<&callbacks::handle_play_status_changed_cb, address, byte>("RL", "onHandlePlayStatusChanged",
                                                                    14),
    body::with_tail<RM_parse>("RM", "onGetFolderItemsRsp", 22),
    plain<&callbacks::change_folder_path_rsp_cb, address, byte, int32>("RN", "onChangeFolderPathRsp",
                                                                       22),
    plain<&callbacks::get_total_number_of_items_rsp_cb, address, byte, int32>(
        "RO", "onGetTotalNumberOfItemsRsp", 22),
    plain<&callbacks::play_item_rsp_cb, address, byte>("RP", "onPlayItemRsp", 14),
    body::with_tail<RQ_parse>("RQ", "onGetPlayerItemsRsp", 30),
    body::fixed<RR_parse>("RR", "onSetBrowsedPlayerRsp", 6, 24),
    plain<&callbacks::set_addressed_player_rsp_cb, byte>("RS", "onSetAddressedPlayerRsp", 2),
    plain<&callbacks::now_playing_content_changed_cb, address, byte>("RWA",
                                                                     "onNowPlayingContentChanged", 14),
    plain<&callbacks::addressed_player_changed_cb, address, uint16>("RWB", "onAddressedPlayerChanged",
                                                                    16),
    plain<&callbacks::available_player_changed_cb, address, byte>("RWC", "onAvailablePlayerChanged",
                                                                  14),
    plain<&callbacks::connect_bip_result_cb, address, byte>("RWE", "onConnectBipResult", 14),
    plain<&callbacks::get_linked_thumbnail_result_cb, address, byte>("RWF",
                                                                     "onGetLinkedThumbnailResult", 14),
    plain<&callbacks::get_image_result_cb, address, byte>("RWG", "onGetImageResult", 14),
};

} // namespace

extern "C" {

event_parser_t* create_avrcp_event_parser(avrcp_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, avrcp_event_parser_t>(cb);
}

void destroy_avrcp_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
