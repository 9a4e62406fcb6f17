// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A crowded hall: any number of devices that advertise and do nothing else. None of them is kept: each
// follows from its number.
#ifndef VYM_SIM_HALL_H
#define VYM_SIM_HALL_H

#include "world.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace sim {

/// The advertiser with this number, from 0 on: address and name are its own.
Device hall_advertiser(uint32_t number);

/// Meets all of them, one after the other, again and again.
/// The device with this address; an advertiser of the hall becomes one of the world's devices by being
/// met. nullptr when there is none.
Device* meet(World& world, const Address& address);

class Hall {
public:
    explicit Hall(uint32_t size) : size_(size) {}

    uint32_t size() const { return size_; }

    /// From the first one on.
    void begin() { *this = Hall(size_); }

    /// Calls meet(device, number) for as many as advertise in this time, when each of them does so once
    /// in an interval - but for no more than a radio can follow.
    template <typename Meet>
    void pass_time(std::chrono::milliseconds time, std::chrono::milliseconds interval, Meet meet) {
        // A radio hears one advertisement in a tenth of a millisecond at best.
        constexpr int64_t kMostInMillisecond = 10;
        const int64_t most = kMostInMillisecond * time.count();
        due_ = std::min(due_ + size_ * time.count(), (most + 1) * interval.count() - 1);
        for (; due_ >= interval.count(); due_ -= interval.count()) {
            meet(hall_advertiser(next_), next_);
            next_ = (next_ + 1) % size_;
        }
    }

private:
    uint32_t size_;
    uint32_t next_ = 0;
    /// Advertisements that are due, in parts of one.
    int64_t due_ = 0;
};

} // namespace sim

#endif
