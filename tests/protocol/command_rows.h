// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every call of the library that sends a command, with what the description says of what was sent.
#ifndef VYM_TESTS_PROTOCOL_COMMAND_ROWS_H
#define VYM_TESTS_PROTOCOL_COMMAND_ROWS_H

#include "vym_a2dp.h"
#include "vym_avrcp_impl.h"
#include "vym_bluetooth.h"
#include "vym_gatt_client_impl.h"
#include "vym_gatt_server.h"
#include "vym_hfp_impl.h"
#include "vym_hid.h"
#include "vym_pbap.h"
#include "vym_rfcomm_impl.h"

#include <string>
#include <vector>

namespace commands {

struct Row {
    const char* call;
    void (*run)();
    /** One line for each command: profile, name, and the fields as protocol::to_text() shows them. */
    std::vector<std::string> sent;
    /** Events without which nothing would be sent. */
    std::vector<std::string> before{};
};

constexpr bt_bdaddr_t kPeer = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};
constexpr bt_uuid_t kService = {
    {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
constexpr bt_uuid_t kChar = {
    {0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0}};
constexpr bt_uuid_t kDescr = {
    {0xDE, 0xAD, 0xBE, 0xEF, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98}};
constexpr bt_oob_data_t kHash = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
constexpr bt_oob_data_t kRandomizer = {{16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}};
constexpr bt_bdname_t kName = {{'C', 'a', 'r'}};

// The library takes pointers to what it does not change.
inline char s_text[] = "+49 (0)30#";
inline uint8_t s_a[] = {0xA1, 0x00, 0x0D};
inline uint8_t s_b[] = {0xB1, 0x0A};
inline uint8_t s_c[] = {0xC1};
inline uint8_t s_d[] = {0xD1, 0xDC, 0xD3, 0xD4};
inline uint8_t s_e[] = {0xE1, 0xE2, 0xE3};
inline uint8_t s_f[] = {0xF1, 0xF2};
inline uint8_t s_setting_ids[] = {2, 3};
inline AVRCP_IDPairStru s_settings[] = {{2, 1}, {3, 4}};
inline uint8_t s_number[] = {0x04, 0x03, 0x02, 0x01};

// As they are shown.
inline const std::string kA = "<A1 00 0D>";
inline const std::string kB = "<B1 0A>";
inline const std::string kC = "<C1>";
inline const std::string kD = "<D1 DC D3 D4>";
inline const std::string kE = "<E1 E2 E3>";
inline const std::string kF = "<F1 F2>";
inline const std::string kAddress = "address=A1:B2:C3:D4:E5:F6";
inline const std::string kUuid = "00112233-4455-6677-8899-AABBCCDDEEFF";
inline const std::string kOtherUuid = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
inline const std::string kThirdUuid = "DEADBEEF-0123-4567-89AB-CDEFFEDCBA98";
inline const std::string kServiceText = "service_type=2 service_instance=3 service=" + kUuid;
inline const std::string kCharText =
    kServiceText + " characteristic_instance=4 characteristic=" + kOtherUuid;
inline const std::string kDescrText = kCharText + " descriptor_instance=5 descriptor=" + kThirdUuid;
inline const std::string kFilterText =
    "client_if=1 filter_type=2 filter_index=3 company=4 company_mask=5 uuid_lsb=6 uuid_msb=7 "
    "uuid_mask_lsb=8 uuid_mask_msb=9 address_type=10 name=" +
    kA + " address=" + kB + " data=" + kC + " mask=" + kD;
inline const std::string kAdvertisingText =
    "client_if=1 min_interval=2 max_interval=3 type=4 channel_map=5 tx_power=6 timeout_s=7";
inline const std::string kAdvertisedText =
    " manufacturer_data=" + kA + " service_data=" + kB + " service_uuids=" + kC;
// The UUID that the library registers clients of its own under.
inline const std::string kOwnUuid = "00001234-4556-7800-1011-202130314041";

#define VYM_CALL(call) #call, [] { (void)(call); }

// NOLINTNEXTLINE(readability-function-size): one row for each function
inline std::vector<Row> AdapterRows() {
    return {
        {VYM_CALL(vym_bluetooth_enable()), {"bluetooth enable"}},
        {VYM_CALL(vym_bluetooth_enable_ex(1)), {"bluetooth enable"}},
        {VYM_CALL(vym_bluetooth_enable_ex(0)), {"bluetooth enable_without_firmware"}},
        {VYM_CALL(vym_bluetooth_disable()), {"bluetooth disable"}},
        {VYM_CALL(vym_bluetooth_preset_addr(kPeer)), {"bluetooth preset_addr " + kAddress}},
        {VYM_CALL(vym_bluetooth_get_version()), {"bluetooth get_version"}},
        {VYM_CALL(vym_bluetooth_get_adapter_property(0x24)),
         {"bluetooth get_adapter_property type=36"}},
        {VYM_CALL(vym_bluetooth_get_name()), {"bluetooth get_adapter_property type=1"}},
        {VYM_CALL(vym_bluetooth_get_address()), {"bluetooth get_adapter_property type=2"}},
        {VYM_CALL(vym_bluetooth_get_class()), {"bluetooth get_adapter_property type=4"}},
        {VYM_CALL(vym_bluetooth_get_scan_mode()), {"bluetooth get_adapter_property type=7"}},
        {VYM_CALL(vym_bluetooth_get_bonded_devices(nullptr, nullptr)),
         {"bluetooth get_adapter_property type=15"}},
        {VYM_CALL(vym_bluetooth_get_number_of_bonded_devices()),
         {"bluetooth get_adapter_property type=35"}},
        {VYM_CALL(vym_bluetooth_set_adapter_property(0x21, 3, s_a)),
         {"bluetooth set_adapter_property type=33 value={value={code=" + kA + "}}"}},
        {VYM_CALL(vym_bluetooth_set_name(kName)),
         {"bluetooth set_adapter_property type=1 value={value={name=\"Car\"}}"}},
        {VYM_CALL(vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE)),
         {"bluetooth set_adapter_property type=7 value={value={mode=2}}"}},
        {VYM_CALL(vym_bluetooth_set_discoverable_timeout(0x0A0D00DC)),
         {"bluetooth set_adapter_property type=9 value={value={seconds=168624348}}"}},
        {VYM_CALL(vym_bluetooth_set_number_of_bonded_devices(0x01020304)),
         {"bluetooth set_adapter_property type=35 value={value={maximum=16909060}}"}},
        {VYM_CALL(vym_bluetooth_set_discovery_internval(0x01020304)),
         {"bluetooth set_adapter_property type=36 value={value={interval=16909060}}"}},
        {VYM_CALL(vym_bluetooth_get_remote_device_propertie(kPeer, 0x2F)),
         {"bluetooth get_remote_device_property " + kAddress + " type=47"}},
        {VYM_CALL(vym_bluetooth_get_device_priority(kPeer)),
         {"bluetooth get_remote_device_property " + kAddress + " type=32"}},
        {VYM_CALL(vym_bluetooth_get_manufacturer_code(kPeer)),
         {"bluetooth get_remote_device_property " + kAddress + " type=33"}},
        {VYM_CALL(vym_bluetooth_get_devices_uuids(kPeer)),
         {"bluetooth get_remote_device_property " + kAddress + " type=3"}},
        {VYM_CALL(vym_bluetooth_set_remote_device_propertie(kPeer, 4, 4, s_number)),
         {"bluetooth set_remote_device_property " + kAddress +
          " type=4 value={value={class=16909060}}"}},
        {VYM_CALL(vym_bluetooth_read_local_device_oob_data()),
         {"bluetooth read_local_device_oob_data"}},
        {VYM_CALL(vym_bluetooth_read_local_device_oob_data_ex()),
         {"bluetooth read_local_device_oob_data_ex"}},
        {VYM_CALL(vym_bluetooth_set_remote_device_oob_data(kPeer, kHash, kRandomizer)),
         {"bluetooth set_remote_device_oob_data " + kAddress +
          " c192=<01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10>"
          " r192=<10 0F 0E 0D 0C 0B 0A 09 08 07 06 05 04 03 02 01>"}},
        {VYM_CALL(vym_bluetooth_set_bond_mode(-2)), {"bluetooth set_bond_mode mode=4294967294"}},
        {VYM_CALL(vym_bluetooth_get_adapter_properties()), {"bluetooth get_adapter_properties"}},
        {VYM_CALL(vym_bluetooth_get_remote_device_properties(kPeer)),
         {"bluetooth get_remote_device_properties " + kAddress}},
        {VYM_CALL(vym_bluetooth_get_remote_service_record(kPeer, kService)),
         {"bluetooth get_remote_service_record " + kAddress + " uuid=" + kUuid}},
        {VYM_CALL(vym_bluetooth_get_remote_services(kPeer)),
         {"bluetooth get_remote_services " + kAddress}},
        {VYM_CALL(vym_bluetooth_start_discovery()), {"bluetooth start_discovery"}},
        {VYM_CALL(vym_bluetooth_stop_discovery()), {"bluetooth stop_discovery"}},
        {VYM_CALL(vym_bluetooth_create_bond(kPeer)), {"bluetooth create_bond " + kAddress}},
        {VYM_CALL(vym_bluetooth_create_bond_out_of_bond(kPeer, 0x01020304, 3, s_a)),
         {"bluetooth create_bond_out_of_band " + kAddress + " transport=16909060 data=" + kA}},
        {VYM_CALL(vym_bluetooth_remove_bond(kPeer)), {"bluetooth remove_bond " + kAddress}},
        {VYM_CALL(vym_bluetooth_cancel_bond(kPeer)), {"bluetooth cancel_bond " + kAddress}},
        {VYM_CALL(vym_bluetooth_get_connection_state(kPeer)),
         {"bluetooth get_connection_state " + kAddress}},
        {VYM_CALL(vym_bluetooth_pin_reply(kPeer, 1, 3, s_a)),
         {"bluetooth pin_reply " + kAddress + " accept=1 pin=" + kA}},
        {VYM_CALL(vym_bluetooth_ssp_reply(kPeer, 2, 3, 0x000F423F)),
         {"bluetooth ssp_reply " + kAddress + " variant=2 accept=3 passkey=999999"}},
        {VYM_CALL(vym_bluetooth_connection_auth(kPeer, 2, 3)),
         {"bluetooth connection_auth " + kAddress + " profile=2 accept=3"}},
        {VYM_CALL(vym_bluetooth_read_connected_device_rssi(kPeer)),
         {"bluetooth read_connected_device_rssi " + kAddress}},
        {VYM_CALL(vym_bluetooth_acl_cancel_connect(kPeer)),
         {"bluetooth acl_cancel_connect " + kAddress},
         {"BI00A1B2C3D4E5F601"}}, // no link is up
        {VYM_CALL(vym_bluetooth_add_AA_uuid(kService)), {"bluetooth add_uuid uuid=" + kUuid}},
        {VYM_CALL(vym_bluetooth_le_receiver_test(0x27)),
         {"bluetooth le_test operation=1 count=1 parameters=<27>"}},
        {VYM_CALL(vym_bluetooth_le_transmitter_test(0x12, 0x25, 0x07)),
         {"bluetooth le_test operation=2 count=3 parameters=<12 25 07>"}},
        {VYM_CALL(vym_bluetooth_le_test_end()),
         {"bluetooth le_test operation=3 count=0 parameters=<>"}},
        {VYM_CALL(vym_bluetooth_read_address()), {"bluetooth read_address"}},
        {VYM_CALL(vym_bluetooth_os_suspend_action()), {"bluetooth os_suspend_action"}},
        {VYM_CALL(vym_bluetooth_os_wakeup_action()), {"bluetooth os_wakeup_action"}},
        {VYM_CALL(vym_bluetooth_write_loopback_mode(0xAB)), {"bluetooth write_loopback_mode mode=171"}},
    };
}

inline std::vector<Row> SerialRows() {
    const std::string connect = "rfcomm connect " + kAddress + " uuid=" + kUuid + " port=30";
    const std::string listen = "rfcomm listen uuid=" + kUuid + " port=7 service_name=\"+49 (0)30#\"";
    return {
        {VYM_CALL(vym_rfcomm_connect(kPeer, kService, 30)), {connect}},
        {VYM_CALL(vym_rfcomm_connect_impl(kPeer, kService, 30)), {connect}},
        {VYM_CALL(vym_rfcomm_disconnect(-2)), {"rfcomm disconnect handle=4294967294"}},
        {VYM_CALL(vym_rfcomm_listen_impl(kService, 7, s_text)), {listen}},
        {VYM_CALL(vym_rfcomm_server_close(vym_rfcomm_listen(kService, 7, s_text))),
         {listen, "rfcomm server_disconnect channel=5"}},
        {"vym_rfcomm_listen(kService, 7, s_text)",
         [] { (void)vym_rfcomm_server_close(vym_rfcomm_listen(kService, 7, s_text)); },
         {listen, "rfcomm server_disconnect channel=5"}},
        {"vym_rfcomm_close(&sock)",
         [] {
             vym_bluetooth_socket_t sock = {};
             sock.handle = 0x1234;
             (void)vym_rfcomm_close(&sock);
         },
         {"rfcomm disconnect handle=4660"}},
        {VYM_CALL(vym_rfcomm_fetch_channels(kPeer, kService)),
         {"rfcomm fetch_channels " + kAddress + " uuid=" + kUuid}},
        {VYM_CALL(vym_rfcomm_server_disconnect(9)), {"rfcomm server_disconnect channel=9"}},
    };
}

inline std::vector<Row> HandsFreeRows() {
    const std::string action = "hfp handle_call_action ";
    // The phone's calls, once the library has asked for them.
    const std::string query = "hfp query_current_calls";
    const std::vector<std::string> incoming = {"HX09", "HO01010400111", "HQ0015"};
    return {
        {VYM_CALL(vym_hfp_connect(kPeer)), {"hfp connect " + kAddress}},
        {VYM_CALL(vym_hfp_disconnect(kPeer)), {"hfp disconnect " + kAddress}},
        {VYM_CALL(vym_hfp_connect_audio(kPeer)), {"hfp connect_audio " + kAddress}},
        {VYM_CALL(vym_hfp_disconnect_audio(kPeer)), {"hfp disconnect_audio " + kAddress}},
        {VYM_CALL(vym_hfp_start_voice_recognition()), {"hfp start_voice_recognition"}},
        {VYM_CALL(vym_hfp_stop_voice_recognition()), {"hfp stop_voice_recognition"}},
        {VYM_CALL(vym_hfp_volume_control(1, 0x1A2B)), {"hfp volume_control type=1 volume=6699"}},
        {VYM_CALL(vym_hfp_dial(s_text)), {"hfp dial number=\"+49 (0)30#\""}},
        {VYM_CALL(vym_hfp_dial_memory(0x1A)), {"hfp dial_memory location=26"}},
        {VYM_CALL(vym_hfp_accept_call(kPeer, CALL_ACCEPT_NONE)),
         {query, action + "action=7 index=0"},
         incoming},
        {VYM_CALL(vym_hfp_accept_call_with_retry(kPeer, CALL_ACCEPT_NONE, 1)),
         {query, action + "action=1 index=0"},
         incoming},
        {VYM_CALL(vym_hfp_reject_call(kPeer)), {query, action + "action=8 index=0"}, incoming},
        {VYM_CALL(vym_hfp_terminate_call(kPeer, 0)), {action + "action=8 index=0"}},
        {VYM_CALL(vym_hfp_handle_call_action(5, 2)), {action + "action=5 index=2"}},
        {VYM_CALL(vym_hfp_query_current_calls()), {query}},
        {VYM_CALL(vym_hfp_query_current_operator_name()), {"hfp query_current_operator_name"}},
        {VYM_CALL(vym_hfp_retrieve_subscriber_info()), {"hfp retrieve_subscriber_info"}},
        {VYM_CALL(vym_hfp_send_dtmf('#')), {"hfp send_dtmf code=35"}},
        {VYM_CALL(vym_hfp_query_last_voice_tag_name()), {"hfp query_last_voice_tag_name"}},
        {VYM_CALL(vym_hfp_send_at_command(1, 2, 0xFFFF, s_text)),
         {"hfp send_at_command command=1 value1=2 value2=65535 argument=\"+49 (0)30#\""}},
        {VYM_CALL(vym_hfp_switch_audio_hw(2)), {"hfp switch_audio_hw on=2"}},
        {VYM_CALL(vym_hfp_switch_mic_state(1)), {"hfp switch_mic_state mute=1"}},
    };
}

inline std::vector<Row> MusicRows() {
    return {
        {VYM_CALL(vym_a2dp_connect(kPeer)), {"a2dp connect " + kAddress}},
        {VYM_CALL(vym_a2dp_disconnect(kPeer)), {"a2dp disconnect " + kAddress}},
        {VYM_CALL(vym_a2dp_inform_audio_focus_state(3)), {"a2dp inform_audio_focus_state state=3"}},
        {VYM_CALL(vym_a2dp_inform_audio_trace_gain(0x1234)),
         {"a2dp inform_audio_trace_gain gain=4660"}},
        {VYM_CALL(vym_a2dp_switch_audio_hw(1)), {"a2dp switch_audio_hw mode=1"}},
    };
}

inline std::vector<std::string> Pressed(const std::string& command, int key) {
    const std::string head = "avrcp " + command + " " + kAddress + " key=" + std::to_string(key);
    return {head + " state=0", head + " state=1"};
}

inline std::vector<Row> PlayerRows() {
    const std::string held = "avrcp passthrough " + kAddress;
    return {
        {VYM_CALL(vym_avrcp_connect_impl(kPeer)), {"avrcp connect " + kAddress}},
        {VYM_CALL(vym_avrcp_disconnect_impl(kPeer)), {"avrcp disconnect " + kAddress}},
        {VYM_CALL(vym_avrcp_play(kPeer)), Pressed("passthrough", 0x44)},
        {VYM_CALL(vym_avrcp_stop(kPeer)), Pressed("passthrough", 0x45)},
        {VYM_CALL(vym_avrcp_pause(kPeer)), Pressed("passthrough", 0x46)},
        {VYM_CALL(vym_avrcp_forward(kPeer)), Pressed("passthrough", 0x4B)},
        {VYM_CALL(vym_avrcp_backward(kPeer)), Pressed("passthrough", 0x4C)},
        {VYM_CALL(vym_avrcp_rewind(kPeer, 1)), {held + " key=72 state=0"}},
        {VYM_CALL(vym_avrcp_fast_forward(kPeer, 0)), {held + " key=73 state=1"}},
        {VYM_CALL(vym_avrcp_next_group(kPeer)), Pressed("group_navigation", 0)},
        {VYM_CALL(vym_avrcp_previous_group(kPeer)), Pressed("group_navigation", 1)},
        {VYM_CALL(vym_avrcp_get_player_app_setting(kPeer, 2, 2, s_setting_ids)),
         {"avrcp get_player_app_setting " + kAddress + " count=2 ids={ids=[2, 3]}"}},
        {"vym_avrcp_set_player_app_setting(kPeer, {2, s_settings})",
         [] {
             (void)vym_avrcp_set_player_app_setting(kPeer, {2, s_settings});
         },
         {"avrcp set_player_app_setting " + kAddress + " count=2 settings={ids=[2, 3] values=[1, 4]}"}},
        {VYM_CALL(vym_avrcp_send_abs_vol_rsp(kPeer, 0x7E)),
         {"avrcp send_abs_vol_rsp " + kAddress + " volume=126 label=5"},
         {"RHA1B2C3D4E5F67F05"}},
        {VYM_CALL(vym_avrcp_send_register_abs_val_rsp(kPeer, 0x0D, 0x5A)),
         {"avrcp send_register_abs_vol_rsp " + kAddress + " response_type=13 volume=90 label=6"},
         {"RIA1B2C3D4E5F606"}},
        {VYM_CALL(vym_avrcp_get_folder_list(kPeer, 1, -1)),
         {"avrcp get_folder_list " + kAddress + " start=1 items=4294967295"}},
        {VYM_CALL(vym_avrcp_change_folder_path(kPeer, 1, 3, s_a)),
         {"avrcp change_folder_path " + kAddress + " direction=1 uid=" + kA}},
        {VYM_CALL(vym_avrcp_get_total_number_of_items(kPeer)),
         {"avrcp get_total_number_of_items " + kAddress}},
        {VYM_CALL(vym_avrcp_play_item(kPeer, 3, 3, s_a)),
         {"avrcp play_item " + kAddress + " scope=3 uid=" + kA}},
        {VYM_CALL(vym_avrcp_get_player_list(kPeer, 1, 2)),
         {"avrcp get_player_list " + kAddress + " start=1 items=2"}},
        {VYM_CALL(vym_avrcp_get_playback_state_impl(kPeer)), {"avrcp get_playback_state " + kAddress}},
        {VYM_CALL(vym_avrcp_get_nowplaying_list(kPeer, 3, 4)),
         {"avrcp get_nowplaying_list " + kAddress + " start=3 items=4"}},
        {VYM_CALL(vym_avrcp_set_browsed_player_impl(kPeer, 0x1A2B)),
         {"avrcp set_browsed_player " + kAddress + " player=6699"}},
        {VYM_CALL(vym_avrcp_set_addressed_player(kPeer, 0xABCD)),
         {"avrcp set_addressed_player " + kAddress + " player=43981"}},
        {VYM_CALL(vym_avrcp_cancel_browsing(kPeer)), {"avrcp cancel_browsing " + kAddress}},
        {VYM_CALL(vym_avrcp_connect_bip(kPeer, 0x1005)),
         {"avrcp connect_bip " + kAddress + " psm=4101"}},
        {VYM_CALL(vym_avrcp_get_element_attribute(kPeer, 3, 3, s_a)),
         {"avrcp get_element_attribute " + kAddress + " count=3 ids=" + kA}},
        {VYM_CALL(vym_avrcp_get_linked_thumbnail(kPeer, 3, s_a, 2, s_b)),
         {"avrcp get_linked_thumbnail " + kAddress + " handle=" + kA + " path=" + kB}},
        {VYM_CALL(vym_avrcp_get_image(kPeer, 0x01020304, 3, s_a, 2, s_b, 1, s_c, 4, s_d)),
         {"avrcp get_image " + kAddress + " max_size=16909060 handle=" + kA + " encoding=" + kB +
          " pixel=" + kC + " path=" + kD}},
    };
}

inline std::vector<Row> PhoneBookRows() {
    return {
        {VYM_CALL(vym_pbap_connect(kPeer)), {"pbap connect " + kAddress}},
        {VYM_CALL(vym_pbap_disconnect(kPeer)), {"pbap disconnect " + kAddress}},
        {VYM_CALL(vym_pbap_get_phonebook(SYNC_OCH, 0x1234, 0xABCD)),
         {"pbap get_phonebook type=2 offset=4660 count=43981"}},
        {VYM_CALL(vym_pbap_get_phonebook_size(SYNC_MCH)),
         {"pbap get_phonebook type=3 offset=0 count=0"}},
        {VYM_CALL(vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO)), {"pbap filter_mask mask=16"}},
        {VYM_CALL(vym_pbap_pull_vcard_by_number(-2, s_text)),
         {"pbap pull_vcard_by_number index=4294967294 number=\"+49 (0)30#\""}},
        {VYM_CALL(vym_pbap_cancel_get_phonebook()), {"pbap cancel_get_phonebook"}},
    };
}

// NOLINTNEXTLINE(readability-function-size): one row for each function
inline std::vector<Row> GattClientRows() {
    const std::string registration = "gatt_client register uuid=" + kUuid;
    const std::string connection =
        "gatt_client connect client_if=5 " + kAddress + " is_direct=6 transport=7";
    return {
        {VYM_CALL(vym_gatt_client_register(kService, nullptr)), {registration}},
        {VYM_CALL(vym_gatt_client_register_client(kService)), {registration}},
        {VYM_CALL(vym_gatt_client_register_client_for_server(kService, nullptr)), {registration}},
        {VYM_CALL(vym_gatt_server_register_client(kService, nullptr)), {registration}},
        {VYM_CALL(vym_gatt_client_unregister(3)), {"gatt_client unregister client_if=3"}},
        {VYM_CALL(vym_gatt_client_unregister_client(3)), {"gatt_client unregister client_if=3"}},
        {VYM_CALL(vym_gatt_client_unregister_client_for_server(3)),
         {"gatt_client unregister client_if=3"}},
        {VYM_CALL(vym_gatt_server_unregister_client(3)), {"gatt_client unregister client_if=3"}},
        {VYM_CALL(vym_gatt_client_scan(1)), {"gatt_client scan start=1"}},
        {VYM_CALL(vym_gatt_client_listen(1, 2)), {"gatt_client listen client_if=1 enable=2"}},
        {VYM_CALL(vym_gatt_client_listen_ex(1, 2, 3, 4)),
         {"gatt_client listen_ex client_if=1 enable=2 min_interval=3 max_interval=4"}},
        {VYM_CALL(vym_gatt_client_connect(kPeer, 6, 7)),
         {"gatt_client register uuid=" + kOwnUuid, connection}},
        {VYM_CALL(vym_gatt_client_connect_ex(5, kPeer, 6, 7)), {connection}},
        {VYM_CALL(vym_gatt_client_connect_impl(5, kPeer, 6, 7)), {connection}},
        {VYM_CALL(vym_gatt_client_disconnect(1, kPeer, 0x1234)),
         {"gatt_client disconnect client_if=1 " + kAddress + " conn_id=4660"}},
        {VYM_CALL(vym_gatt_client_refresh(1, kPeer)), {"gatt_client refresh client_if=1 " + kAddress}},
        {VYM_CALL(vym_gatt_client_search_service(0x1234, 2, 0x180D)),
         {"gatt_client search_service conn_id=4660 search_all=2 uuid16=6157"}},
        {VYM_CALL(vym_gatt_client_get_included_service(1, 2, 3, kService, 4, 5, kChar)),
         {"gatt_client get_included_service conn_id=1 " + kServiceText +
          " included_type=4 included_instance=5 included=" + kOtherUuid}},
        {VYM_CALL(vym_gatt_client_get_characteristic(1, 2, 3, kService, 4, kChar)),
         {"gatt_client get_characteristic conn_id=1 " + kCharText}},
        {VYM_CALL(vym_gatt_client_get_descriptor(1, 2, 3, kService, 4, kChar, 5, kDescr)),
         {"gatt_client get_descriptor conn_id=1 " + kDescrText}},
        {VYM_CALL(vym_gatt_client_read_characteristic(1, 2, 3, kService, 4, kChar, 6)),
         {"gatt_client read_characteristic conn_id=1 " + kCharText + " auth_req=6"}},
        {VYM_CALL(vym_gatt_client_write_characteristic(1, 2, 3, kService, 4, kChar, 6, 7, 3, s_a)),
         {"gatt_client write_characteristic conn_id=1 " + kCharText +
          " write_type=6 auth_req=7 value=" + kA}},
        {VYM_CALL(vym_gatt_client_read_descriptor(1, 2, 3, kService, 4, kChar, 5, kDescr, 6)),
         {"gatt_client read_descriptor conn_id=1 " + kDescrText + " auth_req=6"}},
        {VYM_CALL(
             vym_gatt_client_write_descriptor(1, 2, 3, kService, 4, kChar, 5, kDescr, 6, 7, 3, s_a)),
         {"gatt_client write_descriptor conn_id=1 " + kDescrText +
          " write_type=6 auth_req=7 value=" + kA}},
        {VYM_CALL(vym_gatt_client_execute_write(0x1234, 1)),
         {"gatt_client execute_write conn_id=4660 execute=1"}},
        {VYM_CALL(vym_gatt_client_register_for_notifications(1, kPeer, 2, 3, kService, 4, kChar, 5)),
         {"gatt_client register_for_notifications client_if=1 " + kAddress + " " + kCharText +
          " enable=5"}},
        {VYM_CALL(vym_gatt_connection_parameter_update(1, kPeer, 2, 3, 4, 5)),
         {"gatt_client connection_parameter_update client_if=1 " + kAddress +
          " min_interval=2 max_interval=3 latency=4 timeout=5"}},
        {VYM_CALL(vym_gatt_send_data(3, s_a)), {"gatt_client send_data data=" + kA}},
        {VYM_CALL(vym_gatt_test(1, 2, 3, kPeer, 4, 5, 6, 7, 8)),
         {"gatt_client test command=1 uuid_lsb=2 uuid_msb=3 " + kAddress +
          " p1=4 p2=5 p3=6 p4=7 p5=8"}},
        {VYM_CALL(vym_gatt_client_read_remote_rssi(1, kPeer)),
         {"gatt_client read_remote_rssi client_if=1 " + kAddress}},
        {VYM_CALL(vym_gatt_client_dump(0x1234)), {"gatt_client dump conn_id=4660"}},
        {VYM_CALL(vym_gatt_cleanup()), {"gatt_client cleanup"}},
        {VYM_CALL(vym_gatt_client_configure_mtu(0x1234, 0x0205)),
         {"gatt_client configure_mtu conn_id=4660 mtu=517"}},
    };
}

inline std::vector<Row> ScanningRows() {
    return {
        {VYM_CALL(vym_gatt_set_scan_parameters(1, 2, 3)),
         {"gatt_client set_scan_parameters client_if=1 interval=2 window=3"}},
        {VYM_CALL(vym_gatt_client_scan_filter_add(1, 2, 3, 4, 5, 6, 7, 8, 9, 3, s_a, 2, s_b, 10, 1, s_c,
                                                  4, s_d)),
         {"gatt_client scan_filter_add " + kFilterText}},
        {VYM_CALL(vym_gatt_client_scan_filter_delete(1, 2, 3, 4, 5, 6, 7, 8, 9, 3, s_a, 2, s_b, 10, 1,
                                                     s_c, 4, s_d)),
         {"gatt_client scan_filter_delete " + kFilterText}},
        {VYM_CALL(vym_gatt_client_scan_filter_param_add(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12)),
         {"gatt_client scan_filter_param_add client_if=1 filter_index=2 features=3 list_logic=4 "
          "filter_logic=5 rssi_high=6 rssi_low=7 delivery_mode=8 found_timeout=9 lost_timeout=10 "
          "found_timeout_count=11 tracked_entries=12"}},
        {VYM_CALL(vym_gatt_client_scan_filter_param_clear_all(1)),
         {"gatt_client scan_filter_param_clear_all client_if=1"}},
        {VYM_CALL(vym_gatt_client_scan_filter_param_delete(1, 2)),
         {"gatt_client scan_filter_param_delete client_if=1 filter_index=2"}},
        {VYM_CALL(vym_gatt_client_scan_filter_clear(1, 2)),
         {"gatt_client scan_filter_clear client_if=1 filter_index=2"}},
        {VYM_CALL(vym_gatt_client_scan_filter_enable(1, 2)),
         {"gatt_client scan_filter_enable client_if=1 enable=2"}},
        {VYM_CALL(vym_gatt_client_config_batch_scan_storage(1, 2, 3, 4)),
         {"gatt_client config_batch_scan_storage client_if=1 full_percent=2 truncated_percent=3 "
          "threshold_percent=4"}},
        {VYM_CALL(vym_gatt_client_start_batch_scan(1, 2, 3, 4, 5, 6)),
         {"gatt_client start_batch_scan client_if=1 mode=2 interval=3 window=4 address_type=5 "
          "discard_rule=6"}},
        {VYM_CALL(vym_gatt_client_stop_batch_scan(1)), {"gatt_client stop_batch_scan client_if=1"}},
        {VYM_CALL(vym_gatt_client_read_scan_reports(1, 2)),
         {"gatt_client read_scan_reports client_if=1 scan_type=2"}},
        {VYM_CALL(vym_gatt_client_disable_adv(1)), {"gatt_client disable_adv client_if=1"}},
        {VYM_CALL(vym_gatt_client_enable_adv(1, 2, 3, 4, 5, 6, 7)),
         {"gatt_client enable_adv " + kAdvertisingText}},
        {VYM_CALL(vym_gatt_client_update_adv(1, 2, 3, 4, 5, 6, 7)),
         {"gatt_client update_adv " + kAdvertisingText}},
        {VYM_CALL(vym_gatt_client_set_adv_data(1, 2, 3, 4, 5, 3, s_a, 2, s_b, 1, s_c)),
         {"gatt_client set_client_adv_data client_if=1 scan_response=2 include_name=3 "
          "include_tx_power=4 appearance=5" +
          kAdvertisedText}},
        {VYM_CALL(vym_gatt_set_adv_data(1, 2, 3, 4, 5, 6, 7, 3, s_a, 2, s_b, 1, s_c)),
         {"gatt_client set_adv_data server_if=1 scan_response=2 include_name=3 include_tx_power=4 "
          "min_interval=5 max_interval=6 appearance=7" +
          kAdvertisedText}},
        {VYM_CALL(vym_gatt_set_user_def_adv_data(1, 2, 3, s_a)),
         {"gatt_client set_user_def_adv_data server_if=1 scan_response=2 data=" + kA}},
        {VYM_CALL(vym_gatt_client_set_adv_command(1)), {"gatt_client set_adv_command enable=1"}},
    };
}

inline std::vector<Row> GattServerRows() {
    return {
        {VYM_CALL(vym_gatt_server_register_app(kService)), {"gatt_server register_app uuid=" + kUuid}},
        {VYM_CALL(vym_gatt_server_unregister_app(7)), {"gatt_server unregister_app server_if=7"}},
        {VYM_CALL(vym_gatt_server_connect(7, kPeer, 1)),
         {"gatt_server connect server_if=7 " + kAddress + " is_direct=1"}},
        {VYM_CALL(vym_gatt_server_disconnect(7, kPeer, 0x1234)),
         {"gatt_server disconnect server_if=7 " + kAddress + " conn_id=4660"}},
        {VYM_CALL(vym_gatt_server_add_service(1, 2, 3, kService, 4)),
         {"gatt_server add_service server_if=1 service_type=2 instance=3 uuid=" + kUuid +
          " handles=4"}},
        {VYM_CALL(vym_gatt_server_add_included_service(1, 2, 3)),
         {"gatt_server add_included_service server_if=1 service=2 included_service=3"}},
        {VYM_CALL(vym_gatt_server_add_characteristic(1, 2, kChar, 3, 4)),
         {"gatt_server add_characteristic server_if=1 service=2 uuid=" + kOtherUuid +
          " properties=3 permissions=4"}},
        {VYM_CALL(vym_gatt_server_add_descriptor(1, 2, kDescr, PERMISSION_READ)),
         {"gatt_server add_descriptor server_if=1 service=2 uuid=" + kThirdUuid + " permissions=2"}},
        {VYM_CALL(vym_gatt_server_start_service(1, 2, 3)),
         {"gatt_server start_service server_if=1 service=2 transport=3"}},
        {VYM_CALL(vym_gatt_server_stop_service(1, 2)),
         {"gatt_server stop_service server_if=1 service=2"}},
        {VYM_CALL(vym_gatt_server_delete_service(1, 2)),
         {"gatt_server delete_service server_if=1 service=2"}},
        {VYM_CALL(vym_gatt_server_send_indication(1, 2, 3, 4, 3, s_a)),
         {"gatt_server send_indication server_if=1 attribute=2 conn_id=3 confirm=4 value=" + kA}},
        {VYM_CALL(vym_gatt_server_send_notification(1, 2, 3, 3, s_a)),
         {"gatt_server send_notification server_if=1 attribute=2 conn_id=3 value=" + kA}},
        {VYM_CALL(vym_gatt_server_send_response(1, 2, 3, 4, 5, 6, 7, 3, s_a)),
         {"gatt_server send_response server_if=1 conn_id=2 trans_id=3 status=4 attribute=5 offset=6 "
          "auth_req=7 value=" +
          kA}},
    };
}

inline std::vector<Row> HidRows() {
    return {
        {VYM_CALL(vym_hid_register_app(1, 3, s_a, 2, s_b, 1, s_c, 4, s_d, 3, s_e, 2, s_f)),
         {"hid register_app subclass=1 name=" + kA + " description=" + kB + " provider=" + kC +
          " report_descriptor=" + kD + " in_qos=" + kE + " out_qos=" + kF}},
        {VYM_CALL(vym_hid_unregister_app()), {"hid unregister_app"}},
        {VYM_CALL(vym_hid_send_report(1, 2, 3, s_a)), {"hid send_report type=1 id=2 report=" + kA}},
        {VYM_CALL(vym_hid_report_error_impl(0xAB)), {"hid report_error error=171"}},
        {VYM_CALL(vym_hid_unplug_impl()), {"hid unplug"}},
        {VYM_CALL(vym_hid_connect(kPeer)), {"hid connect " + kAddress}},
        {VYM_CALL(vym_hid_disconnect()), {"hid disconnect"}},
    };
}

#undef VYM_CALL

inline std::vector<Row> AllRows() {
    std::vector<Row> all;
    for (const auto& part :
         {AdapterRows(), SerialRows(), HandsFreeRows(), MusicRows(), PlayerRows(), PhoneBookRows(),
          GattClientRows(), ScanningRows(), GattServerRows(), HidRows()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/** Exported functions of the library that send no command. */
inline const std::vector<std::string> kSendNothing = {
    "vym_sdk_init", "vym_sdk_init_ex", "vym_sdk_done",
    // They call back, carry data or are told of something.
    "vym_internal_event_init", "vym_internal_event_done", "vym_internal_event_register",
    "vym_internal_event_unregister", "vym_internal_event_send", "vym_audio_stream_init",
    "vym_audio_stream_done", "vym_audio_stream_send", "vym_bluetooth_register_data_transport_callback",
    "vym_bluetooth_get_state", "vym_pbap_is_connected", "vym_rfcomm_accept", "vym_rfcomm_read",
    "vym_rfcomm_write", "vym_rfcomm_get_address",
    // The modules' beginning and end.
    "vym_bluetooth_init", "vym_bluetooth_done", "vym_hfp_init", "vym_hfp_done", "vym_a2dp_init",
    "vym_a2dp_done", "vym_avrcp_init", "vym_avrcp_done", "vym_pbap_init", "vym_pbap_done",
    "vym_rfcomm_init", "vym_rfcomm_done", "vym_gatt_client_init", "vym_gatt_client_done",
    "vym_gatt_server_init", "vym_gatt_server_done", "vym_hid_init", "vym_hid_done",
    // The capture.
    "vym_debug_acl_data", "vym_debug_capture", "vym_debug_cleanup", "vym_debug_close",
    "vym_debug_hci_cmd", "vym_debug_hci_evt", "vym_debug_init", "vym_debug_is_open",
    "vym_debug_log_close", "vym_debug_log_open", "vym_debug_open", "vym_debug_sco_data",
    "vym_debug_stop_listener"};

} // namespace commands

#endif
