// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The decoder of the protocol's description: it reads nothing but the text, says what it read in one
// line, and what it read can be written.

#include "protocol/codec.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::text_of(data, size);
    const bool is_command = text.substr(0, 3) == "AT#";
    const auto direction = is_command ? protocol::Direction::Command : protocol::Direction::Event;
    const fuzz::Exact copy(text.substr(is_command ? 3 : 0));
    const protocol::Decoded decoded =
        protocol::decode(direction, fuzz::text_of(copy.data(), copy.size()));
    const std::string shown = protocol::to_text(decoded.values) + decoded.problem;
    fuzz::require(shown.find('\n') == std::string::npos, "one line says it");
    fuzz::require(decoded.surplus.size() <= copy.size(), "the surplus is part of the text");
    if (decoded.found) {
        protocol::decode(direction, protocol::encode(*decoded.found.message, decoded.values));
    }
    return 0;
}
