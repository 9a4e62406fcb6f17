// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profile_link.h"

#include <algorithm>

namespace sim {

Device* ProfileLink::reachable(const Address& address) {
    Device* device = hub_.world.reach(address);
    const char* reason = nullptr;
    if (!hub_.world.adapter.powered) {
        reason = "the adapter is off";
    } else if (device == nullptr) {
        reason = "no such device is near";
    } else if (std::find(device->services.begin(), device->services.end(), service_) ==
               device->services.end()) {
        reason = "the device does not offer it";
    } else if (state_ != State::Down) {
        reason = "another device is connected";
    } else {
        return device;
    }
    hub_.log.note("no " + profile_ + " connection to " + to_string(address) + ": " + reason);
    return nullptr;
}

void ProfileLink::connect(const Address& address) {
    if (state_ != State::Down && peer_ == address) {
        report_(address, state_);
        return;
    }
    Device* device = reachable(address);
    if (device == nullptr) {
        report_(address, State::Down);
        return;
    }
    peer_ = address;
    state_ = State::Connecting;
    report_(address, state_);
    set_link(hub_, *device, true);
    timer_.start(hub_.pace.profile_connect, [this] {
        state_ = State::Up;
        report_(peer_, state_);
    });
}

void ProfileLink::disconnect(const Address& address) {
    if (peer_ == address) {
        state_ = State::Down;
        timer_.stop();
    }
    report_(address, State::Down);
}

void ProfileLink::connect(Fields& fields) {
    const Address address = fields.address();
    fields.end();
    connect(address);
}

void ProfileLink::disconnect(Fields& fields) {
    const Address address = fields.address();
    fields.end();
    disconnect(address);
}

void ProfileLink::lost(const Address& address) {
    if (state_ != State::Down && peer_ == address) {
        disconnect(address);
    }
}

} // namespace sim
