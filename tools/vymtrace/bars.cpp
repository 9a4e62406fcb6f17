// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "bars.h"

#include <algorithm>

namespace trace {
namespace {

/// An event that begins or ends something.
struct Rule {
    std::string_view profile;
    std::string_view event;
    std::string_view kind;
    /// The number that tells; with an empty name the event always ends it.
    std::string_view field;
    uint32_t first_on;
    uint32_t last_on;
    /// The field that tells one from another, if there may be several.
    std::string_view key;
};

constexpr uint32_t kAny = 0xFFFFFFFF;

constexpr Rule kRules[] = {
    {"hfp", "onCall", "call", "call", 1, kAny, ""},
    {"hfp", "onCallsetup", "call setup", "call_setup", 1, kAny, ""},
    {"hfp", "onAudioState", "voice", "state", 2, kAny, "address"},
    {"hfp", "onConnectionState", "connection", "state", 2, kAny, "address"},
    {"a2dp", "onAudioStateChanged", "stream", "state", 2, 2, "address"},
    {"a2dp", "onConnectionStateChanged", "connection", "state", 2, 2, "address"},
    {"avrcp", "onHandlePlayStatusChanged", "playing", "play_status", 1, 1, "address"},
    {"avrcp", "onConnectionStateChanged", "connection", "connected", 1, kAny, "address"},
    {"pbap", "onConnectionStatus", "connection", "status", 0, 0, "address"},
    {"rfcomm", "onRfcommConnectionResult", "connection", "status", 0, 0, "handle"},
    {"rfcomm", "onRfcommDisconnectionResult", "connection", "", 0, 0, "handle"},
    {"gatt_client", "onConnected", "connection", "status", 0, 0, "conn_id"},
    {"gatt_client", "onDisconnected", "connection", "", 0, 0, "conn_id"},
    {"gatt_server", "onClientConnected", "connection", "connected", 1, kAny, "conn_id"},
    {"hid", "onConnectionState", "connection", "state", 0, 0, "address"},
    {"bluetooth", "onDiscoveryStateChanged", "discovery", "state", 1, kAny, ""},
    {"bluetooth", "onStateChanged", "on", "state", 1, 1, ""},
};

const protocol::Value* find(const std::vector<protocol::Value>& values, std::string_view name) {
    const auto found = std::find_if(values.begin(), values.end(), [name](const protocol::Value& value) {
        return value.field->name == name;
    });
    return found == values.end() ? nullptr : &*found;
}

} // namespace

void Bars::take(const Item& item, size_t number) {
    last_us_ = item.text().time_us;
    const protocol::Found& found = item.found();
    if (!found || item.text().is_command) {
        return;
    }
    const auto* rule = std::find_if(std::begin(kRules), std::end(kRules), [&found](const Rule& each) {
        return each.profile == found.profile->name && each.event == found.message->name;
    });
    if (rule == std::end(kRules) || !item.problem().empty()) {
        return;
    }
    const std::vector<protocol::Value>& values = item.decoded().values;
    const protocol::Value* state = find(values, rule->field);
    const protocol::Value* key = find(values, rule->key);
    const bool on =
        state != nullptr && state->number >= rule->first_on && state->number <= rule->last_on;
    const Key place(rule->kind, std::string(rule->profile) + (key == nullptr ? "" : to_text(*key)));
    const auto open = open_.find(place);
    if (on && open == open_.end()) {
        open_[place] = {rule->profile, rule->kind, last_us_, last_us_, number};
    } else if (!on && open != open_.end()) {
        open->second.end_us = last_us_;
        ended_.push_back(open->second);
        open_.erase(open);
    }
}

std::vector<Bar> Bars::all() const {
    std::vector<Bar> bars = ended_;
    for (const auto& [key, bar] : open_) {
        bars.push_back(bar);
        bars.back().end_us = last_us_;
    }
    std::sort(bars.begin(), bars.end(), [](const Bar& a, const Bar& b) {
        return std::make_pair(a.begin_us, a.item) < std::make_pair(b.begin_us, b.item);
    });
    return bars;
}

} // namespace trace
