// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "hub.h"

#include "slot.h"

#include <algorithm>

namespace vymctl {

Hub& hub() {
    static Hub s_hub;
    return s_hub;
}

void publish(const EventType& type, std::vector<Json> values) {
    hub().publish(type, std::move(values));
}

void Hub::publish(const EventType& type, std::vector<Json> values) {
    const Event event{&type, std::move(values), std::chrono::system_clock::now()};
    const std::lock_guard lock(mutex_);
    latest_[event.subject()] = event;
    ++counts_[type.name];
    places_[type.name] = ++all_;
    if (watch_) {
        watch_(event);
    }
    if (wake_) {
        held_.push_back(event);
        wake_();
    } else if (sink_) {
        sink_(event);
    }
    changed_.notify_all();
}

void Hub::show_to(Sink sink) {
    const std::lock_guard lock(mutex_);
    sink_ = std::move(sink);
}

void Hub::watch_with(Sink watch) {
    const std::lock_guard lock(mutex_);
    watch_ = std::move(watch);
}

void Hub::hold(std::function<void()> wake) {
    const std::lock_guard lock(mutex_);
    wake_ = std::move(wake);
}

void Hub::release() {
    const std::lock_guard lock(mutex_);
    wake_ = {};
    for (const Event& event : held_) {
        if (sink_) {
            sink_(event);
        }
    }
    held_.clear();
}

Wait Hub::wait_until(Deadline deadline, const std::function<bool()>& met) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (met()) {
            return Wait::Met;
        }
        if (interrupted_) {
            return Wait::Interrupted;
        }
        if (gone_) {
            return Wait::ServerGone;
        }
        if (question_) {
            return Wait::Asked;
        }
        if (changed_.wait_until(lock, deadline) == std::cv_status::timeout) {
            return met() ? Wait::Met : Wait::TimedOut;
        }
    }
}

void Hub::change(const std::function<void()>& action) {
    const std::lock_guard lock(mutex_);
    action();
    changed_.notify_all();
}

bool Hub::is_true(const Condition& condition) {
    if (condition.tests.empty()) {
        // Happened, and nobody has waited for it yet.
        size_t& used = used_[condition.type->name];
        const size_t now = count(condition.type->name);
        return now > std::exchange(used, now);
    }
    return std::any_of(latest_.begin(), latest_.end(),
                       [&condition](const auto& entry) { return condition.holds(entry.second); });
}

size_t Hub::count(const std::string& event) const {
    const auto it = counts_.find(event);
    return it == counts_.end() ? 0 : it->second;
}

bool Hub::is_newer(const std::string& event, const std::string& than) const {
    const auto place = [this](const std::string& name) {
        const auto it = places_.find(name);
        return it == places_.end() ? 0 : it->second;
    };
    return place(event) > place(than);
}

std::set<std::string> Hub::known(Kind kind) {
    std::set<std::string> found;
    const std::lock_guard lock(mutex_);
    for (const auto& entry : latest_) {
        const Event& event = entry.second;
        for (size_t i = 0; i < event.values.size(); ++i) {
            if (event.type->fields[i].kind == kind && event.values[i].is_string()) {
                found.insert(event.values[i].get<std::string>());
            }
        }
    }
    return found;
}

std::vector<Event> Hub::latest() {
    std::vector<Event> events;
    const std::lock_guard lock(mutex_);
    for (const auto& entry : latest_) {
        events.push_back(entry.second);
    }
    return events;
}

void Hub::server_gone(bool gone) {
    change([this, gone] { gone_ = gone; });
}

bool Hub::is_server_gone() {
    const std::lock_guard lock(mutex_);
    return gone_;
}

void Hub::interrupt() {
    change([this] {
        interrupted_ = true;
        if (wake_) {
            wake_();
        }
    });
}

bool Hub::take_interrupt() {
    const std::lock_guard lock(mutex_);
    return std::exchange(interrupted_, false);
}

void Hub::ask(const Event& request) {
    question_ = request;
}

std::optional<Event> Hub::take_question() {
    const std::lock_guard lock(mutex_);
    return std::exchange(question_, std::nullopt);
}

} // namespace vymctl
