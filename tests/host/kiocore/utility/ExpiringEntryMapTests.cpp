#include "support/HandWoundClock.h"
#include "support/HandWoundExecutor.h"

#include <kiocore/utility/ExpiringEntryMap.h>
#include <kiocore/utility/ImmutableString.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using kiocore::utility::CoarseSteadyTime;
using kiocore::utility::CreateExpiringEntryMapExecutor;
using kiocore::utility::ExpiringEntryMap;
using kiocore::utility::ExpiringEntryMapSettings;
using kiocore::utility::ScReplaceExpiringEntryMapExecutor;
using kiocore::utility::TimeStampable;
using support::HandWoundClock;
using support::HandWoundExecutor;

namespace {

struct Entry : TimeStampable {
    explicit Entry(int inNumber, std::function<void()> inOnEnd = {}) : number(inNumber), onEnd(inOnEnd) {}
    ~Entry()
    {
        if (onEnd) {
            onEnd();
        }
    }
    const int number;
    const std::function<void()> onEnd;
};
using Map = ExpiringEntryMap<kiocore::ImmutableString, Entry>;

class AMapOfExpiringEntries : public testing::Test {
protected:
    std::shared_ptr<Map> Make(const ExpiringEntryMapSettings& inSettings = {})
    {
        return Map::Create(inSettings, CreateExpiringEntryMapExecutor());
    }
    /// Winds the clock without letting a pass run at once, as a busy executor would.
    void AdvanceClockOnly(std::chrono::milliseconds inDuration) { clock.Advance(inDuration); }

    HandWoundClock clock;
    const std::shared_ptr<HandWoundExecutor> executor = std::make_shared<HandWoundExecutor>(clock);
    const ScReplaceExpiringEntryMapExecutor inUse{executor};
};

} // namespace

TEST_F(AMapOfExpiringEntries, LosesAnEntryThatNobodyFoundForItsAge)
{
    const struct {
        const char* name;
        std::chrono::milliseconds foundAfter; // 0: never
        std::chrono::milliseconds passAfter;  // the insertion, or the last Find
        bool stays;
    } kCases[] = {
        {"just inserted", 0ms, 0ms, true},
        {"one millisecond too young", 0ms, 299999ms, true},
        {"of just the age", 0ms, 300000ms, true},
        {"one millisecond too old", 0ms, 300001ms, false},
        {"renewed by being found", 299999ms, 299999ms, true},
        {"found, and idle again", 299999ms, 300001ms, false},
        {"found when it was due already", 400000ms, 300000ms, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto map = Make();
        map->Insert("a", std::make_shared<Entry>(1));
        AdvanceClockOnly(test.foundAfter);
        if (test.foundAfter > 0ms) {
            ASSERT_TRUE(map->Find("a"));
        }
        AdvanceClockOnly(test.passAfter);
        if (test.passAfter + test.foundAfter < 10s) {
            executor->Advance(10s);
        } else {
            executor->Advance(0ms); // the pass is overdue
        }
        EXPECT_EQ(map->Size(), test.stays ? 1u : 0u);
    }
}

TEST_F(AMapOfExpiringEntries, RunsAPassEveryDelayUntilItIsEmpty)
{
    const auto map = Make();
    map->Insert("a", std::make_shared<Entry>(1));
    EXPECT_EQ(executor->Advance(9999ms), 0u);
    EXPECT_EQ(executor->Advance(1ms), 1u);
    map->Insert("b", std::make_shared<Entry>(2));
    EXPECT_EQ(executor->HeldCount(), 1u) << "a pass that is queued is not queued again";
    EXPECT_EQ(executor->Advance(290s), 29u);
    EXPECT_EQ(map->Size(), 2u) << "at 300 s the first is just of the age";
    EXPECT_EQ(executor->Advance(10s), 1u);
    EXPECT_EQ(map->Size(), 1u);
    EXPECT_EQ(executor->Advance(10s), 1u);
    EXPECT_EQ(map->Size(), 0u);
    EXPECT_EQ(executor->HeldCount(), 0u) << "nothing is left to look after";

    map->Insert("c", std::make_shared<Entry>(3));
    EXPECT_EQ(executor->HeldCount(), 1u);
}

TEST_F(AMapOfExpiringEntries, LeavesAFewAloneWhenToldToKeepThem)
{
    ExpiringEntryMapSettings settings;
    settings.keptRegardlessOfAge = 2;
    const auto map = Make(settings);
    map->Insert("a", std::make_shared<Entry>(1));
    map->Insert("b", std::make_shared<Entry>(2));
    executor->Advance(1000s);
    EXPECT_EQ(map->Size(), 2u);
    EXPECT_EQ(executor->HeldCount(), 0u) << "a pass that does nothing queues nothing";
    map->Insert("c", std::make_shared<Entry>(3));
    executor->Advance(10s);
    EXPECT_EQ(map->Size(), 1u) << "one more, and age alone decides";
}

TEST_F(AMapOfExpiringEntries, LetsValuesGoWithoutItsLock)
{
    const auto map = Make();
    int ended = 0;
    const auto askElsewhere = [&] {
        std::thread([&] { map->Size(); }).join(); // would never come back while we hold the lock
        ++ended;
    };
    map->Insert("a", std::make_shared<Entry>(1, askElsewhere));
    map->Insert("a", std::make_shared<Entry>(2, askElsewhere));
    EXPECT_EQ(ended, 1) << "the one that was replaced";
    executor->Advance(320s);
    EXPECT_EQ(ended, 2);
}

TEST_F(AMapOfExpiringEntries, KeepsOneOfTwoThatWereInsertedAtOnce)
{
    std::atomic<int> ended{0};
    const auto map = Make();
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 1000; ++round) {
                map->Insert("a", std::make_shared<Entry>(i, [&] { ++ended; }));
                ASSERT_TRUE(map->Find("a"));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(map->Size(), 1u);
    EXPECT_EQ(ended, 1999);
    EXPECT_EQ(executor->HeldCount(), 1u);
}

TEST_F(AMapOfExpiringEntries, IsNotKeptByAQueuedPass)
{
    auto map = Make();
    map->Insert("a", std::make_shared<Entry>(1));
    const std::weak_ptr<Map> weak = map;
    map.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(executor->Advance(10s), 1u) << "the pass finds no map";
}

TEST_F(AMapOfExpiringEntries, AsksAgainForAPassThatWasRefused)
{
    const auto map = Make();
    executor->Refuse(true);
    map->Insert("a", std::make_shared<Entry>(1));
    executor->Refuse(false);
    EXPECT_TRUE(map->Find("a"));
    EXPECT_EQ(executor->HeldCount(), 0u);
    map->Insert("b", std::make_shared<Entry>(2));
    EXPECT_EQ(executor->HeldCount(), 1u);
}

TEST(TimeStampable, OnlyEverRises)
{
    Entry entry(1);
    const TimeStampable::Time time{};
    entry.RaiseTimeStamp(time + 2s);
    entry.RaiseTimeStamp(time + 1s);
    EXPECT_EQ(entry.GetTimeStamp(), time + 2s);
    std::vector<std::thread> threads;
    for (int first = 0; first < 2; ++first) {
        threads.emplace_back([&, first] {
            for (int i = first; i < 20000; i += 2) {
                entry.RaiseTimeStamp(time + 3s + std::chrono::nanoseconds(i));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(entry.GetTimeStamp(), time + 3s + 19999ns);
}

TEST(CoarseSteadyTime, IsTheSteadyTimeOrTheReplacedClocks)
{
    const auto before = std::chrono::steady_clock::now();
    const auto coarse = CoarseSteadyTime();
    EXPECT_LE(coarse, std::chrono::steady_clock::now());
    EXPECT_GE(coarse, before - 1s);
    HandWoundClock clock;
    EXPECT_EQ(CoarseSteadyTime(), clock.SteadyTime());
}
