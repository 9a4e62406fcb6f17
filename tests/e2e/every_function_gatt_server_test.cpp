// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of the GATT server, against the simulated tablet.

#include "e2e/every_function.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::Bytes;
using e2e::Heard;
using e2e::kNobody;
using e2e::kTablet;

constexpr bt_uuid_t kApplication = GATT_UUID_FROM_16(0xFFF1);
constexpr bt_uuid_t kEnvironment = GATT_UUID_FROM_16(0x181A);
constexpr bt_uuid_t kBattery = GATT_UUID_FROM_16(0x180F);
constexpr bt_uuid_t kTemperature = GATT_UUID_FROM_16(0x2A6E);
constexpr bt_uuid_t kConfiguration = GATT_UUID_FROM_16(0x2902);

constexpr int kGattError = 0x85;
/** The first service begins with it; the others follow. */
constexpr uint16_t kService = 32;
constexpr uint16_t kValue = kService + 2;
constexpr uint16_t kSwitch = kService + 3;

class EveryGattServerFunction : public e2e::EveryFunction {
protected:
    void Register() {
        EXPECT_EQ(vym_gatt_server_register_app(kApplication), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("gatt_server.server_registered", 0, 1, kApplication));
    }

    void AddService(const bt_uuid_t& uuid, uint16_t handle) {
        EXPECT_EQ(vym_gatt_server_add_service(1, 0, 0, uuid, 5), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("gatt_server.service_added", 0, 1, 0, 0, uuid, handle));
    }

    void AddValue(uint8_t properties) {
        EXPECT_EQ(
            vym_gatt_server_add_characteristic(1, kService, kTemperature, properties, PERMISSION_READ),
            BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("gatt_server.characteristic_added", 0, 1, kTemperature, kService, kValue));
    }

    void Start() {
        EXPECT_EQ(vym_gatt_server_start_service(1, kService, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("gatt_server.service_started", 0, 1, kService));
    }
};

TEST_F(EveryGattServerFunction, RegistersAndUnregistersApplications) {
    EXPECT_EQ(CALL(vym_gatt_server_register_app)(kApplication), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.server_registered", 0, 1, kApplication));
    EXPECT_EQ(CALL(vym_gatt_server_unregister_app)(1), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_gatt_server_unregister_app(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("no GATT server 1 is registered\n")) << "any more";
}

TEST_F(EveryGattServerFunction, RegistersAClientOfItsOwn) {
    const auto hear = [](uint8_t client_if, bt_uuid_t uuid) {
        Heard().Add(e2e::CallText("client", client_if, uuid));
    };
    EXPECT_EQ(CALL(vym_gatt_server_register_client)(kApplication, hear), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("client", 1, kApplication));
    EXPECT_EQ(CALL(vym_gatt_server_unregister_client)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("<- gatt_client unregister client_if=1\n"));
    EXPECT_EQ(vym_gatt_client_register(kApplication, nullptr), BT_STATUS_SUCCESS);
    EXPECT_FALSE(Heard().Contains(e2e::CallText("client", 2, kApplication)));
}

TEST_F(EveryGattServerFunction, BuildsServices) {
    Register();
    EXPECT_EQ(CALL(vym_gatt_server_add_service)(1, 0, 0, kEnvironment, 5), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.service_added", 0, 1, 0, 0, kEnvironment, kService));
    EXPECT_EQ(CALL(vym_gatt_server_add_characteristic)(1, kService, kTemperature, GATT_CHAR_PROP_READ,
                                                       PERMISSION_READ),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.characteristic_added", 0, 1, kTemperature, kService, kValue));
    EXPECT_EQ(CALL(vym_gatt_server_add_descriptor)(1, kService, kConfiguration,
                                                   PERMISSION_READ | PERMISSION_WRITE),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.descriptor_added", 0, 1, kConfiguration, kService, kSwitch));
    AddService(kBattery, kService + 5);
    EXPECT_EQ(CALL(vym_gatt_server_add_included_service)(1, kService, kService + 5), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.included_service_added", 0, 1, kService, kService + 5));
    EXPECT_EQ(vym_gatt_server_add_included_service(1, kService, kService + 5), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.included_service_added", 0x80, 1, kService, kService + 5))
        << "five handles were set aside";
}

TEST_F(EveryGattServerFunction, StartsStopsAndDeletesServices) {
    Register();
    AddService(kEnvironment, kService);
    EXPECT_EQ(CALL(vym_gatt_server_start_service)(1, kService, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.service_started", 0, 1, kService));
    EXPECT_EQ(CALL(vym_gatt_server_stop_service)(1, kService), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.service_stopped", 0, 1, kService));
    EXPECT_EQ(Order("tablet connect"), "error: the client has started no service\n");
    EXPECT_EQ(CALL(vym_gatt_server_delete_service)(1, kService), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.service_deleted", 0, 1, kService));
    EXPECT_EQ(vym_gatt_server_start_service(1, kService, GATT_TRANSPORT_LE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.service_started", kGattError, 1, kService)) << "it is gone";
}

TEST_F(EveryGattServerFunction, ConnectsAndDisconnects) {
    Register();
    EXPECT_EQ(CALL(vym_gatt_server_connect)(1, kTablet, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.client_connected", kTablet, 1, 1, 1));
    EXPECT_EQ(CALL(vym_gatt_server_disconnect)(1, kTablet, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.client_connected", kTablet, 0, 1, 1));
    EXPECT_EQ(vym_gatt_server_connect(1, kNobody, 0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("waiting for 010203040506 to appear\n"));
    EXPECT_EQ(vym_gatt_server_connect(7, kTablet, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.client_connected", kTablet, 0, 0, 7)) << "nobody registered as 7";
}

TEST_F(EveryGattServerFunction, AnswersAReaderAndNotifiesIt) {
    Register();
    AddService(kEnvironment, kService);
    AddValue(GATT_CHAR_PROP_READ | GATT_CHAR_PROP_NOTIFY);
    EXPECT_EQ(
        vym_gatt_server_add_descriptor(1, kService, kConfiguration, PERMISSION_READ | PERMISSION_WRITE),
        BT_STATUS_SUCCESS);
    Start();
    EXPECT_EQ(Order("tablet connect"), "ok\n");
    EXPECT_TRUE(Hears("gatt_server.client_connected", kTablet, 1, 1, 1));
    EXPECT_TRUE(Hears("gatt_server.attribute_read", kTablet, 1, 1, kValue, 0, 0));
    EXPECT_EQ(CALL(vym_gatt_server_send_response)(1, 1, 1, 0, kValue, 0, 0, 2, Bytes("\x66\x08")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.response_send_completed", 0, kValue));
    EXPECT_TRUE(
        Hears("gatt_server.attribute_write", kTablet, 1, 2, kSwitch, 0, 1, 0, 2, std::string("0100")));
    EXPECT_EQ(CALL(vym_gatt_server_send_notification)(1, kValue, 1, 2, Bytes("\x67\x08")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.notification_sent", 1, kGattError)) << "not before the answer";
    EXPECT_EQ(vym_gatt_server_send_response(1, 1, 2, 0, kSwitch, 0, 0, 2, Bytes("\1\0")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.response_send_completed", 0, kSwitch));
    EXPECT_EQ(vym_gatt_server_send_notification(1, kValue, 1, 2, Bytes("\x67\x08")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.notification_sent", 1, 0));
    EXPECT_TRUE(Notes("Tablet receives a notification of handle 34: 67 08\n"));
    EXPECT_EQ(Order("tablet congestion on"), "ok\n");
    EXPECT_EQ(vym_gatt_server_send_notification(1, kValue, 1, 2, Bytes("\x67\x08")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.notification_sent", 1, 0x8F));
}

TEST_F(EveryGattServerFunction, IndicatesAValue) {
    Register();
    AddService(kEnvironment, kService);
    AddValue(GATT_CHAR_PROP_INDICATE);
    EXPECT_EQ(
        vym_gatt_server_add_descriptor(1, kService, kConfiguration, PERMISSION_READ | PERMISSION_WRITE),
        BT_STATUS_SUCCESS);
    Start();
    EXPECT_EQ(Order("tablet connect"), "ok\n");
    EXPECT_TRUE(
        Hears("gatt_server.attribute_write", kTablet, 1, 1, kSwitch, 0, 1, 0, 2, std::string("0200")));
    EXPECT_EQ(vym_gatt_server_send_response(1, 1, 1, 0, kSwitch, 0, 0, 2, Bytes("\2\0")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.response_send_completed", 0, kSwitch));
    EXPECT_EQ(CALL(vym_gatt_server_send_indication)(1, kValue, 1, 1, 2, Bytes("\x68\x08")),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("gatt_server.notification_sent", 1, 0));
    EXPECT_TRUE(Notes("Tablet receives an indication of handle 34: 68 08\n"));
}

TEST_F(EveryGattServerFunction, SaysWhatIsAdvertised) {
    Register();
    EXPECT_EQ(CALL(vym_gatt_set_adv_data)(1, 1, 0, 0, 6, 12, 0, 0, nullptr, 0, nullptr, 0, nullptr),
              BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("scan response: 05 12 06 00 0C 00\n"));
    EXPECT_EQ(CALL(vym_gatt_set_user_def_adv_data)(1, 0, 3, Bytes("\2\1\6")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("advertisement: 02 01 06\n"));
    EXPECT_EQ(vym_gatt_set_user_def_adv_data(1, 0, 2, Bytes("\2\1")), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("refused: the advertising data does not consist of whole structures\n"));
}

} // namespace
