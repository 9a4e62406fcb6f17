// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The stream of internal events, in any pieces: each message is handed on once and as it was.

#include "internal_ev_process.h"
#include "target.h"

#include <string>

namespace {

std::string handled;

void handle(ev_data_t* ev) {
    const size_t kept = ev->len < sizeof ev->value ? ev->len : sizeof ev->value;
    handled.append(1, static_cast<char>(ev->type)).append(fuzz::text_of(ev->value, kept));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string stream, expected;
    handled.clear();
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    vym_internal_event_init();
    vym_internal_event_register(handle);
    fuzz::in_pieces(fuzz::text_of(data, size), 1000, [&](std::string_view piece) {
        push_ev_data(fuzz::Exact(piece).data(), piece.size());
        process_ev_data();
        stream += piece;
    });
    vym_internal_event_done();
    const auto length = [](std::string_view header) { return fuzz::byte_at(header, 1); };
    fuzz::each_message(stream, 2, length, [&](std::string_view message) {
        expected += message[0] + std::string(message.substr(2, VYM_INTERNAL_EVENT_MAX_LEN));
    });
    fuzz::require(handled == expected, "every message is handled");
    return 0;
}
