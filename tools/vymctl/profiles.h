// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The profiles: their verbs and events, and how the library is told to use them.
#ifndef VYM_VYMCTL_PROFILES_H
#define VYM_VYMCTL_PROFILES_H

#include "slot.h"

namespace vymctl {

struct Profile {
    std::string name;
    std::string title;
    std::vector<Verb> verbs;
    std::vector<EventRow> events;
    /// The table that the library gets, of this size; none when it is null.
    void* callbacks = nullptr;
    size_t callbacks_size = 0;
    void (*start)() = nullptr;
    void (*stop)() = nullptr;

    void install() const {
        for (const EventRow& row : events) {
            if (row.install != nullptr) {
                row.install(row.type, callbacks);
            }
        }
    }
};

/// A profile whose callbacks are members of one table.
template <typename T, void (*Start)(T*), void (*Stop)()>
Profile make_profile(const char* name, const char* title, std::vector<Verb> verbs,
                     std::vector<EventRow> events) {
    static T s_callbacks{};
    return {name,
            title,
            std::move(verbs),
            std::move(events),
            &s_callbacks,
            sizeof s_callbacks,
            [] { Start(&s_callbacks); },
            [] { Stop(); }};
}

// One file each.
Profile adapter_profile();
Profile hfp_profile();
Profile a2dp_profile();
Profile avrcp_profile();
Profile pbap_profile();
Profile rfcomm_profile();
Profile gattc_profile();
Profile gatts_profile();
Profile hid_profile();
Profile audio_profile();
Profile core_profile();

/// All of them, made once, in the order in which they are started.
const std::vector<Profile>& profiles();

/// Starts a profile's module, with all its callbacks set.
void restart(std::string_view name);
/// Stops it; harmless when it is not started.
void halt(std::string_view name);
bool is_running(std::string_view name);

/// Null when there is no such verb.
const Verb* find_verb(std::string_view group, std::string_view name);

/// Throws Usage, with what there is instead.
const EventType& event_type(const std::string& name);

} // namespace vymctl

#endif
