#pragma once

#include "FFmpegSupport.h"

#include <cstdint>

namespace trhost::media {

/// Rows of decoded pictures into rows of our packed formats, without loss.

/// 4:2:2 in three planes. An odd last pixel is said twice.
void PackUYVYRow(const std::uint8_t* inY, const std::uint8_t* inCb, const std::uint8_t* inCr, int inWidth,
                 std::uint8_t* outRow);
/// 4:2:2 as Y Cb Y Cr.
void SwapYUYVRow(const std::uint8_t* inRow, int inWidth, std::uint8_t* outRow);
/// 10-bit 4:2:2 in three planes; the last group is filled up with its last pixel.
void PackV210Row(const std::uint16_t* inY, const std::uint16_t* inCb, const std::uint16_t* inCr, int inWidth,
                 std::uint8_t* outRow);

/// Whether a format is RGB (or a palette) of 8 bits a channel that PackBGRARow reads.
bool IsRGB8(int inFormat);
/// A row of such a picture as blue, green, red, alpha.
void PackBGRARow(const AVFrame& inPicture, int inRow, std::uint8_t* outRow);

/// A row of a picture in planes of floats (AV_PIX_FMT_GBRPF32, AV_PIX_FMT_GBRAPF32).
void PackFloatRow(const AVFrame& inPicture, int inRow, float* outRow);

} // namespace trhost::media
