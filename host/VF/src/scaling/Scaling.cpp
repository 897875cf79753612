#include "Scaling.h"

#include "Bands.h"
#include "ScalingPlan.h"
#include "frames/FrameMemory.h"
#include "rows/SampleRows.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace VF {

using namespace kiomediatypes;

namespace {

class Reader final : public IRowReader {
public:
    Reader(const ScalingPlan& inPlan, std::uint32_t inSourceFirst) : mPlan(inPlan), mFirst(inSourceFirst)
    {
        if (mPlan.alpha == AlphaUse::kMultiplied && !mPlan.box) {
            for (int plane = 0; plane < 4; ++plane) {
                mSamples[plane].resize(std::size_t{mPlan.graph.source.width} * 4 + kLineSlackBytes);
            }
        }
    }

    bool Read(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight,
              const RowPlanes (&outRows)[2]) override
    {
        const unsigned rows = 1u << mPlan.graph.source.form.chromaShiftY;
        for (unsigned index = 0; index < rows; ++index) {
            if (!ReadOne(mFirst + inRow + index, inLeft, inRight, outRows[index])) {
                return false;
            }
        }
        return true;
    }

private:
    bool ReadOne(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight, const RowPlanes& outRow)
    {
        const bool checked = mPlan.alpha == AlphaUse::kOpaque;
        if (mPlan.box) {
            return mPlan.box->Row(inRow, inLeft, inRight, mWorkspace, outRow) || !checked;
        }
        if (mPlan.alpha != AlphaUse::kMultiplied) {
            return UnpackRow(mPlan.source, inRow, inLeft, inRight, outRow) || !checked;
        }
        RowPlanes samples;
        for (int plane = 0; plane < 4; ++plane) {
            samples.planes[plane] = mSamples[plane].data();
        }
        UnpackRow(mPlan.source, inRow, inLeft, inRight, samples);
        const SampleType type = PlanarFormOf(mPlan.source.format).type;
        const std::size_t count = inRight - inLeft;
        for (int plane = 3; plane >= 0; --plane) {
            float* const floats = outRow.As<float>(plane) + inLeft;
            ToFloats(type, samples.planes[plane] + inLeft * SampleBytes(type), count, FullSample(type),
                     floats);
            if (plane < 3) {
                Premultiply(floats, outRow.As<float>(3) + inLeft, count);
            }
        }
        return true;
    }

    const ScalingPlan& mPlan;
    const std::uint32_t mFirst;
    BoxReduction::Workspace mWorkspace;
    std::vector<std::byte> mSamples[4];
};

class Writer final : public IRowWriter {
public:
    Writer(const ScalingPlan& inPlan, const Band& inBand) : mPlan(inPlan), mBand(inBand)
    {
        if (mPlan.alpha == AlphaUse::kMultiplied) {
            mColor.resize(mPlan.graph.destination.width);
            for (int plane = 0; plane < 4; ++plane) {
                mSamples[plane].resize(std::size_t{mPlan.graph.destination.width} * 4 + kLineSlackBytes);
            }
        }
    }

    void Write(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight,
               const RowPlanes (&inRows)[2]) override
    {
        const unsigned rows = 1u << mPlan.graph.destination.form.chromaShiftY;
        for (unsigned index = 0; index < rows; ++index) {
            const std::uint32_t row = mBand.firstMade + inRow + index;
            if (row >= mBand.first && row < mBand.end) {
                WriteOne(row, inLeft, inRight, inRows[index]);
            }
        }
    }

private:
    void WriteOne(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight, const RowPlanes& inPlanes)
    {
        if (mPlan.alpha != AlphaUse::kMultiplied) {
            PackRow(mPlan.destination, inRow, inLeft, inRight, inPlanes);
            return;
        }
        const SampleType type = PlanarFormOf(mPlan.destination.format).type;
        const std::size_t count = inRight - inLeft;
        RowPlanes samples;
        for (int plane = 0; plane < 4; ++plane) {
            const float* floats = inPlanes.As<float>(plane) + inLeft;
            if (plane < 3) {
                std::copy(floats, floats + count, mColor.begin());
                Unpremultiply(mColor.data(), inPlanes.As<float>(3) + inLeft, count);
                floats = mColor.data();
            }
            samples.planes[plane] = mSamples[plane].data();
            FromFloats(floats, count, type, samples.planes[plane] + inLeft * SampleBytes(type));
        }
        PackRow(mPlan.destination, inRow, inLeft, inRight, samples);
    }

    const ScalingPlan& mPlan;
    const Band mBand;
    std::vector<float> mColor;
    std::vector<std::byte> mSamples[4];
};

/// @param outStopped  set when a picture taken for opaque is not.
bool RunPlan(const ScalingPlan& inPlan, bool& outStopped, std::string& outError)
{
    const std::uint32_t rows = inPlan.graph.destination.height;
    const std::uint32_t bandRows = ChooseBandRows(inPlan);
    std::mutex lock; // guards outError, which only failures touch
    std::atomic<bool> stopped{false};
    const bool done = RunBands((rows + bandRows - 1) / bandRows, [&](unsigned inBand) {
        const Band band = BandAt(inPlan, inBand * bandRows, bandRows);
        std::uint32_t sourceFirst = 0;
        std::string error;
        const auto graph =
            ScalingGraph::Get(GraphOf(inPlan, band.firstMade, band.rowsMade, sourceFirst), error);
        if (graph) {
            Reader reader(inPlan, sourceFirst);
            Writer writer(inPlan, band);
            if (graph->Run(reader, writer, error)) {
                return true;
            }
            if (error.empty()) {
                stopped = true;
            }
        }
        const std::lock_guard guard(lock);
        outError = error;
        return false;
    });
    outStopped = stopped;
    if (!done && !stopped && outError.empty()) {
        outError = "out of memory";
    }
    return done;
}

/// Looks at some rows only: what they do not show, the conversion finds.
bool SeemsOpaque(const SourcePicture& inSource)
{
    constexpr std::uint32_t kStep = 16;
    std::vector<std::byte> samples(std::size_t{inSource.width} * 4 + kLineSlackBytes);
    RowPlanes planes;
    planes.planes[0] = planes.planes[1] = planes.planes[2] = samples.data();
    for (std::uint32_t row = 0; row < inSource.height; row += kStep) {
        if (!UnpackRow(inSource, row, 0, inSource.width, planes)) {
            return false;
        }
    }
    return true;
}

/// Scales colour and alpha in the source's own colours, and converts the result.
bool ScaleThenConvert(const SourcePicture& inSource, const DestinationPicture& inDestination,
                      RenderQuality inQuality, const ColorManagementSettings& inSettings,
                      std::string& outError)
{
    constexpr std::size_t kPixelBytes = 16;
    const std::size_t rowBytes = inDestination.width * kPixelBytes;
    const FrameMemory memory = AllocateFrameMemory(rowBytes * inDestination.height, false);
    if (!memory) {
        outError = "out of memory";
        return false;
    }
    DestinationPicture scaled;
    scaled.format = kPixelFormat_BGRA_4444_32f;
    scaled.colorSpace = inSource.colorSpace;
    scaled.width = inDestination.width;
    scaled.height = inDestination.height;
    scaled.planes[0] = {memory.get(), rowBytes};
    bool stopped = false;
    if (!RunPlan(MakeScalingPlan(inSource, scaled, inQuality, false, AlphaUse::kMultiplied), stopped,
                 outError)) {
        return false;
    }
    SourcePicture again;
    again.format = scaled.format;
    again.colorSpace = scaled.colorSpace;
    again.width = scaled.width;
    again.height = scaled.height;
    again.planes[0] = {memory.get(), rowBytes};
    return ScalePicture(again, inDestination, inQuality, inSettings, outError);
}

} // namespace

bool ScalePicture(const SourcePicture& inSource, const DestinationPicture& inDestination,
                  RenderQuality inQuality, const ColorManagementSettings& inSettings, std::string& outError)
{
    const bool scaled = inSource.width != inDestination.width || inSource.height != inDestination.height;
    const bool converted = inSettings.convertPrimariesAndTransfer &&
                           (inSource.colorSpace.primaries != inDestination.colorSpace.primaries ||
                            inSource.colorSpace.transfer != inDestination.colorSpace.transfer);
    bool stopped = false;
    if (!HasAlpha(inSource.format) || !scaled) {
        const bool carried = HasAlpha(inSource.format) && HasAlpha(inDestination.format);
        return RunPlan(MakeScalingPlan(inSource, inDestination, inQuality, converted,
                                       carried ? AlphaUse::kCarried : AlphaUse::kNone),
                       stopped, outError);
    }
    if (SeemsOpaque(inSource)) {
        if (RunPlan(MakeScalingPlan(inSource, inDestination, inQuality, converted, AlphaUse::kOpaque),
                    stopped, outError)) {
            return true;
        }
        if (!stopped) {
            return false;
        }
    }
    if (converted || IsYUV(inDestination.format)) {
        return ScaleThenConvert(inSource, inDestination, inQuality, inSettings, outError);
    }
    return RunPlan(MakeScalingPlan(inSource, inDestination, inQuality, false, AlphaUse::kMultiplied), stopped,
                   outError);
}

} // namespace VF
