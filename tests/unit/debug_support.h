// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the tests of the capture and of its listener share.
#ifndef VYM_TESTS_UNIT_DEBUG_SUPPORT_H
#define VYM_TESTS_UNIT_DEBUG_SUPPORT_H

#include <chrono>
#include <functional>
#include <thread>
#include <unistd.h>
#include <utility>

namespace unit {

constexpr std::chrono::seconds PATIENCE{20};

/// Owns a descriptor.
class descriptor {
public:
    explicit descriptor(int number = -1) : fd(number) {}
    descriptor(descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    descriptor& operator=(descriptor&& other) noexcept {
        std::swap(fd, other.fd);
        return *this;
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    ~descriptor() {
        if (fd != -1) {
            close(fd);
        }
    }
    int get() const { return fd; }

private:
    int fd;
};

/// Asks until the answer is yes. @return false when patience ran out.
inline bool becomes_true(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace unit

#endif
