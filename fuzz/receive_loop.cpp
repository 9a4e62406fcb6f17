// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The receive loop with all profiles, fed through a socket in any pieces: it comes to the end of the
// text, and the applications are told the same whatever the pieces are.

#include "connected_library.h"

namespace {

// Text that fills the library's buffer and has no end is dropped, and how much of it depends on the
// pieces.
constexpr size_t kLongestEvent = 4000;
constexpr size_t kMostPieces = 100;

bool has_endless_text(std::string_view text) {
    for (size_t end = text.find('\0'); end != std::string_view::npos; end = text.find('\0')) {
        if (end > kLongestEvent) {
            return true;
        }
        text.remove_prefix(end + 1);
    }
    return text.size() > kLongestEvent;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text = fuzz::text_of(data, size);
    fuzz::Lengths lengths(text);
    lengths.raise_to(text.size() / kMostPieces);
    fuzz::ConnectedLibrary& library = fuzz::ConnectedLibrary::get();
    const fuzz::Told told = library.receive(lengths, text);
    const fuzz::Told at_once = library.receive({}, text);
    const bool is_same = told.callbacks == at_once.callbacks && told.sum == at_once.sum;
    fuzz::require(is_same || has_endless_text(text), "no event depends on how the stream is cut");
    return 0;
}
