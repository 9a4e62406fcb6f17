// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The decoder of the protocol's description: what it reads without a complaint, it can write and read
// again.

#include "protocol/codec.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = fuzz::text_of(data, size);
    const bool is_command = text.substr(0, 3) == "AT#";
    text.remove_prefix(is_command ? 3 : 0);
    const auto direction = is_command ? protocol::Direction::Command : protocol::Direction::Event;
    const fuzz::Exact copy(text);
    const protocol::Decoded decoded =
        protocol::decode(direction, fuzz::text_of(copy.data(), copy.size()));
    const std::string shown = protocol::to_text(decoded.values);
    if (decoded.found && decoded.problem.empty()) {
        const std::string again = protocol::encode(*decoded.found.message, decoded.values);
        const protocol::Decoded twice = protocol::decode(direction, again);
        fuzz::require(twice.problem.empty(), "what was written can be read");
        fuzz::require(protocol::to_text(twice.values) == shown, "it says the same");
    }
    return 0;
}
