// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A record of all that happened, with the world's time, to read and to compare.
#ifndef VYM_SIM_TRANSCRIPT_H
#define VYM_SIM_TRANSCRIPT_H

#include "clock.h"

#include <fstream>
#include <string>
#include <string_view>

namespace sim {

/// One line per happening: the seconds since the start, and what the log calls it.
class Transcript {
public:
    /// Throws std::runtime_error when the file cannot be written.
    Transcript(const std::string& path, const Clock& clock);

    void add(std::string_view line);

private:
    const Clock& clock_;
    std::ofstream file_;
};

} // namespace sim

#endif
