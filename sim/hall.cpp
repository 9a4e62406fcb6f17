// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "hall.h"

#include <array>

namespace sim {

Device hall_advertiser(uint32_t number) {
    // Whoever filters by service or by strength finds some of each.
    static constexpr std::array<uint16_t, 5> kServices{0x180D, 0x180F, 0x181A, 0x1809, 0x1816};
    constexpr uint32_t kStrengths = 61;
    constexpr int kStrongest = -35;
    Device d;
    d.type = kLowEnergy;
    d.discoverable = false;
    // A static random address: the two highest bits are set.
    d.address.octets = {static_cast<uint8_t>(number),
                        static_cast<uint8_t>(number >> 8),
                        static_cast<uint8_t>(number >> 16),
                        0x41,
                        0x48,
                        0xF4};
    d.name = "Badge " + std::to_string(number + 1);
    d.rssi = static_cast<int8_t>(kStrongest - static_cast<int>(number * 7 % kStrengths));
    d.services = {kServices[number % kServices.size()]};
    d.uuids = {uuid_from_16bit(d.services.front())};
    d.peripheral.flags = 0x06;
    d.peripheral.appearance = 0x0200; // a tag
    return d;
}

Device* meet(World& world, const Address& address) {
    if (Device* known = world.find(address)) {
        return known;
    }
    const uint32_t number = address.octets[0] | static_cast<uint32_t>(address.octets[1]) << 8 |
                            static_cast<uint32_t>(address.octets[2]) << 16;
    if (number >= world.hall || !(hall_advertiser(number).address == address)) {
        return nullptr;
    }
    Device badge = hall_advertiser(number);
    badge.peripheral.attributes = badge_attributes(badge.uuids.front(), badge.name.c_str());
    world.devices.push_back(std::move(badge));
    return &world.devices.back();
}

} // namespace sim
