// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Worlds in files. docs/simulator.md describes them.
#ifndef VYM_SIM_WORLD_FILE_H
#define VYM_SIM_WORLD_FILE_H

#include "world.h"

#include <string>

namespace sim {

/// More advertisers than that are not needed to crowd a hall.
constexpr uint32_t kLargestHall = 100000;
/// Controllers seldom keep more connections to centrals at once.
constexpr size_t kMostCentrals = 3;

/// Throws FileError, also for what is wrong in a file that the world refers to.
World load_world(const std::string& path);

/// The same with the text at hand: `path` is what errors name, and where other files are looked for.
World world_from_text(const std::string& path, const std::string& text);

/// The built-in world as such a file.
std::string built_in_world_text();

} // namespace sim

#endif
