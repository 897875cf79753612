#include "support/TraceRecorder.h"

#include <kiocore/threads/DelayedExecutor.h>
#include <kiocore/utility/ExpiringEntryMap.h>

#include <gtest/gtest.h>

#include <pthread.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using kiocore::threads::CreateDelayedExecutor;
using kiocore::threads::DelayedExecutor;
using SteadyClock = std::chrono::steady_clock;

namespace {

/// Tells when the last copy of the task that holds it has been let go.
std::shared_ptr<void> TellWhenLetGo(std::promise<void>& ioPromise)
{
    return {nullptr, [&ioPromise](void*) { ioPromise.set_value(); }};
}

} // namespace

TEST(DelayedExecutor, RunsTasksInOrderOnOneNamedThread)
{
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::promise<std::string> name;
    auto executor = CreateDelayedExecutor("Test delay");
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(executor->Submit([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        }),
                  0);
    }
    executor->Submit([&] {
        char text[16] = {};
        pthread_getname_np(pthread_self(), text, sizeof(text));
        name.set_value(text);
    });
    EXPECT_EQ(name.get_future().get(), "Test delay");
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(order[i], i);
        EXPECT_EQ(threads[i], threads[0]);
    }
}

TEST(DelayedExecutor, BeginsNoTaskTooSoonAndLaterOnesLater)
{
    const auto executor = CreateDelayedExecutor("Test delay");
    const struct {
        const char* name;
        std::chrono::milliseconds delay;
        std::chrono::milliseconds least;
    } kCases[] = {
        {"a little later", 5ms, 5ms},
        {"at once", 0ms, 0ms},
        {"before now", std::chrono::milliseconds::min(), 0ms},
    };
    executor->SubmitAfter(std::chrono::milliseconds::max(), [] { ADD_FAILURE() << "long before its time"; });
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::promise<SteadyClock::time_point> began;
        const auto submitted = SteadyClock::now();
        ASSERT_EQ(executor->SubmitAfter(test.delay, [&] { began.set_value(SteadyClock::now()); }), 0);
        EXPECT_GE(began.get_future().get() - submitted, test.least);
    }
    // While the thread waits for a task that is far away, a nearer one wakes it.
    std::promise<void> ran;
    executor->SubmitAfter(1ms, [&] { ran.set_value(); });
    ran.get_future().get();
}

TEST(DelayedExecutor, ReportsATaskThatThrowsAndRunsTheNext)
{
    support::TraceRecorder trace("Threads", 1);
    std::promise<void> ran;
    const auto executor = CreateDelayedExecutor("Test delay");
    executor->Submit([] { throw std::runtime_error("bad frame"); });
    executor->Submit(nullptr);
    executor->Submit([&] { ran.set_value(); });
    ran.get_future().get();
    EXPECT_EQ(trace.CountContaining("A task of the Test delay executor threw std::runtime_error: bad frame"),
              1);
    EXPECT_EQ(trace.CountContaining("std::bad_function_call"), 1);
}

TEST(DelayedExecutor, AtItsEndRunsWhatIsDueAndLetsTheRestGo)
{
    for (const bool inItsOwnTask : {false, true}) {
        SCOPED_TRACE(inItsOwnTask ? "let go by a task of its own" : "let go from outside");
        std::promise<void> letGo;
        std::promise<void> open;
        auto ran = std::make_shared<std::promise<void>>();
        std::future<void> hasRun = ran->get_future(); // broken when the task is dropped
        auto executor = CreateDelayedExecutor("Test delay");
        executor->Submit(
            [gate = open.get_future().share(), held = inItsOwnTask ? executor : nullptr] { gate.wait(); });
        executor->Submit([ran = std::move(ran)] { ran->set_value(); });
        executor->SubmitAfter(24h, [token = TellWhenLetGo(letGo)] { ADD_FAILURE() << "before its time"; });
        if (inItsOwnTask) {
            executor.reset();
            open.set_value();
        } else {
            open.set_value();
            executor.reset();
        }
        EXPECT_NO_THROW(hasRun.get());
        letGo.get_future().get();
    }
}

TEST(DelayedExecutor, OfExpiringEntriesIsOneForAllWhoHoldIt)
{
    const auto one = kiocore::utility::CreateExpiringEntryMapExecutor();
    EXPECT_EQ(kiocore::utility::CreateExpiringEntryMapExecutor(), one);
    std::promise<void> ran;
    one->Submit([&] { ran.set_value(); });
    ran.get_future().get();
}
