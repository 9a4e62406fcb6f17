// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The simulated world: the local adapter and the devices around it. Plain state; the modules change it.
#ifndef VYM_SIM_WORLD_H
#define VYM_SIM_WORLD_H

#include "peripherals.h"
#include "phone.h"
#include "sound.h"
#include "wire.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

/// Results as commands' answers carry them.
enum Status : uint8_t {
    kSuccess = 0,
    kFail = 1,
    kNotReady = 2,
    kBusy = 4,
    kInvalid = 7,
    kAuthFailure = 9,
    kDeviceDown = 10,
    kAuthRejected = 11,
};

enum BondState : uint8_t { kBondNone = 0, kBonding = 1, kBonded = 2 };

/// On the wire "connected" is 0.
enum LinkState : uint8_t { kLinkUp = 0, kLinkDown = 1 };

enum ScanMode : uint32_t { kScanNone = 0, kScanConnectable = 1, kScanDiscoverable = 2 };

enum DeviceType : uint8_t { kClassic = 1, kLowEnergy = 2, kDual = 3 };

/// How a device wants to be paired.
enum class Pairing {
    JustWorks,
    Pin,          // a PIN that the user knows
    Confirm,      // both sides show a number, the user compares
    EnterPasskey, // the device shows a number, the user types it
};

/// What the other end of a serial connection does.
enum class SerialTalk {
    Echo,      // sends back what it gets
    Positions, // sends its position, line after line
};

struct SerialService {
    Octets16 uuid{};
    uint8_t channel = 0;
    SerialTalk talk = SerialTalk::Echo;
};

struct Device {
    Address address;
    std::string name;
    uint32_t class_of_device = 0;
    DeviceType type = kClassic;
    int8_t rssi = 0;
    /// Whether discovery finds it.
    bool discoverable = true;
    Pairing pairing = Pairing::JustWorks;
    std::string pin;
    uint32_t passkey = 0;
    std::vector<uint16_t> services;
    std::vector<Octets16> uuids;
    uint8_t priority = 0;
    uint32_t manufacturer = 0;
    bool connected = false;
    /// Whether it can be reached at all.
    bool in_range = true;
    std::vector<SerialService> serial_services;
    /// Whether it connects to serial servers that the client opens.
    bool dials_serial_servers = false;
    /// Whether it lets the client be its keyboard or mouse.
    bool is_hid_host = false;
    /// What a Low Energy device offers to those who connect to it.
    Peripheral peripheral;
    /// Connects to services that the client advertises.
    bool central = false;
    /// How many GATT connections the link carries; it goes with the last one.
    unsigned gatt_connections = 0;
    /// Set by the client for a later out-of-band pairing.
    Octets16 oob_c192{};
    Octets16 oob_r192{};
};

struct Adapter {
    bool powered = false;
    bool suspended = false;
    std::string version;
    std::string name;
    Address address;
    uint32_t class_of_device = 0;
    uint32_t scan_mode = kScanNone;
    uint32_t discoverable_timeout_s = 0;
    uint32_t max_bonded = 0;
    uint32_t discovery_interval = 0;
    uint32_t bond_mode = 0;
    uint8_t loopback_mode = 0;
    /// Service UUIDs that the client asked to announce.
    std::vector<Octets16> uuids;
    Octets16 oob_c192{};
    Octets16 oob_r192{};
    Octets16 oob_c256{};
    Octets16 oob_r256{};
};

struct World {
    Adapter adapter;
    std::vector<Device> devices;
    /// Addresses of the bonded devices, the newest bond last.
    std::vector<Address> bonded;
    /// What is in the phone that offers calls, music and contacts.
    Phone phone;
    /// What the audio descriptor carries: tones of eleven whole waves, and of one.
    Sound voice = tone(8000, 1, 440.0, 200);
    Sound music = tone(44100, 2, 441.0, 100);
    /// The file that the client's voice is written to; none when empty.
    std::string voice_recording;
    /// How many further devices advertise all the time, and do nothing else.
    uint32_t hall = 0;

    /// The device with this address, or nullptr.
    Device* find(const Address& address);
    /// The same, unless it is out of range.
    Device* reach(const Address& address);
    bool is_bonded(const Address& address) const;
    bool any_link() const;
    void forget_bond(const Address& address);
};

/// The world that is played when none is given: a phone, a speaker and a heart-rate strap to be found,
/// a car kit, a keyboard and a laptop already bonded, and a GNSS receiver that does not show itself.
World built_in_world();

/// The same adapter with nobody around, and a phone with nothing in it.
World empty_world();

} // namespace sim

#endif
