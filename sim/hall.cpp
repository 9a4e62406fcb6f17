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

} // namespace sim
