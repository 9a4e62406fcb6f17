// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// GATT client: what a peripheral offers. A search names all services; everything below them is asked
// for item by item, each time naming the one before.
#include "low_energy.h"
#include "modules.h"

#include <algorithm>

namespace sim {
namespace {

/// The item behind the one with this identifier, the first behind none; nullptr behind the last and
/// behind one that is not there.
template <typename Items, typename Id, typename IdOf>
auto next_of(Items& items, const Id& previous, IdOf id_of) -> decltype(&*items.begin()) {
    auto it = items.begin();
    if (!previous.is_null()) {
        it = std::find_if(it, items.end(), [&](const auto& item) { return id_of(item) == previous; });
        if (it != items.end()) {
            ++it;
        }
    }
    return it == items.end() ? nullptr : &*it;
}

const ItemId& id_of_item(const Attribute& attribute) {
    return attribute.id;
}

class GattDiscovery : public Module {
public:
    GattDiscovery(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)) {}

    std::vector<Command> commands() override {
        return {
            row("KH", &GattDiscovery::search),
            row("KI", &GattDiscovery::included),
            row("KJ", &GattDiscovery::characteristic),
            row("KK", &GattDiscovery::descriptor),
        };
    }

private:
    /// The attributes at the other end of a connection, or nullptr.
    AttributeTable* attributes(uint16_t conn_id) {
        const GattConnection* connection = low_energy_->find(conn_id);
        if (connection == nullptr) {
            hub().log.note("there is no connection " + std::to_string(conn_id));
            return nullptr;
        }
        return &low_energy_->peer(*connection).peripheral.attributes;
    }

    Service* service(uint16_t conn_id, const ServiceId& id) {
        AttributeTable* table = attributes(conn_id);
        return table == nullptr ? nullptr : table->find(id);
    }

    void search(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const bool all = fields.byte("search all") != 0;
        const Octets16 only = uuid_from_16bit(fields.word("UUID"));
        fields.end();
        const AttributeTable* table = attributes(conn_id);
        if (table != nullptr) {
            for (const Service& found : table->services()) {
                // Secondary ones are found as what another includes.
                if (found.id.type == kPrimary && (all || found.id.uuid == only)) {
                    Event event("KH");
                    event.word(conn_id);
                    send(put(event, found.id));
                }
            }
        }
        send(Event("KG").word(conn_id).byte(table != nullptr ? kGattSuccess : kGattError));
    }

    static Event answer(const char* tag, uint16_t conn_id, bool found, const ServiceId& service) {
        Event event(tag);
        event.word(conn_id).byte(found ? kGattSuccess : kGattError);
        put(event, service);
        return event;
    }

    void included(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const ServiceId service_id = service_field(fields);
        const ServiceId previous = service_field(fields);
        fields.end();
        const Service* in = service(conn_id, service_id);
        const ServiceId* found =
            in == nullptr ? nullptr
                          : next_of(in->included, previous, [](const ServiceId& id) { return id; });
        Event event = answer("KK", conn_id, found != nullptr, service_id);
        send(put(event, found == nullptr ? previous : *found));
    }

    void characteristic(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const ServiceId service_id = service_field(fields);
        const ItemId previous = item_field(fields, "characteristic");
        fields.end();
        const Service* in = service(conn_id, service_id);
        const Characteristic* found =
            in == nullptr ? nullptr : next_of(in->characteristics, previous, id_of_item);
        Event event = answer("KI", conn_id, found != nullptr, service_id);
        put(event, found == nullptr ? previous : found->id);
        send(event.dword(found == nullptr ? 0 : found->properties));
    }

    void descriptor(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const ServiceId service_id = service_field(fields);
        const ItemId characteristic_id = item_field(fields, "characteristic");
        const ItemId previous = item_field(fields, "descriptor");
        fields.end();
        Service* in = service(conn_id, service_id);
        const Characteristic* of = in == nullptr ? nullptr : in->find(characteristic_id);
        const Descriptor* found =
            of == nullptr ? nullptr : next_of(of->descriptors, previous, id_of_item);
        Event event = answer("KJ", conn_id, found != nullptr, service_id);
        put(event, characteristic_id);
        send(put(event, found == nullptr ? previous : found->id));
    }

    std::shared_ptr<LowEnergy> low_energy_;
};

} // namespace

std::unique_ptr<Module> make_gatt_discovery(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<GattDiscovery>(hub, std::move(low_energy));
}

} // namespace sim
