// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "round_trips.h"

#include <algorithm>

namespace trace {
namespace {

const protocol::Message* find(const protocol::Messages& messages, std::string_view name) {
    const auto* found =
        std::find_if(messages.begin(), messages.end(),
                     [name](const protocol::Message& message) { return message.name == name; });
    return found == messages.end() ? nullptr : found;
}

void answer(RoundTrips::Times* times, int64_t now_us) {
    const int64_t us = now_us - *times->asked_us;
    times->asked_us.reset();
    times->shortest_us = times->answered == 0 ? us : std::min(times->shortest_us, us);
    times->longest_us = times->answered == 0 ? us : std::max(times->longest_us, us);
    times->sum_us += static_cast<double>(us);
    ++times->answered;
}

} // namespace

const std::vector<Request>& requests() {
    static const std::vector<Request> kRequests = {
        {"bluetooth", "get_version", "onBtVersion"},
        {"bluetooth", "get_adapter_property", "onAdapterProperties"},
        {"bluetooth", "set_adapter_property", "onAdapterProperties"},
        {"bluetooth", "get_adapter_properties", "onAdapterProperties"},
        {"bluetooth", "get_remote_device_property", "onRemoteDeviceProperties"},
        {"bluetooth", "get_remote_device_properties", "onRemoteDeviceProperties"},
        {"rfcomm", "connect", "onRfcommConnectionResult"},
        {"rfcomm", "listen", "onRfcommListenResult"},
        {"gatt_client", "register", "onClientRegistered"},
    };
    return kRequests;
}

RoundTrips::RoundTrips() {
    for (const Request& request : requests()) {
        for (const protocol::Profile* profile : protocol::profiles()) {
            if (profile->name == request.profile) {
                Times times;
                times.request = &request;
                times.command = find(profile->commands, request.command);
                times.event = find(profile->events, request.event);
                all_.push_back(times);
            }
        }
    }
}

void RoundTrips::take(const Item& item) {
    for (Times& times : all_) {
        if (item.found().message == times.command) {
            times.unanswered += times.asked_us ? 1 : 0;
            times.asked_us = item.text().time_us;
        } else if (item.found().message == times.event && times.asked_us) {
            answer(&times, item.text().time_us);
        }
    }
}

std::vector<RoundTrips::Times> RoundTrips::made() const {
    std::vector<Times> made;
    for (Times times : all_) {
        times.unanswered += times.asked_us ? 1 : 0;
        if (times.answered + times.unanswered > 0) {
            made.push_back(times);
        }
    }
    return made;
}

} // namespace trace
