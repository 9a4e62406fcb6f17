// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SOAK_EVENT_SOAK_H
#define VYM_TESTS_SOAK_EVENT_SOAK_H

#include <cstdint>

namespace soak {

/** Sends about so many events of all kinds through the library; prints what came of it. False when
 * something was lost, changed, doubled or moved, or the process has grown. */
bool SoakEvents(uint64_t count);

} // namespace soak

#endif
