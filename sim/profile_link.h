// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The connection of one profile to one device at a time.
#ifndef VYM_SIM_PROFILE_LINK_H
#define VYM_SIM_PROFILE_LINK_H

#include "module.h"
#include "timer.h"

#include <functional>
#include <string>

namespace sim {

class ProfileLink {
public:
    enum class State { Down, Connecting, Up };
    /// Called for each change, and again with the same state for a client that asks for what is there.
    using Report = std::function<void(const Address& address, State state)>;

    /// `service` is the 16-bit UUID that the device must offer.
    ProfileLink(Hub& hub, std::string profile, uint16_t service, Report report)
        : hub_(hub), profile_(std::move(profile)), service_(service), report_(std::move(report)),
          timer_(hub.loop) {}

    bool is_up() const { return state_ == State::Up; }
    const Address& peer() const { return peer_; }

    /// Brings the connection up, with the link below it, or reports Down and logs why not.
    void connect(const Address& address);
    void disconnect(const Address& address);
    /// The same for the address that a command carries as its only field.
    void connect(Fields& fields);
    void disconnect(Fields& fields);
    /// The link below has gone; nothing is reported unless the connection ran over it.
    void lost(const Address& address);

private:
    /// The device to connect to, or nullptr.
    Device* reachable(const Address& address);

    Hub& hub_;
    std::string profile_;
    uint16_t service_;
    Report report_;
    Timer timer_;
    State state_ = State::Down;
    Address peer_;
};

} // namespace sim

#endif
