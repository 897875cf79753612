#pragma once

#include "rows/PixelRows.h"

#include <vector>

namespace VF {

/// Averages what each pixel of a smaller image covers of a larger one, along the axes that get smaller; the
/// others stay as they are. The planes keep their subsampling and siting, and become floats: RGB and Y from
/// 0 to 1, chroma from -0.5 to 0.5.
///
/// Threading: make one, and use it on any threads; each uses a Workspace of its own.
class BoxReduction {
public:
    /// @param inWidth, inHeight  of the smaller image.
    /// @param inPremultiplied  also averages alpha, and colour multiplied by it.
    BoxReduction(const SourcePicture& inPicture, std::uint32_t inWidth, std::uint32_t inHeight,
                 bool inPremultiplied);

    /// Room for the rows being summed.
    class Workspace {
    private:
        friend class BoxReduction;
        std::vector<std::byte> samples[4];
        std::vector<float> floats[4];
        std::vector<float> block[4];
        std::vector<float> sums[4];
    };

    /// Makes one row of the smaller image; the same as UnpackRow about columns, rows and alpha.
    bool Row(std::uint32_t inRow, std::uint32_t inLeft, std::uint32_t inRight, Workspace& ioWorkspace,
             const RowPlanes& outPlanes) const;

private:
    struct Span { // of source samples under one result
        std::uint32_t first;
        std::uint32_t count;
        float firstWeight; // those between count whole
        float lastWeight;
    };
    struct Axis {
        std::vector<Span> spans;
        float length = 1; // of each span
    };
    static Axis MakeAxis(std::uint32_t inSourceLuma, std::uint32_t inLuma, unsigned inShift,
                         bool inSitedFirst);
    bool SumRows(int inFirstPlane, int inEndPlane, const Span& inRows, std::uint32_t inRowsStep,
                 std::uint32_t inLeft, std::uint32_t inRight, Workspace& ioWorkspace, bool inAlphaKept) const;
    void SumColumns(int inPlane, const Axis& inAxis, float inRowsLength, std::uint32_t inLeft,
                    std::uint32_t inRight, const Workspace& inWorkspace, float* outRow) const;

    const SourcePicture mPicture;
    const PlanarForm mForm;
    const bool mPremultiplied;
    Axis mColumns[2]; // luma, chroma
    Axis mRows[2];
};

} // namespace VF
