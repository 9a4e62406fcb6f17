// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Hands-free: the unit in the car towards the phone.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"HA", "connect", 0, {address()}},
    {"HB", "disconnect", 0, {address()}},
    {"HC", "connect_audio", 0, {address()}},
    {"HD", "disconnect_audio", 0, {address()}},
    {"HE", "start_voice_recognition"},
    {"HF", "stop_voice_recognition"},
    {"HG", "volume_control", 0, {byte("type"), word("volume")}},
    {"HH", "dial", 0, {a_number(text("number"))}},
    {"HI", "dial_memory", 0, {byte("location")}},
    {"HJ", "handle_call_action", 0, {byte("action"), byte("index")}},
    {"HK", "query_current_calls"},
    {"HL", "query_current_operator_name"},
    {"HM", "retrieve_subscriber_info"},
    {"HN", "send_dtmf", 0, {a_secret(byte("code"))}},
    {"HO", "query_last_voice_tag_name"},
    {"HP",
     "send_at_command",
     0,
     {word("command"), word("value1"), word("value2"), a_number(text("argument"))}},
    {"HQ", "switch_audio_hw", 0, {byte("on")}},
    {"HR", "switch_mic_state", 0, {byte("mute")}},
};

constexpr Message kEvents[] = {
    {"HA",
     "onConnectionState",
     30,
     {byte("state"), dword("peer_features"), dword("call_hold_features"), address()}},
    {"HB", "onAudioState", 14, {byte("state"), address()}},
    {"HC", "onVrCmd", 2, {byte("state")}},
    {"HD", "onNetworkState", 2, {byte("state")}},
    {"HE", "onNetworkRoaming", 2, {byte("state")}},
    {"HF", "onNetworkSignal", 4, {word("signal")}},
    {"HG", "onBatteryLevel", 4, {word("level")}},
    {"HH", "onCurrentOperator", 0, {a_name(text("name"))}},
    {"HI", "onCall", 2, {byte("call")}},
    {"HJ", "onCallsetup", 2, {byte("call_setup")}},
    {"HK", "onCallheld", 2, {byte("call_held")}},
    {"HL", "onRespAndHold", 2, {byte("state")}},
    {"HM", "onClip", 0, {a_number(text("number"))}},
    {"HN", "onCallWaiting", 0, {a_number(text("number"))}},
    {"HO",
     "onCurrentCalls",
     8,
     {byte("index"), byte("direction"), byte("state"), byte("multiparty"), a_number(text("number"))}},
    {"HP", "onVolumeChange", 6, {byte("type"), word("volume")}},
    {"HQ", "onCmdComplete", 4, {byte("type"), byte("cme")}},
    {"HR", "onSubscriberInfo", 2, {byte("type"), a_number(text("name"))}},
    {"HS", "onInBandRingTone", 2, {byte("state")}},
    {"HT", "onLastVoiceTagNumber", 0, {a_number(text("number"))}},
    {"HU", "onRingIndication", 0},
    {"HV", "onAgModelName", 0, {text("name")}},
    {"HW", "onAgManufacturerId", 0, {text("name")}},
    {"HX", "onHfpStateChange", 2, {byte("state")}},
    {"HZ", "onHfpIosAplsiri", 2, {byte("state")}},
};

} // namespace

const Profile kHfp{"hfp", "Hands-free (HFP)", kCommands, kEvents};

} // namespace protocol
