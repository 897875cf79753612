#pragma once

#include <kiomediatypes/ColorSpace.h>
#include <kiomediatypes/PixelFormat.h>

namespace VF {

/// What codes of a YUV form stand for: Y = (code - lumaOffset) / lumaSpan, chroma likewise about its middle.
struct CodeScale {
    double lumaOffset = 0;
    double lumaSpan = 0;
    double chromaOffset = 0;
    double chromaSpan = 0;
    double most = 0; ///< greatest code
};
CodeScale CodeScaleOf(kiomediatypes::PixelFormat inFormat, kiomediatypes::color::Range inRange);
/// Codes that hold four times those of inScale, so that sums of four stay whole.
CodeScale TimesFour(const CodeScale& inScale);

/// Whether the matrix is one that we have coefficients of.
bool IsKnownMatrix(kiomediatypes::color::Matrix inMatrix);
/// Two names of H.273 stand for the same numbers.
bool AreSameMatrix(kiomediatypes::color::Matrix inFirst, kiomediatypes::color::Matrix inSecond);

/// Added to a value from 0 to 65535 it leaves the nearest whole number in the lower mantissa bits (halves
/// become even), the same on every processor.
inline constexpr float kRounding = 8388608.0f;
inline constexpr unsigned kRoundingBits = 0x4B000000;

/// From components of a pixel to codes. Chroma's are for sums of four pixels.
struct ToYUVWeights {
    struct OfCode {
        float blue, green, red;
        float offset; ///< kRounding included
    };
    OfCode luma, cb, cr;
    float most; ///< kRounding included
};
/// @param inComponentMost  value of a component that stands for 1: 255, 65535 or 1.
ToYUVWeights ToYUVWeightsOf(const CodeScale& inScale, kiomediatypes::color::Matrix inMatrix,
                            double inComponentMost);

/// From codes, their offsets subtracted, to components.
struct FromYUVWeights {
    float luma;
    float redCr, greenCb, greenCr, blueCb;
    float lumaOffset, chromaOffset;
    float most; ///< of a component
};
FromYUVWeights FromYUVWeightsOf(const CodeScale& inScale, kiomediatypes::color::Matrix inMatrix,
                                double inComponentMost);

} // namespace VF
