/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* What applications for 32-bit ARM have compiled in: the size of each type of the installed headers,
 * and where each member lies and how long it is. Read by arm.c and arm.cpp, which give the words a
 * meaning. */

/* bluetooth.h */
SIZE(bt_status_t, 4);
SIZE(bt_bdaddr_t, 6);
AT(bt_bdaddr_t, address, 0, 6);
SIZE(bt_uuid_t, 16);
AT(bt_uuid_t, uu, 0, 16);
SIZE(bt_oob_data_t, 16);
AT(bt_oob_data_t, data, 0, 16);
SIZE(bt_bdname_t, 249);
AT(bt_bdname_t, name, 0, 249);
SIZE(bt_remote_device_t, 296);
AT(bt_remote_device_t, address, 0, 6);
AT(bt_remote_device_t, name, 6, 249);
AT(bt_remote_device_t, class_of_device, 256, 4);
AT(bt_remote_device_t, num_service, 260, 1);
AT(bt_remote_device_t, services, 262, 32);
SIZE(bt_128_service_t, 81);
AT(bt_128_service_t, num_service_128bit, 0, 1);
AT(bt_128_service_t, services_128bit, 1, 80);
SIZE(bt_state_t, 4);
SIZE(bt_scan_mode_t, 4);
SIZE(bt_acl_state_t, 4);
SIZE(bt_bond_state_t, 4);
SIZE(bt_discovery_state_t, 4);
SIZE(bt_ssp_variant_t, 4);
SIZE(bt_property_type_t, 4);

/* gatt_defines.h */
SIZE(gatt_char_prop_t, 4);
SIZE(gatt_cccd_t, 4);
SIZE(gatt_service_type_t, 4);
SIZE(gatt_write_type_t, 4);
SIZE(gatt_auth_req_t, 4);
SIZE(gatt_transport_t, 4);

/* internal_ev_process.h */
SIZE(ev_data_t, 72);
AT(ev_data_t, type, 0, 1);
AT(ev_data_t, len, 1, 1);
AT(ev_data_t, value, 2, 64);
AT(ev_data_t, off, 68, 4);

/* vym_a2dp.h */
SIZE(a2dp_callback_t, 20);
AT(a2dp_callback_t, connection_state_changed_cb, 0, 4);
AT(a2dp_callback_t, audio_state_changed_cb, 4, 4);
AT(a2dp_callback_t, audio_config_changed_cb, 8, 4);
AT(a2dp_callback_t, audio_stream_cb, 12, 4);
AT(a2dp_callback_t, a2dp_devices_event_cb, 16, 4);

/* vym_audio_stream.h */
SIZE(audio_stream_callback_t, 4);
AT(audio_stream_callback_t, vym_audio_stream_cb, 0, 4);

/* vym_avrcp.h */
SIZE(avrcp_version_t, 4);
SIZE(struct AVRCP_IDPairStru, 2);
AT(struct AVRCP_IDPairStru, attr_id, 0, 1);
AT(struct AVRCP_IDPairStru, value, 1, 1);
SIZE(struct AVRCP_NumIDPairStru, 8);
AT(struct AVRCP_NumIDPairStru, num, 0, 1);
AT(struct AVRCP_NumIDPairStru, id_value, 4, 4);
SIZE(struct AVRCP_4IDStringStru, 12);
AT(struct AVRCP_4IDStringStru, attr_id, 0, 4);
AT(struct AVRCP_4IDStringStru, len, 4, 2);
AT(struct AVRCP_4IDStringStru, value, 8, 4);
SIZE(struct AVRCP_Num4IDValueStru, 8);
AT(struct AVRCP_Num4IDValueStru, num, 0, 1);
AT(struct AVRCP_Num4IDValueStru, id_value, 4, 4);
SIZE(btrc_item_player_t, 281);
AT(btrc_item_player_t, player_id, 0, 2);
AT(btrc_item_player_t, major_type, 2, 1);
AT(btrc_item_player_t, sub_type, 3, 4);
AT(btrc_item_player_t, play_status, 7, 1);
AT(btrc_item_player_t, features, 8, 16);
AT(btrc_item_player_t, charset_id, 24, 2);
AT(btrc_item_player_t, name, 26, 255);
SIZE(btrc_item_folder_t, 267);
AT(btrc_item_folder_t, uid, 0, 8);
AT(btrc_item_folder_t, type, 8, 1);
AT(btrc_item_folder_t, playable, 9, 1);
AT(btrc_item_folder_t, charset_id, 10, 2);
AT(btrc_item_folder_t, name, 12, 255);
SIZE(btrc_element_attr_val_t, 259);
AT(btrc_element_attr_val_t, attr_id, 0, 4);
AT(btrc_element_attr_val_t, text, 4, 255);
SIZE(btrc_item_media_t, 270);
AT(btrc_item_media_t, uid, 0, 8);
AT(btrc_item_media_t, type, 8, 1);
AT(btrc_item_media_t, charset_id, 9, 2);
AT(btrc_item_media_t, name, 11, 255);
AT(btrc_item_media_t, num_attrs, 266, 4);
OPEN(btrc_item_media_t, p_attrs, 270);
SIZE(btrc_folder_items_t, 282);
AT(btrc_folder_items_t, item_type, 0, 1);
AT(btrc_folder_items_t, item, 1, 281);
SIZE(avrcp_callback_t, 88);
AT(avrcp_callback_t, handle_passthrough_rsp_cb, 0, 4);
AT(avrcp_callback_t, connection_state_changed_cb, 4, 4);
AT(avrcp_callback_t, get_rc_features_cb, 8, 4);
AT(avrcp_callback_t, handle_player_app_setting_cb, 12, 4);
AT(avrcp_callback_t, handle_player_app_setting_changed_cb, 16, 4);
AT(avrcp_callback_t, handle_set_abs_volume_cb, 20, 4);
AT(avrcp_callback_t, handle_register_notification_abs_vol_cb, 24, 4);
AT(avrcp_callback_t, handle_track_changed_cb, 28, 4);
AT(avrcp_callback_t, handle_play_position_changed_cb, 32, 4);
AT(avrcp_callback_t, handle_play_status_changed_cb, 36, 4);
AT(avrcp_callback_t, change_folder_path_rsp_cb, 40, 4);
AT(avrcp_callback_t, get_total_number_of_items_rsp_cb, 44, 4);
AT(avrcp_callback_t, play_item_rsp_cb, 48, 4);
AT(avrcp_callback_t, get_player_item_cb, 52, 4);
AT(avrcp_callback_t, get_folder_item_cb, 56, 4);
AT(avrcp_callback_t, get_media_item_cb, 60, 4);
AT(avrcp_callback_t, now_playing_content_changed_cb, 64, 4);
AT(avrcp_callback_t, addressed_player_changed_cb, 68, 4);
AT(avrcp_callback_t, available_player_changed_cb, 72, 4);
AT(avrcp_callback_t, connect_bip_result_cb, 76, 4);
AT(avrcp_callback_t, get_linked_thumbnail_result_cb, 80, 4);
AT(avrcp_callback_t, get_image_result_cb, 84, 4);

/* vym_bluetooth.h */
SIZE(bluetooth_callback_t, 68);
AT(bluetooth_callback_t, state_changed_cb, 0, 4);
AT(bluetooth_callback_t, bt_version_cb, 4, 4);
AT(bluetooth_callback_t, device_found_cb, 8, 4);
AT(bluetooth_callback_t, discovery_state_changed_cb, 12, 4);
AT(bluetooth_callback_t, pin_request_cb, 16, 4);
AT(bluetooth_callback_t, ssp_request_cb, 20, 4);
AT(bluetooth_callback_t, bond_state_changed_cb, 24, 4);
AT(bluetooth_callback_t, acl_state_changed_cb, 28, 4);
AT(bluetooth_callback_t, app_gap_started_cb, 32, 4);
AT(bluetooth_callback_t, connection_auth_req_cb, 36, 4);
AT(bluetooth_callback_t, le_rx_test_cb, 40, 4);
AT(bluetooth_callback_t, le_tx_test_cb, 44, 4);
AT(bluetooth_callback_t, le_test_end_cb, 48, 4);
AT(bluetooth_callback_t, read_bt_address_cb, 52, 4);
AT(bluetooth_callback_t, read_rssi_cb, 56, 4);
AT(bluetooth_callback_t, read_local_device_oob_data_cb, 60, 4);
AT(bluetooth_callback_t, read_local_device_oob_data_ex_cb, 64, 4);

/* vym_event_parser.h */
SIZE(parser_t, 16);
AT(parser_t, get_keyword, 0, 4);
AT(parser_t, get_tag, 4, 4);
AT(parser_t, get_min_expected_length, 8, 4);
AT(parser_t, parse, 12, 4);
SIZE(event_parser_t, 16);
AT(event_parser_t, event_end_pos, 0, 4);
AT(event_parser_t, num_of_parsers, 4, 4);
AT(event_parser_t, parser_list, 8, 4);
AT(event_parser_t, process_event, 12, 4);

/* vym_gatt_client.h */
SIZE(gatt_client_callback_t, 80);
AT(gatt_client_callback_t, scan_result_cb, 0, 4);
AT(gatt_client_callback_t, scan_address_name_cb, 4, 4);
AT(gatt_client_callback_t, notify_cb, 8, 4);
AT(gatt_client_callback_t, connected_cb, 12, 4);
AT(gatt_client_callback_t, disconnected_cb, 16, 4);
AT(gatt_client_callback_t, search_completed_cb, 20, 4);
AT(gatt_client_callback_t, search_result_cb, 24, 4);
AT(gatt_client_callback_t, get_characteristic_cb, 28, 4);
AT(gatt_client_callback_t, get_descriptor_cb, 32, 4);
AT(gatt_client_callback_t, get_included_service_cb, 36, 4);
AT(gatt_client_callback_t, register_for_notifications_cb, 40, 4);
AT(gatt_client_callback_t, read_characteristic_cb, 44, 4);
AT(gatt_client_callback_t, write_characteristic_cb, 48, 4);
AT(gatt_client_callback_t, execute_completed_cb, 52, 4);
AT(gatt_client_callback_t, read_descriptor_cb, 56, 4);
AT(gatt_client_callback_t, write_descriptor_cb, 60, 4);
AT(gatt_client_callback_t, read_remote_rssi_cb, 64, 4);
AT(gatt_client_callback_t, receive_data_from_central_cb, 68, 4);
AT(gatt_client_callback_t, configure_mtu_cb, 72, 4);
AT(gatt_client_callback_t, advertise_callback_cb, 76, 4);

/* vym_gatt_server.h */
SIZE(gatt_server_callback_t, 60);
AT(gatt_server_callback_t, server_registered_cb, 0, 4);
AT(gatt_server_callback_t, client_connected_cb, 4, 4);
AT(gatt_server_callback_t, service_added_cb, 8, 4);
AT(gatt_server_callback_t, included_service_added_cb, 12, 4);
AT(gatt_server_callback_t, characteristic_added_cb, 16, 4);
AT(gatt_server_callback_t, descriptor_added_cb, 20, 4);
AT(gatt_server_callback_t, service_started_cb, 24, 4);
AT(gatt_server_callback_t, service_stopped_cb, 28, 4);
AT(gatt_server_callback_t, service_deleted_cb, 32, 4);
AT(gatt_server_callback_t, response_send_completed_cb, 36, 4);
AT(gatt_server_callback_t, attribute_read_cb, 40, 4);
AT(gatt_server_callback_t, attribute_write_cb, 44, 4);
AT(gatt_server_callback_t, execute_write_cb, 48, 4);
AT(gatt_server_callback_t, notification_sent_cb, 52, 4);
AT(gatt_server_callback_t, mtu_changed_cb, 56, 4);

/* vym_hfp.h */
SIZE(accept_flag_t, 4);
SIZE(call_state_t, 4);
SIZE(bluetooth_call_t, 36);
AT(bluetooth_call_t, idx, 0, 1);
AT(bluetooth_call_t, direction, 1, 1);
AT(bluetooth_call_t, state, 2, 1);
AT(bluetooth_call_t, mpty, 3, 1);
AT(bluetooth_call_t, number, 4, 32);
SIZE(hfp_callback_t, 92);
AT(hfp_callback_t, connection_state_cb, 0, 4);
AT(hfp_callback_t, audio_state_cb, 4, 4);
AT(hfp_callback_t, vr_cmd_cb, 8, 4);
AT(hfp_callback_t, network_state_cb, 12, 4);
AT(hfp_callback_t, network_roaming_cb, 16, 4);
AT(hfp_callback_t, network_signal_cb, 20, 4);
AT(hfp_callback_t, battery_level_cb, 24, 4);
AT(hfp_callback_t, current_operator_cb, 28, 4);
AT(hfp_callback_t, resp_and_hold_cb, 32, 4);
AT(hfp_callback_t, clip_cb, 36, 4);
AT(hfp_callback_t, call_waiting_cb, 40, 4);
AT(hfp_callback_t, current_calls_cb, 44, 4);
AT(hfp_callback_t, volume_change_cb, 48, 4);
AT(hfp_callback_t, subscriber_info_cb, 52, 4);
AT(hfp_callback_t, in_band_ring_tone_cb, 56, 4);
AT(hfp_callback_t, last_voice_tag_number_cb, 60, 4);
AT(hfp_callback_t, ring_indication_cb, 64, 4);
AT(hfp_callback_t, ag_model_name_cb, 68, 4);
AT(hfp_callback_t, ag_manufacturer_id_cb, 72, 4);
AT(hfp_callback_t, call_action_complete_cb, 76, 4);
AT(hfp_callback_t, standby_indication_cb, 80, 4);
AT(hfp_callback_t, ios_aplsiri_cb, 84, 4);
AT(hfp_callback_t, current_call_num_cb, 88, 4);

/* vym_hid.h */
SIZE(hid_callback_t, 8);
AT(hid_callback_t, application_state_changed_cb, 0, 4);
AT(hid_callback_t, hid_connection_state_cb, 4, 4);

/* vym_pbap.h */
SIZE(sync_type_t, 4);
SIZE(mask_type_t, 4);
SIZE(phone_book_t, 340);
AT(phone_book_t, target, 0, 4);
AT(phone_book_t, index, 4, 4);
AT(phone_book_t, name, 8, 255);
AT(phone_book_t, tel_type, 264, 4);
AT(phone_book_t, number, 268, 32);
AT(phone_book_t, time, 300, 40);
SIZE(pbap_callback_t, 20);
AT(pbap_callback_t, connection_status_cb, 0, 4);
AT(pbap_callback_t, get_phonebook_status_cb, 4, 4);
AT(pbap_callback_t, get_phonebook_size_cb, 8, 4);
AT(pbap_callback_t, index_data_ind_cb, 12, 4);
AT(pbap_callback_t, phonebook_photodata_ind_cb, 16, 4);
SIZE(NODESTRU, 12);
AT(NODESTRU, address, 0, 6);
AT(NODESTRU, next, 8, 4);
SIZE(LISTSTRU, 8);
AT(LISTSTRU, head, 0, 4);
AT(LISTSTRU, tail, 4, 4);

/* vym_pbap_queue.h */
SIZE(pbap_queue_t, 12);
AT(pbap_queue_t, parse_index, 0, 1);
AT(pbap_queue_t, param, 4, 4);
AT(pbap_queue_t, next, 8, 4);

/* vym_rfcomm.h */
SIZE(vym_bluetooth_socket_t, 28);
AT(vym_bluetooth_socket_t, status, 0, 1);
AT(vym_bluetooth_socket_t, address, 1, 6);
AT(vym_bluetooth_socket_t, server_handle, 7, 1);
AT(vym_bluetooth_socket_t, incoming_credit, 8, 1);
AT(vym_bluetooth_socket_t, outgoing_credit, 9, 1);
AT(vym_bluetooth_socket_t, incoming_mfs, 10, 2);
AT(vym_bluetooth_socket_t, outgoing_mfs, 12, 2);
AT(vym_bluetooth_socket_t, handle, 16, 4);
AT(vym_bluetooth_socket_t, connected, 20, 1);
AT(vym_bluetooth_socket_t, buffer, 24, 4);
SIZE(vym_bluetooth_server_socket_t, 82);
AT(vym_bluetooth_server_socket_t, status, 0, 1);
AT(vym_bluetooth_server_socket_t, uuid, 1, 16);
AT(vym_bluetooth_server_socket_t, server_channel, 17, 1);
AT(vym_bluetooth_server_socket_t, service_name, 18, 64);
SIZE(rfcomm_callback_t, 8);
AT(rfcomm_callback_t, rfcomm_fetch_channels_cb, 0, 4);
AT(rfcomm_callback_t, rfcomm_fetch_channels_end_cb, 4, 4);

/* ring_buffer.h */
SIZE(ring_buffer_t, 12);
AT(ring_buffer_t, push, 0, 4);
AT(ring_buffer_t, pull, 4, 4);
AT(ring_buffer_t, avail, 8, 4);
