#include "FilteredRows.h"

#include <bit>
#include <cstdlib>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/FilteredRows.cpp"
#include <hwy/foreach_target.h>
// Has to follow.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

int Predict(int inFilter, int inLeft, int inUp, int inUpLeft)
{
    const int toLeft = std::abs(inUp - inUpLeft);
    const int toUp = std::abs(inLeft - inUpLeft);
    const int toUpLeft = std::abs(inLeft + inUp - 2 * inUpLeft);
    switch (inFilter) {
    case 1:
        return inLeft;
    case 2:
        return inUp;
    case 3:
        return (inLeft + inUp) / 2;
    case 4:
        return toLeft <= toUp && toLeft <= toUpLeft ? inLeft : toUp <= toUpLeft ? inUp : inUpLeft;
    default:
        return 0;
    }
}

void Unfilter(const FilteredForm& inForm, int inFilter, const std::uint8_t* inSource,
              const std::uint8_t* inAbove, std::uint8_t* outPixels, std::uint32_t inWidth)
{
    for (std::size_t byte = 0; byte < inForm.pixelBytes; ++byte) {
        const std::uint8_t from = inForm.order[byte];
        int left = 0;
        int upLeft = 0;
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            const std::size_t at = std::size_t{x} * inForm.pixelBytes + byte;
            if (from & 0x80) {
                outPixels[at] = 0xFF;
                continue;
            }
            const int up = inAbove[at];
            left =
                (inSource[std::size_t{x} * inForm.sourceBytes + from] + Predict(inFilter, left, up, upLeft)) &
                0xFF;
            upLeft = up;
            outPixels[at] = static_cast<std::uint8_t>(left);
        }
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::FixedTag<std::uint8_t, 16>;
using HalfBytes = hn::FixedTag<std::uint8_t, 8>;
using Words = hn::FixedTag<std::int16_t, 8>;
using ByteVector = hn::Vec<Bytes>;
using WordVector = hn::Vec<Words>;

/// 16 bytes of pixels: four, or two.
struct Group {
    const Bytes bytes;
    ByteVector order;
    ByteVector opaque;
    std::size_t step; // in the source

    HWY_ATTR Group(const FilteredForm& inForm)
    {
        std::uint8_t from[16];
        std::uint8_t set[16];
        for (std::size_t byte = 0; byte < 16; ++byte) {
            const std::uint8_t of = inForm.order[byte % inForm.pixelBytes];
            set[byte] = of & 0x80 ? 0xFF : 0;
            from[byte] = of & 0x80
                             ? std::uint8_t{0x80}
                             : static_cast<std::uint8_t>(of + byte / inForm.pixelBytes * inForm.sourceBytes);
        }
        order = hn::LoadU(bytes, from);
        opaque = hn::LoadU(bytes, set);
        step = 16u / inForm.pixelBytes * inForm.sourceBytes;
    }
    HWY_ATTR ByteVector Load(const std::uint8_t* inSource) const
    {
        return hn::TableLookupBytesOr0(hn::LoadU(bytes, inSource), order);
    }
    HWY_ATTR void Store(ByteVector inPixels, std::uint8_t* outPixels) const
    {
        hn::StoreU(hn::Or(inPixels, opaque), bytes, outPixels);
    }
};

template <int kPixelBytes>
HWY_INLINE ByteVector RepeatLastPixel(ByteVector inPixels)
{
    if constexpr (kPixelBytes == 4) {
        const hn::FixedTag<std::uint32_t, 4> pixels;
        return hn::BitCast(Bytes(), hn::Broadcast<3>(hn::BitCast(pixels, inPixels)));
    } else {
        const hn::FixedTag<std::uint64_t, 2> pixels;
        return hn::BitCast(Bytes(), hn::Broadcast<1>(hn::BitCast(pixels, inPixels)));
    }
}

template <int kPixelBytes>
void FromLeft(const Group& inGroup, const std::uint8_t* inSource, std::uint8_t* outPixels,
              std::size_t inGroups)
{
    ByteVector left = hn::Zero(Bytes());
    for (; inGroups > 0; --inGroups, inSource += inGroup.step, outPixels += 16) {
        ByteVector sum = inGroup.Load(inSource);
        if constexpr (kPixelBytes == 4) {
            sum = hn::Add(sum, hn::ShiftLeftBytes<4>(Bytes(), sum));
        }
        sum = hn::Add(sum, hn::ShiftLeftBytes<8>(Bytes(), sum));
        sum = hn::Add(sum, left);
        left = RepeatLastPixel<kPixelBytes>(sum);
        inGroup.Store(sum, outPixels);
    }
}

/// Puts the lowest pixels of several vectors side by side.
template <int kPixelBytes>
HWY_INLINE ByteVector Gather(const ByteVector* inPixels)
{
    if constexpr (kPixelBytes == 4) {
        const hn::FixedTag<std::uint32_t, 4> pixels;
        const hn::FixedTag<std::uint64_t, 2> pairs;
        const auto low =
            hn::InterleaveLower(pixels, hn::BitCast(pixels, inPixels[0]), hn::BitCast(pixels, inPixels[1]));
        const auto high =
            hn::InterleaveLower(pixels, hn::BitCast(pixels, inPixels[2]), hn::BitCast(pixels, inPixels[3]));
        return hn::BitCast(Bytes(),
                           hn::InterleaveLower(pairs, hn::BitCast(pairs, low), hn::BitCast(pairs, high)));
    } else {
        const hn::FixedTag<std::uint64_t, 2> pixels;
        return hn::BitCast(Bytes(), hn::InterleaveLower(pixels, hn::BitCast(pixels, inPixels[0]),
                                                        hn::BitCast(pixels, inPixels[1])));
    }
}

template <int kPixelBytes>
void FromAverage(const Group& inGroup, const std::uint8_t* inSource, const std::uint8_t* inAbove,
                 std::uint8_t* outPixels, std::size_t inGroups)
{
    constexpr int kPixels = 16 / kPixelBytes;
    // Averages are rounded up there; those of the complements are then rounded down, as they should be.
    ByteVector left = hn::Not(hn::Zero(Bytes()));
    for (; inGroups > 0; --inGroups, inSource += inGroup.step, inAbove += 16, outPixels += 16) {
        ByteVector source = inGroup.Load(inSource);
        ByteVector above = hn::Not(hn::LoadU(Bytes(), inAbove));
        ByteVector results[kPixels];
        for (int pixel = 0; pixel < kPixels; ++pixel) {
            left = hn::Sub(hn::AverageRound(left, above), source);
            results[pixel] = left;
            source = hn::ShiftRightBytes<kPixelBytes>(Bytes(), source);
            above = hn::ShiftRightBytes<kPixelBytes>(Bytes(), above);
        }
        inGroup.Store(hn::Not(Gather<kPixelBytes>(results)), outPixels);
    }
}

HWY_INLINE WordVector Widened(ByteVector inBytes)
{
    return hn::PromoteTo(Words(), hn::LowerHalf(HalfBytes(), inBytes));
}

template <int kPixelBytes>
void FromPaeth(const Group& inGroup, const std::uint8_t* inSource, const std::uint8_t* inAbove,
               std::uint8_t* outPixels, std::size_t inGroups)
{
    constexpr int kPixels = 16 / kPixelBytes;
    const WordVector low = hn::Set(Words(), 0xFF);
    WordVector left = hn::Zero(Words());
    WordVector upLeft = left;
    for (; inGroups > 0; --inGroups, inSource += inGroup.step, inAbove += 16, outPixels += 16) {
        ByteVector source = inGroup.Load(inSource);
        ByteVector above = hn::LoadU(Bytes(), inAbove);
        ByteVector results[kPixels];
        for (int pixel = 0; pixel < kPixels; ++pixel) {
            const WordVector up = Widened(above);
            const WordVector alongUp = hn::Sub(up, upLeft);
            const WordVector alongLeft = hn::Sub(left, upLeft);
            const WordVector toLeft = hn::Abs(alongUp);
            const WordVector toUp = hn::Abs(alongLeft);
            const WordVector toUpLeft = hn::Abs(hn::Add(alongUp, alongLeft));
            const WordVector least = hn::Min(hn::Min(toLeft, toUp), toUpLeft);
            const WordVector nearest =
                hn::IfThenElse(hn::Eq(least, toLeft), left, hn::IfThenElse(hn::Eq(least, toUp), up, upLeft));
            left = hn::And(hn::Add(nearest, Widened(source)), low);
            upLeft = up;
            results[pixel] = hn::BitCast(Bytes(), left);
            source = hn::ShiftRightBytes<kPixelBytes>(Bytes(), source);
            above = hn::ShiftRightBytes<kPixelBytes>(Bytes(), above);
        }
        if constexpr (kPixelBytes == 4) {
            const hn::FixedTag<std::uint64_t, 2> halves;
            for (int pair = 0; pair < 2; ++pair) {
                results[pair] =
                    hn::BitCast(Bytes(), hn::InterleaveLower(halves, hn::BitCast(halves, results[pair * 2]),
                                                             hn::BitCast(halves, results[pair * 2 + 1])));
            }
        }
        const HalfBytes half;
        inGroup.Store(hn::Combine(Bytes(), hn::DemoteTo(half, hn::BitCast(Words(), results[1])),
                                  hn::DemoteTo(half, hn::BitCast(Words(), results[0]))),
                      outPixels);
    }
}

template <int kPixelBytes>
void UnfilterPixels(const Group& inGroup, int inFilter, const std::uint8_t* inSource,
                    const std::uint8_t* inAbove, std::uint8_t* outPixels, std::size_t inGroups)
{
    switch (inFilter) {
    case 1:
        FromLeft<kPixelBytes>(inGroup, inSource, outPixels, inGroups);
        break;
    case 2:
        for (std::size_t group = 0; group < inGroups; ++group) {
            inGroup.Store(hn::Add(inGroup.Load(inSource + group * inGroup.step),
                                  hn::LoadU(Bytes(), inAbove + group * 16)),
                          outPixels + group * 16);
        }
        break;
    case 3:
        FromAverage<kPixelBytes>(inGroup, inSource, inAbove, outPixels, inGroups);
        break;
    case 4:
        FromPaeth<kPixelBytes>(inGroup, inSource, inAbove, outPixels, inGroups);
        break;
    default:
        for (std::size_t group = 0; group < inGroups; ++group) {
            inGroup.Store(inGroup.Load(inSource + group * inGroup.step), outPixels + group * 16);
        }
        break;
    }
}

void Unfilter(const FilteredForm& inForm, int inFilter, const std::uint8_t* inSource,
              const std::uint8_t* inAbove, std::uint8_t* outPixels, std::uint32_t inWidth)
{
    const Group group(inForm);
    const std::size_t groups = (std::size_t{inWidth} * inForm.pixelBytes + 15) / 16;
    if (inForm.pixelBytes == 4) {
        UnfilterPixels<4>(group, inFilter, inSource, inAbove, outPixels, groups);
    } else {
        UnfilterPixels<8>(group, inFilter, inSource, inAbove, outPixels, groups);
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

HWY_EXPORT(Unfilter);

} // namespace

FilteredForm FilteredFormOf(int inColorType, int inBitDepth)
{
    if (inBitDepth != 8 && inBitDepth != 16) {
        return {};
    }
    constexpr std::uint8_t kNone = 0x80;
    std::uint8_t channels = 0;
    std::uint8_t order[4]; // blue, green, red, alpha
    switch (inColorType) {
    case 0:
        channels = 1;
        std::memcpy(order, "\0\0\0\x80", 4);
        break;
    case 2:
        channels = 3;
        std::memcpy(order, "\2\1\0\x80", 4);
        break;
    case 4:
        channels = 2;
        std::memcpy(order, "\0\0\0\1", 4);
        break;
    case 6:
        channels = 4;
        std::memcpy(order, "\2\1\0\3", 4);
        break;
    default:
        return {};
    }
    FilteredForm form;
    const int bytes = inBitDepth / 8;
    form.sourceBytes = static_cast<std::uint8_t>(channels * bytes);
    form.pixelBytes = static_cast<std::uint8_t>(4 * bytes);
    for (int byte = 0; byte < form.pixelBytes; ++byte) {
        const std::uint8_t channel = order[byte / bytes];
        // The file has the higher byte first.
        const int part =
            bytes == 2 && std::endian::native == std::endian::little ? 1 - byte % 2 : byte % bytes;
        form.order[byte] = channel & kNone ? kNone : static_cast<std::uint8_t>(channel * bytes + part);
    }
    return form;
}

void UnfilterRow(const FilteredForm& inForm, int inFilter, const std::uint8_t* inSource,
                 const std::byte* inAbove, std::byte* outPixels, std::uint32_t inWidth)
{
    HWY_DYNAMIC_DISPATCH(Unfilter)
    (inForm, inFilter, inSource, reinterpret_cast<const std::uint8_t*>(inAbove),
     reinterpret_cast<std::uint8_t*>(outPixels), inWidth);
}

} // namespace VF
#endif
