// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "module.h"

namespace sim {

Event link_event(const Device& device) {
    return Event("BI")
        .byte(kSuccess)
        .address(device.address)
        .byte(device.connected ? kLinkUp : kLinkDown);
}

Event bond_event(Status status, const Address& address, BondState state) {
    return Event("BH").byte(status).address(address).byte(state);
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
