// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// libdbus, without a bus between the peers.

#include "candidate.h"
#include "dbus.h"
#include "meter.h"
#include "sockets.h"
#include "workload.h"

#include <cstring>
#include <dbus/dbus.h>

namespace bench {
namespace {

struct Bytes {
    const uint8_t* data = nullptr;
    int size = 0;
};

DBusHandlerResult on_message(DBusConnection* /*connection*/, DBusMessage* message, void* data) {
    if (!dbus_message_is_signal(message, kInterface, kNotify)) {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    dbus_uint16_t connection = 0;
    dbus_uint16_t service_instance = 0;
    dbus_uint16_t value_instance = 0;
    uint8_t service_type = 0;
    uint8_t is_notify = 0;
    Bytes address;
    Bytes service;
    Bytes characteristic;
    Bytes value;
    if (!dbus_message_get_args(message, nullptr, DBUS_TYPE_UINT16, &connection, DBUS_TYPE_ARRAY,
                               DBUS_TYPE_BYTE, &address.data, &address.size, DBUS_TYPE_BYTE,
                               &service_type, DBUS_TYPE_UINT16, &service_instance, DBUS_TYPE_ARRAY,
                               DBUS_TYPE_BYTE, &service.data, &service.size, DBUS_TYPE_UINT16,
                               &value_instance, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &characteristic.data,
                               &characteristic.size, DBUS_TYPE_BYTE, &is_notify, DBUS_TYPE_ARRAY,
                               DBUS_TYPE_BYTE, &value.data, &value.size, DBUS_TYPE_INVALID) ||
        value.size != static_cast<int>(kPayload.size())) {
        give_up("a notification");
    }
    static_cast<Meter*>(data)->tick();
    return DBUS_HANDLER_RESULT_HANDLED;
}

DBusMessage* new_call(const char* member) {
    DBusMessage* call = dbus_message_new_method_call(nullptr, kPath, kInterface, member);
    if (call == nullptr) {
        give_up(member);
    }
    return call;
}

void send_and_unref(DBusConnection* connection, DBusMessage* call) {
    dbus_message_set_no_reply(call, TRUE);
    dbus_connection_send(connection, call, nullptr);
    dbus_connection_flush(connection);
    dbus_message_unref(call);
}

void write_value(DBusConnection* connection) {
    DBusMessage* call = new_call(kWrite);
    const uint8_t* service = kService.data();
    const uint8_t* characteristic = kCharacteristic.data();
    const uint8_t* value = kPayload.data();
    const dbus_uint16_t number = kConnection;
    const dbus_uint16_t service_instance = kServiceInstance;
    const dbus_uint16_t value_instance = kValueInstance;
    const uint8_t service_type = 0;
    const uint8_t write_type = 2;
    const uint8_t auth = 0;
    dbus_message_append_args(
        call, DBUS_TYPE_UINT16, &number, DBUS_TYPE_BYTE, &service_type, DBUS_TYPE_UINT16,
        &service_instance, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &service, static_cast<int>(kService.size()),
        DBUS_TYPE_UINT16, &value_instance, DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &characteristic,
        static_cast<int>(kCharacteristic.size()), DBUS_TYPE_BYTE, &write_type, DBUS_TYPE_BYTE, &auth,
        DBUS_TYPE_ARRAY, DBUS_TYPE_BYTE, &value, static_cast<int>(kPayload.size()), DBUS_TYPE_INVALID);
    send_and_unref(connection, call);
}

void ask_name(DBusConnection* connection) {
    DBusMessage* call = new_call(kGetName);
    DBusMessage* reply = dbus_connection_send_with_reply_and_block(connection, call, -1, nullptr);
    const char* name = nullptr;
    if (reply == nullptr ||
        !dbus_message_get_args(reply, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) ||
        std::strcmp(name, "KitchenUnit") != 0) {
        give_up(kGetName);
    }
    dbus_message_unref(reply);
    dbus_message_unref(call);
}

} // namespace

std::string run(const Job& job) {
    DBusConnection* connection =
        dbus_connection_open_private(("unix:path=" + job.socket_path()).c_str(), nullptr);
    if (connection == nullptr) {
        give_up("dbus_connection_open_private");
    }
    Meter meter(kWarmUp, job.count);
    dbus_connection_add_filter(connection, on_message, &meter, nullptr);
    if (job.workload == "event" || job.workload == "flood") {
        send_and_unref(connection, new_call(kStartEvents));
        while (!meter.done() && dbus_connection_read_write_dispatch(connection, -1)) {
        }
    } else {
        while (!meter.done()) {
            if (job.workload == "command") {
                write_value(connection);
            } else {
                ask_name(connection);
            }
            meter.tick();
        }
    }
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
    return meter.report();
}

} // namespace bench
