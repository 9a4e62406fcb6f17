// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// GATT client: who is registered, the connections to peripherals, and what concerns a whole connection.
#include "agenda.h"
#include "hall.h"
#include "low_energy.h"
#include "modules.h"

#include <algorithm>

namespace sim {
namespace {

enum Transport : uint8_t { kTransportAuto = 0, kTransportLe = 2 };

/// Why these connection parameters cannot be, or nullptr.
const char* wrong_parameters(unsigned least, unsigned most, unsigned latency, unsigned timeout) {
    if (least < 6 || most > 3200 || least > most) {
        return "the intervals must lie within 6 and 3200, the smaller one first";
    }
    if (latency > 499) {
        return "the latency is more than 499";
    }
    if (timeout < 10 || timeout > 3200) {
        return "the time-out must lie within 10 and 3200";
    }
    // In units of 10 ms against twice (1 + latency) intervals of 1.25 ms.
    if (timeout * 4 <= (1 + latency) * most) {
        return "the time-out is over before the device must have answered";
    }
    return nullptr;
}

class GattClient : public Module {
public:
    GattClient(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), agenda_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("KA", &GattClient::add_client), row("KB", &GattClient::remove_client),
            row("KE", &GattClient::connect),    row("KF", &GattClient::disconnect),
            row("KG", &GattClient::refresh),    row("KR", &GattClient::parameters),
            row("KU", &GattClient::rssi),       row("KY", &GattClient::mtu),
            row("KSB", &GattClient::send_data), row("KT", &GattClient::test),
            row("KV", &GattClient::dump),       row("KW", &GattClient::clean_up),
        };
    }

    void radio_off() override {
        while (!attempts_.empty()) {
            fail(attempts_.front());
        }
    }

    void link_down(const Address& address) override {
        std::vector<uint16_t> gone;
        for (const GattConnection& connection : low_energy_->connections()) {
            if (connection.address == address) {
                gone.push_back(connection.id);
            }
        }
        Device* device = world().find(address);
        for (const uint16_t id : gone) {
            --device->gatt_connections;
            end(*low_energy_->find(id), kTerminatedHere);
        }
        if (device != nullptr && !world().is_bonded(address)) {
            forget_subscriptions(*device);
        }
    }

    void device_back(const Address& address) override {
        for (Attempt& attempt : attempts_) {
            if (attempt.address == address && attempt.entry == 0 &&
                is_reachable(address, attempt.transport)) {
                attempt.entry = connect_soon(attempt.client_if, address);
            }
        }
    }

    void client_left() override { remove_all(); }

private:
    struct Attempt {
        uint8_t client_if;
        Address address;
        /// 0 while the device is waited for.
        uint64_t entry;
        bool direct;
        uint8_t transport;
    };

    // Registration.

    void add_client(Fields& fields) {
        const Octets16 uuid = fields.octets_reversed("UUID");
        fields.end();
        GattStatus status = kGattError;
        uint8_t id = 0;
        if (world().adapter.powered) {
            id = low_energy_->add_client();
            status = id == 0 ? kGattNoResources : kGattSuccess;
        }
        send(Event("KA").byte(status).byte(id).octets(uuid));
    }

    void remove_client(Fields& fields) {
        const uint8_t id = fields.byte("client");
        fields.end();
        if (is_client(id)) {
            remove(id);
        }
    }

    bool is_client(uint8_t id) {
        if (!low_energy_->is_client(id)) {
            hub().log.note("no GATT client " + std::to_string(id) + " is registered");
            return false;
        }
        return true;
    }

    void remove(uint8_t client_if) {
        while (Attempt* attempt =
                   attempt_of([&](const Attempt& a) { return a.client_if == client_if; })) {
            cancel(*attempt);
        }
        std::vector<uint16_t> own;
        for (const GattConnection& connection : low_energy_->connections()) {
            if (connection.client_if == client_if) {
                own.push_back(connection.id);
            }
        }
        for (const uint16_t id : own) {
            close(*low_energy_->find(id));
        }
        low_energy_->remove_client(client_if);
    }

    void remove_all() {
        while (!low_energy_->clients().empty()) {
            remove(*low_energy_->clients().begin());
        }
    }

    void clean_up(Fields& fields) {
        fields.end();
        remove_all();
    }

    // Connections.

    template <typename Condition>
    Attempt* attempt_of(Condition condition) {
        const auto it = std::find_if(attempts_.begin(), attempts_.end(), condition);
        return it == attempts_.end() ? nullptr : &*it;
    }

    void connect(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        const bool direct = fields.byte("is direct") != 0;
        const uint8_t transport = fields.byte("transport");
        fields.end();
        const char* refusal = nullptr;
        if (!low_energy_->is_client(client_if)) {
            refusal = "no such GATT client is registered";
        } else if (!world().adapter.powered) {
            refusal = "the adapter is off";
        }
        if (refusal != nullptr) {
            hub().log.note(std::string("refused: ") + refusal);
            report_connected(client_if, 0, kGattError, address);
        } else if (const GattConnection* there = low_energy_->find(client_if, address)) {
            report_connected(client_if, there->id, kGattSuccess, address);
        } else if (find_attempt(client_if, address) != nullptr) {
            hub().log.note("this connection is being made already");
        } else {
            attempt(client_if, address, direct, transport);
        }
    }

    void attempt(uint8_t client_if, const Address& address, bool direct, uint8_t transport) {
        uint64_t entry = 0;
        if (is_reachable(address, transport)) {
            entry = connect_soon(client_if, address);
        } else if (direct) {
            hub().log.note(to_string(address) + " does not answer");
            entry = agenda_.add(hub().pace.le_connect_timeout,
                                [this, client_if, address] { timed_out(client_if, address); });
        } else {
            hub().log.note("waiting for " + to_string(address) + " to appear");
        }
        attempts_.push_back({client_if, address, entry, direct, transport});
    }

    bool is_reachable(const Address& address, uint8_t transport) {
        const Device* device = meet(world(), address);
        return device != nullptr && device->in_range && !device->peripheral.attributes.empty() &&
               (transport == kTransportAuto || transport == kTransportLe);
    }

    uint64_t connect_soon(uint8_t client_if, const Address& address) {
        return agenda_.add(hub().pace.profile_connect,
                           [this, client_if, address] { connected(client_if, address); });
    }

    Attempt* find_attempt(uint8_t client_if, const Address& address) {
        return attempt_of(
            [&](const Attempt& a) { return a.client_if == client_if && a.address == address; });
    }

    void cancel(Attempt& attempt) {
        agenda_.cancel(attempt.entry);
        attempts_.erase(attempts_.begin() + (&attempt - attempts_.data()));
    }

    void fail(Attempt& attempt) {
        const Attempt failed = attempt;
        cancel(attempt);
        report_connected(failed.client_if, 0, kGattError, failed.address);
    }

    void timed_out(uint8_t client_if, const Address& address) {
        fail(*find_attempt(client_if, address));
    }

    void connected(uint8_t client_if, const Address& address) {
        Attempt& made = *find_attempt(client_if, address);
        if (world().reach(address) == nullptr) {
            // Carried away meanwhile.
            if (made.direct) {
                fail(made);
            } else {
                made.entry = 0;
            }
            return;
        }
        cancel(made);
        Device& device = *world().find(address);
        hold_link(hub(), device);
        const uint16_t id = low_energy_->add_connection(client_if, device).id;
        report_connected(client_if, id, kGattSuccess, address);
    }

    void report_connected(uint8_t client_if, uint16_t conn_id, GattStatus status,
                          const Address& address) {
        send(Event("KE").byte(client_if).word(conn_id).byte(status).address(address));
    }

    void disconnect(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        const uint16_t conn_id = fields.word("connection");
        fields.end();
        if (Attempt* attempt = find_attempt(client_if, address)) {
            cancel(*attempt);
            hub().log.note("the connection is no longer tried");
            return;
        }
        const GattConnection* connection = low_energy_->find(client_if, address);
        if (connection == nullptr || connection->id != conn_id) {
            hub().log.note("client " + std::to_string(client_if) + " has no connection " +
                           std::to_string(conn_id) + " to " + to_string(address));
            return;
        }
        close(*connection);
    }

    /// At the client's wish.
    void close(const GattConnection& connection) {
        Device& device = low_energy_->peer(connection);
        end(connection, kGattSuccess);
        release_link(hub(), device);
    }

    void end(const GattConnection& connection, GattStatus status) {
        const Event event = Event("KF")
                                .byte(connection.client_if)
                                .word(connection.id)
                                .byte(status)
                                .address(connection.address);
        low_energy_->remove_connection(connection.id);
        send(event);
    }

    static void forget_subscriptions(Device& device) {
        for (Service& service : device.peripheral.attributes.services()) {
            for (Characteristic& characteristic : service.characteristics) {
                if (Descriptor* configuration = characteristic.configuration()) {
                    configuration->value.assign(2, '\0');
                }
            }
        }
    }

    // What concerns a connection as a whole.

    void refresh(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        fields.end();
        if (is_client(client_if)) {
            hub().log.note("nothing is cached of " + to_string(address));
        }
    }

    void parameters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        const uint16_t least = fields.word("least interval");
        const uint16_t most = fields.word("longest interval");
        const uint16_t latency = fields.word("latency");
        const uint16_t timeout = fields.word("time-out");
        fields.end();
        const char* problem = wrong_parameters(least, most, latency, timeout);
        if (low_energy_->find(client_if, address) == nullptr) {
            problem = "the client is not connected to this device";
        }
        hub().log.note(problem == nullptr ? std::string("connection parameters accepted")
                                          : std::string("connection parameters refused: ") + problem);
    }

    void rssi(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Address address = fields.address();
        fields.end();
        const bool connected = low_energy_->find(client_if, address) != nullptr;
        const int8_t value = connected ? hub().chance.rssi(world().find(address)->rssi) : int8_t{0};
        send(Event("KR")
                 .byte(client_if)
                 .address(address)
                 .byte(static_cast<uint8_t>(value))
                 .byte(connected ? kGattSuccess : kGattError));
    }

    void mtu(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        const uint16_t asked = fields.word("MTU");
        fields.end();
        GattConnection* connection = low_energy_->find(conn_id);
        if (connection != nullptr) {
            connection->mtu = std::max(kLeastMtu, std::min(asked, kMostMtu));
        }
        send(Event("KT")
                 .dword(conn_id)
                 .byte(connection != nullptr ? kGattSuccess : kGattError)
                 .dword(connection != nullptr ? connection->mtu : 0));
    }

    void send_data(Fields& fields) {
        const std::string data = fields.block("data");
        fields.end();
        hub().log.note("data sent: " + hex_text(data));
    }

    void test(Fields& fields) {
        const uint32_t command = fields.dword("command");
        for (const char* what : {"UUID, low part", "UUID, high part"}) {
            fields.dword(what);
        }
        fields.address();
        for (const char* what : {"parameter 1", "parameter 2", "parameter 3", "parameter 4"}) {
            fields.dword(what);
        }
        // The last parameter has as many digits as it needs.
        fields.byte("parameter 5");
        fields.rest();
        hub().log.note("GATT test " + std::to_string(command) + ": nothing to test here");
    }

    void dump(Fields& fields) {
        const uint16_t conn_id = fields.word("connection");
        fields.end();
        const GattConnection* connection = low_energy_->find(conn_id);
        if (connection == nullptr) {
            hub().log.note("there is no connection " + std::to_string(conn_id));
            return;
        }
        for (const Service& service : low_energy_->peer(*connection).peripheral.attributes.services()) {
            hub().log.note(std::to_string(service.handle) + " service " + uuid_text(service.id.uuid));
            for (const Characteristic& c : service.characteristics) {
                dump_attribute("  characteristic ", c);
                for (const Descriptor& descriptor : c.descriptors) {
                    dump_attribute("    descriptor ", descriptor);
                }
            }
        }
    }

    void dump_attribute(const char* kind, const Attribute& attribute) {
        hub().log.note(std::to_string(attribute.handle) + kind + uuid_text(attribute.id.uuid) + ": " +
                       hex_text(attribute.value));
    }

    std::shared_ptr<LowEnergy> low_energy_;
    Agenda agenda_;
    std::vector<Attempt> attempts_;
};

} // namespace

std::unique_ptr<Module> make_gatt_client(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<GattClient>(hub, std::move(low_energy));
}

} // namespace sim
