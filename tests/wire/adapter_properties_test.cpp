// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Property records: which field each one fills, and what becomes of records that are short, long, cut
// or miscounted.

#include "wire/adapter_support.h"

#include "vym_bluetooth_impl.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

using wire::AdapterProperties;
using wire::Block;
using wire::Bytes;
using wire::DeviceProperties;
using wire::kDevice;
using wire::NameText;
using wire::Number;
using wire::Record;

class AdapterRecords : public wire::AdapterWireTest {
protected:
    // The cached numbers: an answer without a value changes none.
    int ClassOfDevice() {
        return Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {AdapterProperties({Record(4, "")})});
    }
    int ScanMode() {
        return Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", {AdapterProperties({Record(7, "")})});
    }
    int MostBonded() {
        return Ask(vym_bluetooth_get_number_of_bonded_devices, "AT#BA23\r\n",
                   {AdapterProperties({Record(35, "")})});
    }
    int Priority() {
        return Ask([] { return vym_bluetooth_get_device_priority(kDevice); }, "AT#BCA1B2C3D4E5F620\r\n",
                   {DeviceProperties(kDevice, {Record(32, "")})});
    }
    unsigned Manufacturer() {
        return Ask([] { return vym_bluetooth_get_manufacturer_code(kDevice); },
                   "AT#BCA1B2C3D4E5F621\r\n", {DeviceProperties(kDevice, {Record(33, "")})});
    }
    bt_128_service_t Uuids(const std::string& bytes) {
        return Ask([] { return vym_bluetooth_get_devices_uuids(kDevice); }, "AT#BCA1B2C3D4E5F603\r\n",
                   {DeviceProperties(kDevice, {Record(3, bytes)})});
    }
    bt_bdname_t* Name(const std::string& bytes) {
        return Ask(vym_bluetooth_get_name, "AT#BA01\r\n", {AdapterProperties({Record(1, bytes)})});
    }
    std::string AddressOf(const std::string& bytes) {
        return support::AddressText(
            *Ask(vym_bluetooth_get_address, "AT#BA02\r\n", {AdapterProperties({Record(2, bytes)})}));
    }
    // Known values in all numbers.
    void Reset() {
        Handle({AdapterProperties({Record(4, Number(0x44444444)), Record(7, Number(0x77777777)),
                                   Record(35, Number(0x35353535))}),
                DeviceProperties(kDevice, {Record(32, "2"), Record(33, Number(0x33333333))})});
    }
    void TearDown() override {
        EXPECT_EQ(TimeOuts(), 0U);
        wire::AdapterWireTest::TearDown();
    }
};

TEST_F(AdapterRecords, FillOneFieldEach) {
    Reset();
    EXPECT_EQ(ClassOfDevice(), 0x44444444);
    EXPECT_EQ(ScanMode(), 0x77777777);
    EXPECT_EQ(MostBonded(), 0x35353535);
    EXPECT_EQ(Priority(), 0x32);
    EXPECT_EQ(Manufacturer(), 0x33333333U);
}

uint32_t DiscoverableTimeout() {
    vym::lock_guard held(vym::s_adapter.cache_lock);
    return vym::s_adapter.discoverable_timeout;
}

TEST_F(AdapterRecords, OfTheDiscoverableTimeoutAreKeptThoughNoGetterReturnsThem) {
    Cache(9, Number(0x09080706));
    EXPECT_EQ(DiscoverableTimeout(), 0x09080706U);
    Cache(9, "\x01\x02");
    EXPECT_EQ(DiscoverableTimeout(), 0x09080201U);
    Handle({DeviceProperties(kDevice, {Record(9, Number(0))})});
    EXPECT_EQ(DiscoverableTimeout(), 0x09080201U);
}

TEST_F(AdapterRecords, OfOtherTypesFillNone) {
    Reset();
    std::vector<std::string> others;
    for (const unsigned type : {0U, 3U, 5U, 6U, 9U, 10U, 14U, 16U, 32U, 33U, 34U, 36U, 99U, 255U}) {
        others.push_back(Record(type, Number(0x5A5A5A5A)));
    }
    Handle({AdapterProperties(others)});
    others.clear();
    for (const unsigned type : {0U, 2U, 5U, 7U, 8U, 9U, 15U, 31U, 34U, 35U, 36U, 99U, 255U}) {
        others.push_back(Record(type, Number(0x5A5A5A5A)));
    }
    others.push_back(Record(4, Number(0x5A5A5A5A))); // the device's class, not the adapter's
    Handle({DeviceProperties(kDevice, others)});
    EXPECT_EQ(ClassOfDevice(), 0x44444444);
    EXPECT_EQ(ScanMode(), 0x77777777);
    EXPECT_EQ(MostBonded(), 0x35353535);
    EXPECT_EQ(Priority(), 0x32);
    EXPECT_EQ(Manufacturer(), 0x33333333U);
}

TEST_F(AdapterRecords, ShorterThanTheirNumberOverwriteItsFirstBytes) {
    Reset();
    Handle({AdapterProperties({Record(4, "\x01"), Record(7, "\x01\x02"), Record(35, "\x01\x02\x03")}),
            DeviceProperties(kDevice, {Record(33, "\x01\x02")})});
    EXPECT_EQ(ClassOfDevice(), 0x44444401);
    EXPECT_EQ(ScanMode(), 0x77770201);
    EXPECT_EQ(MostBonded(), 0x35030201);
    EXPECT_EQ(Manufacturer(), 0x33330201U);
}

TEST_F(AdapterRecords, LongerThanTheirNumberAreCut) {
    Reset();
    const std::string longest(255, '\xEE');
    for (const unsigned type : {4U, 7U, 9U, 35U}) {
        Handle({AdapterProperties({Record(type, longest)})});
    }
    Handle({DeviceProperties(kDevice, {Record(32, longest), Record(33, longest)})});
    const int all = static_cast<int>(0xEEEEEEEEU);
    EXPECT_EQ(ClassOfDevice(), all);
    EXPECT_EQ(ScanMode(), all);
    EXPECT_EQ(MostBonded(), all);
    EXPECT_EQ(Priority(), 0xEE);
    EXPECT_EQ(Manufacturer(), 0xEEEEEEEEU);
    Reset();
    Handle({AdapterProperties({Record(4, "\x01\x02\x03\x04\x05")})});
    EXPECT_EQ(ClassOfDevice(), 0x04030201);
    EXPECT_EQ(ScanMode(), 0x77777777);
}

TEST_F(AdapterRecords, OfAddressesAreCut) {
    EXPECT_EQ(AddressOf("\x01\x02\x03\x04\x05\x06\x07\x08"), "060504030201");
    EXPECT_EQ(AddressOf("\x11\x12\x13"), "000000131211");
    EXPECT_EQ(AddressOf(""), "000000000000");
}

// Later records change what the pointer of an earlier call leads to.
TEST_F(AdapterRecords, OfAddressesAreClearedFirst) {
    const bt_bdaddr_t* address = Ask(vym_bluetooth_get_address, "AT#BA02\r\n",
                                     {AdapterProperties({Record(2, "\x01\x02\x03\x04\x05\x06")})});
    EXPECT_EQ(support::AddressText(*address), "060504030201");
    Cache(2, "\x11\x12\x13");
    EXPECT_EQ(support::AddressText(*address), "000000131211");
    Cache(2, "");
    EXPECT_EQ(support::AddressText(*address), "000000000000");
}

TEST_F(AdapterRecords, OfNamesAreClearedFirst) {
    EXPECT_EQ(NameText(*Name("A longer name")), "A longer name");
    const bt_bdname_t* name = Name("Short");
    EXPECT_EQ(NameText(*name), "Short");
    EXPECT_TRUE(std::all_of(name->name + 5, std::end(name->name), [](uint8_t c) { return c == 0; }));
    EXPECT_EQ(NameText(*Name("")), "");
}

TEST_F(AdapterRecords, OfNamesAreCutAt248BytesAndEndWithANul) {
    for (const size_t length : {247U, 248U, 249U, 255U}) {
        std::string text(length, 'n');
        text.back() = '!';
        const bt_bdname_t* name = Name(text);
        EXPECT_EQ(NameText(*name), text.substr(0, 248)) << length;
        EXPECT_EQ(name->name[248], 0) << length;
    }
}

TEST_F(AdapterRecords, OfNamesMayHoldWhatTravelsEscaped) {
    const bt_bdname_t* name = Name(Bytes({'a', 0x0D, 0x0A, 0xDC, 0x00, 'z'}));
    EXPECT_EQ(memcmp(name->name, "a\r\n\xDC\0z\0", 7), 0);
}

TEST_F(AdapterRecords, OfUuidsAreCutAtFive) {
    std::string fifteen;
    for (int i = 0; i < 240; ++i) {
        fifteen += static_cast<char>(i);
    }
    const bt_128_service_t uuids = Uuids(fifteen);
    EXPECT_EQ(uuids.num_service_128bit, 5);
    EXPECT_EQ(memcmp(uuids.services_128bit, fifteen.data(), 80), 0);
    EXPECT_EQ(Uuids(std::string(255, 'u')).num_service_128bit, 5);
    EXPECT_EQ(Uuids(std::string(96, 'u')).num_service_128bit, 5);
}

TEST_F(AdapterRecords, OfUuidsCountWholeOnes) {
    EXPECT_EQ(Uuids(std::string(80, 'u')).num_service_128bit, 5);
    EXPECT_EQ(Uuids(std::string(79, 'u')).num_service_128bit, 4);
    EXPECT_EQ(Uuids(std::string(16, 'u')).num_service_128bit, 1);
    EXPECT_EQ(Uuids(std::string(15, 'u')).num_service_128bit, 0);
    EXPECT_EQ(Uuids("").num_service_128bit, 0);
}

TEST_F(AdapterRecords, BeyondTheirCountAreNotRead) {
    Reset();
    Handle({"BB0001" + Block(Record(4, Number(1)) + Record(7, Number(2)))});
    EXPECT_EQ(ClassOfDevice(), 1);
    EXPECT_EQ(ScanMode(), 0x77777777);
    Handle(
        {"BB0000" + Block(Record(7, Number(2))), "BC00A1B2C3D4E5F600" + Block(Record(33, Number(2)))});
    EXPECT_EQ(ScanMode(), 0x77777777);
    EXPECT_EQ(Manufacturer(), 0x33333333U);
}

TEST_F(AdapterRecords, OfACountBeyondTheValueEndWithTheValue) {
    Reset();
    Handle({"BB00FF" + Block(Record(4, Number(1)) + Record(7, Number(2))),
            "BC00A1B2C3D4E5F6FF" + Block(Record(33, Number(3))), "BB00FF0000",
            "BC00A1B2C3D4E5F6FF0000"});
    EXPECT_EQ(ClassOfDevice(), 1);
    EXPECT_EQ(ScanMode(), 2);
    EXPECT_EQ(Manufacturer(), 3U);
}

TEST_F(AdapterRecords, ThatEndWithinTheirHeaderAreNoRecords) {
    for (const char* header : {"0", "07", "070"}) {
        Reset();
        Handle({"BB0002" + Block(Record(4, Number(1)) + header),
                "BC00A1B2C3D4E5F602" + Block(Record(32, "\x09") + header)});
        EXPECT_EQ(ClassOfDevice(), 1);
        EXPECT_EQ(ScanMode(), 0x77777777);
        EXPECT_EQ(Priority(), 9);
    }
}

bool IsOldOrCut(int value, int old, int cut) {
    return value == old || value == cut;
}

// The last one is dropped or cut to what is there; what stands behind the value is never taken.
TEST_F(AdapterRecords, LongerThanTheValueReadNothingBehindIt) {
    Reset();
    for (const char* length : {"03", "04", "7F", "FF"}) {
        Handle({"BB0002" + Block(Record(4, Number(1)) + "07" + length + "ab") + "wxyz",
                "BC00A1B2C3D4E5F602" + Block(Record(32, "\x09") + "21" + length + "ab") + "wxyz"});
        EXPECT_EQ(ClassOfDevice(), 1);
        EXPECT_PRED3(IsOldOrCut, ScanMode(), 0x77777777, 0x77776261);
        EXPECT_EQ(Priority(), 9);
        EXPECT_PRED3(IsOldOrCut, static_cast<int>(Manufacturer()), 0x33333333, 0x33336261);
    }
}

TEST_F(AdapterRecords, TakeTheirDigitsInEitherCase) {
    Reset();
    Handle({"BB0001" + Block("0a00"), "BB0001" + Block("070aABCDEFGHIJ"),
            "BC00a1b2c3d4e5f601" + Block("2104abcd")});
    EXPECT_EQ(ScanMode(), 0x44434241);
    EXPECT_EQ(Manufacturer(), 0x64636261U);
}

TEST_F(AdapterRecords, OfOneEventAreTakenInTheirOrder) {
    Reset();
    Handle({AdapterProperties(
        {Record(4, Number(1)), Record(4, Number(2)), Record(7, Number(3)), Record(4, Number(0x05))})});
    EXPECT_EQ(ClassOfDevice(), 5);
    EXPECT_EQ(ScanMode(), 3);
}

TEST_F(AdapterRecords, OfTheLargestEventAreAllTaken) {
    Reset();
    // A buffer of 4095 characters, its NUL included: tag, fields, one long run of records.
    std::vector<std::string> records(15, Record(16, std::string(255, 'x')));
    records.push_back(Record(16, std::string(187, 'x')));
    records.push_back(Record(4, "\x01\x01\x01\x01"));
    const std::string event = AdapterProperties(records);
    ASSERT_EQ(event.size(), 4094U);
    Handle({event});
    EXPECT_EQ(ClassOfDevice(), 0x01010101);
}

} // namespace
