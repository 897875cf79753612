#include "support/HoldingExecutor.h"
#include "support/TraceRecorder.h"

#include <kiocore/async/Future.h>
#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace kiocore::threads;
using support::HoldingExecutor;

namespace {

/// Counts how many tasks run at once.
struct Crowd {
    std::atomic<int> now{0};
    std::atomic<int> most{0};

    void Pass()
    {
        const int here = ++now;
        int before = most;
        while (before < here && !most.compare_exchange_weak(before, here)) {
        }
        std::this_thread::yield();
        --now;
    }
};

} // namespace

TEST(AsyncExecutor, EachPoolIsOneUnderTwoNamesOnNamedThreads)
{
    EXPECT_EQ(CreateCPUBoundExecutor(), GetCPUBoundExecutor());
    EXPECT_EQ(CreateIOBoundExecutor(), GetIOBoundExecutor());
    EXPECT_NE(CreateCPUBoundExecutor(), CreateIOBoundExecutor());
    const auto threadName = [] {
        char name[16] = {};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        return std::string(name);
    };
    EXPECT_TRUE(kiocore::async::CallAsync(GetCPUBoundExecutor(), threadName).Get().starts_with("CPU "));
    EXPECT_TRUE(kiocore::async::CallAsync(GetIOBoundExecutor(), threadName).Get().starts_with("IO "));
    TerminateExecutors();
}

TEST(AsyncExecutor, TasksThatWaitForEachOtherAllGetAThreadOfTheIOPool)
{
    constexpr int kTasks = 16;
    std::latch allHere(kTasks);
    for (int i = 0; i < kTasks; ++i) {
        ASSERT_EQ(GetIOBoundExecutor()->Submit([&] { allHere.arrive_and_wait(); }), 0);
    }
    allHere.wait();
    TerminateExecutors();
}

TEST(AsyncExecutor, ATaskThatThrowsIsReportedAndTheNextRuns)
{
    support::TraceRecorder trace("Threads", 1);
    const auto queue = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    bool ran = false;
    queue->Submit([] { throw std::runtime_error("bad frame"); });
    queue->Submit([] { throw 5; });
    queue->Submit([&] { ran = true; });
    TerminateExecutors();
    EXPECT_TRUE(ran);
    EXPECT_EQ(trace.CountContaining("std::runtime_error: bad frame"), 1);
    EXPECT_EQ(trace.CountContaining("threw int"), 1);
}

TEST(AsyncExecutor, TerminationRunsWhatWasAcceptedAndRefusesTheRest)
{
    const auto pool = CreateCPUBoundExecutor();
    const auto serial = CreateSubExecutor(pool, 1);
    std::atomic<int> ran{0};
    std::latch started(1);
    std::latch closed(1);
    std::atomic<int> lateResult{0};
    serial->Submit([&] {
        started.count_down();
        closed.wait();
        // On a queue whose turn is running just now: it could take more for ever.
        lateResult = serial->Submit([] {});
        ++ran;
    });
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(serial->Submit([&] { ++ran; }), 0);
    }
    started.wait();
    std::thread closer([&] {
        while (pool->Submit([] {}) >= 0) {
            std::this_thread::yield();
        }
        closed.count_down();
    });
    TerminateExecutors();
    closer.join();
    EXPECT_EQ(ran, 101);
    EXPECT_LT(lateResult, 0);
    EXPECT_LT(serial->Submit([] {}), 0);

    const auto anew = CreateCPUBoundExecutor();
    EXPECT_NE(anew, pool);
    EXPECT_EQ(anew->Submit([&] { ++ran; }), 0);
    TerminateExecutors();
    EXPECT_EQ(ran, 102);
}

TEST(AsyncExecutor, TerminatingFromAPoolsThreadIsRefusedRatherThanHanging)
{
    for (const auto& executor : {GetCPUBoundExecutor(), CreatePreTerminationExecutor()}) {
        EXPECT_THROW(kiocore::async::CallAsync(
                         executor, [] { TerminateExecutors(); }, 0)
                         .Get(),
                     kiocore::kio_exception);
    }
    TerminateExecutors();
}

TEST(PreTerminationExecutor, RunsDryBeforeThePoolsEnd)
{
    const auto executor = CreatePreTerminationExecutor();
    EXPECT_EQ(CreatePreTerminationExecutor(), executor);
    support::TraceRecorder trace("Host");
    int followed = 0;
    int refused = 0;
    int fromPool = 0;
    // Submits what follows from it for long after the termination has begun, and needs a pool in the end.
    std::function<void()> follow = [&] {
        followed += trace.CountContaining("TerminateExecutors") > 0;
        if (followed < 1000) {
            refused += executor->Submit(follow) < 0;
            return;
        }
        trace.Clear();
        fromPool = kiocore::async::CallAsync(GetCPUBoundExecutor(), [] { return 7; }).Get();
    };
    ASSERT_EQ(executor->Submit(follow), 0);
    TerminateExecutors();
    EXPECT_EQ(followed, 1000);
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(fromPool, 7);

    const auto late = kiocore::async::CallAsync(executor, [] { return 1; });
    try {
        late.Get();
        ADD_FAILURE() << "ran";
    } catch (const kiocore::kio_exception& exception) {
        EXPECT_EQ(exception.Text(), u"Executor Is Terminated");
        EXPECT_EQ(exception.Code(), kiocore::kError_ExecutorTerminated);
    }
    EXPECT_EQ(kiocore::async::CallAsync(CreatePreTerminationExecutor(), [] { return 2; }).Get(), 2);
    TerminateExecutors();
}

TEST(SubExecutor, RunsAtMostAsManyAtOnceAsItMayAndLosesNone)
{
    const struct {
        const char* name;
        int concurrency;
        int mostAtOnce;
    } kCases[] = {
        {"serial", 1, 1},
        {"three", 3, 3},
        {"as many as the parent allows", -1, 16},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        constexpr int kThreads = 3;
        constexpr int kTasks = 500;
        Crowd crowd;
        std::vector<std::vector<int>> order(kThreads);
        std::mutex orderLock;
        std::vector<std::thread> threads;
        {
            auto queue = CreateSubExecutor(CreateIOBoundExecutor(), test.concurrency);
            for (int t = 0; t < kThreads; ++t) {
                threads.emplace_back([&, t, queue] {
                    for (int i = 0; i < kTasks; ++i) {
                        EXPECT_EQ(queue->Submit([&, t, i] {
                            crowd.Pass();
                            std::lock_guard lock(orderLock);
                            order[t].push_back(i);
                        }),
                                  0);
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        } // let go with work in it
        TerminateExecutors();
        EXPECT_LE(crowd.most, test.mostAtOnce);
        for (const std::vector<int>& ran : order) {
            EXPECT_EQ(ran.size(), std::size_t{kTasks});
            EXPECT_TRUE(test.concurrency != 1 || std::is_sorted(ran.begin(), ran.end()));
        }
    }
}

TEST(SubExecutor, ALongQueueYieldsToItsNeighbours)
{
    const auto parent = std::make_shared<HoldingExecutor>();
    const auto longQueue = CreateSubExecutor(parent, 1);
    const auto neighbour = CreateSubExecutor(parent, 1);
    std::string ran;
    for (int i = 0; i < 12; ++i) {
        longQueue->Submit([&] { ran += 'l'; });
    }
    neighbour->Submit([&] { ran += 'n'; });
    parent->RunAll();
    EXPECT_EQ(std::count(ran.begin(), ran.end(), 'l'), 12);
    EXPECT_LT(ran.find('n'), 6u) << ran;
    EXPECT_LE(parent->AcceptedCount(), 5u) << "a turn should serve several tasks";
}

TEST(SubExecutor, LetsGoOfATaskOnTheThreadThatRanItAndBeforeTheNext)
{
    const auto parent = std::make_shared<HoldingExecutor>();
    const auto queue = CreateSubExecutor(parent, 1);
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    bool aliveInNext = true;
    queue->Submit([held = std::move(held)] {});
    queue->Submit([&] { aliveInNext = !watch.expired(); });
    parent->RunAll();
    EXPECT_FALSE(aliveInNext);
}

TEST(SubExecutor, PassesARefusalOfItsParentOnAndKeepsNothing)
{
    const auto parent = std::make_shared<HoldingExecutor>();
    const auto queue = CreateSubExecutor(parent, 1);
    int ran = 0;
    for (int i = 0; i < 10; ++i) {
        queue->Submit([&] { ++ran; });
    }
    parent->Refuse();
    parent->RunAll(); // its next turns are refused: the rest runs within the one that was accepted
    EXPECT_EQ(ran, 10);
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    EXPECT_LT(queue->Submit([held = std::move(held)] {}), 0);
    EXPECT_TRUE(watch.expired());
}

TEST(SubExecutor, NeedsAParentAndASensibleNumber)
{
    EXPECT_EQ(CreateSubExecutor(nullptr, 1), nullptr);
    const auto parent = std::make_shared<HoldingExecutor>();
    EXPECT_THROW(CreateSubExecutor(parent, 0), kiocore::kio_exception);
    EXPECT_THROW(CreateSubExecutor(parent, -2), kiocore::kio_exception);
}

TEST(ScReplaceExecutor, StandsInForItsPoolOnlyAndNests)
{
    const auto io = CreateIOBoundExecutor();
    const auto outer = std::make_shared<HoldingExecutor>();
    {
        ScReplaceExecutor replaceOuter(ScReplaceExecutor::Pool::kCPUBound, outer);
        {
            ScReplaceExecutor replaceInner(ScReplaceExecutor::Pool::kCPUBound, nullptr);
            EXPECT_EQ(CreateCPUBoundExecutor(), nullptr);
        }
        EXPECT_EQ(GetCPUBoundExecutor(), outer);
        EXPECT_EQ(CreateIOBoundExecutor(), io);
        support::TraceRecorder trace("Host");
        CreateSubExecutor(outer, -1)->Submit([] {});
        EXPECT_EQ(trace.Lines(),
                  (std::vector<std::string>{"kiocore::threads::CreateSubExecutor(\"replacement\", -1)",
                                            "kiocore::threads::AsyncExecutor::Submit(\"sub\")"}));
        EXPECT_EQ(outer->RunAll(), 1u);
    }
    EXPECT_NE(GetCPUBoundExecutor(), outer);
    TerminateExecutors();
}

namespace {

// Like a library's globals: made before the pools, hence destroyed after they have ended.
std::shared_ptr<AsyncExecutor> sGlobalQueue;
int sExitPipe = -1;

struct AtTheEnd {
    ~AtTheEnd()
    {
        if (sExitPipe >= 0) {
            const bool refused =
                sGlobalQueue->Submit([] {}) < 0 && CreateCPUBoundExecutor()->Submit([] {}) < 0;
            [[maybe_unused]] const auto written = write(sExitPipe, refused ? "r" : "a", 1);
        }
    }
} sAtTheEnd;

} // namespace

TEST(AsyncExecutor, AtExitAcceptedWorkRunsAndLateHandlesAreRefused)
{
    const struct {
        const char* name;
        std::shared_ptr<AsyncExecutor> (*exitOn)();
        const char* expected;
    } kCases[] = {
        {"main calls exit", nullptr, "ttttttttttr"},
        {"a task calls exit", &CreateCPUBoundExecutor, "r"},
        {"a task before termination calls exit", &CreatePreTerminationExecutor, "r"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        std::fflush(nullptr); // a child that exits would write what is buffered once more
        const pid_t child = fork();
        if (child == 0) {
            sExitPipe = ends[1];
            sGlobalQueue = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
            const auto run = [] { [[maybe_unused]] const auto written = write(sExitPipe, "t", 1); };
            if (test.exitOn) {
                test.exitOn()->Submit([] { std::exit(0); });
                for (;;) {
                    pause();
                }
            }
            for (int i = 0; i < 9; ++i) {
                sGlobalQueue->Submit(run);
            }
            CreatePreTerminationExecutor()->Submit(run);
            std::exit(0);
        }
        close(ends[1]);
        std::string seen;
        for (char byte = 0; read(ends[0], &byte, 1) == 1;) {
            seen += byte;
        }
        close(ends[0]);
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(seen, test.expected);
    }
}
