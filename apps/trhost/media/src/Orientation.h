#pragma once

#include "ColorTags.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace trhost::media {

/// How a stored picture must be turned to stand upright: rows and columns swapped first, then either
/// mirrored.
struct Orientation {
    bool isTransposed = false;
    bool isMirroredX = false; ///< left and right of the result
    bool isMirroredY = false; ///< top and bottom of the result

    explicit operator bool() const { return isTransposed || isMirroredX || isMirroredY; }
};

/// What the container's display matrix asks for. Turns that are no multiple of a quarter are not done.
/// @param outIsExact  false when the matrix asks for something else.
Orientation OrientationOf(const AVStream& inStream, bool& outIsExact);

/// One plane of pixels of any size. Borrowed.
struct ConstPlane {
    const std::uint8_t* pixels = nullptr;
    std::ptrdiff_t rowBytes = 0;
    int width = 0;
    int height = 0;
};
struct Plane {
    std::uint8_t* pixels = nullptr;
    std::ptrdiff_t rowBytes = 0;
};

/// Copies a plane upright.
/// @param outPixels  has room for the turned size.
void CopyUpright(const ConstPlane& inFrom, int inPixelBytes, const Orientation& inOrientation,
                 Plane outPixels);

/// A plane of chroma in memory of its own.
struct ChromaPlane {
    std::vector<std::uint8_t> samples;
    int width = 0;
    int height = 0;

    ConstPlane View() const { return {samples.data(), width, width, height}; }
};
ChromaPlane MakeChromaPlane(int inWidth, int inHeight);

/// Where chroma comes to lie when its picture is turned upright. Only of 4:2:0.
/// @param inWidth, inHeight  luma samples of the stored picture.
ChromaPosition Upright(ChromaPosition inPosition, int inWidth, int inHeight,
                       const Orientation& inOrientation);

/// Moves 8-bit chroma to where our formats have it, by linear interpolation: {0, 1} where it is halved both
/// ways, {0, 0} where inIsHalvedBothWays is false.
void MoveChroma(const ConstPlane& inFrom, ChromaPosition inPosition, bool inIsHalvedBothWays,
                Plane outSamples);

} // namespace trhost::media
