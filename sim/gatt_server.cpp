// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// GATT server: who is registered, which services run, and the centrals that use them.
#include "agenda.h"
#include "central.h"
#include "low_energy.h"
#include "modules.h"

#include <algorithm>
#include <list>

namespace sim {
namespace {

/// ATT's header in front of a notified value.
constexpr size_t kValueHeader = 3;

class GattServer : public Module {
public:
    GattServer(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), agenda_(hub.loop) {
        for (const Device& device : world().devices) {
            if (device.central) {
                add_visitor(device.address);
            }
        }
        low_energy_->listen({{}, [this](bool) { invite(); }});
    }

    std::vector<Command> commands() override {
        return {
            row("JA", &GattServer::add_server), row("JC", &GattServer::remove_server),
            row("JD", &GattServer::connect),    row("JE", &GattServer::disconnect),
            row("JJ", &GattServer::start),      row("JK", &GattServer::stop),
            row("JL", &GattServer::remove),     row("JM", &GattServer::indicate),
            row("JN", &GattServer::notify),     row("JO", &GattServer::respond),
        };
    }

    void radio_off() override {
        for (Visitor& visitor : visitors_) {
            visitor.approach.stop();
        }
        while (!attempts_.empty()) {
            fail_attempt(attempts_.front().server_if, attempts_.front().address);
        }
    }

    void link_down(const Address& address) override {
        while (const ServerConnection* connection = connection_of(
                   [&address](const ServerConnection& c) { return c.address == address; })) {
            --world().find(address)->gatt_connections;
            end(*connection);
        }
    }

    void device_back(const Address& address) override {
        if (visitor(address) != nullptr) {
            invite();
        }
    }

    std::vector<Verb> verbs() override {
        return {
            verb("tablet connect [DEVICE]",
                 "the tablet, or this one of them, comes without an invitation by advertising",
                 &GattServer::bring_central),
            verb("tablet disconnect [DEVICE]", "it goes", &GattServer::send_central_away),
            verb("tablet read HANDLE=1..65535 [DEVICE]", "it reads this attribute of the client",
                 &GattServer::let_central_read),
            verb("tablet write HANDLE=1..65535 HEX [DEVICE]", "it writes this attribute of the client",
                 &GattServer::let_central_write),
            verb("tablet send HEX [DEVICE]", "it sends these bytes outside of any attribute",
                 &GattServer::let_central_send),
            verb("tablet congestion on|off [DEVICE]", "it takes no more values, or takes them again",
                 &GattServer::set_congestion),
        };
    }

    void client_left() override {
        while (!low_energy_->servers().empty()) {
            remove_server(*low_energy_->servers().begin());
        }
    }

private:
    struct Attempt {
        uint8_t server_if;
        Address address;
        uint64_t entry;
    };

    /// A central of the world, here or not.
    struct Visitor {
        Central central;
        /// Until it comes.
        Timer approach;

        Visitor(Hub& hub, ServerTable& table, const Address& address, Central::Surroundings around)
            : central(hub, table, address, std::move(around)), approach(hub.loop) {}
    };

    ServerTable& table() { return low_energy_->own_services(); }

    void add_visitor(const Address& address) {
        Central::Surroundings around;
        around.connection = [this, address](uint8_t server_if) {
            return connection_to(server_if, address);
        };
        around.give_up = [this, address] { close_all_of(address); };
        visitors_.emplace_back(hub(), table(), address, std::move(around));
    }

    // Registration.

    void add_server(Fields& fields) {
        const Octets16 uuid = fields.octets_reversed("UUID");
        fields.end();
        GattStatus status = kGattError;
        uint8_t id = 0;
        if (world().adapter.powered) {
            id = low_energy_->add_server();
            status = id == 0 ? kGattNoResources : kGattSuccess;
        }
        send(Event("JA").byte(status).byte(id).octets(uuid));
    }

    void remove_server(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        fields.end();
        if (!low_energy_->is_server(server_if)) {
            hub().log.note("no GATT server " + std::to_string(server_if) + " is registered");
            return;
        }
        remove_server(server_if);
    }

    void remove_server(uint8_t server_if) {
        for (size_t i = attempts_.size(); i > 0; --i) {
            if (attempts_[i - 1].server_if == server_if) {
                take_attempt(server_if, attempts_[i - 1].address);
            }
        }
        while (const ServerConnection* connection = connection_of(
                   [server_if](const ServerConnection& c) { return c.server_if == server_if; })) {
            close(*connection);
        }
        table().remove_server(server_if);
        low_energy_->remove_server(server_if);
    }

    // Services.

    void report_service(const char* tag, GattStatus status, uint8_t server_if, uint16_t service) {
        send(Event(tag).byte(status).byte(server_if).word(service));
    }

    void start(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        fields.byte("transport");
        fields.end();
        const GattStatus status =
            world().adapter.powered ? table().start(server_if, service) : kGattError;
        report_service("JG", status, server_if, service);
        if (status != kGattSuccess) {
            return;
        }
        for (Visitor& visitor : visitors_) {
            if (is_here(visitor)) {
                connect_server(device_of(visitor), server_if);
                visitor.central.explore(*table().find(server_if, service));
            }
        }
        invite();
    }

    void stop(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        fields.end();
        const GattStatus status =
            world().adapter.powered ? table().stop(server_if, service) : kGattError;
        report_service("JH", status, server_if, service);
        if (status == kGattSuccess) {
            service_stopped(*table().find(server_if, service));
        }
    }

    void remove(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t service = fields.word("service");
        fields.end();
        GattStatus status = kGattError;
        const OwnService* own = table().find(server_if, service);
        if (own != nullptr && world().adapter.powered) {
            service_stopped(*own);
            status = table().remove(server_if, service);
        }
        report_service("JI", status, server_if, service);
    }

    void service_stopped(const OwnService& own) {
        for (Visitor& visitor : visitors_) {
            visitor.central.service_stopped(own);
        }
    }

    // Connections.

    template <typename Condition>
    ServerConnection* connection_of(Condition condition) {
        const auto it = std::find_if(connections_.begin(), connections_.end(), condition);
        return it == connections_.end() ? nullptr : &*it;
    }

    ServerConnection* connection_to(uint8_t server_if, const Address& address) {
        return connection_of([&](const ServerConnection& c) {
            return c.server_if == server_if && c.address == address;
        });
    }

    /// The visitor with this address, or nullptr.
    Visitor* visitor(const Address& address) {
        const auto it = std::find_if(visitors_.begin(), visitors_.end(), [&address](const Visitor& v) {
            return v.central.address() == address;
        });
        return it == visitors_.end() ? nullptr : &*it;
    }

    Device& device_of(const Visitor& visitor) { return *world().find(visitor.central.address()); }

    bool is_here(const Visitor& visitor) {
        return connection_of([&visitor](const ServerConnection& c) {
                   return c.address == visitor.central.address();
               }) != nullptr;
    }

    bool has_started_service() {
        return std::any_of(table().services().begin(), table().services().end(),
                           [](const OwnService& own) { return own.started; });
    }

    /// There may be something for centrals to come for. They come one after the other.
    void invite() {
        const bool reason = low_energy_->is_inviting() && has_started_service();
        auto after = hub().pace.central_approach;
        for (Visitor& visitor : visitors_) {
            if (reason && !is_here(visitor)) {
                visitor.approach.start(after, [this, &visitor] { visitor_comes(visitor); });
                after += hub().pace.central_approach;
            } else {
                visitor.approach.stop();
            }
        }
    }

    void visitor_comes(const Visitor& visitor) {
        // What is no longer so has stopped the approach, except for services.
        if (!device_of(visitor).in_range) {
            return;
        }
        for (const uint8_t server_if : low_energy_->servers()) {
            const bool offers = std::any_of(
                table().services().begin(), table().services().end(),
                [server_if](const OwnService& o) { return o.started && o.server_if == server_if; });
            if (offers) {
                connect_and_explore(device_of(visitor), server_if);
            }
        }
    }

    uint16_t connect_server(Device& device, uint8_t server_if) {
        if (const ServerConnection* there = connection_to(server_if, device.address)) {
            return there->id;
        }
        hold_link(hub(), device);
        do {
            ++last_connection_;
        } while (last_connection_ == 0 || connection_of([this](const ServerConnection& c) {
                                              return c.id == last_connection_;
                                          }) != nullptr);
        connections_.push_back({last_connection_, server_if, device.address, kLeastMtu, false});
        report_connection(device.address, true, last_connection_, server_if);
        return last_connection_;
    }

    void connect_and_explore(Device& device, uint8_t server_if) {
        connect_server(device, server_if);
        Visitor* there = visitor(device.address);
        if (there == nullptr) {
            return;
        }
        for (const OwnService& own : table().services()) {
            if (own.started && own.server_if == server_if) {
                there->central.explore(own);
            }
        }
    }

    void report_connection(const Address& address, bool connected, uint16_t conn_id,
                           uint8_t server_if) {
        send(Event("JB").address(address).byte(connected ? 1 : 0).word(conn_id).byte(server_if));
    }

    void connect(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const Address address = fields.address();
        const bool direct = fields.byte("is direct") != 0;
        fields.end();
        const bool pending = find_attempt(server_if, address) != attempts_.end();
        if (!low_energy_->is_server(server_if) || !world().adapter.powered) {
            hub().log.note("refused: no such GATT server is registered, or the adapter is off");
            report_connection(address, false, 0, server_if);
        } else if (const ServerConnection* there = connection_to(server_if, address)) {
            report_connection(address, true, there->id, server_if);
        } else if (pending) {
            hub().log.note("this connection is being made already");
        } else {
            attempt(server_if, address, direct);
        }
    }

    void attempt(uint8_t server_if, const Address& address, bool direct) {
        const Device* device = world().reach(address);
        uint64_t entry = 0;
        if (device != nullptr && device->type != kClassic) {
            entry = agenda_.add(hub().pace.profile_connect, [this, server_if, address] {
                Device* there = world().reach(address);
                if (there == nullptr) {
                    fail_attempt(server_if, address);
                    return;
                }
                take_attempt(server_if, address);
                connect_and_explore(*there, server_if);
            });
        } else if (direct) {
            hub().log.note(to_string(address) + " does not answer");
            entry = agenda_.add(hub().pace.le_connect_timeout,
                                [this, server_if, address] { fail_attempt(server_if, address); });
        } else {
            hub().log.note("waiting for " + to_string(address) + " to appear");
        }
        attempts_.push_back({server_if, address, entry});
    }

    std::vector<Attempt>::iterator find_attempt(uint8_t server_if, const Address& address) {
        return std::find_if(attempts_.begin(), attempts_.end(), [&](const Attempt& a) {
            return a.server_if == server_if && a.address == address;
        });
    }

    /// False when it was not there.
    bool take_attempt(uint8_t server_if, const Address& address) {
        const auto it = find_attempt(server_if, address);
        if (it == attempts_.end()) {
            return false;
        }
        agenda_.cancel(it->entry);
        attempts_.erase(it);
        return true;
    }

    void fail_attempt(uint8_t server_if, Address address) {
        take_attempt(server_if, address);
        report_connection(address, false, 0, server_if);
    }

    void disconnect(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const Address address = fields.address();
        const uint16_t conn_id = fields.word("connection");
        fields.end();
        if (take_attempt(server_if, address)) {
            hub().log.note("the connection is no longer tried");
            return;
        }
        const ServerConnection* connection = connection_of([&](const ServerConnection& c) {
            return c.id == conn_id && c.server_if == server_if && c.address == address;
        });
        if (connection == nullptr) {
            hub().log.note("server " + std::to_string(server_if) + " has no connection " +
                           std::to_string(conn_id) + " to " + to_string(address));
            return;
        }
        close(*connection);
    }

    void close(const ServerConnection& connection) {
        Device& device = *world().find(connection.address);
        end(connection);
        release_link(hub(), device);
    }

    void close_all_of(const Address& address) {
        while (const ServerConnection* connection = connection_of(
                   [&address](const ServerConnection& c) { return c.address == address; })) {
            close(*connection);
        }
    }

    void end(const ServerConnection& connection) {
        const ServerConnection gone = connection;
        connections_.erase(connections_.begin() + (&connection - connections_.data()));
        if (Visitor* who = visitor(gone.address)) {
            if (is_here(*who)) {
                who->central.server_gone(gone.server_if);
            } else {
                who->central.stop();
            }
        }
        report_connection(gone.address, false, gone.id, gone.server_if);
    }

    // For the verbs.

    template <typename Condition>
    Visitor* first_visitor(Condition condition) {
        const auto it = std::find_if(visitors_.begin(), visitors_.end(), condition);
        return it == visitors_.end() ? nullptr : &*it;
    }

    /// The first visitor of whom this is true, or the one that the argument names if it is true of it.
    template <typename Condition>
    Visitor* meant(Given& given, size_t argument, Condition condition) {
        if (!given.has(argument)) {
            return first_visitor(condition);
        }
        Visitor* named = visitor(given.device(argument).address);
        if (named == nullptr) {
            throw Refused('"' + given.device(argument).name + "\" is no tablet");
        }
        return condition(*named) ? named : nullptr;
    }

    void bring_central(Given& given) {
        const auto in_range = [this](const Visitor& v) { return device_of(v).in_range; };
        if (meant(given, 0, in_range) == nullptr) {
            throw Refused("there is no tablet in range");
        }
        Visitor* next = meant(given, 0, [&](const Visitor& v) { return in_range(v) && !is_here(v); });
        if (next == nullptr) {
            throw Refused("the tablet is connected already");
        }
        if (!has_started_service() || !world().adapter.powered) {
            throw Refused("the client has started no service");
        }
        next->approach.stop();
        visitor_comes(*next);
    }

    Visitor& visitor_here(Given& given, size_t argument) {
        Visitor* here = meant(given, argument, [this](const Visitor& v) { return is_here(v); });
        if (here == nullptr) {
            throw Refused("the tablet is not connected");
        }
        return *here;
    }

    void send_central_away(Given& given) { close_all_of(visitor_here(given, 0).central.address()); }

    void let_central_send(Given& given) {
        const Address& address = visitor_here(given, 1).central.address();
        const ServerConnection* connection =
            connection_of([&address](const ServerConnection& c) { return c.address == address; });
        send(Event("KS").word(connection->id).address(address).block(given.text(0)));
    }

    void set_congestion(Given& given) {
        const bool on = given.is_on(0);
        const Address& address = visitor_here(given, 1).central.address();
        for (ServerConnection& connection : connections_) {
            if (connection.address == address && connection.congested != on) {
                connection.congested = on;
                send(Event("JO").word(connection.id).byte(on ? 1 : 0));
            }
        }
    }

    const OwnService& started_service_of(uint16_t handle) {
        const OwnService* own = table().service_of(handle);
        if (own == nullptr || !own->started) {
            throw Refused("the client has no attribute " + std::to_string(handle));
        }
        return *own;
    }

    Central& central_at(const OwnService& own, Given& given, size_t argument) {
        Visitor* here = meant(given, argument, [this, &own](const Visitor& v) {
            return connection_to(own.server_if, v.central.address()) != nullptr;
        });
        if (here == nullptr) {
            throw Refused("the tablet is not connected to the server of this attribute");
        }
        return here->central;
    }

    void let_central_read(Given& given) {
        const auto handle = given.number<uint16_t>(0);
        const OwnService& own = started_service_of(handle);
        central_at(own, given, 1).read(own, handle);
    }

    void let_central_write(Given& given) {
        const auto handle = given.number<uint16_t>(0);
        if (given.text(1).size() > kLongestValue) {
            throw Refused("a value has at most " + std::to_string(kLongestValue) + " bytes");
        }
        const OwnService& own = started_service_of(handle);
        central_at(own, given, 2).write(own, handle, given.text(1));
    }

    // Values.

    void indicate(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t handle = fields.word("handle");
        const uint16_t conn_id = fields.word("connection");
        const bool confirm = fields.byte("confirm") != 0;
        const std::string value = fields.block("value");
        fields.end();
        send_value(server_if, handle, conn_id, confirm, value);
    }

    void notify(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const uint16_t handle = fields.word("handle");
        const uint16_t conn_id = fields.word("connection");
        const std::string value = fields.block("value");
        fields.end();
        send_value(server_if, handle, conn_id, false, value);
    }

    ServerConnection* own_connection(uint8_t server_if, uint16_t conn_id) {
        return connection_of(
            [&](const ServerConnection& c) { return c.id == conn_id && c.server_if == server_if; });
    }

    void send_value(uint8_t server_if, uint16_t handle, uint16_t conn_id, bool indication,
                    const std::string& value) {
        const ServerConnection* connection = own_connection(server_if, conn_id);
        Visitor* receiver = connection == nullptr ? nullptr : visitor(connection->address);
        GattStatus status = kGattError;
        if (connection == nullptr) {
            hub().log.note("refused: the server has no such connection");
        } else if (receiver == nullptr || !receiver->central.is_subscribed(handle, indication)) {
            hub().log.note(std::string("refused: ") + (indication ? "indications" : "notifications") +
                           " of handle " + std::to_string(handle) + " are not subscribed to");
        } else if (value.size() + kValueHeader > connection->mtu) {
            hub().log.note("refused: the value is longer than " +
                           std::to_string(connection->mtu - kValueHeader) + " bytes");
            status = kInvalidLength;
        } else if (connection->congested) {
            hub().log.note("refused: the connection is congested");
            status = kGattCongested;
        } else {
            receiver->central.receive(handle, value, indication);
            status = kGattSuccess;
        }
        send(Event("JN").word(conn_id).byte(status));
    }

    void respond(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        Response response;
        response.conn_id = fields.word("connection");
        response.trans_id = fields.word("transaction");
        response.status = fields.byte("status");
        response.handle = fields.word("handle");
        fields.word("offset");
        fields.byte("authentication");
        response.value = fields.block("value");
        fields.end();
        const ServerConnection* connection = own_connection(server_if, response.conn_id);
        Visitor* asking = connection == nullptr ? nullptr : visitor(connection->address);
        const bool awaited = asking != nullptr && asking->central.respond(response);
        if (!awaited) {
            hub().log.note("nothing waits for a response to transaction " +
                           std::to_string(response.trans_id));
        }
        send(Event("JJ").byte(awaited ? kGattSuccess : kGattError).word(response.handle));
    }

    std::shared_ptr<LowEnergy> low_energy_;
    /// A list: what they wait for names them by their place.
    std::list<Visitor> visitors_;
    Agenda agenda_;
    std::vector<ServerConnection> connections_;
    uint16_t last_connection_ = 0;
    std::vector<Attempt> attempts_;
};

} // namespace

std::unique_ptr<Module> make_gatt_server(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<GattServer>(hub, std::move(low_energy));
}

} // namespace sim
