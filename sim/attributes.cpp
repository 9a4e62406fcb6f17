// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "attributes.h"

#include <algorithm>

namespace sim {
namespace {

/// Numbers equal UUIDs from 0 on.
template <typename Items, typename SameKind>
void number_instances(Items& items, SameKind same_kind) {
    for (auto it = items.begin(); it != items.end(); ++it) {
        it->id.instance = static_cast<uint16_t>(std::count_if(
            items.begin(), it, [&](const auto& other) { return same_kind(it->id, other.id); }));
    }
}

bool same_uuid(const ItemId& a, const ItemId& b) {
    return a.uuid == b.uuid;
}

void number_items(Service& service, uint16_t& next) {
    for (Characteristic& characteristic : service.characteristics) {
        // The declaration has a handle of its own, before the value's.
        characteristic.handle = ++next;
        ++next;
        for (Descriptor& descriptor : characteristic.descriptors) {
            descriptor.handle = next++;
        }
        number_instances(characteristic.descriptors, same_uuid);
    }
    number_instances(service.characteristics, same_uuid);
}

std::string digits(uint8_t octet) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    return {kDigits[octet >> 4], kDigits[octet & 0xF]};
}

} // namespace

GattStatus Attribute::check_read(bool encrypted) const {
    if ((permissions & kPermitAnyRead) == 0) {
        return kReadNotPermitted;
    }
    return (permissions & kPermitRead) != 0 || encrypted ? kGattSuccess : kInsufficientAuthentication;
}

GattStatus Attribute::check_write(bool encrypted) const {
    if ((permissions & kPermitAnyWrite) == 0) {
        return kWriteNotPermitted;
    }
    return (permissions & kPermitWrite) != 0 || encrypted ? kGattSuccess : kInsufficientAuthentication;
}

GattStatus Attribute::check_value(const std::string& candidate) const {
    if (candidate.size() < shortest || candidate.size() > longest) {
        return kInvalidLength;
    }
    const bool taken =
        accepted.empty() || std::find(accepted.begin(), accepted.end(), candidate) != accepted.end();
    return taken ? kGattSuccess : kValueNotAccepted;
}

Descriptor* Characteristic::configuration() {
    const Octets16 uuid = uuid_from_16bit(0x2902);
    const auto it = std::find_if(descriptors.begin(), descriptors.end(),
                                 [&uuid](const Descriptor& d) { return d.id.uuid == uuid; });
    return it == descriptors.end() ? nullptr : &*it;
}

void Characteristic::move_on() {
    if (!swing) {
        return;
    }
    int number = 0;
    for (size_t i = swing->width; i > 0; --i) {
        number = number << 8 | static_cast<uint8_t>(value.at(swing->offset + i - 1));
    }
    if (number + swing->step < swing->low || number + swing->step > swing->high) {
        swing->step = -swing->step;
    }
    number += swing->step;
    for (size_t i = 0; i < swing->width; ++i) {
        value.at(swing->offset + i) = static_cast<char>(number >> (8 * i) & 0xFF);
    }
}

Characteristic* Service::find(const ItemId& item) {
    const auto it = std::find_if(characteristics.begin(), characteristics.end(),
                                 [&item](const Characteristic& c) { return c.id == item; });
    return it == characteristics.end() ? nullptr : &*it;
}

GattStatus splice(std::string& value, size_t offset, const std::string& piece) {
    if (offset > value.size()) {
        return kInvalidOffset;
    }
    if (offset + piece.size() > kLongestValue) {
        return kInvalidLength;
    }
    value.replace(offset, piece.size(), piece);
    return kGattSuccess;
}

AttributeTable::AttributeTable(std::vector<Service> services) : services_(std::move(services)) {
    uint16_t next = 1;
    for (Service& service : services_) {
        service.handle = next++;
        next = static_cast<uint16_t>(next + service.included.size());
        number_items(service, next);
    }
    number_instances(services_, [](const ServiceId& a, const ServiceId& b) {
        return a.type == b.type && a.uuid == b.uuid;
    });
}

Service* AttributeTable::find(const ServiceId& id) {
    const auto it = std::find_if(services_.begin(), services_.end(),
                                 [&id](const Service& service) { return service.id == id; });
    return it == services_.end() ? nullptr : &*it;
}

Attribute* AttributeTable::find(uint16_t handle) {
    for (Service& service : services_) {
        for (Characteristic& characteristic : service.characteristics) {
            if (characteristic.handle == handle) {
                return &characteristic;
            }
            for (Descriptor& descriptor : characteristic.descriptors) {
                if (descriptor.handle == handle) {
                    return &descriptor;
                }
            }
        }
    }
    return nullptr;
}

std::string uuid_text(const Octets16& uuid) {
    const auto short_form = static_cast<uint16_t>(uuid[2] << 8 | uuid[3]);
    if (uuid == uuid_from_16bit(short_form)) {
        return digits(uuid[2]) + digits(uuid[3]);
    }
    std::string text;
    std::for_each(uuid.begin(), uuid.end(), [&text](uint8_t octet) { text += digits(octet); });
    return text;
}

std::string hex_text(std::string_view bytes) {
    constexpr size_t kMost = 24;
    std::string text;
    for (const char c : bytes.substr(0, kMost)) {
        text += (text.empty() ? "" : " ") + digits(static_cast<uint8_t>(c));
    }
    if (bytes.size() > kMost) {
        text += " ... (" + std::to_string(bytes.size()) + " bytes)";
    }
    return text.empty() ? "nothing" : text;
}

} // namespace sim
