// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <vym/vym_audio_stream.h>

namespace vymctl {
namespace {

using callbacks = audio_stream_callback_t;

#define STREAM "stream=voice|music"

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_audio_stream_init", [] { restart("audio"); }, "", "prepares for audio")
            .alone(),
        verb(
            "done", "vym_audio_stream_done", [] { halt("audio"); }, "", "stops receiving audio")
            .alone(),
        verb(
            "send", "vym_audio_stream_send",
            [](uint8_t stream, uint8_t codec, std::string data) {
                const int sent =
                    vym_audio_stream_send(stream, codec, static_cast<uint16_t>(data.size()),
                                          reinterpret_cast<uint8_t*>(data.data()));
                return sent < 0 ? Outcome{"there is no audio transport", {}} : Outcome{"", sent};
            },
            STREAM " codec data", "sends samples of voice to the server"),
    };
}

std::vector<EventRow> events() {
    return {on<&callbacks::vym_audio_stream_cb>("audio.packet", STREAM " codec data")};
}

} // namespace

Profile audio_profile() {
    return make_profile<callbacks, vym_audio_stream_init, vym_audio_stream_done>(
        "audio", "Audio packets", verbs(), events());
}

} // namespace vymctl
