// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SOAK_COMMAND_SOAK_H
#define VYM_TESTS_SOAK_COMMAND_SOAK_H

#include <cstdint>
#include <string>
#include <vector>

namespace soak {

/** Sends so many commands through the library to a simulator that `sim` starts, and its events back;
 * prints what came of it. False when one end has not received what the other has sent, or a process has
 * grown. */
bool SoakCommands(uint64_t count, const std::vector<std::string>& sim);

} // namespace soak

#endif
