// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Any number of things to do later, on one timer.
#ifndef VYM_SIM_AGENDA_H
#define VYM_SIM_AGENDA_H

#include "timer.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

namespace sim {

/// Entries may be added and cancelled while one runs; a cancelled entry never runs.
class Agenda {
public:
    explicit Agenda(asio::io_context& loop) : clock_(Clock::of(loop)), timer_(loop) {}

    /// Returns what cancels the entry; never 0.
    uint64_t add(std::chrono::milliseconds after, std::function<void()> function) {
        entries_.push_back({++last_, clock_.now() + after, std::move(function)});
        arm();
        return last_;
    }

    void cancel(uint64_t id) {
        for (auto it = entries_.begin(); it != entries_.end(); ++it) {
            if (it->id == id) {
                entries_.erase(it);
                arm();
                return;
            }
        }
    }

    void clear() {
        entries_.clear();
        timer_.stop();
    }

private:
    struct Entry {
        uint64_t id;
        Clock::time_point due;
        std::function<void()> function;
    };

    /// The entry that is due first, or the end.
    std::vector<Entry>::iterator first() {
        auto found = entries_.begin();
        for (auto it = entries_.begin(); it != entries_.end(); ++it) {
            if (it->due < found->due) {
                found = it;
            }
        }
        return found;
    }

    void arm() {
        const auto next = first();
        if (next == entries_.end()) {
            timer_.stop();
        } else {
            timer_.start_at(next->due, [this] { run(); });
        }
    }

    void run() {
        const auto due = first();
        if (due != entries_.end()) {
            const std::function<void()> function = std::move(due->function);
            entries_.erase(due);
            arm();
            function();
        }
    }

    Clock& clock_;
    Timer timer_;
    std::vector<Entry> entries_;
    uint64_t last_ = 0;
};

} // namespace sim

#endif
