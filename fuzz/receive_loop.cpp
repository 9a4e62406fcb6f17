// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The receive loop with all profiles, fed through a socket in any pieces: it comes to the end of the
// text, and the application is told the same whatever the pieces are.

#include "connected_library.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = fuzz::text_of(data, size);
    const fuzz::Lengths lengths(text);
    fuzz::ConnectedLibrary::get().receive(lengths, text);
    return 0;
}
