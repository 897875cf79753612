#include "RowComparer.h"

#include "direct/DirectConversion.h"

#include <VF/VideoFrames.h>

#include <cmath>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr std::uint64_t kStreamedBytes = 4 * 1024 * 1024; // smaller pictures stay in a cache
constexpr std::size_t kStreamedAlignment = 64;

std::size_t RowBytesOf(PixelFormat inFormat, std::uint32_t inWidth)
{
    return static_cast<std::size_t>(LayoutOf(inFormat, inWidth, 1, true).sizeBytes);
}

/// Rows of a picture in another format, one line at a time.
class ConvertedRows {
public:
    ConvertedRows(const SourcePicture& inPicture, PixelFormat inForm) : mPicture(inPicture)
    {
        if (inPicture.format != inForm) {
            mLineBytes = std::make_unique<std::byte[]>(RowBytesOf(inForm, inPicture.width));
            mLine.format = inForm;
            mLine.width = inPicture.width;
            mLine.height = inPicture.height;
            mLine.planes[0] = {mLineBytes.get(), 0};
        }
    }

    const std::byte* Row(std::uint32_t inRow)
    {
        if (!mLineBytes) {
            return mPicture.Row(inRow);
        }
        ConvertRowsDirectly(mPicture, mLine, inRow, inRow + 1);
        return mLineBytes.get();
    }

private:
    const SourcePicture& mPicture;
    DestinationPicture mLine;
    std::unique_ptr<std::byte[]> mLineBytes;
};

class RGBRowComparer final : public RowComparer {
public:
    explicit RGBRowComparer(const Comparison& inComparison)
        : mForm(inComparison.form), mWidth(inComparison.first.width), mTolerance(inComparison.tolerance),
          mCodes(ToleranceInCodes(mTolerance, mForm == kPixelFormat_BGRA_4444_16u ? 65535 : 255)),
          mFirst(inComparison.first, mForm), mSecond(inComparison.second, mForm),
          mPainted(inComparison.painted, mForm, mWidth, inComparison.IsPaintedInPlace())
    {}

    RowDifference Compare(std::uint32_t inRow) override
    {
        const RowPair rows{mFirst.Row(inRow), mSecond.Row(inRow), mWidth};
        std::byte* const painted = mPainted.Begin(inRow);
        const RowDifference result = Compare(rows, painted);
        mPainted.End(inRow);
        return result;
    }

private:
    RowDifference Compare(const RowPair& inRows, std::byte* outPainted) const
    {
        if (mForm == kPixelFormat_BGRA_4444_32f) {
            return CompareRow32f(inRows, mTolerance, outPainted, mPainted.How());
        }
        if (mForm == kPixelFormat_BGRA_4444_16u) {
            return CompareRow16(inRows, mCodes, outPainted, mPainted.How());
        }
        return CompareRow8(inRows, mCodes, mForm == kPixelFormat_ARGB_4444_8u, outPainted, mPainted.How());
    }

    const PixelFormat mForm;
    const std::uint32_t mWidth;
    const float mTolerance;
    const std::uint32_t mCodes;
    ConvertedRows mFirst;
    ConvertedRows mSecond;
    PaintedRows mPainted;
};

} // namespace

PaintedRows::PaintedRows(const DestinationPicture* inPainted, PixelFormat inForm, std::uint32_t inWidth,
                         bool inIsInPlace)
    : mPainted(inPainted)
{
    if (!inPainted) {
        return;
    }
    mPainting = Painting::kCached;
    if (inPainted->format != inForm) {
        mLineBytes = std::make_unique<std::byte[]>(RowBytesOf(inForm, inWidth));
        mLine.format = inForm;
        mLine.width = inWidth;
        mLine.height = inPainted->height;
        mLine.planes[0] = {mLineBytes.get(), 0};
        return;
    }
    const auto& plane = inPainted->planes[0];
    if (!inIsInPlace && std::uint64_t{plane.rowBytes} * inPainted->height >= kStreamedBytes &&
        reinterpret_cast<std::uintptr_t>(plane.pixels) % kStreamedAlignment == 0 &&
        plane.rowBytes % kStreamedAlignment == 0) {
        mPainting = Painting::kStreamed;
    }
}

PaintedRows::~PaintedRows()
{
    if (mPainting == Painting::kStreamed) {
        FinishStreaming();
    }
}

std::byte* PaintedRows::Begin(std::uint32_t inRow)
{
    return mLineBytes ? mLineBytes.get() : mPainted ? mPainted->Row(inRow) : nullptr;
}

void PaintedRows::End(std::uint32_t inRow)
{
    if (mLineBytes) {
        ConvertRowsDirectly(mLine, *mPainted, inRow, inRow + 1);
    }
}

std::uint32_t ToleranceInCodes(float inTolerance, std::uint32_t inMost)
{
    // A step of 1 / 255 in single precision has to stand for one code, whichever way it was rounded.
    auto codes = static_cast<std::uint32_t>(std::lround(static_cast<double>(inTolerance) * inMost));
    if (static_cast<float>(static_cast<double>(codes) / inMost) > inTolerance) {
        --codes;
    }
    return codes;
}

std::unique_ptr<RowComparer> MakeRowComparer(const Comparison& inComparison)
{
    return IsYUV(inComparison.form) ? MakeYUVRowComparer(inComparison)
                                    : std::make_unique<RGBRowComparer>(inComparison);
}

} // namespace VF
