/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A GATT client: finds a heart-rate strap, reads its battery and shows three heartbeats.
 *
 * usage: heart_rate DIRECTORY      (the directory of the server's socket)
 */
#include "radio.h"

#include <string.h>
#include <vym/gatt_defines.h>
#include <vym/vym_gatt_client.h>

enum { WANTED_MTU = 185, BEATS = 3 };

/* How the server names a characteristic: its service and itself, each an instance and a UUID. */
typedef struct {
    uint8_t service_type;
    uint16_t service_instance, instance;
    bt_uuid_t service, uuid;
} characteristic_t;

static const bt_uuid_t heart_rate_service = GATT_UUID_FROM_16(0x180D);
static const bt_uuid_t battery_service = GATT_UUID_FROM_16(0x180F);
static const bt_uuid_t heart_rate_measurement = GATT_UUID_FROM_16(0x2A37);
static const bt_uuid_t battery_level = GATT_UUID_FROM_16(0x2A19);
static const bt_uuid_t configuration = GATT_UUID_FROM_16(GATT_UUID16_CLIENT_CHAR_CONFIG);
static const bt_uuid_t first = {{0}};

/* What the callbacks have told us. */
static struct {
    int found, connected, mtu_known, searched, listed, configured, battery_read, beats;
    bt_bdaddr_t address;
    uint8_t client_if;
    uint16_t connection;
    characteristic_t pulse, battery;
} strap = {.connected = -1};

static int is_uuid(bt_uuid_t one, const bt_uuid_t* other) {
    return memcmp(one.uu, other->uu, sizeof one.uu) == 0;
}

/* Callbacks: one event of the server each, on the receive thread. */

static void on_scan_name(bt_bdaddr_t address, uint16_t length, uint8_t* name) {
    char text[18];
    say("   %s  \"%.*s\"", address_text(address, text), length, length > 0 ? (char*)name : "");
    if (length == strlen("Heart strap") && memcmp(name, "Heart strap", length) == 0) {
        strap.address = address;
        note(&strap.found, 1);
    }
}

static void on_connected(uint8_t client_if, uint16_t connection, uint8_t status, bt_bdaddr_t address) {
    strap.client_if = client_if;
    strap.connection = connection;
    note(&strap.connected, status == 0);
}

static void on_disconnected(uint8_t client_if, uint16_t connection, uint8_t status,
                            bt_bdaddr_t address) {
    note(&strap.connected, 0);
}

static void on_mtu(int connection, uint8_t status, int mtu) {
    say("   up to %d bytes travel at once", mtu);
    note(&strap.mtu_known, 1);
}

static void on_service(uint16_t connection, uint8_t type, uint16_t instance, bt_uuid_t uuid) {
    characteristic_t of = {type, instance, 0, uuid, first};
    if (is_uuid(uuid, &heart_rate_service)) {
        strap.pulse = of;
    } else if (is_uuid(uuid, &battery_service)) {
        strap.battery = of;
    }
}

static void on_searched(uint16_t connection, uint8_t status) {
    note(&strap.searched, 1);
}

/* Each answer names one characteristic; asking again from there brings the next, if there is one. */
static void on_characteristic(uint16_t connection, uint8_t status, uint8_t service_type,
                              uint16_t service_instance, bt_uuid_t service, uint16_t instance,
                              bt_uuid_t uuid, int properties) {
    characteristic_t found = {service_type, service_instance, instance, service, uuid};
    if (status != 0) {
        note(&strap.listed, strap.listed + 1);
        return;
    }
    say("   characteristic %02X%02X, properties %02X", uuid.uu[2], uuid.uu[3], (unsigned)properties);
    if (is_uuid(uuid, &heart_rate_measurement)) {
        strap.pulse = found;
    } else if (is_uuid(uuid, &battery_level)) {
        strap.battery = found;
    }
    vym_gatt_client_get_characteristic(connection, service_type, service_instance, service, instance,
                                       uuid);
}

static void on_descriptor_written(uint16_t connection, uint8_t status, uint8_t service_type,
                                  uint16_t service_instance, bt_uuid_t service, uint16_t instance,
                                  bt_uuid_t uuid, uint16_t descriptor_instance, bt_uuid_t descriptor) {
    note(&strap.configured, status == 0);
}

static void on_read(uint16_t connection, uint8_t status, uint8_t service_type,
                    uint16_t service_instance, bt_uuid_t service, uint16_t instance, bt_uuid_t uuid,
                    uint8_t type, uint16_t length, uint8_t* data) {
    if (status == 0 && length == 1) {
        say("   battery %d %%", data[0]);
        note(&strap.battery_read, 1);
    }
}

/* The pulse follows the flags (Heart Rate Service 1.0, 3.1). */
static void on_notify(uint16_t connection, bt_bdaddr_t address, uint8_t service_type,
                      uint16_t service_instance, bt_uuid_t service, uint16_t instance, bt_uuid_t uuid,
                      uint8_t is_notification, uint16_t length, uint8_t* data) {
    if (is_uuid(uuid, &heart_rate_measurement) && length >= 2 && strap.beats < BEATS) {
        say("   %d beats a minute", data[1]);
        note(&strap.beats, strap.beats + 1);
    }
}

static gatt_client_callback_t callbacks = {
    .scan_address_name_cb = on_scan_name,
    .notify_cb = on_notify,
    .connected_cb = on_connected,
    .disconnected_cb = on_disconnected,
    .search_completed_cb = on_searched,
    .search_result_cb = on_service,
    .get_characteristic_cb = on_characteristic,
    .read_characteristic_cb = on_read,
    .write_descriptor_cb = on_descriptor_written,
    .configure_mtu_cb = on_mtu,
};

static void list(const characteristic_t* of) {
    const int ended = noted(&strap.listed);
    vym_gatt_client_get_characteristic(strap.connection, of->service_type, of->service_instance,
                                       of->service, 0, first);
    await(&strap.listed, ended + 1, "the end of the characteristics");
}

static void subscribe(void) {
    uint8_t on[] = {GATT_CCCD_NOTIFICATION, 0};
    const characteristic_t* p = &strap.pulse;
    vym_gatt_client_register_for_notifications(strap.client_if, strap.address, p->service_type,
                                               p->service_instance, p->service, p->instance, p->uuid,
                                               1);
    vym_gatt_client_write_descriptor(strap.connection, p->service_type, p->service_instance, p->service,
                                     p->instance, p->uuid, 0, configuration, GATT_WRITE_TYPE_DEFAULT,
                                     GATT_AUTH_REQ_NONE, sizeof on, on);
    await(&strap.configured, 1, "the subscription");
}

int main(int argc, char** argv) {
    radio_begin("heart_rate", argc, argv);
    vym_gatt_client_init(&callbacks);
    radio_on();

    say("1. Who advertises?");
    vym_gatt_client_scan(1);
    await(&strap.found, 1, "a heart-rate strap");
    vym_gatt_client_scan(0);

    say("2. Connect");
    hurry("its registration of us");
    vym_gatt_client_connect(strap.address, 1, GATT_TRANSPORT_LE);
    no_hurry();
    await(&strap.connected, 1, "the connection");
    vym_gatt_client_configure_mtu(strap.connection, WANTED_MTU);
    await(&strap.mtu_known, 1, "the size of packets");

    say("3. What does it offer?");
    vym_gatt_client_search_service(strap.connection, 1, 0);
    await(&strap.searched, 1, "its services");
    list(&strap.pulse);
    list(&strap.battery);

    say("4. Read its battery");
    vym_gatt_client_read_characteristic(strap.connection, strap.battery.service_type,
                                        strap.battery.service_instance, strap.battery.service,
                                        strap.battery.instance, strap.battery.uuid, GATT_AUTH_REQ_NONE);
    await(&strap.battery_read, 1, "the battery level");

    say("5. Listen to the heart");
    subscribe();
    await(&strap.beats, BEATS, "heartbeats");

    vym_gatt_client_disconnect(strap.client_if, strap.address, strap.connection);
    await(&strap.connected, 0, "the end of the connection");
    radio_off();
    vym_gatt_client_done();
    radio_end();
    return 0;
}
