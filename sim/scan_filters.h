// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the Low Energy devices nearby advertise, and the filters that a scan's results pass.
#ifndef VYM_SIM_SCAN_FILTERS_H
#define VYM_SIM_SCAN_FILTERS_H

#include "world.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sim {

/// Whether a device is to be heard: a peripheral falls silent while it is connected.
bool is_advertising(const Device& device);

/// Flags, services and appearance travel in the advertisement itself, the name in the scan response.
std::string advertisement_of(const Device& device);
std::string scan_response_of(const Device& device);

enum FilterKind : uint16_t {
    kFilterAddress = 0,
    kFilterService = 2,
    kFilterName = 4,
    kFilterManufacturer = 5,
    /// In answers about all of them.
    kFilterAny = 7,
};

struct ScanFilter {
    uint16_t kind = 0;
    /// Filters with the same index are judged together.
    uint16_t index = 0;
    uint16_t company = 0;
    uint16_t company_mask = 0;
    /// The short form of a UUID; without a mask all of it counts.
    uint64_t uuid = 0;
    uint64_t uuid_mask = 0;
    std::string name;
    std::string address;
    uint8_t address_type = 0;
    std::string data;
    std::string mask;

    bool operator==(const ScanFilter& other) const;
    /// Why there can be no such filter, or nullptr.
    const char* problem() const;
    bool fits(const Device& device) const;
};

class ScanFilters {
public:
    struct Parameters {
        /// Whether all kinds of an index must fit, or one of them is enough.
        bool all_kinds = true;
        /// Weaker devices are not let through; 0 for no limit.
        int8_t least_rssi = 0;
    };

    size_t space() const { return kRoom - filters_.size(); }
    size_t parameter_space() const { return kRoom - parameters_.size(); }
    /// False when there is no room.
    bool add(const ScanFilter& filter);
    /// False when there is no such filter.
    bool remove(const ScanFilter& filter);
    void remove_index(uint16_t index);
    bool set_parameters(uint16_t index, Parameters parameters);
    bool remove_parameters(uint16_t index) { return parameters_.erase(index) > 0; }
    void clear_parameters() { parameters_.clear(); }
    void enable(bool on) { enabled_ = on; }
    void reset();

    /// Whether a scan reports this device. Without any filter all pass.
    bool pass(const Device& device) const;

private:
    static constexpr size_t kRoom = 16;

    bool pass(uint16_t index, const Device& device) const;

    std::vector<ScanFilter> filters_;
    std::map<uint16_t, Parameters> parameters_;
    bool enabled_ = false;
};

} // namespace sim

#endif
