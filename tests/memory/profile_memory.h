// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What every profile must do without memory.
#ifndef VYM_TESTS_MEMORY_PROFILE_MEMORY_H
#define VYM_TESTS_MEMORY_PROFILE_MEMORY_H

#include "memory/failing_allocations.h"
#include "support/fake_server.h"

#include "bluetooth.h"
#include "vym_event_parser.h"

#include <functional>
#include <gtest/gtest.h>

namespace memory {

struct CommandCase {
    const char* name;
    std::function<int()> call;
    /** What it answers; some calls report nothing. */
    int without_memory = BT_STATUS_NOMEM;
};

/** Without memory none of them sends anything; afterwards each does its work again. */
template <size_t Size>
void ExpectNothingSent(support::FakeServer& server, const CommandCase (&commands)[Size]) {
    {
        const FailingAllocations failing;
        for (const CommandCase& one : commands) {
            EXPECT_EQ(one.call(), one.without_memory) << one.name;
        }
    }
    server.ExpectNothingMore();
    for (const CommandCase& one : commands) {
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS) << one.name;
    }
}

/** A parser takes three allocations; whichever fails, there is none. */
template <typename Callbacks>
void ExpectNoParser(event_parser_t* (*create)(Callbacks*)) {
    for (int skip = 0; skip < 3; ++skip) {
        const FailingAllocations failing(skip, 1);
        Callbacks callbacks{};
        EXPECT_EQ(create(&callbacks), nullptr) << skip;
        EXPECT_EQ(failing.Failed(), 1);
    }
}

} // namespace memory

#endif
