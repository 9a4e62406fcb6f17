// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The owner of a file descriptor.
#ifndef VYM_SIM_UNIQUE_FD_H
#define VYM_SIM_UNIQUE_FD_H

#include <unistd.h>
#include <utility>

namespace sim {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    explicit operator bool() const { return fd_ >= 0; }
    void reset() {
        if (fd_ >= 0) {
            close(std::exchange(fd_, -1));
        }
    }

private:
    int fd_ = -1;
};

} // namespace sim

#endif
