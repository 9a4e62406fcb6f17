// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT client for tests: a table whose members record what they were given, and every event with
// what comes of it.
#ifndef VYM_TESTS_WIRE_GATT_CLIENT_PROFILE_H
#define VYM_TESTS_WIRE_GATT_CLIENT_PROFILE_H

#include "support/record_text.h"
#include "vym_gatt_client.h"
#include "wire/profile_conformance.h"

#include <string>
#include <vector>

namespace gattc {

using support::Bytes;

inline std::string Hex(const uint8_t* bytes, size_t length) {
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02X", bytes[i]);
        text += digits;
    }
    return text;
}

/** A block that a callback was given: "2, 0D41", or "0, null". */
struct Block {
    uint16_t length;
    const uint8_t* data;
};

inline std::string Text(int value) {
    return std::to_string(value);
}
inline std::string Text(const bt_bdaddr_t& address) {
    return support::ValueText(address);
}
/** uu[0] first. */
inline std::string Text(const bt_uuid_t& uuid) {
    return Hex(uuid.uu, sizeof uuid.uu);
}
inline std::string Text(const Block& block) {
    return std::to_string(block.length) + ", " +
           (block.data == nullptr ? "null" : Hex(block.data, block.length));
}

template <class... Values>
std::string CallText(const char* name, const Values&... values) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Text(values)), ...);
    return std::string(name) + "(" + text + ")";
}

/** Leaves `name(values)`. */
template <class... Values>
void Say(const char* name, const Values&... values) {
    wire::ProfileRecord().Add(CallText(name, values...));
}

// NOLINTNEXTLINE(readability-function-size): one entry for each callback
inline gatt_client_callback_t RecordingTable() {
    using Address = bt_bdaddr_t;
    using Uuid = bt_uuid_t;
    return {
        [](Address from, uint8_t rssi, uint16_t length, uint8_t* data, uint8_t type) {
            Say("scan_result", from, rssi, Block{length, data}, type);
        },
        [](Address from, uint16_t length, uint8_t* name) {
            Say("scan_address_name", from, Block{length, name});
        },
        [](uint16_t conn, Address from, uint8_t type, uint16_t instance, Uuid service, uint16_t char_id,
           Uuid characteristic, uint8_t is_notify, uint16_t length, uint8_t* data) {
            Say("notify", conn, from, type, instance, service, char_id, characteristic, is_notify,
                Block{length, data});
        },
        [](uint8_t client, uint16_t conn, uint8_t status, Address peer) {
            Say("connected", client, conn, status, peer);
        },
        [](uint8_t client, uint16_t conn, uint8_t status, Address peer) {
            Say("disconnected", client, conn, status, peer);
        },
        [](uint16_t conn, uint8_t status) { Say("search_completed", conn, status); },
        [](uint16_t conn, uint8_t type, uint16_t instance, Uuid service) {
            Say("search_result", conn, type, instance, service);
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic, int properties) {
            Say("get_characteristic", conn, status, type, instance, service, char_id, characteristic,
                properties);
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic, uint16_t descr_id, Uuid descriptor) {
            Say("get_descriptor", conn, status, type, instance, service, char_id, characteristic,
                descr_id, descriptor);
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint8_t incl_type, uint16_t incl_instance, Uuid included) {
            Say("get_included_service", conn, status, type, instance, service, incl_type, incl_instance,
                included);
        },
        [](uint16_t conn, uint8_t status, uint8_t registered, uint8_t type, uint16_t instance,
           Uuid service, uint16_t char_id, Uuid characteristic) {
            Say("register_for_notifications", conn, status, registered, type, instance, service,
                char_id, characteristic);
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic, uint8_t kind, uint16_t length, uint8_t* data) {
            Say("read_characteristic", conn, status, type, instance, service, char_id, characteristic,
                kind, Block{length, data});
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic) {
            Say("write_characteristic", conn, status, type, instance, service, char_id, characteristic);
        },
        [](uint16_t conn, uint8_t status) { Say("execute_completed", conn, status); },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic, uint16_t descr_id, Uuid descriptor, uint8_t kind,
           uint16_t length, uint8_t* data) {
            Say("read_descriptor", conn, status, type, instance, service, char_id, characteristic,
                descr_id, descriptor, kind, Block{length, data});
        },
        [](uint16_t conn, uint8_t status, uint8_t type, uint16_t instance, Uuid service,
           uint16_t char_id, Uuid characteristic, uint16_t descr_id, Uuid descriptor) {
            Say("write_descriptor", conn, status, type, instance, service, char_id, characteristic,
                descr_id, descriptor);
        },
        [](uint8_t client, Address peer, uint8_t rssi, uint8_t status) {
            Say("read_remote_rssi", client, peer, rssi, status);
        },
        [](uint16_t conn, Address from, uint16_t length, uint8_t* data) {
            Say("receive_data_from_central", conn, from, Block{length, data});
        },
        [](int conn, uint8_t status, int mtu) { Say("configure_mtu", conn, status, mtu); },
        [](uint8_t status, uint8_t client) { Say("advertise_callback", status, client); },
    };
}

/** Three UUIDs as they stand in events. */
inline const std::string kService = "00112233445566778899AABBCCDDEEFF";
inline const std::string kChar = "0F1E2D3C4B5A69788796A5B4C3D2E1F0";
inline const std::string kDescr = "DEADBEEF0123456789ABCDEFFEDCBA98";

/** Ids of an attribute of connection 0x1234 with status 5: text in an event, text of an entry. */
inline const std::string kCharIds = "123405010203" + kService + "0405" + kChar;
inline const std::string kCharText = "4660, 5, 1, 515, " + kService + ", 1029, " + kChar;
inline const std::string kDescrIds = kCharIds + "0607" + kDescr;
inline const std::string kDescrText = kCharText + ", 1543, " + kDescr;

inline const std::string kNotifyIds = "1234A1B2C3D4E5F6010203" + kService + "0405" + kChar;
inline const std::string kNotifyText = "4660, A1B2C3D4E5F6, 1, 515, " + kService + ", 1029, " + kChar;

/** Delivered as soon as their fields are there. */
inline std::vector<wire::ProfileEvent> FixedEvents() {
    return {
        {"KA0005" + kService, 36, ""},
        {"KE0512340FA1B2C3D4E5F6", 20, "connected(5, 4660, 15, A1B2C3D4E5F6)"},
        {"KF05123413A1B2C3D4E5F6", 20, "disconnected(5, 4660, 19, A1B2C3D4E5F6)"},
        {"KG123485", 6, "search_completed(4660, 133)"},
        {"KH1234010203" + kService, 42, "search_result(4660, 1, 515, " + kService + ")"},
        {"KI" + kCharIds + "00001234", 88, "get_characteristic(" + kCharText + ", 4660)"},
        {"KJ" + kDescrIds, 116, "get_descriptor(" + kDescrText + ")"},
        {"KK123405010203" + kService + "020708" + kChar, 82,
         "get_included_service(4660, 5, 1, 515, " + kService + ", 2, 1800, " + kChar + ")"},
        {"KL12340501020304" + kService + "0506" + kChar, 82,
         "register_for_notifications(4660, 5, 1, 2, 772, " + kService + ", 1286, " + kChar + ")"},
        {"KN" + kCharIds, 80, "write_characteristic(" + kCharText + ")"},
        {"KO123406", 6, "execute_completed(4660, 6)"},
        {"KQ" + kDescrIds, 116, "write_descriptor(" + kDescrText + ")"},
        {"KR05A1B2C3D4E5F6C407", 18, "read_remote_rssi(5, A1B2C3D4E5F6, 196, 7)"},
        {"KT000012340800000205", 18, "configure_mtu(4660, 8, 517)"},
        {"KZA0105", 4, "advertise_callback(1, 5)", false, 3},
        {"KZB0000000105020000000300000004", 28, "", false, 3},
        {"KZC00000001050200000003", 20, "", false, 3},
        {"KZD000000010502", 12, "", false, 3},
        {"KZE0501", 4, "", false, 3},
        {"KZF0501", 4, "", false, 3},
        {"KZG0501", 4, "", false, 3},
        {"KZH0501", 4, "", false, 3},
        {"KZI0000123401", 10, "", false, 3},
        {"KZJ0501", 4, "", false, 3},
        {"KZK000000010502", 12, "", false, 3},
        {"KZM05", 2, "", false, 3},
        {"KZN0501", 4, "", false, 3},
    };
}

/** Delivered when their NUL is there. */
inline std::vector<wire::ProfileEvent> EventsThatWait() {
    return {
        // Ended within its count, "00" is a count too.
        {"KBA1B2C3D4E5F6C4020003\x02\x01\x06", 18, "scan_result(A1B2C3D4E5F6, 196, 3, 020106, 2)"},
        {"KCA1B2C3D4E5F60004Bulb", 20, "scan_address_name(A1B2C3D4E5F6, 4, 42756C62)"},
        {"KD" + kNotifyIds + "010002\x48\x5A", 98, "notify(" + kNotifyText + ", 1, 2, 485A)"},
        {"KD" + kNotifyIds + "000000", 96, "notify(" + kNotifyText + ", 0, 0, null)"},
        {"KM" + kCharIds + "090003" + Bytes({0xDC, 0xDE, 'A'}), 89,
         "read_characteristic(" + kCharText + ", 9, 2, 0D41)"},
        {"KP" + kDescrIds + "0A0003\x01" + Bytes({0xDC, 0xDD}), 125,
         "read_descriptor(" + kDescrText + ", 10, 2, 0100)"},
        {"KS1234A1B2C3D4E5F60003xyz", 23, "receive_data_from_central(4660, A1B2C3D4E5F6, 3, 78797A)"},
        {"KZL050600000001000000020003abc", 27, "", false, 3},
    };
}

struct Profile {
    static void Init(wire::Table kind) {
        static gatt_client_callback_t whole = RecordingTable();
        static gatt_client_callback_t empty = {};
        vym_gatt_client_init(
            kind == wire::Table::kNone ? nullptr : (kind == wire::Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_gatt_client_done(); }
    static std::vector<std::string> Unknown() {
        return {"KU01", "KX0102", "KZ", "KZO0501", "KZb", "kg123400", "Kg123400", " KG123400"};
    }
    // The first is one that the application hears.
    static std::vector<wire::ProfileEvent> Events() {
        std::vector<wire::ProfileEvent> events = EventsThatWait();
        const std::vector<wire::ProfileEvent> fixed = FixedEvents();
        events.insert(events.end(), fixed.begin(), fixed.end());
        return events;
    }
};

class GattClientTest : public wire::ProfileConformance<Profile> {
protected:
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(support::Escaped(event).substr(0, 200));
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
};

/** A call and the line that it writes. */
struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    std::string command;
};

/** Arguments of which every byte differs from its neighbours. */
constexpr bt_bdaddr_t kPeer = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};
constexpr bt_uuid_t kServiceUuid = {
    {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
constexpr bt_uuid_t kCharUuid = {
    {0x0F, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78, 0x87, 0x96, 0xA5, 0xB4, 0xC3, 0xD2, 0xE1, 0xF0}};
constexpr bt_uuid_t kDescrUuid = {
    {0xDE, 0xAD, 0xBE, 0xEF, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98}};
/** These UUIDs as they stand in commands. */
inline const std::string kServiceSent = "FFEEDDCCBBAA99887766554433221100";
inline const std::string kCharSent = "F0E1D2C3B4A5968778695A4B3C2D1E0F";
inline const std::string kDescrSent = "98BADCFEEFCDAB8967452301EFBEADDE";

class GattClientCommandTest : public GattClientTest {
protected:
    void ExpectCommands(const std::vector<CommandCase>& cases) {
        for (const CommandCase& one : cases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            Server().ExpectCommand(one.command);
        }
        Server().ExpectNothingMore();
    }
};

} // namespace gattc

#endif
