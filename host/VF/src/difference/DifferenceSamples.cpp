#include "DifferenceSamples.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "difference/DifferenceSamples.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Sums = hn::ScalableTag<std::int32_t>;
using SumVector = hn::Vec<Sums>;

// Lanes of 32 bits hold the squares of this many vectors of bytes, or of words of 10 bits.
constexpr std::size_t kVectorsPerSum = 1024;

HWY_INLINE void AddSquares(hn::Vec<hn::ScalableTag<std::uint16_t>> inWords, SumVector& ioSum)
{
    const hn::Repartition<std::int16_t, Sums> words;
    const auto values = hn::BitCast(words, inWords);
    auto other = hn::Zero(Sums());
    ioSum = hn::ReorderWidenMulAccumulate(Sums(), values, values, ioSum, other);
    ioSum = hn::Add(ioSum, other);
}
HWY_INLINE void AddSquares(hn::Vec<hn::ScalableTag<std::uint8_t>> inBytes, SumVector& ioSum)
{
    const hn::ScalableTag<std::uint8_t> d;
    const hn::ScalableTag<std::uint16_t> words;
    AddSquares(hn::BitCast(words, hn::InterleaveLower(d, inBytes, hn::Zero(d))), ioSum);
    AddSquares(hn::BitCast(words, hn::InterleaveUpper(d, inBytes, hn::Zero(d))), ioSum);
}

HWY_INLINE std::uint64_t SumOf(SumVector inVector)
{
    HWY_ALIGN std::int32_t lanes[hn::MaxLanes(Sums())];
    hn::Store(inVector, Sums(), lanes);
    std::uint64_t sum = 0;
    for (std::size_t lane = 0; lane < hn::Lanes(Sums()); ++lane) {
        sum += static_cast<std::uint32_t>(lanes[lane]);
    }
    return sum;
}

template <typename T>
std::uint64_t Differences(const T* inFirst, const T* inSecond, std::size_t inCount, T* outDifferences)
{
    const hn::ScalableTag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    std::uint64_t sum = 0;
    std::size_t done = 0;
    while (done + lanes <= inCount) {
        auto squares = hn::Zero(Sums());
        const std::size_t end = std::min(inCount, done + kVectorsPerSum * lanes);
        for (; done + lanes <= end; done += lanes) {
            const auto a = hn::LoadU(d, inFirst + done);
            const auto b = hn::LoadU(d, inSecond + done);
            const auto difference = hn::Sub(hn::Max(a, b), hn::Min(a, b));
            AddSquares(difference, squares);
            hn::StoreU(difference, d, outDifferences + done);
        }
        sum += SumOf(squares);
    }
    for (; done < inCount; ++done) {
        const std::uint32_t a = inFirst[done];
        const std::uint32_t b = inSecond[done];
        const std::uint32_t difference = a > b ? a - b : b - a;
        outDifferences[done] = static_cast<T>(difference);
        sum += difference * difference;
    }
    return sum;
}

template <typename T>
void Largest(T* ioLuma, const T* inCb, const T* inCr, std::size_t inPixels)
{
    const hn::ScalableTag<T> d;
    const hn::Repartition<hwy::MakeWide<T>, hn::ScalableTag<T>> pairs;
    const hn::Rebind<T, decltype(pairs)> halves;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t done = 0;
    for (; done + lanes <= inPixels; done += lanes) {
        const auto chroma = hn::Max(hn::LoadU(halves, inCb + done / 2), hn::LoadU(halves, inCr + done / 2));
        const auto wide = hn::PromoteTo(pairs, chroma);
        const auto both = hn::BitCast(d, hn::Or(wide, hn::ShiftLeft<sizeof(T) * 8>(wide)));
        hn::StoreU(hn::Max(hn::LoadU(d, ioLuma + done), both), d, ioLuma + done);
    }
    for (; done < inPixels; ++done) {
        ioLuma[done] = std::max({ioLuma[done], inCb[done / 2], inCr[done / 2]});
    }
}

template <typename T>
void SumUp(const T* inLargest, std::uint32_t inPixels, std::uint32_t inTolerance, RowDifference& ioResult)
{
    const hn::ScalableTag<T> d;
    const auto lanes = static_cast<std::uint32_t>(hn::Lanes(d));
    const auto tolerance = hn::Set(d, static_cast<T>(inTolerance));
    auto largest = hn::Zero(d);
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    std::uint32_t pixels = 0;
    std::uint32_t most = 0;
    const auto note = [&](std::uint32_t inFrom, std::uint32_t inTo) {
        first = end == 0 ? inFrom : first;
        end = inTo;
    };
    std::uint32_t done = 0;
    for (; done + lanes <= inPixels; done += lanes) {
        const auto value = hn::LoadU(d, inLargest + done);
        largest = hn::Max(largest, value);
        const auto excess = hn::SaturatedSub(value, tolerance);
        const auto within = hn::CountTrue(d, hn::Eq(excess, hn::Zero(d)));
        if (within != lanes) {
            pixels += lanes - static_cast<std::uint32_t>(within);
            note(done, done + lanes);
        }
    }
    for (; done < inPixels; ++done) {
        most = std::max<std::uint32_t>(most, inLargest[done]);
        if (inLargest[done] > inTolerance) {
            ++pixels;
            note(done, done + 1);
        }
    }
    ioResult.pixels = pixels;
    HWY_ALIGN T ofLanes[hn::MaxLanes(hn::ScalableTag<T>())];
    hn::Store(largest, d, ofLanes);
    ioResult.largest =
        static_cast<float>(std::max<std::uint32_t>(most, *std::max_element(ofLanes, ofLanes + lanes)));
    if (pixels != 0) {
        while (inLargest[first] <= inTolerance) {
            ++first;
        }
        while (inLargest[end - 1] <= inTolerance) {
            --end;
        }
        ioResult.first = first;
        ioResult.last = end - 1;
    }
}

std::uint64_t Differences8(const std::uint8_t* a, const std::uint8_t* b, std::size_t n, std::uint8_t* out)
{
    return Differences(a, b, n, out);
}
std::uint64_t Differences16(const std::uint16_t* a, const std::uint16_t* b, std::size_t n, std::uint16_t* out)
{
    return Differences(a, b, n, out);
}
void Largest8(std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr, std::size_t n)
{
    Largest(y, cb, cr, n);
}
void Largest16(std::uint16_t* y, const std::uint16_t* cb, const std::uint16_t* cr, std::size_t n)
{
    Largest(y, cb, cr, n);
}
void SumUp8(const std::uint8_t* in, std::uint32_t n, std::uint32_t tolerance, RowDifference& result)
{
    SumUp(in, n, tolerance, result);
}
void SumUp16(const std::uint16_t* in, std::uint32_t n, std::uint32_t tolerance, RowDifference& result)
{
    SumUp(in, n, tolerance, result);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(Differences8);
HWY_EXPORT(Differences16);
HWY_EXPORT(Largest8);
HWY_EXPORT(Largest16);
HWY_EXPORT(SumUp8);
HWY_EXPORT(SumUp16);

} // namespace

template <>
std::uint64_t DifferencesOf<std::uint8_t>(const std::uint8_t* inFirst, const std::uint8_t* inSecond,
                                          std::size_t inCount, std::uint8_t* outDifferences)
{
    return HWY_DYNAMIC_DISPATCH(Differences8)(inFirst, inSecond, inCount, outDifferences);
}
template <>
std::uint64_t DifferencesOf<std::uint16_t>(const std::uint16_t* inFirst, const std::uint16_t* inSecond,
                                           std::size_t inCount, std::uint16_t* outDifferences)
{
    return HWY_DYNAMIC_DISPATCH(Differences16)(inFirst, inSecond, inCount, outDifferences);
}
template <>
void LargestOfPixels<std::uint8_t>(std::uint8_t* ioLuma, const std::uint8_t* inCb, const std::uint8_t* inCr,
                                   std::size_t inPixels)
{
    HWY_DYNAMIC_DISPATCH(Largest8)(ioLuma, inCb, inCr, inPixels);
}
template <>
void LargestOfPixels<std::uint16_t>(std::uint16_t* ioLuma, const std::uint16_t* inCb,
                                    const std::uint16_t* inCr, std::size_t inPixels)
{
    HWY_DYNAMIC_DISPATCH(Largest16)(ioLuma, inCb, inCr, inPixels);
}
template <>
void SumUpPixels<std::uint8_t>(const std::uint8_t* inLargest, std::uint32_t inPixels,
                               std::uint32_t inTolerance, RowDifference& ioResult)
{
    HWY_DYNAMIC_DISPATCH(SumUp8)(inLargest, inPixels, inTolerance, ioResult);
}
template <>
void SumUpPixels<std::uint16_t>(const std::uint16_t* inLargest, std::uint32_t inPixels,
                                std::uint32_t inTolerance, RowDifference& ioResult)
{
    HWY_DYNAMIC_DISPATCH(SumUp16)(inLargest, inPixels, inTolerance, ioResult);
}

} // namespace VF
#endif
