// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the Low Energy modules share: who is registered, the GATT client's connections, and whether the
// client advertises.
#ifndef VYM_SIM_LOW_ENERGY_H
#define VYM_SIM_LOW_ENERGY_H

#include "attributes.h"
#include "module.h"
#include "server_table.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace sim {

/// What ATT starts with, and the most that the world's devices agree to.
constexpr uint16_t kLeastMtu = 23;
constexpr uint16_t kMostMtu = 247;

/// A piece of a long write that waits to be executed.
struct PreparedWrite {
    uint16_t handle;
    size_t offset;
    std::string piece;
};

/// A characteristic whose notifications a client wants to hear.
struct Registration {
    ServiceId service;
    ItemId characteristic;

    bool operator==(const Registration& o) const {
        return service == o.service && characteristic == o.characteristic;
    }
};

/// A GATT connection from the client to a peripheral.
struct GattConnection {
    uint16_t id;
    uint8_t client_if;
    Address address;
    uint16_t mtu = kLeastMtu;
    std::vector<PreparedWrite> prepared;
    std::vector<Registration> registrations;
    /// No command gets through for now.
    bool congested = false;
};

class LowEnergy {
public:
    struct Listener {
        /// A client is no longer registered.
        std::function<void(uint8_t client_if)> client_gone;
        /// The client begins to advertise in a way that invites connections, also once more, or ceases
        /// to.
        std::function<void(bool on)> advertising;
    };

    explicit LowEnergy(Hub& hub) : hub_(hub) {}

    void listen(Listener listener) { listeners_.push_back(std::move(listener)); }

    /// The next free identifier, or 0 when all are taken.
    uint8_t add_client() { return add(clients_, last_client_); }
    uint8_t add_server() { return add(servers_, last_server_); }
    bool is_client(uint8_t id) const { return clients_.count(id) > 0; }
    bool is_server(uint8_t id) const { return servers_.count(id) > 0; }
    const std::set<uint8_t>& clients() const { return clients_; }
    const std::set<uint8_t>& servers() const { return servers_; }
    void remove_client(uint8_t id);
    void remove_server(uint8_t id) { servers_.erase(id); }

    /// What the client offers to centrals.
    ServerTable& own_services() { return own_services_; }

    // The GATT client's connections.

    std::vector<GattConnection>& connections() { return connections_; }
    GattConnection* find(uint16_t conn_id);
    GattConnection* find(uint8_t client_if, const Address& address);
    GattConnection& add_connection(uint8_t client_if, Device& device);
    /// Forgets it; what remains to be told is the caller's.
    void remove_connection(uint16_t conn_id);
    /// The peripheral at the other end.
    Device& peer(const GattConnection& connection);

    // Advertising.

    bool is_inviting() const { return inviting_; }
    void set_inviting(bool on);

private:
    static uint8_t add(std::set<uint8_t>& ids, uint8_t& last);

    Hub& hub_;
    std::vector<Listener> listeners_;
    std::set<uint8_t> clients_;
    std::set<uint8_t> servers_;
    ServerTable own_services_;
    uint8_t last_client_ = 0;
    uint8_t last_server_ = 0;
    std::vector<GattConnection> connections_;
    uint16_t last_connection_ = 0;
    bool inviting_ = false;
};

/// Identifiers as commands and events carry them.
ServiceId service_field(Fields& fields);
ItemId item_field(Fields& fields, const char* what);
Event& put(Event& event, const ServiceId& service);
Event& put(Event& event, const ItemId& item);

/// A device's GATT connection more, or one less: the first brings the link up, the last takes it down.
void hold_link(Hub& hub, Device& device);
void release_link(Hub& hub, Device& device);

} // namespace sim

#endif
