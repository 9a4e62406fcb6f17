// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A central that looks at what the client offers: it reads, writes and subscribes, one request at a
// time, each waiting for the client's response.
#ifndef VYM_SIM_CENTRAL_H
#define VYM_SIM_CENTRAL_H

#include "module.h"
#include "server_table.h"
#include "timer.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace sim {

/// A GATT connection between one of the client's servers and a device.
struct ServerConnection {
    uint16_t id;
    uint8_t server_if;
    Address address;
    uint16_t mtu;
    /// No value gets through for now.
    bool congested = false;
};

/// What the client answers to a request.
struct Response {
    uint16_t conn_id;
    uint16_t trans_id;
    uint8_t status;
    uint16_t handle;
    std::string value;
};

class Central {
public:
    struct Surroundings {
        /// This central's connection to a server, or nullptr.
        std::function<ServerConnection*(uint8_t server_if)> connection;
        /// No response came in time: the connection is of no more use.
        std::function<void()> give_up;
    };

    Central(Hub& hub, ServerTable& table, const Address& address, Surroundings surroundings)
        : hub_(hub), table_(table), address_(address), surroundings_(std::move(surroundings)),
          timer_(hub.loop) {}

    const Address& address() const { return address_; }

    /// Looks at a service that has been started; its server is connected.
    void explore(const OwnService& own);
    /// One request about an attribute of such a service, after those that are planned.
    void read(const OwnService& own, uint16_t handle);
    void write(const OwnService& own, uint16_t handle, std::string value);
    /// False when no request waits for this.
    bool respond(const Response& response);
    /// Whether notifications or indications of this characteristic were asked for.
    bool is_subscribed(uint16_t characteristic, bool indication) const;
    void receive(uint16_t characteristic, const std::string& value, bool indication);
    /// The service stops: nothing more is asked of it.
    void service_stopped(const OwnService& own);
    /// The connection to this server has ended.
    void server_gone(uint8_t server_if);
    /// The link has gone.
    void stop();

private:
    enum class Kind { Mtu, Read, Write, WriteCommand, Prepare, Execute, Subscribe };

    struct Step {
        Kind kind;
        uint8_t server_if;
        uint16_t handle;
        uint16_t offset;
        std::string value;
        /// For a subscription: what is subscribed to.
        uint16_t characteristic;
    };

    void plan_writes(const OwnService& own);
    void plan_subscriptions(const OwnService& own);
    void plan(const OwnService& own, Kind kind, uint16_t handle, std::string value = {},
              uint16_t offset = 0);
    bool may_read(const Attribute& attribute) const;
    bool may_write(const Attribute& attribute) const;
    bool is_encrypted() const;
    void go_on();
    void next();
    /// False when nothing is to be waited for.
    bool carry_out(Step& step, ServerConnection& connection);
    Event request(const char* tag, const ServerConnection& connection) const;
    void await_response(const Step& step);
    void timed_out();
    void answered(const Step& step, const Response& response, const ServerConnection& connection);
    void value_read(const Step& step, const Response& response, const ServerConnection& connection);
    template <typename Condition>
    void drop(Condition condition);
    void note(const std::string& text) const;

    Hub& hub_;
    ServerTable& table_;
    Address address_;
    Surroundings surroundings_;
    Timer timer_;
    std::deque<Step> steps_;
    /// The request under way, and its transaction.
    std::optional<Step> pending_;
    uint16_t transaction_ = 0;
    /// What a long read has brought so far.
    std::string read_so_far_;
    bool prepare_failed_ = false;
    bool waiting_ = false;
    /// Subscribed characteristics, with what was written to their configuration.
    std::map<uint16_t, uint8_t> subscriptions_;
};

} // namespace sim

#endif
