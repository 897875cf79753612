#pragma once

#include <MF/VideoFrame.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace trhosttest {

/// An opaque picture of noise that depends on the seed; 8-bit BGRA unless said otherwise.
MF::IVideoFrameRef MakeNoise(std::uint32_t inWidth, std::uint32_t inHeight, unsigned inSeed = 1,
                             kiomediatypes::PixelFormat inFormat = kiomediatypes::kPixelFormat_BGRA_4444_8u);
/// Adds to a stored byte of a frame: of BGRA, pixel and channel follow from where it lies.
void ChangeByte(const MF::IVideoFrameRef& ioFrame, std::uint32_t inRow, std::size_t inByte, int inBy);

void WritePNG(const std::filesystem::path& inPath, const MF::IVideoFrameRef& inFrame);
/// A PNG of noise.
void WriteNoise(const std::filesystem::path& inPath, std::uint32_t inWidth = 16, std::uint32_t inHeight = 9,
                unsigned inSeed = 1);

/// A raw frame file, field by field.
struct RawFile {
    std::uint32_t magic = 0x56465257;
    std::uint32_t version = 0x00010002;
    std::string format = "BGRA";
    std::uint32_t width = 4;
    std::uint32_t height = 2;
    std::uint32_t rowBytes = 16;
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;
    std::string rows = "abcdefghijklmnopABCDEFGHIJKLMNOP"; ///< as they are stored

    std::string Header() const;
    std::string Bytes() const { return Header() + rows; }
};

/// The texts of a PNG's "tEXt" chunks, in their order.
std::vector<std::pair<std::string, std::string>> NotesOfPNG(const std::filesystem::path& inPath);

} // namespace trhosttest
