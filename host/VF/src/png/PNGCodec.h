#pragma once

#include "PNGHeader.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace VF {

/// Decodes a whole PNG into memory.
/// @param inSource   no byte behind the end of inHeader's data is used. Where its header has changed since
/// inHeader was read, the picture is refused.
/// @param outPixels  rows of inHeader's width and frame format, inRowBytes apart. Hold anything after a
/// failure.
/// @return empty, or why it failed.
std::string DecodePNG(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                      std::size_t inRowBytes);

} // namespace VF
