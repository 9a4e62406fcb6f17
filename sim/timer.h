// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A one-shot timer of the event loop.
#ifndef VYM_SIM_TIMER_H
#define VYM_SIM_TIMER_H

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

namespace sim {

/// Unlike a bare asio timer, a stopped, restarted or destroyed Timer never runs the old function, even
/// when its expiry was already queued.
class Timer {
public:
    explicit Timer(asio::io_context& loop) : timer_(loop) {}
    ~Timer() { ++*run_; }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    template <typename Function>
    void start(std::chrono::milliseconds after, Function function) {
        start_at(asio::steady_timer::clock_type::now() + after, std::move(function));
    }

    template <typename Function>
    void start_at(std::chrono::steady_clock::time_point when, Function function) {
        const uint64_t run = ++*run_;
        timer_.expires_at(when);
        timer_.async_wait(
            [current = run_, run, f = std::move(function)](const asio::error_code& error) {
                if (!error && run == *current) {
                    f();
                }
            });
    }

    void stop() {
        ++*run_;
        timer_.cancel();
    }

private:
    asio::steady_timer timer_;
    /// Outlives the Timer in what is queued.
    std::shared_ptr<uint64_t> run_ = std::make_shared<uint64_t>(0);
};

} // namespace sim

#endif
