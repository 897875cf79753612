#pragma once

#include "DifferenceRows.h"
#include "Picture.h"

#include <memory>

namespace VF {

/// Two pictures of one size, and how they are compared.
struct Comparison {
    SourcePicture first;
    SourcePicture second;
    /// Their common format, or BGRA that rows are converted to.
    kiomediatypes::PixelFormat form = kiomediatypes::kPixelFormat_Any;
    float tolerance = 0;
    /// The same size, in the form or in RGB; null: nothing is painted.
    const DestinationPicture* painted = nullptr;

    bool IsPaintedInPlace() const { return painted && painted->planes[0].pixels == second.planes[0].pixels; }
};

/// Compares and paints rows, with lines of its own between the steps.
///
/// Threading: one thread; several have one each.
class RowComparer {
public:
    virtual ~RowComparer() = default;
    virtual RowDifference Compare(std::uint32_t inRow) = 0;

protected:
    RowComparer() = default;
};
/// @param inComparison  borrowed.
/// @throws std::bad_alloc.
std::unique_ptr<RowComparer> MakeRowComparer(const Comparison& inComparison);
std::unique_ptr<RowComparer> MakeYUVRowComparer(const Comparison& inComparison);

/// The greatest whole difference that does not exceed the tolerance.
/// @param inMost  the code that stands for 1.
std::uint32_t ToleranceInCodes(float inTolerance, std::uint32_t inMost);

/// Where painted rows of RGB go: straight into the picture, or by way of a line that is converted.
class PaintedRows {
public:
    /// @param inForm  BGRA or ARGB.
    /// @param inIsInPlace  the rows were read just now, so they lie in the cache.
    PaintedRows(const DestinationPicture* inPainted, kiomediatypes::PixelFormat inForm, std::uint32_t inWidth,
                bool inIsInPlace = false);
    ~PaintedRows();

    Painting How() const { return mPainting; }
    /// Where to paint the row.
    std::byte* Begin(std::uint32_t inRow);
    /// It is painted.
    void End(std::uint32_t inRow);

private:
    const DestinationPicture* const mPainted;
    Painting mPainting = Painting::kNone;
    SourcePicture mLine; // every row of it is the same line; empty where it is not needed
    std::unique_ptr<std::byte[]> mLineBytes;
};

} // namespace VF
