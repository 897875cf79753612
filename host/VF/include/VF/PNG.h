#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/Export.h>
#include <kiocore/utility/MemoryRecycler.h>
#include <kiocore/utility/UTF16String.h>

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
/// The same from a file.
KIO_EXPORT MF::IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath);

/// Encodes a frame without loss where PNG can: 8-bit formats with 8 bits a channel, all others with 16, YUV
/// converted to RGB. Alpha is written only when some pixel is not opaque. Non-square pixels are noted in a
/// "pHYs" chunk.
/// @param inLevel  0 (fast) to 9 (small). From 4 on files of noisy pictures hardly get smaller, at twice the
/// time.
/// @return an empty handle when the frame has no memory or there was not enough.
KIO_EXPORT kiocore::utility::SharedRecycledMemory CompressPNG(const MF::IVideoFrameRef& inFrame,
                                                              int inLevel = 4);

} // namespace VF
