// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SOAK_APPLICATION_H
#define VYM_TESTS_SOAK_APPLICATION_H

#include "e2e/recording.h"
#include "support/end_all.h"
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
        e2e::StartProfiles(callbacks_);
    }
    ~Application() { end_all(); }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

private:
    e2e::Callbacks callbacks_;
};

} // namespace soak

#endif
