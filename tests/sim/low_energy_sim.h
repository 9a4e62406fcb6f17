// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What tests of Low Energy share: UUIDs on the wire, and a world that moves only where a test lets it.
#ifndef VYM_TESTS_LOW_ENERGY_SIM_H
#define VYM_TESTS_LOW_ENERGY_SIM_H

#include "phone_sim.h"

inline const std::string kStrap = "C64865617274";
inline const std::string kSensor = "E2436C696D61";
inline const std::string kTablet = "D25461626C74";
inline const std::string kNobody = "0102030405FF";

/// A 16-bit UUID where an event carries it: most significant byte first.
inline std::string in_event(const std::string& uuid) {
    return "0000" + uuid + "00001000800000805F9B34FB";
}

/// And where a command carries it: least significant byte first.
inline std::string in_command(const std::string& uuid) {
    return "FB349B5F8000008000100000" + uuid.substr(2) + uuid.substr(0, 2) + "0000";
}

inline const std::string kNoUuid = "00000000000000000000000000000000";
inline const std::string kAppInCommand = "41403130212011100078564534120000";
inline const std::string kAppInEvent = "00001234455678001011202130314041";

inline sim::Pace low_energy_pace() {
    sim::Pace pace = phone_pace();
    pace.advertising_interval = std::chrono::hours(1);
    pace.le_connect_timeout = std::chrono::milliseconds(1);
    pace.notification_interval = std::chrono::hours(1);
    pace.central_approach = std::chrono::milliseconds(1);
    pace.att_step = std::chrono::milliseconds(1);
    pace.att_timeout = std::chrono::hours(1);
    pace.discoverable_second = std::chrono::hours(1);
    return pace;
}

#endif
