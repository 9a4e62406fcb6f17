// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_LEAK_CHECK_H
#define VYM_TESTS_SUPPORT_LEAK_CHECK_H

#include "support/wait.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace support {

/** The process's open descriptors: number and what it leads to. */
std::map<int, std::string> OpenDescriptors();

/** The number of threads the process has. */
size_t CountThreads();

/** True when `fd` is open in this process. */
bool IsOpen(int fd);

/** Compares the process's descriptors and threads with those at its construction. */
class LeakCheck {
public:
    LeakCheck();

    /** Success when nothing is left over; threads that are just ending get `limit` for it. */
    [[nodiscard]] ::testing::AssertionResult NothingLeft(Milliseconds limit = TimeLimit()) const;

    /** The descriptors that were opened since and are still open. */
    [[nodiscard]] std::vector<int> LeftOpen() const;

private:
    std::map<int, std::string> descriptors_;
    size_t threads_;
};

} // namespace support

#endif
