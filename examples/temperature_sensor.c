/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A GATT server: offers a temperature to be read and subscribed to, and a name to be written.
 *
 * usage: temperature_sensor DIRECTORY      (the directory of the server's socket)
 */
#include "radio.h"

#include <string.h>
#include <vym/gatt_defines.h>
#include <vym/vym_gatt_client.h>
#include <vym/vym_gatt_server.h>

/* A service takes a handle for itself, two for a characteristic and one for a descriptor. */
enum { HANDLES = 1 + 2 + 1 + 2, NAME_ROOM = 32, NOTIFICATIONS = 3, NONE = -1 };

static const bt_uuid_t application = GATT_UUID_FROM_16(0xFFF0);
static const bt_uuid_t environment = GATT_UUID_FROM_16(0x181A);
static const bt_uuid_t temperature = GATT_UUID_FROM_16(0x2A6E);
static const bt_uuid_t sensor_name = GATT_UUID_FROM_16(0x2A00);
static const bt_uuid_t configuration = GATT_UUID_FROM_16(GATT_UUID16_CLIENT_CHAR_CONFIG);

static struct {
    int registered, client_known, started, advertising, subscribed, renamed, notified;
    uint8_t server_if, client_if;
    int connection;
    int handle; /* of what was added last */
    int temperature_handle, configuration_handle, name_handle;
    uint8_t celsius[2]; /* in hundredths, low byte first */
    char name[NAME_ROOM];
    uint16_t name_length;
} sensor = {.handle = NONE, .celsius = {2151 & 0xFF, 2151 >> 8}, .name = "sensor", .name_length = 6};

/* Callbacks: one event of the server each, on the receive thread. */
static void on_registered(uint8_t status, uint8_t server_if, bt_uuid_t uuid) {
    sensor.server_if = server_if;
    note(&sensor.registered, status == 0);
}

static void on_client_registered(uint8_t client_if, bt_uuid_t uuid) {
    sensor.client_if = client_if;
    note(&sensor.client_known, 1);
}

static void on_advertising(uint8_t status, uint8_t client_if) {
    if (status == 0 && !noted(&sensor.advertising)) {
        say("   the server advertises for us");
        note(&sensor.advertising, 1);
    }
}

static void on_service_added(uint8_t status, uint8_t server_if, uint8_t type, uint16_t instance,
                             bt_uuid_t uuid, uint16_t handle) {
    note(&sensor.handle, status == 0 ? handle : 0);
}

static void on_added(uint8_t status, uint8_t server, bt_uuid_t uuid, uint16_t service,
                     uint16_t handle) {
    note(&sensor.handle, status == 0 ? handle : 0);
}

static void on_started(uint8_t status, uint8_t server_if, uint16_t service) {
    note(&sensor.started, status == 0);
}

static void on_connected(bt_bdaddr_t address, uint8_t is_up, uint16_t connection, uint8_t server_if) {
    char text[18];
    say("   %s %s", address_text(address, text), is_up ? "connects" : "leaves");
    note(&sensor.connection, is_up ? connection : 0);
}

static void respond(uint16_t connection, uint16_t transaction, uint16_t handle, uint16_t offset,
                    uint16_t length, uint8_t* value) {
    vym_gatt_server_send_response(sensor.server_if, connection, transaction, 0, handle, offset,
                                  GATT_AUTH_REQ_NONE, length, value);
}

/* Every request is answered, with the number of its transaction. */
static void on_read(bt_bdaddr_t address, uint16_t connection, uint16_t transaction, uint16_t handle,
                    uint16_t offset, uint8_t is_long) {
    uint8_t* value = handle == sensor.name_handle ? (uint8_t*)sensor.name : sensor.celsius;
    uint16_t length = handle == sensor.name_handle ? sensor.name_length : sizeof sensor.celsius;
    offset = offset < length ? offset : length;
    say("   it reads handle %d", handle);
    respond(connection, transaction, handle, offset, (uint16_t)(length - offset), value + offset);
}

static void on_write(bt_bdaddr_t address, uint16_t connection, uint16_t transaction, uint16_t handle,
                     uint16_t offset, uint8_t need_response, uint8_t is_prepared, uint16_t length,
                     uint8_t* value) {
    /* First: a subscription counts from the response on. */
    if (need_response) {
        respond(connection, transaction, handle, offset, length, value);
    }
    if (handle == sensor.configuration_handle) {
        say("   it %s", length > 0 && value[0] != 0 ? "subscribes" : "unsubscribes");
        note(&sensor.subscribed, length > 0 && value[0] != 0);
    } else if (handle == sensor.name_handle && offset + length <= NAME_ROOM) {
        memcpy(sensor.name + offset, value != NULL ? (char*)value : "", length);
        sensor.name_length = (uint16_t)(offset + length);
        say("   it %s \"%.*s\"", is_prepared ? "prepares to call us" : "calls us", sensor.name_length,
            sensor.name);
    }
}

static void on_execute(bt_bdaddr_t address, uint16_t connection, uint16_t transaction, uint8_t yes) {
    say("   it %s", yes ? "means it" : "takes that back");
    respond(connection, transaction, 0, 0, 0, NULL);
    note(&sensor.renamed, 1);
}

static void on_sent(uint16_t connection, uint8_t status) {
    note(&sensor.notified, sensor.notified + (status == 0));
}

static gatt_server_callback_t callbacks = {
    .server_registered_cb = on_registered,
    .client_connected_cb = on_connected,
    .service_added_cb = on_service_added,
    .characteristic_added_cb = on_added,
    .descriptor_added_cb = on_added,
    .service_started_cb = on_started,
    .attribute_read_cb = on_read,
    .attribute_write_cb = on_write,
    .execute_write_cb = on_execute,
    .notification_sent_cb = on_sent,
};

/* Advertising is the client module's. */
static gatt_client_callback_t client_callbacks = {.advertise_callback_cb = on_advertising};

/* The handle that the server gave to what was just added. */
static int added(const char* what) {
    const int handle = await_other(&sensor.handle, NONE, what);
    if (handle == 0) {
        give_up("the server refused to add %s", what);
    }
    note(&sensor.handle, NONE);
    return handle;
}

static uint16_t build_service(void) {
    vym_gatt_server_add_service(sensor.server_if, GATT_SERVICE_TYPE_PRIMARY, 0, environment, HANDLES);
    const uint16_t service = (uint16_t)added("the service");
    vym_gatt_server_add_characteristic(sensor.server_if, service, temperature,
                                       GATT_CHAR_PROP_READ | GATT_CHAR_PROP_NOTIFY, PERMISSION_READ);
    sensor.temperature_handle = added("the temperature");
    vym_gatt_server_add_descriptor(sensor.server_if, service, configuration,
                                   PERMISSION_READ | PERMISSION_WRITE);
    sensor.configuration_handle = added("the configuration");
    vym_gatt_server_add_characteristic(sensor.server_if, service, sensor_name,
                                       GATT_CHAR_PROP_READ | GATT_CHAR_PROP_WRITE,
                                       PERMISSION_READ | PERMISSION_WRITE);
    sensor.name_handle = added("the name");
    return service;
}

int main(int argc, char** argv) {
    radio_begin("temperature_sensor", argc, argv);
    vym_gatt_client_init(&client_callbacks);
    vym_gatt_server_init(&callbacks);
    radio_on();

    say("1. Build a service");
    vym_gatt_server_register_app(application);
    await(&sensor.registered, 1, "the registration");
    const uint16_t service = build_service();
    vym_gatt_server_start_service(sensor.server_if, service, GATT_TRANSPORT_LE);
    await(&sensor.started, 1, "the start of the service");

    say("2. Advertise it");
    vym_gatt_server_register_client(application, on_client_registered);
    await(&sensor.client_known, 1, "the registration for advertising");
    vym_gatt_client_set_adv_data(sensor.client_if, 0, 1, 0, 0, 0, NULL, 0, NULL, 0, NULL);
    vym_gatt_client_listen(sensor.client_if, 1);
    await(&sensor.advertising, 1, "that it advertises");
    await(&sensor.subscribed, 1, "a subscription");
    await(&sensor.renamed, 1, "a long write");

    say("3. It gets warmer");
    for (int i = 1; i <= NOTIFICATIONS; i++, sensor.celsius[0]++) {
        vym_gatt_server_send_notification(sensor.server_if, (uint16_t)sensor.temperature_handle,
                                          (uint16_t)noted(&sensor.connection), sizeof sensor.celsius,
                                          sensor.celsius);
        await(&sensor.notified, i, "the delivery of a notification");
        say("   notified of %d.%02d degrees", (sensor.celsius[1] * 256 + sensor.celsius[0]) / 100,
            (sensor.celsius[1] * 256 + sensor.celsius[0]) % 100);
    }

    vym_gatt_client_listen(sensor.client_if, 0);
    vym_gatt_server_unregister_client(sensor.client_if);
    vym_gatt_server_unregister_app(sensor.server_if);
    radio_off();
    vym_gatt_server_done();
    vym_gatt_client_done();
    radio_end();
    return 0;
}
