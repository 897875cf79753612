#include "Scaling.h"

#include "Bands.h"
#include "BoxReduction.h"
#include "FrameMemory.h"
#include "SampleRows.h"
#include "ScalingGraph.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <numeric>
#include <optional>
#include <vector>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr std::uint64_t kLeastBandPixels = 128 * 1024; // below, a thread is not worth waking
constexpr std::uint32_t kMostPhaseRows = 64;
constexpr std::uint32_t kChromaReachRows = 8; // of the widest filter, when chroma is halved

enum class AlphaUse {
    kNone,       // there is none, or nobody wants it
    kCarried,    // it goes beside the colours, which are not mixed
    kOpaque,     // there is, but so far all is opaque: stop where it is not
    kMultiplied, // colour counts by it
};

constexpr std::uint32_t RoundUp(std::uint32_t inValue, std::uint32_t inStep)
{
    return (inValue + inStep - 1) / inStep * inStep;
}
constexpr std::uint32_t RoundDown(std::uint32_t inValue, std::uint32_t inStep)
{
    return inValue / inStep * inStep;
}

double SupportOf(Filter inFilter)
{
    return inFilter == Filter::kTriangle ? 1 : inFilter == Filter::kCubic ? 2 : 3;
}

/// What stands between the source and the bands.
struct Plan {
    SourcePicture source;
    DestinationPicture destination;
    AlphaUse alpha = AlphaUse::kNone;
    std::optional<BoxReduction> box; // before the graph
    std::uint32_t width = 0;         // of what enters the graph
    std::uint32_t height = 0;
    std::uint32_t unitY = 1;  // rows that belong together
    std::uint32_t margin = 0; // rows of the source that a row reaches up and down; 0: only its own
    // Rows above and below its own that a band makes and drops, for what zimg does within the destination.
    std::uint32_t surplus = 0;
    std::uint32_t phaseRows = 1; // after so many rows of the destination the positions repeat
    GraphPlan graph;             // for the whole picture
};

/// The part of a side of the source that lies under inPart of the destination's: the very number for which
/// the graph computes the scale of the whole.
double SourceUnder(std::uint32_t inPart, std::uint32_t inSource, std::uint32_t inDestination)
{
    const double scale = static_cast<double>(inDestination) / inSource;
    double part = static_cast<double>(inPart) * inSource / inDestination;
    for (int step = 0; step < 4 && inPart / part != scale; ++step) {
        part = std::nextafter(part, inPart / part > scale ? 1e9 : 0.0);
    }
    return part;
}

/// What a band writes, and what it makes for that.
struct Band {
    std::uint32_t first;
    std::uint32_t end;
    std::uint32_t firstMade;
    std::uint32_t rowsMade;
};
Band BandAt(const Plan& inPlan, std::uint32_t inFirst, std::uint32_t inRows)
{
    const std::uint32_t end = std::min(inFirst + inRows, inPlan.graph.destination.height);
    const std::uint32_t firstMade = inFirst - std::min(inFirst, inPlan.surplus);
    return {inFirst, end, firstMade,
            std::min(end + inPlan.surplus, inPlan.graph.destination.height) - firstMade};
}

/// The graph for some rows of the destination, and the first row of the source that enters it. All bands
/// together give what the whole would give.
GraphPlan GraphOf(const Plan& inPlan, std::uint32_t inFirst, std::uint32_t inRows,
                  std::uint32_t& outSourceFirst)
{
    GraphPlan band = inPlan.graph;
    outSourceFirst = 0;
    if (inRows == band.destination.height) {
        return band;
    }
    band.destination.height = inRows;
    if (inPlan.margin == 0) {
        outSourceFirst = inFirst;
        band.source.height = inRows;
        band.height = inRows;
        return band;
    }
    const std::int64_t source = inPlan.height;
    const std::int64_t destination = inPlan.destination.height;
    const std::int64_t first = inFirst * source / destination - inPlan.margin;
    const std::int64_t end = ((inFirst + inRows) * source + destination - 1) / destination + inPlan.margin;
    outSourceFirst = RoundDown(static_cast<std::uint32_t>(std::max<std::int64_t>(first, 0)), inPlan.unitY);
    const std::uint32_t sourceEnd =
        RoundUp(static_cast<std::uint32_t>(std::min<std::int64_t>(end, source)), inPlan.unitY);
    band.source.height = sourceEnd - outSourceFirst;
    band.top = static_cast<double>(inFirst * source - outSourceFirst * destination) /
               static_cast<double>(destination);
    band.height = SourceUnder(inRows, inPlan.height, inPlan.destination.height);
    return band;
}

/// zimg orders its steps by what is larger, source or destination. Its bands must not differ in that.
bool OrdersAlike(const GraphPlan& inWhole, const GraphPlan& inBand)
{
    if (inWhole.source.form == inWhole.destination.form &&
        inWhole.source.colorSpace == inWhole.destination.colorSpace) {
        return true; // there is one step
    }
    const auto rowsGrow = [](const GraphPlan& inPlan) {
        return inPlan.source.height < inPlan.destination.height;
    };
    const auto pixelsGrow = [](const GraphPlan& inPlan) {
        return std::uint64_t{inPlan.source.width} * inPlan.source.height <
               std::uint64_t{inPlan.destination.width} * inPlan.destination.height;
    };
    return rowsGrow(inWhole) == rowsGrow(inBand) && pixelsGrow(inWhole) == pixelsGrow(inBand);
}

std::uint32_t ChooseBandRows(const Plan& inPlan)
{
    const std::uint32_t rows = inPlan.graph.destination.height;
    const std::uint64_t pixels =
        std::max(std::uint64_t{inPlan.source.width} * inPlan.source.height,
                 std::uint64_t{inPlan.destination.width} * inPlan.destination.height) /
        rows;
    // Bands that begin in the same phase share a graph; else each needs its own, and building costs.
    const std::uint32_t phase = inPlan.phaseRows * inPlan.unitY;
    const bool shared = phase <= kMostPhaseRows;
    const std::uint32_t unit = shared ? phase : inPlan.unitY;
    for (unsigned bands = BandThreads() * (shared ? 4 : 1); bands > 1; bands /= 2) {
        const std::uint32_t bandRows = BandRows(rows, pixels, unit, bands);
        bool alike = true;
        for (std::uint32_t first = 0; first < rows && alike; first += bandRows) {
            std::uint32_t sourceFirst = 0;
            const Band band = BandAt(inPlan, first, bandRows);
            alike = OrdersAlike(inPlan.graph, GraphOf(inPlan, band.firstMade, band.rowsMade, sourceFirst));
        }
        if (alike) {
            return bandRows;
        }
    }
    return rows;
}

class Reader final : public IRowReader {
public:
    Reader(const Plan& inPlan, std::uint32_t inSourceFirst) : mPlan(inPlan), mFirst(inSourceFirst)
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

    const Plan& mPlan;
    const std::uint32_t mFirst;
    BoxReduction::Workspace mWorkspace;
    std::vector<std::byte> mSamples[4];
};

class Writer final : public IRowWriter {
public:
    Writer(const Plan& inPlan, const Band& inBand) : mPlan(inPlan), mBand(inBand)
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

    const Plan& mPlan;
    const Band mBand;
    std::vector<float> mColor;
    std::vector<std::byte> mSamples[4];
};

/// @param outStopped  set when a picture taken for opaque is not.
bool RunPlan(const Plan& inPlan, bool& outStopped, std::string& outError)
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

GraphImage ImageOf(PixelFormat inFormat, const color::ColorSpace& inColorSpace, std::uint32_t inWidth,
                   std::uint32_t inHeight, bool inFloats, bool inConverted)
{
    GraphImage image;
    image.width = inWidth;
    image.height = inHeight;
    image.form = PlanarFormOf(inFormat);
    if (inFloats) {
        image.form.type = SampleType::kFloat;
        image.form.depth = 32;
    }
    // What does not count stays at its default, so that equal graphs are found.
    if (image.form.yuv) {
        image.colorSpace.matrix = inColorSpace.matrix;
        image.colorSpace.range = inColorSpace.range;
    }
    if (inConverted) {
        image.colorSpace.primaries = inColorSpace.primaries;
        image.colorSpace.transfer = inColorSpace.transfer;
    }
    return image;
}

Plan MakePlan(const SourcePicture& inSource, const DestinationPicture& inDestination, RenderQuality inQuality,
              bool inConverted, AlphaUse inAlpha)
{
    Plan plan;
    plan.source = inSource;
    plan.destination = inDestination;
    plan.alpha = inAlpha;
    plan.width = inSource.width;
    plan.height = inSource.height;
    const bool multiplied = inAlpha == AlphaUse::kMultiplied;
    const bool scaled = inSource.width != inDestination.width || inSource.height != inDestination.height;
    if (inQuality == kRenderQuality_Draft &&
        (inSource.width > inDestination.width || inSource.height > inDestination.height)) {
        plan.width = std::min(inSource.width, inDestination.width);
        plan.height = std::min(inSource.height, inDestination.height);
        plan.box.emplace(inSource, plan.width, plan.height, multiplied);
    }

    const PlanarForm sourceForm = PlanarFormOf(inSource.format);
    const PlanarForm form = PlanarFormOf(inDestination.format);
    // Both sides get whole pairs where either has them, so that equal sizes stay equal.
    const std::uint32_t unitX = 1u << std::max(sourceForm.chromaShiftX, form.chromaShiftX);
    plan.unitY = 1u << std::max(sourceForm.chromaShiftY, form.chromaShiftY);
    GraphPlan& graph = plan.graph;
    graph.source = ImageOf(inSource.format, inSource.colorSpace, RoundUp(plan.width, unitX),
                           RoundUp(plan.height, plan.unitY), multiplied || plan.box.has_value(), inConverted);
    graph.destination =
        ImageOf(inDestination.format, inDestination.colorSpace, RoundUp(inDestination.width, unitX),
                RoundUp(inDestination.height, plan.unitY), multiplied, inConverted);
    graph.source.alpha = graph.destination.alpha = multiplied || inAlpha == AlphaUse::kCarried;
    graph.convertPrimariesAndTransfer = inConverted;
    graph.width = SourceUnder(graph.destination.width, plan.width, inDestination.width);
    graph.height = SourceUnder(graph.destination.height, plan.height, inDestination.height);
    switch (inQuality) {
    case kRenderQuality_Draft:
        graph.filter = graph.chromaFilter = Filter::kTriangle;
        break;
    case kRenderQuality_Any:
    case kRenderQuality_Medium:
        graph.filter = Filter::kCubic;
        graph.chromaFilter = scaled ? Filter::kCubic : Filter::kTriangle;
        break;
    case kRenderQuality_High:
        graph.filter = graph.chromaFilter = Filter::kLanczos;
        break;
    }
    const bool mixesRows =
        plan.height != inDestination.height || sourceForm.chromaShiftY || form.chromaShiftY;
    if (mixesRows) {
        // Twice for halved chroma, twice for two steps one after the other.
        const double reduction = std::max(1.0, 2.0 * plan.height / inDestination.height);
        plan.margin = static_cast<std::uint32_t>(std::ceil(4 * SupportOf(graph.filter) * reduction)) + 4;
    }
    if (form.chromaShiftY &&
        (!sourceForm.yuv || !(graph.source.colorSpace == graph.destination.colorSpace))) {
        plan.surplus = kChromaReachRows; // colours are converted first, their chroma is halved then
    }
    plan.phaseRows = inDestination.height / std::gcd(plan.height, inDestination.height);
    return plan;
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
    if (!RunPlan(MakePlan(inSource, scaled, inQuality, false, AlphaUse::kMultiplied), stopped, outError)) {
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

std::uint32_t BandRows(std::uint32_t inRows, std::uint64_t inPixelsPerRow, std::uint32_t inUnit,
                       unsigned inMostBands)
{
    const std::uint64_t worth = std::max<std::uint64_t>(inRows * inPixelsPerRow / kLeastBandPixels, 1);
    const auto bands = static_cast<std::uint32_t>(std::min<std::uint64_t>(worth, inMostBands));
    return std::min(RoundUp((inRows + bands - 1) / bands, inUnit), inRows);
}

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
        return RunPlan(MakePlan(inSource, inDestination, inQuality, converted,
                                carried ? AlphaUse::kCarried : AlphaUse::kNone),
                       stopped, outError);
    }
    if (SeemsOpaque(inSource)) {
        if (RunPlan(MakePlan(inSource, inDestination, inQuality, converted, AlphaUse::kOpaque), stopped,
                    outError)) {
            return true;
        }
        if (!stopped) {
            return false;
        }
    }
    if (converted || IsYUV(inDestination.format)) {
        return ScaleThenConvert(inSource, inDestination, inQuality, inSettings, outError);
    }
    return RunPlan(MakePlan(inSource, inDestination, inQuality, false, AlphaUse::kMultiplied), stopped,
                   outError);
}

} // namespace VF
