// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The audio reader: every whole packet reaches the application.

#include "applications.h"
#include "hand_over.h"
#include "target.h"
#include "vym_audio_stream.h"
#include "vym_bluetooth.h"

namespace {

unsigned whole_packets(std::string_view stream) {
    const auto byte = [&](size_t at) { return size_t{static_cast<uint8_t>(stream[at])}; };
    const auto length = [&] { return byte(2) | byte(3) << 8U; };
    unsigned count = 0;
    while (stream.size() >= 4 && stream.size() - 4 >= length()) {
        stream.remove_prefix(4 + length());
        ++count;
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    fuzz::Pair pair;
    const unsigned before = vym_callbacks_seen();
    vym_application_of("bluetooth")->start();
    vym_listen_to_audio();
    fuzz::hand_over(IPC_ID_AUDIO, pair.theirs());
    fuzz::send_all_and_end(pair.ours(), fuzz::text_of(data, size));
    fuzz::wait_until_read(pair.ours());
    vym_listen_to_audio(); // makes the descriptor the library's own to close
    vym_audio_stream_done();
    vym_application_of("bluetooth")->stop();
    const unsigned count = vym_callbacks_seen() - before;
    fuzz::require(count == whole_packets(fuzz::text_of(data, size)), "every packet is delivered");
    return 0;
}
