// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The control language: lines of a script, and between them commands of a client (AT#...), in a world
// where time passes at once. Each is carried out or refused in one line.

#include "silent_sim.h"
#include "target.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::SilentSim sim;
    std::string_view rest = fuzz::text_of(data, size);
    for (int i = 0; i < 100 && !rest.empty(); ++i) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(line.size() < rest.size() ? line.size() + 1 : line.size());
        if (line.substr(0, 3) == "AT#") {
            sim.dispatcher().run(line);
        } else {
            sim.obey(line);
        }
        sim.run_what_is_due();
    }
    return 0;
}
