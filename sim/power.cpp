// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Switching the adapter on and off, its version and preset address, suspend hints, and the audio
// descriptor that comes with power.
#include "audio.h"
#include "modules.h"

namespace sim {
namespace {

class Power : public Module {
public:
    explicit Power(Hub& hub) : Module(hub), audio_(hub) {}

    std::vector<Command> commands() override {
        return {
            row("PB", &Power::enable),         row("PE", &Power::enable),
            row("PC", &Power::disable),        row("PV", &Power::version),
            row("PD", &Power::preset_address), row("BTOS", &Power::suspend),
            row("BTOW", &Power::wake_up),
        };
    }

    void client_left() override { audio_.close(); }

private:
    void report() {
        const bool on = world().adapter.powered;
        send(Event("PA").byte(on ? 1 : 0));
    }

    void enable(Fields& fields) {
        fields.end();
        world().adapter.powered = true;
        report();
        if (!audio_.is_open()) {
            audio_.open();
        }
        hub().radio_on();
    }

    void disable(Fields& fields) {
        fields.end();
        hub().radio_off();
        for (Device& device : world().devices) {
            set_link(hub(), device, false);
        }
        world().adapter.powered = false;
        report();
        audio_.close();
    }

    void version(Fields& fields) {
        fields.end();
        send(Event("PV").text(world().adapter.version));
    }

    void preset_address(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        world().adapter.address = address;
    }

    void suspend(Fields& fields) {
        fields.end();
        world().adapter.suspended = true;
    }

    void wake_up(Fields& fields) {
        fields.end();
        world().adapter.suspended = false;
    }

    Audio audio_;
};

} // namespace

std::unique_ptr<Module> make_power(Hub& hub) {
    return std::make_unique<Power>(hub);
}

} // namespace sim
