// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The time of the simulated world: that of the machine, or one that passes as fast as the client
// allows.
#ifndef VYM_SIM_CLOCK_H
#define VYM_SIM_CLOCK_H

#include <asio/io_context.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <tuple>
#include <utility>

namespace sim {

/// There is one for each event loop; timers find it there.
class Clock : public asio::execution_context::service {
public:
    using time_point = std::chrono::steady_clock::time_point;

    // What asio makes a service with.
    using key_type = Clock;
    static asio::execution_context::id id;
    explicit Clock(asio::execution_context& loop) : asio::execution_context::service(loop) {}

    static Clock& of(asio::io_context& loop) { return asio::use_service<Clock>(loop); }

    /// What a virtual clock asks when the loop has nothing else to do.
    struct Conditions {
        /// Nobody is about to do something.
        std::function<bool()> is_quiet;
        /// Timers may be waited for.
        std::function<bool()> may_time_pass;
    };

    /// From now on time is a number, which goes from one timer to the next. To be called before
    /// anything is timed.
    void make_virtual(Conditions conditions);
    bool is_virtual() const { return static_cast<bool>(conditions_.is_quiet); }

    time_point now() const { return is_virtual() ? now_ : std::chrono::steady_clock::now(); }
    /// Since the clock was made.
    std::chrono::milliseconds elapsed() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now() - begin_);
    }

    /// In which order things are done that could be done at the same time: first what goes out.
    enum class Turn { Event, Data, Command, Timer };

    /// Calls the function: at once, or with a virtual clock when it is quiet. Then one thing is done at
    /// a time, and what comes in on several ways is always done in the same order.
    void take_turn(Turn turn, std::function<void()> function);

    /// Of a virtual clock: to be called at that time; as soon as possible if it is past.
    uint64_t add(time_point when, std::function<void()> function) {
        return add(when, Turn::Timer, std::move(function));
    }
    void cancel(uint64_t entry);

    /// Runs the loop to its end, and the clock with it.
    void run(asio::io_context& loop);

private:
    /// What is due at the same time, by turn and then in the order in which it was added.
    using Due = std::tuple<time_point, Turn, uint64_t>;

    void shutdown() override;
    uint64_t add(time_point when, Turn turn, std::function<void()> function);
    bool may_step() const;
    void step();

    Conditions conditions_;
    time_point begin_ = std::chrono::steady_clock::now();
    time_point now_ = begin_;
    std::map<Due, std::function<void()>> entries_;
    std::map<uint64_t, Due> dues_;
    uint64_t last_ = 0;
};

} // namespace sim

#endif
