// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A line of text for each callback of the library: hfp.clip("+4930123456").
#ifndef VYM_TESTS_E2E_RECORDING_H
#define VYM_TESTS_E2E_RECORDING_H

#include "support/record_text.h"
#include "support/wait.h"
#include "vym_a2dp.h"
#include "vym_audio_stream.h"
#include "vym_avrcp.h"
#include "vym_bluetooth.h"
#include "vym_gatt_client.h"
#include "vym_gatt_server.h"
#include "vym_hfp.h"
#include "vym_hid.h"
#include "vym_pbap.h"
#include "vym_rfcomm.h"

#include <cstring>
#include <functional>
#include <string>
#include <type_traits>

namespace e2e {

/** What the callbacks of the library have left. */
inline support::Recorder& Heard() {
    static support::Recorder recorder;
    return recorder;
}

/** Where callbacks go; Heard() unless somebody takes them as they come. */
inline std::function<void(const std::string&)>& Taker() {
    static std::function<void(const std::string&)> taker = [](const std::string& call) {
        Heard().Add(call);
    };
    return taker;
}

/** Values of a call, separated by commas. A pointer to bytes comes after their number, as in all
 * callbacks. */
class Values {
public:
    [[nodiscard]] const std::string& Text() const { return text_; }

    template <class Number,
              class = std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>>>
    void Add(Number number) {
        const auto value = static_cast<int64_t>(number);
        length_ = static_cast<size_t>(value);
        Append(std::to_string(value));
    }
    void Add(const char* text) { Append(support::ValueText(text)); }
    void Add(const std::string& as_it_is) { Append(as_it_is); }
    void Add(const bt_bdaddr_t& address) { Append(support::ValueText(address)); }
    void Add(const bt_oob_data_t& data) { Append(Hex(data.data, sizeof data.data)); }
    void Add(const uint8_t* bytes) { Append(Hex(bytes, length_)); }

    /** The four digits of a UUID on the Bluetooth Base UUID, else all of them. */
    void Add(const bt_uuid_t& uuid) {
        const bt_uuid_t base = GATT_UUID_FROM_16(0);
        bt_uuid_t rest = uuid;
        rest.uu[2] = rest.uu[3] = 0;
        const bool assigned = memcmp(&rest, &base, sizeof base) == 0;
        Append(assigned ? Hex(uuid.uu + 2, 2) : Hex(uuid.uu, sizeof uuid.uu));
    }

    void Add(const uint16_t* numbers) {
        const size_t count = numbers == nullptr ? 0 : length_;
        for (size_t i = 0; i < count; ++i) {
            Add(numbers[i]);
        }
    }

    void Add(const bluetooth_call_t& call) {
        Add(call.idx);
        Add(call.direction);
        Add(call.state);
        Add(call.mpty);
        Add(static_cast<const char*>(call.number));
    }

    void Add(const phone_book_t& entry) {
        Add(entry.target);
        Add(entry.index);
        Add(static_cast<const char*>(entry.name));
        Add(entry.tel_type);
        Add(static_cast<const char*>(entry.number));
        Add(static_cast<const char*>(entry.time));
    }

    void Add(const AVRCP_NumIDPairStru& settings) {
        for (uint8_t i = 0; i < settings.num; ++i) {
            Append(std::to_string(settings.id_value[i].attr_id) + "=" +
                   std::to_string(settings.id_value[i].value));
        }
    }

    void Add(const AVRCP_Num4IDValueStru& attributes) {
        for (uint8_t i = 0; i < attributes.num; ++i) {
            const AVRCP_4IDStringStru& one = attributes.id_value[i];
            const std::string value =
                one.attr_id == 0 ? Hex(one.value, one.len) : reinterpret_cast<const char*>(one.value);
            Append(std::to_string(one.attr_id) + "=" + value);
        }
    }

    void Add(const btrc_item_player_t* player) {
        Add(player->player_id);
        Add(player->play_status);
        Add(Name(player->name).c_str());
    }

    void Add(const btrc_item_folder_t* folder) {
        Append(Hex(folder->uid, sizeof folder->uid));
        Add(Name(folder->name).c_str());
    }

    void Add(const btrc_item_media_t* item) {
        Append(Hex(item->uid, sizeof item->uid));
        Add(Name(item->name).c_str());
        const int count = item->num_attrs;
        for (int i = 0; i < count; ++i) {
            Append(Name(item->p_attrs[i].text));
        }
    }

private:
    void Append(const std::string& value) { text_ += (text_.empty() ? "" : ", ") + value; }

    static std::string Hex(const uint8_t* bytes, size_t length) {
        return support::ValueText(support::BytesOf{bytes, length});
    }

    template <size_t Size>
    static std::string Name(const uint8_t (&name)[Size]) {
        const char* text = reinterpret_cast<const char*>(name);
        return {text, strnlen(text, Size)};
    }

    std::string text_;
    size_t length_ = 0;
};

template <class... Arguments>
std::string CallText(const std::string& name, const Arguments&... arguments) {
    Values values;
    (values.Add(arguments), ...);
    return name + "(" + values.Text() + ")";
}

/** A callback for one member of a table. */
template <auto Member, class Type = decltype(Member)>
struct Listener;

template <auto Member, class Table, class... Arguments>
struct Listener<Member, void (*Table::*)(Arguments...)> {
    static inline std::string name;
    static void Call(Arguments... arguments) { Taker()(CallText(name, arguments...)); }
};

/** The tables of all profiles, with a recording callback in every member. */
class Callbacks {
public:
    Callbacks();

    bluetooth_callback_t bluetooth{};
    hfp_callback_t hfp{};
    a2dp_callback_t a2dp{};
    avrcp_callback_t avrcp{};
    pbap_callback_t pbap{};
    rfcomm_callback_t rfcomm{};
    gatt_client_callback_t gatt_client{};
    gatt_server_callback_t gatt_server{};
    hid_callback_t hid{};
    audio_stream_callback_t audio{};

private:
    /** `name` is that of the member: "clip_cb" of the table "hfp" is heard as "hfp.clip". */
    template <auto Member, class Table>
    static void Listen(Table& table, const std::string& prefix, const std::string& name) {
        Listener<Member>::name = prefix + "." + name.substr(0, name.size() - strlen("_cb"));
        table.*Member = &Listener<Member>::Call;
    }
};

#define LISTEN(table, member)                                                                          \
    (Listen<&std::remove_reference_t<decltype(table)>::member>(table, #table, #member))

// NOLINTNEXTLINE(readability-function-size): one row for each callback
inline Callbacks::Callbacks() {
    LISTEN(bluetooth, state_changed_cb);
    LISTEN(bluetooth, bt_version_cb);
    LISTEN(bluetooth, device_found_cb);
    LISTEN(bluetooth, discovery_state_changed_cb);
    LISTEN(bluetooth, pin_request_cb);
    LISTEN(bluetooth, ssp_request_cb);
    LISTEN(bluetooth, bond_state_changed_cb);
    LISTEN(bluetooth, acl_state_changed_cb);
    LISTEN(bluetooth, app_gap_started_cb);
    LISTEN(bluetooth, connection_auth_req_cb);
    LISTEN(bluetooth, le_rx_test_cb);
    LISTEN(bluetooth, le_tx_test_cb);
    LISTEN(bluetooth, le_test_end_cb);
    LISTEN(bluetooth, read_bt_address_cb);
    LISTEN(bluetooth, read_rssi_cb);
    LISTEN(bluetooth, read_local_device_oob_data_cb);
    LISTEN(bluetooth, read_local_device_oob_data_ex_cb);
    LISTEN(hfp, connection_state_cb);
    LISTEN(hfp, audio_state_cb);
    LISTEN(hfp, vr_cmd_cb);
    LISTEN(hfp, network_state_cb);
    LISTEN(hfp, network_roaming_cb);
    LISTEN(hfp, network_signal_cb);
    LISTEN(hfp, battery_level_cb);
    LISTEN(hfp, current_operator_cb);
    LISTEN(hfp, resp_and_hold_cb);
    LISTEN(hfp, clip_cb);
    LISTEN(hfp, call_waiting_cb);
    LISTEN(hfp, current_calls_cb);
    LISTEN(hfp, volume_change_cb);
    LISTEN(hfp, subscriber_info_cb);
    LISTEN(hfp, in_band_ring_tone_cb);
    LISTEN(hfp, last_voice_tag_number_cb);
    LISTEN(hfp, ring_indication_cb);
    LISTEN(hfp, ag_model_name_cb);
    LISTEN(hfp, ag_manufacturer_id_cb);
    LISTEN(hfp, call_action_complete_cb);
    LISTEN(hfp, standby_indication_cb);
    LISTEN(hfp, ios_aplsiri_cb);
    LISTEN(hfp, current_call_num_cb);
    LISTEN(a2dp, connection_state_changed_cb);
    LISTEN(a2dp, audio_state_changed_cb);
    LISTEN(a2dp, audio_config_changed_cb);
    LISTEN(a2dp, audio_stream_cb);
    LISTEN(a2dp, a2dp_devices_event_cb);
    LISTEN(avrcp, handle_passthrough_rsp_cb);
    LISTEN(avrcp, connection_state_changed_cb);
    LISTEN(avrcp, get_rc_features_cb);
    LISTEN(avrcp, handle_player_app_setting_cb);
    LISTEN(avrcp, handle_player_app_setting_changed_cb);
    LISTEN(avrcp, handle_set_abs_volume_cb);
    LISTEN(avrcp, handle_register_notification_abs_vol_cb);
    LISTEN(avrcp, handle_track_changed_cb);
    LISTEN(avrcp, handle_play_position_changed_cb);
    LISTEN(avrcp, handle_play_status_changed_cb);
    LISTEN(avrcp, change_folder_path_rsp_cb);
    LISTEN(avrcp, get_total_number_of_items_rsp_cb);
    LISTEN(avrcp, play_item_rsp_cb);
    LISTEN(avrcp, get_player_item_cb);
    LISTEN(avrcp, get_folder_item_cb);
    LISTEN(avrcp, get_media_item_cb);
    LISTEN(avrcp, now_playing_content_changed_cb);
    LISTEN(avrcp, addressed_player_changed_cb);
    LISTEN(avrcp, available_player_changed_cb);
    LISTEN(avrcp, connect_bip_result_cb);
    LISTEN(avrcp, get_linked_thumbnail_result_cb);
    LISTEN(avrcp, get_image_result_cb);
    LISTEN(pbap, connection_status_cb);
    LISTEN(pbap, get_phonebook_status_cb);
    LISTEN(pbap, get_phonebook_size_cb);
    LISTEN(pbap, index_data_ind_cb);
    LISTEN(pbap, phonebook_photodata_ind_cb);
    LISTEN(rfcomm, rfcomm_fetch_channels_cb);
    LISTEN(rfcomm, rfcomm_fetch_channels_end_cb);
    LISTEN(gatt_client, scan_result_cb);
    LISTEN(gatt_client, scan_address_name_cb);
    LISTEN(gatt_client, notify_cb);
    LISTEN(gatt_client, connected_cb);
    LISTEN(gatt_client, disconnected_cb);
    LISTEN(gatt_client, search_completed_cb);
    LISTEN(gatt_client, search_result_cb);
    LISTEN(gatt_client, get_characteristic_cb);
    LISTEN(gatt_client, get_descriptor_cb);
    LISTEN(gatt_client, get_included_service_cb);
    LISTEN(gatt_client, register_for_notifications_cb);
    LISTEN(gatt_client, read_characteristic_cb);
    LISTEN(gatt_client, write_characteristic_cb);
    LISTEN(gatt_client, execute_completed_cb);
    LISTEN(gatt_client, read_descriptor_cb);
    LISTEN(gatt_client, write_descriptor_cb);
    LISTEN(gatt_client, read_remote_rssi_cb);
    LISTEN(gatt_client, receive_data_from_central_cb);
    LISTEN(gatt_client, configure_mtu_cb);
    LISTEN(gatt_client, advertise_callback_cb);
    LISTEN(gatt_server, server_registered_cb);
    LISTEN(gatt_server, client_connected_cb);
    LISTEN(gatt_server, service_added_cb);
    LISTEN(gatt_server, included_service_added_cb);
    LISTEN(gatt_server, characteristic_added_cb);
    LISTEN(gatt_server, descriptor_added_cb);
    LISTEN(gatt_server, service_started_cb);
    LISTEN(gatt_server, service_stopped_cb);
    LISTEN(gatt_server, service_deleted_cb);
    LISTEN(gatt_server, response_send_completed_cb);
    LISTEN(gatt_server, attribute_read_cb);
    LISTEN(gatt_server, attribute_write_cb);
    LISTEN(gatt_server, execute_write_cb);
    LISTEN(gatt_server, notification_sent_cb);
    LISTEN(gatt_server, mtu_changed_cb);
    LISTEN(hid, application_state_changed_cb);
    LISTEN(hid, hid_connection_state_cb);
    // Fifty packets come in a second: one of a kind will do, without its content.
    audio.vym_audio_stream_cb = [](uint8_t type, uint8_t codec, uint16_t length, uint8_t* /*data*/) {
        const std::string packet = CallText("audio.packet", type, codec, length);
        if (!Heard().Contains(packet)) {
            Heard().Add(packet);
        }
    };
}

#undef LISTEN

/** Starts all profiles; the audio is for those who want it. end_all() ends them. */
inline void StartProfiles(Callbacks& callbacks) {
    vym_bluetooth_init(&callbacks.bluetooth);
    vym_rfcomm_init(&callbacks.rfcomm);
    vym_hfp_init(&callbacks.hfp);
    vym_a2dp_init(&callbacks.a2dp);
    vym_avrcp_init(&callbacks.avrcp);
    vym_pbap_init(&callbacks.pbap);
    vym_gatt_client_init(&callbacks.gatt_client);
    vym_gatt_server_init(&callbacks.gatt_server);
    vym_hid_init(&callbacks.hid);
}

} // namespace e2e

#endif
