// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of the GATT client, against the simulated strap and sensor.

#include "e2e/every_function.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::Bytes;
using e2e::Heard;
using e2e::kNobody;
using e2e::kSensor;
using e2e::kStrap;

constexpr bt_uuid_t kApplication = GATT_UUID_FROM_16(0xFFF1);
constexpr bt_uuid_t kOther = GATT_UUID_FROM_16(0xFFF2);
constexpr bt_uuid_t kHeartRate = GATT_UUID_FROM_16(0x180D);
constexpr bt_uuid_t kMeasurement = GATT_UUID_FROM_16(0x2A37);
constexpr bt_uuid_t kControlPoint = GATT_UUID_FROM_16(0x2A39);
constexpr bt_uuid_t kBattery = GATT_UUID_FROM_16(0x180F);
constexpr bt_uuid_t kBatteryLevel = GATT_UUID_FROM_16(0x2A19);
constexpr bt_uuid_t kEnvironment = GATT_UUID_FROM_16(0x181A);
constexpr bt_uuid_t kTemperature = GATT_UUID_FROM_16(0x2A6E);
constexpr bt_uuid_t kConfiguration = GATT_UUID_FROM_16(0x2902);
constexpr bt_uuid_t kDescription = GATT_UUID_FROM_16(0x2901);
/** Asks for the first one. */
constexpr bt_uuid_t kFirst{};

constexpr bt_uuid_t OwnUuid(uint8_t number) {
    return {{0x7F, 0x45, 0x00, number, 0x6D, 0x79, 0x4C, 0x6F, 0x67, 0x67, 0x69, 0x6E, 0x67, 0x75, 0x6E,
             0x69}};
}
constexpr bt_uuid_t kLogbook = OwnUuid(0);
constexpr bt_uuid_t kLog = OwnUuid(1);

constexpr int kGattError = 0x85;
constexpr int kWriteNotPermitted = 3;

class EveryGattClientFunction : public e2e::EveryFunction {
protected:
    /** The first client's first connection. */
    void Connect(const bt_bdaddr_t& address) {
        EXPECT_EQ(vym_gatt_client_connect(address, 1, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("gatt_client.connected", 1, 1, 0, address));
    }
};

TEST_F(EveryGattClientFunction, RegistersAndUnregistersClients) {
    EXPECT_EQ(CALL(vym_gatt_client_register)(kApplication, nullptr), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("-> gatt_client onClientRegistered status=0 client_if=1 uuid=FFF1\n"));
    EXPECT_EQ(CALL(vym_gatt_client_connect_ex)(1, kStrap, 1, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.connected", 1, 1, 0, kStrap));
    EXPECT_EQ(CALL(vym_gatt_client_disconnect)(1, kStrap, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.disconnected", 1, 1, 0, kStrap));
    EXPECT_TRUE(Notes("<- gatt_client unregister client_if=1\n")) << "by the library itself";
    EXPECT_EQ(CALL(vym_gatt_client_unregister)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("no GATT client 1 is registered\n"));
    EXPECT_EQ(vym_gatt_client_connect_ex(1, kStrap, 1, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.connected", 1, 0, kGattError, kStrap));
}

TEST_F(EveryGattClientFunction, RegistersClientsForAServer) {
    const auto hear = [](uint8_t client_if, bt_uuid_t uuid) {
        Heard().Add(e2e::CallText("client", client_if, uuid));
    };
    EXPECT_EQ(CALL(vym_gatt_client_register_client_for_server)(kOther, hear), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("client", 1, kOther));
    EXPECT_EQ(CALL(vym_gatt_client_unregister_client_for_server)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("<- gatt_client unregister client_if=1\n"));
    EXPECT_EQ(vym_gatt_client_register(kApplication, nullptr), BT_STATUS_SUCCESS);
    EXPECT_FALSE(Heard().Contains(e2e::CallText("client", 2, kApplication)));
}

TEST_F(EveryGattClientFunction, ScansAndConnects) {
    EXPECT_EQ(CALL(vym_gatt_client_scan)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("gatt_client.scan_address_name", kStrap, 11, std::string("4865617274207374726170")));
    EXPECT_EQ(CALL(vym_gatt_client_scan)(0), BT_STATUS_SUCCESS);
    EXPECT_EQ(CALL(vym_gatt_client_connect)(kStrap, 1, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.connected", 1, 1, 0, kStrap));
    EXPECT_TRUE(WorldShows("\"Heart strap\" -74 dBm, connected\n"));
}

TEST_F(EveryGattClientFunction, FindsServicesAndWhatIsInThem) {
    Connect(kSensor);
    EXPECT_EQ(CALL(vym_gatt_client_search_service)(1, 1, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.search_result", 1, GATT_SERVICE_TYPE_PRIMARY, 0, kEnvironment));
    EXPECT_TRUE(Hears("gatt_client.search_completed", 1, 0));
    EXPECT_EQ(CALL(vym_gatt_client_get_included_service)(1, 0, 0, kEnvironment, 0, 0, kFirst),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.get_included_service", 1, 0, 0, 0, kEnvironment,
                      GATT_SERVICE_TYPE_SECONDARY, 0, kLogbook));
    EXPECT_EQ(CALL(vym_gatt_client_get_characteristic)(1, 0, 0, kEnvironment, 0, kFirst),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.get_characteristic", 1, 0, 0, 0, kEnvironment, 0, kTemperature,
                      GATT_CHAR_PROP_READ | GATT_CHAR_PROP_NOTIFY | GATT_CHAR_PROP_INDICATE));
    EXPECT_EQ(
        CALL(vym_gatt_client_get_descriptor)(1, 0, 0, kEnvironment, 0, kTemperature, 0, kConfiguration),
        BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("gatt_client.get_descriptor", 1, 0, 0, 0, kEnvironment, 0, kTemperature, 0, kDescription))
        << "the one behind the configuration";
}

TEST_F(EveryGattClientFunction, ReadsAndWrites) {
    Connect(kStrap);
    EXPECT_EQ(CALL(vym_gatt_client_read_characteristic)(1, 0, 0, kBattery, 0, kBatteryLevel, 0),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.read_characteristic", 1, 0, 0, 0, kBattery, 0, kBatteryLevel, 0, 1,
                      std::string("57")));
    EXPECT_EQ(CALL(vym_gatt_client_write_characteristic)(1, 0, 0, kHeartRate, 0, kControlPoint,
                                                         GATT_WRITE_TYPE_DEFAULT, 0, 1, Bytes("\1")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.write_characteristic", 1, 0, 0, 0, kHeartRate, 0, kControlPoint));
    EXPECT_TRUE(Notes("the peripheral's 2A39 is now 01\n"));
    EXPECT_EQ(vym_gatt_client_write_characteristic(1, 0, 0, kBattery, 0, kBatteryLevel,
                                                   GATT_WRITE_TYPE_DEFAULT, 0, 1, Bytes("\1")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.write_characteristic", 1, kWriteNotPermitted, 0, 0, kBattery, 0,
                      kBatteryLevel));
}

TEST_F(EveryGattClientFunction, WritesALongValueInPieces) {
    Connect(kSensor);
    const auto prepare = [](const char* piece) {
        return vym_gatt_client_write_characteristic(1, 1, 0, kLogbook, 0, kLog, GATT_WRITE_TYPE_PREPARE,
                                                    0, 3, Bytes(piece));
    };
    EXPECT_EQ(prepare("abc"), BT_STATUS_SUCCESS);
    EXPECT_EQ(prepare("def"), BT_STATUS_SUCCESS);
    EXPECT_EQ(CALL(vym_gatt_client_execute_write)(1, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.execute_completed", 1, 0));
    EXPECT_EQ(vym_gatt_client_read_characteristic(1, 1, 0, kLogbook, 0, kLog, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.read_characteristic", 1, 0, 1, 0, kLogbook, 0, kLog, 0, 6,
                      std::string("616263646566")));
}

TEST_F(EveryGattClientFunction, SubscribesToAValue) {
    Connect(kStrap);
    EXPECT_EQ(CALL(vym_gatt_client_register_for_notifications)(1, kStrap, 0, 0, kHeartRate, 0,
                                                               kMeasurement, 1),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("gatt_client.register_for_notifications", 1, 0, 1, 0, 0, kHeartRate, 0, kMeasurement));
    uint8_t on[] = {GATT_CCCD_NOTIFICATION, 0};
    EXPECT_EQ(CALL(vym_gatt_client_write_descriptor)(1, 0, 0, kHeartRate, 0, kMeasurement, 0,
                                                     kConfiguration, GATT_WRITE_TYPE_DEFAULT, 0, 2, on),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.write_descriptor", 1, 0, 0, 0, kHeartRate, 0, kMeasurement, 0,
                      kConfiguration));
    EXPECT_EQ(CALL(vym_gatt_client_read_descriptor)(1, 0, 0, kHeartRate, 0, kMeasurement, 0,
                                                    kConfiguration, 0),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.read_descriptor", 1, 0, 0, 0, kHeartRate, 0, kMeasurement, 0,
                      kConfiguration, 0, 2, std::string("0100")));
    EXPECT_EQ(Order("peripheral \"Heart strap\" notify 2A37 0040"), "ok\n");
    EXPECT_TRUE(Hears("gatt_client.notify", 1, kStrap, 0, 0, kHeartRate, 0, kMeasurement, 1, 2,
                      std::string("0040")));
}

TEST_F(EveryGattClientFunction, ConcernsAWholeConnection) {
    Connect(kStrap);
    EXPECT_EQ(CALL(vym_gatt_client_configure_mtu)(1, 500), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.configure_mtu", 1, 0, 247));
    EXPECT_EQ(CALL(vym_gatt_client_read_remote_rssi)(1, kStrap), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.read_remote_rssi", 1, kStrap, 256 - 74, 0));
    EXPECT_EQ(vym_gatt_client_read_remote_rssi(1, kNobody), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.read_remote_rssi", 1, kNobody, 0, kGattError));
    EXPECT_EQ(CALL(vym_gatt_connection_parameter_update)(1, kStrap, 6, 12, 0, 100), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("connection parameters accepted\n"));
    EXPECT_EQ(vym_gatt_connection_parameter_update(1, kStrap, 12, 6, 0, 100), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("connection parameters refused: "));
    EXPECT_EQ(CALL(vym_gatt_client_refresh)(1, kStrap), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("nothing is cached of C64865617274\n"));
}

TEST_F(EveryGattClientFunction, Advertises) {
    EXPECT_EQ(vym_gatt_client_register(kApplication, nullptr), BT_STATUS_SUCCESS);
    EXPECT_EQ(CALL(vym_gatt_client_set_adv_data)(1, 0, 1, 0, 0x0300, 0, nullptr, 0, nullptr, 2,
                                                 Bytes("\x1A\x18")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("advertisement: 02 01 06 08 09 76 79 6D 2D 73 69 6D 03 19 00 03 03 03 1A 18\n"));
    EXPECT_EQ(CALL(vym_gatt_client_listen)(1, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.advertise_callback", 0, 1));
    EXPECT_TRUE(Notes("the client advertises\n"));
    EXPECT_EQ(vym_gatt_client_listen(1, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("the client no longer advertises\n"));
    EXPECT_EQ(CALL(vym_gatt_client_listen_ex)(1, 1, 0x20, 0x40), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("the client advertises\n"));
    EXPECT_EQ(vym_gatt_client_listen_ex(1, 1, 0x40, 0x20), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.advertise_callback", kGattError, 1))
        << "the smaller one comes first";
    EXPECT_EQ(CALL(vym_gatt_client_set_adv_command)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_client.advertise_callback", 0, 0));
}

} // namespace
