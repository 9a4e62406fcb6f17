// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a part of the simulated server looks like. A profile is one module: a file with a class, its
// state and its table of commands; server.cpp lists the modules.
#ifndef VYM_SIM_MODULE_H
#define VYM_SIM_MODULE_H

#include "chance.h"
#include "log.h"
#include "unique_fd.h"
#include "verb.h"
#include "wire.h"
#include "world.h"

#include <asio/io_context.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace sim {

/// Durations of the world; tests shorten them.
struct Pace {
    std::chrono::milliseconds discovery_step{150};
    std::chrono::milliseconds pairing_timeout{30000};
    std::chrono::milliseconds audio_packet{20};
    /// One second of the discoverable time-out.
    std::chrono::milliseconds discoverable_second{1000};
    /// From asking for a profile connection until it is there.
    std::chrono::milliseconds profile_connect{200};
    /// A placed call goes from dialing to alerting, and from alerting to answered.
    std::chrono::milliseconds call_step{1500};
    std::chrono::milliseconds ring_period{3000};
    /// How long the far end lets the phone ring.
    std::chrono::milliseconds ring_timeout{30000};
    /// One second of a playing track.
    std::chrono::milliseconds playback_second{1000};
    /// Between two items of a browsed list, and between handfuls of phone-book entries.
    std::chrono::milliseconds list_step{1};
    /// From a server's opening until a device connects to it.
    std::chrono::milliseconds serial_dial{500};
    /// Until the device greets: a client learns of the connection and gets its data on two different
    /// ways.
    std::chrono::milliseconds serial_greeting{500};
    /// Between two lines of a serial service that reports by itself.
    std::chrono::milliseconds serial_line{1000};
    /// How long serial data waits for credits before the first ones are taken to hold again.
    std::chrono::milliseconds serial_credit{100};
    /// How long a HID host waits between two of its requests, and for the answer to one.
    std::chrono::milliseconds hid_step{300};
    /// Between two reports of the host on the interrupt channel.
    std::chrono::milliseconds hid_interrupt{1000};
    /// Between two advertisements of a Low Energy device.
    std::chrono::milliseconds advertising_interval{500};
    /// Between two handfuls of advertisements in a crowded hall.
    std::chrono::milliseconds hall_step{10};
    /// How long a Low Energy device that does not answer is tried.
    std::chrono::milliseconds le_connect_timeout{5000};
    /// Between two values that a peripheral notifies.
    std::chrono::milliseconds notification_interval{1000};
    /// From an advertised service until a central comes.
    std::chrono::milliseconds central_approach{500};
    /// Between two requests of a central.
    std::chrono::milliseconds att_step{20};
    /// How long a central waits for a response.
    std::chrono::milliseconds att_timeout{30000};
};

/// The way to the client. While no client is connected, everything sent is dropped.
class Outbox {
public:
    virtual ~Outbox() = default;
    virtual void send(const Event& event) = 0;
    /// Announces a data transport and passes the client its end of it.
    virtual void hand_over(uint8_t id, UniqueFd fd) = 0;
    /// The client does not keep up. What a radio would lose, too, is better not sent then.
    virtual bool is_congested() const { return false; }
};

/// What all modules share.
struct Hub {
    asio::io_context& loop;
    World& world;
    Outbox& out;
    Log& log;
    const Pace& pace;
    /// Tells every module that the radio has been switched on.
    std::function<void()> radio_on;
    /// Tells every module that the radio goes off.
    std::function<void()> radio_off;
    /// Tells every module that the link to a device goes down.
    std::function<void(const Address&)> link_down;
    /// Tells every module that a device is in range again.
    std::function<void(const Address&)> device_back{};
    Chance chance{};
};

struct Command {
    std::string_view tag;
    std::function<void(Fields&)> run;
};

class Module {
public:
    explicit Module(Hub& hub) : hub_(hub) {}
    virtual ~Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    virtual std::vector<Command> commands() = 0;
    /// What the world's side can be told to do: the verbs of the control language.
    virtual std::vector<Verb> verbs() { return {}; }
    /// The radio has been switched on, perhaps again.
    virtual void radio_on() {}
    /// The radio goes off: end what needs it. Called before the links drop.
    virtual void radio_off() {}
    /// The link to a device goes down: end what runs over it.
    virtual void link_down(const Address&) {}
    /// A device that was out of range is back.
    virtual void device_back(const Address&) {}
    /// The client is gone: end what was meant for it.
    virtual void client_left() {}

protected:
    Hub& hub() { return hub_; }
    World& world() { return hub_.world; }
    void send(const Event& event) { hub_.out.send(event); }

    /// One row of commands(): a tag and the member function that carries it out.
    template <typename Derived>
    Command row(std::string_view tag, void (Derived::*handler)(Fields&)) {
        return {tag, [self = static_cast<Derived*>(this), handler](Fields& f) { (self->*handler)(f); }};
    }

    /// One row of verbs().
    template <typename Derived>
    Verb verb(std::string pattern, std::string help, void (Derived::*handler)(Given&)) {
        return {std::move(pattern), std::move(help),
                [self = static_cast<Derived*>(this), handler](Given& g) { (self->*handler)(g); }};
    }

private:
    Hub& hub_;
};

/// Events that several modules send.
Event link_event(const Device& device);
Event bond_event(Status status, const Address& address, BondState state);

/// Brings the link to a device up or down and reports it, unless it is so already.
void set_link(Hub& hub, Device& device, bool up);

} // namespace sim

#endif
