// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server of the soak: the same cycle of events over and over, with numbers in between.
#ifndef VYM_TESTS_SOAK_FEEDER_H
#define VYM_TESTS_SOAK_FEEDER_H

#include <cstdint>
#include <string>
#include <vector>

namespace soak {

/** Each event of the protocol with small, escaped and greatest values; every few a place for a number,
 * which is empty here. The last one is such a place. */
std::vector<std::string> MakeCycle();

/** The number of an event, in the place for one. */
std::string Numbered(uint64_t number);

/** So many cycles begin with each event alone: what they come to is what the others are to come to. */
constexpr uint64_t kCyclesAlone = 2;

/** Serves the first client of a listening socket with whole cycles once it asks for its address, then
 * waits for its end. */
void Feed(int listener, const std::vector<std::string>& cycle, uint64_t cycles);

} // namespace soak

#endif
