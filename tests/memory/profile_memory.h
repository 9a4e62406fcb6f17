// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What every profile must do without memory.
#ifndef VYM_TESTS_MEMORY_PROFILE_MEMORY_H
#define VYM_TESTS_MEMORY_PROFILE_MEMORY_H

#include "memory/failing_calls.h"
#include "support/exercised.h"
#include "support/fake_server.h"

#include "bluetooth.h"
#include "vym_event_parser.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace memory {

struct CommandCase {
    const char* name;
    std::function<int()> call;
    /** The lines that it writes, each with an allocation of its own. */
    std::vector<std::string> sent;
    /** What it answers without memory; some calls report nothing. */
    int without_memory = BT_STATUS_NOMEM;
};

/** Calls `scenario` with the first allocation failing, then the second, and so on until none is left
 * to fail. It is told which one fails, counted from 0, and answers whether one did. */
inline void ForEachFailure(const std::function<bool(int)>& scenario) {
    constexpr int kEndless = 1000;
    for (int skip = 0; skip < kEndless; ++skip) {
        SCOPED_TRACE("allocation " + std::to_string(skip) + " fails");
        if (!scenario(skip) || ::testing::Test::HasFatalFailure()) {
            return;
        }
    }
    FAIL() << "there is always one more allocation";
}

/** Whichever allocation fails, its line is not sent, and no other is harmed; with memory all are. */
inline void ExpectCommandSurvives(support::FakeServer& server, const CommandCase& one) {
    SCOPED_TRACE(one.name);
    const size_t held = BlocksHeld();
    {
        const FailingAllocations all;
        EXPECT_EQ(one.call(), one.without_memory);
        EXPECT_EQ(all.Failed(), static_cast<int>(one.sent.size()));
    }
    ForEachFailure([&](int skip) {
        const FailingAllocations failing(skip, 1);
        const int status = one.call();
        EXPECT_EQ(BlocksHeld(), held);
        const bool failed = failing.Failed() > 0;
        EXPECT_EQ(status, failed ? one.without_memory : BT_STATUS_SUCCESS);
        for (int i = 0; i < static_cast<int>(one.sent.size()); ++i) {
            if (!failed || i != skip) {
                server.ExpectCommand(one.sent[static_cast<size_t>(i)]);
            }
        }
        server.ExpectNothingMore();
        return failed;
    });
}

template <size_t Size>
void ExpectCommandsSurvive(support::FakeServer& server, const CommandCase (&commands)[Size]) {
    for (const CommandCase& one : commands) {
        ExpectCommandSurvives(server, one);
    }
}

/** A parser's allocations; whichever fails, there is none. */
constexpr int kParserAllocations = 3;

template <typename Callbacks>
void ExpectNoParser(event_parser_t* (*create)(Callbacks*)) {
    for (int skip = 0; skip < kParserAllocations; ++skip) {
        const FailingAllocations failing(skip, 1);
        Callbacks callbacks{};
        EXPECT_EQ(create(&callbacks), nullptr) << skip;
        EXPECT_EQ(failing.Failed(), 1);
    }
}

/**
 * Whichever allocation of a profile's init fails: without its parser its events call nothing, the next
 * pair of done and init mends it, and nothing is left behind. `expect` sends an event and is told
 * whether its callback is to run. The profile is started before and after.
 */
template <class Callbacks>
void ExpectInitSurvives(void (*init)(Callbacks*), Callbacks* table, void (*done)(),
                        const std::function<void(bool)>& expect) {
    done();
    const size_t held = BlocksHeld();
    int failures = 0;
    const auto end = [&] {
        const CountedAllocations needed;
        done();
        EXPECT_EQ(needed.Asked(), 0);
        EXPECT_EQ(BlocksHeld(), held);
    };
    ForEachFailure([&](int skip) {
        bool failed = false;
        {
            const FailingAllocations failing(skip, 1);
            init(table);
            failed = failing.Failed() > 0;
        }
        failures += failed ? 1 : 0;
        expect(!failed || skip >= kParserAllocations);
        end();
        init(table);
        expect(true);
        end();
        return failed;
    });
    EXPECT_GE(failures, kParserAllocations);
    init(table);
}

} // namespace memory

#endif
