// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Time that is a number: nothing here takes as long as it says.
#include "clock.h"

#include "agenda.h"
#include "timer.h"

#include <asio/post.hpp>
#include <gtest/gtest.h>
#include <string>

namespace {

using sim::Clock;
using std::chrono::hours;
using std::chrono::milliseconds;

class VirtualClock : public ::testing::Test {
protected:
    VirtualClock() {
        clock.make_virtual({[this] { return looks_until_quiet == 0 || looks_until_quiet-- == 0; },
                            [this] { return time_may_pass; }});
    }

    /// Ends the loop as a server does.
    void end_after(milliseconds time) {
        end_.start(time, [this] { loop.stop(); });
    }
    void run() { clock.run(loop); }

    asio::io_context loop{1};
    asio::executor_work_guard<asio::io_context::executor_type> work{loop.get_executor()};
    Clock& clock = Clock::of(loop);
    int looks_until_quiet = 0;
    bool time_may_pass = true;
    std::string done;

private:
    sim::Timer end_{loop};
};

TEST_F(VirtualClock, GoesFromTimerToTimer) {
    sim::Timer later(loop);
    sim::Timer sooner(loop);
    later.start(hours(48), [this] { done += std::to_string(clock.elapsed().count()) + " later "; });
    sooner.start(hours(24), [this] { done += std::to_string(clock.elapsed().count()) + " sooner "; });
    end_after(hours(72));
    run();
    EXPECT_EQ(done, "86400000 sooner 172800000 later ");
    EXPECT_EQ(clock.elapsed(), hours(72));
}

TEST_F(VirtualClock, RunsTimersOfTheSameTimeAsTheyWereStarted) {
    sim::Timer first(loop);
    sim::Timer second(loop);
    first.start(milliseconds(5), [this] { done += "first "; });
    second.start(milliseconds(5), [this] { done += "second "; });
    end_after(milliseconds(5));
    run();
    EXPECT_EQ(done, "first second ");
}

TEST_F(VirtualClock, KnowsNoTimerThatWasStoppedStartedAgainOrDestroyed) {
    sim::Timer stopped(loop);
    sim::Timer again(loop);
    stopped.start(milliseconds(1), [this] { done += "stopped "; });
    again.start(milliseconds(1), [this] { done += "old "; });
    {
        sim::Timer destroyed(loop);
        destroyed.start(milliseconds(1), [this] { done += "destroyed "; });
    }
    stopped.stop();
    again.start(milliseconds(2), [this] { done += "new "; });
    end_after(milliseconds(3));
    run();
    EXPECT_EQ(done, "new ");
}

TEST_F(VirtualClock, StandsStillWhileSomebodyIsAtWork) {
    sim::Timer timer(loop);
    looks_until_quiet = 3;
    timer.start(milliseconds(1), [this] { done += std::to_string(looks_until_quiet); });
    end_after(milliseconds(1));
    run();
    EXPECT_EQ(done, "0");
}

TEST_F(VirtualClock, LetsTurnsBeTakenWhileItStandsStill) {
    sim::Timer timer(loop);
    time_may_pass = false;
    timer.start(milliseconds(0), [this] { done += "timer "; });
    clock.take_turn(Clock::Turn::Command, [this] {
        done += "command ";
        loop.stop();
    });
    run();
    EXPECT_EQ(done, "command ");
}

TEST_F(VirtualClock, GivesTurnsInOneOrderHoweverThingsCame) {
    sim::Timer timer(loop);
    timer.start(milliseconds(0), [this] { done += "timer "; });
    clock.take_turn(Clock::Turn::Command, [this] {
        done += "command ";
        clock.take_turn(Clock::Turn::Event, [this] { done += "answer "; });
    });
    clock.take_turn(Clock::Turn::Command, [this] { done += "next "; });
    clock.take_turn(Clock::Turn::Data, [this] { done += "data "; });
    clock.take_turn(Clock::Turn::Event, [this] { done += "event "; });
    end_after(milliseconds(0));
    run();
    EXPECT_EQ(done, "event data command answer next timer ");
}

TEST_F(VirtualClock, DoesWhatTheLoopHasFirst) {
    sim::Timer timer(loop);
    timer.start(milliseconds(1), [this] {
        done += "timer ";
        loop.stop();
    });
    asio::post(loop, [this] {
        done += "one ";
        asio::post(loop, [this] { done += "two "; });
    });
    run();
    EXPECT_EQ(done, "one two timer ");
}

TEST_F(VirtualClock, HoldsForAnAgendaToo) {
    sim::Agenda agenda(loop);
    agenda.add(hours(2), [this] { done += std::to_string(clock.elapsed().count()); });
    end_after(hours(3));
    run();
    EXPECT_EQ(done, "7200000");
}

TEST_F(VirtualClock, DoesNotHoldForARealTimer) {
    sim::Timer real(loop);
    real.start_real(milliseconds(1), [this] {
        done += "real";
        loop.stop();
    });
    run();
    EXPECT_EQ(done, "real");
    EXPECT_EQ(clock.elapsed(), milliseconds(0));
}

TEST(RealClock, TakesEachTurnAtOnce) {
    asio::io_context loop(1);
    std::string done;
    Clock::of(loop).take_turn(Clock::Turn::Command, [&done] { done += "command "; });
    Clock::of(loop).take_turn(Clock::Turn::Event, [&done] { done += "event "; });
    EXPECT_EQ(done, "command event ");
}

} // namespace
