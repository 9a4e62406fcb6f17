// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vym-sim --replay: a client that does what any capture tells comes to its end.

#include "memory_file.h"
#include "silent_sim.h"
#include "sim/replay.h"
#include "sim/text_file.h"

namespace {

void replay(const std::string& path) {
    fuzz::SilentLoop sim;
    int code = -1;
    sim::Replay server(sim.loop(), path, sim::Replay::kGrace, sim, sim.log(),
                       [&code](int its) { code = its; });
    server.client_came();
    for (const sim::CapturedText& text : sim::read_capture(path)) {
        if (text.is_command) {
            server.received(text.text);
            sim.run_what_is_due();
        }
    }
    fuzz::require(code == -1, "every command is taken as recorded");
    server.client_left();
    fuzz::require(code == 0, "the client has done all that was recorded");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::MemoryFile file(fuzz::text_of(data, size));
    try {
        replay(file.path());
    } catch (const sim::FileError&) { // as it should be for nearly every input
    }
    return 0;
}
