// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include "console/words.h"

#include <algorithm>
#include <set>

namespace vymctl {
namespace {

/// The events of the profile that is meant, else the profiles.
std::string what_there_is(const std::string& wanted) {
    std::string events;
    std::string names;
    for (const Profile& profile : profiles()) {
        names += (names.empty() ? "" : ", ") + profile.name;
        for (const EventRow& row : profile.events) {
            if (wanted.rfind(profile.name + '.', 0) == 0) {
                events += (events.empty() ? "" : ", ") + row.type.name;
            }
        }
    }
    return events.empty() ? "events begin with a profile: " + names : "there are " + events;
}

std::vector<Profile> make_profiles() {
    std::vector<Profile> all;
    // The adapter first: it hears of the descriptors that serial channels and audio need.
    for (Profile (*make)() :
         {adapter_profile, hfp_profile, a2dp_profile, avrcp_profile, pbap_profile, rfcomm_profile,
          gattc_profile, gatts_profile, hid_profile, audio_profile, core_profile}) {
        all.push_back(make());
        for (Verb& verb : all.back().verbs) {
            verb.group = all.back().name;
        }
    }
    return all;
}

/// Those whose modules are started.
std::set<const Profile*> s_running;

const Profile& find_profile(std::string_view name) {
    return *std::find_if(profiles().begin(), profiles().end(),
                         [name](const Profile& profile) { return profile.name == name; });
}

} // namespace

const std::vector<Profile>& profiles() {
    static const std::vector<Profile> s_profiles = make_profiles();
    return s_profiles;
}

void restart(std::string_view name) {
    const Profile& profile = find_profile(name);
    profile.install();
    profile.start();
    s_running.insert(&profile);
}

void halt(std::string_view name) {
    const Profile& profile = find_profile(name);
    profile.stop();
    s_running.erase(&profile);
}

bool is_running(std::string_view name) {
    return s_running.count(&find_profile(name)) == 1;
}

const Verb* find_verb(std::string_view group, std::string_view name) {
    for (const Profile& profile : profiles()) {
        for (const Verb& verb : profile.verbs) {
            if (verb.group == group && verb.name == name) {
                return &verb;
            }
        }
    }
    return nullptr;
}

const EventType& event_type(const std::string& name) {
    for (const Profile& profile : profiles()) {
        for (const EventRow& row : profile.events) {
            if (row.type.name == name) {
                return row.type;
            }
        }
    }
    throw Usage("there is no event \"" + console::printable(name) + "\"; " + what_there_is(name));
}

} // namespace vymctl
