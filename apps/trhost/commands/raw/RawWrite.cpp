#include "../Commands.h"
#include "../FrameTime.h"

#include "../../support/Failure.h"
#include "../../support/Interrupt.h"
#include "../../support/MediaLoader.h"
#include "../../support/PictureFile.h"

#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <system_error>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::filesupport::FromNative;

/// @throws Failure (kExit_Usage) for options that say something about clips only.
void ThrowIfForClips(const RawWriteOptions& inOptions)
{
    if (inOptions.at || inOptions.stream) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/Raw/OnePicture=@0 @1: is a single picture; expected that option "
                 "with a clip only#{@0: --at or --stream, @1: a file}",
                 {inOptions.at ? u"--at" : u"--stream", FromNative(inOptions.source)}));
    }
}

MF::IVideoFrameRef Source(const RawWriteOptions& inOptions)
{
    const UTF16String path = FromNative(inOptions.source);
    if (KindOfPicture(path) != PictureKind::kOther) {
        ThrowIfForClips(inOptions);
        UTF16String reason;
        MF::IVideoFrameRef picture = ReadPicture(path, reason);
        if (!picture) {
            throw Failure(kExit_Failed,
                          Text("$$$/Halcyon/TrHost/FileReason=@0: @1#{@0: a file, @1: what is wrong with it}",
                               {path, reason}));
        }
        return picture;
    }
    const auto reader =
        LoadMediaModule().OpenVideo(inOptions.source, inOptions.stream.value_or(-1), InterruptCancel());
    const MediaTime at = inOptions.at.value_or(MediaTime{});
    return reader->FrameAt(TimeIn(reader->Stream(), at, inOptions.source), InterruptCancel());
}

void ThrowIfSameFile(const RawWriteOptions& inOptions, const FrameOutput& inOutput)
{
    std::error_code error;
    if (std::filesystem::equivalent(inOptions.source, inOptions.form.output, error)) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/OutputIsMedia=--output @0: is the media itself; expected another "
                 "file",
                 {inOutput.Path()}));
    }
}

} // namespace

int RawWrite(Context& ioContext, const RawWriteOptions& inOptions)
{
    FrameForm form = inOptions.form;
    form.isAlwaysRaw = true;
    const FrameOutput output(form);
    RequireOrdinaryFile(inOptions.source);
    ThrowIfSameFile(inOptions, output);
    const MF::IVideoFrameRef picture = Source(inOptions);
    ThrowIfInterrupted();
    const PictureSize own = {picture->GetWidth(), picture->GetHeight()};
    // Who asks for a size means it as it will be looked at.
    const PixelAspectRatio shape = form.size ? kPixelAspectRatio_Square : picture->GetPixelAspectRatio();
    const MF::IVideoFrameRef frame =
        output.Shaped(picture, form.size.value_or(own), output.FormatFor(picture->GetPixelFormat()),
                      form.pixelAspectRatio.value_or(shape));
    output.Write(frame);
    JsonLine object;
    object.Add("source", FromNative(inOptions.source)).Add("output", output.Path());
    AddFrame(object, frame);
    ioContext.output.Note(
        Text("$$$/Halcyon/TrHost/Raw/Written=@0: @1, of @2#{@0: the file, @1: size and format, "
             "@2: what it was made of}",
             {output.Path(), DescribeFrame(frame), FromNative(inOptions.source)}),
        object);
    return kExit_Done;
}

} // namespace trhost
