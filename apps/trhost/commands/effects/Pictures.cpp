#include "Pictures.h"

#include "../../support/AbsolutePath.h"
#include "../../support/Failure.h"
#include "../../support/FrameOutput.h"
#include "../../support/Interrupt.h"
#include "../../support/MediaLoader.h"

#include <VF/PNG.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::utility::ToUTF16;

/// By its first bytes: the name says nothing reliable.
bool IsPNG(const std::string& inPath)
{
    constexpr char kSignature[] = "\x89PNG\r\n\x1A\n";
    char bytes[8] = {};
    std::ifstream file(inPath, std::ios::binary);
    if (!file) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NoPicture=the file @0 cannot be read",
                                         {kiocore::filesupport::FromNative(inPath)}));
    }
    file.read(bytes, sizeof(bytes));
    return file && std::equal(bytes, bytes + sizeof(bytes), kSignature);
}

/// The place of a "%d" or "%03d": its start and its end.
struct NumberPlace {
    std::size_t start;
    std::size_t end;
    int digits;
};

std::optional<NumberPlace> FindNumber(const std::string& inPattern)
{
    for (std::size_t start = inPattern.find('%'); start != std::string::npos;
         start = inPattern.find('%', start + 1)) {
        std::size_t at = start + 1;
        int digits = 0;
        while (at < inPattern.size() && inPattern[at] >= '0' && inPattern[at] <= '9' && digits < 100) {
            digits = digits * 10 + (inPattern[at++] - '0');
        }
        if (at < inPattern.size() && inPattern[at] == 'd') {
            return NumberPlace{start, at + 1, digits};
        }
    }
    return std::nullopt;
}

} // namespace

PictureSource::PictureSource(const std::string& inPath)
{
    if (IsPNG(inPath)) {
        mStill = VF::DecompressPNG(AbsolutePath(inPath));
        if (!mStill) {
            throw Failure(kExit_Negative,
                          Text("$$$/Halcyon/TrHost/DamagedPNG=@0 is a damaged PNG; --trace PNG tells why",
                               {kiocore::filesupport::FromNative(inPath)}));
        }
        return;
    }
    mClip = LoadMediaModule().OpenVideo(inPath, -1, InterruptCancel());
    if (mClip->Stream().framesPerSecond > 0) {
        mFramesPerSecond = mClip->Stream().framesPerSecond;
    }
}

MF::IVideoFrameRef PictureSource::Picture(int inNumber)
{
    if (mStill) {
        return mStill;
    }
    // Its middle: at its start a container's coarse clock may still show the one before.
    return mClip->FrameAt(TickTime::FromSeconds((inNumber + 0.5) / mFramesPerSecond), InterruptCancel());
}

MF::IVideoFrameRef ConvertPicture(const MF::IVideoFrameRef& inPicture, PixelFormat inFormat,
                                  std::uint32_t inWidth, std::uint32_t inHeight)
{
    if (inPicture->GetPixelFormat() == inFormat && inPicture->GetWidth() == inWidth &&
        inPicture->GetHeight() == inHeight) {
        return inPicture;
    }
    MF::IVideoFrameRef converted;
    if (!VF::CreateVideoFrame(converted, inFormat, inWidth, inHeight, inPicture->GetPixelAspectRatio(),
                              inPicture->GetColorSpace(), false, false) ||
        !converted->InitializePixels(0) ||
        !VF::VideoFrameManipulators::CopyFrame(inPicture, converted, kRenderQuality_High, {})) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/EffectInputNotConverted=the picture of @0 could not be converted to "
                 "@1; --trace Frames tells why",
                 {DescribeFrame(inPicture), ToUTF16(NameOf(inFormat))}));
    }
    return converted;
}

PixelFormat BestFormatFor(const MF::IVideoFrameRef& inPicture, const std::vector<PixelFormat>& inFormats)
{
    if (inFormats.empty()) {
        return kPixelFormat_Any;
    }
    const PixelFormat own = inPicture->GetPixelFormat();
    if (std::find(inFormats.begin(), inFormats.end(), own) != inFormats.end()) {
        return own;
    }
    if (DepthOf(own) == PixelDepth::k8) {
        return inFormats.front();
    }
    // Deeper pictures go where least is lost; YUV can come back as it was only through more bits.
    const auto deepest =
        std::max_element(inFormats.begin(), inFormats.end(),
                         [](PixelFormat a, PixelFormat b) { return DepthOf(a) < DepthOf(b); });
    return *deepest;
}

std::string NumberedName(const std::string& inPattern, int inNumber)
{
    const std::optional<NumberPlace> place = FindNumber(inPattern);
    if (!place) {
        return inPattern;
    }
    std::string number = std::to_string(inNumber);
    number.insert(0, std::size_t(std::max(0, place->digits - int(number.size()))), '0');
    return inPattern.substr(0, place->start) + number + inPattern.substr(place->end);
}

bool HasNumber(const std::string& inPattern)
{
    return FindNumber(inPattern).has_value();
}

} // namespace trhost
