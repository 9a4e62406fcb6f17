// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What differs from one time to the next in a real world, from a seed; without one the world is
// regular.
#ifndef VYM_SIM_CHANCE_H
#define VYM_SIM_CHANCE_H

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <random>

namespace sim {

/// The same on every machine: the generator's numbers are prescribed, unlike those of the library's
/// distributions.
class Chance {
public:
    Chance() = default;
    explicit Chance(std::optional<uint32_t> seed) {
        if (seed) {
            generator_.emplace(*seed);
        }
    }

    /// How strongly a device is received this time: people move, doors close.
    int8_t rssi(int8_t usual) {
        constexpr int kSwing = 4;
        constexpr int kWeakest = -127;
        constexpr int kStrongest = 20;
        return static_cast<int8_t>(std::clamp(usual + swing(kSwing), kWeakest, kStrongest));
    }

    /// A time that nobody keeps exactly.
    std::chrono::milliseconds around(std::chrono::milliseconds usual) {
        return usual + std::chrono::milliseconds(swing(static_cast<int>(usual.count() / 4)));
    }

private:
    int swing(int most) {
        if (!generator_ || most <= 0) {
            return 0;
        }
        const auto width = static_cast<uint32_t>(2 * most + 1);
        return static_cast<int>((*generator_)() % width) - most;
    }

    std::optional<std::mt19937> generator_;
};

} // namespace sim

#endif
