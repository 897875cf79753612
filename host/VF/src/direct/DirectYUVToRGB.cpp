#include "DirectRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "direct/DirectYUVToRGB.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "DirectRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

// A reader takes codes of as many pairs of pixels as a vector has lanes, from packed pairs.

struct ReaderUYVY {
    static constexpr std::size_t kPairBytes = 4;

    static HWY_INLINE void Read(const std::uint8_t* inPairs, Floats& outCb, Floats& outY0, Floats& outCr,
                                Floats& outY1)
    {
        const Words mask = hn::Set(WordTag(), 255);
        const Words pairs = hn::LoadU(WordTag(), WordsAt(inPairs));
        outCb = ToFloats(hn::And(pairs, mask));
        outY0 = ToFloats(hn::And(hn::ShiftRight<8>(pairs), mask));
        outCr = ToFloats(hn::And(hn::ShiftRight<16>(pairs), mask));
        outY1 = ToFloats(hn::ShiftRight<24>(pairs));
    }
};

struct ReaderCodes {
    static constexpr std::size_t kPairBytes = 8;

    static HWY_INLINE void Read(const std::uint8_t* inPairs, Floats& outCb, Floats& outY0, Floats& outCr,
                                Floats& outY1)
    {
        Words first, second;
        hn::LoadInterleaved2(WordTag(), WordsAt(inPairs), first, second);
        outCb = ToFloats(LowShorts(first));
        outY0 = ToFloats(hn::ShiftRight<16>(first));
        outCr = ToFloats(LowShorts(second));
        outY1 = ToFloats(hn::ShiftRight<16>(second));
    }
};

/// Nearest whole component, with rounding bits above.
HWY_INLINE Words Rounded(Floats inValue, float inMost)
{
    const FloatTag d;
    const Floats bounded = hn::Min(hn::Max(inValue, hn::Zero(d)), hn::Set(d, inMost));
    return RoundedBits(hn::Add(bounded, hn::Set(d, kRounding)));
}

// A writer rounds components of pairs and puts opaque pixels together.

struct WriterBGRA8 {
    static constexpr std::size_t kPixelBytes = 4;
    static constexpr double kMost = 255;

    static HWY_INLINE Words Pixels(Floats inBlue, Floats inGreen, Floats inRed)
    {
        // Shifting drops the rounding bits, and where they stay alpha has all bits set.
        const Words blueGreen = hn::Or(Rounded(inBlue, 255), hn::ShiftLeft<8>(Rounded(inGreen, 255)));
        const Words redAlpha = hn::Or(hn::ShiftLeft<16>(Rounded(inRed, 255)), hn::Set(WordTag(), 0xFF000000));
        return hn::Or(blueGreen, redAlpha);
    }
    static HWY_INLINE void Write(Floats inBlue0, Floats inGreen0, Floats inRed0, Floats inBlue1,
                                 Floats inGreen1, Floats inRed1, std::uint8_t* outPixels)
    {
        hn::StoreInterleaved2(Pixels(inBlue0, inGreen0, inRed0), Pixels(inBlue1, inGreen1, inRed1), WordTag(),
                              WordsAt(outPixels));
    }
};

struct WriterARGB8 {
    static constexpr std::size_t kPixelBytes = 4;
    static constexpr double kMost = 255;

    static HWY_INLINE Words Pixels(Floats inBlue, Floats inGreen, Floats inRed)
    {
        const Words blueGreen =
            hn::Or(hn::ShiftLeft<24>(Rounded(inBlue, 255)), hn::ShiftLeft<16>(Rounded(inGreen, 255)));
        const Words redAlpha = hn::Or(hn::ShiftLeft<8>(Rounded(inRed, 255)), hn::Set(WordTag(), 0xFF));
        return hn::Or(blueGreen, redAlpha);
    }
    static HWY_INLINE void Write(Floats inBlue0, Floats inGreen0, Floats inRed0, Floats inBlue1,
                                 Floats inGreen1, Floats inRed1, std::uint8_t* outPixels)
    {
        hn::StoreInterleaved2(Pixels(inBlue0, inGreen0, inRed0), Pixels(inBlue1, inGreen1, inRed1), WordTag(),
                              WordsAt(outPixels));
    }
};

struct WriterBGRA16 {
    static constexpr std::size_t kPixelBytes = 8;
    static constexpr double kMost = 65535;

    static HWY_INLINE Words BlueGreen(Floats inBlue, Floats inGreen)
    {
        return hn::Or(LowShorts(Rounded(inBlue, 65535)), hn::ShiftLeft<16>(Rounded(inGreen, 65535)));
    }
    static HWY_INLINE Words RedAlpha(Floats inRed)
    {
        return hn::Or(Rounded(inRed, 65535), hn::Set(WordTag(), 0xFFFF0000));
    }
    static HWY_INLINE void Write(Floats inBlue0, Floats inGreen0, Floats inRed0, Floats inBlue1,
                                 Floats inGreen1, Floats inRed1, std::uint8_t* outPixels)
    {
        hn::StoreInterleaved4(BlueGreen(inBlue0, inGreen0), RedAlpha(inRed0), BlueGreen(inBlue1, inGreen1),
                              RedAlpha(inRed1), WordTag(), WordsAt(outPixels));
    }
};

struct WriterBGRA32f {
    static constexpr std::size_t kPixelBytes = 16;
    static constexpr double kMost = 1;

    static HWY_INLINE void Write(Floats inBlue0, Floats inGreen0, Floats inRed0, Floats inBlue1,
                                 Floats inGreen1, Floats inRed1, std::uint8_t* outPixels)
    {
        const FloatTag d;
        const std::size_t lanes = hn::Lanes(d);
        HWY_ALIGN float blue[kMostStep], green[kMostStep], red[kMostStep];
        hn::StoreInterleaved2(inBlue0, inBlue1, d, blue);
        hn::StoreInterleaved2(inGreen0, inGreen1, d, green);
        hn::StoreInterleaved2(inRed0, inRed1, d, red);
        const Floats one = hn::Set(d, 1.0f);
        hn::StoreInterleaved4(hn::Load(d, blue), hn::Load(d, green), hn::Load(d, red), one, d,
                              FloatsAt(outPixels));
        hn::StoreInterleaved4(hn::Load(d, blue + lanes), hn::Load(d, green + lanes), hn::Load(d, red + lanes),
                              one, d, FloatsAt(outPixels) + 4 * lanes);
    }
};

/// One step: as many pairs as a vector has lanes, and the chroma of one more.
template <class Reader, class Writer>
HWY_INLINE void ConvertPairs(const std::uint8_t* inPairs, const FromYUVWeights& inWeights,
                             std::uint8_t* outPixels)
{
    const FloatTag d;
    Floats cb0, y0, cr0, y1, cbNext, crNext, unused0, unused1;
    Reader::Read(inPairs, cb0, y0, cr0, y1);
    Reader::Read(inPairs + Reader::kPairBytes, cbNext, unused0, crNext, unused1);
    const Floats lumaOffset = hn::Set(d, inWeights.lumaOffset);
    const Floats chromaOffset = hn::Set(d, inWeights.chromaOffset);
    const Floats half = hn::Set(d, 0.5f);
    // The odd pixel lies half-way to the next pair's chroma. Products and sums are rounded one by one, never
    // fused, so that all processors agree.
    const Floats cb1 = hn::Sub(hn::Mul(hn::Add(cb0, cbNext), half), chromaOffset);
    const Floats cr1 = hn::Sub(hn::Mul(hn::Add(cr0, crNext), half), chromaOffset);
    cb0 = hn::Sub(cb0, chromaOffset);
    cr0 = hn::Sub(cr0, chromaOffset);
    const Floats luma = hn::Set(d, inWeights.luma);
    y0 = hn::Mul(hn::Sub(y0, lumaOffset), luma);
    y1 = hn::Mul(hn::Sub(y1, lumaOffset), luma);
    const Floats blueCb = hn::Set(d, inWeights.blueCb);
    const Floats redCr = hn::Set(d, inWeights.redCr);
    const Floats greenCb = hn::Set(d, inWeights.greenCb);
    const Floats greenCr = hn::Set(d, inWeights.greenCr);
    Writer::Write(hn::Add(y0, hn::Mul(cb0, blueCb)),
                  hn::Add(y0, hn::Add(hn::Mul(cb0, greenCb), hn::Mul(cr0, greenCr))),
                  hn::Add(y0, hn::Mul(cr0, redCr)), hn::Add(y1, hn::Mul(cb1, blueCb)),
                  hn::Add(y1, hn::Add(hn::Mul(cb1, greenCb), hn::Mul(cr1, greenCr))),
                  hn::Add(y1, hn::Mul(cr1, redCr)), outPixels);
}

/// The same where the row may end within the step.
template <class Reader, class Writer>
HWY_INLINE void ConvertPairsUpTo(std::size_t inPixels, const std::uint8_t* inPairs,
                                 const FromYUVWeights& inWeights, std::uint8_t* outPixels)
{
    if (inPixels >= 2 * hn::Lanes(FloatTag())) {
        return ConvertPairs<Reader, Writer>(inPairs, inWeights, outPixels);
    }
    HWY_ALIGN std::uint8_t last[kMostStep * Writer::kPixelBytes];
    ConvertPairs<Reader, Writer>(inPairs, inWeights, last);
    std::memcpy(outPixels, last, inPixels * Writer::kPixelBytes);
}

template <class Writer>
void RowFromUYVY(const std::uint8_t* inRow, std::uint8_t* outRow, std::size_t inWidth,
                 const FromYUVWeights& inWeights)
{
    const std::size_t lanes = hn::Lanes(FloatTag());
    const std::size_t pairs = (inWidth + 1) / 2;
    for (std::size_t pair = 0; pair < pairs; pair += lanes) {
        const std::uint8_t* from = inRow + 4 * pair;
        HWY_ALIGN std::uint8_t edge[(kMostLanes + 1) * 4];
        if (pair + lanes + 1 > pairs) { // the row's last chroma goes on beyond it
            for (std::size_t i = 0; i <= lanes; ++i) {
                std::memcpy(edge + 4 * i, inRow + 4 * (pair + i < pairs ? pair + i : pairs - 1), 4);
            }
            from = edge;
        }
        ConvertPairsUpTo<ReaderUYVY, Writer>(inWidth - 2 * pair, from, inWeights,
                                             outRow + 2 * pair * Writer::kPixelBytes);
    }
}

/// Converts a chunk of codes, which has one pair more than its pixels need.
template <class Writer>
HWY_INLINE void ConvertCodes(const std::uint16_t* inCodes, std::size_t inPixels,
                             const FromYUVWeights& inWeights, std::uint8_t* outPixels)
{
    const std::size_t step = 2 * hn::Lanes(FloatTag());
    for (std::size_t x = 0; x < inPixels; x += step) {
        ConvertPairsUpTo<ReaderCodes, Writer>(inPixels - x,
                                              reinterpret_cast<const std::uint8_t*>(inCodes + 2 * x),
                                              inWeights, outPixels + x * Writer::kPixelBytes);
    }
}

template <class Writer>
void RowFromV210(const std::uint8_t* inRow, std::uint8_t* outRow, std::size_t inWidth,
                 const FromYUVWeights& inWeights)
{
    HWY_ALIGN std::uint16_t codes[kChunkCodes] = {};
    for (std::size_t x = 0; x < inWidth; x += kChunkPixels) {
        const std::size_t pixels = inWidth - x < kChunkPixels ? inWidth - x : kChunkPixels;
        const std::uint8_t* const groups = inRow + x / 6 * 16;
        UnpackV210(groups, (pixels + 5) / 6, codes);
        const std::size_t pairs = (pixels + 1) / 2;
        std::uint16_t* const next = codes + 4 * pairs;
        if (x + pixels < inWidth) {
            std::uint32_t word; // a group begins with the first pair's chroma
            std::memcpy(&word, groups + kChunkPixels / 6 * 16, sizeof(word));
            next[0] = static_cast<std::uint16_t>(word & 1023);
            next[2] = static_cast<std::uint16_t>(word >> 20 & 1023);
        } else {
            next[0] = next[-4];
            next[2] = next[-2];
        }
        ConvertCodes<Writer>(codes, pixels, inWeights, outRow + x * Writer::kPixelBytes);
    }
}

/// The rows that one row of planar 4:2:0 is made of. Chroma lies between luma's rows: three quarters of the
/// nearer row and a quarter of the farther.
struct PlanarRows {
    const std::uint8_t* luma;
    const std::uint8_t* nearCb;
    const std::uint8_t* farCb;
    const std::uint8_t* nearCr;
    const std::uint8_t* farCr;
};

HWY_INLINE Shorts FourChroma(const std::uint8_t* inNear, const std::uint8_t* inFar)
{
    const ShortTag d;
    const hn::Rebind<std::uint8_t, ShortTag> bytes;
    const Shorts near = hn::PromoteTo(d, hn::LoadU(bytes, inNear));
    return hn::Add(hn::Add(near, near), hn::Add(near, hn::PromoteTo(d, hn::LoadU(bytes, inFar))));
}
HWY_INLINE std::uint16_t FourChromaAt(const std::uint8_t* inNear, const std::uint8_t* inFar,
                                      std::size_t inPair)
{
    return static_cast<std::uint16_t>(3 * inNear[inPair] + inFar[inPair]);
}

/// Makes packed codes of as many pairs as a vector has 16-bit lanes, all times four.
HWY_INLINE void GatherStep(const PlanarRows& inRows, std::uint16_t* outCodes)
{
    const ShortTag d;
    const Shorts luma = hn::LoadU(d, ShortsAt(inRows.luma)); // two pixels in each lane
    const Shorts even = hn::ShiftLeft<2>(hn::And(luma, hn::Set(d, 255)));
    const Shorts odd = hn::ShiftLeft<2>(hn::ShiftRight<8>(luma));
    hn::StoreInterleaved4(FourChroma(inRows.nearCb, inRows.farCb), even,
                          FourChroma(inRows.nearCr, inRows.farCr), odd, d, outCodes);
}

HWY_INLINE void GatherPlanar(const PlanarRows& inRows, std::size_t inPixels, std::uint16_t* outCodes)
{
    const std::size_t lanes = hn::Lanes(ShortTag());
    const std::size_t pairs = (inPixels + 1) / 2;
    for (std::size_t pair = 0; pair < pairs; pair += lanes) {
        const PlanarRows rows = {inRows.luma + 2 * pair, inRows.nearCb + pair, inRows.farCb + pair,
                                 inRows.nearCr + pair, inRows.farCr + pair};
        if (2 * (pair + lanes) <= inPixels) {
            GatherStep(rows, outCodes + 4 * pair);
            continue;
        }
        HWY_ALIGN std::uint8_t last[5][kMostBytes] = {};
        std::memcpy(last[0], rows.luma, inPixels - 2 * pair);
        std::memcpy(last[1], rows.nearCb, pairs - pair);
        std::memcpy(last[2], rows.farCb, pairs - pair);
        std::memcpy(last[3], rows.nearCr, pairs - pair);
        std::memcpy(last[4], rows.farCr, pairs - pair);
        GatherStep({last[0], last[1], last[2], last[3], last[4]}, outCodes + 4 * pair);
    }
}

template <class Writer>
void RowFromPlanar(const PlanarRows& inRows, std::uint8_t* outRow, std::size_t inWidth,
                   const FromYUVWeights& inWeights)
{
    HWY_ALIGN std::uint16_t codes[kChunkCodes] = {};
    for (std::size_t x = 0; x < inWidth; x += kChunkPixels) {
        const std::size_t pixels = inWidth - x < kChunkPixels ? inWidth - x : kChunkPixels;
        const std::size_t pair = x / 2;
        GatherPlanar({inRows.luma + x, inRows.nearCb + pair, inRows.farCb + pair, inRows.nearCr + pair,
                      inRows.farCr + pair},
                     pixels, codes);
        const std::size_t pairs = (pixels + 1) / 2;
        const std::size_t next = x + pixels < inWidth ? pair + pairs : pair + pairs - 1;
        codes[4 * pairs] = FourChromaAt(inRows.nearCb, inRows.farCb, next);
        codes[4 * pairs + 2] = FourChromaAt(inRows.nearCr, inRows.farCr, next);
        ConvertCodes<Writer>(codes, pixels, inWeights, outRow + x * Writer::kPixelBytes);
    }
}

template <class Writer>
void RowsFromPlanar(const SourcePicture& inSource, const DestinationPicture& inDestination,
                    std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    const auto& space = inSource.colorSpace;
    const FromYUVWeights weights =
        FromYUVWeightsOf(TimesFour(CodeScaleOf(inSource.format, space.range)), space.matrix, Writer::kMost);
    const std::uint32_t lastChroma = (inSource.height - 1) / 2;
    for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
        const std::uint32_t near = row / 2;
        const std::uint32_t far = row % 2 ? (near < lastChroma ? near + 1 : near) : (near > 0 ? near - 1 : 0);
        const auto at = [&](std::uint32_t inRow, int inPlane) {
            return reinterpret_cast<const std::uint8_t*>(inSource.Row(inRow, inPlane));
        };
        RowFromPlanar<Writer>({at(row, 0), at(near, 1), at(far, 1), at(near, 2), at(far, 2)},
                              reinterpret_cast<std::uint8_t*>(inDestination.Row(row)), inSource.width,
                              weights);
    }
}

template <class Writer>
void Rows(const SourcePicture& inSource, const DestinationPicture& inDestination, std::uint32_t inFirstRow,
          std::uint32_t inEndRow)
{
    if (inSource.format == kiomediatypes::kPixelFormat_YUV_420_8u_Planar) {
        return RowsFromPlanar<Writer>(inSource, inDestination, inFirstRow, inEndRow);
    }
    const bool packed10 = inSource.format == kiomediatypes::kPixelFormat_V210_422_10u;
    const auto& space = inSource.colorSpace;
    const FromYUVWeights weights =
        FromYUVWeightsOf(CodeScaleOf(inSource.format, space.range), space.matrix, Writer::kMost);
    const auto convert = packed10 ? &RowFromV210<Writer> : &RowFromUYVY<Writer>;
    for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
        convert(reinterpret_cast<const std::uint8_t*>(inSource.Row(row)),
                reinterpret_cast<std::uint8_t*>(inDestination.Row(row)), inSource.width, weights);
    }
}

void YUVToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
              std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    switch (inDestination.format) {
    case kiomediatypes::kPixelFormat_BGRA_4444_8u:
        return Rows<WriterBGRA8>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_ARGB_4444_8u:
        return Rows<WriterARGB8>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_BGRA_4444_16u:
        return Rows<WriterBGRA16>(inSource, inDestination, inFirstRow, inEndRow);
    case kiomediatypes::kPixelFormat_BGRA_4444_32f:
        return Rows<WriterBGRA32f>(inSource, inDestination, inFirstRow, inEndRow);
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

HWY_EXPORT(YUVToRGB);

void ConvertYUVToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    HWY_DYNAMIC_DISPATCH(YUVToRGB)(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace VF
#endif
