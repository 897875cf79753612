#include <VF/PNG.h>

#include "PNGDifferenceEncoder.h"
#include "PNGEncoder.h"

#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>
#include <string>

namespace VF {

using namespace kiomediatypes;
using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;

namespace {

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
std::string Compress(const IVideoFrameRef& inFrame, const PNGOptions& inOptions,
                     SharedRecycledMemory& outBytes)
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
    source.rowsInUse = inOptions.rowsInUse;
    source.texts = inOptions.texts;
    NotePixelAspect(frame->GetPixelAspectRatio(), source);
    try {
        if (inOptions.isDifference && EncodeDifferencePNG(source, outBytes)) {
            return {};
        }
        source.isOpaque = IsOpaque(source);
        return EncodePNG(source, std::clamp(inOptions.level, 0, 9), outBytes);
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
}

} // namespace

SharedRecycledMemory CompressPNG(const IVideoFrameRef& inFrame, int inLevel)
{
    PNGOptions options;
    options.level = inLevel;
    return CompressPNG(inFrame, options);
}

SharedRecycledMemory CompressPNG(const IVideoFrameRef& inFrame, const PNGOptions& inOptions)
{
    KIO_HOST_CALL("VF::CompressPNG", inFrame ? NameOf(inFrame->GetPixelFormat()) : "none",
                  inFrame ? inFrame->GetWidth() : 0u, inFrame ? inFrame->GetHeight() : 0u, inOptions.level,
                  inOptions.isDifference);
    SharedRecycledMemory bytes;
    if (const std::string reason = Compress(inFrame, inOptions, bytes); !reason.empty()) {
        kiocore::debug::Trace(1, "PNG", "No PNG of a frame: " + reason);
    }
    return bytes;
}

} // namespace VF
