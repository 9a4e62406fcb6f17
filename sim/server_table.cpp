// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "server_table.h"

#include <algorithm>

namespace sim {

ServerTable::Added ServerTable::add_service(uint8_t server_if, const ServiceId& id, unsigned handles) {
    if (handles == 0 || next_handle_ + handles > 0xFFFF) {
        return {kGattNoResources, 0};
    }
    OwnService own{server_if, {}, handles, 1, false};
    own.service.id = id;
    own.service.handle = static_cast<uint16_t>(next_handle_);
    next_handle_ += handles;
    services_.push_back(own);
    return {kGattSuccess, own.service.handle};
}

OwnService* ServerTable::with_room(uint8_t server_if, uint16_t service, unsigned attributes,
                                   Added& result) {
    OwnService* own = find(server_if, service);
    if (own == nullptr || own->started) {
        result = {kGattError, 0};
        return nullptr;
    }
    if (own->used + attributes > own->room) {
        result = {kGattNoResources, 0};
        return nullptr;
    }
    own->used += attributes;
    result = {kGattSuccess, static_cast<uint16_t>(own->service.handle + own->used - 1)};
    return own;
}

ServerTable::Added ServerTable::add_included(uint8_t server_if, uint16_t service, uint16_t included) {
    const OwnService* other = find(server_if, included);
    if (other == nullptr || service == included) {
        return {kGattError, 0};
    }
    Added result{};
    if (OwnService* own = with_room(server_if, service, 1, result)) {
        own->service.included.push_back(other->service.id);
    }
    return result;
}

ServerTable::Added ServerTable::add_characteristic(uint8_t server_if, uint16_t service,
                                                   const Octets16& uuid, uint8_t properties,
                                                   uint16_t permissions) {
    Added result{};
    if (OwnService* own = with_room(server_if, service, 2, result)) {
        Characteristic added;
        added.id.uuid = uuid;
        added.handle = result.handle;
        added.properties = properties;
        added.permissions = permissions;
        own->service.characteristics.push_back(added);
    }
    return result;
}

ServerTable::Added ServerTable::add_descriptor(uint8_t server_if, uint16_t service,
                                               const Octets16& uuid, uint16_t permissions) {
    const OwnService* there = find(server_if, service);
    if (there == nullptr || there->service.characteristics.empty()) {
        return {kGattError, 0};
    }
    Added result{};
    if (OwnService* own = with_room(server_if, service, 1, result)) {
        Descriptor added;
        added.id.uuid = uuid;
        added.handle = result.handle;
        added.permissions = permissions;
        own->service.characteristics.back().descriptors.push_back(added);
    }
    return result;
}

GattStatus ServerTable::start(uint8_t server_if, uint16_t service) {
    OwnService* own = find(server_if, service);
    if (own == nullptr || own->started) {
        return kGattError;
    }
    own->started = true;
    return kGattSuccess;
}

GattStatus ServerTable::stop(uint8_t server_if, uint16_t service) {
    OwnService* own = find(server_if, service);
    if (own == nullptr || !own->started) {
        return kGattError;
    }
    own->started = false;
    return kGattSuccess;
}

GattStatus ServerTable::remove(uint8_t server_if, uint16_t service) {
    const OwnService* own = find(server_if, service);
    if (own == nullptr) {
        return kGattError;
    }
    services_.remove_if([own](const OwnService& s) { return &s == own; });
    return kGattSuccess;
}

void ServerTable::remove_server(uint8_t server_if) {
    services_.remove_if([server_if](const OwnService& s) { return s.server_if == server_if; });
}

OwnService* ServerTable::find(uint8_t server_if, uint16_t service) {
    const auto it = std::find_if(services_.begin(), services_.end(), [&](const OwnService& s) {
        return s.server_if == server_if && s.service.handle == service;
    });
    return it == services_.end() ? nullptr : &*it;
}

OwnService* ServerTable::service_of(uint16_t handle) {
    const auto it = std::find_if(services_.begin(), services_.end(), [&](const OwnService& s) {
        return handle >= s.service.handle && handle < s.service.handle + s.room;
    });
    return it == services_.end() ? nullptr : &*it;
}

Characteristic* ServerTable::characteristic(uint16_t handle) {
    OwnService* own = service_of(handle);
    if (own != nullptr) {
        for (Characteristic& characteristic : own->service.characteristics) {
            if (characteristic.handle == handle) {
                return &characteristic;
            }
        }
    }
    return nullptr;
}

} // namespace sim
