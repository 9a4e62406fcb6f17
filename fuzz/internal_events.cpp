// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The stream of internal events, in any pieces: each message is handed on once and as it was.

#include "internal_ev_process.h"
#include "target.h"

#include <algorithm>
#include <string>

namespace {

std::string handled;

void handle(ev_data_t* ev) {
    const size_t kept = std::min<size_t>(ev->len, sizeof ev->value);
    handled += static_cast<char>(ev->type);
    handled.append(reinterpret_cast<const char*>(ev->value), kept);
}

std::string expected(std::string_view stream) {
    std::string all;
    while (stream.size() >= 2 && stream.size() - 2 >= static_cast<uint8_t>(stream[1])) {
        const size_t length = static_cast<uint8_t>(stream[1]);
        all += stream[0];
        all += stream.substr(2, std::min<size_t>(length, VYM_INTERNAL_EVENT_MAX_LEN));
        stream.remove_prefix(2 + length);
    }
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input = fuzz::text_of(data, size);
    std::string stream;
    handled.clear();
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    vym_internal_event_init();
    vym_internal_event_register(handle);
    fuzz::in_pieces(input, [&](std::string_view piece) {
        const fuzz::Exact bytes(piece);
        push_ev_data(bytes.data(), bytes.size());
        process_ev_data();
        stream += piece;
    });
    vym_internal_event_done();
    fuzz::require(handled == expected(stream), "every message is handled");
    return 0;
}
