// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What one end of the socket has recorded, read while it is written: from a pipe instead of a file, so
// that a run may be of any length.
#ifndef VYM_TESTS_SOAK_WIRE_SIDE_H
#define VYM_TESTS_SOAK_WIRE_SIDE_H

#include "soak/calls.h"

#include <mutex>
#include <string>
#include <thread>

namespace soak {

class WireSide {
public:
    /** Reads until nobody writes any more. */
    virtual ~WireSide() = default;
    WireSide() = default;
    WireSide(const WireSide&) = delete;
    WireSide& operator=(const WireSide&) = delete;

    struct Record {
        Calls commands;
        Calls events;
        std::string last_event;
    };
    Record Now() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return record_;
    }

protected:
    void AddCommand(std::string_view text) {
        const std::lock_guard<std::mutex> lock(mutex_);
        record_.commands.Add(text);
    }
    void AddEvent(std::string_view text) {
        const std::lock_guard<std::mutex> lock(mutex_);
        record_.events.Add(text);
        record_.last_event = text;
    }

private:
    mutable std::mutex mutex_;
    Record record_;
};

/** The library's capture. */
class LibrarySide : public WireSide {
public:
    explicit LibrarySide(const std::string& pipe);
    ~LibrarySide() override { thread_.join(); }

private:
    void Read(const std::string& pipe);
    std::thread thread_;
};

/** What vym-sim writes with --traffic. */
class SimSide : public WireSide {
public:
    explicit SimSide(const std::string& pipe);
    ~SimSide() override { thread_.join(); }

private:
    void Read(const std::string& pipe);
    void Take(const std::string& line);
    std::thread thread_;
};

} // namespace soak

#endif
