// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulated server without its socket: what it would send goes nowhere, and time passes only when
// it is told to.
#ifndef VYM_FUZZ_SILENT_SIM_H
#define VYM_FUZZ_SILENT_SIM_H

#include "clock.h"
#include "dispatcher.h"
#include "modules.h"
#include "world.h"

#include <memory>
#include <ostream>
#include <vector>

namespace fuzz {

class SilentSim : private sim::Outbox {
public:
    SilentSim();

    sim::Dispatcher& dispatcher() { return dispatcher_; }
    /// A moment passes, in which timers strike.
    void run_what_is_due();

private:
    template <class Tell>
    void tell_modules(Tell tell);
    void send(const sim::Event&) override {}
    void hand_over(uint8_t, sim::UniqueFd) override {}

    static constexpr std::chrono::milliseconds kMoment{200};

    asio::io_context loop_{1};
    sim::World world_;
    std::ostream nowhere_{nullptr};
    sim::Log log_{sim::LogLevel::All, nowhere_};
    sim::Pace pace_;
    sim::Hub hub_{loop_, world_, *this, log_, pace_, {}, {}, {}};
    sim::Dispatcher dispatcher_{log_};
    std::vector<std::unique_ptr<sim::Module>> modules_;
};

} // namespace fuzz

#endif
