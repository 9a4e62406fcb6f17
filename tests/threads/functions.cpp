// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/functions.h"

#include "internal_ev_process.h"
#include "threads/calling.h"
#include "vym_debug.h"
#include "vym_pbap_queue.h"
#include "vym_sdk.h"

#include <cstdlib>
#include <fstream>

namespace threads {
namespace {

using Call = void (*)();

Function any(const char* name, Call call, Call prepare = nullptr) {
    return {name, call, Callback::kYes, Threads::kAny, nullptr, prepare, nullptr, nullptr};
}
Function vain(const char* name, Call call) {
    return {name, call, Callback::kInVain, Threads::kAny, nullptr, nullptr, nullptr, nullptr};
}
// Of a profile: takes the lock that is held while callbacks run.
Function lifecycle(const char* name, Call call) {
    return {name, call, Callback::kNever, Threads::kOne, nullptr, nullptr, nullptr, nullptr};
}
Function endless(const char* name, Call call, Call prepare, Call rescue) {
    return {name, call, Callback::kNever, Threads::kAny, nullptr, prepare, rescue, nullptr};
}

#define PLAIN(name) any(#name, [] { CallPlainly(::name); })
#define VAIN(name) vain(#name, [] { CallPlainly(::name); })

void Ignore(ev_data_t* /*event*/) {}

NODESTRU* NewNode() {
    return static_cast<NODESTRU*>(calloc(1, sizeof(NODESTRU)));
}

pbap_queue_t* NewItem() {
    return static_cast<pbap_queue_t*>(calloc(1, sizeof(pbap_queue_t)));
}

// A capture that was open would be forgotten, and its descriptor lost.
template <class Open>
void OpenNoCapture(Open open) {
    char nowhere[] = "/nonexistent/capture";
    vym_debug_log_close();
    open(nowhere);
}

void Capture() {
    std::string path = Stage::Now().Directory() + "/client_sock.log";
    vym_debug_log_open(path.data());
}

// The server socket is freed while others accept on it.
void AcceptOnCopy() {
    vym_bluetooth_server_socket_t copy{};
    copy.server_channel = 5;
    vym_rfcomm_accept(&copy);
}

// A client's registration has failed, and whoever waits for one goes on.
void Registered() {
    Stage::Now().Server().SendEvents({"KA0107" + std::string(32, '0')});
}

const Group kStartAndStop{
    "start and stop",
    {
        {"vym_sdk_done", vym_sdk_done, Callback::kSpecial, Threads::kAny,
         "from a callback it only disconnects; otherwise it waits for the callback in progress",
         nullptr, nullptr, nullptr},
        {"vym_sdk_init", [] { vym_sdk_init(); }, Callback::kSpecial, Threads::kAny,
         "-1 from a callback; waits first for the end of the session before, as vym_sdk_done() does",
         nullptr, nullptr, nullptr},
        {"vym_sdk_init_ex", [] { vym_sdk_init_ex(Stage::Now().Directory().c_str()); },
         Callback::kSpecial, Threads::kAny,
         "-1 from a callback; waits first for the end of the session before, as vym_sdk_done() does; "
         "and for a server whose queue of clients is full",
         nullptr, nullptr, nullptr},
    }};

const Group kInternalEvents{
    "internal events",
    {
        {"vym_internal_event_done", vym_internal_event_done, Callback::kNever, Threads::kOne,
         "only while the library is not started; starting and stopping call it themselves", nullptr,
         nullptr, nullptr},
        {"vym_internal_event_init", vym_internal_event_init, Callback::kNever, Threads::kOne,
         "only while the library is not started; starting and stopping call it themselves", nullptr,
         nullptr, nullptr},
        {"vym_internal_event_register", [] { vym_internal_event_register(Ignore); },
         Callback::kNotInHandler, Threads::kAny, nullptr, nullptr, nullptr,
         [] { vym_internal_event_unregister(Ignore); }},
        {"vym_internal_event_send", [] { vym_internal_event_send(99, 1, plain_bytes.data()); },
         Callback::kYes, Threads::kAny,
         "while the channel is full; on the receive thread it does not wait and answers 0", nullptr,
         nullptr, nullptr},
        {"vym_internal_event_unregister", [] { vym_internal_event_unregister(Ignore); },
         Callback::kNotInHandler, Threads::kAny, nullptr, nullptr, nullptr, nullptr},
    }};

const Group kAudio{
    "audio",
    {
        {"vym_audio_stream_done", vym_audio_stream_done, Callback::kYes, Threads::kOne,
         "on the audio thread it does not wait", nullptr, nullptr,
         [] { vym_audio_stream_init(&Stage::Now().Table().audio); }},
        {"vym_audio_stream_init", [] { vym_audio_stream_init(&Stage::Now().Table().audio); },
         Callback::kYes, Threads::kOne, nullptr, nullptr, nullptr, nullptr},
        any("vym_audio_stream_send", [] { vym_audio_stream_send(0, 1, 1, plain_bytes.data()); }),
    }};

const Group kAdapter{
    "adapter",
    {
        PLAIN(vym_bluetooth_acl_cancel_connect),
        PLAIN(vym_bluetooth_add_AA_uuid),
        PLAIN(vym_bluetooth_cancel_bond),
        PLAIN(vym_bluetooth_connection_auth),
        PLAIN(vym_bluetooth_create_bond),
        PLAIN(vym_bluetooth_create_bond_out_of_bond),
        PLAIN(vym_bluetooth_disable),
        lifecycle("vym_bluetooth_done", vym_bluetooth_done),
        PLAIN(vym_bluetooth_enable),
        PLAIN(vym_bluetooth_enable_ex),
        PLAIN(vym_bluetooth_get_adapter_properties),
        VAIN(vym_bluetooth_get_address),
        vain("vym_bluetooth_get_bonded_devices",
             [] {
                 bt_remote_device_t device{};
                 int size = 1;
                 vym_bluetooth_get_bonded_devices(&device, &size);
             }),
        VAIN(vym_bluetooth_get_class),
        PLAIN(vym_bluetooth_get_connection_state),
        VAIN(vym_bluetooth_get_device_priority),
        VAIN(vym_bluetooth_get_devices_uuids),
        VAIN(vym_bluetooth_get_manufacturer_code),
        VAIN(vym_bluetooth_get_name),
        VAIN(vym_bluetooth_get_number_of_bonded_devices),
        PLAIN(vym_bluetooth_get_remote_device_propertie),
        PLAIN(vym_bluetooth_get_remote_device_properties),
        PLAIN(vym_bluetooth_get_remote_service_record),
        PLAIN(vym_bluetooth_get_remote_services),
        VAIN(vym_bluetooth_get_scan_mode),
        PLAIN(vym_bluetooth_get_state),
        VAIN(vym_bluetooth_get_version),
        lifecycle("vym_bluetooth_init", [] { vym_bluetooth_init(&Stage::Now().Table().bluetooth); }),
        PLAIN(vym_bluetooth_le_receiver_test),
        PLAIN(vym_bluetooth_le_test_end),
        PLAIN(vym_bluetooth_le_transmitter_test),
        PLAIN(vym_bluetooth_os_suspend_action),
        PLAIN(vym_bluetooth_os_wakeup_action),
        PLAIN(vym_bluetooth_pin_reply),
        PLAIN(vym_bluetooth_preset_addr),
        PLAIN(vym_bluetooth_read_address),
        PLAIN(vym_bluetooth_read_connected_device_rssi),
        PLAIN(vym_bluetooth_read_local_device_oob_data),
        PLAIN(vym_bluetooth_read_local_device_oob_data_ex),
        any("vym_bluetooth_register_data_transport_callback",
            [] { vym_bluetooth_register_data_transport_callback(7, nullptr); }),
        PLAIN(vym_bluetooth_remove_bond),
        PLAIN(vym_bluetooth_set_bond_mode),
        PLAIN(vym_bluetooth_set_discoverable_timeout),
        PLAIN(vym_bluetooth_set_discovery_internval),
        VAIN(vym_bluetooth_set_name),
        PLAIN(vym_bluetooth_set_number_of_bonded_devices),
        PLAIN(vym_bluetooth_set_remote_device_oob_data),
        PLAIN(vym_bluetooth_set_remote_device_propertie),
        VAIN(vym_bluetooth_set_scan_mode),
        PLAIN(vym_bluetooth_ssp_reply),
        PLAIN(vym_bluetooth_start_discovery),
        PLAIN(vym_bluetooth_stop_discovery),
        PLAIN(vym_bluetooth_write_loopback_mode),
    }};

const Group kHandsFree{
    "hands-free",
    {
        any(
            "vym_hfp_accept_call", [] { vym_hfp_accept_call({}, CALL_ACCEPT_NONE); },
            [] { Stage::Now().Ring(); }),
        PLAIN(vym_hfp_connect),
        PLAIN(vym_hfp_connect_audio),
        PLAIN(vym_hfp_dial),
        PLAIN(vym_hfp_dial_memory),
        PLAIN(vym_hfp_disconnect),
        PLAIN(vym_hfp_disconnect_audio),
        lifecycle("vym_hfp_done", vym_hfp_done),
        lifecycle("vym_hfp_init", [] { vym_hfp_init(&Stage::Now().Table().hfp); }),
        PLAIN(vym_hfp_query_last_voice_tag_name),
        any(
            "vym_hfp_reject_call", [] { vym_hfp_reject_call({}); }, [] { Stage::Now().Ring(); }),
        PLAIN(vym_hfp_send_dtmf),
        PLAIN(vym_hfp_start_voice_recognition),
        PLAIN(vym_hfp_stop_voice_recognition),
        PLAIN(vym_hfp_switch_mic_state),
        any(
            "vym_hfp_terminate_call", [] { vym_hfp_terminate_call({}, 1); },
            [] { Stage::Now().Ring(); }),
        PLAIN(vym_hfp_volume_control),
    }};

const Group kMusic{"music",
                   {
                       PLAIN(vym_a2dp_connect),
                       PLAIN(vym_a2dp_disconnect),
                       lifecycle("vym_a2dp_done", vym_a2dp_done),
                       lifecycle("vym_a2dp_init", [] { vym_a2dp_init(&Stage::Now().Table().a2dp); }),
                       PLAIN(vym_a2dp_switch_audio_hw),
                   }};

const Group kRemoteControl{
    "remote control",
    {
        PLAIN(convert_feature_to_avrcp_version),
        PLAIN(vym_avrcp_backward),
        PLAIN(vym_avrcp_cancel_browsing),
        PLAIN(vym_avrcp_change_folder_path),
        PLAIN(vym_avrcp_connect_bip),
        lifecycle("vym_avrcp_done", vym_avrcp_done),
        PLAIN(vym_avrcp_fast_forward),
        PLAIN(vym_avrcp_forward),
        PLAIN(vym_avrcp_get_element_attribute),
        PLAIN(vym_avrcp_get_folder_list),
        PLAIN(vym_avrcp_get_image),
        PLAIN(vym_avrcp_get_linked_thumbnail),
        PLAIN(vym_avrcp_get_nowplaying_list),
        PLAIN(vym_avrcp_get_player_app_setting),
        PLAIN(vym_avrcp_get_player_list),
        PLAIN(vym_avrcp_get_total_number_of_items),
        lifecycle("vym_avrcp_init", [] { vym_avrcp_init(&Stage::Now().Table().avrcp); }),
        PLAIN(vym_avrcp_next_group),
        PLAIN(vym_avrcp_pause),
        PLAIN(vym_avrcp_play),
        PLAIN(vym_avrcp_play_item),
        PLAIN(vym_avrcp_previous_group),
        PLAIN(vym_avrcp_rewind),
        PLAIN(vym_avrcp_send_abs_vol_rsp),
        PLAIN(vym_avrcp_send_register_abs_val_rsp),
        PLAIN(vym_avrcp_set_addressed_player),
        PLAIN(vym_avrcp_set_player_app_setting),
        PLAIN(vym_avrcp_stop),
    }};

const Group kPhoneBook{
    "phone book",
    {
        any("Pbap_List_AddTail",
            [] {
                LISTSTRU list{};
                Pbap_List_AddTail(&list, NewNode());
                Pbap_List_RemoveAll(&list);
            }),
        any("Pbap_List_GetNodeByAddress",
            [] {
                LISTSTRU list{};
                Pbap_List_GetNodeByAddress(&list, {});
            }),
        any("Pbap_List_GetSize",
            [] {
                LISTSTRU list{};
                Pbap_List_GetSize(&list);
            }),
        any("Pbap_List_RemoveAll",
            [] {
                LISTSTRU list{};
                Pbap_List_RemoveAll(&list);
            }),
        any("Pbap_List_RemoveNodeByAddress",
            [] {
                LISTSTRU list{};
                Pbap_List_RemoveNodeByAddress(&list, {});
            }),
        PLAIN(pbap_thread_post),
        endless("pbap_thread_wait", pbap_thread_wait, start_pbap_queue, pbap_thread_post),
        any("readfrom_pbap_queue", [] { free(readfrom_pbap_queue()); }),
        {"sem", nullptr, Callback::kYes, Threads::kAny, "a variable: the functions above use it",
         nullptr, nullptr, nullptr},
        {"start_pbap_queue", start_pbap_queue, Callback::kYes, Threads::kOne,
         "nobody may wait on the queue", nullptr, nullptr, nullptr},
        {"stop_pbap_queue", stop_pbap_queue, Callback::kYes, Threads::kOne,
         "nobody may wait on the queue", nullptr, nullptr, start_pbap_queue},
        PLAIN(vym_pbap_cancel_get_phonebook),
        PLAIN(vym_pbap_connect),
        PLAIN(vym_pbap_disconnect),
        lifecycle("vym_pbap_done", vym_pbap_done),
        PLAIN(vym_pbap_filter_mask),
        PLAIN(vym_pbap_get_phonebook),
        PLAIN(vym_pbap_get_phonebook_size),
        lifecycle("vym_pbap_init", [] { vym_pbap_init(&Stage::Now().Table().pbap); }),
        PLAIN(vym_pbap_is_connected),
        PLAIN(vym_pbap_pull_vcard_by_number),
        any("writeto_pbap_queue", [] { writeto_pbap_queue(NewItem()); }),
    }};

const Group kSerialChannels{
    "serial channels",
    {
        endless(
            "vym_rfcomm_accept", AcceptOnCopy, [] { Stage::Now().MakeServerSocket(); },
            [] { Stage::Now().CloseServerSocket(); }),
        any(
            "vym_rfcomm_close", [] { vym_rfcomm_close(Stage::Now().Socket()); },
            [] { Stage::Now().MakeSocket(); }),
        endless(
            "vym_rfcomm_connect", [] { vym_rfcomm_connect({}, {}, 9); }, nullptr,
            [] {
                Stage::Now().Server().SendEvents({"SE0100000000000009000000000001000100"
                                                  "0000"});
            }),
        PLAIN(vym_rfcomm_disconnect),
        lifecycle("vym_rfcomm_done", vym_rfcomm_done),
        PLAIN(vym_rfcomm_fetch_channels),
        any(
            "vym_rfcomm_get_address", [] { vym_rfcomm_get_address(Stage::Now().Socket()); },
            [] { Stage::Now().MakeSocket(); }),
        lifecycle("vym_rfcomm_init", [] { vym_rfcomm_init(&Stage::Now().Table().rfcomm); }),
        {"vym_rfcomm_listen", [] { free(vym_rfcomm_listen({}, 1, plain_text.data())); },
         Callback::kNever, Threads::kAny, nullptr, nullptr, nullptr, nullptr},
        endless(
            "vym_rfcomm_read",
            [] {
                char byte = 0;
                vym_rfcomm_read(Stage::Now().Socket(), &byte, 1);
            },
            [] { Stage::Now().MakeSocket(); },
            [] { Stage::Now().Server().SendEvents({"SF0000000077"}); }),
        {"vym_rfcomm_server_close",
         [] {
             vym_rfcomm_server_close(static_cast<vym_bluetooth_server_socket_t*>(
                 calloc(1, sizeof(vym_bluetooth_server_socket_t))));
         },
         Callback::kYes, Threads::kAny, nullptr, nullptr, nullptr, nullptr},
        PLAIN(vym_rfcomm_server_disconnect),
        any(
            "vym_rfcomm_write", [] { vym_rfcomm_write(Stage::Now().Socket(), "1", 1); },
            [] { Stage::Now().MakeSocket(); }),
    }};

const Group kGattClient{"GATT client",
                        {
                            PLAIN(vym_gatt_client_configure_mtu),
                            endless(
                                "vym_gatt_client_connect", [] { CallPlainly(vym_gatt_client_connect); },
                                nullptr, Registered),
                            PLAIN(vym_gatt_client_connect_ex),
                            PLAIN(vym_gatt_client_disconnect),
                            lifecycle("vym_gatt_client_done", vym_gatt_client_done),
                            PLAIN(vym_gatt_client_execute_write),
                            PLAIN(vym_gatt_client_get_characteristic),
                            PLAIN(vym_gatt_client_get_descriptor),
                            PLAIN(vym_gatt_client_get_included_service),
                            lifecycle("vym_gatt_client_init",
                                      [] { vym_gatt_client_init(&Stage::Now().Table().gatt_client); }),
                            PLAIN(vym_gatt_client_listen),
                            PLAIN(vym_gatt_client_listen_ex),
                            PLAIN(vym_gatt_client_read_characteristic),
                            PLAIN(vym_gatt_client_read_descriptor),
                            PLAIN(vym_gatt_client_read_remote_rssi),
                            PLAIN(vym_gatt_client_refresh),
                            endless(
                                "vym_gatt_client_register",
                                [] { vym_gatt_client_register({}, nullptr); }, nullptr, Registered),
                            PLAIN(vym_gatt_client_register_client_for_server),
                            PLAIN(vym_gatt_client_register_for_notifications),
                            PLAIN(vym_gatt_client_scan),
                            PLAIN(vym_gatt_client_search_service),
                            PLAIN(vym_gatt_client_set_adv_command),
                            PLAIN(vym_gatt_client_set_adv_data),
                            PLAIN(vym_gatt_client_unregister),
                            PLAIN(vym_gatt_client_unregister_client_for_server),
                            PLAIN(vym_gatt_client_write_characteristic),
                            PLAIN(vym_gatt_client_write_descriptor),
                            PLAIN(vym_gatt_connection_parameter_update),
                            PLAIN(vym_gatt_set_adv_data),
                            PLAIN(vym_gatt_set_user_def_adv_data),
                        }};

const Group kGattServer{"GATT server",
                        {
                            PLAIN(vym_gatt_server_add_characteristic),
                            PLAIN(vym_gatt_server_add_descriptor),
                            PLAIN(vym_gatt_server_add_included_service),
                            PLAIN(vym_gatt_server_add_service),
                            PLAIN(vym_gatt_server_connect),
                            PLAIN(vym_gatt_server_delete_service),
                            PLAIN(vym_gatt_server_disconnect),
                            lifecycle("vym_gatt_server_done", vym_gatt_server_done),
                            lifecycle("vym_gatt_server_init",
                                      [] { vym_gatt_server_init(&Stage::Now().Table().gatt_server); }),
                            PLAIN(vym_gatt_server_register_app),
                            PLAIN(vym_gatt_server_register_client),
                            PLAIN(vym_gatt_server_send_indication),
                            PLAIN(vym_gatt_server_send_notification),
                            PLAIN(vym_gatt_server_send_response),
                            PLAIN(vym_gatt_server_start_service),
                            PLAIN(vym_gatt_server_stop_service),
                            PLAIN(vym_gatt_server_unregister_app),
                            PLAIN(vym_gatt_server_unregister_client),
                        }};

const Group kHidDevice{"HID device",
                       {
                           PLAIN(vym_hid_connect),
                           PLAIN(vym_hid_disconnect),
                           lifecycle("vym_hid_done", vym_hid_done),
                           lifecycle("vym_hid_init", [] { vym_hid_init(&Stage::Now().Table().hid); }),
                           PLAIN(vym_hid_register_app),
                           PLAIN(vym_hid_report_error_impl),
                           PLAIN(vym_hid_send_report),
                           PLAIN(vym_hid_unplug_impl),
                           PLAIN(vym_hid_unregister_app),
                       }};

const Group kCapture{
    "capture",
    {
        {"ext_parser_thread", nullptr, Callback::kNever, Threads::kAny,
         "the body of a thread of the application's own: returns after vym_debug_stop_listener() or "
         "SIGUSR2, and at once while another listener runs; takes `utils_mutex` (vym_debug)",
         nullptr, nullptr, nullptr},
        PLAIN(get_vym_debug_status),
        {"hci_vym_debug_fd", nullptr, Callback::kYes, Threads::kAny,
         "a variable that other threads change, only for looking at", nullptr, nullptr, nullptr},
        PLAIN(hex_dump),
        {"send_ext_parser", [] { send_ext_parser(plain_text.data(), 1); }, Callback::kYes,
         Threads::kAny, "2 s at most, for a parser that does not read", nullptr, nullptr, nullptr},
        PLAIN(set_vym_debug_status),
        PLAIN(vym_debug_acl_data),
        PLAIN(vym_debug_capture),
        PLAIN(vym_debug_cleanup),
        {"vym_debug_close", [] { vym_debug_close(); }, Callback::kYes, Threads::kAny, nullptr, nullptr,
         nullptr, Capture},
        PLAIN(vym_debug_hci_cmd),
        PLAIN(vym_debug_hci_evt),
        PLAIN(vym_debug_init),
        PLAIN(vym_debug_is_open),
        {"vym_debug_log_close", [] { vym_debug_log_close(); }, Callback::kYes, Threads::kAny, nullptr,
         nullptr, nullptr, Capture},
        {"vym_debug_log_open", [] { OpenNoCapture([](char* path) { vym_debug_log_open(path); }); },
         Callback::kYes, Threads::kAny, nullptr, nullptr, nullptr, Capture},
        {"vym_debug_open", [] { OpenNoCapture([](char* path) { vym_debug_open(path); }); },
         Callback::kYes, Threads::kAny, nullptr, nullptr, nullptr, Capture},
        PLAIN(vym_debug_sco_data),
        PLAIN(vym_debug_stop_listener),
    }};

#undef PLAIN
#undef VAIN

} // namespace

const std::vector<Group>& Functions() {
    static const std::vector<Group> all{
        kStartAndStop, kInternalEvents, kAudio,      kAdapter,    kHandsFree, kMusic,  kRemoteControl,
        kPhoneBook,    kSerialChannels, kGattClient, kGattServer, kHidDevice, kCapture};
    return all;
}

std::vector<std::pair<std::string, std::vector<std::string>>> ExportedGroups() {
    std::vector<std::pair<std::string, std::vector<std::string>>> groups;
    std::ifstream map(VYM_EXPORTS);
    bool global = false;
    for (std::string line; std::getline(map, line) && line.find("local:") == std::string::npos;) {
        line.erase(0, line.find_first_not_of(' '));
        if (line == "global:") {
            global = true;
        } else if (global && line.rfind("# ", 0) == 0) {
            groups.emplace_back(line.substr(2), std::vector<std::string>{});
        } else if (global && !groups.empty() && !line.empty() && line.back() == ';') {
            line.pop_back();
            groups.back().second.push_back(line);
        }
    }
    return groups;
}

} // namespace threads
