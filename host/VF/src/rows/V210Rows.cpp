#include "V210Rows.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/V210Rows.cpp"
#include <hwy/foreach_target.h>
// Has to follow.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

// One group is four words of 32 bits, which hold from the lowest bits
//   Cb0 Y0 Cr0 | Y1 Cb1 Y2 | Cr1 Y3 Cb2 | Y4 Cr2 Y5
#if HWY_TARGET == HWY_SCALAR

void Unpack(const std::uint8_t* inGroups, std::size_t inCount, std::uint16_t* outY, std::uint16_t* outCb,
            std::uint16_t* outCr)
{
    for (std::size_t group = 0; group < inCount; ++group) {
        std::uint32_t words[4];
        std::memcpy(words, inGroups + group * kV210GroupBytes, sizeof(words));
        std::uint16_t codes[12];
        for (int code = 0; code < 12; ++code) {
            codes[code] = words[code / 3] >> code % 3 * 10 & 0x3FF;
        }
        for (int pixel = 0; pixel < 6; ++pixel) {
            *outY++ = codes[pixel * 2 + 1];
        }
        for (int pair = 0; pair < 3; ++pair) {
            *outCb++ = codes[pair * 4];
            *outCr++ = codes[pair * 4 + 2];
        }
    }
}

void Pack(std::uint8_t* outGroups, std::size_t inCount, const std::uint16_t* inY, const std::uint16_t* inCb,
          const std::uint16_t* inCr)
{
    for (std::size_t group = 0; group < inCount; ++group) {
        std::uint32_t words[4] = {};
        for (int code = 0; code < 12; ++code) {
            const std::uint32_t sample = code % 2 ? *inY++ : code % 4 ? *inCr++ : *inCb++;
            words[code / 3] |= sample << code % 3 * 10;
        }
        std::memcpy(outGroups + group * kV210GroupBytes, words, sizeof(words));
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// One group is one register; so the low, middle and high thirds of the words are
//   low: Cb0 Y1 Cr1 Y4   middle: Y0 Cb1 Y3 Cr2   high: Cr0 Y2 Cb2 Y5
// Low and middle go together as 16-bit halves of one register; tables pick bytes, 0x80 gives 0.
constexpr std::uint8_t k_ = 0x80;
alignas(16) constexpr std::uint8_t kYFromLowMiddle[16] = {2,  3,  4,  5,  k_, k_, 10, 11,
                                                          12, 13, k_, k_, k_, k_, k_, k_};
alignas(16) constexpr std::uint8_t kYFromHigh[16] = {k_, k_, k_, k_, 4,  5,  k_, k_,
                                                     k_, k_, 12, 13, k_, k_, k_, k_};
alignas(16) constexpr std::uint8_t kCFromLowMiddle[16] = {0,  1,  6, 7, k_, k_, k_, k_,
                                                          k_, k_, 8, 9, 14, 15, k_, k_};
alignas(16) constexpr std::uint8_t kCFromHigh[16] = {k_, k_, k_, k_, 8,  9,  k_, k_,
                                                     0,  1,  k_, k_, k_, k_, k_, k_};

// The way back, from Y0..Y5 and from Cb0..Cb2 - Cr0..Cr2 - to the thirds as 32-bit words.
alignas(16) constexpr std::uint8_t kLowFromY[16] = {k_, k_, k_, k_, 2, 3, k_, k_,
                                                    k_, k_, k_, k_, 8, 9, k_, k_};
alignas(16) constexpr std::uint8_t kLowFromC[16] = {0,  1,  k_, k_, k_, k_, k_, k_,
                                                    10, 11, k_, k_, k_, k_, k_, k_};
alignas(16) constexpr std::uint8_t kMiddleFromY[16] = {0, 1, k_, k_, k_, k_, k_, k_,
                                                       6, 7, k_, k_, k_, k_, k_, k_};
alignas(16) constexpr std::uint8_t kMiddleFromC[16] = {k_, k_, k_, k_, 2,  3,  k_, k_,
                                                       k_, k_, k_, k_, 12, 13, k_, k_};
alignas(16) constexpr std::uint8_t kHighFromY[16] = {k_, k_, k_, k_, 4,  5,  k_, k_,
                                                     k_, k_, k_, k_, 10, 11, k_, k_};
alignas(16) constexpr std::uint8_t kHighFromC[16] = {8, 9, k_, k_, k_, k_, k_, k_,
                                                     4, 5, k_, k_, k_, k_, k_, k_};

using Bytes = hn::FixedTag<std::uint8_t, 16>;
using Halves = hn::FixedTag<std::uint16_t, 8>;
using Words = hn::FixedTag<std::uint32_t, 4>;
using HalvesOfOne = hn::FixedTag<std::uint16_t, 4>;

template <typename V>
HWY_INLINE hn::Vec<Bytes> Pick(V inA, const std::uint8_t* inTableA, V inB, const std::uint8_t* inTableB)
{
    const Bytes bytes;
    return hn::Or(hn::TableLookupBytesOr0(hn::BitCast(bytes, inA), hn::Load(bytes, inTableA)),
                  hn::TableLookupBytesOr0(hn::BitCast(bytes, inB), hn::Load(bytes, inTableB)));
}

void Unpack(const std::uint8_t* inGroups, std::size_t inCount, std::uint16_t* outY, std::uint16_t* outCb,
            std::uint16_t* outCr)
{
    const Words words;
    const Halves halves;
    const HalvesOfOne four;
    const auto mask = hn::Set(words, 0x3FFu);
    for (std::size_t group = 0; group < inCount; ++group) {
        const auto word = hn::BitCast(words, hn::LoadU(Bytes(), inGroups + group * kV210GroupBytes));
        const auto low = hn::And(word, mask);
        const auto middle = hn::And(hn::ShiftRight<10>(word), mask);
        const auto high = hn::And(hn::ShiftRight<20>(word), mask);
        const auto lowMiddle = hn::Or(low, hn::ShiftLeft<16>(middle));
        const auto y = hn::BitCast(halves, Pick(lowMiddle, kYFromLowMiddle, high, kYFromHigh));
        const auto c = hn::BitCast(halves, Pick(lowMiddle, kCFromLowMiddle, high, kCFromHigh));
        hn::StoreU(y, halves, outY + group * 6);
        hn::StoreU(hn::LowerHalf(four, c), four, outCb + group * 3);
        hn::StoreU(hn::UpperHalf(four, c), four, outCr + group * 3);
    }
}

void Pack(std::uint8_t* outGroups, std::size_t inCount, const std::uint16_t* inY, const std::uint16_t* inCb,
          const std::uint16_t* inCr)
{
    const Words words;
    const Halves halves;
    const HalvesOfOne four;
    for (std::size_t group = 0; group < inCount; ++group) {
        const auto y = hn::LoadU(halves, inY + group * 6);
        const auto c =
            hn::Combine(halves, hn::LoadU(four, inCr + group * 3), hn::LoadU(four, inCb + group * 3));
        const auto low = hn::BitCast(words, Pick(y, kLowFromY, c, kLowFromC));
        const auto middle = hn::BitCast(words, Pick(y, kMiddleFromY, c, kMiddleFromC));
        const auto high = hn::BitCast(words, Pick(y, kHighFromY, c, kHighFromC));
        const auto word = hn::Or(low, hn::Or(hn::ShiftLeft<10>(middle), hn::ShiftLeft<20>(high)));
        hn::StoreU(hn::BitCast(Bytes(), word), Bytes(), outGroups + group * kV210GroupBytes);
    }
}

#endif

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {
namespace {

HWY_EXPORT(Unpack);
HWY_EXPORT(Pack);

} // namespace

void UnpackV210Groups(const std::byte* inGroups, std::size_t inCount, std::uint16_t* outY,
                      std::uint16_t* outCb, std::uint16_t* outCr)
{
    HWY_DYNAMIC_DISPATCH(Unpack)
    (reinterpret_cast<const std::uint8_t*>(inGroups), inCount, outY, outCb, outCr);
}

void PackV210Groups(std::byte* outGroups, std::size_t inCount, const std::uint16_t* inY,
                    const std::uint16_t* inCb, const std::uint16_t* inCr)
{
    HWY_DYNAMIC_DISPATCH(Pack)(reinterpret_cast<std::uint8_t*>(outGroups), inCount, inY, inCb, inCr);
}

} // namespace VF
#endif
