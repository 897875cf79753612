#pragma once

#include <kiocore/utility/MemoryRecycler.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace support {

/// PNG files put together chunk by chunk, so that a test may also leave out, doubt or damage a part.

inline constexpr std::string_view kPNGSignature("\x89PNG\r\n\x1A\n", 8);

std::string BigEndian(std::uint64_t inValue, int inBytes);
/// Length, type, data, and their check sum.
std::string Chunk(std::string_view inType, std::string_view inData = {});
std::string HeaderChunk(std::uint32_t inWidth, std::uint32_t inHeight, int inDepth, int inColorType,
                        int inInterlace = 0);
std::string Compressed(std::string_view inBytes);

/// What a file holds: samples as they are stored, of any kind that there is.
struct StoredPicture {
    std::uint32_t width = 1;
    std::uint32_t height = 1;
    int depth = 8;
    int colorType = 6;
    bool isInterlaced = false;
    std::function<std::uint32_t(std::uint32_t x, std::uint32_t y, int channel)> sample;

    int Channels() const;
};
/// Its rows with all five filters in turn, all passes; not compressed.
std::string FilteredRows(const StoredPicture& inPicture);
/// The whole file. @param inChunksBeforeData  between header and data: palette, transparent colour.
std::string PNGFile(const StoredPicture& inPicture, std::string_view inChunksBeforeData = {});

kiocore::utility::SharedRecycledMemory ToMemory(std::string_view inBytes);

} // namespace support
