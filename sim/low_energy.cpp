// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "low_energy.h"

#include <algorithm>

namespace sim {
namespace {

constexpr size_t kMostRegistered = 32;

} // namespace

uint8_t LowEnergy::add(std::set<uint8_t>& ids, uint8_t& last) {
    if (ids.size() >= kMostRegistered) {
        return 0;
    }
    do {
        ++last;
    } while (last == 0 || ids.count(last) > 0);
    ids.insert(last);
    return last;
}

void LowEnergy::remove_client(uint8_t id) {
    if (clients_.erase(id) > 0) {
        for (const Listener& listener : listeners_) {
            if (listener.client_gone) {
                listener.client_gone(id);
            }
        }
    }
}

GattConnection* LowEnergy::find(uint16_t conn_id) {
    const auto it = std::find_if(connections_.begin(), connections_.end(),
                                 [conn_id](const GattConnection& c) { return c.id == conn_id; });
    return it == connections_.end() ? nullptr : &*it;
}

GattConnection* LowEnergy::find(uint8_t client_if, const Address& address) {
    const auto it =
        std::find_if(connections_.begin(), connections_.end(), [&](const GattConnection& c) {
            return c.client_if == client_if && c.address == address;
        });
    return it == connections_.end() ? nullptr : &*it;
}

GattConnection& LowEnergy::add_connection(uint8_t client_if, Device& device) {
    do {
        ++last_connection_;
    } while (last_connection_ == 0 || find(last_connection_) != nullptr);
    GattConnection connection;
    connection.id = last_connection_;
    connection.client_if = client_if;
    connection.address = device.address;
    connections_.push_back(std::move(connection));
    return connections_.back();
}

void LowEnergy::remove_connection(uint16_t conn_id) {
    connections_.erase(std::remove_if(connections_.begin(), connections_.end(),
                                      [conn_id](const GattConnection& c) { return c.id == conn_id; }),
                       connections_.end());
}

Device& LowEnergy::peer(const GattConnection& connection) {
    // Connections are only made to devices of the world, and none leaves it.
    return *hub_.world.find(connection.address);
}

void LowEnergy::set_inviting(bool on) {
    if (!on && !inviting_) {
        return;
    }
    inviting_ = on;
    for (const Listener& listener : listeners_) {
        if (listener.advertising) {
            listener.advertising(on);
        }
    }
}

ServiceId service_field(Fields& fields) {
    ServiceId service;
    service.type = fields.byte("service type");
    service.instance = fields.word("service instance");
    service.uuid = fields.octets_reversed("service UUID");
    return service;
}

ItemId item_field(Fields& fields, const char* what) {
    ItemId item;
    item.instance = fields.word(what);
    item.uuid = fields.octets_reversed(what);
    return item;
}

Event& put(Event& event, const ServiceId& service) {
    return event.byte(service.type).word(service.instance).octets(service.uuid);
}

Event& put(Event& event, const ItemId& item) {
    return event.word(item.instance).octets(item.uuid);
}

void hold_link(Hub& hub, Device& device) {
    ++device.gatt_connections;
    set_link(hub, device, true);
}

void release_link(Hub& hub, Device& device) {
    if (device.gatt_connections > 0 && --device.gatt_connections == 0) {
        set_link(hub, device, false);
    }
}

} // namespace sim
