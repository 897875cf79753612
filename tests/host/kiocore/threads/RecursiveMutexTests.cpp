#include <kiocore/debug/Trace.h>
#include <kiocore/threads/RecursiveMutex.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;
using testing::HasSubstr;

namespace {

bool OtherThreadGetsIt(RecursiveMutex& ioMutex)
{
    return std::async(std::launch::async,
                      [&] {
                          const bool got = ioMutex.TryLock();
                          if (got) {
                              ioMutex.Unlock();
                          }
                          return got;
                      })
        .get();
}

} // namespace

TEST(RecursiveMutex, IsFreeOnlyAfterItsOwnerLetGoAsOftenAsItTookIt)
{
    RecursiveMutex mutex;
    ScLock first(mutex);
    {
        ScLock second(mutex);
        ASSERT_TRUE(mutex.TryLock());
        mutex.Unlock();
        EXPECT_FALSE(OtherThreadGetsIt(mutex));
    }
    EXPECT_FALSE(OtherThreadGetsIt(mutex));
    mutex.Unlock();
    EXPECT_TRUE(OtherThreadGetsIt(mutex));
    mutex.Lock(nullptr, kiocore::threads::kLockLimit); // what `first` gives back
}

TEST(RecursiveMutex, LetsOneThreadInAtATime)
{
    RecursiveMutex mutex;
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    long long sum = 0; // guarded by the mutex alone
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                ScLock outer(mutex);
                ScLock inner(mutex);
                ++sum;
                if (round % 1000 == 0) {
                    std::this_thread::yield(); // so that others get to sleep, not only to spin
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum, kThreads * kRounds);
}

TEST(RecursiveMutex, ReportsALongWaitOnceAndGoesOnWaiting)
{
    RecursiveMutex mutex("entries");
    std::promise<std::string> reported;
    int reports = 0;
    kiocore::debug::SetTraceSink([&](std::string_view channel, int level, std::string_view text) {
        if (channel == "Threads" && level == 1 && ++reports == 1) {
            reported.set_value(std::string(text));
        }
    });
    kiocore::debug::SetTraceLevel("Threads", 1);

    mutex.Lock("cleaning", kiocore::threads::kLockLimit);
    auto waiter = std::async(std::launch::async, [&] {
        mutex.Lock("rendering", std::chrono::milliseconds(1));
        mutex.Unlock();
    });
    EXPECT_THAT(reported.get_future().get(), AllOf(HasSubstr("(rendering) has waited"),
                                                   HasSubstr("for lock entries"), HasSubstr("(cleaning)")));
    // Still ours, however long it waits.
    EXPECT_FALSE(OtherThreadGetsIt(mutex));
    mutex.Unlock();
    waiter.get();
    EXPECT_EQ(reports, 1);

    kiocore::debug::SetTraceLevel("Threads", -1);
    kiocore::debug::SetTraceSink({});
}
