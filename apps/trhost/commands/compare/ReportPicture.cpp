#include "ReportPicture.h"

#include "PairComparison.h"

#include "../../support/FrameOutput.h"

#include <MF/BinaryData.h>
#include <VF/PNG.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>

#include <algorithm>
#include <cstring>

namespace trhost::compare {

namespace {

using namespace kiomediatypes;

[[noreturn]] void ThrowNotMade(const MF::IVideoFrameRef& inPicture)
{
    throw Failure(kExit_Failed,
                  Text("$$$/Halcyon/TrHost/Report/NoPicture=the picture of @0 could not be made "
                       "one for the report; --trace Frames tells why",
                       {DescribeFrame(inPicture)}));
}

PictureSize ReportSize(const MF::IVideoFrameRef& inPicture)
{
    const std::uint32_t width = inPicture->GetWidth();
    const std::uint32_t height = inPicture->GetHeight();
    if (width <= kReportPictureWidth) {
        return {width, height};
    }
    const std::uint64_t scaled = (std::uint64_t(height) * kReportPictureWidth + width / 2) / width;
    return {kReportPictureWidth, std::max(1u, std::uint32_t(scaled))};
}

MF::IVideoFrameRef MakeBGRA(const MF::IVideoFrameRef& inLike, PictureSize inSize)
{
    MF::IVideoFrameRef made;
    if (!VF::CreateVideoFrame(made, kPixelFormat_BGRA_4444_8u, inSize.width, inSize.height,
                              kPixelAspectRatio_Square, false, false) ||
        !made->InitializePixels(0)) {
        ThrowNotMade(inLike);
    }
    return made;
}

MF::IVideoFrameRef AsBGRA(const MF::IVideoFrameRef& inPicture, PictureSize inSize)
{
    if (inPicture->GetPixelFormat() == kPixelFormat_BGRA_4444_8u && inPicture->GetWidth() == inSize.width) {
        return inPicture;
    }
    const MF::IVideoFrameRef made = MakeBGRA(inPicture, inSize);
    if (!VF::VideoFrameManipulators::CopyFrame(inPicture, made, kRenderQuality_Medium, {})) {
        ThrowNotMade(inPicture);
    }
    return made;
}

std::string Encoded(const MF::IVideoFrameRef& inPicture, const VF::PNGOptions& inOptions)
{
    const auto png = VF::CompressPNG(inPicture, inOptions);
    if (!png) {
        ThrowNotMade(inPicture);
    }
    return MF::EncodeBinaryDataToUTF8String(MF::BinaryData(png.bytes.get(), png.size));
}

/// Takes each row's pixels together into the fewer pixels of outRow.
void TakeLargest(const std::uint8_t* inRow, std::uint32_t inWidth, std::uint8_t* ioRow,
                 std::uint32_t inSmallWidth)
{
    for (std::uint32_t x = 0; x < inWidth; ++x) {
        std::uint8_t* const small = ioRow + std::uint64_t(x) * inSmallWidth / inWidth * 4;
        for (int channel = 0; channel < 4; ++channel) {
            small[channel] = std::max(small[channel], inRow[std::size_t(x) * 4 + std::size_t(channel)]);
        }
    }
}

MF::IVideoFrameRef ReducedToLargest(const MF::IVideoFrameRef& inPicture, PictureSize inSize)
{
    const MF::IVideoFrameRef made = MakeBGRA(inPicture, inSize);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> from(inPicture);
    const kiocore::InterfaceRef<VF::IVideoFrameMemoryAccess> to(made);
    const std::size_t usedBytes = std::size_t(inSize.width) * 4;
    for (std::size_t row = 0; row < inSize.height; ++row) {
        std::memset(to->GetWritablePixels() + row * to->GetRowBytes(), 0, usedBytes);
    }
    for (std::size_t row = 0; row < inPicture->GetHeight(); ++row) {
        const std::size_t small = row * inSize.height / inPicture->GetHeight();
        TakeLargest(reinterpret_cast<const std::uint8_t*>(from->GetPixels() + row * from->GetRowBytes()),
                    inPicture->GetWidth(),
                    reinterpret_cast<std::uint8_t*>(to->GetWritablePixels() + small * to->GetRowBytes()),
                    inSize.width);
    }
    return made;
}

} // namespace

std::string ReportPicture(const MF::IVideoFrameRef& inPicture)
{
    VF::PNGOptions options;
    options.level = 2; // little larger than the best, and made in a fraction of the time
    return Encoded(AsBGRA(inPicture, ReportSize(inPicture)), options);
}

std::string ReportDifference(const MF::IVideoFrameRef& inPicture)
{
    const PictureSize size = ReportSize(inPicture);
    MF::IVideoFrameRef picture = AsBGRA(inPicture, {inPicture->GetWidth(), inPicture->GetHeight()});
    if (size.width != inPicture->GetWidth()) {
        picture = ReducedToLargest(picture, size);
    }
    VF::PNGOptions options;
    options.isDifference = true;
    return Encoded(picture, options);
}

} // namespace trhost::compare
