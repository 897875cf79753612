#include <VF/Difference.h>

#include "Bands.h"
#include "FramePicture.h"
#include "RowComparer.h"
#include "direct/DirectConversion.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <string>

namespace VF {
namespace {

using namespace kiomediatypes;
using MF::IVideoFrameRef;

constexpr unsigned kBandsPerThread = 4;

std::string FormOf(const IVideoFrameRef& inFrame)
{
    return inFrame ? std::string(NameOf(inFrame->GetPixelFormat())) + " " +
                         std::to_string(inFrame->GetWidth()) + " x " + std::to_string(inFrame->GetHeight())
                   : "nothing";
}

/// The format that both are compared in.
PixelFormat FormToCompare(PixelFormat inFirst, PixelFormat inSecond)
{
    if (inFirst == inSecond) {
        return inFirst;
    }
    switch (std::max(DepthOf(inFirst), DepthOf(inSecond))) {
    case PixelDepth::kUnknown:
    case PixelDepth::k8:
        return kPixelFormat_BGRA_4444_8u;
    case PixelDepth::k10:
    case PixelDepth::k12:
    case PixelDepth::k16:
        return kPixelFormat_BGRA_4444_16u;
    case PixelDepth::k32Float:
        break;
    }
    return kPixelFormat_BGRA_4444_32f;
}

/// The greatest code of a format.
double MostOf(PixelFormat inFormat)
{
    switch (DepthOf(inFormat)) {
    case PixelDepth::kUnknown:
    case PixelDepth::k8:
        return 255;
    case PixelDepth::k10:
        return 1023;
    case PixelDepth::k12:
        return 4095;
    case PixelDepth::k16:
        return 65535;
    case PixelDepth::k32Float:
        break;
    }
    return 1;
}

/// Squares of 65535 x 65535 pixels of 16 bits take more than 64 bits.
class WideSum {
public:
    void Add(std::uint64_t inValue)
    {
        mLow += inValue;
        mHigh += mLow < inValue ? 1 : 0;
    }
    double Value() const { return std::ldexp(static_cast<double>(mHigh), 64) + static_cast<double>(mLow); }

private:
    std::uint64_t mLow = 0;
    std::uint64_t mHigh = 0;
};

/// Refused before anything is done.
struct Refusal {
    DifferenceStatus status = kDifference_NoFrame;
    std::string reason; // empty: none
};

/// One comparison from the frames to what is told about them.
class FrameComparison {
public:
    FrameComparison(const IVideoFrameRef& inFirst, const IVideoFrameRef& inSecond,
                    const IVideoFrameRef& outDifference, float inTolerance)
        : mFirst(inFirst), mSecond(inSecond), mDifference(outDifference), mTolerance(inTolerance)
    {}

    Refusal Check();
    /// @throws std::bad_alloc.
    Refusal Run();
    ComputedDifference Result(DifferenceDetails* outDetails) const;

private:
    Refusal CheckDifference() const;
    Refusal PreparePainting();
    bool CompareBands();
    double MeanSquare() const;

    const IVideoFrameRef& mFirst;
    const IVideoFrameRef& mSecond;
    const IVideoFrameRef& mDifference;
    const float mTolerance;
    Comparison mComparison;
    DestinationPicture mPicture;
    IVideoFrameRef mPainted; // the difference, or a frame that is converted to it
    std::vector<RowDifference> mRows;
};

Refusal FrameComparison::CheckDifference() const
{
    if (!mDifference) {
        return {};
    }
    if (mDifference == mFirst) {
        return {kDifference_BadPicture, "the difference picture is the first of the two"};
    }
    // Pixels of YUV share chroma, which one of them would paint over before the next is compared.
    const PixelFormat format = mSecond->GetPixelFormat();
    if (mDifference == mSecond && (IsYUV(format) || format != mFirst->GetPixelFormat())) {
        return {kDifference_BadPicture,
                "the difference picture is the second of the two, and they are not of one RGB format"};
    }
    if (mDifference->GetWidth() != mFirst->GetWidth() || mDifference->GetHeight() != mFirst->GetHeight()) {
        return {kDifference_BadPicture, "the difference picture is " + FormOf(mDifference) + ", expected " +
                                            std::to_string(mFirst->GetWidth()) + " x " +
                                            std::to_string(mFirst->GetHeight())};
    }
    return {};
}

Refusal FrameComparison::Check()
{
    std::string reason;
    if (!GetPicture(mFirst, mComparison.first, reason)) {
        return {kDifference_NoFrame, "the first frame " + reason};
    }
    if (!GetPicture(mSecond, mComparison.second, reason)) {
        return {kDifference_NoFrame, "the second frame " + reason};
    }
    if (mComparison.first.width != mComparison.second.width ||
        mComparison.first.height != mComparison.second.height) {
        return {kDifference_SizesDiffer, "they differ in size"};
    }
    if (!(mTolerance >= 0 && mTolerance <= 1)) {
        return {kDifference_BadTolerance,
                "the tolerance is " + std::to_string(mTolerance) + ", expected 0 to 1"};
    }
    return CheckDifference();
}

Refusal FrameComparison::PreparePainting()
{
    if (!mDifference) {
        return {};
    }
    if (!mDifference->InitializePixels(0)) {
        return {kDifference_NoMemory, "there is no memory for the difference picture"};
    }
    std::string reason;
    if (!GetPicture(mDifference, mPicture, reason)) {
        return {kDifference_BadPicture, "the difference picture " + reason};
    }
    mPainted = mDifference;
    if (IsYUV(mPicture.format) && mPicture.format != mComparison.form) {
        const bool is8 = DepthOf(mComparison.form) == PixelDepth::k8;
        const PixelFormat format = IsYUV(mComparison.form)
                                       ? (is8 ? kPixelFormat_BGRA_4444_8u : kPixelFormat_BGRA_4444_16u)
                                       : mComparison.form;
        if (!CreateVideoFrame(mPainted, format, mPicture.width, mPicture.height, kPixelAspectRatio_Square,
                              mPicture.colorSpace, false, false) ||
            !mPainted->InitializePixels(0) || !GetPicture(mPainted, mPicture, reason)) {
            return {kDifference_NoMemory, "there is no memory for a picture to convert the difference from"};
        }
    }
    mComparison.painted = &mPicture;
    return {};
}

bool FrameComparison::CompareBands()
{
    const std::uint32_t height = mComparison.first.height;
    mRows.resize(height);
    const std::uint32_t bandRows =
        BandRows(height, mComparison.first.width, 2, BandThreads() * kBandsPerThread);
    return RunBands((height + bandRows - 1) / bandRows, [&](unsigned inBand) {
        const std::unique_ptr<RowComparer> comparer = MakeRowComparer(mComparison);
        const std::uint32_t first = inBand * bandRows;
        const std::uint32_t end = std::min(first + bandRows, height);
        for (std::uint32_t row = first; row < end; ++row) {
            mRows[row] = comparer->Compare(row);
        }
        return true;
    });
}

Refusal FrameComparison::Run()
{
    mComparison.form = FormToCompare(mComparison.first.format, mComparison.second.format);
    mComparison.tolerance = mTolerance;
    for (const SourcePicture* const picture : {&mComparison.first, &mComparison.second}) {
        DestinationPicture form;
        form.format = mComparison.form;
        form.width = picture->width;
        form.height = picture->height;
        if (picture->format != form.format && !HasDirectConversion(*picture, form, kRenderQuality_Medium)) {
            return {kDifference_NoMemory, std::string("no copy in ") + NameOf(form.format) +
                                              " can be made of a frame with that colour matrix"};
        }
    }
    if (Refusal refusal = PreparePainting(); !refusal.reason.empty()) {
        return refusal;
    }
    if (mComparison.first.planes[0].pixels == mComparison.second.planes[0].pixels &&
        mComparison.first.format == mComparison.second.format) {
        // One picture: its first row stands for all, so that no other is fetched from memory.
        for (auto* const picture : {&mComparison.first, &mComparison.second}) {
            for (auto& plane : picture->planes) {
                plane.rowBytes = 0;
            }
        }
    }
    if (!CompareBands()) {
        return {kDifference_NoMemory, "out of memory"};
    }
    if (mPainted != mDifference &&
        !VideoFrameManipulators::CopyFrame(mPainted, mDifference, kRenderQuality_High, {})) {
        return {kDifference_NoMemory, "the difference picture could not be converted"};
    }
    return {};
}

double FrameComparison::MeanSquare() const
{
    WideSum squares;
    double floatSquares = 0;
    for (const RowDifference& row : mRows) {
        squares.Add(row.squares);
        floatSquares += row.floatSquares;
    }
    const double most = MostOf(mComparison.form);
    const double channels = IsYUV(mComparison.form) ? 3 : 4;
    const double samples = channels * mComparison.first.width * mComparison.first.height;
    return (squares.Value() / (most * most) + floatSquares) / samples;
}

ComputedDifference FrameComparison::Result(DifferenceDetails* outDetails) const
{
    ComputedDifference result;
    DifferenceDetails details;
    details.differingRows.assign((mRows.size() + 63) / 64, 0);
    std::uint32_t left = std::numeric_limits<std::uint32_t>::max();
    std::uint32_t right = 0;
    std::uint32_t bottom = 0;
    float largest = 0;
    for (std::uint32_t row = 0; row < mRows.size(); ++row) {
        const RowDifference& difference = mRows[row];
        largest = std::max(largest, difference.largest);
        if (difference.pixels != 0) {
            details.top = result.numDiffPixels == 0 ? row : details.top;
            bottom = row;
            left = std::min(left, difference.first);
            right = std::max(right, difference.last);
            result.numDiffPixels += difference.pixels;
            details.differingRows[row / 64] |= std::uint64_t{1} << row % 64;
        }
    }
    if (result.numDiffPixels != 0) {
        details.left = left;
        details.width = right - left + 1;
        details.height = bottom - details.top + 1;
    }
    details.largest = largest / MostOf(mComparison.form);
    const double mean = MeanSquare();
    details.psnr = largest == 0 ? std::numeric_limits<double>::infinity() : -10 * std::log10(mean);
    if (largest != 0) {
        result.variance = static_cast<float>(std::clamp<double>(
            100 * mean, std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max()));
    }
    if (outDetails) {
        *outDetails = std::move(details);
    }
    return result;
}

} // namespace

ComputedDifference ComputeDifferenceImages(const IVideoFrameRef& inFrame,
                                           const IVideoFrameRef& inCompareFrame,
                                           const IVideoFrameRef& outDifference, float inTolerance,
                                           DifferenceDetails* outDetails)
{
    KIO_HOST_CALL("VF::ComputeDifferenceImages", FormOf(inFrame), FormOf(inCompareFrame),
                  FormOf(outDifference), inTolerance);
    FrameComparison comparison(inFrame, inCompareFrame, outDifference, inTolerance);
    Refusal refusal;
    try {
        refusal = comparison.Check();
        if (refusal.reason.empty()) {
            refusal = comparison.Run();
        }
        if (refusal.reason.empty()) {
            return comparison.Result(outDetails);
        }
    } catch (const std::bad_alloc&) {
        refusal = {kDifference_NoMemory, "out of memory"};
    }
    kiocore::debug::Trace(1, "Frames",
                          "No comparison of " + FormOf(inFrame) + " with " + FormOf(inCompareFrame) + ": " +
                              refusal.reason);
    ComputedDifference failed;
    failed.status = static_cast<std::int32_t>(refusal.status);
    return failed;
}

} // namespace VF
