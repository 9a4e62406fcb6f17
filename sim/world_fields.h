// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the objects in a world's file consist of: keys, and how each value is written. One description
// for reading and writing; `Io` is called with each key and its value, and knows with kReads which of
// the two it does.
#ifndef VYM_SIM_WORLD_FIELDS_H
#define VYM_SIM_WORLD_FIELDS_H

#include "world.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

// How values are written that a plain type does not tell everything about.

template <typename T>
struct Ranged {
    T& value;
    int64_t low;
    int64_t high;
};

/// A number as text, "0x" and that many digits.
template <typename T>
struct HexNumber {
    T& value;
    unsigned digits;
};

struct Text {
    std::string& value;
    /// In bytes.
    size_t most;
};

struct TelephoneNumber {
    std::string& value;
};

/// Hexadecimal, or { "text": "..." }.
struct Bytes {
    std::string& value;
    size_t most;
};

/// Four digits or the full form.
struct Uuid {
    Octets16& value;
};

/// Thirty-two digits.
struct HexOctets {
    Octets16& value;
};

struct Delay {
    std::optional<std::chrono::milliseconds>& value;
    int64_t most_ms;
};

using Names = std::vector<std::pair<std::string_view, unsigned>>;

/// One of some names.
template <typename T>
struct Choice {
    T& value;
    Names names;
};

/// Several of some names, each for a bit.
template <typename T>
struct Flags {
    T& value;
    Names names;
};

/// Each item is written the way that `wrap` says.
template <typename T, typename Wrap>
struct Many {
    std::vector<T>& values;
    Wrap wrap;
};

template <typename T, typename Wrap>
Many<T, Wrap> many(std::vector<T>& values, Wrap wrap) {
    return {values, wrap};
}

inline auto uuids(std::vector<Octets16>& values) {
    return many(values, [](Octets16& value) { return Uuid{value}; });
}

// The adapter.

constexpr size_t kLongestName = 248;

template <typename Io>
void fields(Io& io, Adapter& a) {
    io("name", Text{a.name, kLongestName});
    io("address", a.address);
    io("class", HexNumber<uint32_t>{a.class_of_device, 6});
    io("version", Text{a.version, kLongestName});
    io("discoverable_timeout_s", Ranged<uint32_t>{a.discoverable_timeout_s, 0, 0xFFFF});
    io("discovery_interval", Ranged<uint32_t>{a.discovery_interval, 0, 0xFFFF});
    io("max_bonded", Ranged<uint32_t>{a.max_bonded, 1, 255});
    io("oob_c192", HexOctets{a.oob_c192});
    io("oob_r192", HexOctets{a.oob_r192});
    io("oob_c256", HexOctets{a.oob_c256});
    io("oob_r256", HexOctets{a.oob_r256});
}

// Attributes.

inline Names permission_names() {
    return {{"read", kPermitRead},
            {"read encrypted", kPermitReadEncrypted},
            {"read authenticated", kPermitReadMitm},
            {"write", kPermitWrite},
            {"write encrypted", kPermitWriteEncrypted},
            {"write authenticated", kPermitWriteMitm},
            {"write signed", kPermitWriteSigned},
            {"write signed authenticated", kPermitWriteSignedMitm}};
}

template <typename Io>
void attribute_fields(Io& io, Attribute& a) {
    io("permissions", Flags<uint16_t>{a.permissions, permission_names()});
    io("value", Bytes{a.value, kLongestValue});
    io("shortest", Ranged<size_t>{a.shortest, 0, kLongestValue});
    io("longest", Ranged<size_t>{a.longest, 0, kLongestValue});
    io("accepted", many(a.accepted, [](std::string& value) { return Bytes{value, kLongestValue}; }));
}

template <typename Io>
void fields(Io& io, Descriptor& d) {
    io.need("uuid", Uuid{d.id.uuid});
    attribute_fields(io, d);
}

template <typename Io>
void fields(Io& io, Swing& s) {
    io("offset", Ranged<size_t>{s.offset, 0, kLongestValue});
    io.need("width", Ranged<size_t>{s.width, 1, 3});
    io.need("low", Ranged<int>{s.low, 0, 0xFFFFFF});
    io.need("high", Ranged<int>{s.high, 0, 0xFFFFFF});
    io.need("step", Ranged<int>{s.step, -0xFFFFFF, 0xFFFFFF});
}

/// What nobody needs to say: what can be read or written may be.
inline uint16_t implied_permissions(uint8_t properties) {
    return static_cast<uint16_t>(
        ((properties & kPropertyRead) != 0 ? kPermitRead : 0) |
        ((properties & (kPropertyWrite | kPropertyWriteCommand)) != 0 ? kPermitWrite : 0));
}

template <typename Io>
void fields(Io& io, Characteristic& c) {
    io.need("uuid", Uuid{c.id.uuid});
    io("properties", Flags<uint8_t>{c.properties,
                                    {{"read", kPropertyRead},
                                     {"write without response", kPropertyWriteCommand},
                                     {"write", kPropertyWrite},
                                     {"notify", kPropertyNotify},
                                     {"indicate", kPropertyIndicate}}});
    if constexpr (Io::kReads) {
        c.permissions = implied_permissions(c.properties);
    }
    attribute_fields(io, c);
    io("swing", c.swing);
    io("descriptors", c.descriptors);
}

template <typename Io>
void fields(Io& io, Service& s) {
    io.need("uuid", Uuid{s.id.uuid});
    io("type", Choice<uint8_t>{s.id.type, {{"primary", kPrimary}, {"secondary", kSecondary}}});
    io("included", many(s.included, [](ServiceId& id) { return Uuid{id.uuid}; }));
    io("characteristics", s.characteristics);
}

template <typename Io>
void fields(Io& io, Peripheral& p) {
    constexpr size_t kMostManufacturerData = 27;
    io("flags",
       Flags<uint8_t>{p.flags,
                      {{"limited discoverable", 0x01}, {"discoverable", 0x02}, {"no classic", 0x04}}});
    io("appearance", HexNumber<uint16_t>{p.appearance, 4});
    io("manufacturer_data", Bytes{p.manufacturer_data, kMostManufacturerData});
    std::vector<Service> services = p.attributes.services();
    io("services", services);
    if constexpr (Io::kReads) {
        // Handles are not written: they follow from the order.
        p.attributes = AttributeTable(std::move(services));
    }
}

// Devices.

template <typename Io>
void fields(Io& io, SerialService& s) {
    if constexpr (Io::kReads) {
        s.uuid = uuid_from_16bit(0x1101); // a serial port
    }
    io("uuid", Uuid{s.uuid});
    io.need("channel", Ranged<uint8_t>{s.channel, 1, 30});
    io("talk", Choice<SerialTalk>{s.talk,
                                  {{"echo", static_cast<unsigned>(SerialTalk::Echo)},
                                   {"positions", static_cast<unsigned>(SerialTalk::Positions)}}});
}

inline Names pairing_names() {
    return {{"just works", static_cast<unsigned>(Pairing::JustWorks)},
            {"pin", static_cast<unsigned>(Pairing::Pin)},
            {"confirm", static_cast<unsigned>(Pairing::Confirm)},
            {"enter passkey", static_cast<unsigned>(Pairing::EnterPasskey)}};
}

template <typename Io>
void fields(Io& io, Device& d) {
    constexpr size_t kLongestPin = 16;
    io.need("address", d.address);
    io("name", Text{d.name, kLongestName});
    io("class", HexNumber<uint32_t>{d.class_of_device, 6});
    io("type", Choice<DeviceType>{
                   d.type, {{"classic", kClassic}, {"low energy", kLowEnergy}, {"dual", kDual}}});
    io("rssi", Ranged<int8_t>{d.rssi, -127, 20});
    io("discoverable", d.discoverable);
    io("pairing", Choice<Pairing>{d.pairing, pairing_names()});
    io("pin", Text{d.pin, kLongestPin});
    io("passkey", Ranged<uint32_t>{d.passkey, 0, 999999});
    io("services", uuids(d.uuids));
    io("priority", Ranged<uint8_t>{d.priority, 0, 255});
    io("manufacturer", HexNumber<uint32_t>{d.manufacturer, 8});
    io("serial_services", d.serial_services);
    io("dials_serial_servers", d.dials_serial_servers);
    io("hid_host", d.is_hid_host);
    io("peripheral", d.peripheral);
    io("central", d.central);
}

// The phone.

template <typename Io>
void fields(Io& io, Track& t) {
    io("title", Text{t.title, 255});
    io("artist", Text{t.artist, 255});
    io("album", Text{t.album, 255});
    io("genre", Text{t.genre, 255});
    io.need("length_ms", Ranged<uint32_t>{t.length_ms, 1, 86400000});
}

template <typename Io>
void fields(Io& io, MediaPlayer& p) {
    io("name", Text{p.name, 255});
    io("tracks", p.tracks);
}

template <typename Io>
void fields(Io& io, Phone& p) {
    io("model", Text{p.model, kLongestName});
    io("manufacturer", Text{p.manufacturer, kLongestName});
    io("operator", Text{p.operator_name, kLongestName});
    io("subscriber", TelephoneNumber{p.subscriber});
    io("voice_tag_number", TelephoneNumber{p.voice_tag_number});
    io("roaming", p.roaming);
    io("signal", Ranged<uint8_t>{p.signal, 0, 5});
    io("battery", Ranged<uint8_t>{p.battery, 0, 5});
    io("in_band_ring", p.in_band_ring);
    io("memory", many(p.memory, [](std::string& number) { return TelephoneNumber{number}; }));
    io("far_end", Choice<FarEnd>{p.far_end,
                                 {{"answers", static_cast<unsigned>(FarEnd::Answers)},
                                  {"rings on", static_cast<unsigned>(FarEnd::RingsOn)},
                                  {"is busy", static_cast<unsigned>(FarEnd::IsBusy)}}});
    io("ring_after_ms", Delay{p.ring_after, 3600000});
    io("ring_number", TelephoneNumber{p.ring_number});
    io("player_name", Text{p.player_name, 255});
    io("tracks", p.tracks);
    io("other_players", p.other_players);
    io.cards("contacts", p.contacts);
    io.cards("sim_contacts", p.sim_contacts);
    io.cards("past_calls", p.calls);
}

} // namespace sim

#endif
