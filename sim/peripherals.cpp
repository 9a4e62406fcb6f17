// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "peripherals.h"

namespace sim {
namespace {

constexpr uint8_t kFlagDiscoverable = 0x02;
constexpr uint8_t kFlagNoClassic = 0x04;

Service service(ServiceType type, const Octets16& uuid, std::vector<Characteristic> characteristics) {
    Service s;
    s.id = {type, 0, uuid};
    s.characteristics = std::move(characteristics);
    return s;
}

Service service(uint16_t uuid, std::vector<Characteristic> characteristics) {
    return service(kPrimary, uuid_from_16bit(uuid), std::move(characteristics));
}

/// A characteristic with the permissions that its properties imply.
Characteristic characteristic(const Octets16& uuid, unsigned properties, std::string value) {
    Characteristic c;
    c.id.uuid = uuid;
    c.properties = static_cast<uint8_t>(properties);
    c.permissions = static_cast<uint16_t>(
        ((properties & kPropertyRead) != 0 ? kPermitRead : 0) |
        ((properties & (kPropertyWrite | kPropertyWriteCommand)) != 0 ? kPermitWrite : 0));
    c.value = std::move(value);
    return c;
}

Characteristic characteristic(uint16_t uuid, unsigned properties, std::string value) {
    return characteristic(uuid_from_16bit(uuid), properties, std::move(value));
}

Descriptor descriptor(uint16_t uuid, std::string value, uint16_t permissions = kPermitRead) {
    Descriptor d;
    d.id.uuid = uuid_from_16bit(uuid);
    d.permissions = permissions;
    d.value = std::move(value);
    return d;
}

Descriptor configuration() {
    Descriptor d = descriptor(0x2902, std::string(2, '\0'), kPermitRead | kPermitWrite);
    d.shortest = d.longest = 2;
    return d;
}

Descriptor description(const char* text) {
    return descriptor(0x2901, text);
}

/// Of a number with two decimals; `unit` is an assigned one.
Descriptor presentation(uint8_t format, uint16_t unit) {
    const std::string hundredths = "\xFE";
    return descriptor(0x2904, std::string(1, static_cast<char>(format)) + hundredths + le16(unit) +
                                  std::string("\x01\x00\x00", 3));
}

Service heart_rate() {
    // Flags (a pulse of eight bits), then the pulse.
    Characteristic measurement = characteristic(0x2A37, kPropertyNotify, std::string("\x00\x48", 2));
    measurement.swing = Swing{1, 1, 60, 90, 2};
    measurement.descriptors = {configuration()};
    const Characteristic location = characteristic(0x2A38, kPropertyRead, "\x01");
    Characteristic control = characteristic(0x2A39, kPropertyWrite, "");
    control.shortest = control.longest = 1;
    // "Reset energy expended" is the only thing that can be asked for.
    control.accepted = {"\x01"};
    return service(0x180D, {measurement, location, control});
}

Service battery() {
    Characteristic level = characteristic(0x2A19, kPropertyRead | kPropertyNotify, "\x57");
    level.swing = Swing{0, 1, 5, 100, -1};
    level.descriptors = {configuration()};
    return service(0x180F, {level});
}

Service device_information(const char* manufacturer, const char* model) {
    return service(0x180A, {characteristic(0x2A29, kPropertyRead, manufacturer),
                            characteristic(0x2A24, kPropertyRead, model),
                            characteristic(0x2A26, kPropertyRead, "1.0")});
}

/// 7F45xxxx-6D79-4C6F-6767-696E67756E69
Octets16 own_uuid(uint16_t number) {
    const auto high = static_cast<uint8_t>(number >> 8);
    const auto low = static_cast<uint8_t>(number & 0xFF);
    return {0x7F, 0x45, high, low,  0x6D, 0x79, 0x4C, 0x6F,
            0x67, 0x67, 0x69, 0x6E, 0x67, 0x75, 0x6E, 0x69};
}

Service environment() {
    Characteristic temperature =
        characteristic(0x2A6E, kPropertyRead | kPropertyNotify | kPropertyIndicate, le16(2150));
    temperature.swing = Swing{0, 2, 2050, 2350, 25};
    temperature.descriptors = {configuration(), description("Living room"), presentation(0x0E, 0x272F)};
    Characteristic humidity = characteristic(0x2A6F, kPropertyRead, le16(4820));
    humidity.descriptors = {presentation(0x06, 0x27AD)};
    return service(0x181A, {temperature, humidity});
}

Service logbook() {
    std::string pattern;
    for (size_t i = 0; i < kLongestValue; ++i) {
        pattern += static_cast<char>('A' + i % 26);
    }
    Characteristic log = characteristic(own_uuid(0x0001), kPropertyRead | kPropertyWrite, pattern);
    log.descriptors = {description("Log")};
    const Characteristic marker = characteristic(own_uuid(0x0002), kPropertyWriteCommand, "");
    // Only for who is paired.
    Characteristic calibration =
        characteristic(own_uuid(0x0003), kPropertyRead | kPropertyWrite, le16(0));
    calibration.permissions = kPermitReadEncrypted | kPermitWriteEncrypted;
    calibration.shortest = calibration.longest = 2;
    return service(kSecondary, own_uuid(0x0000), {log, marker, calibration});
}

} // namespace

std::string ad_structure(AdType type, std::string_view value) {
    std::string text(1, static_cast<char>(value.size() + 1));
    text += static_cast<char>(type);
    return text.append(value);
}

bool is_well_formed_ad(std::string_view data) {
    while (!data.empty()) {
        const size_t length = static_cast<uint8_t>(data.front());
        if (length == 0) {
            return data.find_first_not_of('\0') == std::string_view::npos;
        }
        if (length >= data.size()) {
            return false;
        }
        data.remove_prefix(length + 1);
    }
    return true;
}

AttributeTable badge_attributes(const Octets16& service_uuid, const char* name) {
    const Characteristic counter =
        characteristic(own_uuid(0x0010), kPropertyRead | kPropertyWrite, std::string(1, '\0'));
    return AttributeTable(
        {service(kPrimary, service_uuid, {counter}), device_information("Badgeworks", name)});
}

Peripheral heart_rate_strap() {
    Peripheral p;
    p.attributes = AttributeTable({heart_rate(), battery(), device_information("Beatworks", "HS-1")});
    p.flags = kFlagDiscoverable | kFlagNoClassic;
    p.appearance = 0x0341; // a heart-rate belt
    return p;
}

Peripheral climate_sensor() {
    Service sensing = environment();
    Service own = logbook();
    sensing.included = {own.id};
    Peripheral p;
    p.attributes = AttributeTable({sensing, own});
    p.flags = kFlagNoClassic;
    p.appearance = 0x0540; // a sensor
    p.manufacturer_data = std::string("\xFF\xFF\x07", 3);
    return p;
}

} // namespace sim
