// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulated server without its socket, or only the loop of one: what it would send goes nowhere,
// and time passes only when it is told to.
#ifndef VYM_FUZZ_SILENT_SIM_H
#define VYM_FUZZ_SILENT_SIM_H

#include "clock.h"
#include "control.h"
#include "dispatcher.h"
#include "modules.h"
#include "world.h"

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/// A loop in virtual time, and nobody who listens.
class SilentLoop : public sim::Outbox {
public:
    SilentLoop() {
        sim::Clock::of(loop_).make_virtual({[] { return true; }, [] { return true; }});
    }

    asio::io_context& loop() { return loop_; }
    sim::Log& log() { return log_; }
    /// A moment passes, in which timers strike.
    void run_what_is_due();

    void send(const sim::Event&) override {}
    void hand_over(uint8_t, sim::UniqueFd) override {}

private:
    static constexpr std::chrono::milliseconds kMoment{200};

    asio::io_context loop_{1};
    std::ostream nowhere_{nullptr};
    sim::Log log_{sim::LogLevel::All, nowhere_};
};

class SilentSim : public SilentLoop {
public:
    SilentSim();

    sim::Dispatcher& dispatcher() { return dispatcher_; }
    /// Carries out a line of the control language, or begins to. @return the answer.
    std::vector<std::string> obey(std::string_view line);

private:
    template <class Tell>
    void tell_modules(Tell tell);
    void send(const sim::Event& event) override { control_.event_sent(event.bytes()); }

    sim::World world_;
    sim::Pace pace_;
    sim::Hub hub_{loop(), world_, *this, log(), pace_, {}, {}, {}, {}};
    sim::Dispatcher dispatcher_{log()};
    sim::Control control_{loop(), world_, [] { return true; }};
    std::shared_ptr<sim::Session> session_ = control_.open_session(control_.desk());
    std::vector<std::unique_ptr<sim::Module>> modules_;
};

} // namespace fuzz

#endif
