// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/limits.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace support {

DescriptorLimit::DescriptorLimit(rlim_t count) {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
    EXPECT_GE(before_.rlim_max, count) << "raise the hard limit of open files (ulimit -Hn)";
    const rlimit limit{count, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

DescriptorLimit::~DescriptorLimit() {
    setrlimit(RLIMIT_NOFILE, &before_);
}

OccupiedDescriptors::OccupiedDescriptors(int first_free) {
    for (;;) {
        const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (fd < 0 || fd >= first_free) {
            EXPECT_GE(fd, first_free);
            close(fd);
            return;
        }
        fds_.push_back(fd);
    }
}

OccupiedDescriptors::~OccupiedDescriptors() {
    std::for_each(fds_.begin(), fds_.end(), close);
}

StandardInput::StandardInput() : saved_(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
    EXPECT_GE(saved_, 0);
}

StandardInput::~StandardInput() {
    Restore();
}

void StandardInput::Close() {
    close(STDIN_FILENO);
}

void StandardInput::Replace(int fd) {
    dup2(fd, STDIN_FILENO);
}

void StandardInput::Restore() {
    if (saved_ >= 0) {
        dup2(saved_, STDIN_FILENO);
        close(saved_);
        saved_ = -1;
    }
}

} // namespace support
