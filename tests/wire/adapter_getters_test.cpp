// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The calls that wait: what they ask, what they return, and what they return without an answer.

#include "wire/adapter_support.h"

#include <chrono>
#include <cstring>

namespace {

using wire::AdapterProperties;
using wire::DeviceProperties;
using wire::kDevice;
using wire::NameText;
using wire::Number;
using wire::Raw;
using wire::Record;

constexpr bt_bdaddr_t kOther = {{0x06, 0x05, 0x04, 0x03, 0x02, 0x01}};

class AdapterGetters : public wire::AdapterWireTest {
protected:
    // Exactly one wait for this property has ended without an answer.
    void ExpectOneTimeOut(int property) {
        EXPECT_EQ(Printed("wait for sync event(" + std::to_string(property) + ") Failed!!!\n"), 1U);
        EXPECT_EQ(TimeOuts(), 1U);
    }
};

TEST_F(AdapterGetters, TheNameIsAskedForAndReturned) {
    const auto* name =
        Ask(vym_bluetooth_get_name, "AT#BA01\r\n", {AdapterProperties({Record(1, "Car of \xC3\x84")})});
    EXPECT_EQ(NameText(*name), "Car of \xC3\x84");
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, TheAddressIsAskedForAndReturned) {
    const auto* address =
        Ask(vym_bluetooth_get_address, "AT#BA02\r\n", {AdapterProperties({Record(2, Raw(kDevice))})});
    EXPECT_EQ(support::AddressText(*address), "A1B2C3D4E5F6");
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, NumbersAreAskedForAndReturnedLowestByteFirst) {
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n",
                  {AdapterProperties({Record(4, "\x01\x02\x03\x04")})}),
              0x04030201);
    EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n",
                  {AdapterProperties({Record(7, "\x05\x06\x07\x08")})}),
              static_cast<bt_scan_mode_t>(0x08070605));
    EXPECT_EQ(Ask(vym_bluetooth_get_number_of_bonded_devices, "AT#BA23\r\n",
                  {AdapterProperties({Record(35, "\x09\x0A\x0B\x0C")})}),
              0x0C0B0A09);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, TheVersionIsAskedForAndReturned) {
    const char* version = Ask(vym_bluetooth_get_version, "AT#PV\r\n", {"PV2.1 beta"});
    EXPECT_STREQ(version, "2.1 beta");
    EXPECT_EQ(TimeOuts(), 0U);
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Take(), (std::vector<std::string>{"bt_version(\"2.1 beta\")"}));
}

TEST_F(AdapterGetters, TheVersionIsCutTo63CharactersForTheGetterAlone) {
    const std::string longest = std::string(62, 'v') + "!" + "cut";
    const char* version = Ask(vym_bluetooth_get_version, "AT#PV\r\n", {"PV" + longest});
    EXPECT_EQ(std::string(version), std::string(62, 'v') + "!");
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Take(), (std::vector<std::string>{"bt_version(\"" + longest + "\")"}));
    EXPECT_STREQ(Ask(vym_bluetooth_get_version, "AT#PV\r\n", {"PV3"}), "3") << "no tail of the longer";
    EXPECT_STREQ(Ask(vym_bluetooth_get_version, "AT#PV\r\n", {"PV"}), "");
}

TEST_F(AdapterGetters, ADevicesPropertiesAreAskedForWithItsAddress) {
    EXPECT_EQ(Ask([] { return vym_bluetooth_get_device_priority(kDevice); }, "AT#BCA1B2C3D4E5F620\r\n",
                  {DeviceProperties(kDevice, {Record(32, "\x9A")})}),
              0x9A);
    EXPECT_EQ(Ask([] { return vym_bluetooth_get_manufacturer_code(kDevice); },
                  "AT#BCA1B2C3D4E5F621\r\n",
                  {DeviceProperties(kDevice, {Record(33, "\x11\x22\x33\x44")})}),
              0x44332211U);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, ADevicesLongUuidsAreReturnedAsACopy) {
    const std::string two = "0123456789abcdefFEDCBA9876543210";
    const auto get = [] { return vym_bluetooth_get_devices_uuids(kDevice); };
    const bt_128_service_t uuids =
        Ask(get, "AT#BCA1B2C3D4E5F603\r\n", {DeviceProperties(kDevice, {Record(3, two)})});
    EXPECT_EQ(uuids.num_service_128bit, 2);
    EXPECT_EQ(memcmp(uuids.services_128bit, two.data(), two.size()), 0);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, WithoutAnAnswerReturnTheOldNumberAfterASecond) {
    Cache(4, Number(0x240404));
    EXPECT_EQ(AskInVain(vym_bluetooth_get_class, "AT#BA04\r\n"), 0x240404);
    ExpectOneTimeOut(4);
}

TEST_F(AdapterGetters, GiveTheAnswerAWholeSecond) {
    const auto begin = std::chrono::steady_clock::now();
    AskInVain(vym_bluetooth_get_class, "AT#BA04\r\n");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    ExpectOneTimeOut(4);
}

TEST_F(AdapterGetters, WithoutAnAnswerReturnTheOldName) {
    Cache(1, "Before");
    EXPECT_EQ(NameText(*AskInVain(vym_bluetooth_get_name, "AT#BA01\r\n")), "Before");
    ExpectOneTimeOut(1);
}

TEST_F(AdapterGetters, WithoutAnAnswerTheAddressIsZero) {
    Cache(2, Raw(kDevice));
    const auto* address = AskInVain(vym_bluetooth_get_address, "AT#BA02\r\n");
    EXPECT_EQ(support::AddressText(*address), "000000000000");
    ExpectOneTimeOut(2);
}

TEST_F(AdapterGetters, WithoutAnAnswerTheVersionIsTheOldOne) {
    Handle({"PVolder"});
    EXPECT_STREQ(AskInVain(vym_bluetooth_get_version, "AT#PV\r\n"), "older");
    ExpectOneTimeOut(34);
}

TEST_F(AdapterGetters, OtherPropertiesDoNotWakeThem) {
    Cache(7, Number(1));
    const std::vector<std::string> others = {
        AdapterProperties({Record(4, Number(5)), Record(1, "n"), Record(0, "z"), Record(36, "i")}),
        DeviceProperties(kOther, {Record(7, Number(9))}), "PV7", "BE07"};
    EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", others), BT_SCAN_MODE_CONNECTABLE);
    ExpectOneTimeOut(7);
}

TEST_F(AdapterGetters, AnswersFromAnotherDeviceDoNotWakeThemButAreKept) {
    Handle({DeviceProperties(kDevice, {Record(32, "\x01")})});
    const auto get = [] { return vym_bluetooth_get_device_priority(kDevice); };
    EXPECT_EQ(Ask(get, "AT#BCA1B2C3D4E5F620\r\n", {DeviceProperties(kOther, {Record(32, "\x02")})}), 2)
        << "the cache is one for all devices";
    ExpectOneTimeOut(32);
}

TEST_F(AdapterGetters, TheAnswerMayStandAmongOthers) {
    const std::string answer =
        AdapterProperties({Record(1, "Car"), Record(4, Number(0x240404)), Record(7, Number(2))});
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {"BE01", answer, "BE00"}), 0x240404);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, TheStatusOfAnAnswerIsNotLookedAt) {
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {"BB0101" + wire::Block("0404abcd")}),
              0x64636261);
    const auto get = [] { return vym_bluetooth_get_device_priority(kDevice); };
    EXPECT_EQ(Ask(get, "AT#BCA1B2C3D4E5F620\r\n", {"BCFFA1B2C3D4E5F601" + wire::Block("2001Q")}), 'Q');
    EXPECT_EQ(TimeOuts(), 0U);
}

// A record is an answer by its type alone, though its value is of no use to this event.
TEST_F(AdapterGetters, ARecordOfTheAwaitedTypeWakesThemInEitherEvent) {
    Handle({"PV1.0", DeviceProperties(kDevice, {Record(33, Number(0x55))})});
    EXPECT_STREQ(Ask(vym_bluetooth_get_version, "AT#PV\r\n", {AdapterProperties({Record(34, "2.0")})}),
                 "1.0");
    const auto get = [] { return vym_bluetooth_get_manufacturer_code(kDevice); };
    EXPECT_EQ(Ask(get, "AT#BCA1B2C3D4E5F621\r\n", {AdapterProperties({Record(33, Number(0x66))})}),
              0x55U);
    // That request has left kDevice as the one that is asked about.
    Cache(7, Number(1));
    EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n",
                  {DeviceProperties(kDevice, {Record(7, Number(2))})}),
              BT_SCAN_MODE_CONNECTABLE);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterGetters, TheStateIsToldWithoutAsking) {
    Handle({"PA01"});
    EXPECT_EQ(vym_bluetooth_get_state(), BT_STATE_ON);
    Handle({"PAEF"});
    EXPECT_EQ(static_cast<int>(vym_bluetooth_get_state()), 0xEF);
    Handle({"PA00"});
    EXPECT_EQ(vym_bluetooth_get_state(), BT_STATE_OFF);
    Server().ExpectNothingMore();
    EXPECT_EQ(TimeOuts(), 0U);
}

} // namespace
