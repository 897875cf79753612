#include <VF/PNG.h>

#include "Bands.h"
#include "FastPNG.h"
#include "PNGCodec.h"
#include "PNGHeader.h"
#include "platform/PNGFile.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <string>

namespace VF {

using namespace kiomediatypes;
using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;

namespace {

constexpr const char* kChannel = "PNG";

/// @return why there is no frame; empty when outFrame is set.
std::string Decompress(IByteSource& inSource, IVideoFrameRef& outFrame)
{
    PNGHeader header;
    if (std::string reason = ReadPNGHeader(inSource, header); !reason.empty()) {
        return reason;
    }
    IVideoFrameRef frame;
    if (!CreateVideoFrame(frame, header.FrameFormat(), header.width, header.height, kPixelAspectRatio_Square,
                          false, false) ||
        !frame->InitializePixels(0)) {
        return "there is no memory for a frame of " + std::to_string(header.width) + " x " +
               std::to_string(header.height) + " pixels";
    }
    const InterfaceRef<IVideoFrameMemoryAccess> access = frame;
    std::byte* const pixels = access->GetWritablePixels();
    // What the fast decoder does not take may just be unusual; the other one decides, and says what is wrong.
    std::string reason;
    if (!IsFastPNG(header) || !DecodeFastPNG(inSource, header, pixels, access->GetRowBytes())) {
        reason = DecodePNG(inSource, header, pixels, access->GetRowBytes());
    }
    if (reason.empty()) {
        outFrame = frame;
    }
    return reason;
}

/// One picture of a file.
struct Picture {
    platform::PNGFile file;
    std::string reason; // why there is no frame; empty before that is known
    IVideoFrameRef frame;

    void Open(const kiocore::UTF16String& inPath) { reason = file.Open(inPath); }
    void Decode()
    {
        if (reason.empty()) {
            reason = Decompress(file, frame);
        }
    }
    void TellReason(const kiocore::UTF16String& inPath) const
    {
        if (!reason.empty()) {
            kiocore::debug::Trace(1, kChannel,
                                  "No picture in " + kiocore::utility::ToUTF8(inPath) + ": " + reason);
        }
    }
};

/// Looks no further than to the first block that differs.
bool HaveSameBytes(platform::PNGFile& inFirst, platform::PNGFile& inSecond)
{
    if (inFirst.IsSameAs(inSecond)) {
        return true;
    }
    if (inFirst.Size() != inSecond.Size()) {
        return false;
    }
    constexpr std::size_t kFirstBlock = 4 * 1024; // where different pictures mostly differ
    constexpr std::size_t kBlock = 64 * 1024;
    const std::unique_ptr<std::byte[]> blocks(new (std::nothrow) std::byte[2 * kBlock]);
    for (std::uint64_t at = 0; blocks && at < inFirst.Size();) {
        const std::size_t wanted = at == 0 ? kFirstBlock : kBlock;
        const std::size_t size = inFirst.ReadAt(at, blocks.get(), wanted);
        if (size == 0 || inSecond.ReadAt(at, blocks.get() + kBlock, wanted) != size ||
            std::memcmp(blocks.get(), blocks.get() + kBlock, size) != 0) {
            return false;
        }
        at += size;
    }
    return blocks != nullptr;
}

/// Whether all pixels are. Looks at 8 bytes at once: two pixels, or one.
bool IsOpaque(const PNGSource& inSource)
{
    const bool is16 = inSource.format == kPixelFormat_BGRA_4444_16u;
    const std::size_t usedBytes = std::size_t{inSource.width} * (is16 ? 8 : 4);
    std::byte mask[8] = {};
    if (is16) {
        mask[6] = mask[7] = std::byte{0xFF};
    } else {
        const int alpha = inSource.format == kPixelFormat_ARGB_4444_8u ? 0 : 3;
        mask[alpha] = mask[4 + alpha] = std::byte{0xFF};
    }
    std::uint64_t wanted;
    std::memcpy(&wanted, mask, sizeof(wanted));
    for (std::uint32_t y = 0; y < inSource.height; ++y) {
        const std::byte* const row = inSource.pixels + y * inSource.rowBytes;
        std::uint64_t all = ~std::uint64_t{0};
        std::size_t at = 0;
        for (; at + 8 <= usedBytes; at += 8) {
            std::uint64_t bytes;
            std::memcpy(&bytes, row + at, sizeof(bytes));
            all &= bytes;
        }
        if (at < usedBytes) {
            std::uint64_t bytes = ~std::uint64_t{0};
            std::memcpy(&bytes, row + at, usedBytes - at);
            all &= bytes;
        }
        if ((all & wanted) != wanted) {
            return false;
        }
    }
    return true;
}

/// A wide pixel comes fewer times to a unit of length. Terms are made to fit the chunk's 31 bits.
void NotePixelAspect(PixelAspectRatio inRatio, PNGSource& ioSource)
{
    if (inRatio.numerator == 0 || inRatio.denominator == 0 || inRatio.numerator == inRatio.denominator) {
        return;
    }
    const std::uint32_t divisor = std::gcd(inRatio.numerator, inRatio.denominator);
    std::uint32_t width = inRatio.numerator / divisor;
    std::uint32_t height = inRatio.denominator / divisor;
    constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
    if (std::max(width, height) > kMost) {
        width = std::max(1u, width / 2);
        height = std::max(1u, height / 2);
    }
    ioSource.pixelsPerUnitX = height;
    ioSource.pixelsPerUnitY = width;
}

PixelFormat EncodableFormat(PixelFormat inFormat)
{
    if (inFormat == kPixelFormat_BGRA_4444_8u || inFormat == kPixelFormat_ARGB_4444_8u ||
        inFormat == kPixelFormat_BGRA_4444_16u) {
        return inFormat;
    }
    return DepthOf(inFormat) == PixelDepth::k8 ? kPixelFormat_BGRA_4444_8u : kPixelFormat_BGRA_4444_16u;
}

/// The frame itself, or a copy in a format that can be encoded; empty when that could not be made.
IVideoFrameRef MakeEncodable(const IVideoFrameRef& inFrame)
{
    const PixelFormat format = EncodableFormat(inFrame->GetPixelFormat());
    if (format == inFrame->GetPixelFormat()) {
        return inFrame;
    }
    IVideoFrameRef copy;
    if (!CreateVideoFrame(copy, format, inFrame->GetWidth(), inFrame->GetHeight(),
                          inFrame->GetPixelAspectRatio(), inFrame->GetColorSpace(), false, false) ||
        !copy->InitializePixels(0) ||
        !VideoFrameManipulators::CopyFrame(inFrame, copy, kRenderQuality_High, {})) {
        return {};
    }
    return copy;
}

/// @return why there are no bytes; empty when outBytes is set.
std::string Compress(const IVideoFrameRef& inFrame, int inLevel, SharedRecycledMemory& outBytes)
{
    const InterfaceRef<IVideoFrameMemoryAccess> given = inFrame;
    if (!given || !given->GetPixels()) {
        return inFrame ? "it has no memory" : "there is no frame";
    }
    const IVideoFrameRef frame = MakeEncodable(inFrame);
    if (!frame) {
        return std::string("it could not be converted from ") + NameOf(inFrame->GetPixelFormat());
    }
    const InterfaceRef<IVideoFrameMemoryAccess> access = frame;
    PNGSource source;
    source.format = frame->GetPixelFormat();
    source.width = frame->GetWidth();
    source.height = frame->GetHeight();
    source.pixels = access->GetPixels();
    source.rowBytes = access->GetRowBytes();
    source.isOpaque = IsOpaque(source);
    NotePixelAspect(frame->GetPixelAspectRatio(), source);
    return EncodePNG(source, std::clamp(inLevel, 0, 9), outBytes);
}

} // namespace

IVideoFrameRef DecompressPNG(const SharedRecycledMemory& inBytes)
{
    KIO_HOST_CALL("VF::DecompressPNG", inBytes.size);
    IVideoFrameRef frame;
    MemoryBytes bytes(inBytes.bytes.get(), inBytes.size);
    if (const std::string reason = inBytes ? Decompress(bytes, frame) : "there are no bytes";
        !reason.empty()) {
        kiocore::debug::Trace(1, kChannel,
                              "No picture in " + std::to_string(inBytes.size) + " bytes: " + reason);
    }
    return frame;
}

IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath)
{
    std::string reason;
    return DecompressPNG(inPath, reason);
}

IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath, std::string& outReason)
{
    KIO_HOST_CALL("VF::DecompressPNG", inPath);
    Picture picture;
    picture.Open(inPath);
    picture.Decode();
    picture.TellReason(inPath);
    if (!picture.frame) {
        outReason = picture.reason;
    }
    return picture.frame;
}

PNGPair DecompressPNGs(const kiocore::UTF16String& inFirstPath, const kiocore::UTF16String& inSecondPath)
{
    KIO_HOST_CALL("VF::DecompressPNG", inFirstPath);
    KIO_HOST_CALL("VF::DecompressPNG", inSecondPath);
    Picture pictures[2];
    Picture& first = pictures[0];
    Picture& second = pictures[1];
    first.Open(inFirstPath);
    second.Open(inSecondPath);
    if (first.reason.empty() && second.reason.empty() && HaveSameBytes(first.file, second.file)) {
        first.Decode();
        second.reason = first.reason;
        if (first.frame) {
            first.frame->PrepareForSharing();
            second.frame = first.frame;
        }
    } else {
        const bool done = RunBands(2, [&](unsigned inPicture) {
            pictures[inPicture].Decode();
            return true; // the other one is wanted in any case
        });
        for (Picture& picture : pictures) {
            if (!done && !picture.frame && picture.reason.empty()) {
                picture.reason = "out of memory";
            }
        }
    }
    first.TellReason(inFirstPath);
    second.TellReason(inSecondPath);
    return {first.frame, second.frame, first.reason, second.reason};
}

SharedRecycledMemory CompressPNG(const IVideoFrameRef& inFrame, int inLevel)
{
    KIO_HOST_CALL("VF::CompressPNG", inFrame ? NameOf(inFrame->GetPixelFormat()) : "none",
                  inFrame ? inFrame->GetWidth() : 0u, inFrame ? inFrame->GetHeight() : 0u, inLevel);
    SharedRecycledMemory bytes;
    if (const std::string reason = Compress(inFrame, inLevel, bytes); !reason.empty()) {
        kiocore::debug::Trace(1, kChannel, "No PNG of a frame: " + reason);
    }
    return bytes;
}

} // namespace VF
