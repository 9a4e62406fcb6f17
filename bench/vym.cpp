// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The library, as an application uses it. The variant says what is on, any of these words in it:
//   closed   the capture is closed after the start
//   nine     all nine profiles are started, the one that is measured last

#include "candidate.h"
#include "meter.h"
#include "sockets.h"
#include "workload.h"

#include <cstring>
#include <unistd.h>
#include <vym/vym_a2dp.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_debug.h>
#include <vym/vym_gatt_client.h>
#include <vym/vym_gatt_server.h>
#include <vym/vym_hfp.h>
#include <vym/vym_hid.h>
#include <vym/vym_pbap.h>
#include <vym/vym_rfcomm.h>
#include <vym/vym_sdk.h>

namespace bench {
namespace {

Meter* s_meter;

// On the receive thread. Behind the last one nothing more is received: it would be counted, too.
void count_one() {
    s_meter->tick();
    while (s_meter->done()) {
        pause();
    }
}

struct Tables {
    bluetooth_callback_t bluetooth{};
    rfcomm_callback_t rfcomm{};
    hfp_callback_t hfp{};
    a2dp_callback_t a2dp{};
    avrcp_callback_t avrcp{};
    pbap_callback_t pbap{};
    gatt_client_callback_t gatt_client{};
    gatt_server_callback_t gatt_server{};
    hid_callback_t hid{};
};
Tables s_tables;

// Of a mixed stream only the notification is counted, the last of each turn.
void fill_tables(bool mixed) {
    s_tables.gatt_client.notify_cb = [](uint16_t, bt_bdaddr_t, uint8_t, uint16_t, bt_uuid_t, uint16_t,
                                        bt_uuid_t, uint8_t, uint16_t, uint8_t*) { count_one(); };
    if (mixed) {
        return;
    }
    s_tables.gatt_client.scan_result_cb = [](bt_bdaddr_t, uint8_t, uint16_t, uint8_t*, uint8_t) {
        count_one();
    };
    s_tables.pbap.index_data_ind_cb = [](phone_book_t) { count_one(); };
    s_tables.avrcp.connection_state_changed_cb = [](uint8_t, bt_bdaddr_t) { count_one(); };
    s_tables.avrcp.get_image_result_cb = [](bt_bdaddr_t, uint8_t) { count_one(); };
}

void start(const Job& job) {
    std::string directory = job.directory;
    if (vym_sdk_init_ex(directory.data()) < 0) {
        give_up("vym_sdk_init_ex " + job.directory);
    }
    if (job.has("closed")) {
        vym_debug_close();
    }
}

void start_other_profiles() {
    vym_bluetooth_init(&s_tables.bluetooth);
    vym_rfcomm_init(&s_tables.rfcomm);
    vym_hfp_init(&s_tables.hfp);
    vym_a2dp_init(&s_tables.a2dp);
    vym_hid_init(&s_tables.hid);
    vym_gatt_server_init(&s_tables.gatt_server);
}

void start_streaming_profiles() {
    vym_avrcp_init(&s_tables.avrcp);
    vym_pbap_init(&s_tables.pbap);
    vym_gatt_client_init(&s_tables.gatt_client);
}

void start_profiles_for(const Job& job) {
    if (job.has("nine") || job.workload == "mixed") {
        start_other_profiles();
        start_streaming_profiles();
    } else if (job.workload == "phone-book") {
        vym_pbap_init(&s_tables.pbap);
    } else if (job.workload == "first-tag" || job.workload == "last-tag") {
        vym_avrcp_init(&s_tables.avrcp);
    } else {
        vym_gatt_client_init(&s_tables.gatt_client);
    }
}

void stop() {
    vym_gatt_client_done();
    vym_pbap_done();
    vym_avrcp_done();
    vym_gatt_server_done();
    vym_hid_done();
    vym_a2dp_done();
    vym_hfp_done();
    vym_rfcomm_done();
    vym_bluetooth_done();
    vym_sdk_done();
}

std::string events(const Job& job, const Stream& events) {
    const long per_tick = events.events / events.counted;
    Meter meter(kWarmUp, job.count / per_tick);
    s_meter = &meter;
    start(job);
    start_profiles_for(job);
    vym_gatt_client_listen(1, 1); // what the server waits for
    meter.wait();
    // Not stop(): the receive thread waits in its callback.
    return meter.report(per_tick);
}

bt_uuid_t uuid_of(const std::array<uint8_t, 16>& bytes) {
    bt_uuid_t uuid;
    std::memcpy(uuid.uu, bytes.data(), bytes.size());
    return uuid;
}

std::string commands(const Job& job) {
    start(job);
    start_profiles_for(job);
    Meter meter(kWarmUp, job.count);
    std::array<uint8_t, 20> value = kPayload;
    while (!meter.done()) {
        vym_gatt_client_write_characteristic(kConnection, 0, kServiceInstance, uuid_of(kService),
                                             kValueInstance, uuid_of(kCharacteristic), 2, 0,
                                             static_cast<uint16_t>(value.size()), value.data());
        meter.tick();
    }
    stop();
    return meter.report();
}

std::string round_trips(const Job& job) {
    start(job);
    vym_bluetooth_init(&s_tables.bluetooth);
    Meter meter(kWarmUp, job.count);
    while (!meter.done()) {
        const bt_bdname_t* name = vym_bluetooth_get_name();
        if (std::memcmp(name->name, "KitchenUnit", 12) != 0) {
            give_up("the adapter's name");
        }
        meter.tick();
    }
    stop();
    return meter.report();
}

std::string starts(const Job& job) {
    Meter meter(2, job.count);
    while (!meter.done()) {
        start(job);
        if (job.has("nine")) {
            start_other_profiles();
            start_streaming_profiles();
        }
        stop();
        meter.tick();
    }
    return meter.report();
}

} // namespace

std::string run(const Job& job) {
    fill_tables(job.workload == "mixed");
    if (job.workload == "command") {
        return commands(job);
    }
    if (job.workload == "round-trip") {
        return round_trips(job);
    }
    if (job.workload == "start") {
        return starts(job);
    }
    return events(job, stream(job.workload));
}

} // namespace bench
