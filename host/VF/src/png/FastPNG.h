#pragma once

#include "ByteSource.h"
#include "PNGHeader.h"

#include <cstddef>

namespace VF {

/// Whether DecodeFastPNG() knows the form: grey, RGB, both with or without alpha, 8 or 16 bits a channel, not
/// interlaced.
bool IsFastPNG(const PNGHeader& inHeader);

/// Decodes the usual forms of PNG in a fraction of the time that DecodePNG() takes. What it takes DecodePNG()
/// takes, and with the same pixels; whether a picture is damaged, or just unusual, it does not tell.
/// Memory: some 400 KB, more for rows that take more than 128 KB.
/// @param outPixels  rows of inHeader's width and frame format, inRowBytes apart, a multiple of 16. Hold
/// anything after a failure.
/// @return false when there is something unusual about it: ask DecodePNG().
bool DecodeFastPNG(IByteSource& inSource, const PNGHeader& inHeader, std::byte* outPixels,
                   std::size_t inRowBytes);

} // namespace VF
