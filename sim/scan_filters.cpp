// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "scan_filters.h"

#include <algorithm>
#include <tuple>

namespace sim {
namespace {

/// The company's identifier comes first in manufacturer data.
constexpr size_t kCompanySize = 2;

bool fits_masked(const std::string& value, const std::string& wanted, const std::string& mask) {
    if (value.size() < wanted.size()) {
        return false;
    }
    for (size_t i = 0; i < wanted.size(); ++i) {
        const int relevant = i < mask.size() ? static_cast<uint8_t>(mask[i]) : 0xFF;
        if (((value[i] ^ wanted[i]) & relevant) != 0) {
            return false;
        }
    }
    return true;
}

} // namespace

bool is_advertising(const Device& device) {
    return !device.peripheral.attributes.empty() && !device.connected && device.in_range;
}

std::string advertisement_of(const Device& device) {
    std::string services;
    for (const uint16_t uuid : device.services) {
        services += le16(uuid);
    }
    return ad_structure(kAdFlags, std::string(1, static_cast<char>(device.peripheral.flags))) +
           ad_structure(kAdAllUuids16, services) +
           ad_structure(kAdAppearance, le16(device.peripheral.appearance));
}

std::string scan_response_of(const Device& device) {
    std::string response = ad_structure(kAdName, device.name);
    if (!device.peripheral.manufacturer_data.empty()) {
        response += ad_structure(kAdManufacturer, device.peripheral.manufacturer_data);
    }
    return response;
}

bool ScanFilter::operator==(const ScanFilter& o) const {
    const auto all = [](const ScanFilter& f) {
        return std::tie(f.kind, f.index, f.company, f.company_mask, f.uuid, f.uuid_mask, f.name,
                        f.address, f.address_type, f.data, f.mask);
    };
    return all(*this) == all(o);
}

const char* ScanFilter::problem() const {
    switch (kind) {
    case kFilterAddress:
        return address.size() == Address().octets.size() ? nullptr : "an address has six bytes";
    case kFilterService:
        return nullptr;
    case kFilterName:
        return name.empty() ? "it names no name" : nullptr;
    case kFilterManufacturer:
        return mask.empty() || mask.size() == data.size() ? nullptr : "data and mask differ in length";
    default:
        return "only address (0), service (2), name (4) and manufacturer data (5) can be filtered by";
    }
}

bool ScanFilter::fits(const Device& device) const {
    const std::string& manufacturer = device.peripheral.manufacturer_data;
    switch (kind) {
    case kFilterAddress:
        return raw(device.address) == address;
    case kFilterService: {
        const uint64_t relevant = uuid_mask == 0 ? ~uint64_t{0} : uuid_mask;
        return std::any_of(device.services.begin(), device.services.end(),
                           [&](uint16_t offered) { return ((offered ^ uuid) & relevant) == 0; });
    }
    case kFilterName:
        return device.name == name;
    case kFilterManufacturer: {
        const uint16_t relevant = company_mask == 0 ? uint16_t{0xFFFF} : company_mask;
        return manufacturer.size() >= kCompanySize &&
               ((from_le32(manufacturer.substr(0, kCompanySize)) ^ company) & relevant) == 0 &&
               fits_masked(manufacturer.substr(kCompanySize), data, mask);
    }
    default:
        return false;
    }
}

bool ScanFilters::add(const ScanFilter& filter) {
    if (space() == 0) {
        return false;
    }
    filters_.push_back(filter);
    return true;
}

bool ScanFilters::remove(const ScanFilter& filter) {
    const auto it = std::find(filters_.begin(), filters_.end(), filter);
    if (it == filters_.end()) {
        return false;
    }
    filters_.erase(it);
    return true;
}

void ScanFilters::remove_index(uint16_t index) {
    filters_.erase(std::remove_if(filters_.begin(), filters_.end(),
                                  [index](const ScanFilter& f) { return f.index == index; }),
                   filters_.end());
}

bool ScanFilters::set_parameters(uint16_t index, Parameters parameters) {
    if (parameter_space() == 0 && parameters_.count(index) == 0) {
        return false;
    }
    parameters_[index] = parameters;
    return true;
}

void ScanFilters::reset() {
    filters_.clear();
    parameters_.clear();
    enabled_ = false;
}

bool ScanFilters::pass(const Device& device) const {
    return !enabled_ || filters_.empty() ||
           std::any_of(filters_.begin(), filters_.end(),
                       [&](const ScanFilter& filter) { return pass(filter.index, device); });
}

bool ScanFilters::pass(uint16_t index, const Device& device) const {
    const auto found = parameters_.find(index);
    const Parameters parameters = found == parameters_.end() ? Parameters() : found->second;
    if (parameters.least_rssi != 0 && device.rssi < parameters.least_rssi) {
        return false;
    }
    // Of one kind, one filter that fits is enough.
    std::map<uint16_t, bool> kinds;
    for (const ScanFilter& filter : filters_) {
        if (filter.index == index) {
            bool& fits = kinds[filter.kind];
            fits = fits || filter.fits(device);
        }
    }
    const auto fits = [](const auto& kind) { return kind.second; };
    return parameters.all_kinds ? std::all_of(kinds.begin(), kinds.end(), fits)
                                : std::any_of(kinds.begin(), kinds.end(), fits);
}

} // namespace sim
