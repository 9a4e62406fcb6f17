// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "calls.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace {

using sim::Call;
using sim::Calls;
using sim::CallState;

/// "1:active 2:held*", a star for a party of several.
std::string show(const Calls& calls) {
    static const char* const kNames[] = {"active",   "held",    "dialing",         "alerting",
                                         "incoming", "waiting", "held by response"};
    std::string text;
    for (const Call& call : calls.list()) {
        text += text.empty() ? "" : " ";
        text += std::to_string(call.index) + ":" + kNames[static_cast<int>(call.state)];
        text += call.multiparty ? "*" : "";
    }
    return text;
}

std::string indicators(const Calls& calls) {
    return std::to_string(calls.call_indicator()) + std::to_string(calls.setup_indicator()) +
           std::to_string(calls.held_indicator());
}

bool act(Calls& calls, int action, int index = 0) {
    return calls.act(static_cast<uint8_t>(action), static_cast<uint8_t>(index));
}

void call_out(Calls& calls) {
    ASSERT_TRUE(calls.dial("1"));
    ASSERT_TRUE(calls.progress());
    ASSERT_TRUE(calls.progress());
}

Calls one_active() {
    Calls calls;
    call_out(calls);
    EXPECT_EQ(show(calls), "1:active");
    return calls;
}

Calls held_and_active() {
    Calls calls = one_active();
    call_out(calls);
    EXPECT_EQ(show(calls), "1:held 2:active");
    return calls;
}

Calls conference_of_two() {
    Calls calls = held_and_active();
    EXPECT_TRUE(act(calls, 3));
    EXPECT_EQ(show(calls), "1:active* 2:active*");
    return calls;
}

TEST(SimCalls, APlacedCallDialsAlertsAndIsAnswered) {
    Calls calls;
    EXPECT_EQ(indicators(calls), "000");
    EXPECT_TRUE(calls.dial("123"));
    EXPECT_EQ(show(calls), "1:dialing");
    EXPECT_EQ(indicators(calls), "020");
    EXPECT_FALSE(calls.list()[0].incoming);
    EXPECT_EQ(calls.list()[0].number, "123");
    EXPECT_TRUE(calls.progress());
    EXPECT_EQ(show(calls), "1:alerting");
    EXPECT_EQ(indicators(calls), "030");
    EXPECT_TRUE(calls.progress());
    EXPECT_EQ(show(calls), "1:active");
    EXPECT_EQ(indicators(calls), "100");
    EXPECT_FALSE(calls.progress());
}

TEST(SimCalls, AnIncomingCallIsAnsweredOrHungUp) {
    Calls calls;
    EXPECT_FALSE(act(calls, 7));
    EXPECT_TRUE(calls.ring("5"));
    EXPECT_EQ(show(calls), "1:incoming");
    EXPECT_TRUE(calls.list()[0].incoming);
    EXPECT_EQ(indicators(calls), "010");
    EXPECT_TRUE(act(calls, 7));
    EXPECT_EQ(show(calls), "1:active");
    EXPECT_TRUE(act(calls, 8));
    EXPECT_EQ(show(calls), "");
    EXPECT_TRUE(calls.ring("5"));
    EXPECT_TRUE(act(calls, 8));
    EXPECT_EQ(show(calls), "");
    EXPECT_FALSE(act(calls, 8));
}

TEST(SimCalls, HangingUpTakesTheIndexOfACallThatIsPlaced) {
    Calls calls = one_active();
    ASSERT_TRUE(calls.dial("2"));
    EXPECT_FALSE(act(calls, 8, 1)); // on hold
    EXPECT_FALSE(act(calls, 8, 3)); // nobody
    EXPECT_TRUE(act(calls, 8, 2));
    EXPECT_EQ(show(calls), "1:held");
    EXPECT_EQ(indicators(calls), "102");
    EXPECT_FALSE(act(calls, 8));
}

TEST(SimCalls, DiallingPutsTheConversationOnHold) {
    Calls calls = one_active();
    EXPECT_TRUE(calls.dial("2"));
    EXPECT_EQ(show(calls), "1:held 2:dialing");
    EXPECT_EQ(indicators(calls), "122");
    EXPECT_FALSE(calls.dial("3"));
    EXPECT_FALSE(calls.ring("3"));
    EXPECT_FALSE(act(calls, 1));
    EXPECT_FALSE(act(calls, 2));
    EXPECT_FALSE(act(calls, 3));
    EXPECT_EQ(show(calls), "1:held 2:dialing");
}

TEST(SimCalls, WithAConversationAndOneOnHoldNobodyIsDialled) {
    Calls calls = held_and_active();
    EXPECT_EQ(indicators(calls), "101");
    EXPECT_FALSE(calls.dial("3"));
}

TEST(SimCalls, AWaitingCallIsRejectedOrAcceptedInTwoWays) {
    for (const auto& [action, after] : std::vector<std::pair<int, std::string>>{
             {0, "1:active"}, {1, "2:active"}, {2, "1:held 2:active"}}) {
        Calls calls = one_active();
        EXPECT_TRUE(calls.ring("2"));
        EXPECT_EQ(show(calls), "1:active 2:waiting");
        EXPECT_EQ(indicators(calls), "110");
        EXPECT_FALSE(act(calls, 7)); // not beside a conversation
        EXPECT_TRUE(act(calls, action));
        EXPECT_EQ(show(calls), after);
    }
}

TEST(SimCalls, AWaitingCallComesBeforeAHeldOne) {
    for (const auto& [action, after] :
         std::vector<std::pair<int, std::string>>{{0, "1:held 2:active"}, {1, "1:held 3:active"}}) {
        Calls calls = held_and_active();
        EXPECT_TRUE(calls.ring("3"));
        EXPECT_FALSE(act(calls, 2)); // two cannot be on hold apart
        EXPECT_TRUE(act(calls, action));
        EXPECT_EQ(show(calls), after);
    }
}

TEST(SimCalls, AWaitingCallBesideAHeldOneIsAnswered) {
    for (const int action : {1, 2, 7}) {
        Calls calls = one_active();
        EXPECT_TRUE(act(calls, 2));
        EXPECT_TRUE(calls.ring("2"));
        EXPECT_EQ(show(calls), "1:held 2:waiting");
        EXPECT_TRUE(act(calls, action));
        EXPECT_EQ(show(calls), "1:held 2:active");
    }
}

TEST(SimCalls, WhoWaitsRingsWhenTheConversationEnds) {
    Calls calls = one_active();
    EXPECT_TRUE(calls.ring("2"));
    EXPECT_TRUE(act(calls, 8));
    EXPECT_EQ(show(calls), "2:incoming");
    EXPECT_EQ(indicators(calls), "010");
}

TEST(SimCalls, HoldSwapsAndResumes) {
    Calls calls = held_and_active();
    EXPECT_TRUE(act(calls, 2));
    EXPECT_EQ(show(calls), "1:active 2:held");
    EXPECT_TRUE(act(calls, 0));
    EXPECT_EQ(show(calls), "1:active");
    EXPECT_FALSE(act(calls, 0));
    EXPECT_TRUE(act(calls, 2));
    EXPECT_EQ(show(calls), "1:held");
    EXPECT_TRUE(act(calls, 2));
    EXPECT_EQ(show(calls), "1:active");
}

TEST(SimCalls, EndingTheConversationResumesWhoIsOnHold) {
    Calls calls = held_and_active();
    EXPECT_TRUE(act(calls, 1));
    EXPECT_EQ(show(calls), "1:active");
    EXPECT_TRUE(act(calls, 1));
    EXPECT_EQ(show(calls), "");
    EXPECT_FALSE(act(calls, 1));
}

TEST(SimCalls, HangingUpLeavesWhoIsOnHold) {
    Calls calls = held_and_active();
    EXPECT_TRUE(act(calls, 8));
    EXPECT_EQ(show(calls), "1:held");
}

TEST(SimCalls, APartyIsReleasedByItsIndex) {
    Calls calls = conference_of_two();
    EXPECT_FALSE(act(calls, 5, 3));
    EXPECT_FALSE(act(calls, 5, 0));
    EXPECT_TRUE(act(calls, 5, 1));
    EXPECT_EQ(show(calls), "2:active");
    Calls other = held_and_active();
    EXPECT_FALSE(act(other, 5, 1)); // on hold
}

TEST(SimCalls, AConferenceIsHeldAndEndedAsAWhole) {
    Calls calls = conference_of_two();
    EXPECT_FALSE(act(calls, 3));
    EXPECT_TRUE(act(calls, 2));
    EXPECT_EQ(show(calls), "1:held* 2:held*");
    EXPECT_TRUE(act(calls, 0));
    EXPECT_EQ(show(calls), "");
}

TEST(SimCalls, AConferenceHasFivePartiesAtMost) {
    Calls calls = conference_of_two();
    for (int parties = 3; parties <= 5; ++parties) {
        call_out(calls);
        ASSERT_TRUE(act(calls, 3)) << parties;
    }
    call_out(calls);
    EXPECT_FALSE(act(calls, 3));
    EXPECT_EQ(show(calls), "1:held* 2:held* 3:held* 4:held* 5:held* 6:active");
}

TEST(SimCalls, AFreedIndexIsUsedAgain) {
    Calls calls = conference_of_two();
    EXPECT_TRUE(act(calls, 5, 1));
    EXPECT_TRUE(calls.ring("9"));
    EXPECT_EQ(show(calls), "1:waiting 2:active");
}

TEST(SimCalls, ACallHeldByResponseIsAcceptedOrRejected) {
    for (const auto& [action, after] :
         std::vector<std::pair<int, std::string>>{{10, "1:active"}, {11, ""}, {8, ""}}) {
        Calls calls;
        EXPECT_FALSE(calls.hold_by_response());
        ASSERT_TRUE(calls.ring("1"));
        EXPECT_FALSE(act(calls, action == 8 ? 11 : action));
        EXPECT_TRUE(calls.hold_by_response());
        EXPECT_EQ(show(calls), "1:held by response");
        EXPECT_EQ(indicators(calls), "100");
        EXPECT_FALSE(act(calls, 7));
        EXPECT_TRUE(act(calls, action));
        EXPECT_EQ(show(calls), after);
    }
}

TEST(SimCalls, ACallerGivesUp) {
    Calls calls;
    EXPECT_FALSE(calls.give_up());
    ASSERT_TRUE(calls.ring("1"));
    EXPECT_TRUE(calls.give_up());
    EXPECT_EQ(show(calls), "");
    calls = one_active();
    EXPECT_FALSE(calls.give_up());
    ASSERT_TRUE(calls.ring("2"));
    EXPECT_TRUE(calls.give_up());
    EXPECT_EQ(show(calls), "1:active");
}

TEST(SimCalls, UnknownActionsChangeNothing) {
    Calls calls = held_and_active();
    for (const int action : {4, 6, 9, 12, 255}) {
        EXPECT_FALSE(act(calls, action)) << action;
    }
    EXPECT_EQ(show(calls), "1:held 2:active");
}

/// What must hold whatever happened.
void expect_sound(const Calls& calls) {
    std::set<uint8_t> indices;
    size_t in_setup = 0;
    for (const Call& call : calls.list()) {
        EXPECT_TRUE(call.index >= 1 && call.index <= Calls::kMost);
        EXPECT_TRUE(indices.insert(call.index).second);
        const bool group = call.state == CallState::Active || call.state == CallState::Held;
        in_setup += group ? 0 : 1;
        EXPECT_EQ(call.multiparty, group && calls.count(call.state) > 1);
        if (call.state == CallState::Incoming || call.state == CallState::HeldByResponse) {
            EXPECT_EQ(calls.list().size(), 1U);
        }
        if (call.state == CallState::Waiting) {
            EXPECT_GT(calls.list().size(), 1U);
        }
    }
    EXPECT_LE(in_setup, 1U);
    EXPECT_LE(calls.list().size(), Calls::kMost);
}

bool random_step(Calls& calls, std::mt19937& random) {
    switch (random() % 8) {
    case 0:
        return calls.dial("1");
    case 1:
        return calls.ring("2");
    case 2:
        return calls.progress();
    case 3:
        return random() % 4 == 0 && calls.give_up();
    case 4:
        return random() % 4 == 0 && calls.hold_by_response();
    default:
        return act(calls, static_cast<int>(random() % 13), static_cast<int>(random() % 8));
    }
}

TEST(SimCalls, WhateverHappensTheListStaysSoundAndRefusalsChangeNothing) {
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same sequence in each run
    std::mt19937 random(1);
    Calls calls;
    std::set<size_t> sizes;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        const std::vector<Call> before = calls.list();
        const bool done = random_step(calls, random);
        expect_sound(calls);
        EXPECT_EQ(done, !(calls.list() == before)) << "step " << i << ": " << show(calls);
        sizes.insert(calls.list().size());
    }
    // The walk has been far enough to mean something.
    EXPECT_TRUE(sizes.count(0) == 1 && sizes.count(4) == 1);
}

} // namespace
