#include "run/Watchdog.h"
#include "support/HandWoundClock.h"
#include "support/HandWoundExecutor.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace trhost::effects {
namespace {

class AWatchdog : public testing::Test {
protected:
    std::vector<std::pair<std::string, int>> Told() { return std::exchange(told, {}); }

    support::HandWoundClock clock;
    const std::shared_ptr<support::HandWoundExecutor> executor =
        std::make_shared<support::HandWoundExecutor>(clock);
    std::vector<std::pair<std::string, int>> told;
    Watchdog watchdog{[this](const std::string& name, std::chrono::seconds running) {
                          told.emplace_back(name, static_cast<int>(running.count()));
                      },
                      10s, executor};
};

TEST_F(AWatchdog, TellsOnceOfACallThatRunsForTheLimit)
{
    EXPECT_EQ(executor->HeldCount(), 0u) << "nothing to look at yet";
    watchdog.Enter("in time");
    executor->Advance(9999ms);
    watchdog.Leave();
    executor->Advance(3s);
    watchdog.Enter("frei0r.curves");
    executor->Advance(9999ms);
    EXPECT_THAT(Told(), IsEmpty());
    executor->Advance(1ms);
    EXPECT_THAT(Told(), ElementsAre(Pair("frei0r.curves", 10)));
    executor->Advance(1h);
    EXPECT_THAT(Told(), IsEmpty());
    watchdog.Leave();
    watchdog.Enter("frei0r.curves");
    executor->Advance(20s);
    EXPECT_THAT(Told(), ElementsAre(Pair("frei0r.curves", 10))) << "another call of the same";
    watchdog.Leave();
}

TEST_F(AWatchdog, BlamesTheInnermostCall)
{
    watchdog.Enter("outer");
    executor->Advance(8s);
    watchdog.Enter("inner");
    executor->Advance(9s);
    EXPECT_THAT(Told(), IsEmpty()) << "the outer one waits for the inner one";
    executor->Advance(1s);
    EXPECT_THAT(Told(), ElementsAre(Pair("inner", 10)));
    watchdog.Leave();
    executor->Advance(10s);
    EXPECT_THAT(Told(), ElementsAre(Pair("outer", testing::AllOf(testing::Ge(18), testing::Le(28)))));
    watchdog.Leave();
}

TEST_F(AWatchdog, LooksAtEveryThread)
{
    std::latch entered(2);
    std::latch end(1);
    std::vector<std::thread> threads;
    for (const char* name : {"a", "b"}) {
        threads.emplace_back([&, name] {
            watchdog.Enter(name);
            entered.count_down();
            end.wait();
            watchdog.Leave();
        });
    }
    entered.wait();
    executor->Advance(4s);
    watchdog.Enter("later");
    executor->Advance(6s);
    EXPECT_THAT(Told(), testing::UnorderedElementsAre(Pair("a", 10), Pair("b", 10)));
    executor->Advance(4s);
    EXPECT_THAT(Told(), ElementsAre(Pair("later", 10)));
    end.count_down();
    for (std::thread& thread : threads) {
        thread.join();
    }
    watchdog.Leave();
}

TEST(Watchdog, GoesOnAfterAFailureOfWhoIsTold)
{
    support::HandWoundClock clock;
    const auto executor = std::make_shared<support::HandWoundExecutor>(clock);
    support::TraceRecorder trace("Threads", 1);
    int told = 0;
    {
        Watchdog watchdog(
            [&](const std::string&, std::chrono::seconds) {
                ++told;
                throw std::runtime_error("no terminal");
            },
            10s, executor);
        executor->Refuse(true);
        watchdog.Enter("while nobody looks");
        watchdog.Leave();
        executor->Refuse(false);
        for (int i = 0; i < 2; ++i) {
            watchdog.Enter("a");
            executor->Advance(20s);
            watchdog.Leave();
        }
        watchdog.Enter("b");
    }
    EXPECT_EQ(told, 2);
    EXPECT_EQ(trace.CountContaining("no terminal"), 2);
    executor->Advance(1h);
    EXPECT_EQ(told, 2) << "it has gone";
}

TEST(Watchdog, HasAThreadOfItsOwn)
{
    std::promise<std::thread::id> told;
    Watchdog watchdog(
        [&](const std::string& name, std::chrono::seconds) {
            EXPECT_EQ(name, "frei0r.curves");
            told.set_value(std::this_thread::get_id());
        },
        1ms);
    watchdog.Enter("frei0r.curves");
    EXPECT_NE(told.get_future().get(), std::this_thread::get_id());
    watchdog.Leave();
}

} // namespace
} // namespace trhost::effects
