#include "../Commands.h"

#include "../../support/Failure.h"
#include "../../support/JsonLine.h"
#include "../../support/PictureFile.h"
#include "../../support/RawFrameFile.h"

#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiomediatypes/PixelFormat.h>

#include <algorithm>
#include <cstdio>

namespace trhost {

namespace {

using kiocore::utility::DecimalText;
using kiocore::utility::ToUTF16;

std::string Hex(std::uint32_t inNumber)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", unsigned(inNumber));
    return text;
}

std::string Ratio(const RawFrameHeader& inHeader)
{
    return std::to_string(inHeader.aspectNumerator) + ":" + std::to_string(inHeader.aspectDenominator);
}

JsonLine DescribeForPrograms(const UTF16String& inFile, const RawFrameInfo& inInfo)
{
    JsonLine object;
    object.Add("file", inFile).Add("valid", inInfo.IsValid());
    if (!inInfo.IsValid()) {
        object.Add("reason", inInfo.reason);
    }
    object.Add("foundBytes", inInfo.fileBytes);
    if (!inInfo.hasHeader) {
        return object;
    }
    const RawFrameHeader& header = inInfo.header;
    return object.Add("expectedBytes", header.ExpectedFileBytes())
        .Add("magic", Hex(header.magic))
        .Add("version", Hex(header.version))
        .Add("format", kiomediatypes::NameOf(header.GetPixelFormat()))
        .Add("formatCode", header.FormatCode())
        .Add("width", header.width)
        .Add("height", header.height)
        .Add("rowBytes", header.rowBytes)
        .Add("pixelAspectRatio", Ratio(header));
}

UTF16String Describe(const UTF16String& inFile, const RawFrameInfo& inInfo)
{
    // Of a file of another kind the rest means nothing.
    if (!inInfo.hasHeader || inInfo.header.magic != kRawFrameMagic) {
        return Text("$$$/Halcyon/TrHost/Raw/NotValid=@0: not valid: @1", {inFile, inInfo.reason});
    }
    const RawFrameHeader& header = inInfo.header;
    const UTF16String fields = Text(
        "$$$/Halcyon/TrHost/Raw/Fields=magic @0, version @1, format @2, @3 x @4 pixels, @5 bytes a row, "
        "pixel aspect ratio @6, @7 bytes found, @8 expected#{@2: such as BGRA (bgra8)}",
        {ToUTF16(Hex(header.magic)), ToUTF16(Hex(header.version)),
         ToUTF16(header.FormatCode() + " (" + kiomediatypes::NameOf(header.GetPixelFormat()) + ")"),
         DecimalText(header.width), DecimalText(header.height), DecimalText(header.rowBytes),
         ToUTF16(Ratio(header)), DecimalText(inInfo.fileBytes), DecimalText(header.ExpectedFileBytes())});
    return inInfo.IsValid()
               ? Text("$$$/Halcyon/TrHost/Raw/Valid=@0: valid: @1", {inFile, fields})
               : Text("$$$/Halcyon/TrHost/Raw/NotValidFields=@0: not valid: @1 (@2)#{@1: why, @2: fields}",
                      {inFile, inInfo.reason, fields});
}

} // namespace

int RawInfo(Context& ioContext, const std::vector<std::string>& inFiles)
{
    int status = kExit_Done;
    for (const std::string& path : inFiles) {
        const UTF16String file = kiocore::filesupport::FromNative(path);
        try {
            RequireOrdinaryFile(path);
            const RawFrameInfo info = ReadRawFrameInfo(file);
            ioContext.output.Result(Describe(file, info), DescribeForPrograms(file, info));
            status = info.IsValid() ? status : std::max<int>(status, kExit_Negative);
        } catch (const Failure& failure) {
            ioContext.output.Error(failure.GetText()); // the others are told all the same
            status = kExit_Failed;
        } catch (const kiocore::file_exception& error) {
            ioContext.output.Error(Told(error));
            status = kExit_Failed;
        }
    }
    return status;
}

} // namespace trhost
