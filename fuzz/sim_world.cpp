// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The reader of worlds: it makes one, or says in one line what is wrong.

#include "sim/text_file.h"
#include "sim/world_file.h"
#include "target.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        const sim::World world =
            sim::world_from_text("/nowhere/world.json", std::string(fuzz::text_of(data, size)));
        fuzz::require(world.hall <= sim::kLargestHall, "there is room for the hall");
    } catch (const sim::FileError& error) {
        const std::string_view message = error.what();
        fuzz::require(message.find('\n') == std::string_view::npos, "one line says it");
    }
    return 0;
}
