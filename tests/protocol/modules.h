// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The modules of the library beside the description of their events, each with a table that records.
#ifndef VYM_TESTS_PROTOCOL_MODULES_H
#define VYM_TESTS_PROTOCOL_MODULES_H

#include "protocol/protocol.h"
#include "wire/a2dp_profile.h"
#include "wire/avrcp_support.h"
#include "wire/gatt_client_profile.h"
#include "wire/gatt_server_profile.h"
#include "wire/hfp_profile.h"
#include "wire/hid_profile.h"
#include "wire/pbap_profile.h"
#include "wire/rfcomm_support.h"

#include <vector>

namespace modules {

struct AvrcpProfile {
    static void Init(wire::Table kind) {
        static avrcp_callback_t empty = {};
        vym_avrcp_init(kind == wire::Table::kWhole ? avrcp::RecordingTable() : &empty);
    }
    static void Done() { vym_avrcp_done(); }
};

struct Module {
    const protocol::Profile* profile;
    void (*init)(wire::Table);
    void (*done)();
};

// All but the adapter, which a session starts.
inline const std::vector<Module> kModules = {
    {&protocol::kRfcomm, wire::RfcommProfile::Init, wire::RfcommProfile::Done},
    {&protocol::kHfp, wire::HfpProfile::Init, wire::HfpProfile::Done},
    {&protocol::kA2dp, wire::A2dpProfile::Init, wire::A2dpProfile::Done},
    {&protocol::kAvrcp, AvrcpProfile::Init, AvrcpProfile::Done},
    {&protocol::kPbap, wire::PbapProfile::Init, wire::PbapProfile::Done},
    {&protocol::kGattClient, gattc::Profile::Init, gattc::Profile::Done},
    {&protocol::kGattServer, wire::GattServerProfile::Init, wire::GattServerProfile::Done},
    {&protocol::kHid, wire::HidProfile::Init, wire::HidProfile::Done},
};

} // namespace modules

#endif
