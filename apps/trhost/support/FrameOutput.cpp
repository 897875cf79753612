#include "FrameOutput.h"

#include "RawFrameFile.h"

#include <VF/PNG.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/NativePath.h>

#include <filesystem>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

std::string LowerExtension(const std::string& inPath)
{
    std::string extension = std::filesystem::path(inPath).extension().native();
    for (char& letter : extension) {
        letter = letter >= 'A' && letter <= 'Z' ? char(letter - 'A' + 'a') : letter;
    }
    return extension;
}

} // namespace

FrameOutput::FrameOutput(const FrameForm& inForm) : mForm(inForm)
{
    const std::string extension = LowerExtension(inForm.output);
    mIsRaw = inForm.isAlwaysRaw || extension == ".raw";
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(inForm.output, error);
    mPath = kiocore::filesupport::FromNative(error ? inForm.output : absolute.native());
    if (!mIsRaw && extension != ".png") {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/FrameFileKind=--output @0: expected a name that ends in .png "
                           "or .raw",
                           {mPath}));
    }
    if (std::filesystem::is_directory(absolute, error)) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/FrameFileIsFolder=--output @0: is a folder; expected a file", {mPath}));
    }
    if (mIsRaw && mForm.format & kPixelFormatFlag_Planar) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/RawHasNoPlanes=--format @0: a raw frame file holds packed rows, "
                 "not planes; use uyvy, or write a .png",
                 {ToUTF16(NameOf(mForm.format))}));
    }
}

PixelFormat FrameOutput::FormatFor(PixelFormat inNative) const
{
    if (mForm.format != kPixelFormat_Any) {
        return mForm.format;
    }
    if (!mIsRaw) {
        return kPixelFormat_BGRA_4444_8u;
    }
    return inNative & kPixelFormatFlag_Planar ? kPixelFormat_UYVY_422_8u : inNative;
}

MF::IVideoFrameRef FrameOutput::Shaped(const MF::IVideoFrameRef& inFrame, PictureSize inSize,
                                       PixelFormat inFormat, PixelAspectRatio inPixelAspectRatio) const
{
    if (inFrame->GetWidth() == inSize.width && inFrame->GetHeight() == inSize.height &&
        inFrame->GetPixelFormat() == inFormat && inFrame->GetPixelAspectRatio() == inPixelAspectRatio) {
        return inFrame;
    }
    MF::IVideoFrameRef shaped;
    if (!VF::CreateVideoFrame(shaped, inFormat, inSize.width, inSize.height, inPixelAspectRatio,
                              inFrame->GetColorSpace(), false, false) ||
        !shaped->InitializePixels(0) ||
        !VF::VideoFrameManipulators::CopyFrame(inFrame, shaped, mForm.quality, {})) {
        throw Failure(
            kExit_Failed,
            Text("$$$/Halcyon/TrHost/NotConverted=the picture of @0 could not be converted to @1 x @2 "
                 "pixels, @3; --trace Frames tells why",
                 {DescribeFrame(inFrame), DecimalText(inSize.width), DecimalText(inSize.height),
                  ToUTF16(NameOf(inFormat))}));
    }
    return shaped;
}

void FrameOutput::Write(const MF::IVideoFrameRef& inFrame) const
{
    using kiocore::filesupport::SaveFileAtomically;
    constexpr auto kDurability = kiocore::filesupport::Durability::kFile;
    kiocore::filesupport::SaveResult saved;
    if (mIsRaw) {
        saved = SaveFileAtomically(mPath, RawFrameBytes(inFrame), kDurability);
    } else {
        const auto png = VF::CompressPNG(inFrame);
        if (!png) {
            throw Failure(kExit_Failed,
                          Text("$$$/Halcyon/TrHost/NoPNG=the picture of @0 could not be made a PNG",
                               {DescribeFrame(inFrame)}));
        }
        saved = SaveFileAtomically(mPath, {reinterpret_cast<const char*>(png.bytes.get()), png.size},
                                   kDurability);
    }
    if (saved.result < 0) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NotSaved=@0 could not be saved: @1",
                                         {mPath, kiocore::SystemErrorText(saved.errorNumber)}));
    }
}

UTF16String DescribeFrame(const MF::IVideoFrameRef& inFrame)
{
    return Text("$$$/Halcyon/TrHost/FrameIs=@0 x @1, @2#{@0: width, @1: height, @2: pixel format}",
                {DecimalText(inFrame->GetWidth()), DecimalText(inFrame->GetHeight()),
                 ToUTF16(NameOf(inFrame->GetPixelFormat()))});
}

void AddFrame(JsonLine& ioObject, const MF::IVideoFrameRef& inFrame)
{
    const PixelAspectRatio shape = inFrame->GetPixelAspectRatio();
    const color::ColorSpace space = inFrame->GetColorSpace();
    ioObject.Add("width", inFrame->GetWidth())
        .Add("height", inFrame->GetHeight())
        .Add("format", NameOf(inFrame->GetPixelFormat()))
        .Add("pixelAspectRatio", std::to_string(shape.numerator) + ":" + std::to_string(shape.denominator))
        .Add("primaries", int(space.primaries))
        .Add("transfer", int(space.transfer));
    if (IsYUV(inFrame->GetPixelFormat())) {
        ioObject.Add("matrix", int(space.matrix))
            .Add("range", space.range == color::Range::kFull ? "full" : "limited");
    }
}

} // namespace trhost
