#include "run/CallTable.h"
#include "run/RunningCalls.h"

#include <gtest/gtest.h>

#include <sys/time.h>

#include <csignal>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace trhost::effects {
namespace {

std::string InnermostName(const CallSlot& inSlot)
{
    CallSeen call;
    return ReadInnermostCall(inSlot, call) == SlotState::kInCall ? call.name : "-";
}

int NamedCalls(const CallTable& inTable)
{
    int count = 0;
    for (const CallSlot& slot : inTable.slots) {
        count += InnermostName(slot) != "-";
    }
    return count;
}

TEST(CallTable, NamesTheInnermostCall)
{
    const auto table = std::make_shared<CallTable>();
    RunningCalls calls(CallKeeper::kBlackBox, table);
    const CallSlot& slot = table->slots[0];
    EXPECT_EQ(InnermostName(slot), "-");
    calls.Leave(); // of nothing
    for (const char* name : {"a", "12345678", "frei0r.glow", "d"}) {
        calls.Enter(name);
        EXPECT_EQ(InnermostName(slot), name);
    }
    calls.Enter("deeper than is named");
    EXPECT_EQ(InnermostName(slot), "d") << "which is running, too";
    calls.Leave();
    for (const char* name : {"d", "frei0r.glow", "12345678", "a", "-"}) {
        EXPECT_EQ(InnermostName(slot), name);
        calls.Leave();
    }
    calls.Enter("after one Leave too many");
    EXPECT_EQ(InnermostName(slot), "after one Leave too many");
    calls.Leave();
}

TEST(CallTable, CutsNamesBetweenCharacters)
{
    const auto table = std::make_shared<CallTable>();
    RunningCalls calls(CallKeeper::kBlackBox, table);
    const std::string full(CallEntry::kLongestName, 'x');
    const std::string almost(CallEntry::kLongestName - 1, 'x');
    const struct {
        const char* name;
        std::string entered;
        std::string seen;
    } kCases[] = {
        {"just fits", full, full},
        {"one more", full + "y", full},
        {"a character that would be cut", almost + "\u00e4", almost},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        calls.Enter(test.entered);
        EXPECT_EQ(InnermostName(table->slots[0]), test.seen);
        calls.Leave();
    }
}

TEST(CallTable, ThreadsGiveTheirSlotsBackAndGoUnnamedWhenThereAreNone)
{
    const auto table = std::make_shared<CallTable>();
    RunningCalls calls(CallKeeper::kBlackBox, table);
    for (int i = 0; i < 100; ++i) {
        std::thread([&] { calls.Enter("left by the end of its thread"); }).join();
    }
    EXPECT_EQ(NamedCalls(*table), 0);

    constexpr int kThreads = CallTable::kSlotCount;
    std::latch entered(kThreads);
    std::latch end(1);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            calls.Enter("thread " + std::to_string(i));
            entered.count_down();
            end.wait();
            calls.Leave();
        });
    }
    entered.wait();
    calls.Enter("no slot is left");
    EXPECT_EQ(NamedCalls(*table), kThreads);
    end.count_down();
    for (std::thread& thread : threads) {
        thread.join();
    }
    calls.Enter("within a call that is not named");
    EXPECT_EQ(NamedCalls(*table), 0) << "else the calls would not come apart again";
    calls.Leave();
    calls.Leave();
    calls.Enter("an outermost call");
    EXPECT_EQ(NamedCalls(*table), 1);
    calls.Leave();
}

TEST(CallTable, StaysUntilTheLastThreadHasLetGoAndAnotherMayFollow)
{
    auto table = std::make_shared<CallTable>();
    const std::weak_ptr<CallTable> watch = table;
    std::thread([&] {
        auto calls = std::make_unique<RunningCalls>(CallKeeper::kBlackBox, std::move(table));
        calls->Enter("a");
        calls.reset();
        EXPECT_FALSE(watch.expired());
        const auto next = std::make_shared<CallTable>();
        RunningCalls following(CallKeeper::kBlackBox, next);
        following.Leave();
        following.Enter("b");
        EXPECT_EQ(InnermostName(next->slots[0]), "b");
        EXPECT_TRUE(watch.expired());
    }).join();
}

const std::string kNames[] = {std::string(104, 'a'), std::string(60, 'b'), std::string(9, 'c')};
CallSlot* sInterruptedSlot = nullptr;
volatile std::sig_atomic_t sInterruptions = 0;

// The writing thread, as it might run between any two steps of the reading one.
void EndOneCallAndBeginAnother(int)
{
    const int next = sInterruptions + 1;
    sInterruptedSlot->Pop(0);
    sInterruptedSlot->Push(0, kNames[next % 3], 0);
    sInterruptions = next;
}

TEST(CallTable, NeverShowsPartsOfTwoCalls)
{
    const auto table = std::make_unique<CallTable>();
    sInterruptedSlot = &table->slots[0];
    sInterruptions = 0;
    sInterruptedSlot->Push(0, kNames[0], 0);
    const auto handler = std::signal(SIGALRM, &EndOneCallAndBeginAnother);
    const itimerval often{{0, 20}, {0, 20}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    int seen = 0;
    int mixed = 0;
    for (int i = 0; i < 50000000 && sInterruptions < 3000; ++i) {
        CallSeen call;
        const SlotState state = ReadInnermostCall(*sInterruptedSlot, call);
        mixed += state == SlotState::kDamaged;
        if (state == SlotState::kInCall) {
            ++seen;
            mixed += call.name != kNames[call.name[0] - 'a'];
        }
    }
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    std::signal(SIGALRM, handler);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(seen, 0);
}

} // namespace
} // namespace trhost::effects
