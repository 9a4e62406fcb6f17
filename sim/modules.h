// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The modules of the simulated server. A new profile adds its file and one line here.
#ifndef VYM_SIM_MODULES_H
#define VYM_SIM_MODULES_H

#include "low_energy.h"
#include "media.h"
#include "module.h"

#include <memory>

namespace sim {

std::unique_ptr<Module> make_power(Hub& hub);
std::unique_ptr<Module> make_adapter_properties(Hub& hub);
std::unique_ptr<Module> make_device_properties(Hub& hub);
std::unique_ptr<Module> make_discovery(Hub& hub);
std::unique_ptr<Module> make_bonding(Hub& hub);
std::unique_ptr<Module> make_radio(Hub& hub);
std::unique_ptr<Module> make_neighbourhood(Hub& hub);
std::unique_ptr<Module> make_hands_free(Hub& hub);
std::unique_ptr<Module> make_a2dp(Hub& hub, std::shared_ptr<Media> media);
std::unique_ptr<Module> make_avrcp(Hub& hub, std::shared_ptr<Media> media);
std::unique_ptr<Module> make_avrcp_browsing(Hub& hub, std::shared_ptr<Media> media);
std::unique_ptr<Module> make_avrcp_cover_art(Hub& hub, std::shared_ptr<Media> media);
std::unique_ptr<Module> make_phone_book(Hub& hub);
std::unique_ptr<Module> make_serial(Hub& hub);
std::unique_ptr<Module> make_hid_host(Hub& hub);
std::unique_ptr<Module> make_gatt_client(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_gatt_discovery(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_gatt_access(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_scanning(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_batch_scan(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_advertising(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_gatt_services(Hub& hub, std::shared_ptr<LowEnergy> low_energy);
std::unique_ptr<Module> make_gatt_server(Hub& hub, std::shared_ptr<LowEnergy> low_energy);

inline std::vector<std::unique_ptr<Module>> make_modules(Hub& hub) {
    std::vector<std::unique_ptr<Module>> modules;
    modules.push_back(make_power(hub));
    modules.push_back(make_adapter_properties(hub));
    modules.push_back(make_device_properties(hub));
    modules.push_back(make_discovery(hub));
    modules.push_back(make_bonding(hub));
    modules.push_back(make_radio(hub));
    modules.push_back(make_neighbourhood(hub));
    modules.push_back(make_hands_free(hub));
    const auto media = std::make_shared<Media>(hub);
    modules.push_back(make_a2dp(hub, media));
    modules.push_back(make_avrcp(hub, media));
    modules.push_back(make_avrcp_browsing(hub, media));
    modules.push_back(make_avrcp_cover_art(hub, media));
    modules.push_back(make_phone_book(hub));
    modules.push_back(make_serial(hub));
    modules.push_back(make_hid_host(hub));
    const auto low_energy = std::make_shared<LowEnergy>(hub);
    modules.push_back(make_gatt_client(hub, low_energy));
    modules.push_back(make_gatt_discovery(hub, low_energy));
    modules.push_back(make_gatt_access(hub, low_energy));
    modules.push_back(make_scanning(hub, low_energy));
    modules.push_back(make_batch_scan(hub, low_energy));
    modules.push_back(make_advertising(hub, low_energy));
    modules.push_back(make_gatt_services(hub, low_energy));
    modules.push_back(make_gatt_server(hub, low_energy));
    return modules;
}

} // namespace sim

#endif
