#include "DirectRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "direct/DirectRGBToYUV.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "DirectRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

// A reader takes apart as many pairs of pixels as a vector has lanes; components stay in their own scale.

template <int kBlueShift, int kGreenShift, int kRedShift>
struct Reader8 {
    static constexpr std::size_t kPixelBytes = 4;
    static constexpr double kMost = 255;
    static constexpr bool kUnbounded = false;

    template <int kShift>
    static HWY_INLINE Floats Component(Words inPixels)
    {
        return ToFloats(hn::And(hn::ShiftRight<kShift>(inPixels), hn::Set(WordTag(), 255)));
    }
    static HWY_INLINE void Read(const std::uint8_t* inPixels, Floats& outBlue0, Floats& outGreen0,
                                Floats& outRed0, Floats& outBlue1, Floats& outGreen1, Floats& outRed1)
    {
        Words even, odd;
        hn::LoadInterleaved2(WordTag(), WordsAt(inPixels), even, odd);
        outBlue0 = Component<kBlueShift>(even);
        outGreen0 = Component<kGreenShift>(even);
        outRed0 = Component<kRedShift>(even);
        outBlue1 = Component<kBlueShift>(odd);
        outGreen1 = Component<kGreenShift>(odd);
        outRed1 = Component<kRedShift>(odd);
    }
};
using ReaderBGRA8 = Reader8<0, 8, 16>;
using ReaderARGB8 = Reader8<24, 16, 8>;

struct ReaderBGRA16 {
    static constexpr std::size_t kPixelBytes = 8;
    static constexpr double kMost = 65535;
    static constexpr bool kUnbounded = false;

    static HWY_INLINE void Read(const std::uint8_t* inPixels, Floats& outBlue0, Floats& outGreen0,
                                Floats& outRed0, Floats& outBlue1, Floats& outGreen1, Floats& outRed1)
    {
        Words blueGreen0, redAlpha0, blueGreen1, redAlpha1;
        hn::LoadInterleaved4(WordTag(), WordsAt(inPixels), blueGreen0, redAlpha0, blueGreen1, redAlpha1);
        outBlue0 = ToFloats(LowShorts(blueGreen0));
        outGreen0 = ToFloats(hn::ShiftRight<16>(blueGreen0));
        outRed0 = ToFloats(LowShorts(redAlpha0));
        outBlue1 = ToFloats(LowShorts(blueGreen1));
        outGreen1 = ToFloats(hn::ShiftRight<16>(blueGreen1));
        outRed1 = ToFloats(LowShorts(redAlpha1));
    }
};

struct ReaderBGRA32f {
    static constexpr std::size_t kPixelBytes = 16;
    static constexpr double kMost = 1;
    static constexpr bool kUnbounded = true;

    /// Infinite light would leave no colour to compute, and what is no number would spread: bounded, and 0.
    static HWY_INLINE Floats Clean(Floats inValue)
    {
        const FloatTag d;
        const Floats bounded = hn::Min(hn::Max(inValue, hn::Set(d, -65504.0f)), hn::Set(d, 65504.0f));
        return hn::IfThenElseZero(hn::Eq(inValue, inValue), bounded);
    }
    static HWY_INLINE void Read(const std::uint8_t* inPixels, Floats& outBlue0, Floats& outGreen0,
                                Floats& outRed0, Floats& outBlue1, Floats& outGreen1, Floats& outRed1)
    {
        const FloatTag d;
        Floats blueA, greenA, redA, alphaA, blueB, greenB, redB, alphaB;
        hn::LoadInterleaved4(d, FloatsAt(inPixels), blueA, greenA, redA, alphaA);
        hn::LoadInterleaved4(d, FloatsAt(inPixels) + 4 * hn::Lanes(d), blueB, greenB, redB, alphaB);
        outBlue0 = Clean(hn::ConcatEven(d, blueB, blueA));
        outGreen0 = Clean(hn::ConcatEven(d, greenB, greenA));
        outRed0 = Clean(hn::ConcatEven(d, redB, redA));
        outBlue1 = Clean(hn::ConcatOdd(d, blueB, blueA));
        outGreen1 = Clean(hn::ConcatOdd(d, greenB, greenA));
        outRed1 = Clean(hn::ConcatOdd(d, redB, redA));
    }
};

// A writer puts rounded codes of pairs together.

struct WriterUYVY {
    static constexpr std::size_t kPairBytes = 4;

    static HWY_INLINE void Write(Words inCb, Words inY0, Words inCr, Words inY1, std::uint8_t* outPairs)
    {
        // Shifting drops the rounding bits of all but the first.
        const Words chroma = hn::Or(hn::And(inCb, hn::Set(WordTag(), 255)), hn::ShiftLeft<16>(inCr));
        const Words luma = hn::Or(hn::ShiftLeft<8>(inY0), hn::ShiftLeft<24>(inY1));
        hn::StoreU(hn::Or(chroma, luma), WordTag(), WordsAt(outPairs));
    }
};

/// Codes in 16 bits each, for v210.
struct WriterCodes {
    static constexpr std::size_t kPairBytes = 8;

    static HWY_INLINE void Write(Words inCb, Words inY0, Words inCr, Words inY1, std::uint8_t* outPairs)
    {
        hn::StoreInterleaved2(hn::Or(LowShorts(inCb), hn::ShiftLeft<16>(inY0)),
                              hn::Or(LowShorts(inCr), hn::ShiftLeft<16>(inY1)), WordTag(), WordsAt(outPairs));
    }
};

HWY_INLINE Floats Weighted(const ToYUVWeights::OfCode& inWeights, Floats inBlue, Floats inGreen, Floats inRed)
{
    const FloatTag d;
    // Products and sums are rounded one by one, never fused, so that all processors agree.
    const Floats blueGreen =
        hn::Add(hn::Mul(inBlue, hn::Set(d, inWeights.blue)), hn::Mul(inGreen, hn::Set(d, inWeights.green)));
    const Floats sum = hn::Add(blueGreen, hn::Mul(inRed, hn::Set(d, inWeights.red)));
    return hn::Add(sum, hn::Set(d, inWeights.offset));
}

template <bool kUnbounded>
HWY_INLINE Words Bounded(Floats inCode, float inMost)
{
    const FloatTag d;
    Floats code = hn::Min(inCode, hn::Set(d, inMost));
    if (kUnbounded) {
        code = hn::Max(code, hn::Set(d, kRounding));
    }
    return RoundedBits(code);
}

/// Converts pixels inFirst up to inEnd, in whole steps; beyond the row the picture goes on with its last
/// pixel, and before it with its first.
template <class Reader, class Writer>
HWY_INLINE void ConvertPixels(const std::uint8_t* inRow, std::size_t inWidth, std::size_t inFirst,
                              std::size_t inEnd, const ToYUVWeights& inWeights, std::uint8_t* outPairs)
{
    constexpr std::size_t kBytes = Reader::kPixelBytes;
    const std::size_t step = 2 * hn::Lanes(FloatTag());
    HWY_ALIGN std::uint8_t edge[(kMostStep + 1) * kBytes];
    for (std::size_t x = inFirst; x < inEnd; x += step) {
        const std::uint8_t* pixels = inRow + x * kBytes;
        if (x == 0 || x + step > inWidth) {
            for (std::size_t i = 0; i <= step; ++i) {
                const std::size_t from = x + i == 0 ? 0 : x + i - 1;
                std::memcpy(edge + i * kBytes, inRow + (from < inWidth ? from : inWidth - 1) * kBytes,
                            kBytes);
            }
            pixels = edge + kBytes;
        }
        Floats blue0, green0, red0, blue1, green1, red1;
        Reader::Read(pixels, blue0, green0, red0, blue1, green1, red1);
        const Words y0 =
            Bounded<Reader::kUnbounded>(Weighted(inWeights.luma, blue0, green0, red0), inWeights.most);
        const Words y1 =
            Bounded<Reader::kUnbounded>(Weighted(inWeights.luma, blue1, green1, red1), inWeights.most);
        // Chroma sits on the even pixel: itself twice, and the neighbours on both sides.
        Floats blueBefore, greenBefore, redBefore, unused0, unused1, unused2;
        Reader::Read(pixels - kBytes, blueBefore, greenBefore, redBefore, unused0, unused1, unused2);
        const Floats blue = hn::Add(hn::Add(blueBefore, blue1), hn::Add(blue0, blue0));
        const Floats green = hn::Add(hn::Add(greenBefore, green1), hn::Add(green0, green0));
        const Floats red = hn::Add(hn::Add(redBefore, red1), hn::Add(red0, red0));
        const Words cb =
            Bounded<Reader::kUnbounded>(Weighted(inWeights.cb, blue, green, red), inWeights.most);
        const Words cr =
            Bounded<Reader::kUnbounded>(Weighted(inWeights.cr, blue, green, red), inWeights.most);
        Writer::Write(cb, y0, cr, y1, outPairs);
        outPairs += step / 2 * Writer::kPairBytes;
    }
}

template <class Reader>
void RowToUYVY(const std::uint8_t* inRow, std::uint8_t* outRow, std::size_t inWidth,
               const ToYUVWeights& inWeights)
{
    const std::size_t step = 2 * hn::Lanes(FloatTag());
    const std::size_t whole = inWidth / step * step;
    ConvertPixels<Reader, WriterUYVY>(inRow, inWidth, 0, whole, inWeights, outRow);
    if (whole < inWidth) {
        HWY_ALIGN std::uint8_t last[2 * kMostStep];
        ConvertPixels<Reader, WriterUYVY>(inRow, inWidth, whole, inWidth, inWeights, last);
        std::memcpy(outRow + 2 * whole, last, (inWidth - whole + 1) / 2 * 4);
    }
}

template <class Reader>
void RowToV210(const std::uint8_t* inRow, std::uint8_t* outRow, std::size_t inWidth,
               const ToYUVWeights& inWeights)
{
    HWY_ALIGN std::uint16_t codes[kChunkCodes];
    const std::size_t groups = (inWidth + 5) / 6;
    for (std::size_t group = 0; group < groups; group += kChunkPixels / 6) {
        const std::size_t count = groups - group < kChunkPixels / 6 ? groups - group : kChunkPixels / 6;
        ConvertPixels<Reader, WriterCodes>(inRow, inWidth, group * 6, (group + count) * 6, inWeights,
                                           reinterpret_cast<std::uint8_t*>(codes));
        PackV210(codes, count, outRow + group * 16);
    }
}

template <class Reader>
void Rows(const SourcePicture& inSource, const DestinationPicture& inDestination, std::uint32_t inFirstRow,
          std::uint32_t inEndRow)
{
    const bool packed10 = inDestination.format == kiomediatypes::kPixelFormat_V210_422_10u;
    const auto& space = inDestination.colorSpace;
    const ToYUVWeights weights =
        ToYUVWeightsOf(CodeScaleOf(inDestination.format, space.range), space.matrix, Reader::kMost);
    const auto convert = packed10 ? &RowToV210<Reader> : &RowToUYVY<Reader>;
    for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
        convert(reinterpret_cast<const std::uint8_t*>(inSource.Row(row)),
                reinterpret_cast<std::uint8_t*>(inDestination.Row(row)), inSource.width, weights);
    }
}

void RGBToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
              std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    switch (inSource.format) {
    case kiomediatypes::kPixelFormat_BGRA_4444_8u:
        return Rows<ReaderBGRA8>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_ARGB_4444_8u:
        return Rows<ReaderARGB8>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_BGRA_4444_16u:
        return Rows<ReaderBGRA16>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_BGRA_4444_32f:
        return Rows<ReaderBGRA32f>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_UYVY_422_8u:
    case kiomediatypes::kPixelFormat_V210_422_10u:
    case kiomediatypes::kPixelFormat_YUV_420_8u_Planar:
    case kiomediatypes::kPixelFormat_Any:
        return;
    }
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {

HWY_EXPORT(RGBToYUV);

void ConvertRGBToYUV(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    HWY_DYNAMIC_DISPATCH(RGBToYUV)(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace VF
#endif
