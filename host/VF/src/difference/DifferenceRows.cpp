#include "DifferenceRows.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "difference/DifferenceRows.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// A step takes this many vectors at once: where they are equal, as most are, one test says so.
constexpr std::size_t kStepVectors = 4;
// Processors fetch ahead by themselves, but stop at each page. A step that differs is only known to once it
// has arrived, and what was begun beyond it is done again.
constexpr std::size_t kPrefetchBytes = 384;
constexpr std::size_t kLineBytes = 64;

template <typename T>
using Tag = hn::ScalableTag<T>;
template <typename T>
using Vector = hn::Vec<Tag<T>>;
/// Lanes of whole pixels, which also take up squares: 32 bits for bytes, 64 for words.
template <typename T>
using PixelTag = hn::Repartition<std::conditional_t<sizeof(T) == 1, std::uint32_t, std::uint64_t>, Tag<T>>;
template <typename T>
using PixelVector = hn::Vec<PixelTag<T>>;
/// Of what will not be needed again soon.
HWY_INLINE void Prefetch(const std::byte* inFrom)
{
    __builtin_prefetch(inFrom + kPrefetchBytes, 0, 0);
}

template <Painting kPainting, class D, class V>
HWY_INLINE void Put(V inValue, D inTag, hn::TFromD<D>* outAt)
{
    if constexpr (kPainting == Painting::kStreamed) {
        hn::Stream(inValue, inTag, outAt);
    } else if constexpr (kPainting == Painting::kCached) {
        hn::StoreU(inValue, inTag, outAt);
    }
}

/// Adds four products of bytes to each lane; 65535 pixels' worth stays within 32 bits.
HWY_INLINE void AddSquares(Vector<std::uint8_t> inDifference, PixelVector<std::uint8_t>& ioSum)
{
    const Tag<std::uint8_t> d;
    const hn::Repartition<std::int16_t, Tag<std::uint8_t>> words;
    const hn::Repartition<std::int32_t, Tag<std::uint8_t>> sums;
    const auto low = hn::BitCast(words, hn::InterleaveLower(d, inDifference, hn::Zero(d)));
    const auto high = hn::BitCast(words, hn::InterleaveUpper(d, inDifference, hn::Zero(d)));
    auto other = hn::Zero(sums);
    auto sum = hn::ReorderWidenMulAccumulate(sums, low, low, hn::BitCast(sums, ioSum), other);
    sum = hn::ReorderWidenMulAccumulate(sums, high, high, sum, other);
    ioSum = hn::BitCast(PixelTag<std::uint8_t>(), hn::Add(sum, other));
}

HWY_INLINE void AddSquares(Vector<std::uint16_t> inDifference, PixelVector<std::uint16_t>& ioSum)
{
    const hn::Repartition<std::uint32_t, Tag<std::uint16_t>> products;
    const PixelTag<std::uint16_t> sums;
    const auto pairs = hn::BitCast(products, inDifference);
    const auto even = hn::And(pairs, hn::Set(products, 0xFFFF));
    const auto odd = hn::ShiftRight<16>(pairs);
    const auto low = hn::Set(sums, 0xFFFFFFFF);
    for (const auto product : {hn::Mul(even, even), hn::Mul(odd, odd)}) {
        const auto two = hn::BitCast(sums, product);
        ioSum = hn::Add(ioSum, hn::Add(hn::And(two, low), hn::ShiftRight<32>(two)));
    }
}

/// 64 + 0.75 d of 255, to the nearest, halves up: the mean of d and d / 2, rounded up, is 0.75 d rounded so.
HWY_INLINE Vector<std::uint8_t> Lifted(Vector<std::uint8_t> inDifference)
{
    const Tag<std::uint8_t> d;
    const hn::Repartition<std::uint16_t, Tag<std::uint8_t>> words;
    // What a neighbour shifts into the upper bit does not matter: 128 there adds the 64.
    const auto half = hn::BitCast(d, hn::ShiftRight<1>(hn::BitCast(words, inDifference)));
    return hn::AverageRound(inDifference, hn::Or(half, hn::Set(d, 128)));
}
HWY_INLINE Vector<std::uint16_t> Lifted(Vector<std::uint16_t> inDifference)
{
    const Tag<std::uint16_t> d;
    const auto mean = hn::AverageRound(inDifference, hn::ShiftRight<1>(inDifference));
    return hn::SaturatedAdd(mean, hn::Set(d, 64 * 257));
}

template <class V>
HWY_INLINE bool IsZero(V inVector)
{
    const hn::DFromV<V> d;
    return hn::AllTrue(d, hn::Eq(inVector, hn::Zero(d)));
}

template <typename T, bool kAlphaFirst>
HWY_INLINE PixelVector<T> AlphaMask()
{
    const PixelTag<T> pixels;
    if constexpr (sizeof(T) == 1) {
        return hn::Set(pixels, kAlphaFirst ? 0x000000FFu : 0xFF000000u);
    } else {
        return hn::Set(pixels, 0xFFFF000000000000u);
    }
}

/// Makes pixels of which only alpha is left grey. Colours' own alpha is opaque anyway.
template <typename T, bool kAlphaFirst>
HWY_INLINE PixelVector<T> GreyOfAlpha(PixelVector<T> inPainted)
{
    const auto alpha = hn::And(inPainted, AlphaMask<T, kAlphaFirst>());
    constexpr int kBits = sizeof(T) * 8;
    const auto two = hn::Or(alpha, kAlphaFirst ? hn::ShiftLeft<kBits>(alpha) : hn::ShiftRight<kBits>(alpha));
    const auto four =
        hn::Or(two, kAlphaFirst ? hn::ShiftLeft<kBits * 2>(two) : hn::ShiftRight<kBits * 2>(two));
    return hn::IfThenElse(hn::Eq(alpha, inPainted), four, inPainted); // 0 in both is black either way
}

template <typename T>
HWY_INLINE Vector<T> DifferenceAt(const T* inFirst, const T* inSecond)
{
    const Tag<T> d;
    const auto a = hn::LoadU(d, inFirst);
    const auto b = hn::LoadU(d, inSecond);
    return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

/// What is summed up over a row, each lane for itself. Borrowed.
template <typename T>
struct Totals {
    Vector<T>& largest;
    PixelVector<T>& equal; // pixels
    PixelVector<T>& squares;
};

template <typename T>
HWY_INLINE void AddUp(Vector<T> inDifference, Vector<T> inExcess, const Totals<T>& ioTotals)
{
    const PixelTag<T> pixels;
    ioTotals.largest = hn::Max(ioTotals.largest, inDifference);
    AddSquares(inDifference, ioTotals.squares);
    const auto equal = hn::Eq(hn::BitCast(pixels, inExcess), hn::Zero(pixels));
    ioTotals.equal = hn::Sub(ioTotals.equal, hn::VecFromMask(pixels, equal));
}

template <typename T, bool kAlphaFirst, Painting kPainting, bool kAlphaToo>
HWY_INLINE void Paint(Vector<T> inDifference, Vector<T> inExcess, T* outPainted)
{
    const Tag<T> d;
    const PixelTag<T> pixels;
    const auto within = hn::VecFromMask(d, hn::Eq(inExcess, hn::Zero(d)));
    auto painted = hn::BitCast(pixels, hn::AndNot(within, Lifted(inDifference)));
    if constexpr (kAlphaToo) {
        painted = GreyOfAlpha<T, kAlphaFirst>(painted);
    }
    Put<kPainting>(hn::BitCast(d, hn::Or(painted, AlphaMask<T, kAlphaFirst>())), d, outPainted);
}

template <typename T, bool kAlphaFirst, Painting kPainting>
HWY_INLINE void PaintBlack(T* outPainted)
{
    const Tag<T> d;
    const auto black = hn::BitCast(d, AlphaMask<T, kAlphaFirst>());
    for (std::size_t vector = 0; vector < kStepVectors; ++vector) {
        Put<kPainting>(black, d, outPainted + vector * hn::Lanes(d));
    }
}

enum class Step { kEqual, kWithin, kDiffers };

template <typename T, bool kAlphaFirst, Painting kPainting>
HWY_INLINE Step CompareStep(const T* inFirst, const T* inSecond, Vector<T> inTolerance, T* outPainted,
                            const Totals<T>& ioTotals)
{
    const Tag<T> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto apart = [&](std::size_t inAt) HWY_ATTR {
        return hn::Xor(hn::LoadU(d, inFirst + inAt), hn::LoadU(d, inSecond + inAt));
    };
    const auto any = hn::Or(hn::Or(apart(0), apart(lanes)), hn::Or(apart(2 * lanes), apart(3 * lanes)));
    if (IsZero(any)) {
        if constexpr (kPainting != Painting::kNone) {
            PaintBlack<T, kAlphaFirst, kPainting>(outPainted);
        }
        return Step::kEqual;
    }
    const auto d0 = DifferenceAt(inFirst, inSecond);
    const auto d1 = DifferenceAt(inFirst + lanes, inSecond + lanes);
    const auto d2 = DifferenceAt(inFirst + 2 * lanes, inSecond + 2 * lanes);
    const auto d3 = DifferenceAt(inFirst + 3 * lanes, inSecond + 3 * lanes);
    const auto e0 = hn::SaturatedSub(d0, inTolerance);
    const auto e1 = hn::SaturatedSub(d1, inTolerance);
    const auto e2 = hn::SaturatedSub(d2, inTolerance);
    const auto e3 = hn::SaturatedSub(d3, inTolerance);
    AddUp(d0, e0, ioTotals);
    AddUp(d1, e1, ioTotals);
    AddUp(d2, e2, ioTotals);
    AddUp(d3, e3, ioTotals);
    const auto excess = hn::Or(hn::Or(e0, e1), hn::Or(e2, e3));
    if constexpr (kPainting != Painting::kNone) {
        const auto paint = [&](auto inAlphaToo) HWY_ATTR {
            constexpr bool kAlphaToo = decltype(inAlphaToo)::value;
            Paint<T, kAlphaFirst, kPainting, kAlphaToo>(d0, e0, outPainted);
            Paint<T, kAlphaFirst, kPainting, kAlphaToo>(d1, e1, outPainted + lanes);
            Paint<T, kAlphaFirst, kPainting, kAlphaToo>(d2, e2, outPainted + 2 * lanes);
            Paint<T, kAlphaFirst, kPainting, kAlphaToo>(d3, e3, outPainted + 3 * lanes);
        };
        if (HWY_LIKELY(IsZero(hn::And(excess, hn::BitCast(d, AlphaMask<T, kAlphaFirst>()))))) {
            paint(std::false_type());
        } else {
            paint(std::true_type());
        }
    }
    return IsZero(excess) ? Step::kWithin : Step::kDiffers;
}

template <typename T>
bool PixelDiffers(const T* inFirst, const T* inSecond, std::uint32_t inTolerance)
{
    if (std::memcmp(inFirst, inSecond, 4 * sizeof(T)) == 0) {
        return false; // as most are
    }
    for (int channel = 0; channel < 4; ++channel) {
        const std::uint32_t a = inFirst[channel];
        const std::uint32_t b = inSecond[channel];
        if ((a > b ? a - b : b - a) > inTolerance) {
            return true;
        }
    }
    return false;
}

/// Whether something was painted there: no pixel that differs becomes black.
template <typename T, bool kAlphaFirst>
bool PixelIsPainted(const T* inPainted)
{
    const T* const color = inPainted + (kAlphaFirst ? 1 : 0);
    return (color[0] | color[1] | color[2]) != 0;
}

/// From the steps that hold the first and the last differing pixel to these.
/// @param inDiffers  says so of a pixel.
template <typename Differs>
void FindEnds(std::uint32_t inPixels, std::uint32_t inStepPixels, const Differs& inDiffers,
              RowDifference& ioResult)
{
    while (!inDiffers(ioResult.first)) {
        ++ioResult.first;
    }
    ioResult.last = std::min(ioResult.last + inStepPixels, inPixels) - 1;
    while (!inDiffers(ioResult.last)) {
        --ioResult.last;
    }
}

template <class D>
std::uint64_t SumOf(D inTag, hn::Vec<D> inVector)
{
    HWY_ALIGN hn::TFromD<D> lanes[hn::MaxLanes(D())];
    hn::Store(inVector, inTag, lanes);
    return std::accumulate(lanes, lanes + hn::Lanes(inTag), std::uint64_t{0});
}
template <class D>
hn::TFromD<D> LargestOf(D inTag, hn::Vec<D> inVector)
{
    HWY_ALIGN hn::TFromD<D> lanes[hn::MaxLanes(D())];
    hn::Store(inVector, inTag, lanes);
    hn::TFromD<D> largest = 0;
    for (std::size_t lane = 0; lane < hn::Lanes(inTag); ++lane) {
        largest = std::max(largest, lanes[lane]); // without branches, which would be foretold badly
    }
    return largest;
}

template <typename T, bool kAlphaFirst, Painting kPainting>
RowDifference CompareRow(const T* inFirst, const T* inSecond, std::uint32_t inPixels,
                         std::uint32_t inTolerance, T* outPainted)
{
    const Tag<T> d;
    const PixelTag<T> pixelTag;
    const auto stepPixels = static_cast<std::uint32_t>(kStepVectors * hn::Lanes(d) / 4);
    const auto tolerance = hn::Set(d, static_cast<T>(inTolerance));
    auto largest = hn::Zero(d);
    auto equal = hn::Zero(pixelTag);
    auto squares = hn::Zero(pixelTag);
    const Totals<T> totals{largest, equal, squares};
    std::uint32_t looked = 0; // pixels that were not plainly equal
    bool any = false;
    RowDifference result;
    const auto note = [&](Step inStep, std::uint32_t inPixel) {
        looked += inStep == Step::kEqual ? 0 : stepPixels;
        if (inStep == Step::kDiffers) {
            result.first = any ? result.first : inPixel;
            result.last = inPixel;
            any = true;
        }
    };
    std::uint32_t pixel = 0;
    for (; pixel + stepPixels <= inPixels; pixel += stepPixels) {
        const std::size_t at = std::size_t{pixel} * 4;
        for (std::size_t ahead = 0; ahead < kStepVectors * hn::Lanes(d) * sizeof(T); ahead += kLineBytes) {
            Prefetch(reinterpret_cast<const std::byte*>(inFirst + at) + ahead);
            Prefetch(reinterpret_cast<const std::byte*>(inSecond + at) + ahead);
        }
        note(CompareStep<T, kAlphaFirst, kPainting>(inFirst + at, inSecond + at, tolerance,
                                                    kPainting == Painting::kNone ? nullptr : outPainted + at,
                                                    totals),
             pixel);
    }
    if (pixel < inPixels) {
        // What is missing to a step is equal.
        constexpr std::size_t kMost = kStepVectors * hn::MaxLanes(Tag<T>());
        HWY_ALIGN T tails[3][kMost] = {};
        const std::size_t at = std::size_t{pixel} * 4;
        const std::size_t bytes = std::size_t{inPixels - pixel} * 4 * sizeof(T);
        std::memcpy(tails[0], inFirst + at, bytes);
        std::memcpy(tails[1], inSecond + at, bytes);
        constexpr Painting kTail = kPainting == Painting::kNone ? Painting::kNone : Painting::kCached;
        note(CompareStep<T, kAlphaFirst, kTail>(tails[0], tails[1], tolerance, tails[2], totals), pixel);
        if constexpr (kPainting != Painting::kNone) {
            std::memcpy(outPainted + at, tails[2], bytes);
        }
    }
    if (looked == 0) {
        return result;
    }
    result.squares = SumOf(pixelTag, squares);
    result.pixels = looked - static_cast<std::uint32_t>(SumOf(pixelTag, equal));
    result.largest = static_cast<float>(LargestOf(d, largest));
    if (any) {
        FindEnds(
            inPixels, stepPixels,
            [&](std::uint32_t inPixel) {
                const std::size_t at = std::size_t{inPixel} * 4;
                if constexpr (kPainting != Painting::kNone) {
                    return PixelIsPainted<T, kAlphaFirst>(outPainted + at); // perhaps in place of the second
                } else {
                    return PixelDiffers(inFirst + at, inSecond + at, inTolerance);
                }
            },
            result);
    }
    return result;
}

template <typename T, bool kAlphaFirst>
RowDifference CompareRowTo(const T* inFirst, const T* inSecond, std::uint32_t inPixels,
                           std::uint32_t inTolerance, T* outPainted, Painting inPainting)
{
    switch (inPainting) {
    case Painting::kNone:
        return CompareRow<T, kAlphaFirst, Painting::kNone>(inFirst, inSecond, inPixels, inTolerance, nullptr);
    case Painting::kCached:
        break;
    case Painting::kStreamed:
        return CompareRow<T, kAlphaFirst, Painting::kStreamed>(inFirst, inSecond, inPixels, inTolerance,
                                                               outPainted);
    }
    return CompareRow<T, kAlphaFirst, Painting::kCached>(inFirst, inSecond, inPixels, inTolerance,
                                                         outPainted);
}

RowDifference OfBGRA8(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t n, std::uint32_t tolerance,
                      std::uint8_t* out, Painting painting)
{
    return CompareRowTo<std::uint8_t, false>(a, b, n, tolerance, out, painting);
}
RowDifference OfARGB8(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t n, std::uint32_t tolerance,
                      std::uint8_t* out, Painting painting)
{
    return CompareRowTo<std::uint8_t, true>(a, b, n, tolerance, out, painting);
}
RowDifference OfBGRA16(const std::uint16_t* a, const std::uint16_t* b, std::uint32_t n,
                       std::uint32_t tolerance, std::uint16_t* out, Painting painting)
{
    return CompareRowTo<std::uint16_t, false>(a, b, n, tolerance, out, painting);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(OfBGRA8);
HWY_EXPORT(OfARGB8);
HWY_EXPORT(OfBGRA16);

} // namespace

void FinishStreaming()
{
    hwy::FlushStream();
}

RowDifference CompareRow8(const RowPair& inRows, std::uint32_t inTolerance, bool inAlphaFirst,
                          std::byte* outPainted, Painting inPainting)
{
    const auto* const a = reinterpret_cast<const std::uint8_t*>(inRows.first);
    const auto* const b = reinterpret_cast<const std::uint8_t*>(inRows.second);
    auto* const out = reinterpret_cast<std::uint8_t*>(outPainted);
    return inAlphaFirst ? HWY_DYNAMIC_DISPATCH(OfARGB8)(a, b, inRows.pixels, inTolerance, out, inPainting)
                        : HWY_DYNAMIC_DISPATCH(OfBGRA8)(a, b, inRows.pixels, inTolerance, out, inPainting);
}

RowDifference CompareRow16(const RowPair& inRows, std::uint32_t inTolerance, std::byte* outPainted,
                           Painting inPainting)
{
    return HWY_DYNAMIC_DISPATCH(OfBGRA16)(reinterpret_cast<const std::uint16_t*>(inRows.first),
                                          reinterpret_cast<const std::uint16_t*>(inRows.second),
                                          inRows.pixels, inTolerance,
                                          reinterpret_cast<std::uint16_t*>(outPainted), inPainting);
}

} // namespace VF
#endif
