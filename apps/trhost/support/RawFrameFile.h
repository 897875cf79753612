#pragma once

#include "Failure.h"

#include <MF/VideoFrame.h>

#include <cstdint>
#include <string>
#include <string_view>

/// Raw frame files (docs/frame-files.md): a header and the rows of a picture, the last one first.
namespace trhost {

inline constexpr std::uint32_t kRawFrameMagic = 0x56465257; // "WRFV"
inline constexpr std::uint32_t kRawFrameVersion = 0x00010002;
inline constexpr std::uint64_t kRawFrameHeaderBytes = 32;

/// The header as it lies in the file.
struct RawFrameHeader {
    std::uint32_t magic = 0;
    std::uint32_t version = 0;
    std::uint32_t format = 0; ///< four-character code
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rowBytes = 0; ///< of one stored row
    std::uint32_t aspectNumerator = 0;
    std::uint32_t aspectDenominator = 0;

    /// Header and rows.
    std::uint64_t ExpectedFileBytes() const
    {
        return kRawFrameHeaderBytes + std::uint64_t(height) * rowBytes;
    }
    /// kPixelFormat_Any when no frame has that format.
    kiomediatypes::PixelFormat GetPixelFormat() const;
    /// "BGRA"; other than printable letters as "\x1f".
    std::string FormatCode() const;
};

/// What a file holds, and whether that is a frame.
struct RawFrameInfo {
    bool hasHeader = false; ///< the file is long enough for one
    RawFrameHeader header;
    std::uint64_t fileBytes = 0;
    UTF16String reason; ///< why it is no frame: found and expected, one line; empty when it is one

    bool IsValid() const { return reason.empty(); }
};

/// Whether a file starts like a raw frame.
bool IsRawFrameMagic(std::string_view inFirstBytes);

/// Reads the header and checks it; no pixels.
/// @throws kiocore::file_exception when the file cannot be read.
///
/// Threading: any thread, as for all that follow.
RawFrameInfo ReadRawFrameInfo(const UTF16String& inPath);

/// Reads the picture. Memory is asked for only when the file holds all that goes into it; rows may be stored
/// longer than the picture needs them. Colours are taken to be the default ones of the format.
/// @param outReason  why there is none: what was found, what was expected; untouched on success.
/// @return an empty reference when the file is no valid frame, or memory could not be had.
/// @throws kiocore::file_exception when the file cannot be read.
MF::IVideoFrameRef ReadRawFrame(const UTF16String& inPath, UTF16String& outReason);

/// The file's bytes for a picture.
/// @param inFrame  of one plane, with memory.
std::string RawFrameBytes(const MF::IVideoFrameRef& inFrame);

} // namespace trhost
