// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "timer.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// Long past: all timers that are due then are queued at once, in the order in which they were due.
const std::chrono::steady_clock::time_point kFirst{};
const std::chrono::steady_clock::time_point kSecond = kFirst + std::chrono::milliseconds(1);

TEST(SimTimer, RunsItsFunctionOnce) {
    asio::io_context loop(1);
    sim::Timer timer(loop);
    int runs = 0;
    timer.start(std::chrono::milliseconds(0), [&runs] { ++runs; });
    loop.run();
    EXPECT_EQ(runs, 1);
}

TEST(SimTimer, AStoppedTimerDoesNotRunEvenWhenItWasDue) {
    asio::io_context loop(1);
    sim::Timer first(loop);
    sim::Timer second(loop);
    bool stopped = false;
    bool ran = false;
    first.start_at(kFirst, [&] {
        second.stop();
        stopped = true;
    });
    second.start_at(kSecond, [&ran] { ran = true; });
    loop.run();
    EXPECT_TRUE(stopped);
    EXPECT_FALSE(ran);
}

TEST(SimTimer, ARestartedTimerRunsOnlyTheNewFunction) {
    asio::io_context loop(1);
    sim::Timer first(loop);
    sim::Timer second(loop);
    std::string ran;
    first.start_at(kFirst,
                   [&] { second.start(std::chrono::milliseconds(0), [&ran] { ran += "new"; }); });
    second.start_at(kSecond, [&ran] { ran += "old"; });
    loop.run();
    EXPECT_EQ(ran, "new");
}

} // namespace
