#pragma once

#include <kiocore/Export.h>

#include <compare>
#include <cstdint>
#include <limits>
#include <string>

namespace kiomediatypes {

/// A frame or sample rate: numerator / denominator a second. Both above 0.
struct Rate {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 1;

    friend bool operator==(const Rate&, const Rate&) = default;
};

/// What happens to a time that falls between two frames or samples.
enum class Rounding {
    kDown,    ///< towards minus infinity: the frame that is on show at that time
    kNearest, ///< ties away from zero
    kUp,
};

/// A point or a span of media time, counted in ticks. Ticks are so short that frames of every common rate
/// (23.976 to 120, the 1001 family included) and samples at 44.1, 48 and 96 kHz and their multiples up to
/// 192 kHz last a whole number of them, so that counting never drifts.
///
/// Arithmetic stops at the ends of the range instead of wrapping: a time that is too far away stays far away.
///
/// Threading: a plain value.
class TickTime {
public:
    /// 2^12 * 3^4 * 5^6 * 7^2: divisible by 24000, 30000, 60000, 120000, 44100, 48000, 96000 ...
    static constexpr std::int64_t kTicksPerSecond = 254'016'000'000;
    /// "No time": what a default-made value holds, 400,000 seconds before zero.
    static constexpr std::int64_t kUnsetTicks = -101'606'400'000'000'000;

    constexpr TickTime() = default;
    static constexpr TickTime FromTicks(std::int64_t inTicks) { return TickTime(inTicks); }
    static constexpr TickTime Zero() { return TickTime(0); }
    /// Nearest tick; what lies outside the range gives its end, not-a-number the unset value.
    KIO_EXPORT static TickTime FromSeconds(double inSeconds);
    /// The start of a frame or sample. Exact for the rates above, else the nearest tick.
    /// @throws kio_exception (kError_BadArgument) for a rate with a zero.
    KIO_EXPORT static TickTime FromCount(std::int64_t inCount, Rate inRate);
    /// A time as a container writes it: inCount units of inNumerator / inDenominator seconds. Nearest tick.
    /// @throws kio_exception (kError_BadArgument) when either is not above 0.
    KIO_EXPORT static TickTime FromTimeBase(std::int64_t inCount, std::int64_t inNumerator,
                                            std::int64_t inDenominator);

    constexpr std::int64_t Ticks() const { return mTicks; }
    double Seconds() const { return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond); }
    /// Which frame or sample: the inverse of FromCount, exact there with every rounding.
    /// @throws kio_exception (kError_BadArgument) for a rate with a zero.
    KIO_EXPORT std::int64_t ToCount(Rate inRate, Rounding inRounding = Rounding::kDown) const;
    constexpr bool IsUnset() const { return mTicks == kUnsetTicks; }
    /// "1.500000 s", or "unset".
    KIO_EXPORT std::string AsUTF8() const;

    friend constexpr auto operator<=>(const TickTime&, const TickTime&) = default;
    friend TickTime operator+(TickTime inA, TickTime inB) { return TickTime(Add(inA.mTicks, inB.mTicks)); }
    friend TickTime operator-(TickTime inA, TickTime inB)
    {
        return TickTime(Subtract(inA.mTicks, inB.mTicks));
    }

private:
    explicit constexpr TickTime(std::int64_t inTicks) : mTicks(inTicks) {}

    static std::int64_t Add(std::int64_t inA, std::int64_t inB)
    {
        std::int64_t sum = 0;
        return __builtin_add_overflow(inA, inB, &sum) ? End(inA > 0) : sum;
    }
    static std::int64_t Subtract(std::int64_t inA, std::int64_t inB)
    {
        std::int64_t difference = 0;
        return __builtin_sub_overflow(inA, inB, &difference) ? End(inA >= 0) : difference;
    }
    static constexpr std::int64_t End(bool inUpper)
    {
        return inUpper ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
    }

    std::int64_t mTicks = kUnsetTicks;
};

} // namespace kiomediatypes
