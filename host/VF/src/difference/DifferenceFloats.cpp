#include "DifferenceRows.h"

#include <algorithm>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "difference/DifferenceFloats.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// One pixel at a time, whatever the processor: sums of floats depend on their order.
using Pixel = hn::CappedTag<float, 4>;
using PixelBits = hn::RebindToUnsigned<Pixel>;
using Half = hn::Half<Pixel>;
using Sums = hn::Rebind<double, Half>;
using Bits = hn::ScalableTag<std::uint32_t>;

using PixelVector = hn::Vec<Pixel>;

constexpr std::uint32_t kStepPixels = 16;

HWY_INLINE PixelVector Differences(PixelVector inFirst, PixelVector inSecond)
{
    const Pixel d;
    const PixelBits bits;
    const auto same = hn::MaskFromVec(hn::BitCast(
        d, hn::VecFromMask(bits, hn::Eq(hn::BitCast(bits, inFirst), hn::BitCast(bits, inSecond)))));
    const auto equal = hn::Or(same, hn::Eq(inFirst, inSecond)); // the latter for zeros
    const auto difference = hn::Abs(hn::Sub(inFirst, inSecond));
    const auto finite = hn::Le(difference, hn::Set(d, std::numeric_limits<float>::max()));
    return hn::IfThenZeroElse(equal, hn::IfThenElse(finite, difference, hn::Set(d, 1.0f)));
}

/// Alpha is the upper lane.
HWY_INLINE PixelVector Painted(PixelVector inDifference, hn::Mask<Pixel> inDiffers, unsigned inWhich)
{
    const Pixel d;
    const auto one = hn::Set(d, 1.0f);
    const auto lifted = hn::Add(hn::Mul(inDifference, hn::Set(d, 0.75f)), hn::Set(d, 64.0f / 255.0f));
    const auto painted = hn::IfThenElseZero(inDiffers, hn::Min(lifted, one));
    const auto shown = inWhich == 8 ? hn::Broadcast<3>(painted) : painted;
    return hn::IfThenElse(hn::Not(hn::FirstN(d, 3)), one, shown);
}

template <Painting kPainting>
HWY_INLINE void Put(PixelVector inValue, float* outAt)
{
    if constexpr (kPainting == Painting::kStreamed) {
        hn::Stream(inValue, Pixel(), outAt);
    } else if constexpr (kPainting == Painting::kCached) {
        hn::StoreU(inValue, Pixel(), outAt);
    }
}

HWY_INLINE bool StepIsEqual(const float* inFirst, const float* inSecond)
{
    const Bits d;
    const auto* const a = reinterpret_cast<const std::uint32_t*>(inFirst);
    const auto* const b = reinterpret_cast<const std::uint32_t*>(inSecond);
    auto any = hn::Zero(d);
    for (std::size_t at = 0; at < kStepPixels * 4; at += hn::Lanes(d)) {
        any = hn::Or(any, hn::Xor(hn::LoadU(d, a + at), hn::LoadU(d, b + at)));
    }
    return hn::AllTrue(d, hn::Eq(any, hn::Zero(d)));
}

template <Painting kPainting>
RowDifference CompareRow(const float* inFirst, const float* inSecond, std::uint32_t inPixels,
                         float inTolerance, float* outPainted)
{
    const Pixel d;
    const Sums sums;
    const auto tolerance = hn::Set(d, inTolerance);
    const auto black = hn::IfThenElseZero(hn::Not(hn::FirstN(d, 3)), hn::Set(d, 1.0f));
    auto lowSquares = hn::Zero(sums);
    auto highSquares = hn::Zero(sums);
    auto largest = hn::Zero(d);
    RowDifference result;
    const auto compare = [&](std::uint32_t inPixel) HWY_ATTR {
        const std::size_t at = std::size_t{inPixel} * 4;
        const auto difference = Differences(hn::LoadU(d, inFirst + at), hn::LoadU(d, inSecond + at));
        const auto low = hn::PromoteTo(sums, hn::LowerHalf(Half(), difference));
        const auto high = hn::PromoteTo(sums, hn::UpperHalf(Half(), difference));
        lowSquares = hn::Add(lowSquares, hn::Mul(low, low));
        highSquares = hn::Add(highSquares, hn::Mul(high, high));
        largest = hn::Max(largest, difference);
        const auto differs = hn::Gt(difference, tolerance);
        std::uint8_t which[8] = {};
        hn::StoreMaskBits(d, differs, which);
        if (which[0] != 0) {
            result.first = result.pixels == 0 ? inPixel : result.first;
            result.last = inPixel;
            ++result.pixels;
        }
        if constexpr (kPainting != Painting::kNone) {
            Put<kPainting>(Painted(difference, differs, which[0]), outPainted + at);
        }
    };
    std::uint32_t pixel = 0;
    while (pixel < inPixels) {
        const std::uint32_t end = std::min(pixel + kStepPixels, inPixels);
        const std::size_t at = std::size_t{pixel} * 4;
        if (end - pixel < kStepPixels || !StepIsEqual(inFirst + at, inSecond + at)) {
            for (; pixel < end; ++pixel) {
                compare(pixel);
            }
        }
        for (; pixel < end; ++pixel) {
            if constexpr (kPainting != Painting::kNone) {
                Put<kPainting>(black, outPainted + std::size_t{pixel} * 4);
            }
        }
    }
    HWY_ALIGN double lanes[4];
    hn::Store(lowSquares, sums, lanes);
    hn::StoreU(highSquares, sums, lanes + 2);
    result.floatSquares = (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
    result.largest = hn::GetLane(hn::MaxOfLanes(d, largest));
    return result;
}

RowDifference OfBGRA32f(const float* a, const float* b, std::uint32_t n, float tolerance, float* out,
                        Painting painting)
{
    switch (painting) {
    case Painting::kNone:
        return CompareRow<Painting::kNone>(a, b, n, tolerance, nullptr);
    case Painting::kCached:
        break;
    case Painting::kStreamed:
        return CompareRow<Painting::kStreamed>(a, b, n, tolerance, out);
    }
    return CompareRow<Painting::kCached>(a, b, n, tolerance, out);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(OfBGRA32f);

} // namespace

RowDifference CompareRow32f(const RowPair& inRows, float inTolerance, std::byte* outPainted,
                            Painting inPainting)
{
    return HWY_DYNAMIC_DISPATCH(OfBGRA32f)(reinterpret_cast<const float*>(inRows.first),
                                           reinterpret_cast<const float*>(inRows.second), inRows.pixels,
                                           inTolerance, reinterpret_cast<float*>(outPainted), inPainting);
}

} // namespace VF
#endif
