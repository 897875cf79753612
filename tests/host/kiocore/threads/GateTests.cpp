#include <kiocore/threads/Gate.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using kiocore::threads::Gate;
using SteadyClock = std::chrono::steady_clock;

TEST(Gate, IsPassedWhileOpenOnly)
{
    Gate gate(false);
    EXPECT_FALSE(gate.PassThroughUntil(SteadyClock::now()));
    EXPECT_FALSE(gate.PassThroughUntil(SteadyClock::now() + std::chrono::milliseconds(1)));
    gate.Open();
    gate.PassThrough();
    EXPECT_TRUE(gate.PassThroughUntil(SteadyClock::time_point::min())); // open counts more than late
    gate.Close();
    EXPECT_FALSE(gate.IsOpen());
    EXPECT_FALSE(gate.PassThroughUntil(SteadyClock::now()));
    EXPECT_TRUE(Gate(true).IsOpen());
}

TEST(Gate, LetsEveryoneThroughOnceItOpens)
{
    for (int round = 0; round < 200; ++round) {
        auto gate = std::make_shared<Gate>(false);
        int written = 0;
        std::vector<std::thread> waiting;
        for (int index = 0; index < 4; ++index) {
            waiting.emplace_back([gate, &written] {
                gate->PassThrough();
                EXPECT_EQ(written, 1); // what was written before it opened is seen
            });
        }
        if (round % 2 == 0) {
            std::this_thread::yield();
        }
        written = 1;
        Gate& opened = *gate;
        opened.Open();
        gate.reset();
        for (std::thread& thread : waiting) {
            thread.join();
        }
    }
}

} // namespace
