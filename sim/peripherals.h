// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What Low Energy devices are and say: their attributes and the contents of their advertisements.
#ifndef VYM_SIM_PERIPHERALS_H
#define VYM_SIM_PERIPHERALS_H

#include "attributes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

/// Types of the structures that advertising data consists of.
enum AdType : uint8_t {
    kAdFlags = 0x01,
    kAdAllUuids16 = 0x03,
    kAdAllUuids128 = 0x07,
    kAdName = 0x09,
    kAdTxPower = 0x0A,
    kAdConnectionIntervals = 0x12,
    kAdServiceData = 0x16,
    kAdAppearance = 0x19,
    kAdManufacturer = 0xFF,
};

/// As much as one advertisement or scan response can carry.
constexpr size_t kLongestAdvertisement = 31;

/// What makes a Low Energy device a peripheral; a device whose table is empty is none.
struct Peripheral {
    AttributeTable attributes;
    uint8_t flags = 0;
    uint16_t appearance = 0;
    std::string manufacturer_data;
};

/// One structure of advertising data: length, type, value.
std::string ad_structure(AdType type, std::string_view value);

/// Whether the data consists of whole structures, with at most zeros behind them.
bool is_well_formed_ad(std::string_view data);

/// What one of many badges has to offer: its service, with a counter, and who it is.
AttributeTable badge_attributes(const Octets16& service, const char* name);
/// Heart rate, battery and device information.
Peripheral heart_rate_strap();
/// Environmental sensing, and a service of its own with long values.
Peripheral climate_sensor();

} // namespace sim

#endif
