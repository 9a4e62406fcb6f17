// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "transcript.h"

#include "text_file.h"

#include <array>
#include <cstdio>

namespace sim {

Transcript::Transcript(const std::string& path, const Clock& clock)
    : clock_(clock), file_(create_file(path, "transcript")) {}

void Transcript::add(std::string_view line) {
    std::array<char, 32> time{};
    const auto elapsed = static_cast<long long>(clock_.elapsed().count());
    std::snprintf(time.data(), time.size(), "%5lld.%03lld ", elapsed / 1000, elapsed % 1000);
    // Flushed at once: it is read most of all when something went wrong.
    file_ << std::string(time.data()).append(line).append("\n") << std::flush;
}

} // namespace sim
