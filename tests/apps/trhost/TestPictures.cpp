#include "TestPictures.h"

#include <support/TemporaryFolder.h>

#include <VF/PNG.h>
#include <VF/VideoFrames.h>

#include <random>
#include <stdexcept>

namespace trhosttest {

namespace {

using namespace kiomediatypes;

std::string Little(std::uint32_t inNumber)
{
    return {char(inNumber), char(inNumber >> 8), char(inNumber >> 16), char(inNumber >> 24)};
}

std::size_t Big(const std::string& inBytes, std::size_t inAt)
{
    std::size_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number = number << 8 | std::uint8_t(inBytes.at(inAt + i));
    }
    return number;
}

} // namespace

MF::IVideoFrameRef MakeNoise(std::uint32_t inWidth, std::uint32_t inHeight, unsigned inSeed,
                             PixelFormat inFormat)
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, kPixelAspectRatio_Square, true, false) ||
        !frame->InitializePixels(0)) {
        throw std::runtime_error("no frame");
    }
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(frame);
    const VF::FrameLayout layout = VF::LayoutOf(inFormat, inWidth, inHeight, true);
    const std::size_t pixelBytes = inFormat == kPixelFormat_BGRA_4444_16u ? 8 : 4;
    std::mt19937 random(inSeed);
    for (std::uint32_t row = 0; row < inHeight; ++row) {
        std::byte* const bytes = memory->GetWritablePixels() + row * memory->GetRowBytes();
        for (std::size_t i = 0; i < layout.planes[0].usedBytes; ++i) {
            const bool isAlpha = HasAlpha(inFormat) && i % pixelBytes >= pixelBytes * 3 / 4;
            bytes[i] = isAlpha ? std::byte{255} : std::byte(random() & 0x7F); // room to add and to take away
        }
    }
    return frame;
}

void ChangeByte(const MF::IVideoFrameRef& ioFrame, std::uint32_t inRow, std::size_t inByte, int inBy)
{
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory(ioFrame);
    std::byte& byte = memory->GetWritablePixels()[inRow * memory->GetRowBytes() + inByte];
    byte = std::byte(int(byte) + inBy);
}

void WritePNG(const std::filesystem::path& inPath, const MF::IVideoFrameRef& inFrame)
{
    const auto png = VF::CompressPNG(inFrame);
    support::WriteFile(inPath, {reinterpret_cast<const char*>(png.bytes.get()), png.size});
}

void WriteNoise(const std::filesystem::path& inPath, std::uint32_t inWidth, std::uint32_t inHeight,
                unsigned inSeed)
{
    WritePNG(inPath, MakeNoise(inWidth, inHeight, inSeed));
}

std::string RawFile::Header() const
{
    return Little(magic) + Little(version) + format + Little(width) + Little(height) + Little(rowBytes) +
           Little(numerator) + Little(denominator);
}

std::vector<std::pair<std::string, std::string>> NotesOfPNG(const std::filesystem::path& inPath)
{
    const std::string bytes = support::ReadFile(inPath);
    std::vector<std::pair<std::string, std::string>> notes;
    for (std::size_t at = 8; at + 12 <= bytes.size(); at += 12 + Big(bytes, at)) {
        if (bytes.substr(at + 4, 4) == "tEXt") {
            const std::string note = bytes.substr(at + 8, Big(bytes, at));
            const std::size_t zero = note.find('\0');
            notes.emplace_back(note.substr(0, zero), note.substr(zero + 1));
        }
    }
    return notes;
}

} // namespace trhosttest
