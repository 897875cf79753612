#include "PNGRows.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "png/PNGRows.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kStepVectors = 4;

/// T: a pixel.
template <typename T>
std::uint32_t Find(const T* inRow, std::uint32_t inPixels, T inBlack, std::uint32_t* outPixels)
{
    const hn::ScalableTag<T> d;
    const auto lanes = static_cast<std::uint32_t>(hn::Lanes(d));
    const auto black = hn::Set(d, inBlack);
    std::uint32_t found = 0;
    std::uint32_t pixel = 0;
    for (; pixel + kStepVectors * lanes <= inPixels; pixel += kStepVectors * lanes) {
        const T* const at = inRow + pixel;
        const auto apart = [&](std::size_t inVector)
                               HWY_ATTR { return hn::Xor(hn::LoadU(d, at + inVector * lanes), black); };
        const auto any = hn::Or(hn::Or(apart(0), apart(1)), hn::Or(apart(2), apart(3)));
        if (hn::AllTrue(d, hn::Eq(any, hn::Zero(d)))) {
            continue;
        }
        for (std::uint32_t vector = 0; vector < kStepVectors; ++vector) {
            std::uint8_t bytes[8] = {};
            hn::StoreMaskBits(d, hn::Ne(hn::LoadU(d, at + vector * lanes), black), bytes);
            for (unsigned bits = bytes[0]; bits != 0; bits &= bits - 1) {
                outPixels[found++] = pixel + vector * lanes + static_cast<unsigned>(std::countr_zero(bits));
            }
        }
    }
    for (; pixel < inPixels; ++pixel) {
        if (inRow[pixel] != inBlack) {
            outPixels[found++] = pixel;
        }
    }
    return found;
}

template <bool kAlphaFirst>
void Pack8(const std::uint8_t* inRow, std::uint32_t inPixels, std::uint8_t* outRow)
{
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t pixel = 0;
    for (; pixel + lanes <= inPixels; pixel += lanes) {
        hn::Vec<decltype(d)> v0, v1, v2, v3;
        hn::LoadInterleaved4(d, inRow + pixel * 4, v0, v1, v2, v3);
        if constexpr (kAlphaFirst) {
            hn::StoreInterleaved3(v1, v2, v3, d, outRow + pixel * 3);
        } else {
            hn::StoreInterleaved3(v2, v1, v0, d, outRow + pixel * 3);
        }
    }
    for (; pixel < inPixels; ++pixel) {
        const std::uint8_t* const in = inRow + pixel * 4;
        outRow[pixel * 3] = in[kAlphaFirst ? 1 : 2];
        outRow[pixel * 3 + 1] = in[kAlphaFirst ? 2 : 1];
        outRow[pixel * 3 + 2] = in[kAlphaFirst ? 3 : 0];
    }
}

/// Words as PNG has them, the upper byte first.
template <class D, class V>
HWY_INLINE V BigEndian(D, V inWords)
{
    return hn::Or(hn::ShiftLeft<8>(inWords), hn::ShiftRight<8>(inWords));
}

void Pack16(const std::uint16_t* inRow, std::uint32_t inPixels, std::uint16_t* outRow)
{
    const hn::ScalableTag<std::uint16_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t pixel = 0;
    for (; pixel + lanes <= inPixels; pixel += lanes) {
        hn::Vec<decltype(d)> blue, green, red, alpha;
        hn::LoadInterleaved4(d, inRow + pixel * 4, blue, green, red, alpha);
        hn::StoreInterleaved3(BigEndian(d, red), BigEndian(d, green), BigEndian(d, blue), d,
                              outRow + pixel * 3);
    }
    for (; pixel < inPixels; ++pixel) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const unsigned word = inRow[pixel * 4 + 2 - channel];
            outRow[pixel * 3 + channel] = static_cast<std::uint16_t>(word << 8 | word >> 8);
        }
    }
}

void Subtract(const std::uint8_t* inFrom, const std::uint8_t* inWhat, std::size_t inBytes, std::uint8_t* out)
{
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t at = 0;
    for (; at + lanes <= inBytes; at += lanes) {
        hn::StoreU(hn::Sub(hn::LoadU(d, inFrom + at), hn::LoadU(d, inWhat + at)), d, out + at);
    }
    for (; at < inBytes; ++at) {
        out[at] = static_cast<std::uint8_t>(inFrom[at] - inWhat[at]);
    }
}

std::uint64_t SumOfMagnitudes(const std::uint8_t* inRow, std::size_t inBytes)
{
    const hn::ScalableTag<std::uint8_t> d;
    const hn::Repartition<std::uint64_t, decltype(d)> sums;
    const std::size_t lanes = hn::Lanes(d);
    auto sum = hn::Zero(sums);
    std::size_t at = 0;
    for (; at + lanes <= inBytes; at += lanes) {
        const auto bytes = hn::LoadU(d, inRow + at);
        sum = hn::Add(sum, hn::SumsOf8(hn::Min(bytes, hn::Sub(hn::Zero(d), bytes))));
    }
    HWY_ALIGN std::uint64_t ofLanes[hn::MaxLanes(decltype(sums)())];
    hn::Store(sum, sums, ofLanes);
    std::uint64_t total = 0;
    for (std::size_t lane = 0; lane < hn::Lanes(sums); ++lane) {
        total += ofLanes[lane];
    }
    for (; at < inBytes; ++at) {
        total += std::min<unsigned>(inRow[at], 256u - inRow[at]);
    }
    return total;
}

std::uint32_t Find8(const std::uint32_t* in, std::uint32_t n, std::uint32_t black, std::uint32_t* out)
{
    return Find(in, n, black, out);
}
std::uint32_t Find16(const std::uint64_t* in, std::uint32_t n, std::uint64_t black, std::uint32_t* out)
{
    return Find(in, n, black, out);
}
void PackBGRA8(const std::uint8_t* in, std::uint32_t n, std::uint8_t* out)
{
    Pack8<false>(in, n, out);
}
void PackARGB8(const std::uint8_t* in, std::uint32_t n, std::uint8_t* out)
{
    Pack8<true>(in, n, out);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(Find8);
HWY_EXPORT(Find16);
HWY_EXPORT(PackBGRA8);
HWY_EXPORT(PackARGB8);
HWY_EXPORT(Pack16);
HWY_EXPORT(Subtract);
HWY_EXPORT(SumOfMagnitudes);

const std::uint8_t* Bytes(const std::byte* inBytes)
{
    return reinterpret_cast<const std::uint8_t*>(inBytes);
}
std::uint8_t* Bytes(std::byte* inBytes)
{
    return reinterpret_cast<std::uint8_t*>(inBytes);
}

} // namespace

std::uint32_t FindPixels(const std::byte* inRow, std::uint32_t inPixels, bool inAlphaFirst, bool inTwoBytes,
                         std::uint32_t* outPixels)
{
    if (inTwoBytes) {
        constexpr std::uint16_t kBlack[4] = {0, 0, 0, 0xFFFF};
        return HWY_DYNAMIC_DISPATCH(Find16)(reinterpret_cast<const std::uint64_t*>(inRow), inPixels,
                                            std::bit_cast<std::uint64_t>(kBlack), outPixels);
    }
    constexpr std::uint8_t kBlack[2][4] = {{0, 0, 0, 0xFF}, {0xFF, 0, 0, 0}};
    std::uint32_t black;
    std::memcpy(&black, kBlack[inAlphaFirst ? 1 : 0], sizeof(black));
    return HWY_DYNAMIC_DISPATCH(Find8)(reinterpret_cast<const std::uint32_t*>(inRow), inPixels, black,
                                       outPixels);
}

void PackRGB(const std::byte* inRow, std::uint32_t inPixels, bool inAlphaFirst, bool inTwoBytes,
             std::byte* outRow)
{
    if (inTwoBytes) {
        HWY_DYNAMIC_DISPATCH(Pack16)
        (reinterpret_cast<const std::uint16_t*>(inRow), inPixels, reinterpret_cast<std::uint16_t*>(outRow));
    } else if (inAlphaFirst) {
        HWY_DYNAMIC_DISPATCH(PackARGB8)(Bytes(inRow), inPixels, Bytes(outRow));
    } else {
        HWY_DYNAMIC_DISPATCH(PackBGRA8)(Bytes(inRow), inPixels, Bytes(outRow));
    }
}

void FilterSub(const std::byte* inRow, std::size_t inBytes, std::size_t inPixelBytes, std::byte* outRow)
{
    std::memcpy(outRow, inRow, inPixelBytes);
    HWY_DYNAMIC_DISPATCH(Subtract)
    (Bytes(inRow) + inPixelBytes, Bytes(inRow), inBytes - inPixelBytes, Bytes(outRow) + inPixelBytes);
}

void FilterUp(const std::byte* inRow, const std::byte* inAbove, std::size_t inBytes, std::byte* outRow)
{
    HWY_DYNAMIC_DISPATCH(Subtract)(Bytes(inRow), Bytes(inAbove), inBytes, Bytes(outRow));
}

std::uint64_t Magnitude(const std::byte* inRow, std::size_t inBytes)
{
    return HWY_DYNAMIC_DISPATCH(SumOfMagnitudes)(Bytes(inRow), inBytes);
}

} // namespace VF
#endif
