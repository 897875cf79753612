#include "DifferencePicture.h"

#include "../../support/FrameOutput.h"

#include <VF/PNG.h>
#include <VF/VideoFrames.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/AtomicFile.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

namespace trhost::compare {

namespace {

using namespace kiomediatypes;

/// A note in each picture, by which we know it again.
constexpr std::string_view kMark{"tEXtSoftware\0trhost compare", 27};

[[noreturn]] void ThrowNotSaved(const UTF16String& inPath, int inErrno)
{
    throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NotSaved=@0 could not be saved: @1",
                                     {inPath, kiocore::SystemErrorText(inErrno)}));
}

void MakeFoldersAbove(const UTF16String& inPath)
{
    const std::string native = kiocore::filesupport::ToNative(inPath);
    if (kiocore::filesupport::MakeFolders(native.substr(0, native.find_last_of('/') + 1)) != 0) {
        ThrowNotSaved(inPath, errno);
    }
}

VF::PNGOptions OptionsFor(const PairResult& inResult, float inTolerance)
{
    VF::PNGOptions options;
    options.isDifference = true;
    options.level = 1;
    options.rowsInUse = inResult.details.differingRows;
    options.texts = VF::DescribeDifference(inResult.difference, inResult.details);
    char tolerance[32];
    std::snprintf(tolerance, sizeof(tolerance), "%.6g", double(inTolerance));
    options.texts.emplace_back("Tolerance", tolerance);
    options.texts.emplace_back("Software", "trhost compare");
    return options;
}

} // namespace

MF::IVideoFrameRef MakeDifferenceFrame(const MF::IVideoFrameRef& inA, const MF::IVideoFrameRef& inB)
{
    const bool isDeep =
        DepthOf(inA->GetPixelFormat()) != PixelDepth::k8 || DepthOf(inB->GetPixelFormat()) != PixelDepth::k8;
    MF::IVideoFrameRef frame;
    if (!VF::CreateVideoFrame(frame, isDeep ? kPixelFormat_BGRA_4444_16u : kPixelFormat_BGRA_4444_8u,
                              inA->GetWidth(), inA->GetHeight(), inA->GetPixelAspectRatio(), false, false)) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/Compare/NoDifferenceFrame=there is no memory for a difference "
                           "picture of @0",
                           {DescribeFrame(inA)}));
    }
    return frame;
}

bool CanHoldDifference(const MF::IVideoFrameRef& inA, const MF::IVideoFrameRef& inB)
{
    const PixelFormat format = inB->GetPixelFormat();
    return inA->GetPixelFormat() == format && !IsYUV(format) && DepthOf(format) != PixelDepth::k32Float;
}

void WriteDifference(const MF::IVideoFrameRef& inPicture, const PairResult& inResult, float inTolerance,
                     const UTF16String& inPath)
{
    const auto png = VF::CompressPNG(inPicture, OptionsFor(inResult, inTolerance));
    if (!png) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NoPNG=the picture of @0 could not be made a PNG",
                                         {DescribeFrame(inPicture)}));
    }
    MakeFoldersAbove(inPath);
    // It can be made again: waiting for the disk would take longer than all else.
    const auto saved = kiocore::filesupport::SaveFileAtomically(
        inPath, {reinterpret_cast<const char*>(png.bytes.get()), png.size},
        kiocore::filesupport::Durability::kNone);
    if (saved.result < 0) {
        ThrowNotSaved(inPath, saved.errorNumber);
    }
}

void RemoveEarlierDifference(const UTF16String& inPath)
{
    const kiocore::filesupport::File file(inPath);
    if (!file.Exists()) {
        return;
    }
    bool isOurs = false;
    {
        char bytes[1024]; // notes come before the pixels
        kiocore::filesupport::IPlatformByteStream stream(inPath);
        const std::string_view start(bytes, stream.ReadBlock(bytes, sizeof(bytes)));
        isOurs = start.starts_with("\x89PNG") && start.find(kMark) != std::string_view::npos;
    }
    if (isOurs) {
        file.Delete();
    }
}

std::string DifferenceName(const std::string& inName)
{
    return inName.ends_with(".png") ? inName : inName + ".png";
}

} // namespace trhost::compare
