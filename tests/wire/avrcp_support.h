// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the remote control's wire tests share: a table that records, a session with the module started,
// and every event with what comes of it.
#ifndef VYM_TESTS_WIRE_AVRCP_SUPPORT_H
#define VYM_TESTS_WIRE_AVRCP_SUPPORT_H

#include "wire/adapter_support.h"
#include "wire/profile_conformance.h"

#include "vym_avrcp.h"

namespace avrcp {

using support::Bytes;
using wire::Block;
using wire::kDevice;

/** kDevice as it travels. */
inline const std::string kAddress = "A1B2C3D4E5F6";

/** Where the callbacks of RecordingTable() leave one entry each: the member's name without "_cb" and
 * the arguments, as in support/adapter_record.h. Settings are "2 [1=5 2=6]", attributes of a track "2
 * [1:6 "Title\0" 7:2 "A\0"]", each with its `len`. Bytes and names are escaped; the zeroes at the end
 * of a name are left out. */
inline support::Recorder& Record() {
    return wire::ProfileRecord();
}

inline std::string Quoted(const uint8_t* bytes, size_t length) {
    return "\"" + support::Escaped({reinterpret_cast<const char*>(bytes), length}) + "\"";
}

/** Without the zeroes at its end. */
template <size_t Room>
std::string Name(const uint8_t (&name)[Room]) {
    size_t length = Room;
    while (length > 0 && name[length - 1] == 0) {
        --length;
    }
    return Quoted(name, length);
}

inline std::string Text(int64_t value) {
    return std::to_string(value);
}

inline std::string Text(const bt_bdaddr_t& address) {
    return support::AddressText(address);
}

inline std::string Text(const AVRCP_NumIDPairStru& settings) {
    if (settings.id_value == nullptr) {
        return Text(settings.num) + " null";
    }
    std::string list;
    for (int i = 0; i < settings.num; ++i) {
        const AVRCP_IDPairStru& pair = settings.id_value[i];
        list += (i == 0 ? "" : " ") + Text(pair.attr_id) + "=" + Text(pair.value);
    }
    return Text(settings.num) + " [" + list + "]";
}

inline std::string Text(const AVRCP_Num4IDValueStru& attributes) {
    if (attributes.id_value == nullptr) {
        return Text(attributes.num) + " null";
    }
    std::string list;
    for (int i = 0; i < attributes.num; ++i) {
        const AVRCP_4IDStringStru& one = attributes.id_value[i];
        list += (i == 0 ? "" : " ") + Text(one.attr_id) + ":" + Text(one.len) + " " +
                (one.value == nullptr ? "null" : Quoted(one.value, one.len));
    }
    return Text(attributes.num) + " [" + list + "]";
}

inline std::string Text(const btrc_item_player_t* item) {
    return "id " + Text(item->player_id) + " type " + Text(item->major_type) + " " +
           Text(item->sub_type) + " status " + Text(item->play_status) + " features " +
           Name(item->features) + " charset " + Text(item->charset_id) + " name " + Name(item->name);
}

inline std::string Text(const btrc_item_folder_t* item) {
    return "uid " + Quoted(item->uid, sizeof item->uid) + " type " + Text(item->type) + " playable " +
           Text(item->playable) + " charset " + Text(item->charset_id) + " name " + Name(item->name);
}

inline std::string Text(const btrc_item_media_t* item) {
    std::string attributes;
    for (int i = 0; i < item->num_attrs; ++i) {
        attributes += " " + Text(item->p_attrs[i].attr_id) + ":" + Name(item->p_attrs[i].text);
    }
    return "uid " + Quoted(item->uid, sizeof item->uid) + " type " + Text(item->type) + " charset " +
           Text(item->charset_id) + " name " + Name(item->name) + " attributes " +
           Text(item->num_attrs) + attributes;
}

template <typename... Arguments>
void Add(const char* name, const Arguments&... arguments) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + Text(arguments)), ...);
    Record().Add(std::string(name) + "(" + list + ")");
}

/** A callback table all of whose members record. */
inline avrcp_callback_t* RecordingTable() {
    static avrcp_callback_t table = {
        [](uint8_t id, uint8_t state) { Add("handle_passthrough_rsp", id, state); },
        [](uint8_t connected, bt_bdaddr_t from) { Add("connection_state_changed", connected, from); },
        [](bt_bdaddr_t from, uint8_t features, int psm) {
            Add("get_rc_features", from, features, psm);
        },
        [](bt_bdaddr_t from, uint16_t length, uint8_t current, AVRCP_NumIDPairStru settings) {
            Add("handle_player_app_setting", from, length, current, settings);
        },
        [](bt_bdaddr_t from, uint16_t length, AVRCP_NumIDPairStru settings) {
            Add("handle_player_app_setting_changed", from, length, settings);
        },
        [](bt_bdaddr_t from, uint8_t volume) { Add("handle_set_abs_volume", from, volume); },
        [](bt_bdaddr_t from) { Add("handle_register_notification_abs_vol", from); },
        [](bt_bdaddr_t from, uint16_t length, AVRCP_Num4IDValueStru attributes) {
            Add("handle_track_changed", from, length, attributes);
        },
        [](bt_bdaddr_t from, int length, int at) {
            Add("handle_play_position_changed", from, length, at);
        },
        [](bt_bdaddr_t from, uint8_t status) { Add("handle_play_status_changed", from, status); },
        [](bt_bdaddr_t from, uint8_t status, int count) {
            Add("change_folder_path_rsp", from, status, count);
        },
        [](bt_bdaddr_t from, uint8_t status, int count) {
            Add("get_total_number_of_items_rsp", from, status, count);
        },
        [](bt_bdaddr_t from, uint8_t status) { Add("play_item_rsp", from, status); },
        [](bt_bdaddr_t from, uint8_t status, btrc_item_player_t* item) {
            Add("get_player_item", from, status, item);
        },
        [](bt_bdaddr_t from, uint8_t status, btrc_item_folder_t* item) {
            Add("get_folder_item", from, status, item);
        },
        [](bt_bdaddr_t from, uint8_t status, btrc_item_media_t* item) {
            Add("get_media_item", from, status, item);
        },
        [](bt_bdaddr_t from, uint8_t state) { Add("now_playing_content_changed", from, state); },
        [](bt_bdaddr_t from, uint16_t player) { Add("addressed_player_changed", from, player); },
        [](bt_bdaddr_t from, uint8_t state) { Add("available_player_changed", from, state); },
        [](bt_bdaddr_t from, uint8_t status) { Add("connect_bip_result", from, status); },
        [](bt_bdaddr_t from, uint8_t status) { Add("get_linked_thumbnail_result", from, status); },
        [](bt_bdaddr_t from, uint8_t status) { Add("get_image_result", from, status); },
    };
    return &table;
}

/** A session with the remote control started. */
class AvrcpWireTest : public wire::AdapterWireTest {
protected:
    void SetUp() override {
        wire::AdapterWireTest::SetUp();
        vym_avrcp_init(RecordingTable());
    }

    void TearDown() override {
        vym_avrcp_done();
        wire::AdapterWireTest::TearDown();
        Record().Reset();
    }

    /** Sends an event: exactly these callbacks come of it, and the library lives on. */
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(support::Escaped(event).substr(0, 200));
        Handle({event});
        EXPECT_EQ(Record().Take(), entries);
    }
};

using EventCase = wire::ProfileEvent;

/** Delivered as soon as their fields are there. */
inline std::vector<EventCase> FixedEvents() {
    return {
        {"RA4401", 4, "handle_passthrough_rsp(68, 1)"},
        {"RB0102", 4, ""},
        {"RC02A1B2C3D4E5F6", 14, "connection_state_changed(2, A1B2C3D4E5F6)"},
        {"REA1B2C3D4E5F601", 14, ""},
        {"RHA1B2C3D4E5F67F00", 16, "handle_set_abs_volume(A1B2C3D4E5F6, 127)"},
        {"RIA1B2C3D4E5F600", 14, "handle_register_notification_abs_vol(A1B2C3D4E5F6)"},
        {"RKA1B2C3D4E5F6000F12340002ABCD", 28,
         "handle_play_position_changed(A1B2C3D4E5F6, 987700, 175053)"},
        {"RLA1B2C3D4E5F603", 14, "handle_play_status_changed(A1B2C3D4E5F6, 3)"},
        {"RNA1B2C3D4E5F60200012345", 22, "change_folder_path_rsp(A1B2C3D4E5F6, 2, 74565)"},
        {"ROA1B2C3D4E5F60300054321", 22, "get_total_number_of_items_rsp(A1B2C3D4E5F6, 3, 344865)"},
        {"RPA1B2C3D4E5F60B", 14, "play_item_rsp(A1B2C3D4E5F6, 11)"},
        {"RS16", 2, ""},
        {"RWAA1B2C3D4E5F605", 14, "now_playing_content_changed(A1B2C3D4E5F6, 5)"},
        {"RWBA1B2C3D4E5F61234", 16, "addressed_player_changed(A1B2C3D4E5F6, 4660)"},
        {"RWCA1B2C3D4E5F606", 14, "available_player_changed(A1B2C3D4E5F6, 6)"},
        {"RWEA1B2C3D4E5F607", 14, "connect_bip_result(A1B2C3D4E5F6, 7)"},
        {"RWFA1B2C3D4E5F608", 14, "get_linked_thumbnail_result(A1B2C3D4E5F6, 8)"},
        {"RWGA1B2C3D4E5F609", 14, "get_image_result(A1B2C3D4E5F6, 9)"},
    };
}

/** Delivered when their NUL is there. */
inline std::vector<EventCase> EventsThatWait() {
    return {
        {"RDA1B2C3D4E5F6A100001005", 14, "get_rc_features(A1B2C3D4E5F6, 161, 4101)"},
        {"RFA1B2C3D4E5F60005\x01\x03\x01\x02\x04", 21,
         "handle_player_app_setting(A1B2C3D4E5F6, 5, 1, 3 [0=1 1=2 2=4])"},
        {"RGA1B2C3D4E5F60005\x02\x01\x03\x02\x01", 21,
         "handle_player_app_setting_changed(A1B2C3D4E5F6, 5, 2 [1=2 3=1])"},
        {"RJA1B2C3D4E5F60012"
         "217Title\xDC\xDD"
         "Artist\xDC\xDD",
         34, R"(handle_track_changed(A1B2C3D4E5F6, 16, 2 [1:6 "Title\0" 7:7 "Artist\0"]))"},
        {"RMA1B2C3D4E5F60400010011\x02"
         "abcdefgh\x03\x01\x6A\xDC\xDDNew",
         39,
         R"(get_folder_item(A1B2C3D4E5F6, 4, uid "abcdefgh" type 3 playable 1 charset 106 name "New"))"},
        {"RQ0003000101020203040503abc00AB00CD", 33, ""},
        {"RRA1B2C3D4E5F6040012006A03", 6, ""},
    };
}

inline std::vector<EventCase> AllEvents() {
    std::vector<EventCase> all = FixedEvents();
    for (const EventCase& one : EventsThatWait()) {
        all.push_back(one);
    }
    for (EventCase& one : all) {
        one.tag = one.event[1] == 'W' ? 3 : 2;
    }
    return all;
}

/** Whole records of a player's folders, in the order of memory. */
inline std::string Padded(std::string text, size_t size) {
    text.resize(size, '\0');
    return text;
}

/** The event that brings this item, without its NUL. */
inline std::string Item(int status, const std::string& type_and_item) {
    return "RM" + kAddress + wire::Hex(static_cast<unsigned>(status), 2) + "0001" +
           Block(type_and_item);
}

} // namespace avrcp

#endif
