/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* An application of all profiles that trusts nobody: it reads every byte that a callback is given, and
 * it comes to its end whatever the server does. Ends with 0, also when the server has gone. */
#include "classic_callbacks.h"
#include "low_energy_callbacks.h"
#include "reading.h"

#include <vym/vym_sdk.h>

#include <pthread.h>
#include <stdio.h>
#include <string.h>

static bt_bdaddr_t phone = {{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};
static bt_bdaddr_t strap = {{0x74, 0x72, 0x61, 0x65, 0x48, 0xC6}};
static bt_bdaddr_t laptop = {{0x70, 0x6F, 0x74, 0x70, 0x4C, 0x2E}};
static bt_bdaddr_t receiver = {{0x01, 0x53, 0x53, 0x4E, 0x47, 0x2A}};
static bt_uuid_t serial_port = {
    {0x00, 0x00, 0x11, 0x01, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};
static bt_uuid_t heart_rate = {
    {0x00, 0x00, 0x18, 0x0D, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};
static bt_uuid_t measurement = {
    {0x00, 0x00, 0x2A, 0x37, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};

static void use_adapter(void) {
    static bt_remote_device_t devices[32];
    bt_bdname_t name = {{'E', 'v', 'e', 'r', 'y'}};
    int count = 32;
    vym_bluetooth_enable();
    await(1);
    note(text_sum(vym_bluetooth_get_version()));
    note(sum_of(vym_bluetooth_get_address(), sizeof(bt_bdaddr_t)));
    vym_bluetooth_set_name(name);
    vym_bluetooth_get_adapter_properties();
    vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
    vym_bluetooth_start_discovery();
    await(3);
    vym_bluetooth_stop_discovery();
    vym_bluetooth_create_bond(phone);
    await(2);
    vym_bluetooth_ssp_reply(phone, 0, 1, 0);
    await(2);
    vym_bluetooth_get_bonded_devices(devices, &count);
    for (int i = 0; i < count && i < 32; ++i) {
        note(BYTES(devices[i]));
    }
    vym_bluetooth_get_remote_device_properties(phone);
    vym_bluetooth_get_remote_services(phone);
    const bt_128_service_t services = vym_bluetooth_get_devices_uuids(phone);
    note(BYTES(services));
    vym_bluetooth_read_local_device_oob_data_ex();
    vym_bluetooth_le_receiver_test(1);
    vym_bluetooth_le_test_end();
    await(3);
}

static void use_phone(void) {
    char number[] = "+4930123456";
    uint8_t samples[64] = {0};
    vym_hfp_connect(phone);
    await(8);
    vym_hfp_connect_audio(phone);
    vym_hfp_dial(number);
    await(5);
    vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 1, sizeof samples, samples);
    vym_hfp_volume_control(0, 7);
    vym_hfp_send_dtmf('5');
    vym_hfp_query_last_voice_tag_name();
    vym_hfp_terminate_call(phone, 1);
    await(3);
    vym_pbap_connect(phone);
    await(1);
    vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO);
    vym_pbap_get_phonebook_size(SYNC_PHONE_CONTACT);
    vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 60);
    await(50);
    vym_pbap_get_phonebook(SYNC_MCH, 0, 10);
    await(5);
}

static void use_player(void) {
    uint8_t ids[] = {1, 2};
    uint8_t attributes[] = {1, 0, 0, 0, 2, 0, 0, 0};
    vym_a2dp_connect(phone);
    await(2);
    vym_avrcp_play(phone);
    await(4);
    vym_avrcp_get_player_app_setting(phone, 2, sizeof ids, ids);
    vym_avrcp_get_element_attribute(phone, 2, sizeof attributes, attributes);
    vym_avrcp_get_player_list(phone, 0, 5);
    vym_avrcp_get_folder_list(phone, 0, 5);
    vym_avrcp_get_nowplaying_list(phone, 0, 5);
    vym_avrcp_get_total_number_of_items(phone);
    await(10);
    vym_avrcp_forward(phone);
    vym_avrcp_send_abs_vol_rsp(phone, 30);
    vym_avrcp_pause(phone);
    await(2);
}

/* What waits without limit for an answer that may never come has a thread that the end of main() ends.
 */
static void aside(void* (*work)(void*)) {
    pthread_t thread;
    if (pthread_create(&thread, NULL, work, NULL) == 0) {
        pthread_detach(thread);
    }
}

static void* register_and_connect(void* unused) {
    vym_gatt_client_register(heart_rate, client_registered);
    vym_gatt_client_connect(strap, 1, 2);
    return unused;
}

static void use_low_energy(void) {
    aside(register_and_connect);
    await(3);
    vym_gatt_client_scan(1);
    await(4);
    vym_gatt_client_scan(0);
    vym_gatt_client_search_service(1, 1, 0);
    await(4);
    vym_gatt_client_get_characteristic(1, 0, 0, heart_rate, 0, measurement);
    vym_gatt_client_read_characteristic(1, 0, 0, heart_rate, 0, measurement, 0);
    vym_gatt_client_register_for_notifications(1, strap, 0, 0, heart_rate, 0, measurement, 1);
    vym_gatt_client_configure_mtu(1, 100);
    vym_gatt_client_read_remote_rssi(1, strap);
    await(4);
    vym_gatt_server_register_client(heart_rate, client_registered);
    vym_gatt_server_register_app(heart_rate);
    await(2);
    vym_gatt_server_add_service(1, 0, 0, heart_rate, 8);
    await(1);
    vym_gatt_server_add_characteristic(1, 40, measurement, 0x12, PERMISSION_READ);
    vym_gatt_server_start_service(1, 40, 2);
    vym_gatt_client_listen(1, 1);
    await(4);
    vym_gatt_server_send_response(1, 1, 1, 0, 42, 0, 0, 2, (uint8_t[]){0, 72});
    vym_gatt_server_send_notification(1, 42, 1, 2, (uint8_t[]){0, 72});
    await(2);
}

static void* talk(void* unused) {
    char line[64] = "Every profile\n";
    vym_bluetooth_socket_t* receiving = vym_rfcomm_connect(receiver, serial_port, 1);
    vym_rfcomm_write(receiving, line, strlen(line));
    while (receiving != NULL) {
        const ssize_t length = vym_rfcomm_read(receiving, line, sizeof line);
        if (length < 0) {
            break;
        }
        note(sum_of(line, (size_t)length));
    }
    return unused;
}

static void use_small_devices(void) {
    char service[] = "Every profile";
    uint8_t text[] = {'E'};
    uint8_t report[8] = {0, 0, 4};
    vym_hid_register_app(0x40, 1, text, 1, text, 1, text, 1, text, 1, text, 1, text);
    await(1);
    vym_hid_connect(laptop);
    await(1);
    vym_hid_send_report(1, 0, sizeof report, report);
    vym_rfcomm_fetch_channels(receiver, serial_port);
    await(2);
    vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(serial_port, 5, service);
    vym_rfcomm_server_close(server);
    aside(talk);
    await(2);
}

static void start(void) {
    vym_bluetooth_init(&bluetooth_callbacks);
    vym_rfcomm_init(&rfcomm_callbacks);
    vym_hfp_init(&hfp_callbacks);
    vym_a2dp_init(&a2dp_callbacks);
    vym_avrcp_init(&avrcp_callbacks);
    vym_pbap_init(&pbap_callbacks);
    vym_gatt_client_init(&gatt_client_callbacks);
    vym_gatt_server_init(&gatt_server_callbacks);
    vym_hid_init(&hid_callbacks);
    vym_audio_stream_init(&audio_callbacks);
}

static void finish(void) {
    vym_audio_stream_done();
    vym_hid_done();
    vym_gatt_server_done();
    vym_gatt_client_done();
    vym_pbap_done();
    vym_avrcp_done();
    vym_a2dp_done();
    vym_hfp_done();
    vym_rfcomm_done();
    vym_bluetooth_done();
    vym_sdk_done();
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: every_profile DIRECTORY   (where the server's vym_socket is)\n");
        return 2;
    }
    if (vym_sdk_init_ex(argv[1]) < 0) {
        fprintf(stderr, "every_profile: no server answers on %s/vym_socket\n", argv[1]);
        return 1;
    }
    start();
    use_adapter();
    use_phone();
    use_player();
    use_low_energy();
    use_small_devices();
    vym_bluetooth_disable();
    await(1);
    finish();
    pthread_mutex_lock(&seen.lock);
    fprintf(stderr, "every_profile: %u callbacks, checksum %08X\n", seen.callbacks, seen.sum);
    pthread_mutex_unlock(&seen.lock);
    return 0;
}
