#include <kiomediatypes/TickTime.h>

#include <kiocore/config/Errors.h>

#include <cmath>
#include <cstdio>

namespace kiomediatypes {
namespace {

__extension__ using Wide = __int128;

std::int64_t Clamped(Wide inValue)
{
    constexpr auto kLowest = std::numeric_limits<std::int64_t>::min();
    constexpr auto kHighest = std::numeric_limits<std::int64_t>::max();
    return inValue < kLowest ? kLowest : inValue > kHighest ? kHighest : static_cast<std::int64_t>(inValue);
}

/// inNumerator / inDenominator, the denominator above 0.
Wide Divide(Wide inNumerator, Wide inDenominator, Rounding inRounding)
{
    const Wide quotient = inNumerator / inDenominator;
    const Wide rest = inNumerator % inDenominator;
    if (rest == 0) {
        return quotient;
    }
    const bool negative = rest < 0;
    switch (inRounding) {
    case Rounding::kDown:
        return negative ? quotient - 1 : quotient;
    case Rounding::kUp:
        return negative ? quotient : quotient + 1;
    case Rounding::kNearest:
        break;
    }
    const bool away = 2 * (negative ? -rest : rest) >= inDenominator;
    return away ? quotient + (negative ? -1 : 1) : quotient;
}

void CheckRate(Rate inRate)
{
    if (inRate.numerator == 0 || inRate.denominator == 0) {
        throw kiocore::kio_exception("Rate " + std::to_string(inRate.numerator) + "/" +
                                         std::to_string(inRate.denominator) +
                                         ": expected numbers above 0 on both sides",
                                     kiocore::kError_BadArgument);
    }
}

} // namespace

TickTime TickTime::FromSeconds(double inSeconds)
{
    if (std::isnan(inSeconds)) {
        return {};
    }
    const double ticks = std::round(inSeconds * static_cast<double>(kTicksPerSecond));
    // 2^63 itself is no int64; everything at or beyond it is the end of the range.
    constexpr double kBeyond = 9223372036854775808.0;
    if (ticks >= kBeyond || ticks < -kBeyond) {
        return TickTime(End(ticks > 0));
    }
    return TickTime(static_cast<std::int64_t>(ticks));
}

TickTime TickTime::FromCount(std::int64_t inCount, Rate inRate)
{
    CheckRate(inRate);
    return FromTimeBase(inCount, inRate.denominator, inRate.numerator);
}

TickTime TickTime::FromTimeBase(std::int64_t inCount, std::int64_t inNumerator, std::int64_t inDenominator)
{
    if (inNumerator <= 0 || inDenominator <= 0) {
        throw kiocore::kio_exception("Time base " + std::to_string(inNumerator) + "/" +
                                         std::to_string(inDenominator) +
                                         ": expected numbers above 0 on both sides",
                                     kiocore::kError_BadArgument);
    }
    // Ticks of one unit first, where they are whole: three large factors would leave the 128 bits.
    const Wide unit = static_cast<Wide>(kTicksPerSecond) * inNumerator;
    if (unit % inDenominator == 0) {
        const Wide whole = unit / inDenominator;
        if (whole > std::numeric_limits<std::int64_t>::max()) {
            return TickTime(inCount == 0 ? 0 : End(inCount > 0));
        }
        return TickTime(Clamped(whole * inCount));
    }
    Wide product = 0;
    if (__builtin_mul_overflow(unit, static_cast<Wide>(inCount), &product)) {
        return TickTime(End(inCount > 0));
    }
    return TickTime(Clamped(Divide(product, inDenominator, Rounding::kNearest)));
}

std::int64_t TickTime::ToCount(Rate inRate, Rounding inRounding) const
{
    CheckRate(inRate);
    const Wide scale = static_cast<Wide>(kTicksPerSecond) * inRate.denominator;
    return Clamped(Divide(static_cast<Wide>(mTicks) * inRate.numerator, scale, inRounding));
}

std::string TickTime::AsUTF8() const
{
    if (IsUnset()) {
        return "unset";
    }
    char text[48];
    std::snprintf(text, sizeof(text), "%.6f s", Seconds());
    return text;
}

} // namespace kiomediatypes
