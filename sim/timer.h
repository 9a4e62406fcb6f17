// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A one-shot timer of the event loop.
#ifndef VYM_SIM_TIMER_H
#define VYM_SIM_TIMER_H

#include "clock.h"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace sim {

/// In the time of the loop's clock. Unlike a bare asio timer, a stopped, restarted or destroyed Timer
/// never runs the old function, even when its expiry was already queued.
class Timer {
public:
    explicit Timer(asio::io_context& loop) : clock_(Clock::of(loop)), timer_(loop) {}
    ~Timer() {
        ++*run_;
        clock_.cancel(entry_);
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    void start(std::chrono::milliseconds after, std::function<void()> function) {
        start_at(clock_.now() + after, std::move(function));
    }

    void start_at(Clock::time_point when, std::function<void()> function) {
        stop();
        if (clock_.is_virtual()) {
            entry_ = clock_.add(when, std::move(function));
        } else {
            wait_until(when, std::move(function));
        }
    }

    /// Whatever the loop's clock is: for what waits for people and processes.
    void start_real(std::chrono::milliseconds after, std::function<void()> function) {
        stop();
        wait_until(std::chrono::steady_clock::now() + after, std::move(function));
    }

    void stop() {
        ++*run_;
        timer_.cancel();
        clock_.cancel(entry_);
        entry_ = 0;
    }

private:
    void wait_until(Clock::time_point when, std::function<void()> function) {
        timer_.expires_at(when);
        timer_.async_wait(
            [current = run_, run = *run_, f = std::move(function)](const asio::error_code& error) {
                if (!error && run == *current) {
                    f();
                }
            });
    }

    Clock& clock_;
    asio::steady_timer timer_;
    /// Outlives the Timer in what is queued.
    std::shared_ptr<uint64_t> run_ = std::make_shared<uint64_t>(0);
    /// With a virtual clock.
    uint64_t entry_ = 0;
};

} // namespace sim

#endif
