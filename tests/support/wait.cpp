// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/wait.h"

#include <algorithm>
#include <fstream>
#include <thread>
#include <utility>

namespace support {

Milliseconds TimeLimit() {
#if defined(__arm__)
    constexpr int kFactor = 5; // usually an emulated machine
#else
    constexpr int kFactor = 1;
#endif
    return Milliseconds(20000 * kFactor);
}

bool WaitUntil(const std::function<bool()>& condition, Milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return condition();
        }
        std::this_thread::sleep_for(Milliseconds(2));
    }
    return true;
}

bool IsAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const size_t name_end = stat.rfind(')');
    return name_end != std::string::npos && stat.substr(name_end + 1, 2) == " S";
}

void Recorder::Add(const std::string& entry) {
    std::function<void(const std::string&)> hook;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back(entry);
        hook = hook_;
        changed_.notify_all();
    }
    if (hook) {
        hook(entry);
    }
}

void Recorder::SetHook(std::function<void(const std::string&)> hook) {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook_ = std::move(hook);
}

::testing::AssertionResult Recorder::WaitFor(const std::function<bool()>& condition,
                                             const std::string& what, Milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (changed_.wait_for(lock, limit, condition)) {
        return ::testing::AssertionSuccess();
    }
    ::testing::AssertionResult failure = ::testing::AssertionFailure();
    failure << "waited " << limit.count() << " ms for " << what << "; there are " << entries_.size();
    for (const std::string& entry : entries_) {
        failure << "\n  " << entry;
    }
    return failure;
}

::testing::AssertionResult Recorder::WaitFor(size_t count, Milliseconds limit) {
    return WaitFor([&] { return entries_.size() >= count; }, std::to_string(count) + " entries", limit);
}

::testing::AssertionResult Recorder::WaitForEntry(const std::string& entry, Milliseconds limit) {
    return WaitFor([&] { return CountLocked(entry) > 0; }, "the entry " + entry, limit);
}

::testing::AssertionResult Recorder::WaitForExactly(const std::vector<std::string>& expected,
                                                    Milliseconds limit) {
    const ::testing::AssertionResult enough = WaitFor(expected.size(), limit);
    const std::vector<std::string> entries = All();
    for (size_t i = 0; i < std::max(entries.size(), expected.size()); ++i) {
        const std::string wanted = i < expected.size() ? expected[i] : "(nothing)";
        const std::string found = i < entries.size() ? entries[i] : "(nothing)";
        if (wanted != found) {
            return ::testing::AssertionFailure()
                   << "entry " << i << ": expected " << wanted << ", recorded " << found << "\n"
                   << enough.message();
        }
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult Recorder::WaitAndRemove(const std::string& entry, Milliseconds limit) {
    ::testing::AssertionResult found = WaitForEntry(entry, limit);
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto place = std::find(entries_.begin(), entries_.end(), entry);
    if (place != entries_.end()) {
        entries_.erase(place);
    }
    return found;
}

bool Recorder::Contains(const std::string& entry) const {
    return Count(entry) > 0;
}

size_t Recorder::Count(const std::string& entry) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return CountLocked(entry);
}

size_t Recorder::CountLocked(const std::string& entry) const {
    return static_cast<size_t>(std::count(entries_.begin(), entries_.end(), entry));
}

size_t Recorder::Size() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_.size();
}

std::vector<std::string> Recorder::All() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_;
}

std::vector<std::string> Recorder::Take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(entries_, {});
}

void Recorder::Reset() {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
    hook_ = nullptr;
}

void Gate::Open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    changed_.notify_all();
}

bool Gate::Wait(Milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return open_; });
}

} // namespace support
