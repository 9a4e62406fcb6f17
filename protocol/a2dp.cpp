// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Music streams. The music itself travels on a descriptor of its own.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"AA", "connect", 0, {address()}},
    {"AB", "disconnect", 0, {address()}},
    {"AC", "inform_audio_focus_state", 0, {byte("state")}},
    {"AD", "inform_audio_trace_gain", 0, {word("gain")}},
    {"AQ", "switch_audio_hw", 0, {byte("mode")}},
};

constexpr Message kEvents[] = {
    {"AA", "onConnectionStateChanged", 14, {address(), byte("state")}},
    {"AB", "onAudioStateChanged", 14, {address(), byte("state")}},
    {"AC", "onAudioConfigChanged", 22, {address(), dword("sample_rate"), byte("channels")}},
    {"AE", "onA2dpDevicesEvent", 16, {dword("active"), dword("event")}},
};

} // namespace

const Profile kA2dp{"a2dp", "Music (A2DP)", kCommands, kEvents};

} // namespace protocol
