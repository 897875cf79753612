#include "BoxReduction.h"

#include "rows/SampleRows.h"

#include <algorithm>
#include <cmath>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr bool IsChroma(int inPlane)
{
    return inPlane == 1 || inPlane == 2;
}

/// (sample - offset) / scale is what a float stands for.
struct Meaning {
    float offset;
    float scale;
};
Meaning MeaningOf(const SourcePicture& inPicture, const PlanarForm& inForm, int inPlane)
{
    if (!inForm.yuv) {
        return {0, FullSample(inForm.type)};
    }
    const auto unit = static_cast<float>(1u << (inForm.depth - 8));
    const bool chroma = IsChroma(inPlane);
    if (inPicture.colorSpace.range == color::Range::kFull) {
        return {chroma ? 128 * unit : 0, 256 * unit - 1};
    }
    return {(chroma ? 128 : 16) * unit, (chroma ? 224 : 219) * unit};
}

} // namespace

BoxReduction::Axis BoxReduction::MakeAxis(std::uint32_t inSourceLuma, std::uint32_t inLuma, unsigned inShift,
                                          bool inSitedFirst)
{
    const std::uint32_t source = (inSourceLuma + inShift) >> inShift;
    const std::uint32_t count = ((inLuma + 1) & ~1u) >> inShift; // with the one that fills a pair
    const bool reduced = inSourceLuma > inLuma;
    const double ratio = reduced ? static_cast<double>(inSourceLuma) / inLuma : 1.0;
    // A chroma sample sited with the first of two lies half a luma pixel, so a quarter of its own size,
    // before the middle of the two.
    const double early = inShift && inSitedFirst ? 0.25 : 0;
    Axis axis;
    axis.length = static_cast<float>(ratio);
    axis.spans.reserve(count);
    for (std::uint32_t index = 0; index < count; ++index) {
        const double middle = (index + 0.5 - early) * ratio + early;
        const double begin = std::clamp<double>(middle - ratio / 2, 0, source - 1);
        const double end = std::clamp<double>(middle + ratio / 2, begin, source);
        // A hair over a border is rounding, not part of the next sample.
        const auto first = static_cast<std::uint32_t>(std::floor(begin + 1e-9));
        const auto last =
            std::max(static_cast<std::uint32_t>(std::max(std::ceil(end - 1e-9), 1.0)) - 1, first);
        Span span{first, last - first + 1, 0, 0};
        // What lies beyond the edges repeats the outermost samples.
        const double beyondBegin = begin - (middle - ratio / 2);
        const double beyondEnd = middle + ratio / 2 - end;
        if (span.count == 1) {
            span.firstWeight = axis.length;
        } else {
            span.firstWeight = static_cast<float>(first + 1 - begin + beyondBegin);
            span.lastWeight = static_cast<float>(end - last + beyondEnd);
        }
        axis.spans.push_back(span);
    }
    return axis;
}

BoxReduction::BoxReduction(const SourcePicture& inPicture, std::uint32_t inWidth, std::uint32_t inHeight,
                           bool inPremultiplied)
    : mPicture(inPicture), mForm(PlanarFormOf(inPicture.format)), mPremultiplied(inPremultiplied)
{
    mColumns[0] = MakeAxis(inPicture.width, inWidth, 0, false);
    mColumns[1] = MakeAxis(inPicture.width, inWidth, mForm.chromaShiftX, true);
    mRows[0] = MakeAxis(inPicture.height, inHeight, 0, false);
    mRows[1] = MakeAxis(inPicture.height, inHeight, mForm.chromaShiftY, false);
}

bool BoxReduction::SumRows(int inFirstPlane, int inEndPlane, const Span& inRows, std::uint32_t inRowsStep,
                           std::uint32_t inLeft, std::uint32_t inRight, Workspace& ioWorkspace,
                           bool inAlphaKept) const
{
    // A float's sum of integers is exact up to 2^24, so rows are summed in blocks of as many as words allow.
    constexpr std::uint32_t kBlockRows = 256;
    const bool blocks = inRows.count > kBlockRows;
    RowPlanes samples;
    const int planes = inAlphaKept ? 4 : 3;
    for (int plane = 0; plane < planes; ++plane) {
        ioWorkspace.samples[plane].resize(std::size_t{mPicture.width + 1} * 4 + kLineSlackBytes);
        ioWorkspace.floats[plane].resize(mPicture.width + 1);
        ioWorkspace.sums[plane].resize(mPicture.width + 1);
        samples.planes[plane] = ioWorkspace.samples[plane].data();
        if (plane >= inFirstPlane && plane < inEndPlane) {
            std::fill(ioWorkspace.sums[plane].begin(), ioWorkspace.sums[plane].end(), 0.0f);
            ioWorkspace.block[plane].assign(blocks ? mPicture.width + 1 : 0, 0.0f);
        }
    }
    for (std::uint32_t index = 0; index < inRows.count; ++index) {
        if (!UnpackRow(mPicture, (inRows.first + index) * inRowsStep, inLeft, inRight, samples)) {
            return false;
        }
        const float weight = index == 0                  ? inRows.firstWeight
                             : index + 1 == inRows.count ? inRows.lastWeight
                                                         : 1.0f;
        for (int plane = inEndPlane - 1; plane >= inFirstPlane; --plane) { // alpha first
            const unsigned shift = IsChroma(plane) ? mForm.chromaShiftX : 0;
            const std::size_t left = inLeft >> shift;
            const std::size_t count = ((inRight + shift) >> shift) - left;
            const std::byte* const row = samples.planes[plane] + left * SampleBytes(mForm.type);
            float* const sums = ioWorkspace.sums[plane].data() + left;
            float* const block = blocks ? ioWorkspace.block[plane].data() + left : sums;
            if (mPremultiplied) {
                float* const floats = ioWorkspace.floats[plane].data() + left;
                ToFloats(mForm.type, row, count, FullSample(mForm.type), floats);
                if (plane < 3) {
                    Premultiply(floats, ioWorkspace.floats[3].data() + left, count);
                }
                Accumulate(block, SampleType::kFloat, reinterpret_cast<const std::byte*>(floats), weight,
                           count);
            } else {
                Accumulate(block, mForm.type, row, weight, count);
            }
            if (blocks && (index + 1 == inRows.count || index % kBlockRows == kBlockRows - 1)) {
                Accumulate(sums, SampleType::kFloat, reinterpret_cast<const std::byte*>(block), 1.0f, count);
                std::fill_n(block, count, 0.0f);
            }
        }
    }
    return true;
}

void BoxReduction::SumColumns(int inPlane, const Axis& inAxis, float inRowsLength, std::uint32_t inLeft,
                              std::uint32_t inRight, const Workspace& inWorkspace, float* outRow) const
{
    Meaning meaning = MeaningOf(mPicture, mForm, inPlane);
    if (mPremultiplied) {
        meaning = {0, 1};
    }
    const float* const sums = inWorkspace.sums[inPlane].data();
    const double factor = 1 / (static_cast<double>(inAxis.length) * inRowsLength * meaning.scale);
    const double offset = meaning.offset / static_cast<double>(meaning.scale);
    const Span* const spans = inAxis.spans.data();
    for (std::uint32_t column = inLeft; column < inRight; ++column) {
        const Span& span = spans[column];
        const float* const first = sums + span.first;
        const std::uint32_t last = span.count - 1; // whose weight is 0 when it is the first too
        double sum = static_cast<double>(first[0]) * span.firstWeight +
                     static_cast<double>(first[last]) * span.lastWeight;
        for (std::uint32_t index = 1; index < last; ++index) {
            sum += first[index];
        }
        outRow[column] = static_cast<float>(sum * factor - offset);
    }
}

bool BoxReduction::Row(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight,
                       Workspace& ioWorkspace, const RowPlanes& outPlanes) const
{
    const bool alpha = outPlanes.planes[3] != nullptr;
    const auto make = [&](int inFirstPlane, int inEndPlane, bool inChromaRows) {
        const Axis& rows = mRows[inChromaRows];
        const std::uint32_t row = inChromaRows ? inRow / 2 : inRow;
        const Span& span = rows.spans[std::min<std::size_t>(row, rows.spans.size() - 1)];
        // The columns that the spans of all the planes reach.
        const unsigned shift = mForm.chromaShiftX;
        const std::uint32_t chromaLeft = inLeft >> shift;
        const std::uint32_t chromaRight = (inRight + shift) >> shift;
        const Span& lastLuma = mColumns[0].spans[inRight - 1];
        const Span& lastChroma = mColumns[1].spans[chromaRight - 1];
        const std::uint32_t left =
            std::min(mColumns[0].spans[inLeft].first, mColumns[1].spans[chromaLeft].first << shift);
        const std::uint32_t right =
            std::max(lastLuma.first + lastLuma.count, (lastChroma.first + lastChroma.count) << shift);
        if (!SumRows(inFirstPlane, inEndPlane, span, inChromaRows ? 2 : 1, left & ~1u,
                     std::min(right, mPicture.width), ioWorkspace, alpha)) {
            return false;
        }
        for (int plane = inFirstPlane; plane < inEndPlane; ++plane) {
            const bool chroma = IsChroma(plane);
            SumColumns(plane, mColumns[chroma], rows.length, chroma ? chromaLeft : inLeft,
                       chroma ? chromaRight : inRight, ioWorkspace, outPlanes.As<float>(plane));
        }
        return true;
    };
    if (mForm.chromaShiftY == 0) {
        return make(0, alpha ? 4 : 3, false);
    }
    return make(0, 1, false) && (inRow % 2 || make(1, 3, true));
}

} // namespace VF
