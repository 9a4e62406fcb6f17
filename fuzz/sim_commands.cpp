// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulator's reader of commands with all of its modules behind it: whatever a client sends, and in
// whatever pieces, is carried out or reported.

#include "silent_sim.h"
#include "sim/framer.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::SilentSim sim;
    sim::Framer framer(
        {[&](std::string_view line) { sim.dispatcher().run(line); }, [](std::string_view, bool) {}});
    size_t fed = 0;
    fuzz::in_pieces(fuzz::text_of(data, size), 20, [&](std::string_view piece) {
        fed += piece.size();
        framer.feed(piece);
        sim.run_what_is_due();
    });
    fuzz::require(framer.unfinished().size() <= fed, "nothing is made up");
    return 0;
}
