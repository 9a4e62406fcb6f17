// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the remote control's events do. Most are passed on to the application.

#include "vym_avrcp_impl.h"

#include "bt_utils.h"
#include "vym_delegate.h"

#include <cstdio>
#include <cstring>

namespace {

using app = avrcp_callback_t;
using vym::pass_on;

constexpr int kRegisterShift = 8;
constexpr size_t kUidLen = AVRCP_UID_TEXT_LEN / 2;
constexpr size_t kLongestItem = 4096; // no event is longer

enum item_type_t : uint8_t { ITEM_PLAYER = 1, ITEM_FOLDER = 2, ITEM_MEDIA = 3 };

// Statuses of a changed path that are told the other way round; applications have come to rely on it.
enum path_status_t : uint8_t { PATH_STATUS_0 = 0, PATH_STATUS_4 = 4 };

std::atomic<avrcp_callback_t*> s_delegate; // the application's table

// Labels of the volume requests that wait for an answer: bits 0 to 7 to set it, bits 8 to 15 to be told
// of it. The receive thread adds while any thread answers.
std::atomic<uint32_t> s_labels;

template <class Slot, class... Values>
void tell(Slot slot, Values... values) {
    vym::notify(s_delegate.load(), slot, values...);
}

uint8_t take_label(int shift) {
    const uint32_t mask = uint32_t{UINT8_MAX} << shift;
    return static_cast<uint8_t>((s_labels.fetch_and(~mask) & mask) >> shift);
}

template <class... Values>
void drop(Values... /*values*/) {} // the application has no callback for it

// A label is added to one that was not answered, not put in its place.
void on_handle_set_abs_volume_cbk(bt_bdaddr_t address, uint8_t abs_vol, uint8_t label) {
    s_labels.fetch_or(label);
    tell(&app::handle_set_abs_volume_cb, address, abs_vol);
}

void on_handle_register_notification_abs_vol_cbk(bt_bdaddr_t address, uint8_t label) {
    s_labels.fetch_or(uint32_t{label} << kRegisterShift);
    tell(&app::handle_register_notification_abs_vol_cb, address);
}

void turn_into_uid(AVRCP_4IDStringStru* attribute) {
    uint8_t uid[kUidLen];
    for (size_t i = 0; i < kUidLen; ++i) {
        uid[i] = parse_byte(reinterpret_cast<char*>(attribute->value + 2 * i));
    }
    memset(attribute->value, 0, attribute->len);
    memcpy(attribute->value, uid, kUidLen);
    attribute->len = kUidLen;
}

void on_handle_track_changed_cbk(bt_bdaddr_t address, uint16_t data_len,
                                 AVRCP_Num4IDValueStru attributes) {
    AVRCP_4IDStringStru* first = attributes.id_value;
    if (first != nullptr && first->attr_id == 0) {
        if (first->value == nullptr) {
            return; // announced and not there: nothing to tell
        }
        turn_into_uid(first);
    }
    tell(&app::handle_track_changed_cb, address, data_len, attributes);
}

// An item in room of its own, whole however few bytes came.
class item_room {
public:
    item_room(const uint8_t* bytes, size_t len) : m_len(len < kLongestItem ? len : kLongestItem) {
        memcpy(m_bytes, bytes, m_len);
    }

    template <class Item>
    Item* as() {
        return reinterpret_cast<Item*>(m_bytes);
    }

    // The server's number of attributes is cut to those of which something came.
    btrc_item_media_t* as_media() {
        auto* media = as<btrc_item_media_t>();
        const size_t bytes = m_len > sizeof *media ? m_len - sizeof *media : 0;
        const auto there = static_cast<int>((bytes + kAttribute - 1) / kAttribute);
        if (media->num_attrs < 0 || media->num_attrs > there) {
            media->num_attrs = there;
        }
        return media;
    }

private:
    static constexpr size_t kAttribute = sizeof(btrc_element_attr_val_t);

    size_t m_len;
    uint8_t m_bytes[kLongestItem + kAttribute] = {}; // the last attribute may be cut
};

void on_get_folder_items_rsp_cbk(bt_bdaddr_t address, uint8_t status, uint16_t count,
                                 uint16_t items_data_len, uint8_t* items_data) {
    printf("%s, status is %d, count is %d, items_data_len is %d.\r\n", __func__, status, count,
           items_data_len);
    if (items_data_len == 0) {
        return;
    }
    item_room item(items_data + 1, size_t{items_data_len} - 1);
    switch (items_data[0]) {
    case ITEM_PLAYER:
        tell(&app::get_player_item_cb, address, status, item.as<btrc_item_player_t>());
        break;
    case ITEM_FOLDER:
        tell(&app::get_folder_item_cb, address, status, item.as<btrc_item_folder_t>());
        break;
    case ITEM_MEDIA:
        tell(&app::get_media_item_cb, address, status, item.as_media());
        break;
    default:
        break;
    }
}

void on_change_folder_path_rsp_cbk(bt_bdaddr_t address, uint8_t status, int count) {
    if (status == PATH_STATUS_0) {
        status = PATH_STATUS_4;
    } else if (status == PATH_STATUS_4) {
        status = PATH_STATUS_0;
    }
    tell(&app::change_folder_path_rsp_cb, address, status, count);
}

avrcp_impl_callback_t s_handlers = {
    pass_on<s_delegate, &app::handle_passthrough_rsp_cb>::handler,
    drop, // group navigation
    pass_on<s_delegate, &app::connection_state_changed_cb>::handler,
    pass_on<s_delegate, &app::get_rc_features_cb>::handler,
    drop, // player setting set
    pass_on<s_delegate, &app::handle_player_app_setting_cb>::handler,
    pass_on<s_delegate, &app::handle_player_app_setting_changed_cb>::handler,
    on_handle_set_abs_volume_cbk,
    on_handle_register_notification_abs_vol_cbk,
    on_handle_track_changed_cbk,
    pass_on<s_delegate, &app::handle_play_position_changed_cb>::handler,
    pass_on<s_delegate, &app::handle_play_status_changed_cb>::handler,
    on_get_folder_items_rsp_cbk,
    on_change_folder_path_rsp_cbk,
    pass_on<s_delegate, &app::get_total_number_of_items_rsp_cb>::handler,
    pass_on<s_delegate, &app::play_item_rsp_cb>::handler,
    drop, // player items
    drop, // browsed player set
    drop, // addressed player set
    pass_on<s_delegate, &app::now_playing_content_changed_cb>::handler,
    pass_on<s_delegate, &app::addressed_player_changed_cb>::handler,
    pass_on<s_delegate, &app::available_player_changed_cb>::handler,
    pass_on<s_delegate, &app::connect_bip_result_cb>::handler,
    pass_on<s_delegate, &app::get_linked_thumbnail_result_cb>::handler,
    pass_on<s_delegate, &app::get_image_result_cb>::handler,
};

} // namespace

extern "C" {

avrcp_impl_callback_t* vym_avrcp_handlers(void) {
    return &s_handlers;
}

void vym_avrcp_set_delegate(avrcp_callback_t* cbk) {
    s_delegate = cbk;
}

void vym_avrcp_forget_labels(void) {
    s_labels = 0;
}

uint8_t vym_avrcp_take_abs_vol_label(void) {
    return take_label(0);
}

uint8_t vym_avrcp_take_register_label(void) {
    return take_label(kRegisterShift);
}

} // extern "C"
