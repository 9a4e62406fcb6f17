// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server for libwayland's client.

#include "candidate.h"
#include "sockets.h"
#include "wayland_arrays.h"
#include "workload.h"

#include "gatt-server-protocol.h"
#include <poll.h>
#include <unistd.h>
#include <wayland-server.h>

namespace bench {
namespace {

// libwayland collects what fits into 4 KB; a batch must not be more.
constexpr int kBatch = 24;

struct Server {
    wl_display* display = nullptr;
    wl_client* client = nullptr;
    wl_resource* gatt = nullptr;
    bool started = false;
    bool gone = false;
    wl_listener on_gone{};
};

Server s_server;

void on_start(wl_client* /*client*/, wl_resource* /*gatt*/) {
    s_server.started = true;
}

void on_write(wl_client* /*client*/, wl_resource* /*gatt*/, uint32_t /*connection*/,
              uint32_t /*service_type*/, uint32_t /*service_instance*/, wl_array* /*service*/,
              uint32_t /*value_instance*/, wl_array* /*characteristic*/, uint32_t /*write_type*/,
              uint32_t /*auth*/, wl_array* /*value*/) {}

void on_get_name(wl_client* /*client*/, wl_resource* gatt) {
    bench_gatt_send_name(gatt, "KitchenUnit");
}

constexpr struct bench_gatt_interface kGatt = {on_start, on_write, on_get_name};

void on_bind(wl_client* client, void* /*data*/, uint32_t version, uint32_t id) {
    s_server.gatt = wl_resource_create(client, &bench_gatt_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(s_server.gatt, &kGatt, nullptr, nullptr);
}

void notify() {
    std::array<uint8_t, 6> address = kAddress;
    std::array<uint8_t, 16> service = kService;
    std::array<uint8_t, 16> characteristic = kCharacteristic;
    std::array<uint8_t, 20> payload = kPayload;
    wl_array address_array = array_of(&address);
    wl_array service_array = array_of(&service);
    wl_array characteristic_array = array_of(&characteristic);
    wl_array value = array_of(&payload);
    bench_gatt_send_notify(s_server.gatt, kConnection, &address_array, 0, kServiceInstance,
                           &service_array, kValueInstance, &characteristic_array, 1, &value);
}

void dispatch(int timeout_ms) {
    wl_event_loop_dispatch(wl_display_get_event_loop(s_server.display), timeout_ms);
    wl_display_flush_clients(s_server.display);
}

void stream(bool alone) {
    const int fd = wl_client_get_fd(s_server.client);
    while (!s_server.gone) {
        pollfd room = {fd, POLLOUT, 0};
        poll(&room, 1, -1);
        for (int i = 0; i < (alone ? 1 : kBatch); ++i) {
            notify();
        }
        wl_display_flush_clients(s_server.display);
        if (alone) {
            wait_until_read(fd);
        }
        if (!alone || (room.revents & (POLLHUP | POLLERR)) != 0) {
            dispatch(0);
        }
    }
}

void serve_client(int fd, const Job& job) {
    s_server.gone = false;
    s_server.started = false;
    s_server.client = wl_client_create(s_server.display, fd);
    s_server.on_gone.notify = [](wl_listener*, void*) { s_server.gone = true; };
    wl_client_add_destroy_listener(s_server.client, &s_server.on_gone);
    while (!s_server.gone) {
        dispatch(-1);
        if (s_server.started && !s_server.gone) {
            stream(job.workload == "event");
        }
    }
}

} // namespace

void serve(const Job& job) {
    s_server.display = wl_display_create();
    if (s_server.display == nullptr ||
        wl_global_create(s_server.display, &bench_gatt_interface, 1, nullptr, on_bind) == nullptr) {
        give_up("wl_display_create");
    }
    const Listener listener(job.socket_path());
    while (true) {
        serve_client(listener.accept(), job);
    }
}

} // namespace bench
