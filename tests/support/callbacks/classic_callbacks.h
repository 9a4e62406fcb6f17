/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Callbacks that read everything: the adapter and the classic profiles. */
#ifndef VYM_TESTS_SUPPORT_CLASSIC_CALLBACKS_H
#define VYM_TESTS_SUPPORT_CLASSIC_CALLBACKS_H

#include "reading.h"

#include <vym/vym_a2dp.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_hfp.h>
#include <vym/vym_hid.h>
#include <vym/vym_pbap.h>
#include <vym/vym_rfcomm.h>

/* The adapter. */
static void bluetooth_state_changed(uint8_t state) {
    note(BYTES(state));
}

static void bluetooth_bt_version(char* version) {
    note(text_sum(version));
}

static void bluetooth_device_found(bt_bdaddr_t address, uint8_t type_of_device, int class_of_device,
                                   uint8_t rssi, char* name, uint8_t num_of_uuid16, uint16_t* uuids) {
    note(BYTES(address) + BYTES(type_of_device) + BYTES(class_of_device) + BYTES(rssi) +
         text_sum(name) + BYTES(num_of_uuid16) + sum_of(uuids, num_of_uuid16 * sizeof *uuids));
}

static void bluetooth_discovery_state_changed(uint8_t state) {
    note(BYTES(state));
}

static void bluetooth_pin_request(bt_bdaddr_t address, int class_of_device, uint8_t min_16_digit,
                                  char* name) {
    uint8_t pin[] = {'0', '0', '0', '0'};
    note(BYTES(address) + BYTES(class_of_device) + BYTES(min_16_digit) + text_sum(name));
    vym_bluetooth_pin_reply(address, 1, sizeof pin, pin);
}

static void bluetooth_ssp_request(bt_bdaddr_t address, int class_of_device, uint8_t pairing_variant,
                                  int passkey, char* name) {
    note(BYTES(address) + BYTES(class_of_device) + BYTES(pairing_variant) + BYTES(passkey) +
         text_sum(name));
    vym_bluetooth_ssp_reply(address, pairing_variant, 1, passkey);
}

static void bluetooth_bond_state_changed(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    note(BYTES(status) + BYTES(address) + BYTES(state));
}

static void bluetooth_acl_state_changed(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    note(BYTES(status) + BYTES(address) + BYTES(state));
}

static void bluetooth_app_gap_started(uint16_t len, uint8_t* data) {
    note(BYTES(len) + sum_of(data, len));
}

static void bluetooth_connection_auth_req(bt_bdaddr_t address, uint8_t profile_id) {
    note(BYTES(address) + BYTES(profile_id));
    vym_bluetooth_connection_auth(address, profile_id, 1);
}

static void bluetooth_le_rx_test(uint8_t status) {
    note(BYTES(status));
}

static void bluetooth_le_tx_test(uint8_t status) {
    note(BYTES(status));
}

static void bluetooth_le_test_end(uint8_t status, uint16_t number_of_packets) {
    note(BYTES(status) + BYTES(number_of_packets));
}

static void bluetooth_read_bt_address(uint8_t status, bt_bdaddr_t address) {
    note(BYTES(status) + BYTES(address));
}

static void bluetooth_read_rssi(bt_bdaddr_t address, uint8_t status, uint8_t rssi) {
    note(BYTES(address) + BYTES(status) + BYTES(rssi));
}

static void bluetooth_read_local_device_oob_data(uint8_t status, bt_oob_data_t c192,
                                                 bt_oob_data_t r192) {
    note(BYTES(status) + BYTES(c192) + BYTES(r192));
}

static void bluetooth_read_local_device_oob_data_ex(uint8_t status, bt_oob_data_t c192,
                                                    bt_oob_data_t r192, bt_oob_data_t c256,
                                                    bt_oob_data_t r256) {
    note(BYTES(status) + BYTES(c192) + BYTES(r192) + BYTES(c256) + BYTES(r256));
}

static bluetooth_callback_t bluetooth_callbacks = {
    .state_changed_cb = bluetooth_state_changed,
    .bt_version_cb = bluetooth_bt_version,
    .device_found_cb = bluetooth_device_found,
    .discovery_state_changed_cb = bluetooth_discovery_state_changed,
    .pin_request_cb = bluetooth_pin_request,
    .ssp_request_cb = bluetooth_ssp_request,
    .bond_state_changed_cb = bluetooth_bond_state_changed,
    .acl_state_changed_cb = bluetooth_acl_state_changed,
    .app_gap_started_cb = bluetooth_app_gap_started,
    .connection_auth_req_cb = bluetooth_connection_auth_req,
    .le_rx_test_cb = bluetooth_le_rx_test,
    .le_tx_test_cb = bluetooth_le_tx_test,
    .le_test_end_cb = bluetooth_le_test_end,
    .read_bt_address_cb = bluetooth_read_bt_address,
    .read_rssi_cb = bluetooth_read_rssi,
    .read_local_device_oob_data_cb = bluetooth_read_local_device_oob_data,
    .read_local_device_oob_data_ex_cb = bluetooth_read_local_device_oob_data_ex,
};

/* Hands-free. */
static void hfp_connection_state(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address) {
    note(BYTES(state) + BYTES(peer_feat) + BYTES(chld_feat) + BYTES(address));
    mark(state == 3 ? HANDS_FREE_UP : 0);
}

static void hfp_audio_state(uint8_t state, bt_bdaddr_t address) {
    note(BYTES(state) + BYTES(address));
}

static void hfp_vr_cmd(uint8_t state) {
    note(BYTES(state));
}

static void hfp_network_state(uint8_t state) {
    note(BYTES(state));
}

static void hfp_network_roaming(uint8_t state) {
    note(BYTES(state));
}

static void hfp_network_signal(uint16_t signal) {
    note(BYTES(signal));
}

static void hfp_battery_level(uint16_t battery_level) {
    note(BYTES(battery_level));
}

static void hfp_current_operator(char* name) {
    note(text_sum(name));
}

static void hfp_resp_and_hold(uint8_t resp_and_hold) {
    note(BYTES(resp_and_hold));
}

static void hfp_clip(char* number) {
    note(text_sum(number));
}

static void hfp_call_waiting(char* number) {
    note(text_sum(number));
}

static void hfp_current_calls(bluetooth_call_t call) {
    note(BYTES(call));
}

static void hfp_volume_change(uint8_t type, uint16_t volume) {
    note(BYTES(type) + BYTES(volume));
}

static void hfp_subscriber_info(uint8_t type, char* name) {
    note(BYTES(type) + text_sum(name));
}

static void hfp_in_band_ring_tone(uint8_t state) {
    note(BYTES(state));
}

static void hfp_last_voice_tag_number(char* number) {
    note(text_sum(number));
}

static void hfp_ring_indication(void) {
    note(1);
}

static void hfp_ag_model_name(char* name) {
    note(text_sum(name));
}

static void hfp_ag_manufacturer_id(char* name) {
    note(text_sum(name));
}

static void hfp_call_action_complete(int command, int result) {
    note(BYTES(command) + BYTES(result));
}

static void hfp_standby_indication(void) {
    note(1);
}

static void hfp_ios_aplsiri(uint8_t state) {
    note(BYTES(state));
}

static void hfp_current_call_num(int num) {
    note(BYTES(num));
}

static hfp_callback_t hfp_callbacks = {
    .connection_state_cb = hfp_connection_state,
    .audio_state_cb = hfp_audio_state,
    .vr_cmd_cb = hfp_vr_cmd,
    .network_state_cb = hfp_network_state,
    .network_roaming_cb = hfp_network_roaming,
    .network_signal_cb = hfp_network_signal,
    .battery_level_cb = hfp_battery_level,
    .current_operator_cb = hfp_current_operator,
    .resp_and_hold_cb = hfp_resp_and_hold,
    .clip_cb = hfp_clip,
    .call_waiting_cb = hfp_call_waiting,
    .current_calls_cb = hfp_current_calls,
    .volume_change_cb = hfp_volume_change,
    .subscriber_info_cb = hfp_subscriber_info,
    .in_band_ring_tone_cb = hfp_in_band_ring_tone,
    .last_voice_tag_number_cb = hfp_last_voice_tag_number,
    .ring_indication_cb = hfp_ring_indication,
    .ag_model_name_cb = hfp_ag_model_name,
    .ag_manufacturer_id_cb = hfp_ag_manufacturer_id,
    .call_action_complete_cb = hfp_call_action_complete,
    .standby_indication_cb = hfp_standby_indication,
    .ios_aplsiri_cb = hfp_ios_aplsiri,
    .current_call_num_cb = hfp_current_call_num,
};

/* Music. */
static void a2dp_connection_state_changed(bt_bdaddr_t address, uint8_t state) {
    note(BYTES(address) + BYTES(state));
    mark(state == 2 ? MUSIC_UP : 0);
}

static void a2dp_audio_state_changed(bt_bdaddr_t address, uint8_t state) {
    note(BYTES(address) + BYTES(state));
}

static void a2dp_audio_config_changed(bt_bdaddr_t address, int sample_rate, uint8_t channels) {
    note(BYTES(address) + BYTES(sample_rate) + BYTES(channels));
}

static void a2dp_audio_stream(uint8_t codec_type, uint16_t len, uint8_t* data) {
    note(BYTES(codec_type) + BYTES(len) + sum_of(data, len));
}

static void a2dp_a2dp_devices_event(int active, int event) {
    note(BYTES(active) + BYTES(event));
}

static a2dp_callback_t a2dp_callbacks = {
    .connection_state_changed_cb = a2dp_connection_state_changed,
    .audio_state_changed_cb = a2dp_audio_state_changed,
    .audio_config_changed_cb = a2dp_audio_config_changed,
    .audio_stream_cb = a2dp_audio_stream,
    .a2dp_devices_event_cb = a2dp_a2dp_devices_event,
};

static void audio_packet(uint8_t stream, uint8_t codec, uint16_t length, uint8_t* data) {
    note(BYTES(stream) + BYTES(codec) + sum_of(data, length));
}

static audio_stream_callback_t audio_callbacks = {.vym_audio_stream_cb = audio_packet};

/* The player. */
static unsigned pairs_sum(struct AVRCP_NumIDPairStru pairs) {
    return sum_of(pairs.id_value, pairs.num * sizeof *pairs.id_value);
}

static unsigned attributes_sum(struct AVRCP_Num4IDValueStru attributes) {
    unsigned sum = 0;
    for (int i = 0; attributes.id_value != NULL && i < attributes.num; ++i) {
        sum += BYTES(attributes.id_value[i].attr_id) +
               sum_of(attributes.id_value[i].value, attributes.id_value[i].len);
    }
    return sum;
}

static unsigned media_sum(const btrc_item_media_t* item) {
    unsigned sum = item == NULL ? 0 : sum_of(item, sizeof *item);
    for (int i = 0; item != NULL && i < item->num_attrs; ++i) {
        sum += BYTES(item->p_attrs[i]);
    }
    return sum;
}

static void avrcp_handle_passthrough_rsp(uint8_t id, uint8_t key_state) {
    note(BYTES(id) + BYTES(key_state));
}

static void avrcp_connection_state_changed(uint8_t connected, bt_bdaddr_t address) {
    note(BYTES(connected) + BYTES(address));
    mark(connected == 1 ? REMOTE_CONTROL_UP : 0);
}

static void avrcp_get_rc_features(bt_bdaddr_t address, uint8_t features, int ca_psm) {
    learn(&named.cover_art, (unsigned)ca_psm);
    note(BYTES(address) + BYTES(features) + BYTES(ca_psm));
}

static void avrcp_handle_player_app_setting(bt_bdaddr_t address, uint16_t data_len, uint8_t current_id,
                                            struct AVRCP_NumIDPairStru settings) {
    note(BYTES(address) + BYTES(data_len) + BYTES(current_id) + pairs_sum(settings));
}

static void avrcp_handle_player_app_setting_changed(bt_bdaddr_t address, uint16_t data_len,
                                                    struct AVRCP_NumIDPairStru settings) {
    note(BYTES(address) + BYTES(data_len) + pairs_sum(settings));
}

static void avrcp_handle_set_abs_volume(bt_bdaddr_t address, uint8_t abs_vol) {
    note(BYTES(address) + BYTES(abs_vol));
    vym_avrcp_send_abs_vol_rsp(address, abs_vol);
}

static void avrcp_handle_register_notification_abs_vol(bt_bdaddr_t address) {
    note(BYTES(address));
    vym_avrcp_send_register_abs_val_rsp(address, 0x0F, 30);
}

static void avrcp_handle_track_changed(bt_bdaddr_t address, uint16_t data_len,
                                       struct AVRCP_Num4IDValueStru attributes) {
    note(BYTES(address) + BYTES(data_len) + attributes_sum(attributes));
}

static void avrcp_handle_play_position_changed(bt_bdaddr_t address, int song_len,
                                               int curr_song_position) {
    note(BYTES(address) + BYTES(song_len) + BYTES(curr_song_position));
}

static void avrcp_handle_play_status_changed(bt_bdaddr_t address, uint8_t play_status) {
    note(BYTES(address) + BYTES(play_status));
}

static void avrcp_change_folder_path_rsp(bt_bdaddr_t address, uint8_t status, int count) {
    note(BYTES(address) + BYTES(status) + BYTES(count));
}

static void avrcp_get_total_number_of_items_rsp(bt_bdaddr_t address, uint8_t status, int count) {
    note(BYTES(address) + BYTES(status) + BYTES(count));
}

static void avrcp_play_item_rsp(bt_bdaddr_t address, uint8_t status) {
    note(BYTES(address) + BYTES(status));
}

static void avrcp_get_player_item(bt_bdaddr_t address, uint8_t status, btrc_item_player_t* item) {
    note(BYTES(address) + BYTES(status) + (item == NULL ? 0 : sum_of(item, sizeof *item)));
}

static void avrcp_get_folder_item(bt_bdaddr_t address, uint8_t status, btrc_item_folder_t* item) {
    note(BYTES(address) + BYTES(status) + (item == NULL ? 0 : sum_of(item, sizeof *item)));
}

static void avrcp_get_media_item(bt_bdaddr_t address, uint8_t status, btrc_item_media_t* item) {
    note(BYTES(address) + BYTES(status) + media_sum(item));
}

static void avrcp_now_playing_content_changed(bt_bdaddr_t address, uint8_t state) {
    note(BYTES(address) + BYTES(state));
}

static void avrcp_addressed_player_changed(bt_bdaddr_t address, uint16_t player_id) {
    note(BYTES(address) + BYTES(player_id));
}

static void avrcp_available_player_changed(bt_bdaddr_t address, uint8_t state) {
    note(BYTES(address) + BYTES(state));
}

static void avrcp_connect_bip_result(bt_bdaddr_t address, uint8_t status) {
    note(BYTES(address) + BYTES(status));
    mark(status == 0 ? COVER_ART_UP : 0);
}

static void avrcp_get_linked_thumbnail_result(bt_bdaddr_t address, uint8_t status) {
    note(BYTES(address) + BYTES(status));
}

static void avrcp_get_image_result(bt_bdaddr_t address, uint8_t status) {
    note(BYTES(address) + BYTES(status));
}

static avrcp_callback_t avrcp_callbacks = {
    .handle_passthrough_rsp_cb = avrcp_handle_passthrough_rsp,
    .connection_state_changed_cb = avrcp_connection_state_changed,
    .get_rc_features_cb = avrcp_get_rc_features,
    .handle_player_app_setting_cb = avrcp_handle_player_app_setting,
    .handle_player_app_setting_changed_cb = avrcp_handle_player_app_setting_changed,
    .handle_set_abs_volume_cb = avrcp_handle_set_abs_volume,
    .handle_register_notification_abs_vol_cb = avrcp_handle_register_notification_abs_vol,
    .handle_track_changed_cb = avrcp_handle_track_changed,
    .handle_play_position_changed_cb = avrcp_handle_play_position_changed,
    .handle_play_status_changed_cb = avrcp_handle_play_status_changed,
    .change_folder_path_rsp_cb = avrcp_change_folder_path_rsp,
    .get_total_number_of_items_rsp_cb = avrcp_get_total_number_of_items_rsp,
    .play_item_rsp_cb = avrcp_play_item_rsp,
    .get_player_item_cb = avrcp_get_player_item,
    .get_folder_item_cb = avrcp_get_folder_item,
    .get_media_item_cb = avrcp_get_media_item,
    .now_playing_content_changed_cb = avrcp_now_playing_content_changed,
    .addressed_player_changed_cb = avrcp_addressed_player_changed,
    .available_player_changed_cb = avrcp_available_player_changed,
    .connect_bip_result_cb = avrcp_connect_bip_result,
    .get_linked_thumbnail_result_cb = avrcp_get_linked_thumbnail_result,
    .get_image_result_cb = avrcp_get_image_result,
};

/* The phone book. */
static void pbap_connection_status(uint8_t status, bt_bdaddr_t address) {
    note(BYTES(status) + BYTES(address));
    mark(status == 0 ? PHONE_BOOK_UP : 0);
}

static void pbap_get_phonebook_status(uint16_t result) {
    note(BYTES(result));
    mark(PHONE_BOOK_READ);
}

static void pbap_get_phonebook_size(uint16_t type, uint16_t size, uint16_t result) {
    note(BYTES(type) + BYTES(size) + BYTES(result));
}

static void pbap_index_data_ind(phone_book_t phone_book) {
    note(BYTES(phone_book));
}

static void pbap_phonebook_photodata_ind(uint8_t state, uint16_t index, uint16_t data_len,
                                         uint8_t* data) {
    note(BYTES(state) + BYTES(index) + BYTES(data_len) + sum_of(data, data_len));
}

static pbap_callback_t pbap_callbacks = {
    .connection_status_cb = pbap_connection_status,
    .get_phonebook_status_cb = pbap_get_phonebook_status,
    .get_phonebook_size_cb = pbap_get_phonebook_size,
    .index_data_ind_cb = pbap_index_data_ind,
    .phonebook_photodata_ind_cb = pbap_phonebook_photodata_ind,
};

/* A keyboard, and serial services. */
static void hid_application_state_changed(bt_bdaddr_t address, int state) {
    note(BYTES(address) + BYTES(state));
}

static void hid_hid_connection_state(bt_bdaddr_t address, int state) {
    note(BYTES(address) + BYTES(state));
    mark(state == 0 ? HOST_UP : 0);
}

static hid_callback_t hid_callbacks = {
    .application_state_changed_cb = hid_application_state_changed,
    .hid_connection_state_cb = hid_hid_connection_state,
};

static void rfcomm_rfcomm_fetch_channels(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
    note(BYTES(address) + BYTES(uuid) + BYTES(channel));
}

static void rfcomm_rfcomm_fetch_channels_end(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
    note(BYTES(address) + BYTES(uuid) + BYTES(channel));
}

static rfcomm_callback_t rfcomm_callbacks = {
    .rfcomm_fetch_channels_cb = rfcomm_rfcomm_fetch_channels,
    .rfcomm_fetch_channels_end_cb = rfcomm_rfcomm_fetch_channels_end,
};

#endif
