#include "support/HoldingExecutor.h"
#include "support/TraceRecorder.h"

#include <kiocore/async/Future.h>

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <string>

using namespace kiocore::async;
using support::HoldingExecutor;

namespace {

template <typename T>
std::uint32_t CodeOf(const Future<T>& inFuture)
{
    try {
        inFuture.Get();
    } catch (const kiocore::kio_exception& exception) {
        return exception.Code();
    }
    return 0;
}

} // namespace

TEST(Future, GivesItsValueToAllWhoWait)
{
    Promise<std::string> promise;
    const Future<std::string> future = promise.Future();
    EXPECT_FALSE(future.IsReady());
    EXPECT_FALSE(future.WaitFor(std::chrono::milliseconds(0)));
    auto waiter = std::async(std::launch::async, [future] { return future.Get(); });
    promise.SetValue("ready");
    EXPECT_EQ(waiter.get(), "ready");
    EXPECT_EQ(promise.Future().Get(), "ready");
    EXPECT_THROW(promise.SetValue("again"), kiocore::kio_exception);
    EXPECT_EQ(future.Get(), "ready");
    EXPECT_THROW(Future<int>().Get(), kiocore::null_reference_exception);
}

TEST(Future, FailsWhenItsPromiseGoesAway)
{
    Future<int> gone;
    Future<void> replaced;
    {
        Promise<int> promise;
        gone = promise.Future();
        Promise<int> moved = std::move(promise);
        EXPECT_FALSE(gone.IsReady());
        Promise<void> first;
        replaced = first.Future();
        first = Promise<void>();
    }
    EXPECT_EQ(CodeOf(gone), kiocore::kError_BrokenPromise);
    EXPECT_EQ(CodeOf(replaced), kiocore::kError_BrokenPromise);
}

TEST(Future, RunsContinuationsUnlockedInOrderAndGoesOnAfterOneThatThrows)
{
    support::TraceRecorder trace("Threads");
    Promise<int> promise;
    const auto future = promise.Future();
    std::string ran;
    future.OnReady([&](const Future<int>& ready) {
        ran += std::to_string(ready.Get());
        ready.OnReady([&](const Future<int>&) { ran += 'n'; }); // would hang under a lock
        throw std::runtime_error("continuation broke");
    });
    future.OnReady([&](const Future<int>&) { ran += 'b'; });
    promise.SetValue(7);
    EXPECT_EQ(ran, "7nb");
    EXPECT_EQ(trace.CountContaining("continuation broke"), 1);
}

TEST(Future, ThenMakesAChainOnTheExecutor)
{
    const auto executor = std::make_shared<HoldingExecutor>();
    Promise<void> start;
    const Future<std::string> end =
        start.Future()
            .Then(executor, [] { return 20; })
            .Then(nullptr, [](int value) { return value + 1; })
            .Then(executor, [](const int& value) { return std::to_string(value); });
    EXPECT_EQ(executor->HeldCount(), 0u);
    start.SetValue();
    EXPECT_EQ(executor->RunAll(), 2u);
    EXPECT_EQ(end.Get(), "21");
}

TEST(Future, ThenWaitsForAFutureThatItsFunctionGives)
{
    Promise<int> outer;
    Promise<void> inner;
    const Future<void> done = outer.Future().Then(nullptr, [&](int) { return inner.Future(); });
    outer.SetValue(1);
    EXPECT_FALSE(done.IsReady());
    inner.SetException(std::make_exception_ptr(std::runtime_error("inner")));
    EXPECT_THROW(done.Get(), std::runtime_error);
}

TEST(Future, AnExceptionSkipsTheRestOfAChain)
{
    bool ran = false;
    const auto executor = std::make_shared<HoldingExecutor>();
    const auto end = CallAsync(executor, []() -> int {
                         throw std::runtime_error("unreadable");
                     }).Then(executor, [&](int) { ran = true; });
    executor->RunAll();
    EXPECT_THROW(end.Get(), std::runtime_error);
    EXPECT_FALSE(ran);
}

TEST(Future, AnExecutorThatRefusesOrDropsFailsTheResult)
{
    const auto executor = std::make_shared<HoldingExecutor>();
    const auto dropped = CallAsync(executor, [] { return 1; });
    executor->DropAll();
    EXPECT_EQ(CodeOf(dropped), kiocore::kError_BrokenPromise);

    executor->Refuse();
    const auto refused = CallAsync(executor, [] { return 1; });
    EXPECT_EQ(CodeOf(refused), kiocore::kError_ExecutorTerminated);
    Promise<int> promise;
    const auto then = promise.Future().Then(executor, [](int) {});
    promise.SetValue(1);
    EXPECT_EQ(CodeOf(then), kiocore::kError_ExecutorTerminated);
}
