// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server for both D-Bus clients.

#include "candidate.h"
#include "dbus.h"
#include "sockets.h"
#include "workload.h"

#include <systemd/sd-bus.h>

namespace bench {
namespace {

constexpr int kBatch = 100;

template <size_t Size>
int append(sd_bus_message* message, const std::array<uint8_t, Size>& bytes) {
    return sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size());
}

bool notify(sd_bus* bus) {
    sd_bus_message* signal = nullptr;
    bool good = sd_bus_message_new_signal(bus, &signal, kPath, kInterface, kNotify) >= 0;
    good = good && sd_bus_message_append(signal, "q", kConnection) >= 0;
    good = good && append(signal, kAddress) >= 0;
    good = good && sd_bus_message_append(signal, "yq", 0, kServiceInstance) >= 0;
    good = good && append(signal, kService) >= 0;
    good = good && sd_bus_message_append(signal, "q", kValueInstance) >= 0;
    good = good && append(signal, kCharacteristic) >= 0;
    good = good && sd_bus_message_append(signal, "y", 1) >= 0;
    good = good && append(signal, kPayload) >= 0;
    good = good && sd_bus_send(bus, signal, nullptr) >= 0;
    sd_bus_message_unref(signal);
    return good;
}

int on_message(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(message, kInterface, kStartEvents) > 0) {
        *static_cast<bool*>(data) = true;
        return 1;
    }
    if (sd_bus_message_is_method_call(message, kInterface, kGetName) > 0) {
        return sd_bus_reply_method_return(message, "s", "KitchenUnit");
    }
    return sd_bus_message_is_method_call(message, kInterface, kWrite) > 0 ? 1 : 0;
}

void stream(sd_bus* bus, int fd, bool alone) {
    bool good = true;
    while (good) {
        for (int i = 0; good && i < (alone ? 1 : kBatch); ++i) {
            good = notify(bus);
        }
        good = good && sd_bus_flush(bus) >= 0;
        if (alone) {
            wait_until_read(fd);
        }
    }
}

sd_bus* open_bus(int fd, bool* started) {
    sd_bus* bus = nullptr;
    sd_id128_t id;
    if (sd_bus_new(&bus) < 0 || sd_id128_randomize(&id) < 0 || sd_bus_set_fd(bus, fd, fd) < 0 ||
        sd_bus_set_server(bus, 1, id) < 0 || sd_bus_start(bus) < 0 ||
        sd_bus_add_filter(bus, nullptr, on_message, started) < 0) {
        give_up("sd-bus server");
    }
    return bus;
}

void serve_client(int fd, const Job& job) {
    bool started = false;
    sd_bus* bus = open_bus(fd, &started);
    int result = 0;
    while (result >= 0) {
        result = sd_bus_process(bus, nullptr);
        if (started) {
            stream(bus, fd, job.workload == "event");
            break;
        }
        if (result == 0) {
            result = sd_bus_wait(bus, UINT64_MAX);
        }
    }
    sd_bus_close_unref(bus);
}

} // namespace

void serve(const Job& job) {
    const Listener listener(job.socket_path());
    while (true) {
        serve_client(listener.accept(), job);
    }
}

} // namespace bench
