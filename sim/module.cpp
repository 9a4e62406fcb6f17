// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "module.h"

namespace sim {

Event link_event(const Device& device) {
    return Event("BI", "link state")
        .byte(kSuccess, "status")
        .address(device.address)
        .byte(device.connected ? kLinkUp : kLinkDown)
        .note(device.connected ? "up" : "down");
}

Event bond_event(Status status, const Address& address, BondState state) {
    static constexpr std::array<const char*, 3> kNames{"none", "bonding", "bonded"};
    return Event("BH", "bond state")
        .byte(status, "status")
        .address(address)
        .byte(state)
        .note(kNames.at(state));
}

void set_link(Hub& hub, Device& device, bool up) {
    if (device.connected != up) {
        if (!up) {
            hub.link_down(device.address);
        }
        device.connected = up;
        hub.out.send(link_event(device));
    }
}

} // namespace sim
