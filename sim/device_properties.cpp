// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Properties and services of other devices; each answer is an event BC.
#include "modules.h"

#include <algorithm>
#include <array>
#include <optional>

namespace sim {
namespace {

enum Property : uint8_t {
    kName = 1,
    kUuids = 3,
    kClass = 4,
    kPriority = 32,
    kManufacturer = 33,
};

constexpr std::array<uint8_t, 5> kAll{kName, kUuids, kClass, kPriority, kManufacturer};
constexpr size_t kLongestName = 248;

std::optional<std::string> value_of(const Device& device, uint8_t type) {
    switch (type) {
    case kName:
        return device.name;
    case kUuids: {
        std::string value;
        for (const Octets16& uuid : device.uuids) {
            value += raw(uuid);
        }
        return value;
    }
    case kClass:
        return le32(device.class_of_device);
    case kPriority:
        return std::string(1, static_cast<char>(device.priority));
    case kManufacturer:
        return le32(device.manufacturer);
    default:
        return std::nullopt;
    }
}

void store_uuids(Device& device, std::string_view value) {
    device.uuids.clear();
    for (; value.size() >= sizeof(Octets16); value.remove_prefix(sizeof(Octets16))) {
        Octets16 uuid{};
        std::copy_n(value.begin(), uuid.size(), uuid.begin());
        device.uuids.push_back(uuid);
    }
}

Status store(Device& device, uint8_t type, std::string_view value) {
    const auto fits = [&value](size_t size) { return value.size() == size ? kSuccess : kInvalid; };
    switch (type) {
    case kName:
        device.name = value.substr(0, kLongestName);
        return kSuccess;
    case kUuids:
        if (value.size() % sizeof(Octets16) != 0 || value.size() > 0xFF) {
            return kInvalid;
        }
        store_uuids(device, value);
        return kSuccess;
    case kClass:
        if (fits(4) == kSuccess) {
            device.class_of_device = from_le32(value);
        }
        return fits(4);
    case kPriority:
        if (fits(1) == kSuccess) {
            device.priority = static_cast<uint8_t>(value[0]);
        }
        return fits(1);
    case kManufacturer:
        if (fits(4) == kSuccess) {
            device.manufacturer = from_le32(value);
        }
        return fits(4);
    default:
        return kFail;
    }
}

class DeviceProperties : public Module {
public:
    using Module::Module;

    std::vector<Command> commands() override {
        return {
            row("BC", &DeviceProperties::get),      row("BD", &DeviceProperties::set),
            row("BH", &DeviceProperties::get_all),  row("BI", &DeviceProperties::service_record),
            row("BJ", &DeviceProperties::services),
        };
    }

private:
    void get(Fields& fields) {
        const Address address = fields.address();
        const uint8_t type = fields.byte("property type");
        fields.end();
        report(address, type);
    }

    void report(const Address& address, uint8_t type) {
        const Device* device = world().find(address);
        const auto value = device == nullptr ? std::nullopt : value_of(*device, type);
        if (value) {
            answer(address, 1, property_record(type, *value));
        } else {
            refuse(address, device == nullptr ? kDeviceDown : kFail);
        }
    }

    void get_all(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        const Device* device = world().find(address);
        if (device == nullptr) {
            refuse(address, kDeviceDown);
            return;
        }
        std::string records;
        for (const uint8_t type : kAll) {
            records += property_record(type, value_of(*device, type).value_or(""));
        }
        answer(address, kAll.size(), records);
    }

    void set(Fields& fields) {
        const Address address = fields.address();
        const uint8_t type = fields.byte("property type");
        const std::string value = fields.block("value");
        fields.end();
        Device* device = world().find(address);
        const Status status = device == nullptr ? kDeviceDown : store(*device, type, value);
        if (status == kSuccess) {
            report(address, type);
        } else {
            refuse(address, status);
        }
    }

    void services(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (world().adapter.powered) {
            report(address, kUuids);
        } else {
            refuse(address, kNotReady);
        }
    }

    void service_record(Fields& fields) {
        const Address address = fields.address();
        const Octets16 uuid = fields.octets_reversed("UUID");
        fields.end();
        const Device* device = world().find(address);
        if (!world().adapter.powered || device == nullptr) {
            refuse(address, device == nullptr ? kDeviceDown : kNotReady);
        } else if (std::find(device->uuids.begin(), device->uuids.end(), uuid) == device->uuids.end()) {
            refuse(address, kFail);
        } else {
            answer(address, 1, property_record(kUuids, raw(uuid)));
        }
    }

    void answer(const Address& address, size_t count, std::string_view records) {
        send(Event("BC")
                 .byte(kSuccess)
                 .address(address)
                 .byte(static_cast<uint8_t>(count))
                 .block(records));
    }

    void refuse(const Address& address, Status status) {
        send(Event("BC").byte(status).address(address).byte(0).block(""));
    }
};

} // namespace

std::unique_ptr<Module> make_device_properties(Hub& hub) {
    return std::make_unique<DeviceProperties>(hub);
}

} // namespace sim
