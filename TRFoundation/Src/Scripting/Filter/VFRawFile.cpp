#include "VFRawFile.h"

#include <MF/PixelFormats.h>
#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/PlatformByteStream.h>
#include <kiomediatypes/ColorSpace.h>

#include <array>
#include <cstring>

namespace TRFoundation::Scripting {

using kiocore::filesupport::IPlatformByteStream;

namespace {

constexpr std::size_t kHeaderBytes = 32;
static_assert(sizeof(VFRawFile::Header) == kHeaderBytes);

std::uint32_t LittleEndian(const std::uint8_t* inBytes)
{
    return std::uint32_t{inBytes[0]} | std::uint32_t{inBytes[1]} << 8 | std::uint32_t{inBytes[2]} << 16 |
           std::uint32_t{inBytes[3]} << 24;
}

VFRawFile::Header Decoded(const std::array<std::uint8_t, kHeaderBytes>& inBytes)
{
    const auto field = [&inBytes](std::size_t inNumber) { return LittleEndian(&inBytes[inNumber * 4]); };
    return {field(0), field(1), field(2), field(3), field(4), field(5), field(6), field(7)};
}

} // namespace

VFRawFile::VFRawFile(const kiocore::UTF16String& inPath) : mPath(inPath)
{
    if (!kiocore::filesupport::File(inPath).Exists()) {
        mIsValid = false;
        return;
    }
    IPlatformByteStream stream(inPath);
    std::array<std::uint8_t, kHeaderBytes> bytes{};
    if (stream.ReadBlock(bytes.data(), bytes.size()) != bytes.size()) {
        mIsValid = false; // too short to be one
        return;
    }
    mHeader = Decoded(bytes);
    mIsValid = mHeader.magic == kMagic && mHeader.version == kVersion &&
               stream.Size() == kHeaderBytes + PixelBytes();
}

bool VFRawFile::MatchesFormOf(const VFRawFile& inOther) const
{
    const Header& other = inOther.mHeader;
    return mHeader.pixelFormat == other.pixelFormat && mHeader.width == other.width &&
           mHeader.height == other.height && mHeader.rowBytes == other.rowBytes &&
           mHeader.pixelAspectNumerator == other.pixelAspectNumerator &&
           mHeader.pixelAspectDenominator == other.pixelAspectDenominator;
}

MF::IVideoFrameRef VFRawFile::GetVideoFrame() const
{
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, MF::SDKToBEPixelFormat(mHeader.pixelFormat), mHeader.width,
                              mHeader.height, {mHeader.pixelAspectNumerator, mHeader.pixelAspectDenominator},
                              kiomediatypes::color::GetDefaultColorSpace(), false, true)) {
        return {};
    }
    // Looked at before there is any memory: a header can claim whatever it likes.
    if (PixelBytes() > frame->GetSizeBytes() || !frame->InitializePixels(0)) {
        return {};
    }
    if (const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> memory = frame) {
        std::byte* const pixels = memory->GetWritablePixels();
        ReadRows(pixels);
        // What shorter rows leave over must be the same each time.
        std::memset(pixels + PixelBytes(), 0, frame->GetSizeBytes() - PixelBytes());
    }
    return frame;
}

void VFRawFile::ReadRows(std::byte* outPixels) const
{
    IPlatformByteStream stream(mPath);
    stream.SetPosition(kHeaderBytes);
    for (std::uint32_t row = mHeader.height; row-- > 0;) {
        const std::size_t read =
            stream.ReadBlock(outPixels + std::uint64_t{row} * mHeader.rowBytes, mHeader.rowBytes);
        if (read != mHeader.rowBytes) {
            throw kiocore::kio_exception("The frame file " + kiocore::utility::ToUTF8(mPath) +
                                             " became shorter while it was read: row " +
                                             std::to_string(mHeader.height - 1 - row) + " of " +
                                             std::to_string(mHeader.height) + " has " + std::to_string(read) +
                                             " bytes, expected " + std::to_string(mHeader.rowBytes),
                                         kiocore::kError_DataReadFailed);
        }
    }
}

} // namespace TRFoundation::Scripting
