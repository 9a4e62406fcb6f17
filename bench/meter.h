// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a process has used between two of its messages.
#ifndef VYM_BENCH_METER_H
#define VYM_BENCH_METER_H

#include <cstdint>
#include <semaphore.h>
#include <string>

namespace bench {

/// Allocations of this process so far, those of its libraries included.
uint64_t allocations();

struct Reading {
    int64_t cpu_ns = 0;
    int64_t wall_ns = 0;
    uint64_t allocations = 0;
    long resident_kib = 0;
};
Reading take_reading();

/// Counts messages and reads the clocks at the first measured and behind the last. tick() may run on
/// another thread than wait().
class Meter {
public:
    Meter(long warm_up, long count);
    ~Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;
    Meter(Meter&&) = delete;
    Meter& operator=(Meter&&) = delete;

    /// One message is dealt with.
    void tick() {
        if (++seen_ == warm_up_ || seen_ == warm_up_ + count_) {
            read();
        }
    }
    [[nodiscard]] bool done() const { return seen_ >= warm_up_ + count_; }
    void wait();

    /// One line of JSON; a tick stood for `messages_per_tick` messages.
    [[nodiscard]] std::string report(long messages_per_tick = 1) const;

private:
    void read();

    long warm_up_;
    long count_;
    long seen_ = 0;
    Reading first_;
    Reading last_;
    sem_t ended_;
};

} // namespace bench

#endif
