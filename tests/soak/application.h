// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SOAK_APPLICATION_H
#define VYM_TESTS_SOAK_APPLICATION_H

#include "e2e/recording.h"
#include "vym_sdk.h"

#include <string>

namespace soak {

/** A library with all profiles, connected. */
class Application {
public:
    using TakeRssi = void (*)(bt_bdaddr_t address, uint8_t status, uint8_t rssi);

    explicit Application(const std::string& directory, TakeRssi take_rssi = nullptr) {
        if (take_rssi != nullptr) {
            callbacks_.bluetooth.read_rssi_cb = take_rssi;
        }
        vym_sdk_init_ex(directory.c_str());
        vym_bluetooth_init(&callbacks_.bluetooth);
        vym_rfcomm_init(&callbacks_.rfcomm);
        vym_hfp_init(&callbacks_.hfp);
        vym_a2dp_init(&callbacks_.a2dp);
        vym_avrcp_init(&callbacks_.avrcp);
        vym_pbap_init(&callbacks_.pbap);
        vym_gatt_client_init(&callbacks_.gatt_client);
        vym_gatt_server_init(&callbacks_.gatt_server);
        vym_hid_init(&callbacks_.hid);
    }
    ~Application() {
        vym_hid_done();
        vym_gatt_server_done();
        vym_gatt_client_done();
        vym_pbap_done();
        vym_avrcp_done();
        vym_a2dp_done();
        vym_hfp_done();
        vym_rfcomm_done();
        vym_bluetooth_done();
        vym_sdk_done();
    }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

private:
    e2e::Callbacks callbacks_;
};

} // namespace soak

#endif
