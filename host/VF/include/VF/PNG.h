#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiocore/utility/MemoryRecycler.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace VF {

/// Decodes a PNG of any colour type and depth, interlaced or not: up to 8 bits a channel give BGRA of 8 bits,
/// 16 bits give BGRA of 16. Grey becomes equal colours; without alpha (or a transparent colour) the picture
/// is opaque; gamma and colour profiles are not applied. Pixels are taken to be square.
///
/// Every check sum is verified. Sizes that do not fit the machine's memory, or that so few compressed bytes
/// cannot hold, are refused before memory is asked for.
/// @return an empty reference when the bytes are no such picture; trace channel "PNG" tells why.
///
/// Threading: any thread.
KIO_EXPORT MF::IVideoFrameRef DecompressPNG(const kiocore::utility::SharedRecycledMemory& inBytes);
/// The same from a file. It is read in blocks; what shrinks meanwhile, or is written half-way, is refused.
KIO_EXPORT MF::IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath);
/// The same, and tells why there is no frame.
/// @param outReason  one line without the file's name; untouched on success.
KIO_EXPORT MF::IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath, std::string& outReason);

/// Two pictures that are wanted together.
struct PNGPair {
    MF::IVideoFrameRef first;
    MF::IVideoFrameRef second;
    std::string firstReason;  ///< why first is empty; one line
    std::string secondReason; ///< why second is empty
};
/// Decodes two files at once, one on a thread of the CPU-bound executor when there is a free one. Files of
/// the same bytes are decoded once, every check made: both references are one frame then, which was prepared
/// for sharing.
KIO_EXPORT PNGPair DecompressPNGs(const kiocore::UTF16String& inFirstPath,
                                  const kiocore::UTF16String& inSecondPath);

/// Encodes a frame without loss where PNG can: 8-bit formats with 8 bits a channel, all others with 16, YUV
/// converted to RGB. Alpha is written only when some pixel is not opaque. Non-square pixels are noted in a
/// "pHYs" chunk.
/// @param inLevel  0 (fast) to 9 (small). From 4 on files of noisy pictures hardly get smaller, at twice the
/// time.
/// @return an empty handle when the frame has no memory or there was not enough.
KIO_EXPORT kiocore::utility::SharedRecycledMemory CompressPNG(const MF::IVideoFrameRef& inFrame,
                                                              int inLevel = 4);

/// How a picture is encoded.
struct PNGOptions {
    int level = 4; ///< as above
    /// Notes in "tEXt" chunks before the pixels: a keyword of 1 to 79 letters (ISO 8859-1, no spaces at its
    /// ends) and a text. Those that PNG does not allow are left out.
    std::vector<std::pair<std::string, std::string>> texts;
    /// For pictures that are black but for a few pixels or areas, such as differences: rows that are not
    /// named here are known to be opaque black and are not looked at. One bit a row, the lowest first; empty
    /// names all.
    std::span<const std::uint64_t> rowsInUse;
    /// Fast before small, whatever the level: where few pixels are not black, next to nothing but these is
    /// written. Pictures that are not opaque are encoded as others are.
    bool isDifference = false;
};
KIO_EXPORT kiocore::utility::SharedRecycledMemory CompressPNG(const MF::IVideoFrameRef& inFrame,
                                                              const PNGOptions& inOptions);

} // namespace VF
