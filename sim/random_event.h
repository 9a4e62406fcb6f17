// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Events that nobody asked for, made from the protocol's description.
#ifndef VYM_SIM_RANDOM_EVENT_H
#define VYM_SIM_RANDOM_EVENT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace sim {

/// SplitMix64: the standard library leaves open what its default engine and its distributions give.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    /// A number below `limit`, which is not 0.
    size_t below(size_t limit) { return static_cast<size_t>(next() % limit); }
    uint8_t byte() { return static_cast<uint8_t>(next()); }
    uint32_t dword() { return static_cast<uint32_t>(next()); }

private:
    uint64_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    uint64_t state_;
};

/// Any event but the announcement of a descriptor, with fields of any value, without its NUL. Its
/// counts agree with what they count; nothing else makes sense.
std::string random_event(Random& random);

} // namespace sim

#endif
