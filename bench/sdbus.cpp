// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// systemd's sd-bus, without a bus between the peers.

#include "candidate.h"
#include "dbus.h"
#include "meter.h"
#include "sockets.h"
#include "workload.h"

#include <cstring>
#include <systemd/sd-bus.h>

namespace bench {
namespace {

constexpr long kFlushEvery = 64;

struct Bytes {
    const void* data = nullptr;
    size_t size = 0;
};

bool read(sd_bus_message* message, Bytes* bytes) {
    return sd_bus_message_read_array(message, 'y', &bytes->data, &bytes->size) >= 0;
}

int on_notify(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    uint16_t connection = 0;
    uint16_t service_instance = 0;
    uint16_t value_instance = 0;
    uint8_t service_type = 0;
    uint8_t is_notify = 0;
    Bytes address;
    Bytes service;
    Bytes characteristic;
    Bytes value;
    if (sd_bus_message_read(message, "q", &connection) < 0 || !read(message, &address) ||
        sd_bus_message_read(message, "yq", &service_type, &service_instance) < 0 ||
        !read(message, &service) || sd_bus_message_read(message, "q", &value_instance) < 0 ||
        !read(message, &characteristic) || sd_bus_message_read(message, "y", &is_notify) < 0 ||
        !read(message, &value) || value.size != kPayload.size()) {
        give_up("a notification");
    }
    static_cast<Meter*>(data)->tick();
    return 0;
}

sd_bus* open_bus(const Job& job, Meter* meter) {
    const int fd = connect_to(job.socket_path());
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, fd, fd) < 0 || sd_bus_start(bus) < 0 ||
        sd_bus_match_signal(bus, nullptr, nullptr, kPath, kInterface, kNotify, on_notify, meter) < 0) {
        give_up("sd-bus client");
    }
    return bus;
}

sd_bus_message* new_call(sd_bus* bus, const char* member) {
    sd_bus_message* call = nullptr;
    if (sd_bus_message_new_method_call(bus, &call, nullptr, kPath, kInterface, member) < 0 ||
        sd_bus_message_set_expect_reply(call, 0) < 0) {
        give_up(member);
    }
    return call;
}

void send_and_unref(sd_bus* bus, sd_bus_message* call) {
    if (sd_bus_send(bus, call, nullptr) < 0) {
        give_up("sd_bus_send");
    }
    sd_bus_message_unref(call);
}

void write_value(sd_bus* bus) {
    sd_bus_message* call = new_call(bus, kWrite);
    sd_bus_message_append(call, "qyq", kConnection, 0, kServiceInstance);
    sd_bus_message_append_array(call, 'y', kService.data(), kService.size());
    sd_bus_message_append(call, "q", kValueInstance);
    sd_bus_message_append_array(call, 'y', kCharacteristic.data(), kCharacteristic.size());
    sd_bus_message_append(call, "yy", 2, 0);
    sd_bus_message_append_array(call, 'y', kPayload.data(), kPayload.size());
    send_and_unref(bus, call);
}

void ask_name(sd_bus* bus) {
    sd_bus_message* reply = nullptr;
    const char* name = nullptr;
    if (sd_bus_call_method(bus, nullptr, kPath, kInterface, kGetName, nullptr, &reply, "") < 0 ||
        sd_bus_message_read(reply, "s", &name) < 0 || std::strcmp(name, "KitchenUnit") != 0) {
        give_up(kGetName);
    }
    sd_bus_message_unref(reply);
}

void receive(sd_bus* bus, Meter* meter) {
    send_and_unref(bus, new_call(bus, kStartEvents));
    while (!meter->done()) {
        const int result = sd_bus_process(bus, nullptr);
        if (result < 0 || (result == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
            give_up("sd_bus_process");
        }
    }
}

} // namespace

std::string run(const Job& job) {
    Meter meter(kWarmUp, job.count);
    sd_bus* bus = open_bus(job, &meter);
    if (job.workload == "event" || job.workload == "flood") {
        receive(bus, &meter);
    } else {
        for (long i = 0; !meter.done(); ++i) {
            if (job.workload == "command") {
                write_value(bus);
                // What finds no room in the socket is kept until somebody waits.
                if (i % kFlushEvery == 0) {
                    sd_bus_flush(bus);
                }
            } else {
                ask_name(bus);
            }
            meter.tick();
        }
    }
    sd_bus_close_unref(bus);
    return meter.report();
}

} // namespace bench
