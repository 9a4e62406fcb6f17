// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Bonding: questions to the user, their answers, the list of bonds, and the links that come with them.
#include "modules.h"
#include "timer.h"

#include <optional>

namespace sim {
namespace {

enum SspVariant : uint8_t { kVariantConfirm = 0, kVariantEntry = 1 };

class Bonding : public Module {
public:
    explicit Bonding(Hub& hub) : Module(hub), timeout_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("BM", &Bonding::create),           row("BN", &Bonding::create_out_of_band),
            row("BO", &Bonding::remove),           row("BP", &Bonding::cancel),
            row("BR", &Bonding::pin_reply),        row("BS", &Bonding::ssp_reply),
            row("BQ", &Bonding::connection_state), row("BTD", &Bonding::cancel_connecting),
            row("BTA", &Bonding::authorisation),   row("BEC", &Bonding::set_oob_data),
        };
    }

    std::vector<Verb> verbs() override {
        return {verb("device DEVICE pair", "the device asks to be paired", &Bonding::pair_by_device)};
    }

    void link_down(const Address& address) override {
        if (is_pending(address)) {
            end_pairing(kDeviceDown);
        }
    }

    void radio_off() override {
        if (pending_) {
            end_pairing(kNotReady);
        }
    }

    void client_left() override {
        pending_.reset();
        timeout_.stop();
    }

private:
    bool is_pending(const Address& address) const { return pending_ && *pending_ == address; }

    void report(Status status, const Address& address, BondState state) {
        send(bond_event(status, address, state));
    }

    /// The device to pair with, or nullptr when the request was answered already.
    Device* begin(const Address& address) {
        Device* device = world().reach(address);
        if (!world().adapter.powered) {
            report(kNotReady, address, kBondNone);
        } else if (device == nullptr) {
            report(kDeviceDown, address, kBondNone);
        } else if (world().is_bonded(address)) {
            report(kSuccess, address, kBonded);
        } else if (pending_) {
            report(kBusy, address, is_pending(address) ? kBonding : kBondNone);
        } else {
            report(kSuccess, address, kBonding);
            return device;
        }
        return nullptr;
    }

    void create(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (Device* device = begin(address)) {
            pair(*device);
        }
    }

    void pair(Device& device) {
        if (device.pairing == Pairing::JustWorks) {
            succeed(device);
            return;
        }
        pending_ = device.address;
        timeout_.start(hub().pace.pairing_timeout, [this] { end_pairing(kAuthFailure); });
        ask(device);
    }

    /// The device begins.
    void pair_by_device(Given& given) {
        Device& device = given.device(0);
        const std::string name = '"' + device.name + '"';
        if (!world().adapter.powered) {
            throw Refused("the adapter is off");
        }
        if (!device.in_range) {
            throw Refused(name + " is out of range");
        }
        if (world().is_bonded(device.address)) {
            throw Refused(name + " is bonded already");
        }
        if (pending_) {
            throw Refused("another pairing is under way");
        }
        report(kSuccess, device.address, kBonding);
        pair(device);
    }

    void ask(const Device& device) {
        if (device.pairing == Pairing::Pin) {
            send(Event("BF")
                     .address(device.address)
                     .dword(device.class_of_device)
                     .byte(0)
                     .text(device.name));
            return;
        }
        const bool entry = device.pairing == Pairing::EnterPasskey;
        send(Event("BG")
                 .address(device.address)
                 .dword(device.class_of_device)
                 .byte(entry ? kVariantEntry : kVariantConfirm)
                 // A number that the user is to type is on the other device's display only.
                 .dword(entry ? 0 : device.passkey)
                 .text(device.name));
    }

    void create_out_of_band(Fields& fields) {
        const Address address = fields.address();
        fields.dword("transport");
        fields.block("out-of-band data");
        fields.end();
        Device* device = begin(address);
        if (device != nullptr) {
            succeed(*device);
        }
    }

    void succeed(Device& device) {
        // The list is of bounded length: the oldest bond makes room.
        while (!world().bonded.empty() && world().bonded.size() >= world().adapter.max_bonded) {
            drop_bond(world().bonded.front());
        }
        set_link(hub(), device, true);
        world().bonded.push_back(device.address);
        report(kSuccess, device.address, kBonded);
    }

    void drop_bond(const Address address) {
        Device* device = world().find(address);
        if (device != nullptr) {
            set_link(hub(), *device, false);
        }
        world().forget_bond(address);
        report(kSuccess, address, kBondNone);
    }

    /// Ends the pairing in progress without a bond.
    void end_pairing(Status status) {
        const Address address = *pending_;
        client_left();
        report(status, address, kBondNone);
    }

    /// The device whose question this reply answers, or nullptr.
    Device* asked(const Address& address, bool pin) {
        Device* device = is_pending(address) ? world().find(address) : nullptr;
        if (device == nullptr || (device->pairing == Pairing::Pin) != pin) {
            hub().log.note("no such question is open for " + to_string(address));
            return nullptr;
        }
        return device;
    }

    void settle(Device& device, bool right) {
        if (!right) {
            end_pairing(kAuthFailure);
            return;
        }
        client_left();
        succeed(device);
    }

    void pin_reply(Fields& fields) {
        const Address address = fields.address();
        const bool accept = fields.byte("accept") != 0;
        const std::string pin = fields.block("PIN");
        fields.end();
        Device* device = asked(address, true);
        if (device != nullptr) {
            settle(*device, accept && pin == device->pin);
        }
    }

    void ssp_reply(Fields& fields) {
        const Address address = fields.address();
        const uint8_t variant = fields.byte("variant");
        const bool accept = fields.byte("accept") != 0;
        const uint32_t passkey = fields.dword("passkey");
        fields.end();
        Device* device = asked(address, false);
        if (device == nullptr) {
            return;
        }
        // A comparison is answered with yes or no; only a number that had to be typed can be wrong.
        const bool entry = device->pairing == Pairing::EnterPasskey;
        const bool right =
            entry ? variant == kVariantEntry && passkey == device->passkey : variant == kVariantConfirm;
        settle(*device, accept && right);
    }

    void remove(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (is_pending(address)) {
            end_pairing(kAuthRejected);
        } else if (world().find(address) == nullptr && !world().is_bonded(address)) {
            report(kDeviceDown, address, kBondNone);
        } else {
            drop_bond(address);
        }
    }

    void cancel(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (is_pending(address)) {
            end_pairing(kAuthRejected);
        } else if (world().is_bonded(address)) {
            report(kFail, address, kBonded);
        } else {
            report(world().find(address) == nullptr ? kDeviceDown : kAuthRejected, address, kBondNone);
        }
    }

    void connection_state(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        const Device* device = world().find(address);
        if (device != nullptr) {
            send(link_event(*device));
        } else {
            send(Event("BI").byte(kDeviceDown).address(address).byte(kLinkDown));
        }
    }

    /// The only connection that can be under way is the one that a pairing waits for.
    void cancel_connecting(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (is_pending(address)) {
            end_pairing(kAuthRejected);
        } else {
            hub().log.note("no connection to " + to_string(address) + " is under way");
        }
    }

    void authorisation(Fields& fields) {
        const Address address = fields.address();
        const uint8_t profile = fields.byte("profile");
        const bool accept = fields.byte("accept") != 0;
        fields.end();
        hub().log.note("profile " + std::to_string(profile) + " of " + to_string(address) +
                       (accept ? " accepted" : " refused"));
    }

    void set_oob_data(Fields& fields) {
        const Address address = fields.address();
        const Octets16 c192 = fields.octets("C192");
        const Octets16 r192 = fields.octets("R192");
        fields.end();
        Device* device = world().find(address);
        if (device == nullptr) {
            hub().log.note("no device " + to_string(address));
            return;
        }
        device->oob_c192 = c192;
        device->oob_r192 = r192;
    }

    std::optional<Address> pending_;
    Timer timeout_;
};

} // namespace

std::unique_ptr<Module> make_bonding(Hub& hub) {
    return std::make_unique<Bonding>(hub);
}

} // namespace sim
