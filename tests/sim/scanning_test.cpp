// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "low_energy_sim.h"

#include "hall.h"
#include "modules.h"
#include "scan_filters.h"

#include <set>

namespace {

sim::Pace scanning_pace() {
    sim::Pace pace = low_energy_pace();
    pace.advertising_interval = std::chrono::milliseconds(1);
    return pace;
}

class ScanSim : public PhoneSim {
public:
    explicit ScanSim(const sim::Pace& pace = scanning_pace(), sim::World world = sim::built_in_world())
        : PhoneSim(pace, std::move(world)) {
        EXPECT_EQ(answers("KA" + kNoUuid), Strings{"KA0001" + kNoUuid});
    }

    bool logged(const std::string& line) { return log().find(line + "\n") != std::string::npos; }

    /// A scan's first `count` events.
    Strings scan(size_t count) {
        send("KC01");
        Strings found = client.events(count);
        answers("KC00");
        return found;
    }
};

// Flags, the list of services, the appearance.
const std::string kStrapAdvertises = "KBC64865617274B6000011\x02\x01\x06\x07\x03\xDC\xDE\x18\x0F\x18"
                                     "\xDC\xDF\x18\x03\x19\x41\x03";
const std::string kStrapResponds = "KBC64865617274B601000D\x0C\x09Heart strap";
const std::string kStrapName = "KCC64865617274000BHeart strap";
const std::string kSensorAdvertises =
    "KBE2436C696D61AF00000B\x02\x01\x04\x03\x03\x1A\x18\x03\x19\x40\x05";
const std::string kSensorResponds = "KBE2436C696D61AF010015\x0F\x09"
                                    "Climate sensor\x04\xFF\xFF\xFF\x07";
const std::string kSensorName = "KCE2436C696D61000EClimate sensor";

const Strings kStrapOnly{kStrapAdvertises, kStrapResponds, kStrapName, kStrapAdvertises,
                         kStrapResponds};
const Strings kSensorOnly{kSensorAdvertises, kSensorResponds, kSensorName, kSensorAdvertises,
                          kSensorResponds};

TEST(SimScanning, DevicesAreHeardAgainAndAgainButNamedOnce) {
    ScanSim sim;
    EXPECT_EQ(sim.scan(10), (Strings{kStrapAdvertises, kStrapResponds, kStrapName, kSensorAdvertises,
                                     kSensorResponds, kSensorName, kStrapAdvertises, kStrapResponds,
                                     kSensorAdvertises, kSensorResponds}));
    // A new scan names them anew.
    EXPECT_EQ(sim.scan(3), (Strings{kStrapAdvertises, kStrapResponds, kStrapName}));
}

TEST(SimScanning, AStoppedScanIsSilent) {
    ScanSim sim;
    sim.scan(1);
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

TEST(SimScanning, WithoutPowerThereIsNone) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("KC01"), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("no scan: the adapter is off"));
}

TEST(SimScanning, PowerOffAndTheClientsEndStopIt) {
    ScanSim sim;
    sim.send("KC01");
    EXPECT_EQ(sim.client.event(), kStrapAdvertises);
    sim.send("PC");
    EXPECT_EQ(sim.until("PA").back(), "PA00");
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
    sim.send("PB");
    EXPECT_EQ(sim.client.events(3).front(), "PA01");
    sim.send("KC01");
    EXPECT_EQ(sim.client.event(), kStrapAdvertises);
    sim.client.close();
    sim.client = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

TEST(SimScanning, AConnectedDeviceIsSilent) {
    ScanSim sim;
    sim.send("KE01" + kStrap + "0102");
    EXPECT_EQ(sim.until("KE").back(), "KE01000100" + kStrap);
    EXPECT_EQ(sim.scan(5), kSensorOnly);
}

TEST(SimScanning, ParametersAreConfirmed) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXB0100600030"), Strings{"KZN0100"});
    EXPECT_EQ(sim.answers("KXB0100300060"), Strings{"KZN0185"});
    EXPECT_EQ(sim.answers("KXB0140010030"), Strings{"KZN0185"});
    EXPECT_EQ(sim.answers("KXB0900600030"), Strings{"KZN0985"});
    EXPECT_EQ(sim.answers("KXB01"), Strings{});
}

/// The fields of a filter from its type to the address type; UUID and masks as given.
std::string filter(const std::string& type, const std::string& index, const std::string& company,
                   const std::string& uuid, const std::string& blocks) {
    return "01" + type + index + company + "0000" + uuid + "00000000" + "00000000" + "00000000" + "00" +
           blocks;
}

const std::string kNoBlocks = "0000000000000000";
const std::string kByService = filter("0002", "0001", "0000", "0000180D", kNoBlocks);
const std::string kByName =
    filter("0004", "0002", "0000", "00000000", "000EClimate sensor000000000000");
const std::string kByAddress = filter("0000", "0003", "0000", "00000000",
                                      "00000006\x74\x72\x61\x65\x48\xC6"
                                      "00000000");
const std::string kByCompany = filter("0005", "0004", "FFFF", "00000000", kNoBlocks);

TEST(SimScanFilters, AServiceIsFilteredBy) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXC" + kByService), Strings{"KZB000000000100000000020000000F"});
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    EXPECT_EQ(sim.scan(5), kStrapOnly);
    EXPECT_EQ(sim.answers("KXI0100"), Strings{"KZD000000000100"});
    EXPECT_EQ(sim.scan(6).back(), kSensorName);
}

TEST(SimScanFilters, ANameIsFilteredBy) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXC" + kByName), Strings{"KZB000000000100000000040000000F"});
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    EXPECT_EQ(sim.scan(5), kSensorOnly);
}

TEST(SimScanFilters, AnAddressIsFilteredBy) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXC" + kByAddress), Strings{"KZB000000000100000000000000000F"});
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    EXPECT_EQ(sim.scan(5), kStrapOnly);
}

TEST(SimScanFilters, ManufacturerDataIsFilteredBy) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXC" + kByCompany), Strings{"KZB000000000100000000050000000F"});
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    EXPECT_EQ(sim.scan(5), kSensorOnly);
}

TEST(SimScanFilters, WithNoFilterAllDevicesPass) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    EXPECT_EQ(sim.scan(6).back(), kSensorName);
}

TEST(SimScanFilters, ADeletedFilterFiltersNoMore) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    sim.answers("KXC" + kByService);
    EXPECT_EQ(sim.answers("KXC" + kByName), Strings{"KZB000000000100000000040000000E"});
    EXPECT_EQ(sim.scan(6).back(), kSensorName); // either index
    EXPECT_EQ(sim.answers("KXD" + kByName), Strings{"KZB000000010100000000040000000F"});
    EXPECT_EQ(sim.answers("KXD" + kByName), Strings{"KZB000000010185000000040000000F"});
    EXPECT_EQ(sim.scan(5), kStrapOnly);
    EXPECT_EQ(sim.answers("KXH010001"), Strings{"KZB0000000201000000000700000010"});
    EXPECT_EQ(sim.scan(6).back(), kSensorName);
}

TEST(SimScanFilters, ThereIsRoomForSixteen) {
    ScanSim sim;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(sim.answers("KXC" + kByService).front().substr(0, 13), "KZB0000000001");
    }
    EXPECT_EQ(sim.answers("KXC" + kByService), Strings{"KZB0000000001800000000200000000"});
    EXPECT_EQ(sim.answers("KXH010001"), Strings{"KZB0000000201000000000700000010"});
}

TEST(SimScanFilters, WhatCannotBeFilteredByIsRefused) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXC" + filter("0001", "0001", "0000", "00000000", kNoBlocks)),
              Strings{"KZB0000000001850000000100000010"});
    EXPECT_EQ(sim.answers("KXC" + filter("0000", "0001", "0000", "00000000", kNoBlocks)),
              Strings{"KZB0000000001850000000000000010"});
    EXPECT_EQ(sim.answers("KXC09" + kByService.substr(2)), Strings{"KZB0000000009850000000200000010"});
    EXPECT_EQ(sim.answers("KXI0901"), Strings{"KZD000000010985"});
    EXPECT_EQ(sim.answers("KXC01"), Strings{});
    sim.stop();
    EXPECT_TRUE(sim.logged("no such filter: an address has six bytes"));
    EXPECT_TRUE(sim.logged("no such filter: only address (0), service (2), name (4) and manufacturer "
                           "data (5) can be filtered by"));
}

/// An index, the logic between kinds and the weakest signal; the rest matters to nobody.
std::string parameters(const std::string& index, const std::string& logic, const std::string& rssi) {
    return "01" + index + "00000000" + logic + rssi + "000000000000000000000000";
}

TEST(SimScanFilters, ParametersSayHowFiltersOfOneIndexCombine) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXI0101"), Strings{"KZD000000010100"});
    sim.answers("KXC" + kByService);
    sim.answers("KXC" + filter("0004", "0001", "0000", "00000000", "000EClimate sensor000000000000"));
    // One of them is enough.
    EXPECT_EQ(sim.answers("KXE" + parameters("0001", "0000", "0000")),
              Strings{"KZC0000000001000000000F"});
    EXPECT_EQ(sim.scan(6).back(), kSensorName);
    // And no weaker than -75 dBm.
    EXPECT_EQ(sim.answers("KXE" + parameters("0001", "0000", "00B5")),
              Strings{"KZC0000000001000000000F"});
    EXPECT_EQ(sim.scan(5), kStrapOnly);
    EXPECT_EQ(sim.answers("KXG010001"), Strings{"KZC00000001010000000010"});
    EXPECT_EQ(sim.answers("KXG010001"), Strings{"KZC00000001018500000010"});
    EXPECT_EQ(sim.answers("KXE" + parameters("0002", "0000", "0000")),
              Strings{"KZC0000000001000000000F"});
    EXPECT_EQ(sim.answers("KXF01"), Strings{"KZC00000002010000000010"});
    EXPECT_EQ(sim.answers("KXF09"), Strings{"KZC00000002098500000010"});
}

TEST(SimScanFilters, WithoutParametersAllKindsMustFit) {
    sim::ScanFilters filters;
    sim::ScanFilter service;
    service.kind = sim::kFilterService;
    service.uuid = 0x180D;
    sim::ScanFilter name;
    name.kind = sim::kFilterName;
    name.name = "Climate sensor";
    filters.enable(true);
    EXPECT_TRUE(filters.add(service));
    EXPECT_TRUE(filters.add(name));
    sim::World world = sim::built_in_world();
    EXPECT_FALSE(filters.pass(*world.find(sim::to_address(kStrap))));
    EXPECT_TRUE(filters.remove(name));
    EXPECT_TRUE(filters.pass(*world.find(sim::to_address(kStrap))));
}

// Batch scanning.

/// Undoes the escaping and forgets the ages, which the clock decides.
std::string records_of(const std::string& event, const std::vector<size_t>& ages) {
    std::string records = sim::unescape(std::string_view(event).substr(27));
    for (const size_t age : ages) {
        records.replace(age, 2, "??");
    }
    return records;
}

TEST(SimBatchScan, KeepsAdvertisementsUntilTheyAreRead) {
    ScanSim sim;
    // Four full reports, and word when there are as many as two.
    EXPECT_EQ(sim.answers("KXJ01001400140032"), Strings{"KZJ0100"});
    sim.send("KXK0100020064003200000000");
    EXPECT_EQ(sim.client.events(2), (Strings{"KZK000000010100", "KZM01"}));
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000100"});
    const std::string report = sim.answers("KXM010002").front();
    EXPECT_EQ(report.substr(0, 15), "KZL010000000002");
    const std::string first = records_of(report, {9});
    const std::string strap = std::string("\x74\x72\x61\x65\x48\xC6\x01\x7F\xB6??", 11) +
                              std::string("\x0F\x02\x01\x06\x07\x03\x0D\x18\x0F\x18\x0A\x18"
                                          "\x03\x19\x41\x03",
                                          16) +
                              "\x0D\x0C\x09Heart strap";
    const std::string sensor = std::string("\x61\x6D\x69\x6C\x43\xE2\x01\x7F\xAF", 9);
    EXPECT_EQ(first.substr(0, 41), strap);
    EXPECT_EQ(first.substr(41, 9), sensor);
    EXPECT_EQ(sim.answers("KXM010002"), Strings{"KZL010000000002000000000000"});
}

TEST(SimBatchScan, TruncatedReportsNameEachDeviceOnce) {
    ScanSim sim;
    // Two reports fit, and both count.
    EXPECT_EQ(sim.answers("KXJ010000000A0064"), Strings{"KZJ0100"});
    sim.send("KXK0100010064003200000000");
    EXPECT_EQ(sim.client.events(2), (Strings{"KZK000000010100", "KZM01"}));
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000100"});
    const std::string report = sim.answers("KXM010001").front();
    EXPECT_EQ(report.substr(0, 23), "KZL01000000000100000002");
    EXPECT_EQ(records_of(report, {9, 20}), "\x74\x72\x61\x65\x48\xC6\x01\x7F\xB6??"
                                           "\x61\x6D\x69\x6C\x43\xE2\x01\x7F\xAF??");
}

TEST(SimBatchScan, BadRequestsAreRefused) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXJ01003C003C0000"), Strings{"KZJ0185"});
    EXPECT_EQ(sim.answers("KXJ09001400140000"), Strings{"KZJ0985"});
    EXPECT_EQ(sim.answers("KXK0100000064003200000000"), Strings{"KZK000000010185"});
    EXPECT_EQ(sim.answers("KXK0100020032006400000000"), Strings{"KZK000000010185"});
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000185"});
    EXPECT_EQ(sim.answers("KXM010003"), Strings{"KZL018500000003000000000000"});
    EXPECT_EQ(sim.answers("KXK0100020064003200000000"), Strings{"KZK000000010100"});
    EXPECT_EQ(sim.answers("KXK0100020064003200000000"), Strings{"KZK000000010185"});
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000185"});
}

TEST(SimBatchScan, EndsWithItsClient) {
    ScanSim sim;
    EXPECT_EQ(sim.answers("KXK0100020064003200000000"), Strings{"KZK000000010100"});
    EXPECT_EQ(sim.answers("KB01"), Strings{});
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000185"});
}

// Advertising.

TEST(SimAdvertising, ListeningIsConfirmedWithTheStatusFirst) {
    ScanSim sim(low_energy_pace());
    EXPECT_EQ(sim.answers("KD0101"), Strings{"KZA0001"});
    EXPECT_EQ(sim.answers("KD0100"), Strings{"KZA0001"});
    EXPECT_EQ(sim.answers("KD0901"), Strings{"KZA8509"});
    EXPECT_EQ(sim.answers("KZA010100200040"), Strings{"KZA0001"});
    EXPECT_EQ(sim.answers("KZA010100400020"), Strings{"KZA8501"});
    EXPECT_EQ(sim.answers("KZC01"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("KZC00"), Strings{"KZA0000"});
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("KD0101"), Strings{"KZA8501"});
    EXPECT_EQ(sim.answers("KZC01"), Strings{"KZA8500"});
}

TEST(SimAdvertising, AnInstanceIsEnabledUpdatedAndDisabled) {
    ScanSim sim(low_energy_pace());
    EXPECT_EQ(sim.answers("KXP0100200040000701"
                          "0000"),
              Strings{"KZF0185"});
    EXPECT_EQ(sim.answers("KXO0100200040000701"
                          "0000"),
              Strings{"KZE0100"});
    EXPECT_EQ(sim.answers("KXO0100200040000701"
                          "0000"),
              Strings{"KZE0185"});
    EXPECT_EQ(sim.answers("KXP0100200040030701"
                          "0000"),
              Strings{"KZF0100"});
    EXPECT_EQ(sim.answers("KXP0100200040040701"
                          "0000"),
              Strings{"KZF0185"}); // no such type
    EXPECT_EQ(sim.answers("KXP0100200040000001"
                          "0000"),
              Strings{"KZF0185"}); // no channel
    EXPECT_EQ(sim.answers("KXN01"), Strings{"KZH0100"});
    EXPECT_EQ(sim.answers("KXN01"), Strings{"KZH0185"});
    EXPECT_EQ(sim.answers("KXO0900200040000701"
                          "0000"),
              Strings{"KZE0985"});
}

TEST(SimAdvertising, AnInstanceEndsWhenItsTimeIsOver) {
    sim::Pace pace = low_energy_pace();
    pace.discoverable_second = std::chrono::milliseconds(1);
    ScanSim sim(pace);
    sim.send("KXO0100200040000701"
             "0002");
    EXPECT_EQ(sim.client.events(2), (Strings{"KZE0100", "KZH0100"}));
    EXPECT_EQ(sim.answers("KXN01"), Strings{"KZH0185"});
}

TEST(SimAdvertising, AdvertisingEndsWithItsClient) {
    ScanSim sim(low_energy_pace());
    EXPECT_EQ(sim.answers("KXO0100200040000701"
                          "0000"),
              Strings{"KZE0100"});
    EXPECT_EQ(sim.answers("KB01"), Strings{});
    EXPECT_EQ(sim.answers("KXN01"), Strings{"KZH0185"});
}

TEST(SimAdvertising, DataIsPutTogether) {
    ScanSim sim(low_energy_pace());
    // Power, appearance, a manufacturer's three bytes, no service data, one service.
    EXPECT_EQ(sim.answers("KXQ010000010340"
                          "0003\xFF\xFF\x07"
                          "0000"
                          "0003\xDC\xDE\x18"),
              Strings{"KZG0100"});
    EXPECT_EQ(sim.answers("KXQ010101000000"
                          "000000000000"),
              Strings{"KZG0100"});
    // Connection intervals, service data.
    EXPECT_EQ(sim.answers("KXR01000000"
                          "00180028"
                          "0000"
                          "0000"
                          "0003\x0F\x18\x57"
                          "0000"),
              Strings{"KZG0100"});
    EXPECT_EQ(sim.answers("KZB01000003\x02\x01\x06"), Strings{"KZG0100"});
    sim.stop();
    EXPECT_TRUE(sim.logged("advertisement: 02 01 06 02 0A 00 03 19 40 03 04 FF FF FF 07 03 03 0D 18"));
    EXPECT_TRUE(sim.logged("scan response: 08 09 76 79 6D 2D 73 69 6D"));
    EXPECT_TRUE(sim.logged("advertisement: 02 01 06 05 12 18 00 28 00 04 16 0F 18 57"));
    EXPECT_TRUE(sim.logged("advertisement: 02 01 06"));
}

TEST(SimAdvertising, DataThatCannotBeIsRefused) {
    ScanSim sim(low_energy_pace());
    EXPECT_EQ(sim.answers("KZB01000020\x1F\xFF" + std::string(30, 'x')), Strings{"KZG010D"});
    EXPECT_EQ(sim.answers("KZB0100001F\x1E\xFF" + std::string(29, 'x')), Strings{"KZG0100"});
    EXPECT_EQ(sim.answers("KZB01000002\x02\x01"), Strings{"KZG0185"});
    EXPECT_EQ(sim.answers("KZB09000003\x02\x01\x06"), Strings{"KZG0985"});
    EXPECT_EQ(sim.answers("KXQ090000000000"
                          "000000000000"),
              Strings{"KZG0985"});
    EXPECT_EQ(sim.answers("KXQ0100"), Strings{});
    EXPECT_EQ(sim.answers("PC"), Strings{"PA00"});
    EXPECT_EQ(sim.answers("KZB01000003\x02\x01\x06"), Strings{"KZG0185"});
    sim.stop();
    EXPECT_TRUE(sim.logged("refused: 32 bytes of advertising data, at most 31 are possible"));
    EXPECT_TRUE(sim.logged("refused: the advertising data does not consist of whole structures"));
}

// A crowded hall.

sim::World hall_of(uint32_t size) {
    sim::World world = sim::empty_world();
    world.hall = size;
    return world;
}

/// How many are met in each of some steps of that length.
std::vector<size_t> met(sim::Hall& hall, int step_ms, int interval_ms, size_t steps) {
    std::vector<size_t> counts(steps);
    for (size_t& count : counts) {
        hall.pass_time(std::chrono::milliseconds(step_ms), std::chrono::milliseconds(interval_ms),
                       [&count](const sim::Device&, uint32_t) { ++count; });
    }
    return counts;
}

TEST(SimHall, EachAdvertiserHasItsOwnAddressAndName) {
    std::set<std::string> addresses;
    std::set<std::string> names;
    for (const uint32_t number : {0U, 1U, 255U, 256U, 65535U, 65536U, 99999U}) {
        const sim::Device device = sim::hall_advertiser(number);
        addresses.insert(to_string(device.address));
        names.insert(device.name);
    }
    EXPECT_EQ(addresses,
              (std::set<std::string>{"F44841000000", "F44841000001", "F448410000FF", "F44841000100",
                                     "F4484100FFFF", "F44841010000", "F4484101869F"}));
    EXPECT_EQ(names, (std::set<std::string>{"Badge 1", "Badge 2", "Badge 256", "Badge 257",
                                            "Badge 65536", "Badge 65537", "Badge 100000"}));
}

TEST(SimHall, AdvertisementsAreSpreadEvenlyOverTheInterval) {
    sim::Hall thousand(1000);
    EXPECT_EQ(met(thousand, 10, 500, 3), (std::vector<size_t>{20, 20, 20}));
    sim::Hall three(3);
    std::vector<size_t> expected(50);
    expected[16] = expected[33] = expected[49] = 1;
    EXPECT_EQ(met(three, 10, 500, 50), expected);
    sim::Hall nobody(0);
    EXPECT_EQ(met(nobody, 10, 500, 1), std::vector<size_t>{0});
}

TEST(SimHall, NoMoreAreMetThanARadioCanFollow) {
    sim::Hall hall(100000);
    EXPECT_EQ(met(hall, 10, 500, 3), (std::vector<size_t>{100, 100, 100}));
    sim::Hall tiny(1);
    EXPECT_EQ(met(tiny, 10, 1, 1), std::vector<size_t>{10});
}

TEST(SimHall, AScanMeetsEverybodyAgainAndAgainButNamesThemOnce) {
    sim::Pace pace = scanning_pace();
    pace.hall_step = std::chrono::milliseconds(1);
    ScanSim sim(pace, hall_of(2));
    const std::string first =
        "KBF44841000000DD00000D\x02\x01\x06\x03\x03\xDC\xDE\x18\x03\x19\xDC\xDD\x02";
    const std::string second = "KBF44841000001D600000C\x02\x01\x06\x03\x03\x0F\x18\x03\x19\xDC\xDD\x02";
    const std::string first_response = "KBF44841000000DD010009\x08\x09"
                                       "Badge 1";
    const std::string second_response = "KBF44841000001D6010009\x08\x09"
                                        "Badge 2";
    const Strings round{first,          first_response,  "KCF448410000000007Badge 1",
                        second,         second_response, "KCF448410000010007Badge 2",
                        first,          first_response,  second,
                        second_response};
    EXPECT_EQ(sim.scan(10), round);
    // A new scan names them anew.
    EXPECT_EQ(sim.scan(10), round);
}

TEST(SimHall, AHallOfFiveThousandIsMetByOneScan) {
    sim::Pace pace = scanning_pace();
    pace.hall_step = std::chrono::milliseconds(10);
    ScanSim sim(pace, hall_of(5000));
    sim.send("KC01");
    std::set<std::string> names;
    while (names.size() < 5000) {
        const std::string event = sim.client.event();
        ASSERT_NE(event, "");
        if (event.rfind("KC", 0) == 0) {
            EXPECT_TRUE(names.insert(event).second) << event;
        }
    }
}

TEST(SimHall, BatchesHoldTheHallToo) {
    ScanSim sim(scanning_pace(), hall_of(1));
    EXPECT_EQ(sim.answers("KXJ01001400140032"), Strings{"KZJ0100"});
    sim.send("KXK0100020064003200000000");
    EXPECT_EQ(sim.client.events(2), (Strings{"KZK000000010100", "KZM01"}));
    EXPECT_EQ(sim.answers("KXL01"), Strings{"KZK000000000100"});
    const std::string report = sim.answers("KXM010002").front();
    const std::string badge = std::string("\x00\x00\x00\x41\x48\xF4\x01\x7F\xDD??", 11) +
                              std::string("\x0B\x02\x01\x06\x03\x03\x0D\x18\x03\x19\x00\x02", 12);
    EXPECT_EQ(records_of(report, {9}).substr(0, 23), badge);
}

/// Counts what is sent, and does not keep up when told so.
class CountingOutbox : public sim::Outbox {
public:
    void send(const sim::Event&) override { ++count; }
    void hand_over(uint8_t, sim::UniqueFd) override {}
    bool is_congested() const override { return congested; }

    size_t count = 0;
    bool congested = false;
};

TEST(SimHall, AClientThatDoesNotKeepUpIsSpared) {
    asio::io_context loop(1);
    sim::World world = sim::built_in_world();
    world.adapter.powered = true;
    world.hall = 100000;
    CountingOutbox out;
    std::ostringstream text;
    sim::Log log(sim::LogLevel::Quiet, text);
    const sim::Pace pace = scanning_pace();
    sim::Hub hub{loop, world, out, log, pace, {}, {}, {}};
    const std::unique_ptr<sim::Module> scanning =
        sim::make_scanning(hub, std::make_shared<sim::LowEnergy>(hub));
    for (const sim::Command& command : scanning->commands()) {
        if (command.tag == "KC") {
            sim::Fields fields("01");
            command.run(fields);
        }
    }
    while (out.count == 0) {
        loop.run_one();
    }
    out.congested = true;
    const size_t before = out.count;
    for (int i = 0; i < 20; ++i) {
        loop.run_one();
    }
    EXPECT_EQ(out.count, before);
    out.congested = false;
    while (out.count == before) {
        loop.run_one();
    }
}

} // namespace
