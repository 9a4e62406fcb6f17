// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// GATT client: reading and writing of what a peripheral offers, and what it notifies of its own accord.
#include "low_energy.h"
#include "modules.h"
#include "timer.h"

#include <algorithm>

namespace sim {
namespace {

enum WriteType : uint8_t { kWriteCommand = 1, kWriteRequest = 2, kWritePrepare = 3 };

constexpr size_t kMostPrepared = 64;

/// ATT's header in front of a written or notified value.
constexpr size_t kValueHeader = 3;

constexpr uint8_t kNotificationsOn = 1;
constexpr uint8_t kIndicationsOn = 2;

class GattAccess : public Module {
public:
    GattAccess(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), tick_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("KL", &GattAccess::read_characteristic),
            row("KM", &GattAccess::write_characteristic),
            row("KN", &GattAccess::read_descriptor),
            row("KO", &GattAccess::write_descriptor),
            row("KP", &GattAccess::execute),
            row("KQ", &GattAccess::register_notifications),
        };
    }

    std::vector<Verb> verbs() override {
        return {verb("peripheral DEVICE congestion on|off",
                     "it takes no more commands, or takes them again", &GattAccess::set_congestion),
                verb("peripheral DEVICE notify UUID HEX",
                     "its characteristic has this value from now on, and tells who listens",
                     &GattAccess::notify_value)};
    }

private:
    /// What the fields at the beginning of a command name.
    struct Target {
        uint16_t conn_id = 0;
        ServiceId service_id;
        ItemId characteristic_id;
        ItemId descriptor_id;
        GattConnection* connection = nullptr;
        Characteristic* characteristic = nullptr;
        /// The descriptor or the characteristic itself.
        Attribute* attribute = nullptr;
    };

    Target characteristic_target(Fields& fields) {
        Target target;
        target.conn_id = fields.word("connection");
        target.service_id = service_field(fields);
        target.characteristic_id = item_field(fields, "characteristic");
        find_characteristic(target);
        target.attribute = target.characteristic;
        return target;
    }

    Target descriptor_target(Fields& fields) {
        Target target = characteristic_target(fields);
        target.descriptor_id = item_field(fields, "descriptor");
        target.attribute = nullptr;
        if (target.characteristic != nullptr) {
            for (Descriptor& descriptor : target.characteristic->descriptors) {
                if (descriptor.id == target.descriptor_id) {
                    target.attribute = &descriptor;
                }
            }
        }
        return target;
    }

    void find_characteristic(Target& target) {
        target.connection = low_energy_->find(target.conn_id);
        if (target.connection == nullptr) {
            hub().log.note("there is no connection " + std::to_string(target.conn_id));
            return;
        }
        Service* service =
            low_energy_->peer(*target.connection).peripheral.attributes.find(target.service_id);
        if (service != nullptr) {
            target.characteristic = service->find(target.characteristic_id);
        }
    }

    static GattStatus presence(const Target& target) {
        if (target.connection == nullptr) {
            return kGattError;
        }
        return target.attribute == nullptr ? kAttributeNotFound : kGattSuccess;
    }

    bool is_encrypted(const Target& target) { return world().is_bonded(target.connection->address); }

    static Event answer(const char* tag, const Target& target, GattStatus status) {
        Event event(tag);
        event.word(target.conn_id).byte(status);
        put(event, target.service_id);
        put(event, target.characteristic_id);
        return event;
    }

    // Reading.

    GattStatus read(const Target& target) {
        const GattStatus there = presence(target);
        return there != kGattSuccess ? there : target.attribute->check_read(is_encrypted(target));
    }

    void send_value(Event& event, const Target& target, GattStatus status) {
        const std::string value = status == kGattSuccess ? target.attribute->value : std::string();
        constexpr uint8_t kPlainValue = 0;
        send(event.byte(kPlainValue).block(value));
    }

    void read_characteristic(Fields& fields) {
        const Target target = characteristic_target(fields);
        fields.byte("authentication");
        fields.end();
        const GattStatus status = read(target);
        Event event = answer("KM", target, status);
        send_value(event, target, status);
    }

    void read_descriptor(Fields& fields) {
        const Target target = descriptor_target(fields);
        fields.byte("authentication");
        fields.end();
        const GattStatus status = read(target);
        Event event = answer("KP", target, status);
        put(event, target.descriptor_id);
        send_value(event, target, status);
    }

    // Writing.

    /// The type, authentication and value that end a write's fields.
    struct Write {
        uint8_t type;
        std::string value;
    };

    static Write write_fields(Fields& fields) {
        Write write{fields.byte("write type"), {}};
        fields.byte("authentication");
        write.value = fields.block("value");
        fields.end();
        return write;
    }

    void write_characteristic(Fields& fields) {
        const Target target = characteristic_target(fields);
        const Write request = write_fields(fields);
        GattStatus status = presence(target);
        if (status == kGattSuccess) {
            const unsigned needed =
                request.type == kWriteCommand ? kPropertyWriteCommand : kPropertyWrite;
            const bool fits = request.type != kWriteCommand ||
                              request.value.size() + kValueHeader <= target.connection->mtu;
            if ((target.characteristic->properties & needed) == 0) {
                status = kWriteNotPermitted;
            } else if (request.type == kWriteCommand && target.connection->congested) {
                status = kGattCongested;
            } else {
                status = fits ? write(target, request) : kInvalidLength;
            }
        }
        send(answer("KN", target, status));
    }

    void write_descriptor(Fields& fields) {
        const Target target = descriptor_target(fields);
        const Write request = write_fields(fields);
        GattStatus status = presence(target);
        if (status == kGattSuccess) {
            status = write(target, request);
        }
        Event event = answer("KQ", target, status);
        send(put(event, target.descriptor_id));
    }

    GattStatus write(const Target& target, const Write& request) {
        if (request.type < kWriteCommand || request.type > kWritePrepare) {
            hub().log.note("refused: " + std::to_string(request.type) + " is no type of write");
            return kGattError;
        }
        const GattStatus permitted = target.attribute->check_write(is_encrypted(target));
        if (permitted != kGattSuccess) {
            return permitted;
        }
        if (request.type == kWritePrepare) {
            return prepare(*target.connection, target.attribute->handle, request.value);
        }
        const GattStatus good = check(*target.attribute, request.value);
        if (good == kGattSuccess) {
            store(*target.attribute, request.value);
        }
        return good;
    }

    /// Commands carry no offset: each piece goes on where the one before it ended.
    static GattStatus prepare(GattConnection& connection, uint16_t handle, const std::string& piece) {
        if (connection.prepared.size() >= kMostPrepared) {
            return kPrepareQueueFull;
        }
        size_t offset = 0;
        for (const PreparedWrite& before : connection.prepared) {
            if (before.handle == handle) {
                offset = before.offset + before.piece.size();
            }
        }
        connection.prepared.push_back({handle, offset, piece});
        return kGattSuccess;
    }

    /// The characteristic that this descriptor switches, or nullptr.
    Characteristic* switched_by(const Attribute& attribute) {
        for (Device& device : world().devices) {
            for (Service& service : device.peripheral.attributes.services()) {
                for (Characteristic& characteristic : service.characteristics) {
                    if (characteristic.configuration() == &attribute) {
                        return &characteristic;
                    }
                }
            }
        }
        return nullptr;
    }

    GattStatus check(const Attribute& attribute, const std::string& value) {
        const GattStatus status = attribute.check_value(value);
        const Characteristic* characteristic = switched_by(attribute);
        if (status != kGattSuccess || characteristic == nullptr) {
            return status;
        }
        unsigned possible = 0;
        if ((characteristic->properties & kPropertyNotify) != 0) {
            possible |= kNotificationsOn;
        }
        if ((characteristic->properties & kPropertyIndicate) != 0) {
            possible |= kIndicationsOn;
        }
        const bool proper = (static_cast<uint8_t>(value[0]) & ~possible) == 0 && value[1] == '\0';
        return proper ? kGattSuccess : kDescriptorImproper;
    }

    void store(Attribute& attribute, const std::string& value) {
        attribute.value = value;
        hub().log.note("the peripheral's " + uuid_text(attribute.id.uuid) + " is now " +
                       hex_text(value));
        if (switched_by(attribute) != nullptr) {
            tick_if_needed();
        }
    }

    void execute(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const bool wanted = fields.byte("execute") != 0;
        fields.end();
        GattStatus status = kGattError;
        if (GattConnection* connection = low_energy_->find(conn_id)) {
            const std::vector<PreparedWrite> prepared = std::move(connection->prepared);
            connection->prepared.clear();
            status = wanted ? execute(low_energy_->peer(*connection).peripheral.attributes, prepared)
                            : kGattSuccess;
        }
        send(Event("KO").word(conn_id).byte(status));
    }

    /// All or nothing.
    GattStatus execute(AttributeTable& table, const std::vector<PreparedWrite>& prepared) {
        struct Result {
            Attribute* attribute;
            std::string value;
        };
        std::vector<Result> results;
        for (const PreparedWrite& write : prepared) {
            Attribute* attribute = table.find(write.handle);
            auto it = std::find_if(results.begin(), results.end(),
                                   [&](const Result& r) { return r.attribute == attribute; });
            if (it == results.end()) {
                it = results.insert(it, {attribute, {}});
            }
            const GattStatus status = splice(it->value, write.offset, write.piece);
            if (status != kGattSuccess) {
                return status;
            }
        }
        for (const Result& result : results) {
            const GattStatus status = check(*result.attribute, result.value);
            if (status != kGattSuccess) {
                return status;
            }
        }
        for (const Result& result : results) {
            store(*result.attribute, result.value);
        }
        return kGattSuccess;
    }

    // Notifications.

    void register_notifications(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        Target target;
        target.service_id = service_field(fields);
        target.characteristic_id = item_field(fields, "characteristic");
        const bool on = fields.byte("enable") != 0;
        fields.end();
        GattStatus status = kGattError;
        if (const GattConnection* connection = low_energy_->find(client_if, address)) {
            target.conn_id = connection->id;
            find_characteristic(target);
            status = register_notifications(target, on);
        } else {
            hub().log.note("client " + std::to_string(client_if) + " is not connected to " +
                           to_string(address));
        }
        Event event("KL");
        event.word(target.conn_id).byte(status).byte(on && status == kGattSuccess ? 1 : 0);
        put(event, target.service_id);
        send(put(event, target.characteristic_id));
    }

    GattStatus register_notifications(const Target& target, bool on) {
        if (target.characteristic == nullptr) {
            return kAttributeNotFound;
        }
        if ((target.characteristic->properties & (kPropertyNotify | kPropertyIndicate)) == 0) {
            return kRequestNotSupported;
        }
        const Registration registration{target.service_id, target.characteristic_id};
        std::vector<Registration>& all = target.connection->registrations;
        all.erase(std::remove(all.begin(), all.end(), registration), all.end());
        if (on) {
            all.push_back(registration);
            tick_if_needed();
        }
        return kGattSuccess;
    }

    /// The registered characteristic if it is switched on, else nullptr.
    Characteristic* notifying(const GattConnection& connection, const Registration& registration) {
        Service* service =
            low_energy_->peer(connection).peripheral.attributes.find(registration.service);
        Characteristic* characteristic = service->find(registration.characteristic);
        const Descriptor* configuration = characteristic->configuration();
        return configuration != nullptr && configuration->value[0] != '\0' ? characteristic : nullptr;
    }

    template <typename Function>
    void for_each_notifying(Function function) {
        for (const GattConnection& connection : low_energy_->connections()) {
            for (const Registration& registration : connection.registrations) {
                if (Characteristic* characteristic = notifying(connection, registration)) {
                    function(connection, registration, *characteristic);
                }
            }
        }
    }

    void tick_if_needed() {
        bool needed = false;
        for_each_notifying([&needed](auto&&...) { needed = true; });
        if (needed && !ticking_) {
            ticking_ = true;
            tick_.start(hub().pace.notification_interval, [this] { tick(); });
        }
    }

    void tick() {
        ticking_ = false;
        // A value moves on once, however many listen.
        std::vector<Characteristic*> moved;
        for_each_notifying([this, &moved](const GattConnection& connection, const Registration& heard,
                                          Characteristic& characteristic) {
            if (std::find(moved.begin(), moved.end(), &characteristic) == moved.end()) {
                moved.push_back(&characteristic);
                characteristic.move_on();
            }
            notify(connection, heard, characteristic);
        });
        tick_if_needed();
    }

    Characteristic* characteristic_of(Device& device, const Octets16& uuid) {
        for (Service& service : device.peripheral.attributes.services()) {
            for (Characteristic& characteristic : service.characteristics) {
                if (characteristic.id.uuid == uuid) {
                    return &characteristic;
                }
            }
        }
        return nullptr;
    }

    void set_congestion(Given& given) {
        const bool on = given.is_on(1);
        bool connected = false;
        for (GattConnection& connection : low_energy_->connections()) {
            if (connection.address == given.device(0).address) {
                connected = true;
                connection.congested = on;
                send(Event("KZI").dword(connection.id).byte(on ? 1 : 0));
            }
        }
        if (!connected) {
            throw Refused("the client is not connected to \"" + given.device(0).name + '"');
        }
    }

    void notify_value(Given& given) {
        Characteristic* characteristic = characteristic_of(given.device(0), given.uuid(1));
        if (characteristic == nullptr) {
            throw Refused('"' + given.device(0).name + "\" has no characteristic " +
                          uuid_text(given.uuid(1)));
        }
        if (given.text(2).size() > kLongestValue) {
            throw Refused("a value has at most " + std::to_string(kLongestValue) + " bytes");
        }
        characteristic->value = given.text(2);
        // It need not have room for a number that moves by itself any more.
        characteristic->swing.reset();
        bool heard = false;
        for_each_notifying([&](const GattConnection& connection, const Registration& registration,
                               Characteristic& notifying) {
            if (&notifying == characteristic) {
                notify(connection, registration, notifying);
                heard = true;
            }
        });
        if (!heard) {
            throw Refused("nobody listens: the client has not registered for " +
                          uuid_text(given.uuid(1)) + ", or not switched it on in its configuration");
        }
    }

    void notify(const GattConnection& connection, const Registration& heard,
                Characteristic& characteristic) {
        const bool notification = (characteristic.configuration()->value[0] & kNotificationsOn) != 0;
        const std::string value = characteristic.value.substr(0, connection.mtu - kValueHeader);
        Event event("KD");
        event.word(connection.id).address(connection.address);
        put(event, heard.service);
        put(event, heard.characteristic);
        send(event.byte(notification ? 1 : 0).block(value));
    }

    std::shared_ptr<LowEnergy> low_energy_;
    Timer tick_;
    bool ticking_ = false;
};

} // namespace

std::unique_ptr<Module> make_gatt_access(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<GattAccess>(hub, std::move(low_energy));
}

} // namespace sim
