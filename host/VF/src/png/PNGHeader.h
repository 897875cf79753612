#pragma once

#include "ByteSource.h"

#include <kiomediatypes/PixelFormat.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace VF {

/// What the chunk headers of a PNG say, before anything of it is decompressed.
struct PNGHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bitDepth = 0;  ///< of a channel, or of a palette index
    int colorType = 0; ///< 0 grey, 2 RGB, 3 palette, 4 grey and alpha, 6 RGB and alpha
    bool isInterlaced = false;
    std::uint64_t compressedBytes = 0; ///< of all "IDAT" chunks together
    std::uint64_t endOfData = 0;       ///< right behind "IEND"

    /// 8 or 16 bits of BGRA.
    kiomediatypes::PixelFormat FrameFormat() const;
    /// What decompression must yield: rows of each pass with their filter bytes.
    std::uint64_t FilteredBytes() const;
};

inline constexpr std::uint32_t kMostChunkBytes = 0x7FFFFFFF;

/// Walks over the headers of all chunks up to "IEND", of other files over their first bytes only: a wrong
/// guess at a large file costs nothing. Check sums are left to the decoder.
/// @param outHeader  set when the result is empty.
/// @return empty, or why no frame can be made of it: something that no PNG has, bytes that are missing, a
/// size
///     beyond what a frame, this machine or so few compressed bytes can hold.
std::string ReadPNGHeader(IByteSource& inSource, PNGHeader& outHeader);

} // namespace VF
