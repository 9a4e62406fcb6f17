// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_hid_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = hid_impl_callback_t;
using namespace vym;

std::atomic<hid_event_parser_t*> s_evt_parser;

// The host's data is read although no application gets it: where an event ends depends on it, and what
// looks like an event inside must not become one.

// DE: the host sets a report.
bool DE_parse(field_reader& in, callbacks* cbk) {
    const uint8_t type = in.byte();
    const uint8_t id = in.byte();
    counted_block report(in);
    if (report.whole) {
        notify(cbk, &callbacks::set_report_cb, type, id, report.len, report.data);
    }
    return report.whole;
}

// DG: data on the interrupt channel.
bool DG_parse(field_reader& in, callbacks* cbk) {
    const uint8_t report_id = in.byte();
    counted_block report(in);
    if (report.whole) {
        notify(cbk, &callbacks::intr_data_cb, report_id, report.len, report.data);
    }
    return report.whole;
}

using body = bodies<callbacks>;

constexpr event_row kEvents[] = {
    plain<&callbacks::application_state_changed_cb, address, int32>("DA", "onApplicationStateChanged",
                                                                    20),
    plain<&callbacks::hid_connection_state_cb, address, int32>("DB", "onConnectionState", 20),
    plain<&callbacks::get_report_cb, byte, byte, int32>("DC", "onGetReport", 12),
    body::with_tail<DE_parse>("DE", "onSetReport", 8),
    plain<&callbacks::set_protocol_cb, byte>("DF", "onSetProtocol", 2),
    body::with_tail<DG_parse>("DG", "onIntrData", 6),
    plain<&callbacks::vir_cable_unplug_cb>("DH", "onVirCableUnplug", 0),
};

} // namespace

extern "C" {

event_parser_t* create_hid_event_parser(hid_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, hid_event_parser_t>(cb);
}

void destroy_hid_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
