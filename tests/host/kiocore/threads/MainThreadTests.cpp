#include "support/ScMainThread.h"
#include "support/TraceRecorder.h"

#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <vector>

using namespace std::chrono_literals;
using namespace kiocore::threads;
using support::ScMainThread;
using Steady = std::chrono::steady_clock;

TEST(MainThread, RunsPostedWorkInOrderAlsoWhatItPosts)
{
    ScMainThread main;
    support::TraceRecorder trace("Threads");
    std::vector<int> ran;
    main->Post([&] {
        ran.push_back(1);
        main->Post([&] { ran.push_back(3); });
        throw std::runtime_error("torn page");
    });
    main->Post([&] { ran.push_back(2); });
    EXPECT_EQ(main->RunPosted(), 3);
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(trace.CountContaining("std::runtime_error: torn page"), 1);
    EXPECT_EQ(main->RunPosted(), 0);
}

TEST(MainThread, WakesTheHostUpOnceForAnyNumberOfPosts)
{
    ScMainThread main;
    int wakeUps = 0;
    main->SetWakeUp([&] { ++wakeUps; });
    main->Post([] {});
    main->Post([] {});
    EXPECT_EQ(wakeUps, 1);
    main->Post([&] { main->Post([] {}); }); // posted by what runs: found without a wake-up
    main->RunPosted();
    EXPECT_EQ(wakeUps, 1);
    main->Post([] {});
    EXPECT_EQ(wakeUps, 2);
}

TEST(MainThread, ALoopThatStopsEarlyLeavesTheRestToTheHostsOwn)
{
    ScMainThread main;
    int wakeUps = 0;
    bool done = false;
    main->SetWakeUp([&] { ++wakeUps; });
    main->Post([&] {
        done = true;
        main->Post([] {});
    });
    ASSERT_TRUE(main->RunUntil([&] { return done; }, Steady::now() + 1h));
    EXPECT_EQ(wakeUps, 2) << "the host must hear of the task that is left";
    EXPECT_EQ(main->RunPosted(), 1);
}

TEST(MainThread, RunUntilSleepsUntilAnotherThreadPosts)
{
    ScMainThread main;
    bool done = false;
    auto poster = std::async(std::launch::async, [&] { main->Post([&] { done = true; }); });
    EXPECT_TRUE(main->RunUntil([&] { return done; }, Steady::now() + 1h));
    EXPECT_FALSE(main->RunUntil([] { return false; }, Steady::now() - 1ms));

    // Work without end keeps it from neither its condition nor its deadline.
    int rounds = 0;
    std::function<void()> again = [&] {
        if (++rounds < 1000000) {
            main->Post(again);
        }
    };
    main->Post(again);
    EXPECT_TRUE(main->RunUntil([&] { return rounds >= 10; }, Steady::now() + 1h));
    EXPECT_EQ(rounds, 10);
    rounds = 1000000;
    main->RunPosted(); // its last task uses what lives here
}

TEST(MainThread, WaitingOnItselfRunsWhatWasPostedBeforeAndNoMore)
{
    ScMainThread main;
    std::vector<int> ran;
    bool waited = false;
    main->Post([&] {
        // Runs inside a task: it must not wait for itself.
        waited = main->WaitForPostedWork(Steady::now() + 1h);
        ran.push_back(1);
    });
    main->Post([&] {
        ran.push_back(2);
        main->Post([&] { ran.push_back(3); });
    });
    EXPECT_FALSE(main->WaitForPostedWork(Steady::now() - 1ms));
    EXPECT_TRUE(main->WaitForPostedWork(Steady::now() + 24h));
    EXPECT_TRUE(waited);
    EXPECT_EQ(ran, (std::vector<int>{2, 1}));
    EXPECT_EQ(main->RunPosted(), 1) << "what was posted meanwhile waits for its turn";
}

TEST(MainThread, WaitingElsewhereLastsUntilTheWorkHasRun)
{
    ScMainThread main;
    bool ran = false;
    main->Post([&] { ran = true; });
    EXPECT_FALSE(
        std::async(std::launch::async, [&] { return main->WaitForPostedWork(Steady::now()); }).get());
    auto waiter =
        std::async(std::launch::async, [&] { return main->WaitForPostedWork(Steady::now() + 24h) && ran; });
    main->RunPosted();
    EXPECT_TRUE(waiter.get());
}

TEST(MainThread, UnregisteringRunsWhatWasAcceptedAndRefusesMore)
{
    EXPECT_EQ(GetRegisteredMainThread(), nullptr);
    std::shared_ptr<MainThread> main;
    bool ran = false;
    int afterwards = 0;
    {
        ScMainThread registered;
        main = GetRegisteredMainThread();
        EXPECT_EQ(RegisterMainThread(), main);
        EXPECT_THROW(std::async(std::launch::async, [] { RegisterMainThread(); }).get(),
                     kiocore::kio_exception);
        EXPECT_THROW(std::async(std::launch::async, [] { UnregisterMainThread(); }).get(),
                     kiocore::kio_exception);
        EXPECT_THROW(std::async(std::launch::async, [&] { main->RunPosted(); }).get(),
                     kiocore::kio_exception);
        main->Post([&] {
            ran = true;
            afterwards = main->Post([] {});
        });
    }
    EXPECT_TRUE(ran);
    EXPECT_LT(afterwards, 0);
    EXPECT_EQ(GetRegisteredMainThread(), nullptr);
    EXPECT_TRUE(main->WaitForPostedWork(Steady::now() + 1h));
}
