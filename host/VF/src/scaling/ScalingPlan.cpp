#include "ScalingPlan.h"

#include "Bands.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace VF {

using namespace kiomediatypes;

namespace {

constexpr std::uint32_t kMostPhaseRows = 64;
constexpr std::uint32_t kChromaReachRows = 8; // of the widest filter, when chroma is halved

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

} // namespace

ScalingPlan MakeScalingPlan(const SourcePicture& inSource, const DestinationPicture& inDestination,
                            RenderQuality inQuality, bool inConverted, AlphaUse inAlpha)
{
    ScalingPlan plan;
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

Band BandAt(const ScalingPlan& inPlan, std::uint32_t inFirst, std::uint32_t inRows)
{
    const std::uint32_t end = std::min(inFirst + inRows, inPlan.graph.destination.height);
    const std::uint32_t firstMade = inFirst - std::min(inFirst, inPlan.surplus);
    return {inFirst, end, firstMade,
            std::min(end + inPlan.surplus, inPlan.graph.destination.height) - firstMade};
}

std::uint32_t ChooseBandRows(const ScalingPlan& inPlan)
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

GraphPlan GraphOf(const ScalingPlan& inPlan, std::uint32_t inFirst, std::uint32_t inRows,
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

} // namespace VF
