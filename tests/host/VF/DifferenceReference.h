#pragma once

#include <VF/Difference.h>

#include <array>
#include <vector>

namespace support {

/// What comparing two frames of one format must yield, sample by sample from the definitions.
struct ExpectedDifference {
    VF::ComputedDifference result;
    VF::DifferenceDetails details;
    /// What each pixel is painted as: red, green, blue, alpha as fractions that are not rounded yet.
    std::vector<std::array<double, 4>> painted;
};
ExpectedDifference ExpectDifference(const MF::IVideoFrameRef& inFirst, const MF::IVideoFrameRef& inSecond,
                                    float inTolerance);

/// Fractions as codes of the frame's format, halves up.
double CodeOf(const MF::IVideoFrameRef& inFrame, int inComponent, const std::array<double, 4>& inPainted);

} // namespace support
