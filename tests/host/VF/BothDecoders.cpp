#include "BothDecoders.h"

#include <png/FastPNG.h>
#include <png/PNGCodec.h>

#include <functional>

namespace support {
namespace {

VF::MemoryBytes BytesOf(std::string_view inFile)
{
    return {reinterpret_cast<const std::byte*>(inFile.data()), inFile.size()};
}

using Decoder =
    std::function<std::string(const VF::PNGHeader& inHeader, std::byte* outPixels, std::size_t inRowBytes)>;

Decoded Decode(VF::IByteSource& inSource, const Decoder& inDecoder)
{
    Decoded decoded;
    VF::PNGHeader header;
    decoded.reason = VF::ReadPNGHeader(inSource, header);
    if (!decoded.reason.empty()) {
        return decoded;
    }
    const std::size_t used = std::size_t{header.width} * (header.bitDepth == 16 ? 8 : 4);
    const std::size_t rowBytes = (used + 63) / 64 * 64;
    std::vector<std::byte> pixels(rowBytes * header.height, std::byte{0xA5});
    decoded.reason = inDecoder(header, pixels.data(), rowBytes);
    decoded.isTaken = decoded.reason.empty();
    for (std::uint32_t y = 0; decoded.isTaken && y < header.height; ++y) {
        const auto row = pixels.begin() + static_cast<std::ptrdiff_t>(y * rowBytes);
        decoded.pixels.insert(decoded.pixels.end(), row, row + static_cast<std::ptrdiff_t>(used));
    }
    return decoded;
}

} // namespace

Decoded DecodeWithLibpng(std::string_view inFile)
{
    VF::MemoryBytes bytes = BytesOf(inFile);
    return Decode(bytes, [&](const VF::PNGHeader& inHeader, std::byte* outPixels, std::size_t inRowBytes) {
        return VF::DecodePNG(bytes, inHeader, outPixels, inRowBytes);
    });
}

Decoded DecodeFast(VF::IByteSource& inSource)
{
    return Decode(inSource, [&](const VF::PNGHeader& inHeader, std::byte* outPixels, std::size_t inRowBytes) {
        return VF::IsFastPNG(inHeader) && VF::DecodeFastPNG(inSource, inHeader, outPixels, inRowBytes)
                   ? ""
                   : "unusual";
    });
}

Decoded DecodeFast(std::string_view inFile)
{
    VF::MemoryBytes bytes = BytesOf(inFile);
    return DecodeFast(bytes);
}

} // namespace support
