#pragma once

#include "BoxReduction.h"
#include "ScalingGraph.h"

#include <kiomediatypes/RenderQuality.h>

#include <optional>

namespace VF {

enum class AlphaUse {
    kNone,       // there is none, or nobody wants it
    kCarried,    // it goes beside the colours, which are not mixed
    kOpaque,     // there is, but so far all is opaque: stop where it is not
    kMultiplied, // colour counts by it
};

/// What stands between the source and the bands.
struct ScalingPlan {
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

/// @param inConverted  also primaries and transfer.
ScalingPlan MakeScalingPlan(const SourcePicture& inSource, const DestinationPicture& inDestination,
                            kiomediatypes::RenderQuality inQuality, bool inConverted, AlphaUse inAlpha);

/// What a band writes, and what it makes for that.
struct Band {
    std::uint32_t first;
    std::uint32_t end;
    std::uint32_t firstMade;
    std::uint32_t rowsMade;
};
Band BandAt(const ScalingPlan& inPlan, std::uint32_t inFirst, std::uint32_t inRows);
/// How many rows of the destination to do at a time.
std::uint32_t ChooseBandRows(const ScalingPlan& inPlan);

/// The graph for some rows of the destination, and the first row of the source that enters it. All bands
/// together give what the whole would give.
GraphPlan GraphOf(const ScalingPlan& inPlan, std::uint32_t inFirst, std::uint32_t inRows,
                  std::uint32_t& outSourceFirst);

} // namespace VF
