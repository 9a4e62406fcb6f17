/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The adapter, a phone, a keyboard and serial services. */
#ifndef VYM_TESTS_E2E_CLASSIC_STEPS_H
#define VYM_TESTS_E2E_CLASSIC_STEPS_H

#include "callbacks/classic_callbacks.h"
#include "callbacks/low_energy_callbacks.h"
#include "every_profile.h"

#include <string.h>
#include <unistd.h>

static void identify(void) {
    bt_bdname_t name = {{'E', 'v', 'e', 'r', 'y'}};
    note(text_sum(vym_bluetooth_get_version()));
    note(sum_of(vym_bluetooth_get_address(), sizeof(bt_bdaddr_t)));
    vym_bluetooth_set_name(name);
    note(sum_of(vym_bluetooth_get_name(), sizeof(bt_bdname_t)));
    note((unsigned)vym_bluetooth_get_class());
    note((unsigned)vym_bluetooth_get_state());
    vym_bluetooth_get_adapter_properties();
    vym_bluetooth_read_address();
    vym_bluetooth_read_local_device_oob_data();
    vym_bluetooth_read_local_device_oob_data_ex();
    await(3);
}

static void discover(void) {
    vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
    note((unsigned)vym_bluetooth_get_scan_mode());
    vym_bluetooth_set_discoverable_timeout(60);
    vym_bluetooth_set_discovery_internval(5);
    vym_bluetooth_add_AA_uuid(serial_port);
    vym_bluetooth_start_discovery();
    await(3);
    vym_bluetooth_stop_discovery();
    vym_bluetooth_le_receiver_test(1);
    vym_bluetooth_le_test_end();
    vym_bluetooth_le_transmitter_test(1, 37, 0);
    vym_bluetooth_le_test_end();
    vym_bluetooth_write_loopback_mode(0);
    vym_bluetooth_os_suspend_action();
    vym_bluetooth_os_wakeup_action();
    await(4);
}

static void pair(void) {
    static bt_remote_device_t devices[32];
    int count = 32;
    uint8_t pin[] = {'0', '0', '0', '0'};
    bt_oob_data_t data = {{0}};
    vym_bluetooth_set_bond_mode(1);
    vym_bluetooth_set_number_of_bonded_devices(16);
    note((unsigned)vym_bluetooth_get_number_of_bonded_devices());
    vym_bluetooth_set_remote_device_oob_data(strap, data, data);
    vym_bluetooth_create_bond_out_of_bond(strap, 2, sizeof pin, pin);
    vym_bluetooth_cancel_bond(strap);
    vym_bluetooth_create_bond(phone);
    await(4);
    vym_bluetooth_ssp_reply(phone, 0, 1, 0);
    vym_bluetooth_pin_reply(phone, 1, sizeof pin, pin);
    await(2);
    vym_bluetooth_get_bonded_devices(devices, &count);
    for (int i = 0; i < count && i < 32; ++i) {
        note(BYTES(devices[i]));
    }
}

static void look_at_the_phone(void) {
    uint8_t name[] = {'A'};
    vym_bluetooth_get_remote_device_properties(phone);
    vym_bluetooth_get_remote_device_propertie(phone, BT_PROPERTY_BDNAME);
    vym_bluetooth_set_remote_device_propertie(phone, BT_PROPERTY_BDNAME, 1, name);
    vym_bluetooth_get_remote_service_record(phone, serial_port);
    vym_bluetooth_get_remote_services(phone);
    const bt_128_service_t services = vym_bluetooth_get_devices_uuids(phone);
    note(BYTES(services));
    const bt_manufacturer_code_t manufacturer = vym_bluetooth_get_manufacturer_code(phone);
    note(BYTES(manufacturer));
    note(vym_bluetooth_get_device_priority(phone));
    note((unsigned)vym_bluetooth_get_connection_state(phone));
    vym_bluetooth_read_connected_device_rssi(phone);
    vym_bluetooth_connection_auth(phone, 1, 1);
    await(2);
}

static void call(void) {
    char number[] = "+4930123456";
    uint8_t samples[64] = {0};
    vym_hfp_connect(phone);
    await_mark(HANDS_FREE_UP);
    /* Somebody calls. */
    await(12);
    vym_hfp_accept_call(phone, CALL_ACCEPT_NONE);
    vym_hfp_connect_audio(phone);
    await(3);
    vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 1, sizeof samples, samples);
    vym_hfp_volume_control(0, 7);
    vym_hfp_send_dtmf('5');
    vym_hfp_switch_mic_state(1);
    vym_hfp_dial(number);
    await(5);
    vym_hfp_query_last_voice_tag_name();
    vym_hfp_terminate_call(phone, 1);
    vym_hfp_reject_call(phone);
    await(3);
    vym_hfp_dial_memory(1);
    vym_hfp_start_voice_recognition();
    vym_hfp_stop_voice_recognition();
    vym_hfp_disconnect_audio(phone);
    await(3);
}

static void read_the_phone_book(void) {
    char number[] = "+4930123456";
    vym_pbap_connect(phone);
    await_mark(PHONE_BOOK_UP);
    note((unsigned)vym_pbap_is_connected());
    vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO);
    vym_pbap_get_phonebook_size(SYNC_PHONE_CONTACT);
    vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 60);
    await_mark(PHONE_BOOK_READ);
    vym_pbap_get_phonebook(SYNC_MCH, 0, 10);
    await(5);
    vym_pbap_get_phonebook(SYNC_SIM_CONTACT, 0, 10);
    vym_pbap_cancel_get_phonebook();
    vym_pbap_pull_vcard_by_number(0, number);
    await(3);
    vym_pbap_disconnect(phone);
    await(1);
}

static void play(void) {
    uint8_t ids[] = {1, 2};
    struct AVRCP_IDPairStru pairs[] = {{1, 2}, {2, 1}};
    struct AVRCP_NumIDPairStru settings = {2, pairs};
    uint8_t samples[64] = {0};
    vym_a2dp_connect(phone);
    await_mark(MUSIC_UP | REMOTE_CONTROL_UP);
    vym_avrcp_play(phone);
    await(4);
    vym_audio_stream_send(AUDIO_STREAM_TYPE_A2DP, 0, sizeof samples, samples);
    vym_a2dp_switch_audio_hw(1);
    vym_avrcp_forward(phone);
    vym_avrcp_fast_forward(phone, 0);
    vym_avrcp_fast_forward(phone, 1);
    vym_avrcp_rewind(phone, 0);
    vym_avrcp_next_group(phone);
    vym_avrcp_previous_group(phone);
    vym_avrcp_get_player_app_setting(phone, 2, sizeof ids, ids);
    vym_avrcp_set_player_app_setting(phone, settings);
    vym_avrcp_send_abs_vol_rsp(phone, 30);
    vym_avrcp_send_register_abs_val_rsp(phone, 0x0F, 30);
    await(8);
    vym_avrcp_backward(phone);
    vym_avrcp_pause(phone);
    vym_avrcp_stop(phone);
    await(2);
}

static void browse(void) {
    uint8_t attributes[] = {1, 0, 0, 0, 2, 0, 0, 0};
    uint8_t uid[8] = {0, 0, 0, 0, 0, 0, 0, 1};
    uint8_t handle[] = "1000001";
    uint8_t encoding[] = "JPEG";
    uint8_t pixel[] = "200*200";
    uint8_t path[] = "/dev/null";
    vym_avrcp_get_element_attribute(phone, 2, sizeof attributes, attributes);
    vym_avrcp_get_player_list(phone, 0, 5);
    vym_avrcp_set_addressed_player(phone, 1);
    vym_avrcp_get_folder_list(phone, 0, 5);
    vym_avrcp_change_folder_path(phone, 1, sizeof uid, uid);
    vym_avrcp_get_total_number_of_items(phone);
    await(10);
    vym_avrcp_play_item(phone, 3, sizeof uid, uid);
    vym_avrcp_get_nowplaying_list(phone, 0, 5);
    vym_avrcp_cancel_browsing(phone);
    vym_avrcp_connect_bip(phone, (int)known(&named.cover_art));
    await_mark(COVER_ART_UP);
    vym_avrcp_get_linked_thumbnail(phone, 7, handle, 9, path);
    vym_avrcp_get_image(phone, 10000, 7, handle, 4, encoding, 7, pixel, 9, path);
    await(2);
}

static void hang_up(void) {
    vym_a2dp_disconnect(phone);
    vym_hfp_disconnect(phone);
    vym_bluetooth_acl_cancel_connect(phone);
    vym_bluetooth_remove_bond(phone);
    await(4);
}

static void type(void) {
    uint8_t text[] = {'E'};
    uint8_t report[8] = {0, 0, 4};
    vym_hid_register_app(0x40, 1, text, 1, text, 1, text, 1, text, 1, text, 1, text);
    await(1);
    vym_hid_connect(laptop);
    await_mark(HOST_UP);
    vym_hid_send_report(1, 0, sizeof report, report);
    vym_hid_report_error_impl(1);
    await(2);
    vym_hid_disconnect();
    vym_hid_unplug_impl();
    vym_hid_unregister_app();
    await(2);
}

/* Reads what comes, as long as it comes. */
static void listen_to(vym_bluetooth_socket_t* peer) {
    char line[64];
    ssize_t length = 0;
    while (peer != NULL && (length = vym_rfcomm_read(peer, line, sizeof line)) >= 0) {
        note(sum_of(line, (size_t)length));
        mark(SERVER_GREETED);
    }
    vym_rfcomm_close(peer);
}

static void* talk(void* unused) {
    static const char kGreeting[] = "Every profile\n";
    vym_bluetooth_socket_t* peer = vym_rfcomm_connect(phone, serial_port, 11);
    vym_rfcomm_write(peer, kGreeting, strlen(kGreeting));
    if (peer != NULL) {
        const bt_bdaddr_t address = vym_rfcomm_get_address(peer);
        note(BYTES(address));
    }
    listen_to(peer);
    return unused;
}

static void* serve(void* unused) {
    char name[] = "Every profile";
    vym_bluetooth_server_socket_t* service = vym_rfcomm_listen(serial_port, 5, name);
    if (service != NULL) {
        listen_to(vym_rfcomm_accept(service));
        vym_rfcomm_server_close(service);
    }
    return unused;
}

static void take_descriptor(uint8_t id, int fd) {
    note(BYTES(id));
    if (fd > 0) {
        close(fd);
    }
}

static void use_serial_services(void) {
    vym_bluetooth_register_data_transport_callback(9, take_descriptor);
    vym_rfcomm_fetch_channels(receiver, serial_port);
    await(2);
    aside(serve);
    await(2);
    await_mark(SERVER_GREETED);
    forget_marks();
    aside(talk);
    await_mark(SERVER_GREETED);
    vym_rfcomm_server_disconnect(5);
    vym_rfcomm_disconnect(1);
    await(1);
}

#endif
