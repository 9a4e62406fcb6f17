/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The attribute protocol, both roles. */
#ifndef VYM_TESTS_E2E_LOW_ENERGY_STEPS_H
#define VYM_TESTS_E2E_LOW_ENERGY_STEPS_H

#include "every_profile.h"
#include "low_energy_callbacks.h"

static void* register_and_connect(void* unused) {
    vym_gatt_client_register(heart_rate, client_registered);
    vym_gatt_client_connect(strap, 1, 2);
    return unused;
}

static void scan(void) {
    vym_gatt_client_register_client_for_server(heart_rate, client_registered);
    vym_gatt_client_unregister_client_for_server(1);
    aside(register_and_connect);
    await(3);
    vym_gatt_client_scan(1);
    await(4);
    vym_gatt_client_scan(0);
    vym_gatt_client_connect_ex(1, strap, 1, 2);
    await(2);
    vym_gatt_client_search_service(1, 1, 0);
    await(4);
}

static void explore(void) {
    vym_gatt_client_get_characteristic(1, 0, 0, heart_rate, 0, measurement);
    vym_gatt_client_get_descriptor(1, 0, 0, heart_rate, 0, measurement, 0, configuration);
    vym_gatt_client_get_included_service(1, 0, 0, heart_rate, 0, 0, heart_rate);
    vym_gatt_client_read_characteristic(1, 0, 0, heart_rate, 0, measurement, 0);
    vym_gatt_client_read_descriptor(1, 0, 0, heart_rate, 0, measurement, 0, configuration, 0);
    vym_gatt_client_configure_mtu(1, 100);
    vym_gatt_client_read_remote_rssi(1, strap);
    vym_gatt_connection_parameter_update(1, strap, 24, 40, 0, 400);
    vym_gatt_client_refresh(1, strap);
    await(7);
}

static void subscribe(void) {
    uint8_t on[] = {1, 0};
    vym_gatt_client_register_for_notifications(1, strap, 0, 0, heart_rate, 0, measurement, 1);
    vym_gatt_client_write_descriptor(1, 0, 0, heart_rate, 0, measurement, 0, configuration, 2, 0, 2,
                                     on);
    await(4);
    vym_gatt_client_write_characteristic(1, 0, 0, heart_rate, 0, measurement, 3, 0, 2, on);
    vym_gatt_client_execute_write(1, 1);
    await(2);
    vym_gatt_client_disconnect(1, strap, 1);
    vym_gatt_client_unregister(1);
    await(1);
}

static void offer_a_service(void) {
    vym_gatt_server_register_client(heart_rate, client_registered);
    vym_gatt_server_register_app(heart_rate);
    await(2);
    vym_gatt_server_add_service(1, 0, 0, heart_rate, 8);
    await(1);
    vym_gatt_server_add_characteristic(1, 40, measurement, 0x12, PERMISSION_READ);
    vym_gatt_server_add_descriptor(1, 40, configuration, PERMISSION_WRITE);
    vym_gatt_server_add_included_service(1, 40, 40);
    vym_gatt_server_start_service(1, 40, 2);
    await(4);
}

static void advertise(void) {
    uint8_t data[] = {2, 1, 6};
    vym_gatt_client_set_adv_data(1, 0, 1, 0, 0, sizeof data, data, 0, NULL, 0, NULL);
    vym_gatt_set_adv_data(1, 0, 1, 0, 6, 12, 0, sizeof data, data, 0, NULL, 0, NULL);
    vym_gatt_set_user_def_adv_data(1, 0, sizeof data, data);
    vym_gatt_client_set_adv_command(1);
    vym_gatt_client_listen_ex(1, 1, 32, 64);
    vym_gatt_client_listen(1, 1);
    await(8);
}

static void answer_the_tablet(void) {
    uint8_t value[] = {0, 72};
    vym_gatt_server_send_response(1, 1, 1, 0, 42, 0, 0, sizeof value, value);
    vym_gatt_server_send_notification(1, 42, 1, sizeof value, value);
    vym_gatt_server_send_indication(1, 42, 1, 1, sizeof value, value);
    await(4);
    vym_gatt_client_set_adv_command(0);
    vym_gatt_server_connect(1, strap, 1);
    vym_gatt_server_disconnect(1, strap, 1);
    vym_gatt_server_stop_service(1, 40);
    vym_gatt_server_delete_service(1, 40);
    vym_gatt_server_unregister_client(1);
    vym_gatt_server_unregister_app(1);
    await(4);
}

#endif
