// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// libwayland's client: a binary protocol over the same kind of socket.

#include "candidate.h"
#include "meter.h"
#include "sockets.h"
#include "wayland_arrays.h"
#include "workload.h"

#include "gatt-client-protocol.h"
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <wayland-client.h>

namespace bench {
namespace {

struct Client {
    wl_display* display = nullptr;
    bench_gatt* gatt = nullptr;
    Meter* meter = nullptr;
    bool answered = false;
};

void on_notify(void* data, bench_gatt* /*gatt*/, uint32_t /*connection*/, wl_array* /*address*/,
               uint32_t /*service_type*/, uint32_t /*service_instance*/, wl_array* /*service*/,
               uint32_t /*value_instance*/, wl_array* /*characteristic*/, uint32_t /*is_notify*/,
               wl_array* /*value*/) {
    static_cast<Client*>(data)->meter->tick();
}

void on_name(void* data, bench_gatt* /*gatt*/, const char* name) {
    static_cast<Client*>(data)->answered = std::strcmp(name, "KitchenUnit") == 0;
}

constexpr bench_gatt_listener kGattListener = {on_notify, on_name};

void on_global(void* data, wl_registry* registry, uint32_t name, const char* interface,
               uint32_t /*version*/) {
    if (std::strcmp(interface, bench_gatt_interface.name) == 0) {
        auto* client = static_cast<Client*>(data);
        client->gatt =
            static_cast<bench_gatt*>(wl_registry_bind(registry, name, &bench_gatt_interface, 1));
        bench_gatt_add_listener(client->gatt, &kGattListener, client);
    }
}

void on_global_removed(void* /*data*/, wl_registry* /*registry*/, uint32_t /*name*/) {}

constexpr wl_registry_listener kRegistryListener = {on_global, on_global_removed};

void connect(const Job& job, Client* client) {
    client->display = wl_display_connect_to_fd(connect_to(job.socket_path()));
    if (client->display == nullptr) {
        give_up("wl_display_connect_to_fd");
    }
    wl_registry* registry = wl_display_get_registry(client->display);
    wl_registry_add_listener(registry, &kRegistryListener, client);
    wl_display_roundtrip(client->display);
    wl_registry_destroy(registry);
    if (client->gatt == nullptr) {
        give_up("the server offers no bench_gatt");
    }
}

void disconnect(Client* client) {
    bench_gatt_destroy(client->gatt);
    wl_display_disconnect(client->display);
}

void flush(wl_display* display) {
    while (wl_display_flush(display) < 0 && errno == EAGAIN) {
        pollfd room = {wl_display_get_fd(display), POLLOUT, 0};
        poll(&room, 1, -1);
    }
}

void write_value(const Client& client) {
    std::array<uint8_t, 16> service = kService;
    std::array<uint8_t, 16> characteristic = kCharacteristic;
    std::array<uint8_t, 20> payload = kPayload;
    wl_array service_array = array_of(&service);
    wl_array characteristic_array = array_of(&characteristic);
    wl_array value = array_of(&payload);
    bench_gatt_write(client.gatt, kConnection, 0, kServiceInstance, &service_array, kValueInstance,
                     &characteristic_array, 2, 0, &value);
    flush(client.display);
}

void ask_name(Client* client) {
    client->answered = false;
    bench_gatt_get_name(client->gatt);
    while (!client->answered) {
        if (wl_display_dispatch(client->display) < 0) {
            give_up("wl_display_dispatch");
        }
    }
}

} // namespace

std::string run(const Job& job) {
    Meter meter(kWarmUp, job.count);
    Client client;
    client.meter = &meter;
    connect(job, &client);
    if (job.workload == "event" || job.workload == "flood") {
        bench_gatt_start(client.gatt);
        while (!meter.done() && wl_display_dispatch(client.display) >= 0) {
        }
    } else {
        while (!meter.done()) {
            if (job.workload == "command") {
                write_value(client);
            } else {
                ask_name(&client);
            }
            meter.tick();
        }
    }
    disconnect(&client);
    return meter.report();
}

} // namespace bench
