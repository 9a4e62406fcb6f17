// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The services that the client offers: how they are put together, and what is in them. Values are not
// here: the client answers for them.
#ifndef VYM_SIM_SERVER_TABLE_H
#define VYM_SIM_SERVER_TABLE_H

#include "attributes.h"

#include <cstdint>
#include <list>

namespace sim {

struct OwnService {
    uint8_t server_if;
    Service service;
    /// Handles that were asked for, and how many are in use.
    unsigned room;
    unsigned used;
    bool started = false;
};

class ServerTable {
public:
    /// What adding came to; the handle is 0 when it failed.
    struct Added {
        GattStatus status;
        uint16_t handle;
    };

    Added add_service(uint8_t server_if, const ServiceId& id, unsigned handles);
    Added add_included(uint8_t server_if, uint16_t service, uint16_t included);
    /// The handle is the value's; the declaration takes the one before.
    Added add_characteristic(uint8_t server_if, uint16_t service, const Octets16& uuid,
                             uint8_t properties, uint16_t permissions);
    /// Of the characteristic that was added last.
    Added add_descriptor(uint8_t server_if, uint16_t service, const Octets16& uuid,
                         uint16_t permissions);
    GattStatus start(uint8_t server_if, uint16_t service);
    GattStatus stop(uint8_t server_if, uint16_t service);
    GattStatus remove(uint8_t server_if, uint16_t service);
    void remove_server(uint8_t server_if);

    std::list<OwnService>& services() { return services_; }
    /// The service that begins with this handle and belongs to that server, or nullptr.
    OwnService* find(uint8_t server_if, uint16_t service);
    /// The service in which this handle lies, or nullptr.
    OwnService* service_of(uint16_t handle);
    /// The characteristic with this value handle, or nullptr.
    Characteristic* characteristic(uint16_t handle);

private:
    /// The service if so many attributes can still be added to it.
    OwnService* with_room(uint8_t server_if, uint16_t service, unsigned attributes, Added& result);

    std::list<OwnService> services_;
    /// Those below belong to the adapter's own services.
    unsigned next_handle_ = 0x20;
};

} // namespace sim

#endif
