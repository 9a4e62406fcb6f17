// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_hfp_event.h"

#include "vym_event_table.h"

#include <atomic>

namespace {

using callbacks = hfp_impl_callback_t;
using namespace vym;

std::atomic<hfp_event_parser_t*> s_evt_parser;

constexpr event_row kEvents[] = {
    plain<&callbacks::connection_state_cb, byte, int32, int32, address>("HA", "onConnectionState", 30),
    plain<&callbacks::audio_state_cb, byte, address>("HB", "onAudioState", 14),
    plain<&callbacks::vr_cmd_cb, byte>("HC", "onVrCmd", 2),
    plain<&callbacks::network_state_cb, byte>("HD", "onNetworkState", 2),
    plain<&callbacks::network_roaming_cb, byte>("HE", "onNetworkRoaming", 2),
    plain<&callbacks::network_signal_cb, uint16>("HF", "onNetworkSignal", 4),
    plain<&callbacks::battery_level_cb, uint16>("HG", "onBatteryLevel", 4),
    plain<&callbacks::current_operator_cb, rest>("HH", "onCurrentOperator", 0),
    plain<&callbacks::call_cb, byte>("HI", "onCall", 2),
    plain<&callbacks::callsetup_cb, byte>("HJ", "onCallsetup", 2),
    plain<&callbacks::callheld_cb, byte>("HK", "onCallheld", 2),
    plain<&callbacks::resp_and_hold_cb, byte>("HL", "onRespAndHold", 2),
    plain<&callbacks::clip_cb, rest>("HM", "onClip", 0),
    plain<&callbacks::call_waiting_cb, rest>("HN", "onCallWaiting", 0),
    plain<&callbacks::current_calls_cb, byte, byte, byte, byte, rest>("HO", "onCurrentCalls", 8),
    plain<&callbacks::volume_change_cb, byte, uint16>("HP", "onVolumeChange", 6),
    plain<&callbacks::cmd_complete_cb, byte, byte>("HQ", "onCmdComplete", 4),
    plain<&callbacks::subscriber_info_cb, byte, rest>("HR", "onSubscriberInfo", 2),
    plain<&callbacks::in_band_ring_tone_cb, byte>("HS", "onInBandRingTone", 2),
    plain<&callbacks::last_voice_tag_number_cb, rest>("HT", "onLastVoiceTagNumber", 0),
    plain<&callbacks::ring_indication_cb>("HU", "onRingIndication", 0),
    plain<&callbacks::ag_model_name_cb, rest>("HV", "onAgModelName", 0),
    plain<&callbacks::ag_manufacturer_id_cb, rest>("HW", "onAgManufacturerId", 0),
    // The state is decoded and left for the framework to skip: that is how this event is defined.
    plain<&callbacks::hfp_state_change_cb, peeked_byte>("HX", "onHfpStateChange", 2),
    plain<&callbacks::ios_aplsiri_cb, byte>("HZ", "onHfpIosAplsiri", 2),
};

} // namespace

extern "C" {

event_parser_t* create_hfp_event_parser(hfp_impl_callback_t* cb) {
    return create_profile_parser<kEvents, s_evt_parser, hfp_event_parser_t>(cb);
}

void destroy_hfp_event_parser(event_parser_t* parser) {
    destroy_profile_parser<s_evt_parser>(parser);
}

} // extern "C"
