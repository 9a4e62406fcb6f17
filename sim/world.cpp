// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "world.h"

#include <algorithm>

namespace sim {
namespace {

// 0xFFFF in the low half: the company identifier reserved for tests.
constexpr uint32_t manufacturer(uint8_t lmp_version) {
    return static_cast<uint32_t>(lmp_version) << 16 | 0xFFFF;
}

void set_services(Device& device, std::vector<uint16_t> services) {
    device.services = std::move(services);
    device.uuids.clear();
    std::transform(device.services.begin(), device.services.end(), std::back_inserter(device.uuids),
                   uuid_from_16bit);
}

constexpr uint16_t kSerialPort = 0x1101;

Octets16 counting_from(uint8_t first) {
    Octets16 octets{};
    std::generate(octets.begin(), octets.end(), [&first] { return first++; });
    return octets;
}

Device annas_phone() {
    Device d;
    d.address = to_address("2A:41:6E:6E:61:01");
    d.name = "Anna's phone";
    d.class_of_device = 0x5A020C;
    d.type = kDual;
    d.rssi = -52;
    d.pairing = Pairing::Confirm;
    d.passkey = 123456;
    d.priority = 2;
    d.manufacturer = manufacturer(0x0C);
    set_services(d, {kSerialPort, 0x110A, 0x110C, 0x111F, 0x112F, 0x1800});
    d.serial_services = {{uuid_from_16bit(kSerialPort), 11, SerialTalk::Echo}};
    d.dials_serial_servers = true;
    return d;
}

Device kitchen_speaker() {
    Device d;
    d.address = to_address("11:22:33:44:55:66");
    d.name = "Kitchen speaker";
    d.class_of_device = 0x240414;
    d.rssi = -67;
    d.pairing = Pairing::Pin;
    d.pin = "0000";
    d.priority = 1;
    d.manufacturer = manufacturer(0x08);
    set_services(d, {0x110B, 0x110E, 0x111E});
    return d;
}

Device heart_strap() {
    Device d;
    d.address = to_address("C6:48:65:61:72:74");
    d.name = "Heart strap";
    d.type = kLowEnergy;
    d.rssi = -74;
    d.manufacturer = manufacturer(0x0B);
    set_services(d, {0x180D, 0x180F, 0x180A});
    d.peripheral = heart_rate_strap();
    return d;
}

Device climate_sensor_device() {
    Device d;
    d.address = to_address("E2:43:6C:69:6D:61");
    d.name = "Climate sensor";
    d.type = kLowEnergy;
    d.rssi = -81;
    // Its flags do not say so: only a scan of advertisements finds it.
    d.discoverable = false;
    d.manufacturer = manufacturer(0x0B);
    set_services(d, {0x181A});
    d.peripheral = climate_sensor();
    return d;
}

Device tablet() {
    Device d;
    d.address = to_address("D2:54:61:62:6C:74");
    d.name = "Tablet";
    d.type = kLowEnergy;
    d.rssi = -49;
    d.discoverable = false;
    d.manufacturer = manufacturer(0x0C);
    d.central = true;
    return d;
}

Device car_kit() {
    Device d;
    d.address = to_address("2E:43:61:72:4B:74");
    d.name = "Car kit";
    d.class_of_device = 0x240408;
    d.rssi = -58;
    d.discoverable = false;
    d.pairing = Pairing::Pin;
    d.pin = "1234";
    d.priority = 3;
    d.manufacturer = manufacturer(0x06);
    set_services(d, {0x111E, 0x1108});
    return d;
}

Device keyboard() {
    Device d;
    d.address = to_address("26:4B:65:79:62:64");
    d.name = "Office keyboard";
    d.class_of_device = 0x002540;
    d.rssi = -61;
    d.discoverable = false;
    d.pairing = Pairing::EnterPasskey;
    d.passkey = 271828;
    d.manufacturer = manufacturer(0x07);
    set_services(d, {0x1124});
    return d;
}

Device gnss_receiver() {
    Device d;
    d.address = to_address("2A:47:4E:53:53:01");
    d.name = "GNSS receiver";
    d.class_of_device = 0x011F00;
    d.rssi = -55;
    d.discoverable = false;
    d.manufacturer = manufacturer(0x06);
    set_services(d, {kSerialPort});
    d.serial_services = {{uuid_from_16bit(kSerialPort), 1, SerialTalk::Positions}};
    return d;
}

Device laptop() {
    Device d;
    d.address = to_address("2E:4C:70:74:6F:70");
    d.name = "Work laptop";
    d.class_of_device = 0x00010C;
    d.rssi = -49;
    d.discoverable = false;
    d.pairing = Pairing::Confirm;
    d.passkey = 314159;
    d.manufacturer = manufacturer(0x0B);
    set_services(d, {0x1200});
    d.is_hid_host = true;
    return d;
}

} // namespace

Device* World::find(const Address& address) {
    const auto it = std::find_if(devices.begin(), devices.end(),
                                 [&address](const Device& d) { return d.address == address; });
    return it == devices.end() ? nullptr : &*it;
}

Device* World::reach(const Address& address) {
    Device* device = find(address);
    return device != nullptr && device->in_range ? device : nullptr;
}

bool World::is_bonded(const Address& address) const {
    return std::find(bonded.begin(), bonded.end(), address) != bonded.end();
}

bool World::any_link() const {
    return std::any_of(devices.begin(), devices.end(), [](const Device& d) { return d.connected; });
}

void World::forget_bond(const Address& address) {
    bonded.erase(std::remove(bonded.begin(), bonded.end(), address), bonded.end());
}

World empty_world() {
    World world;
    Adapter& a = world.adapter;
    a.version = "vym-sim 1.0";
    a.name = "vym-sim";
    a.address = to_address("00:1A:7D:DA:71:13");
    a.class_of_device = 0x240404;
    a.discoverable_timeout_s = 120;
    a.max_bonded = 8;
    a.discovery_interval = 36;
    a.oob_c192 = counting_from(0x10);
    a.oob_r192 = counting_from(0x30);
    a.oob_c256 = counting_from(0x50);
    a.oob_r256 = counting_from(0x70);
    world.phone = plain_phone();
    return world;
}

World built_in_world() {
    World world = empty_world();
    world.devices = {annas_phone(),   kitchen_speaker(), heart_strap(),           car_kit(), keyboard(),
                     gnss_receiver(), laptop(),          climate_sensor_device(), tablet()};
    world.bonded = {world.devices[3].address, world.devices[4].address, world.devices[6].address};
    world.phone = built_in_phone();
    return world;
}

} // namespace sim
