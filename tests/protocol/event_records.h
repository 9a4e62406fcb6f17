// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the library makes of each event: the records that the tables of callbacks in tests/wire leave,
// built from the event's values.
#ifndef VYM_TESTS_PROTOCOL_EVENT_RECORDS_H
#define VYM_TESTS_PROTOCOL_EVENT_RECORDS_H

#include "protocol/codec.h"
#include "support/record_text.h"
#include "support/text.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace records {

using protocol::Type;
using protocol::Value;
using Lines = std::vector<std::string>;

/** The values of one event, by name. */
class Event {
public:
    Event(const protocol::Found& found, const std::vector<Value>& values)
        : adapter_(found.profile == &protocol::kBluetooth), values_(values) {}

    [[nodiscard]] const std::vector<Value>& All() const { return values_; }

    [[nodiscard]] const Value& At(std::string_view name) const {
        static const protocol::Field none{};
        static const Value missing{&none, false, 0, {}, {}};
        const auto found = std::find_if(values_.begin(), values_.end(),
                                        [&](const Value& v) { return v.field->name == name; });
        EXPECT_NE(found, values_.end()) << "no field " << name;
        return found == values_.end() ? missing : *found;
    }
    [[nodiscard]] uint32_t Number(std::string_view name) const { return At(name).number; }
    [[nodiscard]] const std::string& Bytes(std::string_view name) const { return At(name).bytes; }

    /** As the recording tables write it. */
    [[nodiscard]] std::string Text(std::string_view name) const { return Text(At(name)); }
    [[nodiscard]] std::string Text(const Value& value) const {
        switch (value.field->type) {
        case Type::Byte:
        case Type::Word:
        case Type::HexDigit:
            return std::to_string(value.number);
        case Type::Dword: // a number with a sign has no room for more
            return std::to_string(std::min<uint32_t>(value.number, INT32_MAX));
        case Type::Address:
            return Hex({value.bytes.rbegin(), value.bytes.rend()});
        case Type::Block:
            return std::to_string(value.bytes.size()) + ", " +
                   (value.bytes.empty() ? "null" : Hex(value.bytes));
        case Type::Text:
            return '"' + (adapter_ ? support::Escaped(value.bytes) : value.bytes) + '"';
        default:
            return Hex(value.bytes);
        }
    }

    static std::string Hex(const std::string& bytes) {
        return bytes.empty() ? ""
                             : support::ValueText(support::BytesOf{
                                   reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    }

private:
    bool adapter_;
    const std::vector<Value>& values_;
};

/** What one event leads to. */
struct Expected {
    Lines entries;
    /** Commands that the library sends because of it. */
    Lines commands;
    /** A part of what it prints. */
    std::string printed;
};

inline Expected Calls(std::string entry) {
    return {{std::move(entry)}, {}, {}};
}

/** Without trailing NULs, as texts in a player's items are shown. */
inline std::string Quoted(std::string bytes) {
    bytes.resize(bytes.find_last_not_of('\0') + 1);
    return '"' + support::Escaped(bytes) + '"';
}

/** The length of a list's block; one that starts with 0 or with the character counts as empty. */
inline bool IsEmptyList(const std::string& bytes) {
    return bytes.empty() || bytes[0] == '\0' || bytes[0] == '0';
}

inline Expected DeviceFound(const Event& event) {
    std::string services;
    const Value& block = event.At("services");
    const size_t count = block.members.empty() ? 0 : block.members[0].members.size();
    for (size_t i = 0; i < count; ++i) {
        char digits[6];
        snprintf(digits, sizeof digits, "%04X", block.members[0].members[i].number);
        services += (i == 0 ? "" : " ") + std::string(digits);
    }
    return Calls("device_found(" + event.Text("address") + ", " + event.Text("type") + ", " +
                 event.Text("class") + ", " + event.Text("rssi") + ", " + event.Text("name") + ", " +
                 std::to_string(count) + ", " + (count == 0 ? "null" : '[' + services + ']') + ")");
}

/** The whole block is skipped, the low byte of its count says how much of it is decoded. */
inline Expected AppGap(const Event& event) {
    const std::string escaped = protocol::escape(event.Bytes("data"));
    std::string bytes;
    EXPECT_TRUE(protocol::unescape(escaped.substr(0, escaped.size() & 0xFF), &bytes));
    return Calls("app_gap_started(" + std::to_string(bytes.size()) + ", " + Event::Hex(bytes) + ")");
}

inline Expected LeTest(const Event& event) {
    switch (event.Number("operation")) {
    case 1:
        return Calls("le_rx_test(" + event.Text("status") + ")");
    case 2:
        return Calls("le_tx_test(" + event.Text("status") + ")");
    case 3:
        return Calls("le_test_end(" + event.Text("status") + ", " + event.Text("packets") + ")");
    default:
        return {};
    }
}

/** The descriptor of a known kind goes to who takes it, others are closed. */
inline Expected Transport(const Event& event) {
    const uint32_t id = event.Number("id");
    return id < 2 ? Calls("transport(" + std::to_string(id) + ")") : Expected{};
}

inline Expected NetworkState(const Event& event) {
    Expected expected = Calls("network_state(" + event.Text("state") + ")");
    if (event.Number("state") == 1) {
        expected.commands = {"HL"};
    }
    return expected;
}

inline Expected CurrentCall(const Event& event) {
    return Calls("call(" + event.Text("index") + ", " + event.Text("direction") + ", " +
                 event.Text("state") + ", " + event.Text("multiparty") + ", \"" +
                 event.Bytes("number").substr(0, 31) + "\")");
}

inline Expected CommandComplete(const Event& event) {
    const std::string entry =
        "call_action_complete(" + event.Text("cme") + ", " + event.Text("type") + ")";
    if (event.Number("cme") == 21) { // the query of the calls
        return {{entry, "current_call_num(0)"}, {}, {}};
    }
    return event.Number("type") != 0 ? Calls(entry) : Expected{};
}

inline Expected PhoneState(const Event& event) {
    const uint32_t state = event.Number("state");
    Expected expected;
    if (state == 5) {
        expected.entries = {"standby_indication()"};
    } else if (state >= 6 && state <= 10) {
        expected.commands = {"HK"};
    }
    return expected;
}

/** This number alone has a sign, and the application gets 0 or less. */
inline Expected MusicDevices(const Event& event) {
    const auto number = static_cast<int32_t>(event.Number("event"));
    return Calls("devices_event(" + event.Text("active") + ", " +
                 std::to_string(number > 0 ? -number : number) + ")");
}

inline Expected PlayerSetting(const Event& event) {
    const Value& block = event.At("setting");
    const std::string head = "handle_player_app_setting(" + event.Text("address") + ", " +
                             std::to_string(block.bytes.size()) + ", ";
    if (IsEmptyList(block.bytes)) {
        return Calls(head + "0, 0 null)");
    }
    std::string list;
    const std::vector<Value>& values = block.members[2].members;
    for (size_t i = 0; i < values.size(); ++i) {
        list += (i == 0 ? "" : " ") + std::to_string(i) + "=" + std::to_string(values[i].number);
    }
    return Calls(head + std::to_string(block.members[0].number) + ", " + std::to_string(values.size()) +
                 " [" + list + "])");
}

inline Expected PlayerSettings(const Event& event) {
    const Value& block = event.At("settings");
    const std::string head = "handle_player_app_setting_changed(" + event.Text("address") + ", " +
                             std::to_string(block.bytes.size()) + ", ";
    if (IsEmptyList(block.bytes)) {
        return Calls(head + "0 null)");
    }
    std::string list;
    const std::vector<Value>& ids = block.members[1].members;
    const std::vector<Value>& values = block.members[2].members;
    for (size_t i = 0; i < ids.size(); ++i) {
        list += (i == 0 ? "" : " ") + std::to_string(ids[i].number) + "=" +
                std::to_string(values[i].number);
    }
    return Calls(head + std::to_string(ids.size()) + " [" + list + "])");
}

/** A UID that comes first is turned into its eight bytes. */
inline Expected Track(const Event& event) {
    const Value& block = event.At("track");
    const std::string head = "handle_track_changed(" + event.Text("address") + ", " +
                             std::to_string(block.bytes.size()) + ", ";
    if (IsEmptyList(block.bytes)) {
        return Calls(head + "0 null)");
    }
    std::string list;
    const std::vector<Value>& ids = block.members[1].members;
    const std::vector<Value>& values = block.members[2].members;
    for (size_t i = 0; i < ids.size(); ++i) {
        std::string text = values[i].bytes + '\0';
        if (i == 0 && ids[i].number == 0) {
            text.clear();
            for (size_t at = 0; at < 16; at += 2) {
                text += static_cast<char>(std::stoi(values[i].bytes.substr(at, 2), nullptr, 16));
            }
        }
        list += (i == 0 ? "" : " ") + std::to_string(ids[i].number) + ":" +
                std::to_string(text.size()) + " \"" + support::Escaped(text) + '"';
    }
    return Calls(head + std::to_string(ids.size()) + " [" + list + "])");
}

inline std::string WholeBytes(const Event& item, std::string_view name) {
    return '"' + support::Escaped(item.Bytes(name)) + '"';
}

inline std::string Decimal(const Event& item, std::string_view name) {
    return std::to_string(item.Number(name));
}

inline std::string PlayerText(const Event& item) {
    return "id " + Decimal(item, "id") + " type " + Decimal(item, "major_type") + " " +
           Decimal(item, "sub_type") + " status " + Decimal(item, "play_status") + " features " +
           Quoted(item.Bytes("features")) + " charset " + Decimal(item, "charset") + " name " +
           Quoted(item.Bytes("name"));
}

inline std::string FolderText(const Event& item) {
    return "uid " + WholeBytes(item, "uid") + " type " + Decimal(item, "type") + " playable " +
           Decimal(item, "playable") + " charset " + Decimal(item, "charset") + " name " +
           Quoted(item.Bytes("name"));
}

inline std::string MediaText(const Event& item) {
    std::string text = "uid " + WholeBytes(item, "uid") + " type " + Decimal(item, "type") +
                       " charset " + Decimal(item, "charset") + " name " + Quoted(item.Bytes("name")) +
                       " attributes " + Decimal(item, "attribute_count");
    for (const Value& attribute : item.At("attributes").members) {
        text += " " + std::to_string(attribute.members[0].number) + ":" +
                Quoted(attribute.members[1].bytes);
    }
    return text;
}

/** One item; the number of items is not told. */
inline Expected FolderItem(const protocol::Found& found, const Event& event) {
    const Value& block = event.At("item");
    if (block.members.empty()) {
        return {};
    }
    const Event item(found, block.members[1].members);
    const std::string head = event.Text("address") + ", " + event.Text("status") + ", ";
    switch (block.members[0].number) {
    case 1:
        return Calls("get_player_item(" + head + PlayerText(item) + ")");
    case 2:
        return Calls("get_folder_item(" + head + FolderText(item) + ")");
    default:
        return Calls("get_media_item(" + head + MediaText(item) + ")");
    }
}

/** Statuses 0 and 4 change places. */
inline Expected FolderPath(const Event& event) {
    const uint32_t status = event.Number("status");
    const uint32_t told = status == 0 ? 4 : (status == 4 ? 0 : status);
    return Calls("change_folder_path_rsp(" + event.Text("address") + ", " + std::to_string(told) +
                 ", " + event.Text("count") + ")");
}

/** "Last;First;Middle;" as it is shown: in the Latin order when it has a Latin letter. */
inline std::string ShownName(const std::string& name) {
    std::vector<std::string> parts(1);
    bool latin = false;
    for (const char c : name) {
        if (c == ';') {
            parts.emplace_back();
        } else {
            parts.back() += c;
            latin = latin || c == ' ' || c == '\t' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        }
    }
    parts.resize(parts.size() - 1); // what no ';' ends is no part
    parts.resize(3);
    return latin ? parts[1] + parts[2] + parts[0] : parts[0] + parts[2] + parts[1];
}

inline Expected PhoneBookEntry(const Event& event) {
    const uint32_t target = event.Number("target");
    const bool is_contact = target == 5 || target == 6;
    const bool has_time = (target >= 7 && target <= 10) || target == 15;
    const std::string time = has_time ? event.Bytes("time") : "";
    return Calls("entry(" + event.Text("target") + ", " + event.Text("index") + ", \"" +
                 support::Escaped(ShownName(event.Bytes("name"))) + "\", " +
                 (is_contact ? event.Text("tel_type") : "0") + ", \"" +
                 support::Escaped(event.Bytes("number")) + "\", \"" +
                 support::Escaped(time.size() < 100 ? time.substr(0, 39) : "") + "\")");
}

inline Expected Photo(const Event& event) {
    const std::string& bytes = event.Bytes("data");
    return Calls("photo(" + event.Text("state") + ", " + event.Text("index") + ", " +
                 std::to_string(bytes.size()) + ") " + (bytes.empty() ? "null" : Event::Hex(bytes)));
}

inline Expected Disconnected(const Event& event) {
    char command[8];
    snprintf(command, sizeof command, "KB%02X", event.Number("client_if"));
    return {{"disconnected(" + event.Text("client_if") + ", " + event.Text("conn_id") + ", " +
             event.Text("status") + ", " + event.Text("address") + ")"},
            {command},
            {}};
}

/** Kept for the calls that wait; each line of the log has all values, addresses first byte first. */
inline Expected SerialConnection(const Event& event) {
    const std::string& address = event.Bytes("address");
    std::string bytes;
    for (const char byte : address) {
        bytes += (bytes.empty() ? "" : ":") + Event::Hex({byte});
    }
    char handle[16];
    snprintf(handle, sizeof handle, "0x%x", std::min<uint32_t>(event.Number("handle"), INT32_MAX));
    return {{},
            {},
            "(status:" + event.Text("status") + ", address[" + bytes +
                "], server_channel:" + event.Text("server_channel") + ", handle:" + handle +
                ", max_tx:" + event.Text("max_tx") + ", max_rx:" + event.Text("max_rx") +
                ".credit_in:" + event.Text("credit_in") + ", credit_out:" + event.Text("credit_out") +
                ",is_server:" + event.Text("is_server") + "\n"};
}

inline Expected SerialDisconnection(const Event& event) {
    char handle[16];
    snprintf(handle, sizeof handle, "0x%x", std::min<uint32_t>(event.Number("handle"), INT32_MAX));
    return {{}, {}, "(status:" + event.Text("status") + ", handle:" + handle + ").\n"};
}

inline Expected SerialListen(const Event& event) {
    return {{},
            {},
            "(status:" + event.Text("status") + "), server_channel:" + event.Text("server_channel") +
                ".\n"};
}

/** A row says how an event is recorded: as its member with these fields ("" for all, in order), by a
 * function, or not at all. */
struct Row {
    std::string_view tag;
    std::string_view member{};
    std::vector<std::string_view> fields{};
    Expected (*special)(const Event& event) = nullptr;
    /** Values that decide what happens, tried besides the generated ones. */
    std::string_view deciding{};
    std::vector<uint32_t> decisions{};
};

inline Row Is(std::string_view tag, std::string_view member,
              std::vector<std::string_view> fields = {}) {
    return {tag, member, std::move(fields), nullptr, {}, {}};
}

inline Row By(std::string_view tag, Expected (*special)(const Event& event),
              std::string_view deciding = {}, std::vector<uint32_t> decisions = {}) {
    return {tag, {}, {}, special, deciding, std::move(decisions)};
}

/** The application has no member for it. */
inline Row Nothing(std::string_view tag) {
    return {tag, {}, {}, nullptr, {}, {}};
}

// NOLINTNEXTLINE(readability-function-size): one row for each event
inline const std::vector<Row>& Rows() {
    static const std::vector<Row> rows = {
        Is("PA", "state_changed"),
        Is("PV", "bt_version"),
        By("PD", Transport, "id", {0, 1, 2}),
        Nothing("BB"), // the cache, see the test of it
        Nothing("BC"),
        By("BD", DeviceFound),
        Is("BE", "discovery_state_changed"),
        Is("BF", "pin_request"),
        Is("BG", "ssp_request"),
        Is("BH", "bond_state_changed"),
        Is("BI", "acl_state_changed"),
        By("BN", AppGap),
        Is("BO", "connection_auth_req"),
        By("BQ", LeTest, "operation", {1, 2, 3, 4}),
        Is("BR", "read_bt_address"),
        Is("BS", "read_rssi"),
        Is("BU", "read_local_device_oob_data"),
        Is("BV", "read_local_device_oob_data_ex"),

        By("SE", SerialConnection, "is_server", {0, 1}),
        By("SF", SerialDisconnection),
        By("SL", SerialListen),
        Is("SM", "channel"),
        Is("SN", "end"),

        Is("HA", "connection_state"),
        Is("HB", "audio_state"),
        Is("HC", "vr_cmd"),
        By("HD", NetworkState, "state", {0, 1, 2}),
        Is("HE", "network_roaming"),
        Is("HF", "network_signal"),
        Is("HG", "battery_level"),
        Is("HH", "current_operator"),
        Nothing("HI"), // these three ask for the calls once all of them have come
        Nothing("HJ"),
        Nothing("HK"),
        Is("HL", "resp_and_hold"),
        Is("HM", "clip"),
        Is("HN", "call_waiting"),
        By("HO", CurrentCall),
        Is("HP", "volume_change"),
        By("HQ", CommandComplete, "cme", {20, 21}),
        Is("HR", "subscriber_info"),
        Is("HS", "in_band_ring_tone"),
        Is("HT", "last_voice_tag_number"),
        Is("HU", "ring_indication"),
        Is("HV", "ag_model_name"),
        Is("HW", "ag_manufacturer_id"),
        By("HX", PhoneState, "state", {4, 5, 6, 7, 8, 9, 10, 11}),
        Is("HZ", "ios_aplsiri"),

        Is("AA", "connection_state"),
        Is("AB", "audio_state"),
        Is("AC", "audio_config"),
        By("AE", MusicDevices, "event", {0, 3, 0xFFFFFFFD}),

        Is("RA", "handle_passthrough_rsp"),
        Nothing("RB"),
        Is("RC", "connection_state_changed"),
        Is("RD", "get_rc_features"),
        Nothing("RE"),
        By("RF", PlayerSetting),
        By("RG", PlayerSettings),
        Is("RH", "handle_set_abs_volume", {"address", "volume"}),
        Is("RI", "handle_register_notification_abs_vol", {"address"}),
        By("RJ", Track),
        Is("RK", "handle_play_position_changed"),
        Is("RL", "handle_play_status_changed"),
        By("RM",
           [](const Event& event) {
               return FolderItem(protocol::find(protocol::Direction::Event, "RM"), event);
           }),
        By("RN", FolderPath, "status", {0, 4}),
        Is("RO", "get_total_number_of_items_rsp"),
        Is("RP", "play_item_rsp"),
        Nothing("RQ"),
        Nothing("RR"),
        Nothing("RS"),
        Is("RWA", "now_playing_content_changed"),
        Is("RWB", "addressed_player_changed"),
        Is("RWC", "available_player_changed"),
        Is("RWE", "connect_bip_result"),
        Is("RWF", "get_linked_thumbnail_result"),
        Is("RWG", "get_image_result"),

        Is("TS", "connection_status"),
        Is("TC", "get_phonebook_status"),
        Is("TE", "get_phonebook_size"),
        Nothing("TB"),
        By("TD", PhoneBookEntry),
        Nothing("TR"),
        By("TP", Photo),

        // To who waits for the registration, and to the server's hook.
        Is("KA", "registered", {"client_if", "uuid"}),
        Is("KB", "scan_result", {"address", "rssi", "data", "data_type"}),
        Is("KC", "scan_address_name"),
        Is("KD", "notify"),
        Is("KE", "connected"),
        By("KF", Disconnected),
        Is("KG", "search_completed"),
        Is("KH", "search_result"),
        Is("KI", "get_characteristic"),
        Is("KJ", "get_descriptor"),
        Is("KK", "get_included_service"),
        Is("KL", "register_for_notifications"),
        Is("KM", "read_characteristic"),
        Is("KN", "write_characteristic"),
        Is("KO", "execute_completed"),
        Is("KP", "read_descriptor"),
        Is("KQ", "write_descriptor"),
        Is("KR", "read_remote_rssi"),
        Is("KS", "receive_data_from_central"),
        Is("KT", "configure_mtu"),
        Is("KZA", "advertise_callback"),
        Nothing("KZB"),
        Nothing("KZC"),
        Nothing("KZD"),
        Nothing("KZE"),
        Nothing("KZF"),
        Nothing("KZG"),
        Nothing("KZH"),
        Nothing("KZI"),
        Nothing("KZJ"),
        Nothing("KZK"),
        Nothing("KZL"),
        Nothing("KZM"),
        Nothing("KZN"),

        Is("JA", "server_registered"),
        Is("JB", "client_connected"),
        Is("JC", "service_added"),
        Is("JD", "included_service_added"),
        Is("JE", "characteristic_added"),
        Is("JF", "descriptor_added"),
        Is("JG", "service_started"),
        Is("JH", "service_stopped"),
        Is("JI", "service_deleted"),
        Is("JJ", "response_send_completed"),
        Is("JK", "attribute_read"),
        Is("JL", "attribute_write"),
        Is("JM", "execute_write"),
        Is("JN", "notification_sent"),
        Nothing("JO"),
        Is("JP", "mtu_changed"),

        Is("DA", "application_state"),
        Is("DB", "connection_state"),
        Nothing("DC"),
        Nothing("DE"),
        Nothing("DF"),
        Nothing("DG"),
        Nothing("DH"),
    };
    return rows;
}

inline Expected Expect(const Row& row, const Event& event) {
    if (row.special != nullptr) {
        return row.special(event);
    }
    if (row.member.empty()) {
        return {};
    }
    std::string arguments;
    const auto append = [&](const Value& value) {
        arguments += (arguments.empty() ? "" : ", ") + event.Text(value);
    };
    for (const std::string_view name : row.fields) {
        append(event.At(name));
    }
    for (const Value& value : event.All()) {
        if (row.fields.empty()) {
            append(value);
        }
    }
    return Calls(std::string(row.member) + "(" + arguments + ")");
}

} // namespace records

#endif
