#include "PictureFile.h"

#include "RawFrameFile.h"

#include <VF/PNG.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>

#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace trhost {

using kiocore::utility::ToUTF16;

namespace {

constexpr std::string_view kPNGSignature = "\x89PNG\r\n\x1A\n";

UTF16String DescribeStart(std::string_view inBytes)
{
    if (inBytes.empty()) {
        return Text("$$$/Halcyon/TrHost/EmptyFile=an empty file");
    }
    std::string digits;
    for (char letter : inBytes) {
        char text[4];
        std::snprintf(text, sizeof(text), "%02x", unsigned(static_cast<unsigned char>(letter)));
        digits += (digits.empty() ? "" : " ") + std::string(text);
    }
    return Text("$$$/Halcyon/TrHost/FileStartsWith=a file that starts with the bytes @0", {ToUTF16(digits)});
}

} // namespace

void RequireOrdinaryFile(const std::string& inNativePath)
{
    std::error_code error;
    const auto status = std::filesystem::status(inNativePath, error);
    if (std::filesystem::is_other(status)) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoOrdinaryFile=@0: is a pipe or a device; expected a file",
                           {kiocore::filesupport::FromNative(inNativePath)}));
    }
}

PictureKind KindOfPicture(const UTF16String& inPath, UTF16String* outFound)
{
    char bytes[8];
    kiocore::filesupport::IPlatformByteStream stream(inPath);
    const std::string_view start(bytes, stream.ReadBlock(bytes, sizeof(bytes)));
    if (start == kPNGSignature) {
        return PictureKind::kPNG;
    }
    if (IsRawFrameMagic(start)) {
        return PictureKind::kRawFrame;
    }
    if (outFound) {
        *outFound = DescribeStart(start);
    }
    return PictureKind::kOther;
}

UTF16String NoPictureReason(const UTF16String& inFound)
{
    return Text(
        "$$$/Halcyon/TrHost/NeitherPNGNorRaw=found @0, expected a PNG or a raw frame file (trhost raw "
        "write makes one of a clip)",
        {inFound});
}

UTF16String DamagedPNGReason(const std::string& inDecoderReason)
{
    return Text("$$$/Halcyon/TrHost/DamagedPNGBecause=a damaged PNG: @0", {ToUTF16(inDecoderReason)});
}

MF::IVideoFrameRef ReadPicture(const UTF16String& inPath, UTF16String& outReason)
{
    UTF16String found;
    switch (KindOfPicture(inPath, &found)) {
    case PictureKind::kPNG: {
        std::string reason;
        MF::IVideoFrameRef frame = VF::DecompressPNG(inPath, reason);
        if (!frame) {
            outReason = DamagedPNGReason(reason);
        }
        return frame;
    }
    case PictureKind::kRawFrame:
        return ReadRawFrame(inPath, outReason);
    case PictureKind::kOther:
        break;
    }
    outReason = NoPictureReason(found);
    return {};
}

} // namespace trhost
