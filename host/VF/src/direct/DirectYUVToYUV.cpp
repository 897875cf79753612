#include "DirectRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "direct/DirectYUVToYUV.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "DirectRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

/// Codes from the scale of a source to that of a destination.
struct CodeMap {
    CodeScale from;
    CodeScale to;

    /// Limited range is the same at both depths but for two bits more, and those are exact as integers.
    bool Widens() const { return IsLimited() && to.most > from.most; }
    bool Narrows() const { return IsLimited() && to.most < from.most; }
    bool Keeps() const { return to.lumaOffset == from.lumaOffset && to.lumaSpan == from.lumaSpan; }

private:
    bool IsLimited() const { return from.lumaOffset != 0 && to.lumaOffset != 0; }
};

/// For the rest: to = (from - fromOffset) * factor + toOffset, as 16-bit pairs of chroma and luma.
HWY_INLINE Floats Mapped(Floats inCode, double inFromOffset, double inFactor, double inToOffset,
                         double inMost)
{
    const FloatTag d;
    const Floats distance = hn::Mul(hn::Sub(inCode, hn::Set(d, static_cast<float>(inFromOffset))),
                                    hn::Set(d, static_cast<float>(inFactor)));
    const Floats rounded = hn::Add(distance, hn::Set(d, static_cast<float>(inToOffset + kRounding)));
    return hn::Min(hn::Max(rounded, hn::Set(d, kRounding)),
                   hn::Set(d, static_cast<float>(inMost + kRounding)));
}

HWY_INLINE void MapCodes(const CodeMap& inMap, std::uint16_t* ioCodes, std::size_t inCount)
{
    const ShortTag d;
    if (inMap.Keeps()) {
        return;
    }
    for (std::size_t i = 0; i < inCount; i += hn::Lanes(d)) {
        const Shorts codes = hn::Load(d, ioCodes + i);
        Shorts mapped;
        if (inMap.Widens()) {
            mapped = hn::ShiftLeft<2>(codes);
        } else if (inMap.Narrows()) {
            mapped = hn::Min(hn::ShiftRight<2>(hn::Add(codes, hn::Set(d, 2))), hn::Set(d, 255));
        } else {
            const Words pairs = hn::BitCast(WordTag(), codes);
            const Floats chroma =
                Mapped(ToFloats(LowShorts(pairs)), inMap.from.chromaOffset,
                       inMap.to.chromaSpan / inMap.from.chromaSpan, inMap.to.chromaOffset, inMap.to.most);
            const Floats luma =
                Mapped(ToFloats(hn::ShiftRight<16>(pairs)), inMap.from.lumaOffset,
                       inMap.to.lumaSpan / inMap.from.lumaSpan, inMap.to.lumaOffset, inMap.to.most);
            mapped =
                hn::BitCast(d, hn::Or(LowShorts(RoundedBits(chroma)), hn::ShiftLeft<16>(RoundedBits(luma))));
        }
        hn::Store(mapped, d, ioCodes + i);
    }
}

HWY_INLINE void UnpackUYVY(const std::uint8_t* inBytes, std::size_t inCount, std::uint16_t* outCodes)
{
    const ShortTag d;
    const hn::Rebind<std::uint8_t, ShortTag> bytes;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= inCount; i += hn::Lanes(d)) {
        hn::Store(hn::PromoteTo(d, hn::LoadU(bytes, inBytes + i)), d, outCodes + i);
    }
    for (; i < inCount; ++i) {
        outCodes[i] = inBytes[i];
    }
}

HWY_INLINE void PackUYVY(const std::uint16_t* inCodes, std::size_t inCount, std::uint8_t* outBytes)
{
    const ShortTag d;
    const hn::Rebind<std::int16_t, ShortTag> positive;
    const hn::Rebind<std::uint8_t, ShortTag> bytes;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= inCount; i += hn::Lanes(d)) {
        const auto codes = hn::BitCast(positive, hn::Load(d, inCodes + i));
        hn::StoreU(hn::DemoteTo(bytes, codes), bytes, outBytes + i);
    }
    for (; i < inCount; ++i) {
        outBytes[i] = static_cast<std::uint8_t>(inCodes[i]);
    }
}

/// Makes the codes of a chunk's last group of six pixels go on as its last pixel is.
HWY_INLINE void RepeatLastPixel(std::uint16_t* ioCodes, std::size_t inPixels)
{
    const std::size_t pair = (inPixels - 1) / 2 * 4;
    const std::uint16_t luma = ioCodes[pair + (inPixels % 2 ? 1 : 3)];
    for (std::size_t code = pair + 4; code < (inPixels + 5) / 6 * 12; code += 4) {
        ioCodes[code] = ioCodes[pair];
        ioCodes[code + 2] = ioCodes[pair + 2];
        ioCodes[code + 1] = ioCodes[code + 3] = luma;
    }
    ioCodes[pair + 3] = luma;
}

void YUVToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
              std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    const bool from10 = inSource.format == kiomediatypes::kPixelFormat_V210_422_10u;
    const bool to10 = inDestination.format == kiomediatypes::kPixelFormat_V210_422_10u;
    const CodeMap map{CodeScaleOf(inSource.format, inSource.colorSpace.range),
                      CodeScaleOf(inDestination.format, inDestination.colorSpace.range)};
    HWY_ALIGN std::uint16_t codes[kChunkCodes] = {};
    for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
        const auto* const source = reinterpret_cast<const std::uint8_t*>(inSource.Row(row));
        auto* const destination = reinterpret_cast<std::uint8_t*>(inDestination.Row(row));
        for (std::size_t x = 0; x < inSource.width; x += kChunkPixels) {
            const std::size_t pixels = inSource.width - x < kChunkPixels ? inSource.width - x : kChunkPixels;
            const std::size_t groups = (pixels + 5) / 6;
            const std::size_t count = (pixels + 1) / 2 * 4;
            if (from10) {
                UnpackV210(source + x / 6 * 16, groups, codes);
            } else {
                UnpackUYVY(source + 2 * x, count, codes);
            }
            MapCodes(map, codes, count);
            RepeatLastPixel(codes, pixels);
            if (to10) {
                PackV210(codes, groups, destination + x / 6 * 16);
            } else {
                PackUYVY(codes, count, destination + 2 * x);
            }
        }
    }
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {

HWY_EXPORT(YUVToYUV);

void ConvertYUVToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    HWY_DYNAMIC_DISPATCH(YUVToYUV)(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace VF
#endif
