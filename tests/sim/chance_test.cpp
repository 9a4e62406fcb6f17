// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "chance.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using sim::Chance;
using std::chrono::milliseconds;

TEST(SimChance, WithoutASeedChangesNothing) {
    Chance chance;
    EXPECT_EQ(chance.rssi(-60), -60);
    EXPECT_EQ(chance.around(milliseconds(500)), milliseconds(500));
}

TEST(SimChance, IsTheSameOnEveryMachine) {
    Chance chance(7U);
    // The generator's first numbers are 327741615, 976413892, 3349725721.
    EXPECT_EQ(chance.rssi(-60), -64);
    EXPECT_EQ(chance.rssi(-60), -60);
    EXPECT_EQ(chance.around(milliseconds(1000)), milliseconds(892));
}

TEST(SimChance, StaysNearWhatIsUsual) {
    Chance chance(1U);
    std::set<int> strengths;
    for (int i = 0; i < 1000; ++i) {
        strengths.insert(chance.rssi(-60));
        const milliseconds time = chance.around(milliseconds(100));
        EXPECT_GE(time, milliseconds(75));
        EXPECT_LE(time, milliseconds(125));
    }
    EXPECT_EQ(strengths, (std::set<int>{-64, -63, -62, -61, -60, -59, -58, -57, -56}));
}

TEST(SimChance, StaysWithinWhatARadioReports) {
    Chance chance(1U);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_LE(chance.rssi(20), 20);
        EXPECT_GE(chance.rssi(-127), -127);
    }
}

TEST(SimChance, LeavesTheShortestTimesAsTheyAre) {
    Chance chance(1U);
    EXPECT_EQ(chance.around(milliseconds(3)), milliseconds(3));
    EXPECT_EQ(chance.around(milliseconds(0)), milliseconds(0));
}

} // namespace
