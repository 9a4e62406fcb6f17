// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "world_file.h"

#include "running_sim.h"
#include "text_file.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

using sim::World;

World world_of(const std::string& text) {
    return sim::world_from_text("world.json", text);
}

std::string problem_of(const std::string& text) {
    try {
        world_of(text);
    } catch (const sim::FileError& error) {
        return error.what();
    }
    return "nothing";
}

/// The problem of a world with this device alone.
std::string device_problem(const std::string& text) {
    return problem_of(R"({ "devices": [ { "address": "2A:00:00:00:00:01", )" + text + " } ] }");
}

/// The problem of a peripheral with this characteristic alone.
std::string characteristic_problem(const std::string& text) {
    return device_problem(R"("type": "low energy", "peripheral": { "services": [ { "uuid": "180D",
        "characteristics": [ { "uuid": "2A37", )" +
                          text + " } ] } ] }");
}

// Worlds are compared member by member: what a reader forgets must show.
// NOLINTBEGIN(readability-function-size): one line for each member

void expect_same(const sim::Attribute& a, const sim::Attribute& b) {
    EXPECT_TRUE(a.id == b.id);
    EXPECT_EQ(a.handle, b.handle);
    EXPECT_EQ(a.permissions, b.permissions);
    EXPECT_EQ(a.value, b.value);
    EXPECT_EQ(a.shortest, b.shortest);
    EXPECT_EQ(a.longest, b.longest);
    EXPECT_EQ(a.accepted, b.accepted);
}

void expect_same(const sim::Characteristic& a, const sim::Characteristic& b) {
    expect_same(static_cast<const sim::Attribute&>(a), static_cast<const sim::Attribute&>(b));
    EXPECT_EQ(a.properties, b.properties);
    ASSERT_EQ(a.swing.has_value(), b.swing.has_value());
    if (a.swing) {
        EXPECT_EQ(a.swing->offset, b.swing->offset);
        EXPECT_EQ(a.swing->width, b.swing->width);
        EXPECT_EQ(a.swing->low, b.swing->low);
        EXPECT_EQ(a.swing->high, b.swing->high);
        EXPECT_EQ(a.swing->step, b.swing->step);
    }
    ASSERT_EQ(a.descriptors.size(), b.descriptors.size());
    for (size_t i = 0; i < a.descriptors.size(); ++i) {
        expect_same(static_cast<const sim::Attribute&>(a.descriptors[i]), b.descriptors[i]);
    }
}

void expect_same(const sim::Peripheral& a, const sim::Peripheral& b) {
    EXPECT_EQ(a.flags, b.flags);
    EXPECT_EQ(a.appearance, b.appearance);
    EXPECT_EQ(a.manufacturer_data, b.manufacturer_data);
    const auto& left = a.attributes.services();
    const auto& right = b.attributes.services();
    ASSERT_EQ(left.size(), right.size());
    for (size_t i = 0; i < left.size(); ++i) {
        EXPECT_TRUE(left[i].id == right[i].id);
        EXPECT_EQ(left[i].handle, right[i].handle);
        EXPECT_TRUE(left[i].included == right[i].included);
        ASSERT_EQ(left[i].characteristics.size(), right[i].characteristics.size());
        for (size_t k = 0; k < left[i].characteristics.size(); ++k) {
            expect_same(left[i].characteristics[k], right[i].characteristics[k]);
        }
    }
}

void expect_same(const sim::Device& a, const sim::Device& b) {
    SCOPED_TRACE(a.name);
    EXPECT_TRUE(a.address == b.address);
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.class_of_device, b.class_of_device);
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(a.rssi, b.rssi);
    EXPECT_EQ(a.discoverable, b.discoverable);
    EXPECT_EQ(a.pairing, b.pairing);
    EXPECT_EQ(a.pin, b.pin);
    EXPECT_EQ(a.passkey, b.passkey);
    EXPECT_EQ(a.services, b.services);
    EXPECT_EQ(a.uuids, b.uuids);
    EXPECT_EQ(a.priority, b.priority);
    EXPECT_EQ(a.manufacturer, b.manufacturer);
    EXPECT_EQ(a.dials_serial_servers, b.dials_serial_servers);
    EXPECT_EQ(a.is_hid_host, b.is_hid_host);
    EXPECT_EQ(a.central, b.central);
    ASSERT_EQ(a.serial_services.size(), b.serial_services.size());
    for (size_t i = 0; i < a.serial_services.size(); ++i) {
        EXPECT_EQ(a.serial_services[i].uuid, b.serial_services[i].uuid);
        EXPECT_EQ(a.serial_services[i].channel, b.serial_services[i].channel);
        EXPECT_EQ(a.serial_services[i].talk, b.serial_services[i].talk);
    }
    expect_same(a.peripheral, b.peripheral);
}

void expect_same(const sim::Adapter& a, const sim::Adapter& b) {
    EXPECT_EQ(a.version, b.version);
    EXPECT_EQ(a.name, b.name);
    EXPECT_TRUE(a.address == b.address);
    EXPECT_EQ(a.class_of_device, b.class_of_device);
    EXPECT_EQ(a.discoverable_timeout_s, b.discoverable_timeout_s);
    EXPECT_EQ(a.max_bonded, b.max_bonded);
    EXPECT_EQ(a.discovery_interval, b.discovery_interval);
    EXPECT_EQ(a.oob_c192, b.oob_c192);
    EXPECT_EQ(a.oob_r192, b.oob_r192);
    EXPECT_EQ(a.oob_c256, b.oob_c256);
    EXPECT_EQ(a.oob_r256, b.oob_r256);
}

void expect_same(const std::vector<sim::Contact>& a, const std::vector<sim::Contact>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].last, b[i].last);
        EXPECT_EQ(a[i].first, b[i].first);
        EXPECT_EQ(a[i].numbers.size(), b[i].numbers.size());
        EXPECT_EQ(a[i].photo, b[i].photo);
    }
}

void expect_same(const sim::Phone& a, const sim::Phone& b) {
    EXPECT_EQ(a.model, b.model);
    EXPECT_EQ(a.manufacturer, b.manufacturer);
    EXPECT_EQ(a.operator_name, b.operator_name);
    EXPECT_EQ(a.subscriber, b.subscriber);
    EXPECT_EQ(a.voice_tag_number, b.voice_tag_number);
    EXPECT_EQ(a.roaming, b.roaming);
    EXPECT_EQ(a.signal, b.signal);
    EXPECT_EQ(a.battery, b.battery);
    EXPECT_EQ(a.in_band_ring, b.in_band_ring);
    EXPECT_EQ(a.memory, b.memory);
    EXPECT_EQ(a.ring_after, b.ring_after);
    EXPECT_EQ(a.ring_number, b.ring_number);
    EXPECT_EQ(a.far_end, b.far_end);
    EXPECT_EQ(a.player_name, b.player_name);
    ASSERT_EQ(a.tracks.size(), b.tracks.size());
    for (size_t i = 0; i < a.tracks.size(); ++i) {
        EXPECT_EQ(a.tracks[i].title, b.tracks[i].title);
        EXPECT_EQ(a.tracks[i].artist, b.tracks[i].artist);
        EXPECT_EQ(a.tracks[i].album, b.tracks[i].album);
        EXPECT_EQ(a.tracks[i].genre, b.tracks[i].genre);
        EXPECT_EQ(a.tracks[i].length_ms, b.tracks[i].length_ms);
    }
    ASSERT_EQ(a.other_players.size(), b.other_players.size());
    for (size_t i = 0; i < a.other_players.size(); ++i) {
        EXPECT_EQ(a.other_players[i].name, b.other_players[i].name);
        EXPECT_EQ(a.other_players[i].tracks.size(), b.other_players[i].tracks.size());
    }
    expect_same(a.contacts, b.contacts);
    expect_same(a.sim_contacts, b.sim_contacts);
    ASSERT_EQ(a.calls.size(), b.calls.size());
    for (size_t i = 0; i < a.calls.size(); ++i) {
        EXPECT_EQ(a.calls[i].kind, b.calls[i].kind);
        EXPECT_EQ(a.calls[i].time, b.calls[i].time);
    }
}

void expect_same(const World& a, const World& b) {
    expect_same(a.adapter, b.adapter);
    ASSERT_EQ(a.devices.size(), b.devices.size());
    for (size_t i = 0; i < a.devices.size(); ++i) {
        expect_same(a.devices[i], b.devices[i]);
    }
    EXPECT_TRUE(a.bonded == b.bonded);
    expect_same(a.phone, b.phone);
    EXPECT_EQ(a.hall, b.hall);
}
// NOLINTEND(readability-function-size)

// What is read.

TEST(SimWorldFile, TheBuiltInWorldIsReadBackAsItIs) {
    expect_same(world_of(sim::built_in_world_text()), sim::built_in_world());
}

TEST(SimWorldFile, WhatIsLeftOutKeepsItsDefault) {
    const World world = world_of("{}");
    EXPECT_EQ(world.adapter.name, "vym-sim");
    EXPECT_EQ(world.adapter.max_bonded, 8U);
    EXPECT_TRUE(world.devices.empty());
    EXPECT_TRUE(world.bonded.empty());
    EXPECT_EQ(world.phone.operator_name, "Sim Mobile");
    EXPECT_TRUE(world.phone.tracks.empty());
    EXPECT_TRUE(world.phone.contacts.empty());
    EXPECT_EQ(world.hall, 0U);
}

TEST(SimWorldFile, ADeviceIsDescribedInFull) {
    const World world = world_of(R"({
        "adapter": { "name": "Küche", "address": "00:11:22:33:44:55", "class": "0x1F00",
                     "version": "test", "discoverable_timeout_s": 0, "discovery_interval": 7,
                     "max_bonded": 1, "oob_c192": "000102030405060708090a0b0c0d0e0f" },
        "devices": [ {
            "address": "2a:41:6e:6e:61:02", "name": "Tester", "class": "0x5A020C", "type": "dual",
            "rssi": -127, "discoverable": false, "pairing": "enter passkey", "passkey": 7,
            "services": ["1101", "00001234-4556-7801-1020-2130314041FF"], "priority": 255,
            "manufacturer": "0x000CFFFF", "dials_serial_servers": true, "hid_host": true,
            "central": true,
            "serial_services": [ { "channel": 30, "talk": "positions" },
                                 { "uuid": "1102", "channel": 1 } ] } ],
        "bonded": ["2A:41:6E:6E:61:02"], "hall": 100000 })");
    EXPECT_EQ(world.adapter.name, "Küche");
    EXPECT_EQ(to_string(world.adapter.address), "001122334455");
    EXPECT_EQ(world.adapter.class_of_device, 0x1F00U);
    EXPECT_EQ(world.adapter.version, "test");
    EXPECT_EQ(world.adapter.discoverable_timeout_s, 0U);
    EXPECT_EQ(world.adapter.discovery_interval, 7U);
    EXPECT_EQ(world.adapter.max_bonded, 1U);
    EXPECT_EQ(world.adapter.oob_c192,
              (sim::Octets16{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    ASSERT_EQ(world.devices.size(), 1U);
    const sim::Device& device = world.devices[0];
    EXPECT_EQ(to_string(device.address), "2A416E6E6102");
    EXPECT_EQ(device.name, "Tester");
    EXPECT_EQ(device.class_of_device, 0x5A020CU);
    EXPECT_EQ(device.type, sim::kDual);
    EXPECT_EQ(device.rssi, -127);
    EXPECT_FALSE(device.discoverable);
    EXPECT_EQ(device.pairing, sim::Pairing::EnterPasskey);
    EXPECT_EQ(device.passkey, 7U);
    EXPECT_EQ(device.services, std::vector<uint16_t>{0x1101});
    ASSERT_EQ(device.uuids.size(), 2U);
    EXPECT_EQ(device.uuids[0], sim::uuid_from_16bit(0x1101));
    EXPECT_EQ(device.uuids[1], (sim::Octets16{0x00, 0x00, 0x12, 0x34, 0x45, 0x56, 0x78, 0x01, 0x10,
                                              0x20, 0x21, 0x30, 0x31, 0x40, 0x41, 0xFF}));
    EXPECT_EQ(device.priority, 255);
    EXPECT_EQ(device.manufacturer, 0x000CFFFFU);
    EXPECT_TRUE(device.dials_serial_servers);
    EXPECT_TRUE(device.is_hid_host);
    EXPECT_TRUE(device.central);
    ASSERT_EQ(device.serial_services.size(), 2U);
    EXPECT_EQ(device.serial_services[0].uuid, sim::uuid_from_16bit(0x1101));
    EXPECT_EQ(device.serial_services[0].channel, 30);
    EXPECT_EQ(device.serial_services[0].talk, sim::SerialTalk::Positions);
    EXPECT_EQ(device.serial_services[1].uuid, sim::uuid_from_16bit(0x1102));
    EXPECT_TRUE(world.is_bonded(device.address));
    EXPECT_EQ(world.hall, 100000U);
}

TEST(SimWorldFile, APeripheralHasItsWholeTableOfAttributes) {
    const World world = world_of(R"({ "devices": [ {
        "address": "C6:00:00:00:00:01", "type": "low energy",
        "peripheral": {
            "flags": ["discoverable", "no classic"], "appearance": "0x0341",
            "manufacturer_data": "FF FF 07",
            "services": [
                { "uuid": "180D", "included": ["180A"], "characteristics": [
                    { "uuid": "2A37", "properties": ["read", "indicate"], "value": "00 48",
                      "swing": { "offset": 1, "width": 1, "low": 60, "high": 90, "step": -2 },
                      "descriptors": [ { "uuid": "2902", "permissions": ["read", "write encrypted"],
                                         "value": "0000", "shortest": 2, "longest": 2 } ] },
                    { "uuid": "2A37", "properties": ["write without response"],
                      "accepted": ["01", { "text": "go" }] } ] },
                { "uuid": "180A", "type": "secondary" } ] } } ] })");
    const sim::Peripheral& p = world.devices.at(0).peripheral;
    EXPECT_EQ(p.flags, 6);
    EXPECT_EQ(p.appearance, 0x0341);
    EXPECT_EQ(p.manufacturer_data, "\xFF\xFF\x07");
    ASSERT_EQ(p.attributes.services().size(), 2U);
    const sim::Service& first = p.attributes.services()[0];
    EXPECT_EQ(first.handle, 1);
    EXPECT_EQ(first.id.type, sim::kPrimary);
    ASSERT_EQ(first.included.size(), 1U);
    EXPECT_TRUE(first.included[0] == p.attributes.services()[1].id);
    EXPECT_EQ(first.included[0].type, sim::kSecondary);
    ASSERT_EQ(first.characteristics.size(), 2U);
    const sim::Characteristic& pulse = first.characteristics[0];
    EXPECT_EQ(pulse.handle, 4); // behind the service, what it includes, and the declaration
    EXPECT_EQ(pulse.properties, sim::kPropertyRead | sim::kPropertyIndicate);
    EXPECT_EQ(pulse.permissions, sim::kPermitRead);
    EXPECT_EQ(pulse.value, std::string("\x00\x48", 2));
    ASSERT_TRUE(pulse.swing.has_value());
    EXPECT_EQ(pulse.swing->step, -2);
    ASSERT_EQ(pulse.descriptors.size(), 1U);
    EXPECT_EQ(pulse.descriptors[0].permissions, sim::kPermitRead | sim::kPermitWriteEncrypted);
    EXPECT_EQ(pulse.descriptors[0].handle, 5);
    EXPECT_EQ(pulse.descriptors[0].longest, 2U);
    const sim::Characteristic& control = first.characteristics[1];
    EXPECT_EQ(control.id.instance, 1); // the second of its kind
    EXPECT_EQ(control.permissions, sim::kPermitWrite);
    EXPECT_EQ(control.accepted, (std::vector<std::string>{"\x01", "go"}));
}

TEST(SimWorldFile, APhoneIsDescribedInFull) {
    const World world = world_of(R"({ "phone": {
        "model": "M", "manufacturer": "N", "operator": "O", "subscriber": "+49", "voice_tag_number": "12",
        "roaming": true, "signal": 0, "battery": 1, "in_band_ring": false, "memory": ["1", "*2#"],
        "far_end": "is busy", "ring_after_ms": 3600000, "ring_number": "555", "player_name": "P",
        "tracks": [ { "title": "T", "artist": "A", "album": "L", "genre": "G", "length_ms": 1 } ],
        "contacts": "built-in", "sim_contacts": "built-in", "past_calls": "built-in" } })");
    const sim::Phone& phone = world.phone;
    EXPECT_EQ(phone.model, "M");
    EXPECT_EQ(phone.manufacturer, "N");
    EXPECT_EQ(phone.operator_name, "O");
    EXPECT_EQ(phone.subscriber, "+49");
    EXPECT_EQ(phone.voice_tag_number, "12");
    EXPECT_TRUE(phone.roaming);
    EXPECT_EQ(phone.signal, 0);
    EXPECT_EQ(phone.battery, 1);
    EXPECT_FALSE(phone.in_band_ring);
    EXPECT_EQ(phone.memory, (std::vector<std::string>{"1", "*2#"}));
    EXPECT_EQ(phone.far_end, sim::FarEnd::IsBusy);
    EXPECT_EQ(phone.ring_after, std::chrono::hours(1));
    EXPECT_EQ(phone.ring_number, "555");
    EXPECT_EQ(phone.player_name, "P");
    ASSERT_EQ(phone.tracks.size(), 1U);
    EXPECT_EQ(phone.tracks[0].title, "T");
    EXPECT_EQ(phone.tracks[0].length_ms, 1U);
    EXPECT_EQ(phone.contacts.size(), 50U);
    EXPECT_EQ(phone.sim_contacts.size(), 3U);
    EXPECT_EQ(phone.calls.size(), 6U);
}

TEST(SimWorldFile, AFileMayChangeTheBuiltInWorld) {
    const World world = world_of(R"({
        "based_on": "built-in",
        "without": ["2E:43:61:72:4B:74"],
        "adapter": { "name": "Other" },
        "devices": [ { "address": "11:22:33:44:55:66", "pin": "4711" },
                     { "address": "D2:00:00:00:00:02", "name": "Tablet 2", "type": "low energy",
                       "central": true } ],
        "phone": { "battery": 1, "contacts": null } })");
    sim::World expected = sim::built_in_world();
    expected.adapter.name = "Other";
    expected.devices.erase(expected.devices.begin() + 3);
    expected.devices[1].pin = "4711";
    expected.devices.emplace_back();
    expected.devices.back().address = sim::to_address("D20000000002");
    expected.devices.back().name = "Tablet 2";
    expected.devices.back().type = sim::kLowEnergy;
    expected.devices.back().central = true;
    expected.bonded.erase(expected.bonded.begin());
    expected.phone.battery = 1;
    expected.phone.contacts.clear();
    expect_same(world, expected);
}

TEST(SimWorldFile, CardsAreLookedForBesideTheFile) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("book.vcf")) << "BEGIN:VCARD\nVERSION:3.0\nN:One;Only\nEND:VCARD\n";
    std::ofstream(dir.file("log.vcf")) << "BEGIN:VCARD\nVERSION:2.1\nTEL:123\n"
                                          "X-IRMC-CALL-DATETIME;MISSED:20260131T235959\nEND:VCARD\n";
    std::ofstream(dir.file("world.json"))
        << R"({ "phone": {
        "contacts": "book.vcf", "sim_contacts": ")"
        << dir.file("book.vcf") << R"(", "past_calls": "log.vcf" } })";
    const World world = sim::load_world(dir.file("world.json"));
    ASSERT_EQ(world.phone.contacts.size(), 1U);
    EXPECT_EQ(world.phone.contacts[0].last, "One");
    EXPECT_EQ(world.phone.sim_contacts.size(), 1U);
    ASSERT_EQ(world.phone.calls.size(), 1U);
    EXPECT_EQ(world.phone.calls[0].number, "123");
}

TEST(SimWorldFile, AMistakeInACardNamesTheCardsFile) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("book.vcf")) << "BEGIN:VCARD\nVERSION:3.0\n";
    std::ofstream(dir.file("world.json")) << R"({ "phone": { "contacts": "book.vcf" } })";
    try {
        sim::load_world(dir.file("world.json"));
        FAIL();
    } catch (const sim::FileError& error) {
        EXPECT_EQ(error.what(), dir.file("book.vcf") + ":1: this card has no end; expected END:VCARD");
    }
}

TEST(SimWorldFile, TheExampleInTheGuideIsAWorld) {
    std::istringstream guide(content_of(VYM_SIM_GUIDE));
    std::string example;
    // An indented block that is an object.
    for (std::string line; example.empty() && std::getline(guide, line);) {
        if (line != "    {") {
            continue;
        }
        do {
            example += line + '\n';
        } while (line != "    }" && std::getline(guide, line));
    }
    World world = world_of(example);
    EXPECT_EQ(world.adapter.name, "Kitchen display");
    EXPECT_EQ(world.devices.size(), 11U);
    EXPECT_EQ(world.find(sim::to_address("2A474E535301")), nullptr);
    EXPECT_TRUE(world.find(sim::to_address("D25461626C75"))->central);
    EXPECT_EQ(world.find(sim::to_address("C6436C6F636B"))->peripheral.attributes.services().size(), 1U);
    EXPECT_EQ(world.phone.battery, 1);
}

// What is refused.

TEST(SimWorldFile, AMissingFileIsNamed) {
    try {
        sim::load_world("/nowhere/world.json");
        FAIL();
    } catch (const sim::FileError& error) {
        EXPECT_STREQ(error.what(),
                     "/nowhere/world.json: cannot be read: No such file or directory; expected a file");
    }
}

TEST(SimWorldFile, WhatIsNoJsonIsRefusedInItsLine) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "world.json:1: no JSON: syntax error while parsing value - unexpected end of input; "
             "expected '[', '{', or a literal"},
        {"{\n  \"hall\": 1\n  \"phone\": {}\n}", "world.json:3: no JSON: syntax error while parsing "
                                                 "object - unexpected string literal; expected "
                                                 "'}'"},
        {"{\n}\n}",
         "world.json:3: no JSON: syntax error while parsing value - unexpected '}'; expected "
         "end of input"},
        {"{ \"hall\": 1e999 }", "world.json:1: no JSON: number overflow parsing '1e999'"},
        {"{ \"hall\": 1,\n\n  \"hall\": 2 }",
         "world.json:3: \"hall\" stands here again; expected it once, as in line 1"},
        {std::string(33, '[') + std::string(33, ']'),
         "world.json:1: too deep; expected at most 32 lists and objects in one another"},
        {"[]", "world.json:1: a list is no object; expected one in braces"},
        {"\n\n17\n", "world.json:3: 17 is no object; expected one in braces"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(problem_of(text), problem);
    }
}

TEST(SimWorldFile, WhatDoesNotFitIsRefusedWithItsPlace) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"{\n\"based_on\":\n \"mine\" }",
         R"(world.json:3: based_on: "mine" is no world; expected "built-in")"},
        {R"({ "devices": {} })",
         "world.json:1: devices: an object is no list; expected one in square brackets"},
        {"{ \"devices\": [\n { \"name\": \"x\" } ] }",
         "world.json:2: devices[0]: there is no \"address\"; expected one in this object"},
        {"{ \"devices\": [ {}, 5 ] }",
         "world.json:1: devices[0]: there is no \"address\"; expected one in this object"},
        {"{ \"devices\": [\n\n { \"address\": \"00:11\" } ] }",
         R"(world.json:3: devices[0].address: "00:11" is no address; expected six bytes as in )"
         R"("00:1A:7D:DA:71:13")"},
        {"{ \"devices\": [ { \"address\": \"00:1A:7D:DA:71:1G\" } ] }",
         R"(world.json:1: devices[0].address: "00:1A:7D:DA:71:1G" is no address; expected six bytes as )"
         R"(in "00:1A:7D:DA:71:13")"},
        {"{ \"devices\": [ { \"address\": \"00:1A:7D:DA:71:13\" },\n"
         "{ \"address\": \"00:1a:7d:da:71:13\" } ] }",
         R"(world.json:2: devices[1]: another device has the address "00:1a:7d:da:71:13"; expected one )"
         "of its own"},
        {R"({ "bonded": ["00:1A:7D:DA:71:13"] })",
         R"(world.json:1: bonded[0]: "00:1A:7D:DA:71:13" is no device of this world; expected the )"
         "address of one"},
        {R"({ "based_on": "built-in", "bonded": ["2A:41:6E:6E:61:01", "2A:41:6E:6E:61:01"] })",
         R"(world.json:1: bonded[1]: "2A:41:6E:6E:61:01" is here twice; expected it once)"},
        {R"({ "based_on": "built-in", "adapter": { "max_bonded": 1 },
              "bonded": ["2A:41:6E:6E:61:01", "11:22:33:44:55:66"] })",
         R"(world.json:2: bonded[1]: one bonded device too many; expected at most 1, as the adapter's )"
         "\"max_bonded\" says"},
        {R"({ "without": ["2A:41:6E:6E:61:01"] })",
         R"(world.json:1: without[0]: "2A:41:6E:6E:61:01" is no device of this world; expected the )"
         "address of one"},
        {"{ \"hall\": 100001\n\n}",
         "world.json:1: hall: 100001 is out of range; expected a whole number from 0 to 100000"},
        {"{\n \"hal\": 5 }", "world.json:2: hal: there is no such key; expected one of based_on, "
                             "without, adapter, devices, bonded, phone, hall"},
        {R"({ "adapter": { "adress": "" } })",
         "world.json:1: adapter.adress: there is no such key; expected one of name, address, class, "
         "version, discoverable_timeout_s, discovery_interval, max_bonded, oob_c192, oob_r192, "
         "oob_c256, "
         "oob_r256"},
        {R"({ "phone": { "tracks": [ { "a\nb": 5 } ] } })",
         R"(world.json:1: phone.tracks[0].a\x0Ab: there is no such key; expected one of title, artist, )"
         "album, genre, length_ms"},
        {R"({ "adapter": { "name": 5 } })",
         "world.json:1: adapter.name: 5 is no text; expected one in quotation marks"},
        {R"({ "adapter": { "name": "a\nb" } })",
         R"(world.json:1: adapter.name: "a\x0Ab" has a control character; expected printable text)"},
        {R"({ "adapter": { "name": ")" + std::string(249, 'n') + "\" } }",
         "world.json:1: adapter.name: 249 bytes are too many; expected at most 248"},
        {R"({ "adapter": { "class": "240404" } })",
         R"(world.json:1: adapter.class: "240404" is no number; expected "0x" and up to 6 hexadecimal )"
         "digits"},
        {R"({ "adapter": { "oob_r192": "00" } })",
         R"(world.json:1: adapter.oob_r192: "00" is no block of sixteen bytes; expected 32 hexadecimal )"
         "digits"},
        {R"({ "phone": { "subscriber": "Anna" } })",
         R"(world.json:1: phone.subscriber: "Anna" is no telephone number; expected digits, *, # and +)"},
        {R"({ "phone": { "battery": 2.5 } })",
         "world.json:1: phone.battery: 2.5 is no whole number; expected a whole number from 0 to 5"},
        {R"({ "phone": { "roaming": 1 } })",
         "world.json:1: phone.roaming: 1 is no choice; expected true or false"},
        {R"({ "phone": { "far_end": "sleeps" } })",
         R"(world.json:1: phone.far_end: "sleeps" is not known here; expected one of "answers", )"
         R"("rings on", "is busy")"},
        {R"({ "phone": { "tracks": [ { "title": "T" } ] } })",
         "world.json:1: phone.tracks[0]: there is no \"length_ms\"; expected one in this object"},
        {R"({ "phone": { "contacts": "none.vcf" } })",
         R"(world.json:1: phone.contacts: "none.vcf" cannot be read (No such file or directory); )"
         R"(expected a .vcf file, or "built-in")"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(problem_of(text), problem);
    }
}

TEST(SimWorldFile, ADeviceThatCannotBeIsRefused) {
    const std::string place = "world.json:1: devices[0]";
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"("rssi": 21)", ".rssi: 21 is out of range; expected a whole number from -127 to 20"},
        {R"("rssi": 99999999999999999999)",
         ".rssi: 99999999999999999999 is out of range; expected a whole number from -127 to 20"},
        {R"("pairing": "pin")", ": there is no PIN to pair with; expected \"pin\""},
        {R"("pairing": "magic")",
         R"(.pairing: "magic" is not known here; expected one of "just works", )"
         R"("pin", "confirm", "enter passkey")"},
        {R"("services": ["11"])", R"(.services[0]: "11" is no UUID; expected "180D" or )"
                                  R"("0000180D-0000-1000-8000-00805F9B34FB")"},
        {R"("serial_services": [ { "channel": 31 } ])",
         ".serial_services[0].channel: 31 is out of range; expected a whole number from 1 to 30"},
        {R"("central": true)", ": a classic device is no central; expected the type \"low energy\" or "
                               "\"dual\""},
        {R"("peripheral": { "services": [ { "uuid": "180D" } ] })",
         ": a classic device is no peripheral; expected the type \"low energy\" or \"dual\""},
        {R"("type": "low energy", "name": "A name of thirty bytes, so it is",
            "peripheral": { "services": [ { "uuid": "180D" } ] })",
         ": with its name and the manufacturer's data an advertisement has 34 bytes; expected at "
         "most 31"},
        {R"("type": "low energy", "peripheral": { "services": [ { "uuid": "180D",
            "included": ["180F"] } ] })",
         ".peripheral: service 0 includes 180F; expected the UUID of another service of this "
         "peripheral"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(device_problem(text), place + problem);
    }
}

TEST(SimWorldFile, AnAttributeThatCannotBeIsRefused) {
    const std::string place = "world.json:2: devices[0].peripheral.services[0].characteristics[0]";
    const std::string long_value = std::string(1026, '0');
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"("value": "0")", R"(.value: "0" is no bytes; expected pairs of hexadecimal digits as in )"
                            R"("00 4A", or { "text": ... })"},
        {R"("value": { "hex": "00" })",
         ".value: an object is no value; expected \"text\" as its only key, or hexadecimal digits"},
        {"\"value\": \"" + long_value + "\"", ".value: 513 bytes are too many; expected at most 512"},
        {"\"value\": { \"text\": \"" + long_value + "\" }",
         ".value.text: 1026 bytes are too many; expected at most 512"},
        {R"("properties": ["read", "fly"])",
         R"(.properties[1]: "fly" is not known here; expected one of "read", "write without response", )"
         R"("write", "notify", "indicate")"},
        {R"("shortest": 3, "longest": 2)",
         R"(: "shortest" is 3 and "longest" is 2; expected it the other way round)"},
        {R"("value": "00", "swing": { "width": 1, "low": 0, "high": 256, "step": 1 })",
         R"(.swing: the number swings from 0 to 256; expected "low" not above "high", and "high" not )"
         "above 255"},
        {R"("value": "00", "swing": { "width": 1, "low": 0, "high": 10, "step": -6 })",
         R"(.swing: a step of -6 is too large; expected at most half of what lies between "low" and )"
         R"("high")"},
        {R"("value": "00", "swing": { "width": 2, "low": 0, "high": 10, "step": 1 })",
         ": the number that swings ends at byte 2 of the value; expected at most 1"},
        {R"("value": "0B", "swing": { "width": 1, "low": 0, "high": 10, "step": 1 })",
         ": the number that swings begins with 11; expected one between \"low\" and \"high\""},
        {R"("value": "00", "properties": ["write"],
            "swing": { "width": 1, "low": 0, "high": 10, "step": 1 })",
         ": a value that can be written does not swing; expected one of the two"},
    };
    for (const auto& [text, problem] : cases) {
        EXPECT_EQ(characteristic_problem(text), place + problem);
    }
}

TEST(SimWorldFile, MoreThanThreeCentralsAreRefused) {
    std::string devices;
    for (const char* number : {"1", "2", "3", "4"}) {
        devices += (devices.empty() ? "" : ",\n") + std::string(R"({ "address": "D2:00:00:00:00:0)") +
                   number + R"(", "type": "low energy", "central": true })";
    }
    EXPECT_EQ(problem_of("{ \"devices\": [ " + devices + " ] }"),
              "world.json:4: devices[3]: one central too many; expected at most 3");
}

} // namespace
