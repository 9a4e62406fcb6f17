// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_WAIT_H
#define VYM_TESTS_SUPPORT_WAIT_H

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

namespace support {

using Milliseconds = std::chrono::milliseconds;

/** How long a test waits for something that must happen: generous, since only a failing test uses it
 * up. */
Milliseconds TimeLimit();

/** Waits until `condition` holds; false when `limit` passed first. The only place that naps. */
bool WaitUntil(const std::function<bool()>& condition, Milliseconds limit = TimeLimit());

/** Whether a thread of this process, by its kernel id, is waiting for something. */
bool IsAsleep(pid_t thread);

/** Strings that callbacks leave, in the order of their arrival; any thread may use it. */
class Recorder {
public:
    /** Appends, then runs the hook (if set) on the calling thread. */
    void Add(const std::string& entry);

    /** Runs inside every later Add(), after the entry was stored, with no lock of the recorder held. */
    void SetHook(std::function<void(const std::string&)> hook);

    /** Waits until at least `count` entries are there. */
    [[nodiscard]] ::testing::AssertionResult WaitFor(size_t count, Milliseconds limit = TimeLimit());

    /** Waits until `entry` is there. */
    [[nodiscard]] ::testing::AssertionResult WaitForEntry(const std::string& entry,
                                                          Milliseconds limit = TimeLimit());

    /** Waits until as many entries as expected are there and compares all. */
    [[nodiscard]] ::testing::AssertionResult WaitForExactly(const std::vector<std::string>& expected,
                                                            Milliseconds limit = TimeLimit());

    /** Waits until `entry` is there and removes its first occurrence. */
    [[nodiscard]] ::testing::AssertionResult WaitAndRemove(const std::string& entry,
                                                           Milliseconds limit = TimeLimit());

    [[nodiscard]] bool Contains(const std::string& entry) const;
    [[nodiscard]] size_t Count(const std::string& entry) const;
    [[nodiscard]] size_t Size() const;
    [[nodiscard]] std::vector<std::string> All() const;

    /** All entries; the recorder is empty afterwards. */
    std::vector<std::string> Take();

    /** Empties the recorder and removes the hook. */
    void Reset();

private:
    ::testing::AssertionResult WaitFor(const std::function<bool()>& condition, const std::string& what,
                                       Milliseconds limit);
    size_t CountLocked(const std::string& entry) const;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> entries_;
    std::function<void(const std::string&)> hook_;
};

/** A gate that one thread opens and others wait at, for callbacks that must stay inside for a while. */
class Gate {
public:
    void Open();
    [[nodiscard]] bool Wait(Milliseconds limit = TimeLimit());

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

} // namespace support

#endif
