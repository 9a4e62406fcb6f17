// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "clock.h"

#include <algorithm>

namespace sim {
namespace {

/// Between two looks whether time may pass; how busy a client is comes with no signal.
constexpr std::chrono::microseconds kLook{100};

} // namespace

asio::execution_context::id Clock::id;

void Clock::make_virtual(Conditions conditions) {
    conditions_ = std::move(conditions);
}

void Clock::take_turn(Turn turn, std::function<void()> function) {
    if (is_virtual()) {
        add(now_, turn, std::move(function));
    } else {
        function();
    }
}

uint64_t Clock::add(time_point when, Turn turn, std::function<void()> function) {
    const Due due{std::max(when, now_), turn, ++last_};
    entries_.emplace(due, std::move(function));
    dues_.emplace(last_, due);
    return last_;
}

void Clock::cancel(uint64_t entry) {
    const auto found = dues_.find(entry);
    if (found != dues_.end()) {
        entries_.erase(found->second);
        dues_.erase(found);
    }
}

void Clock::shutdown() {
    // With a function may go what stops its timer.
    const auto forgotten = std::move(entries_);
    entries_.clear();
    dues_.clear();
}

bool Clock::may_step() const {
    const bool is_timer = std::get<Turn>(entries_.begin()->first) == Turn::Timer;
    return (!is_timer || conditions_.may_time_pass()) && conditions_.is_quiet();
}

void Clock::step() {
    const auto first = entries_.begin();
    now_ = std::get<time_point>(first->first);
    const std::function<void()> function = std::move(first->second);
    dues_.erase(std::get<uint64_t>(first->first));
    entries_.erase(first);
    function();
}

void Clock::run(asio::io_context& loop) {
    if (!is_virtual()) {
        loop.run();
        return;
    }
    while (!loop.stopped()) {
        if (loop.poll() > 0) {
            continue;
        }
        if (entries_.empty()) {
            loop.run_one();
        } else if (!may_step()) {
            loop.run_one_for(kLook);
        } else if (loop.poll() == 0 && !loop.stopped()) {
            // All that the client did before it was found waiting has come, and has its turn first.
            step();
        }
    }
}

} // namespace sim
