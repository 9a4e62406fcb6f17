// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every event of the adapter but the hand-over of a descriptor, with what comes of it.
#ifndef VYM_TESTS_WIRE_ADAPTER_EVENTS_H
#define VYM_TESTS_WIRE_ADAPTER_EVENTS_H

#include "wire/adapter_support.h"

namespace wire {

struct EventCase {
    std::string event;
    size_t minimum;    // characters of the fixed fields, without which nothing is delivered
    bool has_rest;     // ends in a text, so that there is no surplus
    std::string entry; // what the callback leaves; "" for events that call nothing

    [[nodiscard]] std::vector<std::string> Entries() const {
        return entry.empty() ? std::vector<std::string>{} : std::vector<std::string>{entry};
    }
};

inline std::vector<EventCase> EventsWithFixedFields() {
    return {
        {"PA7F", 2, false, "state_changed(127)"},
        {"PA00", 2, false, "state_changed(0)"},
        {"BE01", 2, false, "discovery_state_changed(1)"},
        {"BH05A1B2C3D4E5F602", 16, false, "bond_state_changed(5, A1B2C3D4E5F6, 2)"},
        {"BI05A1B2C3D4E5F601", 16, false, "acl_state_changed(5, A1B2C3D4E5F6, 1)"},
        {"BOA1B2C3D4E5F61B", 14, false, "connection_auth_req(A1B2C3D4E5F6, 27)"},
        {"BQ01020304", 8, false, "le_rx_test(2)"},
        {"BQ02030405", 8, false, "le_tx_test(3)"},
        {"BQ03021234", 8, false, "le_test_end(2, 4660)"},
        {"BQ04021234", 8, false, ""},
        {"BR02A1B2C3D4E5F6", 14, false, "read_bt_address(2, A1B2C3D4E5F6)"},
        {"BSA1B2C3D4E5F602C4", 16, false, "read_rssi(A1B2C3D4E5F6, 2, 196)"},
        {"BU02"
         "00112233445566778899AABBCCDDEEFF"
         "0F1E2D3C4B5A69788796A5B4C3D2E1F0",
         66, false,
         "read_local_device_oob_data(2, 00112233445566778899AABBCCDDEEFF, "
         "0F1E2D3C4B5A69788796A5B4C3D2E1F0)"},
        {"BV03"
         "00112233445566778899AABBCCDDEEFF"
         "0F1E2D3C4B5A69788796A5B4C3D2E1F0"
         "0123456789ABCDEFFEDCBA9876543210"
         "13579BDF02468ACE0A0D00DC5A5A5A5A",
         130, false,
         "read_local_device_oob_data_ex(3, 00112233445566778899AABBCCDDEEFF, "
         "0F1E2D3C4B5A69788796A5B4C3D2E1F0, 0123456789ABCDEFFEDCBA9876543210, "
         "13579BDF02468ACE0A0D00DC5A5A5A5A)"},
    };
}

// The services of the found device are 1800 and 110A, lowest byte first and escaped.
inline std::vector<EventCase> EventsWithTails() {
    return {
        {"PVversion 1.2", 0, true, "bt_version(\"version 1.2\")"},
        {"BDA1B2C3D4E5F60200240404C80006" + Bytes({0xDC, 0xDD, 0x18, 0xDC, 0xDF, 0x11}) + "Car", 28,
         true, "device_found(A1B2C3D4E5F6, 2, 2360324, 200, \"Car\", 2, [1800 110A])"},
        {"BDA1B2C3D4E5F60100240404C80000Car", 28, true,
         "device_found(A1B2C3D4E5F6, 1, 2360324, 200, \"Car\", 0, null)"},
        {"BFA1B2C3D4E5F60024040401Car", 22, true, "pin_request(A1B2C3D4E5F6, 2360324, 1, \"Car\")"},
        {"BGA1B2C3D4E5F60024040403000F423FCar", 30, true,
         "ssp_request(A1B2C3D4E5F6, 2360324, 3, 999999, \"Car\")"},
        {"BN0006" + Bytes({'A', 0xDC, 0xDD, 'B', 0xDC, 0xDC}), 4, false,
         "app_gap_started(4, 410042DC)"},
        {"BB00010007" + Bytes({'0', '4', '0', '3', 0x04, 0x04, 0x24}), 8, false, ""},
        {"BC00A1B2C3D4E5F6010005" + Bytes({'2', '0', '0', '1', 0x07}), 20, false, ""},
    };
}

inline std::vector<EventCase> AllEvents() {
    std::vector<EventCase> all = EventsWithFixedFields();
    for (EventCase& one : EventsWithTails()) {
        all.push_back(std::move(one));
    }
    return all;
}

} // namespace wire

#endif
