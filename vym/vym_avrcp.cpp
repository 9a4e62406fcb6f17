// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_avrcp.h"

#include "vym_avrcp_event.h"
#include "vym_avrcp_impl.h"
#include "vym_command.h"
#include "vym_sdk.h"

#include <cstdio>

namespace {

using vym::block;
using vym::hex2;
using vym::hex4;
using vym::hex8;
using vym::send_command;
using vym::tag;

// Operation identifiers of the AV/C panel subunit.
enum key_t : uint8_t {
    KEY_PLAY = 0x44,
    KEY_STOP = 0x45,
    KEY_PAUSE = 0x46,
    KEY_REWIND = 0x48,
    KEY_FAST_FORWARD = 0x49,
    KEY_FORWARD = 0x4B,
    KEY_BACKWARD = 0x4C,
};

// What is done to a key, as the wire has it. The API's held keys have it the other way round: there 0
// is the release.
enum key_action_t : uint8_t { KEY_PRESS = 0, KEY_RELEASE = 1 };

// Vendor-unique operations of group navigation.
enum group_t : uint8_t { GROUP_NEXT = 0, GROUP_PREVIOUS = 1 };

event_parser_t* s_avrcp_event_parser;

bt_status_t vym_avrcp_send_passthrough_cmd(bt_bdaddr_t address, uint8_t key_code, uint8_t key_state) {
    return send_command<tag("RC")>(address, hex2(key_code), hex2(key_state));
}

bt_status_t vym_avrcp_send_group_navigation_cmd(bt_bdaddr_t address, uint8_t key_vendor,
                                                uint8_t key_state) {
    return send_command<tag("RD")>(address, hex2(key_vendor), hex2(key_state));
}

// Keys answer with success whatever became of them: a player that does not react is all the same.
bt_status_t press_and_release(bt_bdaddr_t address, key_t key) {
    vym_avrcp_send_passthrough_cmd(address, key, KEY_PRESS);
    vym_avrcp_send_passthrough_cmd(address, key, KEY_RELEASE);
    return BT_STATUS_SUCCESS;
}

bt_status_t navigate(bt_bdaddr_t address, group_t group) {
    vym_avrcp_send_group_navigation_cmd(address, group, KEY_PRESS);
    vym_avrcp_send_group_navigation_cmd(address, group, KEY_RELEASE);
    return BT_STATUS_SUCCESS;
}

} // namespace

extern "C" {

void vym_avrcp_init(avrcp_callback_t* cbk) {
    vym_avrcp_forget_labels();
    vym_avrcp_set_delegate(cbk);
    vym_profile_start(&s_avrcp_event_parser, create_avrcp_event_parser(vym_avrcp_handlers()),
                      destroy_avrcp_event_parser);
}

void vym_avrcp_done(void) {
    vym_profile_stop(&s_avrcp_event_parser, destroy_avrcp_event_parser);
}

bt_status_t vym_avrcp_play(bt_bdaddr_t address) {
    return press_and_release(address, KEY_PLAY);
}

bt_status_t vym_avrcp_pause(bt_bdaddr_t address) {
    return press_and_release(address, KEY_PAUSE);
}

bt_status_t vym_avrcp_stop(bt_bdaddr_t address) {
    return press_and_release(address, KEY_STOP);
}

bt_status_t vym_avrcp_forward(bt_bdaddr_t address) {
    return press_and_release(address, KEY_FORWARD);
}

bt_status_t vym_avrcp_backward(bt_bdaddr_t address) {
    return press_and_release(address, KEY_BACKWARD);
}

// The lines of the held keys have always looked like this: one without a line end and before the
// command, the other with one and after it.
bt_status_t vym_avrcp_fast_forward(bt_bdaddr_t address, uint8_t key_state) {
    const bool held = key_state != 0;
    printf(held ? "fast forward start ...." : "fast forward stoped ....");
    vym_avrcp_send_passthrough_cmd(address, KEY_FAST_FORWARD, held ? KEY_PRESS : KEY_RELEASE);
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_avrcp_rewind(bt_bdaddr_t address, uint8_t key_state) {
    const bool held = key_state != 0;
    vym_avrcp_send_passthrough_cmd(address, KEY_REWIND, held ? KEY_PRESS : KEY_RELEASE);
    puts(held ? "rewind start...\r" : "rewind stoped ...\r");
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_avrcp_next_group(bt_bdaddr_t address) {
    return navigate(address, GROUP_NEXT);
}

bt_status_t vym_avrcp_previous_group(bt_bdaddr_t address) {
    return navigate(address, GROUP_PREVIOUS);
}

bt_status_t vym_avrcp_get_player_app_setting(bt_bdaddr_t address, uint8_t attrib_num, uint16_t data_len,
                                             uint8_t* data) {
    return send_command<tag("RE")>(address, hex2(attrib_num), block(data, data_len));
}

bt_status_t vym_avrcp_set_player_app_setting(bt_bdaddr_t address, struct AVRCP_NumIDPairStru settings) {
    uint8_t ids_then_values[2 * UINT8_MAX];
    const size_t num = settings.id_value != nullptr ? settings.num : 0;
    for (size_t i = 0; i < num; ++i) {
        ids_then_values[i] = settings.id_value[i].attr_id;
        ids_then_values[num + i] = settings.id_value[i].value;
    }
    return send_command<tag("RF")>(address, hex2(settings.num),
                                   block(ids_then_values, static_cast<uint32_t>(2 * num)));
}

bt_status_t vym_avrcp_send_abs_vol_rsp(bt_bdaddr_t address, uint8_t abs_vol) {
    return send_command<tag("RG")>(address, hex2(abs_vol), hex2(vym_avrcp_take_abs_vol_label()));
}

bt_status_t vym_avrcp_send_register_abs_val_rsp(bt_bdaddr_t address, uint8_t rsp_type,
                                                uint8_t abs_vol) {
    return send_command<tag("RH")>(address, hex2(rsp_type), hex2(abs_vol),
                                   hex2(vym_avrcp_take_register_label()));
}

bt_status_t vym_avrcp_get_folder_list(bt_bdaddr_t address, int start, int items) {
    return send_command<tag("RI")>(address, hex8(start), hex8(items));
}

bt_status_t vym_avrcp_change_folder_path(bt_bdaddr_t address, uint8_t direction, uint16_t uid_len,
                                         uint8_t* uid) {
    return send_command<tag("RJ")>(address, hex2(direction), block(uid, uid_len));
}

bt_status_t vym_avrcp_get_total_number_of_items(bt_bdaddr_t address) {
    return send_command<tag("RK")>(address);
}

bt_status_t vym_avrcp_play_item(bt_bdaddr_t address, uint8_t scope, uint16_t uid_len, uint8_t* uid) {
    return send_command<tag("RL")>(address, hex2(scope), block(uid, uid_len));
}

bt_status_t vym_avrcp_get_player_list(bt_bdaddr_t address, uint8_t start, uint8_t items) {
    send_command<tag("RM")>(address, hex2(start), hex2(items));
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_avrcp_get_nowplaying_list(bt_bdaddr_t address, int start, int items) {
    send_command<tag("RO")>(address, hex8(start), hex8(items));
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_avrcp_set_addressed_player(bt_bdaddr_t address, uint16_t player_id) {
    send_command<tag("RQ")>(address, hex4(player_id));
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_avrcp_cancel_browsing(bt_bdaddr_t address) {
    return send_command<tag("RV")>(address);
}

bt_status_t vym_avrcp_connect_bip(bt_bdaddr_t address, int l2cap_psm) {
    return send_command<tag("RZA")>(address, hex8(l2cap_psm));
}

bt_status_t vym_avrcp_get_element_attribute(bt_bdaddr_t address, int num_attributes,
                                            uint16_t attrib_ids_len, uint8_t* attrib_ids) {
    return send_command<tag("RZB")>(address, hex8(num_attributes), block(attrib_ids, attrib_ids_len));
}

bt_status_t vym_avrcp_get_linked_thumbnail(bt_bdaddr_t address, uint16_t img_handle_len,
                                           uint8_t* img_handle, uint16_t storage_path_len,
                                           uint8_t* storage_path) {
    return send_command<tag("RZC")>(address, block(img_handle, img_handle_len),
                                    block(storage_path, storage_path_len));
}

bt_status_t vym_avrcp_get_image(bt_bdaddr_t address, long maxSize, uint16_t img_handle_len,
                                uint8_t* img_handle, uint16_t encoding_len, uint8_t* encoding,
                                uint16_t pixel_len, uint8_t* pixel, uint16_t storage_path_len,
                                uint8_t* storage_path) {
    return send_command<tag("RZD")>(address, hex8(static_cast<uint32_t>(maxSize)),
                                    block(img_handle, img_handle_len), block(encoding, encoding_len),
                                    block(pixel, pixel_len), block(storage_path, storage_path_len));
}

avrcp_version_t convert_feature_to_avrcp_version(uint8_t feature) {
    const int version = feature >> 5;
    // 17 would be 1.3 as well; three bits do not reach it.
    return version == 17 ? AVRCP_1_3 : static_cast<avrcp_version_t>(version);
}

bt_status_t vym_avrcp_connect_impl(bt_bdaddr_t address) {
    return send_command<tag("RA")>(address);
}

bt_status_t vym_avrcp_disconnect_impl(bt_bdaddr_t address) {
    return send_command<tag("RB")>(address);
}

bt_status_t vym_avrcp_get_playback_state_impl(bt_bdaddr_t address) {
    return send_command<tag("RN")>(address);
}

bt_status_t vym_avrcp_set_browsed_player_impl(bt_bdaddr_t address, uint16_t player_id) {
    return send_command<tag("RP")>(address, hex4(player_id));
}

} // extern "C"
