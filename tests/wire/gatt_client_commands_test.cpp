// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the GATT client writes, apart from scanning and advertising and from the
// two that wait.

#include "vym_gatt_client_impl.h"
#include "wire/gatt_client_profile.h"

#include <limits>

namespace {

using gattc::kCharSent;
using gattc::kCharUuid;
using gattc::kDescrSent;
using gattc::kDescrUuid;
using gattc::kPeer;
using gattc::kServiceSent;
using gattc::kServiceUuid;
using support::Bytes;

class GattClientCommands : public gattc::GattClientCommandTest {};

bt_status_t WriteCharacteristic(uint16_t length, uint8_t* value) {
    return vym_gatt_client_write_characteristic(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE, kCharUuid,
                                                0x02, 0x01, length, value);
}

bt_status_t WriteDescriptor(uint16_t length, uint8_t* value) {
    return vym_gatt_client_write_descriptor(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE, kCharUuid,
                                            0xF012, kDescrUuid, 0x03, 0x04, length, value);
}

const std::string kCharCommand = "1234"
                                 "56"
                                 "789A" +
                                 kServiceSent + "BCDE" + kCharSent;
const std::string kDescrCommand = kCharCommand + "F012" + kDescrSent;

TEST_F(GattClientCommands, AboutClientsAndConnections) {
    ExpectCommands({
        {"unregister", [] { return vym_gatt_client_unregister(0xA5); }, "AT#KBA5\r\n"},
        {"connect_ex", [] { return vym_gatt_client_connect_ex(0x05, kPeer, 0x01, 0x02); },
         "AT#KE05A1B2C3D4E5F60102\r\n"},
        {"disconnect", [] { return vym_gatt_client_disconnect(0x05, kPeer, 0x1234); },
         "AT#KF05A1B2C3D4E5F61234\r\n"},
        {"listen", [] { return vym_gatt_client_listen(0x05, 0x01); }, "AT#KD0501\r\n"},
        {"listen_ex", [] { return vym_gatt_client_listen_ex(0x05, 0x01, 0x1234, 0xABCD); },
         "AT#KZA05011234ABCD\r\n"},
        {"refresh", [] { return vym_gatt_client_refresh(0x05, kPeer); }, "AT#KG05A1B2C3D4E5F6\r\n"},
        {"connection_parameter_update",
         [] {
             return vym_gatt_connection_parameter_update(0x05, kPeer, 0x1234, 0x5678, 0x9ABC, 0xDEF0);
         },
         "AT#KR05A1B2C3D4E5F6123456789ABCDEF0\r\n"},
        {"read_remote_rssi", [] { return vym_gatt_client_read_remote_rssi(0x05, kPeer); },
         "AT#KU05A1B2C3D4E5F6\r\n"},
        {"configure_mtu", [] { return vym_gatt_client_configure_mtu(0x1234, 0x0205); },
         "AT#KY12340205\r\n"},
    });
}

TEST_F(GattClientCommands, AboutServices) {
    ExpectCommands({
        {"search_service", [] { return vym_gatt_client_search_service(0x1234, 0x01, 0x180D); },
         "AT#KH123401180D\r\n"},
        {"get_included_service",
         [] {
             return vym_gatt_client_get_included_service(0x1234, 0x56, 0x789A, kServiceUuid, 0xBC,
                                                         0xDEF0, kCharUuid);
         },
         "AT#KI123456789AFFEEDDCCBBAA99887766554433221100BCDEF0F0E1D2C3B4A5968778695A4B3C2D1E0F\r\n"},
        {"get_characteristic",
         [] {
             return vym_gatt_client_get_characteristic(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE,
                                                       kCharUuid);
         },
         "AT#KJ123456789AFFEEDDCCBBAA99887766554433221100BCDEF0E1D2C3B4A5968778695A4B3C2D1E0F\r\n"},
        {"get_descriptor",
         [] {
             return vym_gatt_client_get_descriptor(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE,
                                                   kCharUuid, 0xF012, kDescrUuid);
         },
         "AT#KK123456789AFFEEDDCCBBAA99887766554433221100BCDEF0E1D2C3B4A5968778695A4B3C2D1E0F"
         "F01298BADCFEEFCDAB8967452301EFBEADDE\r\n"},
    });
}

TEST_F(GattClientCommands, AboutValues) {
    ExpectCommands({
        {"read_characteristic",
         [] {
             return vym_gatt_client_read_characteristic(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE,
                                                        kCharUuid, 0x02);
         },
         "AT#KL" + kCharCommand + "02\r\n"},
        {"write_characteristic",
         [] {
             uint8_t value[] = {'h', 'i', '!'};
             return WriteCharacteristic(3, value);
         },
         "AT#KM" + kCharCommand + "02010003hi!\r\n"},
        {"read_descriptor",
         [] {
             return vym_gatt_client_read_descriptor(0x1234, 0x56, 0x789A, kServiceUuid, 0xBCDE,
                                                    kCharUuid, 0xF012, kDescrUuid, 0x02);
         },
         "AT#KN" + kDescrCommand + "02\r\n"},
        {"write_descriptor",
         [] {
             uint8_t notifications[] = {0x01, 0x00};
             return WriteDescriptor(2, notifications);
         },
         "AT#KO" + kDescrCommand + "03040003" + Bytes({0x01, 0xDC, 0xDD}) + "\r\n"},
        {"execute_write", [] { return vym_gatt_client_execute_write(0x1234, 0x01); },
         "AT#KP123401\r\n"},
        {"register_for_notifications",
         [] {
             return vym_gatt_client_register_for_notifications(0x05, kPeer, 0x56, 0x789A, kServiceUuid,
                                                               0xBCDE, kCharUuid, 0x01);
         },
         "AT#KQ05A1B2C3D4E5F656789A" + kServiceSent + "BCDE" + kCharSent + "01\r\n"},
    });
}

TEST_F(GattClientCommands, NumbersGoAsTheyAre) {
    ExpectCommands({
        {"zeroes", [] { return vym_gatt_client_connect_ex(0, {}, 0, 0); },
         "AT#KE000000000000000000\r\n"},
        {"the greatest", [] { return vym_gatt_client_search_service(0xFFFF, 0xFF, 0xFFFF); },
         "AT#KHFFFFFFFFFF\r\n"},
        {"a parameter out of its range",
         [] { return vym_gatt_connection_parameter_update(0xFF, kPeer, 0xFFFF, 0, 0xFFFF, 0); },
         "AT#KRFFA1B2C3D4E5F6FFFF0000FFFF0000\r\n"},
        {"a 16-bit UUID on the base",
         [] {
             const bt_uuid_t heart_rate = GATT_UUID_FROM_16(0x180D);
             return vym_gatt_client_register_client(heart_rate);
         },
         "AT#KAFB349B5F80000080001000000D180000\r\n"},
    });
}

TEST_F(GattClientCommands, AValueIsEscapedAndCountedAsItTravels) {
    uint8_t value[] = {0x0D, 0x41};
    EXPECT_EQ(WriteCharacteristic(2, value), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KM" + kCharCommand + "02010003" + Bytes({0xDC, 0xDE, 'A'}) + "\r\n");
    uint8_t all[] = {0x00, 0x0A, 0x0D, 0xDC, 0xDD};
    EXPECT_EQ(WriteDescriptor(5, all), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KO" + kDescrCommand + "03040009" +
                           Bytes({0xDC, 0xDD, 0xDC, 0xDF, 0xDC, 0xDE, 0xDC, 0xDC, 0xDD}) + "\r\n");
}

TEST_F(GattClientCommands, AValueMayBeEmpty) {
    uint8_t value[] = {'x'};
    EXPECT_EQ(WriteCharacteristic(0, value), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KM" + kCharCommand + "02010000\r\n");
    EXPECT_EQ(WriteCharacteristic(500, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KM" + kCharCommand + "02010000\r\n");
    EXPECT_EQ(WriteDescriptor(0, nullptr), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KO" + kDescrCommand + "03040000\r\n");
    Server().ExpectNothingMore();
}

TEST_F(GattClientCommands, AValueMayTake65535CharactersAndNoMore) {
    std::vector<uint8_t> value(32768, 0x00);
    value.front() = 'v';
    std::string sent = "v";
    for (int i = 0; i < 32767; ++i) {
        sent += "\xDC\xDD";
    }
    EXPECT_EQ(WriteCharacteristic(32768, value.data()), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KM" + kCharCommand + "0201FFFF" + sent + "\r\n");
    value.front() = 0x0A;
    EXPECT_EQ(WriteCharacteristic(32768, value.data()), BT_STATUS_NOMEM);
    EXPECT_EQ(WriteDescriptor(32768, value.data()), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_gatt_send_data(32768, value.data()), BT_STATUS_NOMEM);
    Server().ExpectNothingMore();
}

TEST_F(GattClientCommands, ThatNothingSends) {
    ExpectCommands({
        {"register_client", [] { return vym_gatt_client_register_client(kServiceUuid); },
         "AT#KAFFEEDDCCBBAA99887766554433221100\r\n"},
        {"unregister_client", [] { return vym_gatt_client_unregister_client(0xA5); }, "AT#KBA5\r\n"},
        {"connect_impl", [] { return vym_gatt_client_connect_impl(0x05, kPeer, 0x01, 0x02); },
         "AT#KE05A1B2C3D4E5F60102\r\n"},
        {"dump", [] { return vym_gatt_client_dump(0x1234); }, "AT#KV1234\r\n"},
        {"cleanup", vym_gatt_cleanup, "AT#KW\r\n"},
        {"send_data",
         [] {
             uint8_t data[] = {0x0A, 'b'};
             return vym_gatt_send_data(2, data);
         },
         "AT#KSB0003" + Bytes({0xDC, 0xDF, 'b'}) + "\r\n"},
        {"send_data of nothing", [] { return vym_gatt_send_data(2, nullptr); }, "AT#KSB0000\r\n"},
    });
}

TEST_F(GattClientCommands, ATestsWordsAreTheirLow32Bits) {
    ExpectCommands({
        {"different values",
         [] {
             return vym_gatt_test(0x01234567, 0x12345678, 0x7ABCDEF0, kPeer, 0x11223344, 0x55667788, 3,
                                  0x0A0B0C0D, 0x5A);
         },
         "AT#KT01234567123456787ABCDEF0A1B2C3D4E5F61122334455667788000000030A0B0C0D5A\r\n"},
        {"negative",
         [] {
             return vym_gatt_test(-1, -2, std::numeric_limits<long>::min(), kPeer, -3, -4, -5, -6, -7);
         },
         "AT#KTFFFFFFFFFFFFFFFE" + std::string(sizeof(long) == 4 ? "80000000" : "00000000") +
             "A1B2C3D4E5F6FFFFFFFDFFFFFFFCFFFFFFFBFFFFFFFAFFFFFFF9\r\n"},
        {"the last number takes the digits it needs",
         [] { return vym_gatt_test(0, 0, 0, {}, 0, 0, 0, 0, 0x123); },
         "AT#KT" + std::string(68, '0') + "123\r\n"},
    });
}

TEST_F(GattClientCommands, AreSentWithoutInitAndAfterDone) {
    vym_gatt_client_done();
    EXPECT_EQ(vym_gatt_client_refresh(1, kPeer), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#KG01A1B2C3D4E5F6\r\n");
}

TEST_F(GattClientCommands, InitAndDoneSendNothing) {
    vym_gatt_client_done();
    vym_gatt_client_init(nullptr);
    vym_gatt_client_done();
    Server().ExpectNothingMore();
}

TEST_F(GattClientCommands, AreDroppedWhileUnconnected) {
    Session().Stop();
    EXPECT_EQ(vym_gatt_client_unregister(1), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_gatt_client_connect_ex(1, kPeer, 1, 2), BT_STATUS_SUCCESS);
    EXPECT_EQ(WriteCharacteristic(0, nullptr), BT_STATUS_SUCCESS);
}

TEST_F(GattClientCommands, MayBeSentFromACallback) {
    wire::ProfileRecord().SetHook([](const std::string&) {
        vym_gatt_client_search_service(0x1234, 1, 0);
        uint8_t value[] = {'x'};
        WriteCharacteristic(1, value);
    });
    ExpectDelivered("KE0512340FA1B2C3D4E5F6", {"connected(5, 4660, 15, A1B2C3D4E5F6)"});
    Server().ExpectCommand("AT#KH1234010000\r\n");
    Server().ExpectCommand("AT#KM" + kCharCommand + "02010001x\r\n");
    Server().ExpectNothingMore();
}

} // namespace
