// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The HID device for tests: a table whose members record what they were given.
#ifndef VYM_TESTS_WIRE_HID_PROFILE_H
#define VYM_TESTS_WIRE_HID_PROFILE_H

#include "support/record_text.h"
#include "vym_hid.h"
#include "wire/profile_conformance.h"

namespace wire {

struct HidProfile {
    static hid_callback_t RecordingTable() {
        hid_callback_t table = {};
        table.application_state_changed_cb = [](bt_bdaddr_t address, int state) {
            ProfileRecord().Add(support::CallText("application_state", address, state));
        };
        table.hid_connection_state_cb = [](bt_bdaddr_t address, int state) {
            ProfileRecord().Add(support::CallText("connection_state", address, state));
        };
        return table;
    }
    static void Init(Table kind) {
        static hid_callback_t whole = RecordingTable();
        static hid_callback_t empty = {};
        vym_hid_init(kind == Table::kNone ? nullptr : (kind == Table::kWhole ? &whole : &empty));
    }
    static void Done() { vym_hid_done(); }
    static std::vector<std::string> Unknown() {
        return {"DD01020003abc",          "DD", "DI01", "D", "daA1B2C3D4E5F600000001",
                "dAA1B2C3D4E5F600000001", " DH"};
    }
    static std::vector<ProfileEvent> Events() {
        const std::string looks_like_one = "DAA1B2C3D4E5F600000001";
        return {
            {"DAA1B2C3D4E5F612345678", 20, "application_state(A1B2C3D4E5F6, 305419896)"},
            {"DBa1b2c3d4e5f60000000a", 20, "connection_state(A1B2C3D4E5F6, 10)"},
            {"DAA1B2C3D4E5F6FFFFFFFF", 20, "application_state(A1B2C3D4E5F6, 2147483647)"},
            {"DBA1B2C3D4E5F680000000", 20, "connection_state(A1B2C3D4E5F6, 2147483647)"},
            {"DC010200000040", 12, ""},
            {"DE01020003abc", 11, ""},
            {"DE01020000", 8, ""},
            {"DE01020016" + looks_like_one, 30, ""},
            {"DF01", 2, ""},
            {"DG010004\xDC\xDC\xDC\xDD", 10, ""},
            {"DG010000", 6, ""},
            {"DG010016" + looks_like_one, 28, ""},
            {"DH", 0, ""},
        };
    }
};

} // namespace wire

#endif
