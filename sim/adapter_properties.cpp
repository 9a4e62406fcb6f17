// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Properties of the local adapter: BA reads one, BB sets one, BG reads all; each answer is an event BB.
#include "modules.h"
#include "timer.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

enum Property : uint8_t {
    kName = 1,
    kAddress = 2,
    kUuids = 3,
    kClass = 4,
    kScanMode = 7,
    kBondedAddresses = 8,
    kDiscoverableTimeout = 9,
    kBondedDevices = 15,
    kMaxBonded = 35,
    kDiscoveryInterval = 36,
};

constexpr size_t kLongestName = 248;
constexpr size_t kServicesInRecord = 16;
constexpr uint32_t kMostBonded = 255;

/// What BG reports. The bonded devices are left out: they come one event per device, and only when
/// asked for.
constexpr std::array<uint8_t, 9> kAll{
    kName,      kAddress,          kUuids, kClass, kScanMode, kBondedAddresses, kDiscoverableTimeout,
    kMaxBonded, kDiscoveryInterval};

std::string uuid_list(const std::vector<Octets16>& uuids) {
    std::string value;
    for (const Octets16& uuid : uuids) {
        value += raw(uuid);
    }
    return value;
}

/// Here, unlike everywhere else, addresses have their most significant byte first.
std::string bonded_addresses(const World& world) {
    std::string value;
    for (const Address& address : world.bonded) {
        value.append(address.octets.rbegin(), address.octets.rend());
    }
    return value;
}

std::string bonded_record(size_t total, size_t index, const Device& device) {
    std::string value{static_cast<char>(total), static_cast<char>(index)};
    value += raw(device.address);
    value += le32(device.class_of_device);
    value += static_cast<char>(std::min(device.services.size(), kServicesInRecord));
    for (size_t i = 0; i < kServicesInRecord; ++i) {
        value += le16(i < device.services.size() ? device.services[i] : 0);
    }
    return value + device.name;
}

class AdapterProperties : public Module {
public:
    explicit AdapterProperties(Hub& hub) : Module(hub), discoverable_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("BA", &AdapterProperties::get),           row("BB", &AdapterProperties::set),
            row("BG", &AdapterProperties::get_all),       row("BTE", &AdapterProperties::add_uuid),
            row("BF", &AdapterProperties::set_bond_mode),
        };
    }

private:
    void get(Fields& fields) {
        const uint8_t type = fields.byte("property type");
        fields.end();
        report(type);
    }

    void get_all(Fields& fields) {
        fields.end();
        std::for_each(kAll.begin(), kAll.end(), [this](uint8_t type) { report(type); });
    }

    void set(Fields& fields) {
        const uint8_t type = fields.byte("property type");
        const std::string value = fields.block("value");
        fields.end();
        if (!is_settable(type)) {
            refuse(kFail);
        } else if (!store(type, value)) {
            refuse(kInvalid);
        } else {
            report(type);
        }
    }

    void report(uint8_t type) {
        if (type == kBondedDevices) {
            report_bonded();
            return;
        }
        const Adapter& a = world().adapter;
        switch (type) {
        case kName:
            return answer(type, a.name);
        case kAddress:
            return answer(type, raw(a.address));
        case kUuids:
            return answer(type, uuid_list(a.uuids));
        case kClass:
            return answer(type, le32(a.class_of_device));
        case kScanMode:
            return answer(type, le32(a.scan_mode));
        case kBondedAddresses:
            return answer(type, bonded_addresses(world()));
        case kDiscoverableTimeout:
            return answer(type, le32(a.discoverable_timeout_s));
        case kMaxBonded:
            return answer(type, le32(a.max_bonded));
        case kDiscoveryInterval:
            return answer(type, le32(a.discovery_interval));
        default:
            return refuse(kFail);
        }
    }

    void report_bonded() {
        const std::vector<Address>& bonded = world().bonded;
        if (bonded.empty()) {
            // A total of 0 says so; the other bytes of the record are left out.
            answer(kBondedDevices, std::string(1, '\0'));
            return;
        }
        for (size_t i = 0; i < bonded.size(); ++i) {
            const Device* device = world().find(bonded[i]);
            Device nameless;
            nameless.address = bonded[i];
            answer(kBondedDevices,
                   bonded_record(bonded.size(), i, device != nullptr ? *device : nameless));
        }
    }

    void answer(uint8_t type, std::string_view value) {
        send(Event("BB").byte(kSuccess).byte(1).block(property_record(type, value)));
    }

    void refuse(Status status) { send(Event("BB").byte(status).byte(0).block("")); }

    static bool is_settable(uint8_t type) {
        static constexpr std::array<uint8_t, 5> kSettable{kName, kScanMode, kDiscoverableTimeout,
                                                          kMaxBonded, kDiscoveryInterval};
        return std::find(kSettable.begin(), kSettable.end(), type) != kSettable.end();
    }

    bool store(uint8_t type, std::string_view value) {
        Adapter& a = world().adapter;
        if (type == kName) {
            a.name = value.substr(0, kLongestName);
            return true;
        }
        if (value.size() != 4) {
            return false;
        }
        const uint32_t number = from_le32(value);
        switch (type) {
        case kScanMode:
            return store_scan_mode(number);
        case kDiscoverableTimeout:
            a.discoverable_timeout_s = number;
            return true;
        case kMaxBonded:
            if (number == 0 || number > kMostBonded) {
                return false;
            }
            a.max_bonded = number;
            return true;
        default:
            a.discovery_interval = number;
            return true;
        }
    }

    bool store_scan_mode(uint32_t mode) {
        if (mode > kScanDiscoverable) {
            return false;
        }
        Adapter& a = world().adapter;
        a.scan_mode = mode;
        discoverable_.stop();
        if (mode == kScanDiscoverable && a.discoverable_timeout_s > 0) {
            discoverable_.start(a.discoverable_timeout_s * hub().pace.discoverable_second, [this] {
                world().adapter.scan_mode = kScanConnectable;
                report(kScanMode);
            });
        }
        return true;
    }

    void add_uuid(Fields& fields) {
        const Octets16 uuid = fields.octets("UUID");
        fields.end();
        std::vector<Octets16>& uuids = world().adapter.uuids;
        if (std::find(uuids.begin(), uuids.end(), uuid) == uuids.end()) {
            uuids.push_back(uuid);
        }
    }

    void set_bond_mode(Fields& fields) {
        const uint32_t mode = fields.dword("mode");
        fields.end();
        world().adapter.bond_mode = mode;
    }

    Timer discoverable_;
};

} // namespace

std::unique_ptr<Module> make_adapter_properties(Hub& hub) {
    return std::make_unique<AdapterProperties>(hub);
}

} // namespace sim
