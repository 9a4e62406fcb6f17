// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "silent_sim.h"

namespace fuzz {

template <class Tell>
void SilentSim::tell_modules(Tell tell) {
    for (const auto& module : modules_) {
        tell(*module);
    }
}

SilentSim::SilentSim() {
    static const sim::World world = sim::built_in_world();
    world_ = world;
    sim::Clock::of(loop_).make_virtual({[] { return true; }, [] { return true; }});
    hub_.radio_on = [this] { tell_modules([](sim::Module& module) { module.radio_on(); }); };
    hub_.radio_off = [this] { tell_modules([](sim::Module& module) { module.radio_off(); }); };
    hub_.link_down = [this](const sim::Address& address) {
        tell_modules([&](sim::Module& module) { module.link_down(address); });
    };
    hub_.device_back = [this](const sim::Address& address) {
        tell_modules([&](sim::Module& module) { module.device_back(address); });
    };
    modules_ = sim::make_modules(hub_);
    for (const auto& module : modules_) {
        dispatcher_.add(module->commands());
    }
}

void SilentSim::run_what_is_due() {
    sim::Clock& clock = sim::Clock::of(loop_);
    clock.add(clock.now() + kMoment, [this] { loop_.stop(); });
    loop_.restart();
    clock.run(loop_);
}

} // namespace fuzz
