// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// GATT server: how the client puts its services together, attribute by attribute.
#include "low_energy.h"
#include "modules.h"

namespace sim {
namespace {

/// How descriptors' permissions arrive; a characteristic's are as the client states them.
constexpr uint16_t kDescriptorRead = 0x02;
constexpr uint16_t kDescriptorWrite = 0x08;

uint16_t descriptor_permissions(uint16_t wire) {
    return static_cast<uint16_t>(((wire & kDescriptorRead) != 0 ? kPermitRead : 0) |
                                 ((wire & kDescriptorWrite) != 0 ? kPermitWrite : 0));
}

class GattServices : public Module {
public:
    GattServices(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)) {}

    std::vector<Command> commands() override {
        return {
            row("JF", &GattServices::add_service),
            row("JG", &GattServices::add_included),
            row("JH", &GattServices::add_characteristic),
            row("JI", &GattServices::add_descriptor),
        };
    }

private:
    bool may(uint8_t server_if) { return world().adapter.powered && low_energy_->is_server(server_if); }

    /// Adds with `function` if the server may add at all.
    template <typename Function>
    ServerTable::Added add(uint8_t server_if, Function function) {
        return may(server_if) ? function(low_energy_->own_services())
                              : ServerTable::Added{kGattError, 0};
    }

    void add_service(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const ServiceId id = service_field(fields);
        const uint8_t handles = fields.byte("handles");
        fields.end();
        const ServerTable::Added added = add(server_if, [&](ServerTable& table) {
            return id.type <= kSecondary ? table.add_service(server_if, id, handles)
                                         : ServerTable::Added{kGattError, 0};
        });
        Event event("JC");
        event.byte(added.status).byte(server_if);
        send(put(event, id).word(added.handle));
    }

    void add_included(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        const uint16_t included = fields.word("included service");
        fields.end();
        const ServerTable::Added added = add(server_if, [&](ServerTable& table) {
            return table.add_included(server_if, service, included);
        });
        send(Event("JD").byte(added.status).byte(server_if).word(service).word(included));
    }

    void send_added(Event event, const ServerTable::Added& added, uint8_t server_if,
                    const Octets16& uuid, uint16_t service) {
        send(event.byte(added.status).byte(server_if).octets(uuid).word(service).word(added.handle));
    }

    void add_characteristic(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        const Octets16 uuid = fields.octets_reversed("UUID");
        const uint8_t properties = fields.byte("properties");
        const uint16_t permissions = fields.word("permissions");
        fields.end();
        send_added(Event("JE"),
                   add(server_if,
                       [&](ServerTable& table) {
                           return table.add_characteristic(server_if, service, uuid, properties,
                                                           permissions);
                       }),
                   server_if, uuid, service);
    }

    void add_descriptor(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        const Octets16 uuid = fields.octets_reversed("UUID");
        const uint16_t permissions = descriptor_permissions(fields.word("permissions"));
        fields.end();
        send_added(Event("JF"),
                   add(server_if,
                       [&](ServerTable& table) {
                           return table.add_descriptor(server_if, service, uuid, permissions);
                       }),
                   server_if, uuid, service);
    }

    std::shared_ptr<LowEnergy> low_energy_;
};

} // namespace

std::unique_ptr<Module> make_gatt_services(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<GattServices>(hub, std::move(low_energy));
}

} // namespace sim
