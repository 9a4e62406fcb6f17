// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Commands that carry a value: its escaping, its count, and the largest that can be told.

#include "wire/adapter_support.h"

#include <cstring>

namespace {

using namespace std::string_literals;
using wire::AdapterProperties;
using wire::Bytes;
using wire::kDevice;
using wire::Number;
using wire::Record;

uint8_t* Data(std::string& bytes) {
    return reinterpret_cast<uint8_t*>(bytes.data());
}

bt_bdname_t Name(const std::string& text) {
    bt_bdname_t name{};
    EXPECT_LE(text.size(), sizeof name.name);
    memcpy(name.name, text.data(), text.size());
    return name;
}

class AdapterSetters : public wire::AdapterWireTest {
protected:
    // Sets the name and lets the server confirm it.
    void ExpectName(const bt_bdname_t& name, const std::string& command) {
        const auto set = [&name] { return vym_bluetooth_set_name(name); };
        EXPECT_EQ(Ask(set, command, {AdapterProperties({Record(1, "")})}), BT_STATUS_SUCCESS);
        EXPECT_EQ(TimeOuts(), 0U);
    }
};

TEST_F(AdapterSetters, TheScanModeIsFourBytesLowestFirstWithItsZeroesEscaped) {
    const auto set = [] { return vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE); };
    const std::string command =
        "AT#BB070007" + Bytes({0x02, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDD}) + "\r\n";
    EXPECT_EQ(Ask(set, command, {AdapterProperties({Record(7, Number(2))})}), BT_STATUS_SUCCESS);
    EXPECT_EQ(TimeOuts(), 0U);
    Server().ExpectNothingMore();
}

TEST_F(AdapterSetters, ASetterDoesNotTouchWhatItsGetterReturns) {
    Cache(7, Number(1));
    const std::vector<std::string> empty = {AdapterProperties({Record(7, "")})};
    const std::string command =
        "AT#BB070007" + Bytes({0x02, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDD}) + "\r\n";
    Ask([] { return vym_bluetooth_set_scan_mode(BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE); }, command,
        empty);
    EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", empty), BT_SCAN_MODE_CONNECTABLE);
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterSetters, SettersThatWaitGiveUpAfterASecond) {
    const bt_bdname_t name = Name("Car");
    EXPECT_EQ(AskInVain([&name] { return vym_bluetooth_set_name(name); }, "AT#BB010003Car\r\n"),
              BT_STATUS_SUCCESS);
    EXPECT_EQ(Printed("wait for sync event(1) Failed!!!\n"), 1U);
    const auto set_mode = [] {
        return vym_bluetooth_set_scan_mode(static_cast<bt_scan_mode_t>(0x71727374));
    };
    EXPECT_EQ(AskInVain(set_mode, "AT#BB070004tsrq\r\n"), BT_STATUS_SUCCESS);
    EXPECT_EQ(Printed("wait for sync event(7) Failed!!!\n"), 1U);
}

TEST_F(AdapterSetters, TheNameIsSentUpToItsNul) {
    ExpectName(Name("Car"), "AT#BB010003Car\r\n");
    ExpectName(Name(""), "AT#BB010000\r\n");
    ExpectName(Name("two\0words"s), "AT#BB010003two\r\n");
}

TEST_F(AdapterSetters, TheNameIsEscaped) {
    ExpectName(Name(Bytes({'A', 0x0D, 'B', 0x0A, 0xDC, 0xDD})),
               "AT#BB010009" + Bytes({'A', 0xDC, 0xDE, 'B', 0xDC, 0xDF, 0xDC, 0xDC, 0xDD}) + "\r\n");
}

TEST_F(AdapterSetters, TheLongestNameArrivesWhole) {
    std::string longest(248, '-');
    longest.front() = '<';
    longest.back() = '>';
    ExpectName(Name(longest), "AT#BB0100F8" + longest + "\r\n");
}

TEST_F(AdapterSetters, ANameWithoutNulIsSentAsFarAsItGoes) {
    const std::string all(249, 'n');
    ExpectName(Name(all), "AT#BB0100F9" + all + "\r\n");
}

TEST_F(AdapterSetters, NumbersAreLittleEndianAndDoNotWait) {
    EXPECT_EQ(vym_bluetooth_set_discoverable_timeout(0x00DC0D0A), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB090008" + Bytes({0xDC, 0xDF, 0xDC, 0xDE, 0xDC, 0xDC, 0xDC, 0xDD}) +
                           "\r\n");
    EXPECT_EQ(vym_bluetooth_set_discoverable_timeout(-1), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB090004\xFF\xFF\xFF\xFF\r\n");
    EXPECT_EQ(vym_bluetooth_set_discovery_internval(0x12C), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB240006" + Bytes({0x2C, 0x01, 0xDC, 0xDD, 0xDC, 0xDD}) + "\r\n");
    EXPECT_EQ(vym_bluetooth_set_number_of_bonded_devices(0x11223344), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB230004\x44\x33\x22\x11\r\n");
    Server().ExpectNothingMore();
    EXPECT_EQ(TimeOuts(), 0U);
}

TEST_F(AdapterSetters, APropertyOfADeviceGoesBehindItsAddressAndType) {
    std::string value = Bytes({0x00, 'A', 0x0D});
    EXPECT_EQ(vym_bluetooth_set_remote_device_propertie(kDevice, 0x20, 3, Data(value)),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BDA1B2C3D4E5F6200005" + Bytes({0xDC, 0xDD, 'A', 0xDC, 0xDE}) + "\r\n");
}

TEST_F(AdapterSetters, ALengthOfNoneIsAnEmptyValue) {
    std::string value = "unused";
    EXPECT_EQ(vym_bluetooth_set_remote_device_propertie(kDevice, 0x20, 0, Data(value)),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BDA1B2C3D4E5F6200000\r\n");
}

TEST_F(AdapterSetters, NullIsAnEmptyValueWhateverItsLength) {
    EXPECT_EQ(vym_bluetooth_set_remote_device_propertie(kDevice, 0x21, 65535, nullptr),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BDA1B2C3D4E5F6210000\r\n");
    EXPECT_EQ(vym_bluetooth_set_adapter_property(0x21, 7, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BB210000\r\n");
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 0, 16, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BRA1B2C3D4E5F6000000\r\n");
}

TEST_F(AdapterSetters, APinFollowsTheAcceptance) {
    std::string pin = "1234";
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 1, 4, Data(pin)), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BRA1B2C3D4E5F60100041234\r\n");
    std::string binary = Bytes({0xDC, 0x00, 0x0A, 0x0D, 0x7F});
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 0xA5, 5, Data(binary)), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BRA1B2C3D4E5F6A50009" +
                           Bytes({0xDC, 0xDC, 0xDC, 0xDD, 0xDC, 0xDF, 0xDC, 0xDE, 0x7F}) + "\r\n");
}

TEST_F(AdapterSetters, OutOfBandPairingCarriesTransportAndData) {
    std::string data = Bytes({'x', 0x0A, 'y'});
    EXPECT_EQ(vym_bluetooth_create_bond_out_of_bond(kDevice, 0x01020304, 3, Data(data)),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BNA1B2C3D4E5F6010203040004" + Bytes({'x', 0xDC, 0xDF, 'y'}) + "\r\n");
}

TEST_F(AdapterSetters, OutOfBandPairingWithoutDataIsNotSent) {
    std::string data = "x";
    EXPECT_EQ(vym_bluetooth_create_bond_out_of_bond(kDevice, 2, 1, nullptr), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_bluetooth_create_bond_out_of_bond(kDevice, 2, 0, nullptr), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_bluetooth_create_bond_out_of_bond(kDevice, 2, 0, Data(data)), BT_STATUS_NOMEM);
    Server().ExpectNothingMore();
}

TEST_F(AdapterSetters, AValueOf65535EscapedBytesIsTheLargestThatIsSent) {
    // 32767 bytes that double and one that does not.
    std::string value(32767, '\0');
    value += 'z';
    std::string escaped;
    for (int i = 0; i < 32767; ++i) {
        escaped += "\xDC\xDD";
    }
    escaped += 'z';
    EXPECT_EQ(vym_bluetooth_set_remote_device_propertie(kDevice, 0x20, 32768, Data(value)),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BDA1B2C3D4E5F620FFFF" + escaped + "\r\n");

    std::string plain(65535, 'p');
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 1, 65535, Data(plain)), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#BRA1B2C3D4E5F601FFFF" + plain + "\r\n");
}

TEST_F(AdapterSetters, AValueOf65536EscapedBytesIsNotSent) {
    std::string value(65535, 'p');
    value[17] = '\r'; // one more byte than the count can tell
    EXPECT_EQ(vym_bluetooth_set_remote_device_propertie(kDevice, 0x20, 65535, Data(value)),
              BT_STATUS_NOMEM);
    EXPECT_EQ(vym_bluetooth_set_adapter_property(0x20, 65535, Data(value)), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_bluetooth_create_bond_out_of_bond(kDevice, 1, 65535, Data(value)), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 1, 65535, Data(value)), BT_STATUS_NOMEM);
    std::string doubling(65535, '\xDC');
    EXPECT_EQ(vym_bluetooth_pin_reply(kDevice, 1, 65535, Data(doubling)), BT_STATUS_NOMEM);
    Server().ExpectNothingMore();
}

} // namespace
