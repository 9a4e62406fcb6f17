// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The audio reader: every whole packet reaches the application.

#include "applications.h"
#include "hand_over.h"
#include "target.h"
#include "vym_audio_stream.h"
#include "vym_bluetooth.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    const fuzz::Pair pair;
    const unsigned before = vym_callbacks_seen();
    vym_application_of("bluetooth")->start();
    vym_listen_to_audio();
    fuzz::hand_over(IPC_ID_AUDIO, pair.theirs());
    fuzz::send_all_and_end(pair.ours(), fuzz::text_of(data, size));
    fuzz::wait_until_read(pair.ours());
    vym_listen_to_audio(); // makes the descriptor the library's own to close
    vym_audio_stream_done();
    vym_application_of("bluetooth")->stop();

    unsigned packets = 0;
    const auto length = [](std::string_view header) {
        return fuzz::byte_at(header, 2) | fuzz::byte_at(header, 3) << 8U;
    };
    fuzz::each_message(fuzz::text_of(data, size), 4, length, [&](std::string_view) { ++packets; });
    fuzz::require(vym_callbacks_seen() - before == packets, "every packet is delivered");
    return 0;
}
