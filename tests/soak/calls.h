// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SOAK_CALLS_H
#define VYM_TESTS_SOAK_CALLS_H

#include <cstdint>
#include <string_view>

namespace soak {

/** How many texts there were, and which, in order. */
struct Calls {
    uint64_t count = 0;
    uint64_t hash = 14695981039346656037U;

    void Add(std::string_view text) {
        ++count;
        for (const char c : text) {
            hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211U;
        }
    }
    bool operator==(const Calls& other) const { return count == other.count && hash == other.hash; }
    bool operator!=(const Calls& other) const { return !(*this == other); }
};

} // namespace soak

#endif
