#include "support/HandWoundClock.h"

#include <gtest/gtest.h>

#include <future>

using namespace std::chrono_literals;
using kiocore::threads::GetClock;
using kiocore::threads::SleepFor;
using support::HandWoundClock;

TEST(Clock, ReplacementsNestAndGoAway)
{
    kiocore::threads::Clock* const system = &GetClock();
    {
        HandWoundClock outer;
        {
            HandWoundClock inner;
            EXPECT_EQ(&GetClock(), &inner);
        }
        EXPECT_EQ(&GetClock(), &outer);
    }
    EXPECT_EQ(&GetClock(), system);
    const auto before = system->SteadyTime();
    SleepFor(2ms);
    EXPECT_GE(system->SteadyTime() - before, 2ms);
}

TEST(HandWoundClock, LetsPolledForThingsHappenWhilePollingCodeSleeps)
{
    HandWoundClock clock;
    const auto start = clock.SteadyTime();
    bool done = false;
    clock.OnSleep([&] { done = clock.SleepCount() == 3; });
    while (!done) {
        SleepFor(20ms);
    }
    EXPECT_EQ(clock.SteadyTime() - start, 60ms);
}

TEST(HandWoundClock, WakesASleeperWhenItsTimeHasCome)
{
    HandWoundClock clock(HandWoundClock::Mode::kSleepBlocks);
    auto sleeper = std::async(std::launch::async, [] { SleepFor(20ms); });
    clock.WaitForSleepers(1);
    clock.Advance(19ms);
    EXPECT_EQ(sleeper.wait_for(0s), std::future_status::timeout);
    clock.Advance(1ms);
    sleeper.get();
}
