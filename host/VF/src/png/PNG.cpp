#include <VF/PNG.h>

#include "PNGCodec.h"
#include "PNGHeader.h"
#include "platform/PNGFile.h"

#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <string>

namespace VF {

using namespace kiomediatypes;
using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;

namespace {

constexpr const char* kChannel = "PNG";

/// @return why there is no frame; empty when outFrame is set.
std::string Decompress(const SharedRecycledMemory& inBytes, IVideoFrameRef& outFrame)
{
    if (!inBytes) {
        return "there are no bytes";
    }
    PNGHeader header;
    if (std::string reason = ReadPNGHeader(inBytes.bytes.get(), inBytes.size, header); !reason.empty()) {
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
    std::string reason = DecodePNG(inBytes.bytes.get(), header.endOfData, header, access->GetWritablePixels(),
                                   access->GetRowBytes());
    if (reason.empty()) {
        outFrame = frame;
    }
    return reason;
}

} // namespace

IVideoFrameRef DecompressPNG(const SharedRecycledMemory& inBytes)
{
    KIO_HOST_CALL("VF::DecompressPNG", inBytes.size);
    IVideoFrameRef frame;
    if (const std::string reason = Decompress(inBytes, frame); !reason.empty()) {
        kiocore::debug::Trace(1, kChannel,
                              "No picture in " + std::to_string(inBytes.size) + " bytes: " + reason);
    }
    return frame;
}

IVideoFrameRef DecompressPNG(const kiocore::UTF16String& inPath)
{
    KIO_HOST_CALL("VF::DecompressPNG", inPath);
    IVideoFrameRef frame;
    SharedRecycledMemory bytes;
    std::string reason = platform::ReadPNGFile(inPath, bytes);
    if (reason.empty()) {
        reason = Decompress(bytes, frame);
    }
    if (!reason.empty()) {
        kiocore::debug::Trace(1, kChannel,
                              "No picture in " + kiocore::utility::ToUTF8(inPath) + ": " + reason);
    }
    return frame;
}

} // namespace VF
