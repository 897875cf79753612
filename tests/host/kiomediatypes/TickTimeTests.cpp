#include <kiocore/serialization/Serializer.h>
#include <kiomediatypes/TickTime.h>
#include <kiomediatypes/TickTimeJSON.h>

#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace kiomediatypes;

TEST(TickTime, CountsOfEveryCommonRateComeBackExactly)
{
    const Rate kRates[] = {{24000, 1001},  {24, 1},     {25, 1},    {30000, 1001}, {30, 1},
                           {48000, 1001},  {48, 1},     {50, 1},    {60000, 1001}, {60, 1},
                           {120000, 1001}, {120, 1},    {44100, 1}, {48000, 1},    {88200, 1},
                           {96000, 1},     {176400, 1}, {192000, 1}};
    for (const Rate rate : kRates) {
        SCOPED_TRACE(std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator));
        const std::int64_t unit = TickTime::FromCount(1, rate).Ticks();
        for (const std::int64_t count : {0ll, 1ll, -1ll, 1001ll, 123456789ll, -123456789ll}) {
            const TickTime time = TickTime::FromCount(count, rate);
            EXPECT_EQ(time.Ticks(), unit * count) << count; // whole ticks: no drift
            for (const Rounding rounding : {Rounding::kDown, Rounding::kNearest, Rounding::kUp}) {
                EXPECT_EQ(time.ToCount(rate, rounding), count);
            }
            const TickTime before = TickTime::FromTicks(time.Ticks() - 1);
            EXPECT_EQ(before.ToCount(rate, Rounding::kDown), count - 1);
            EXPECT_EQ(before.ToCount(rate, Rounding::kNearest), count);
            EXPECT_EQ(before.ToCount(rate, Rounding::kUp), count);
        }
    }
}

TEST(TickTime, TimeBasesOfContainersRoundToTheNearestTick)
{
    const struct {
        const char* name;
        std::int64_t count, numerator, denominator, ticks;
    } kCases[] = {
        {"MPEG clock", 90000, 1, 90000, TickTime::kTicksPerSecond},
        {"milliseconds", 1500, 1, 1000, TickTime::kTicksPerSecond * 3 / 2},
        {"sevenths are not whole in ticks of ours times eleven", 1, 1, 11, 23092363636},
        {"a tie goes away from zero", -1, 1, TickTime::kTicksPerSecond * 2, -1},
        {"beyond the end stays at the end", std::numeric_limits<std::int64_t>::max(), 1, 1,
         std::numeric_limits<std::int64_t>::max()},
        {"and before the beginning", std::numeric_limits<std::int64_t>::min(), 1001, 30011,
         std::numeric_limits<std::int64_t>::min()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(TickTime::FromTimeBase(test.count, test.numerator, test.denominator).Ticks(), test.ticks);
    }
    EXPECT_THROW(TickTime::FromTimeBase(1, 0, 1), kiocore::kio_exception);
    EXPECT_THROW(TickTime::FromCount(1, {25, 0}), kiocore::kio_exception);
    EXPECT_THROW(TickTime::Zero().ToCount({0, 1}), kiocore::kio_exception);
}

TEST(TickTime, ArithmeticStopsAtTheEnds)
{
    constexpr auto kHighest = std::numeric_limits<std::int64_t>::max();
    constexpr auto kLowest = std::numeric_limits<std::int64_t>::min();
    const auto ticks = [](std::int64_t inTicks) { return TickTime::FromTicks(inTicks); };
    EXPECT_EQ(ticks(3) - ticks(5), ticks(-2));
    EXPECT_EQ(ticks(kHighest - 1) + ticks(5), ticks(kHighest));
    EXPECT_EQ(ticks(kLowest + 1) + ticks(-5), ticks(kLowest));
    EXPECT_EQ(ticks(0) - ticks(kLowest), ticks(kHighest));
    EXPECT_EQ(ticks(-5) - ticks(kHighest), ticks(kLowest));

    EXPECT_EQ(TickTime::FromSeconds(1e300), ticks(kHighest));
    EXPECT_EQ(TickTime::FromSeconds(-1e300), ticks(kLowest));
    EXPECT_TRUE(TickTime::FromSeconds(std::nan("")).IsUnset());
    EXPECT_EQ(TickTime().Ticks(), -101'606'400'000'000'000);
    EXPECT_EQ(TickTime(), TickTime::FromSeconds(-400000));
    EXPECT_EQ(TickTime().AsUTF8(), "unset");
}

TEST(TickTime, InJSONIsItsTicks)
{
    using Serializer = kiocore::serialization::Serializer<TickTime>;
    for (std::int64_t ticks :
         {std::numeric_limits<std::int64_t>::min(), TickTime::kUnsetTicks, std::int64_t(0),
          std::int64_t(9'007'199'254'740'993), std::numeric_limits<std::int64_t>::max()}) {
        const TickTime time = TickTime::FromTicks(ticks);
        EXPECT_EQ(Serializer::ToUTF8String(time), std::to_string(ticks));
        EXPECT_EQ(Serializer::FromUTF8String(std::to_string(ticks)), time);
    }
    for (const char* text : {"null", "\"0\"", "0.5", "{}", "9223372036854775808"}) {
        EXPECT_THROW(Serializer::FromUTF8String(text), kiocore::serialization::bad_cast_exception) << text;
    }
}

} // namespace
