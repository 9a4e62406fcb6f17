// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_rfcomm_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = rfcomm_impl_callback_t;
using namespace vym;

std::atomic<rfcomm_event_parser_t*> s_evt_parser;

// The declared minimum of SE is shorter than its fields. A short one that has ended is delivered, and
// what is missing is 0; one that has not ended waits for the rest, or the rest would be taken for an
// event of its own.
constexpr int kConnectionResultMin = 32;
constexpr int kConnectionResultWidth = 38;

bool decode_connection_result(field_reader& in, void* table) {
    field_reader ahead = in;
    if (!in.complete() && ahead.chars(kConnectionResultWidth) == nullptr) {
        return false;
    }
    return decode_plain<&callbacks::rfcomm_connection_result_cb, byte, address, byte, int32, uint16,
                        uint16, byte, byte, byte>(in, table);
}

constexpr event_row kEvents[] = {
    {"SE", "onRfcommConnectionResult", kConnectionResultMin, false, decode_connection_result},
    plain<&callbacks::rfcomm_disconnection_result_cb, byte, int32>("SF", "onRfcommDisconnectionResult",
                                                                   10),
    plain<&callbacks::rfcomm_listen_result_cb, byte, byte>("SL", "onRfcommListenResult", 4),
    plain<&callbacks::rfcomm_fetch_channels_cb, address, uuid128, byte>("SM", "onRfcommFetchChannels",
                                                                        46),
    plain<&callbacks::rfcomm_fetch_channels_end_cb, address, uuid128, byte>(
        "SN", "onRfcommFetchChannelsEnd", 46),
};

} // namespace

extern "C" {

event_parser_t* create_rfcomm_event_parser(rfcomm_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, rfcomm_event_parser_t>(cb);
}

void destroy_rfcomm_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
