// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the remote control's API and its events share.
#ifndef VYM_AVRCP_IMPL_H
#define VYM_AVRCP_IMPL_H

#include "vym_avrcp.h"

extern "C" {

// Characters of a track's UID as text.
enum { AVRCP_UID_TEXT_LEN = 16 };

// The module's handlers, in the order of the event table. They run on the receive thread.
typedef struct tag_avrcp_impl_callback {
    void (*handle_passthrough_rsp_cb)(uint8_t id, uint8_t key_state);
    void (*handle_group_navigation_rsp_cb)(uint8_t id, uint8_t key_state);
    void (*connection_state_changed_cb)(uint8_t connected, bt_bdaddr_t address);
    void (*get_rc_features_cb)(bt_bdaddr_t address, uint8_t features, int ca_psm);
    void (*set_player_app_setting_rsp_cb)(bt_bdaddr_t address, uint8_t accepted);
    void (*handle_player_app_setting_cb)(bt_bdaddr_t address, uint16_t data_len, uint8_t current_id,
                                         AVRCP_NumIDPairStru settings);
    void (*handle_player_app_setting_changed_cb)(bt_bdaddr_t address, uint16_t data_len,
                                                 AVRCP_NumIDPairStru settings);
    void (*handle_set_abs_volume_cb)(bt_bdaddr_t address, uint8_t abs_vol, uint8_t label);
    void (*handle_register_notification_abs_vol_cb)(bt_bdaddr_t address, uint8_t label);
    // Each value that is not NULL has room for a UID's text and its NUL, zeroed behind `len`.
    void (*handle_track_changed_cb)(bt_bdaddr_t address, uint16_t data_len,
                                    AVRCP_Num4IDValueStru attributes);
    void (*handle_play_position_changed_cb)(bt_bdaddr_t address, int song_len, int curr_song_position);
    void (*handle_play_status_changed_cb)(bt_bdaddr_t address, uint8_t play_status);
    void (*get_folder_items_rsp_cb)(bt_bdaddr_t address, uint8_t status, uint16_t count,
                                    uint16_t items_data_len, uint8_t* items_data);
    void (*change_folder_path_rsp_cb)(bt_bdaddr_t address, uint8_t status, int count);
    void (*get_total_number_of_items_rsp_cb)(bt_bdaddr_t address, uint8_t status, int count);
    void (*play_item_rsp_cb)(bt_bdaddr_t address, uint8_t status);
    void (*get_player_items_rsp_cb)(uint16_t num_of_items, uint16_t idx, uint16_t id, uint8_t type,
                                    uint16_t sub_type, uint8_t play_status,
                                    uint8_t feature_bit_mask_len, uint8_t* feature_bit_mask,
                                    uint16_t charset, uint16_t display_name);
    void (*set_browsed_player_rsp_cb)(uint16_t items, uint8_t depth);
    void (*set_addressed_player_rsp_cb)(uint8_t status);
    void (*now_playing_content_changed_cb)(bt_bdaddr_t address, uint8_t state);
    void (*addressed_player_changed_cb)(bt_bdaddr_t address, uint16_t player_id);
    void (*available_player_changed_cb)(bt_bdaddr_t address, uint8_t state);
    void (*connect_bip_result_cb)(bt_bdaddr_t address, uint8_t status);
    void (*get_linked_thumbnail_result_cb)(bt_bdaddr_t address, uint8_t status);
    void (*get_image_result_cb)(bt_bdaddr_t address, uint8_t status);
} avrcp_impl_callback_t;

// The handlers, and the table they tell.
avrcp_impl_callback_t* vym_avrcp_handlers(void);
void vym_avrcp_set_delegate(avrcp_callback_t* cbk);

// The labels of the volume requests that wait for an answer. Taking one clears it; 0 when there was
// none.
void vym_avrcp_forget_labels(void);
uint8_t vym_avrcp_take_abs_vol_label(void);
uint8_t vym_avrcp_take_register_label(void);

// Commands that the server knows and nothing here sends: it brings the link up and down by itself.
bt_status_t vym_avrcp_connect_impl(bt_bdaddr_t address);
bt_status_t vym_avrcp_disconnect_impl(bt_bdaddr_t address);
bt_status_t vym_avrcp_get_playback_state_impl(bt_bdaddr_t address);
bt_status_t vym_avrcp_set_browsed_player_impl(bt_bdaddr_t address, uint16_t player_id);

} // extern "C"

#endif
