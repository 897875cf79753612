#pragma once

#include "PNGHeader.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace VF {

/// Decodes a whole PNG into memory.
/// @param inSize     up to the end of its data; no byte beyond is read.
/// @param outPixels  rows of inHeader's width and frame format, inRowBytes apart. Hold anything after a
/// failure.
/// @return empty, or why it failed.
std::string DecodePNG(const std::byte* inBytes, std::size_t inSize, const PNGHeader& inHeader,
                      std::byte* outPixels, std::size_t inRowBytes);

} // namespace VF
