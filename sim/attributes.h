// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The attributes of a GATT server: services, what they include, characteristics, descriptors.
// Peripherals of the world have such a table, and the client's own services are kept in the same form.
#ifndef VYM_SIM_ATTRIBUTES_H
#define VYM_SIM_ATTRIBUTES_H

#include "wire.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sim {

/// Results of what is done over GATT: ATT error codes, and from 0x80 on what the application layer and
/// the stack add.
enum GattStatus : uint8_t {
    kGattSuccess = 0,
    kReadNotPermitted = 0x02,
    kWriteNotPermitted = 0x03,
    kInsufficientAuthentication = 0x05,
    kRequestNotSupported = 0x06,
    kInvalidOffset = 0x07,
    kPrepareQueueFull = 0x09,
    kAttributeNotFound = 0x0A,
    kInvalidLength = 0x0D,
    kTerminatedHere = 0x16,
    kValueNotAccepted = 0x80,
    kGattNoResources = 0x80,
    /// Everything else: a wrong identifier, no power, no connection, the end of a list.
    kGattError = 0x85,
    kGattCongested = 0x8F,
    kDescriptorImproper = 0xFD,
};

enum Property : uint8_t {
    kPropertyRead = 0x02,
    kPropertyWriteCommand = 0x04,
    kPropertyWrite = 0x08,
    kPropertyNotify = 0x10,
    kPropertyIndicate = 0x20,
};

enum Permission : uint16_t {
    kPermitRead = 0x001,
    kPermitReadEncrypted = 0x002,
    kPermitReadMitm = 0x004,
    kPermitWrite = 0x010,
    kPermitWriteEncrypted = 0x020,
    kPermitWriteMitm = 0x040,
    kPermitWriteSigned = 0x080,
    kPermitWriteSignedMitm = 0x100,
};
constexpr uint16_t kPermitAnyRead = kPermitRead | kPermitReadEncrypted | kPermitReadMitm;
constexpr uint16_t kPermitAnyWrite = kPermitWrite | kPermitWriteEncrypted | kPermitWriteMitm |
                                     kPermitWriteSigned | kPermitWriteSignedMitm;

enum ServiceType : uint8_t { kPrimary = 0, kSecondary = 1 };

/// The longest value that an attribute can have.
constexpr size_t kLongestValue = 512;

/// A characteristic or descriptor; equal UUIDs in one place are told apart by their instances.
struct ItemId {
    uint16_t instance = 0;
    Octets16 uuid{};

    bool operator==(const ItemId& o) const { return instance == o.instance && uuid == o.uuid; }
    /// How "none" is written.
    bool is_null() const { return uuid == Octets16{}; }
};

struct ServiceId {
    uint8_t type = kPrimary;
    uint16_t instance = 0;
    Octets16 uuid{};

    bool operator==(const ServiceId& o) const {
        return type == o.type && instance == o.instance && uuid == o.uuid;
    }
    bool is_null() const { return uuid == Octets16{}; }
};

struct Attribute {
    ItemId id;
    uint16_t handle = 0;
    uint16_t permissions = kPermitRead;
    std::string value;
    size_t shortest = 0;
    size_t longest = kLongestValue;
    /// The only values that it takes, when there are any.
    std::vector<std::string> accepted;

    /// Whether it may be read or written over a link that is encrypted or not.
    GattStatus check_read(bool encrypted) const;
    GattStatus check_write(bool encrypted) const;
    /// Whether it takes this value.
    GattStatus check_value(const std::string& candidate) const;
};

struct Descriptor : Attribute {};

/// A number within a value that rises and falls as time passes: a pulse, a temperature.
struct Swing {
    size_t offset;
    size_t width;
    int low;
    int high;
    /// Added each time; turns its sign at either end.
    int step;
};

struct Characteristic : Attribute {
    uint8_t properties = 0;
    std::vector<Descriptor> descriptors;
    std::optional<Swing> swing;

    /// The descriptor that switches notifications and indications on and off, or nullptr.
    Descriptor* configuration();
    /// Moves the value on by one step.
    void move_on();
};

struct Service {
    ServiceId id;
    uint16_t handle = 0;
    std::vector<ServiceId> included;
    std::vector<Characteristic> characteristics;

    Characteristic* find(const ItemId& item);
};

/// Puts a piece of a long write into a value: it may lie within what is there or continue it.
GattStatus splice(std::string& value, size_t offset, const std::string& piece);

class AttributeTable {
public:
    AttributeTable() = default;
    /// Numbers what is given: handles from 1 on, instances among equal UUIDs.
    explicit AttributeTable(std::vector<Service> services);

    bool empty() const { return services_.empty(); }
    std::vector<Service>& services() { return services_; }
    const std::vector<Service>& services() const { return services_; }
    Service* find(const ServiceId& id);
    /// The characteristic value or descriptor with this handle, or nullptr.
    Attribute* find(uint16_t handle);

private:
    std::vector<Service> services_;
};

/// "2A37" for a UUID that has a 16-bit form, else all of it, most significant byte first.
std::string uuid_text(const Octets16& uuid);

/// "48 65 78", cut when it is long.
std::string hex_text(std::string_view bytes);

} // namespace sim

#endif
