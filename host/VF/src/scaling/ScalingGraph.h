#pragma once

#include "rows/PixelRows.h"

#include <memory>
#include <string>

namespace VF {

enum class Filter : std::uint8_t { kTriangle, kCubic, kLanczos };

/// An image as the graph sees it: planes of one type.
struct GraphImage {
    std::uint32_t width = 0; ///< a multiple of what the chroma's shift asks for, as is the height
    std::uint32_t height = 0;
    PlanarForm form;
    bool alpha = false; ///< a fourth plane, which goes its own way: colour is neither multiplied nor divided
    kiomediatypes::color::ColorSpace colorSpace;

    friend bool operator==(const GraphImage&, const GraphImage&) = default;
};

/// All that makes one graph different from another.
struct GraphPlan {
    GraphImage source;
    GraphImage destination;
    /// The part of the source that fills the destination, in pixels; it may end beyond either edge.
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    Filter filter = Filter::kCubic;
    Filter chromaFilter = Filter::kCubic;
    bool convertPrimariesAndTransfer = false;

    friend bool operator==(const GraphPlan&, const GraphPlan&) = default;
};

/// Brings the rows of the source, as the graph asks for them.
class IRowReader {
public:
    virtual ~IRowReader() = default;
    /// With vertically halved chroma inRow is even and stands for itself and the next.
    /// @param outRows  of this row and the next.
    /// @return false to give up.
    virtual bool Read(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight,
                      const RowPlanes (&outRows)[2]) = 0;
};
/// Takes the rows of the destination away, top down, possibly in several columns.
class IRowWriter {
public:
    virtual ~IRowWriter() = default;
    virtual void Write(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight,
                       const RowPlanes (&inRows)[2]) = 0;
};

/// A zimg filter graph, ready to run. Building one costs about as much as converting a 1080p frame, so the
/// last ones used are kept.
///
/// Threading: any thread; a graph may run on several at once.
class ScalingGraph {
public:
    virtual ~ScalingGraph() = default;

    /// @param outError  why it could not be built.
    /// @return empty then.
    static std::shared_ptr<const ScalingGraph> Get(const GraphPlan& inPlan, std::string& outError);

    /// @param outError  why it failed; untouched when the reader gave up.
    virtual bool Run(IRowReader& inReader, IRowWriter& inWriter, std::string& outError) const = 0;
};

} // namespace VF
