// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Discovery: the discoverable devices of the world, one after the other.
#include "modules.h"
#include "timer.h"

namespace sim {
namespace {

class Discovery : public Module {
public:
    explicit Discovery(Hub& hub) : Module(hub), timer_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("BK", &Discovery::start),
            row("BL", &Discovery::stop),
        };
    }

    void radio_off() override {
        if (running_) {
            finish();
        }
    }

    void client_left() override {
        running_ = false;
        timer_.stop();
    }

private:
    void report() { send(Event("BE").byte(running_ ? 1 : 0)); }

    void start(Fields& fields) {
        fields.end();
        if (!world().adapter.powered) {
            hub().log.note("no discovery: the adapter is off");
            return;
        }
        if (!running_) {
            running_ = true;
            next_ = 0;
            wait();
        }
        report();
    }

    void stop(Fields& fields) {
        fields.end();
        finish();
    }

    void finish() {
        running_ = false;
        timer_.stop();
        report();
    }

    void wait() {
        timer_.start(hub().chance.around(hub().pace.discovery_step), [this] { step(); });
    }

    void step() {
        const std::vector<Device>& devices = world().devices;
        while (next_ < devices.size() && !(devices[next_].discoverable && devices[next_].in_range)) {
            ++next_;
        }
        if (next_ == devices.size()) {
            finish();
            return;
        }
        found(devices[next_++]);
        wait();
    }

    void found(const Device& device) {
        std::string services;
        for (const uint16_t uuid : device.services) {
            services += le16(uuid);
        }
        send(Event("BD")
                 .address(device.address)
                 .byte(device.type)
                 .dword(device.class_of_device)
                 .byte(static_cast<uint8_t>(hub().chance.rssi(device.rssi)))
                 .block(services)
                 .text(device.name));
    }

    Timer timer_;
    bool running_ = false;
    size_t next_ = 0;
};

} // namespace

std::unique_ptr<Module> make_discovery(Hub& hub) {
    return std::make_unique<Discovery>(hub);
}

} // namespace sim
