// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The devices around: where they are, how they are heard, and what there is at all.
#include "attributes.h"
#include "modules.h"

namespace sim {
namespace {

std::string with_colons(const Address& address) {
    std::string text = to_string(address);
    for (size_t i = 2; i < text.size(); i += 3) {
        text.insert(i, ":");
    }
    return text;
}

/// What the client has asked for beyond what an adapter begins with, each behind a comma.
std::string wishes(const Adapter& adapter) {
    std::string text;
    const auto mode = [&text](const char* name, uint32_t value) {
        if (value != 0) {
            text += std::string(", ") + name + ' ' + std::to_string(value);
        }
    };
    mode("bond mode", adapter.bond_mode);
    mode("loopback mode", adapter.loopback_mode);
    for (const Octets16& uuid : adapter.uuids) {
        text += ", announces " + uuid_text(uuid);
    }
    return text;
}

std::string out_of_band_data(const Device& device) {
    if (device.oob_c192 == Octets16{} && device.oob_r192 == Octets16{}) {
        return {};
    }
    return ", out-of-band data " + hex_text(raw(device.oob_c192)) + ' ' +
           hex_text(raw(device.oob_r192));
}

class Neighbourhood : public Module {
public:
    using Module::Module;

    std::vector<Command> commands() override { return {}; }

    std::vector<Verb> verbs() override {
        Verb show = verb("world show", "the adapter, the devices and the phone, a line for each",
                         &Neighbourhood::show);
        show.acts = false;
        return {
            verb("device DEVICE out-of-range", "carry it away: its link is lost, nobody finds it",
                 &Neighbourhood::leave),
            verb("device DEVICE back", "bring it back", &Neighbourhood::come_back),
            verb("device DEVICE rssi DBM=-127..20", "how strongly it is received",
                 &Neighbourhood::set_rssi),
            show,
        };
    }

private:
    void leave(Given& given) {
        Device& device = given.device(0);
        if (!device.in_range) {
            throw Refused('"' + device.name + "\" is out of range already");
        }
        device.in_range = false;
        // What is only being connected or paired ends, too.
        device.connected ? set_link(hub(), device, false) : hub().link_down(device.address);
    }

    void come_back(Given& given) {
        Device& device = given.device(0);
        if (device.in_range) {
            throw Refused('"' + device.name + "\" is in range");
        }
        device.in_range = true;
        hub().device_back(device.address);
    }

    void set_rssi(Given& given) { given.device(0).rssi = given.number<int8_t>(1); }

    void show(Given& given) {
        const Adapter& adapter = world().adapter;
        given.answer("adapter " + with_colons(adapter.address) + " \"" + printable(adapter.name) +
                     "\" " + (adapter.powered ? "on" : "off") +
                     (adapter.suspended ? ", suspended" : "") + ", scan mode " +
                     std::to_string(adapter.scan_mode) + wishes(adapter));
        for (const Device& device : world().devices) {
            given.answer(
                "device " + with_colons(device.address) + " \"" + printable(device.name) + "\" " +
                std::to_string(device.rssi) + " dBm" + (device.in_range ? "" : ", out of range") +
                (device.connected ? ", connected" : "") +
                (world().is_bonded(device.address) ? ", bonded" : "") + out_of_band_data(device));
        }
        const Phone& phone = world().phone;
        given.answer("phone battery " + std::to_string(phone.battery) + ", signal " +
                     std::to_string(phone.signal) + ", network " + (phone.network ? "on" : "off") +
                     (phone.roaming ? ", roaming" : "") + ", operator \"" +
                     printable(phone.operator_name) + '"');
    }
};

} // namespace

std::unique_ptr<Module> make_neighbourhood(Hub& hub) {
    return std::make_unique<Neighbourhood>(hub);
}

} // namespace sim
