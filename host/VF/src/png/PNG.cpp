#include <VF/PNG.h>

#include "Bands.h"
#include "FastPNG.h"
#include "PNGCodec.h"
#include "PNGHeader.h"
#include "platform/PNGFile.h"

#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <cstring>
#include <memory>
#include <new>
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

} // namespace VF
