/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The attribute protocol, both roles. */
#ifndef VYM_TESTS_E2E_LOW_ENERGY_STEPS_H
#define VYM_TESTS_E2E_LOW_ENERGY_STEPS_H

#include "callbacks/low_energy_callbacks.h"
#include "every_profile.h"

static uint8_t client_if(void) {
    return (uint8_t)known(&named.client_if);
}

static uint16_t conn_id(void) {
    return (uint16_t)known(&named.conn_id);
}

static uint8_t server_if(void) {
    return (uint8_t)known(&named.server_if);
}

static uint16_t service(void) {
    return (uint16_t)known(&named.service);
}

static void* register_and_connect(void* unused) {
    vym_gatt_client_register(heart_rate, client_registered);
    vym_gatt_client_connect(strap, 1, 2);
    return unused;
}

static void scan(void) {
    vym_gatt_client_scan(1);
    await_mark(STRAP_FOUND);
    vym_gatt_client_scan(0);
    aside(register_and_connect);
    await_mark(STRAP_UP);
    vym_gatt_client_connect_ex(client_if(), strap, 1, 2);
    vym_gatt_client_search_service(conn_id(), 1, 0);
    await_mark(STRAP_SEARCHED);
}

static void explore(void) {
    const uint16_t id = conn_id();
    vym_gatt_client_get_characteristic(id, 0, 0, heart_rate, 0, measurement);
    vym_gatt_client_get_descriptor(id, 0, 0, heart_rate, 0, measurement, 0, configuration);
    vym_gatt_client_get_included_service(id, 0, 0, heart_rate, 0, 0, heart_rate);
    vym_gatt_client_read_characteristic(id, 0, 0, heart_rate, 0, measurement, 0);
    vym_gatt_client_read_descriptor(id, 0, 0, heart_rate, 0, measurement, 0, configuration, 0);
    vym_gatt_client_configure_mtu(id, 100);
    vym_gatt_client_read_remote_rssi(client_if(), strap);
    vym_gatt_connection_parameter_update(client_if(), strap, 24, 40, 0, 400);
    vym_gatt_client_refresh(client_if(), strap);
    await(7);
}

static void subscribe(void) {
    uint8_t on[] = {1, 0};
    const uint16_t id = conn_id();
    vym_gatt_client_register_for_notifications(client_if(), strap, 0, 0, heart_rate, 0, measurement, 1);
    vym_gatt_client_write_descriptor(id, 0, 0, heart_rate, 0, measurement, 0, configuration, 2, 0, 2,
                                     on);
    await_mark(STRAP_NOTIFIED);
    vym_gatt_client_write_characteristic(id, 0, 0, heart_rate, 0, measurement, 3, 0, 2, on);
    vym_gatt_client_execute_write(id, 1);
    await(2);
    vym_gatt_client_disconnect(client_if(), strap, id);
    await(1);
    vym_gatt_client_unregister(client_if());
    vym_gatt_client_register_client_for_server(heart_rate, client_registered);
    await(1);
    vym_gatt_client_unregister_client_for_server(client_if());
}

static void offer_a_service(void) {
    vym_gatt_server_register_client(heart_rate, client_registered);
    vym_gatt_server_register_app(heart_rate);
    await(2);
    vym_gatt_server_add_service(server_if(), 0, 0, heart_rate, 8);
    await(1);
    vym_gatt_server_add_characteristic(server_if(), service(), measurement, 0x12, PERMISSION_READ);
    vym_gatt_server_add_descriptor(server_if(), service(), configuration, PERMISSION_WRITE);
    vym_gatt_server_add_included_service(server_if(), service(), service());
    vym_gatt_server_start_service(server_if(), service(), 2);
    await(4);
}

static void advertise(void) {
    uint8_t data[] = {2, 1, 6};
    vym_gatt_client_set_adv_data(client_if(), 0, 1, 0, 0, sizeof data, data, 0, NULL, 0, NULL);
    vym_gatt_set_adv_data(server_if(), 0, 1, 0, 6, 12, 0, sizeof data, data, 0, NULL, 0, NULL);
    vym_gatt_set_user_def_adv_data(server_if(), 0, sizeof data, data);
    vym_gatt_client_set_adv_command(1);
    vym_gatt_client_listen_ex(client_if(), 1, 32, 64);
    vym_gatt_client_listen(client_if(), 1);
    await_mark(TABLET_UP | TABLET_ASKED);
    await(8);
}

static void answer_the_tablet(void) {
    uint8_t value[] = {0, 72};
    const uint16_t tablet = (uint16_t)known(&named.tablet);
    const uint16_t handle = (uint16_t)known(&named.characteristic);
    vym_gatt_server_send_response(server_if(), tablet, 1, 0, handle, 0, 0, sizeof value, value);
    vym_gatt_server_send_notification(server_if(), handle, tablet, sizeof value, value);
    vym_gatt_server_send_indication(server_if(), handle, tablet, 1, sizeof value, value);
    await(3);
    vym_gatt_client_set_adv_command(0);
    vym_gatt_server_connect(server_if(), strap, 1);
    vym_gatt_server_disconnect(server_if(), strap, tablet);
    vym_gatt_server_stop_service(server_if(), service());
    vym_gatt_server_delete_service(server_if(), service());
    await(3);
    vym_gatt_server_unregister_client(client_if());
    vym_gatt_server_unregister_app(server_if());
}

#endif
