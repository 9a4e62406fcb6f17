// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "silent_sim.h"

#include "target.h"

#include <optional>

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
        control_.add(module->verbs());
    }
}

std::vector<std::string> SilentSim::obey(std::string_view line) {
    try {
        control_.complete(line);
        const std::optional<sim::Step> step = control_.parse(line);
        session_->cancel();
        const auto result =
            step ? session_->run(*step, [](const sim::Result&) {}) : std::optional<sim::Result>();
        return result ? result->lines : std::vector<std::string>();
    } catch (const sim::Refused& refusal) {
        require(std::string_view(refusal.what()).find('\n') == std::string_view::npos,
                "one line says it");
        return {};
    }
}

void SilentLoop::run_what_is_due() {
    sim::Clock& clock = sim::Clock::of(loop_);
    clock.add(clock.now() + kMoment, [this] { loop_.stop(); });
    loop_.restart();
    clock.run(loop_);
}

} // namespace fuzz
