#include "DifferenceSamples.h"
#include "RowComparer.h"

#include "direct/DirectWeights.h"
#include "rows/PixelRows.h"

#include <VF/VideoFrames.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <vector>

namespace VF {
namespace {

using namespace kiomediatypes;

/// What a pixel is painted as, by its largest difference in codes: all shades of grey that a format needs.
struct Shades {
    std::vector<std::uint64_t> pixels; // of BGRA, 8 or 16 bits
    std::vector<std::uint16_t> luma;   // codes
    std::uint16_t chroma = 0;
};

Shades ShadesOf(const Comparison& inComparison, std::uint32_t inTolerance, std::uint32_t inMost)
{
    const bool is16 = inMost > 255;
    const color::Range range =
        inComparison.painted ? inComparison.painted->colorSpace.range : color::Range::kLimited;
    const CodeScale scale = CodeScaleOf(inComparison.form, range);
    Shades shades;
    shades.chroma = static_cast<std::uint16_t>(scale.chromaOffset);
    for (std::uint32_t difference = 0; difference <= inMost; ++difference) {
        // 64 / 255 + 0.75 d / most, in parts so small that it is whole: halves go up.
        const double parts = 4.0 * 255 * inMost;
        const double lifted =
            difference > inTolerance ? std::min(parts, 4.0 * 64 * inMost + 3.0 * 255 * difference) : 0;
        const auto scaled = [&](double inOffset, double inSpan) {
            return static_cast<std::uint64_t>(std::floor(inOffset + inSpan * lifted / parts + 0.5));
        };
        shades.luma.push_back(static_cast<std::uint16_t>(scaled(scale.lumaOffset, scale.lumaSpan)));
        shades.pixels.push_back(is16 ? scaled(0, 65535) * 0x100010001 | 0xFFFF000000000000
                                     : scaled(0, 255) * 0x10101 | 0xFF000000);
    }
    return shades;
}

/// T: bytes, or words for 10 bits.
template <typename T>
class YUVRowComparer final : public RowComparer {
public:
    explicit YUVRowComparer(const Comparison& inComparison)
        : mComparison(inComparison), mWidth(inComparison.first.width),
          mIsPlanar((inComparison.form & kPixelFormatFlag_Planar) != 0),
          mLayout(LayoutOf(inComparison.form, mWidth, inComparison.first.height, true)),
          mTolerance(ToleranceInCodes(inComparison.tolerance, kMost)),
          mShades(ShadesOf(inComparison, mTolerance, kMost)), mPaintsCodes(PaintsCodes(inComparison)),
          mPainted(mPaintsCodes ? nullptr : inComparison.painted,
                   kIs16 ? kPixelFormat_BGRA_4444_16u : kPixelFormat_BGRA_4444_8u, mWidth)
    {
        mLine.resize((std::size_t{mWidth} + kLineSlackBytes) * kLines);
        std::fill_n(Line(kNeutralChroma), mWidth + kLineSlackBytes / 2, static_cast<T>(mShades.chroma));
        for (std::size_t plane = 0; plane < 3; ++plane) {
            mUnpacked[0].planes[plane] = reinterpret_cast<std::byte*>(Line(kFirstPicture + plane));
            mUnpacked[1].planes[plane] = reinterpret_cast<std::byte*>(Line(kSecondPicture + plane));
        }
    }

    RowDifference Compare(std::uint32_t inRow) override
    {
        RowDifference result;
        T* const largest = Line(kLargest);
        if (IsSame(inRow)) {
            std::fill_n(largest, mWidth, T{0});
        } else {
            const RowPlanes first = Samples(mComparison.first, inRow, 0);
            const RowPlanes second = Samples(mComparison.second, inRow, 1);
            result.squares = CompareSamples(first, second, largest);
            SumUpPixels(largest, mWidth, mTolerance, result);
        }
        Paint(inRow, result);
        return result;
    }

private:
    static constexpr bool kIs16 = std::is_same_v<T, std::uint16_t>;
    static constexpr std::uint32_t kMost = kIs16 ? 1023 : 255;
    enum Lines : std::size_t {
        kFirstPicture = 0,
        kSecondPicture = 3,
        kLargest = 6,
        kDifferenceCb,
        kDifferenceCr,
        kPaintedLuma,
        kNeutralChroma,
        kLines
    };

    static bool PaintsCodes(const Comparison& inComparison)
    {
        return inComparison.painted && IsYUV(inComparison.painted->format);
    }

    T* Line(std::size_t inWhich) { return mLine.data() + (std::size_t{mWidth} + kLineSlackBytes) * inWhich; }

    std::uint32_t RowOfPlane(std::uint32_t inRow, int inPlane) const
    {
        return inPlane > 0 ? inRow / 2 : inRow; // planar only
    }

    bool IsSame(std::uint32_t inRow) const
    {
        for (int plane = 0; plane < mLayout.planeCount; ++plane) {
            const std::uint32_t row = RowOfPlane(inRow, plane);
            if (std::memcmp(mComparison.first.Row(row, plane), mComparison.second.Row(row, plane),
                            mLayout.planes[plane].usedBytes) != 0) {
                return false;
            }
        }
        return true;
    }

    /// The row's samples plane by plane. They are only read.
    RowPlanes Samples(const SourcePicture& inPicture, std::uint32_t inRow, int inWhich)
    {
        if (!mIsPlanar) {
            UnpackRow(inPicture, inRow, 0, mWidth, mUnpacked[inWhich]);
            return mUnpacked[inWhich];
        }
        RowPlanes samples;
        for (int plane = 0; plane < 3; ++plane) {
            samples.planes[plane] = const_cast<std::byte*>(inPicture.Row(RowOfPlane(inRow, plane), plane));
        }
        return samples;
    }

    /// @param outLargest  of each pixel.
    /// @return the sum of squares, chroma counted for each of its pixels in the row.
    std::uint64_t CompareSamples(const RowPlanes& inFirst, const RowPlanes& inSecond, T* outLargest)
    {
        const std::size_t pairs = (std::size_t{mWidth} + 1) / 2;
        T* const cb = Line(kDifferenceCb);
        T* const cr = Line(kDifferenceCr);
        const std::uint64_t chroma =
            DifferencesOf(inFirst.As<const T>(1), inSecond.As<const T>(1), pairs, cb) +
            DifferencesOf(inFirst.As<const T>(2), inSecond.As<const T>(2), pairs, cr);
        const std::uint64_t luma =
            DifferencesOf(inFirst.As<const T>(0), inSecond.As<const T>(0), mWidth, outLargest);
        LargestOfPixels(outLargest, cb, cr, mWidth);
        std::uint64_t alone = 0; // an odd last pixel has its chroma for itself
        if (mWidth % 2 != 0) {
            const std::uint64_t lastCb = cb[pairs - 1];
            const std::uint64_t lastCr = cr[pairs - 1];
            alone = lastCb * lastCb + lastCr * lastCr;
        }
        return luma + 2 * chroma - alone;
    }

    void Paint(std::uint32_t inRow, const RowDifference& inResult)
    {
        const T* const largest = Line(kLargest);
        if (mPaintsCodes) {
            T* const luma = Line(kPaintedLuma);
            std::transform(largest, largest + mWidth, luma,
                           [&](T inDifference) { return static_cast<T>(mShades.luma[inDifference]); });
            RowPlanes painted;
            painted.planes[0] = reinterpret_cast<std::byte*>(luma);
            painted.planes[1] = painted.planes[2] = reinterpret_cast<std::byte*>(Line(kNeutralChroma));
            PackRow(*mComparison.painted, inRow, 0, mWidth, painted);
        } else if (std::byte* const row = mPainted.Begin(inRow)) {
            using Pixel = std::conditional_t<kIs16, std::uint64_t, std::uint32_t>;
            auto* const pixels = reinterpret_cast<Pixel*>(row);
            if (inResult.pixels == 0) {
                std::fill_n(pixels, mWidth, static_cast<Pixel>(mShades.pixels[0]));
            } else {
                std::transform(largest, largest + mWidth, pixels, [&](T inDifference) {
                    return static_cast<Pixel>(mShades.pixels[inDifference]);
                });
            }
            mPainted.End(inRow);
        }
    }

    const Comparison& mComparison;
    const std::uint32_t mWidth;
    const bool mIsPlanar;
    const FrameLayout mLayout;
    const std::uint32_t mTolerance;
    const Shades mShades;
    const bool mPaintsCodes;
    PaintedRows mPainted;
    std::vector<T> mLine;
    RowPlanes mUnpacked[2];
};

} // namespace

std::unique_ptr<RowComparer> MakeYUVRowComparer(const Comparison& inComparison)
{
    if (DepthOf(inComparison.form) == PixelDepth::k8) {
        return std::make_unique<YUVRowComparer<std::uint8_t>>(inComparison);
    }
    return std::make_unique<YUVRowComparer<std::uint16_t>>(inComparison);
}

} // namespace VF
