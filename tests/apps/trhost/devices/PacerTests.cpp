#include <devices/MediaTime.h>
#include <devices/Pacer.h>

#include <support/HandWoundClock.h>

#include <gtest/gtest.h>

using namespace trhost::devices;
using namespace std::chrono_literals;

TEST(Pacer, SlowsDownWhatHasNoClockAndLeavesHardwareAlone)
{
    support::HandWoundClock clock;
    Pacer null(Pacer::Mode::kIfNeeded, 1000, 200); // one frame a millisecond
    null.Count(300);
    EXPECT_EQ(null.UntilNext(), 0ns) << "as far ahead as a device with this buffer may seem";
    null.Count(1);
    EXPECT_EQ(null.UntilNext(), 101ms) << "its buffer holds 200 frames";
    clock.Advance(101ms);
    EXPECT_EQ(null.UntilNext(), 0ns);
    EXPECT_EQ(null.UntilOver(), 200ms);

    // A device that runs one part in a thousand too fast, for an hour: a frame more each second.
    Pacer fast(Pacer::Mode::kIfNeeded, 1000, 200);
    fast.Count(200);
    for (int second = 0; second < 3600; ++second) {
        clock.Advance(1s);
        fast.Count(1001);
        ASSERT_EQ(fast.UntilNext(), 0ns) << "second " << second;
    }

    Pacer file(Pacer::Mode::kNever, 1000, 0);
    file.Count(1'000'000);
    EXPECT_EQ(file.UntilNext(), 0ns);
    EXPECT_EQ(file.UntilOver(), 0ns);

    Pacer always(Pacer::Mode::kAlways, 1000, 0);
    always.Count(10);
    EXPECT_EQ(always.UntilNext(), 10ms);
}

TEST(MediaTime, ReadsWhatPeopleWrite)
{
    const struct {
        const char* text;
        std::optional<std::chrono::nanoseconds> expected;
    } kCases[] = {
        {"12.5", 12500ms}, {"12.5s", 12500ms}, {"200ms", 200ms}, {"1:05.5", 65500ms}, {"1:02:03", 3723s},
        {"0", 0s},         {"1:60", {}},       {"1:2:3:4", {}},  {"1.5:00", {}},      {"-1", {}},
        {"", {}},          {"s", {}},          {"1e3", {}},      {"1:", {}},          {"99999999999", {}},
        {"nan", {}},       {" 1", {}},         {"1.2.3", {}},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(ParseMediaTime(test.text), test.expected) << test.text;
    }
    EXPECT_EQ(FramesOf(1s, 44100), 44100);
    EXPECT_EQ(FramesOf(10ms, 44100), 441);
    EXPECT_EQ(FramesOf(366h * 24, 384000), std::int64_t(366) * 86400 * 384000);
}
