#include <VF/VideoFrameManipulators.h>

#include "Bands.h"
#include "FramePicture.h"
#include "direct/DirectConversion.h"
#include "rows/SampleRows.h"
#include "scaling/Scaling.h"

#include <VF/VideoFrames.h>
#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace VF {
namespace {

using namespace kiomediatypes;

constexpr unsigned kBandsPerThread = 4; // so that a thread that is held up keeps the others waiting less

std::string FormOf(const MF::IVideoFrameRef& inFrame)
{
    return inFrame ? std::string(NameOf(inFrame->GetPixelFormat())) + " " +
                         std::to_string(inFrame->GetWidth()) + " x " + std::to_string(inFrame->GetHeight())
                   : "nothing";
}

/// Runs inWork(first row, end row) over all rows, in bands that begin at even rows.
template <typename Work>
bool ForRows(const DestinationPicture& inPicture, const Work& inWork)
{
    const std::uint32_t bandRows =
        BandRows(inPicture.height, inPicture.width, 2, BandThreads() * kBandsPerThread);
    return RunBands((inPicture.height + bandRows - 1) / bandRows, [&](unsigned inBand) {
        const std::uint32_t first = inBand * bandRows;
        inWork(first, std::min(first + bandRows, inPicture.height));
        return true;
    });
}

void CopyRows(const SourcePicture& inSource, const DestinationPicture& inDestination, std::uint32_t inFirst,
              std::uint32_t inEnd)
{
    const FrameLayout layout = LayoutOf(inSource.format, inSource.width, inSource.height, true);
    for (int plane = 0; plane < layout.planeCount; ++plane) {
        const bool halved = layout.planes[plane].rows != inSource.height;
        const std::uint32_t end = halved ? (inEnd + 1) / 2 : inEnd;
        for (std::uint32_t row = halved ? inFirst / 2 : inFirst; row < end; ++row) {
            std::memcpy(inDestination.Row(row, plane), inSource.Row(row, plane),
                        layout.planes[plane].usedBytes);
        }
    }
}

/// Between RGB formats, sample by sample: exact, as nothing is mixed.
void ConvertRGBRows(const SourcePicture& inSource, const DestinationPicture& inDestination,
                    std::uint32_t inFirst, std::uint32_t inEnd)
{
    const SampleType from = PlanarFormOf(inSource.format).type;
    const SampleType to = PlanarFormOf(inDestination.format).type;
    const std::size_t bytes = std::size_t{inSource.width} * 4 + kLineSlackBytes;
    std::vector<std::byte> memory(bytes * 9);
    RowPlanes read, written;
    for (int plane = 0; plane < 4; ++plane) {
        read.planes[plane] = memory.data() + bytes * static_cast<std::size_t>(plane);
        written.planes[plane] = from == to ? read.planes[plane] : read.planes[plane] + bytes * 4;
    }
    float* const floats = reinterpret_cast<float*>(memory.data() + bytes * 8);
    for (std::uint32_t row = inFirst; row < inEnd; ++row) {
        UnpackRow(inSource, row, 0, inSource.width, read);
        for (int plane = 0; plane < 4 && from != to; ++plane) {
            ToFloats(from, read.planes[plane], inSource.width, FullSample(from), floats);
            FromFloats(floats, inSource.width, to, written.planes[plane]);
        }
        PackRow(inDestination, row, 0, inSource.width, written);
    }
}

/// Whether equal numbers mean the same in both.
bool MeansTheSame(const SourcePicture& inSource, const DestinationPicture& inDestination,
                  const ColorManagementSettings& inSettings)
{
    const color::ColorSpace& from = inSource.colorSpace;
    const color::ColorSpace& to = inDestination.colorSpace;
    if (inSettings.convertPrimariesAndTransfer &&
        (from.primaries != to.primaries || from.transfer != to.transfer)) {
        return false;
    }
    const bool yuv = IsYUV(inSource.format);
    return yuv == IsYUV(inDestination.format) &&
           (!yuv || (from.matrix == to.matrix && from.range == to.range));
}

bool CopyPicture(const SourcePicture& inSource, const DestinationPicture& inDestination,
                 RenderQuality inQuality, const ColorManagementSettings& inSettings, std::string& outReason)
{
    if (inSource.width != inDestination.width || inSource.height != inDestination.height) {
        return ScalePicture(inSource, inDestination, inQuality, inSettings, outReason);
    }
    const bool means = MeansTheSame(inSource, inDestination, inSettings);
    if (means && inSource.format == inDestination.format) {
        return ForRows(inDestination, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            CopyRows(inSource, inDestination, inFirst, inEnd);
        });
    }
    const bool sameLight = !inSettings.convertPrimariesAndTransfer ||
                           (inSource.colorSpace.primaries == inDestination.colorSpace.primaries &&
                            inSource.colorSpace.transfer == inDestination.colorSpace.transfer);
    if (sameLight && HasDirectConversion(inSource, inDestination, inQuality)) {
        return ForRows(inDestination, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            ConvertRowsDirectly(inSource, inDestination, inFirst, inEnd);
        });
    }
    if (means && !IsYUV(inSource.format)) {
        return ForRows(inDestination, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            ConvertRGBRows(inSource, inDestination, inFirst, inEnd);
        });
    }
    return ScalePicture(inSource, inDestination, inQuality, inSettings, outReason);
}

} // namespace

bool VideoFrameManipulators::CopyFrame(const MF::IVideoFrameRef& inSource,
                                       const MF::IVideoFrameRef& inDestination, RenderQuality inQuality,
                                       const ColorManagementSettings& inSettings)
{
    KIO_HOST_CALL("VF::VideoFrameManipulators::CopyFrame", FormOf(inSource), FormOf(inDestination),
                  static_cast<int>(inQuality), inSettings.convertPrimariesAndTransfer);
    const auto refuse = [&](const std::string& inReason) {
        kiocore::debug::Trace(1, "Frames",
                              "CopyFrame from " + FormOf(inSource) + " to " + FormOf(inDestination) + ": " +
                                  inReason);
        return false;
    };
    SourcePicture source;
    DestinationPicture destination;
    std::string reason;
    if (!GetPicture(inSource, source, reason)) {
        return refuse("the source " + reason);
    }
    if (!GetPicture(inDestination, destination, reason)) {
        return refuse("the destination " + reason);
    }
    if (inSource == inDestination) {
        return true;
    }
    try {
        if (CopyPicture(source, destination, inQuality, inSettings, reason)) {
            return true;
        }
    } catch (const std::bad_alloc&) {
        reason.clear();
    }
    return refuse(reason.empty() ? "out of memory" : reason);
}

} // namespace VF
