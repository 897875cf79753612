#include "Commands.h"
#include "FrameTime.h"

#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/MediaLoader.h"
#include "../support/UserInterfaceLoader.h"

#include <TR/PluginRedirect.h>
#include <TR/StaticImageFactory.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace trhost {

namespace {

using namespace kiomediatypes;
using kiocore::utility::ToUTF16;

constexpr PictureSize kSizeOfUnknown = {1920, 1080};

/// A picture of the media, or why there is none.
struct Decoded {
    MF::IVideoFrameRef picture;
    double seconds = 0; // where it was asked for
    UTF16String offlineReason;
};

/// Media that is fine but has no such pictures is no offline media: the picture of that would hide a mistake.
bool IsReadable(media::IMediaModule& inModule, const std::string& inMedia)
{
    try {
        inModule.Open(inMedia, InterruptCancel());
        return true;
    } catch (const kiocore::file_exception&) {
        return false;
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() != media::kMediaError_NotMedia) {
            throw;
        }
        return false;
    }
}

Decoded Decode(const FrameOptions& inOptions)
{
    // Outside: a module that cannot be loaded says nothing about the media.
    media::IMediaModule& module = LoadMediaModule();
    Decoded decoded;
    try {
        const auto reader =
            module.OpenVideo(inOptions.media, inOptions.stream.value_or(-1), InterruptCancel());
        const TickTime time = TimeIn(reader->Stream(), inOptions.at, inOptions.media);
        decoded.seconds = time.Seconds();
        decoded.picture = reader->FrameAt(time, InterruptCancel());
        return decoded;
    } catch (const kiocore::file_exception& error) {
        decoded.offlineReason = Told(error);
    } catch (const kiocore::kio_exception& error) {
        if (error.Code() != media::kMediaError_NotMedia &&
            error.Code() != media::kMediaError_NothingDecoded) {
            throw;
        }
        if (error.Code() == media::kMediaError_NotMedia && IsReadable(module, inOptions.media)) {
            throw Failure(kExit_Negative, Told(error));
        }
        decoded.offlineReason = Told(error);
    }
    if (inOptions.strict) {
        throw Failure(kExit_Failed, decoded.offlineReason);
    }
    return decoded;
}

MF::IVideoFrameRef OfflineStill(const FrameOutput& inOutput, const FrameForm& inForm)
{
    const PictureSize size = inForm.size.value_or(kSizeOfUnknown);
    MF::IVideoFrameRef still = TR::StaticImageFactory::LoadImage(
        TR::StaticImageFactory::kMediaOffline, size.width, size.height,
        inOutput.FormatFor(kPixelFormat_BGRA_4444_8u),
        inForm.pixelAspectRatio.value_or(kPixelAspectRatio_Square), inForm.quality, false);
    if (!still) {
        throw Failure(kExit_Failed, Text("$$$/Halcyon/TrHost/NoOfflineStill=the still for media that is "
                                         "offline could not be made; --trace Resources and --trace Frames "
                                         "tell why"));
    }
    return still;
}

MF::IVideoFrameRef Shape(const MF::IVideoFrameRef& inPicture, const FrameOutput& inOutput,
                         const FrameForm& inForm)
{
    const PictureSize own = {inPicture->GetWidth(), inPicture->GetHeight()};
    // Who asks for a size means it as it will be looked at.
    const PixelAspectRatio shape = inForm.size ? kPixelAspectRatio_Square : inPicture->GetPixelAspectRatio();
    return inOutput.Shaped(inPicture, inForm.size.value_or(own),
                           inOutput.FormatFor(inPicture->GetPixelFormat()),
                           inForm.pixelAspectRatio.value_or(shape));
}

void ThrowIfSameFile(const FrameOptions& inOptions, const FrameOutput& inOutput)
{
    std::error_code error;
    if (std::filesystem::equivalent(inOptions.media, inOptions.form.output, error)) {
        throw Failure(
            kExit_Usage,
            Text("$$$/Halcyon/TrHost/OutputIsMedia=--output @0: is the media itself; expected another "
                 "file",
                 {inOutput.Path()}));
    }
}

UTF16String SecondsText(double inSeconds)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f s", inSeconds);
    return ToUTF16(text);
}

} // namespace

namespace {

/// Camera files that nothing here can read without the maker's plug-in.
bool IsBlackmagicRAW(const std::string& inMedia)
{
    std::string extension = std::filesystem::path(inMedia).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char inLetter) {
        return inLetter >= 'A' && inLetter <= 'Z' ? char(inLetter + 32) : inLetter;
    });
    return extension == ".braw";
}

/// @throws Failure (kExit_Failed), after the window was closed if there is one.
[[noreturn]] void RedirectToPlugin(Context& ioContext, const FrameOptions& inOptions)
{
    if (inOptions.inWindow) {
        OpenUserInterface(ioContext, {})->ShowBlackmagicRAWRedirect();
    }
    throw Failure(
        kExit_Failed,
        Text("$$$/Halcyon/TrHost/NeedsBlackmagicRAW=@0: Blackmagic RAW video needs a plug-in; for more "
             "information go to @1#{@1: web address}",
             {kiocore::filesupport::FromNative(inOptions.media), TR::GetPluginRedirectURL()}));
}

} // namespace

int Frame(Context& ioContext, const FrameOptions& inOptions)
{
    if (IsBlackmagicRAW(inOptions.media)) {
        RedirectToPlugin(ioContext, inOptions);
    }
    const FrameOutput output(inOptions.form);
    ThrowIfSameFile(inOptions, output);
    const UTF16String media = kiocore::filesupport::FromNative(inOptions.media);

    const Decoded decoded = Decode(inOptions);
    const bool isOffline = !decoded.picture;
    const MF::IVideoFrameRef frame =
        isOffline ? OfflineStill(output, inOptions.form) : Shape(decoded.picture, output, inOptions.form);
    ThrowIfInterrupted();
    output.Write(frame);

    JsonLine object;
    object.Add("media", media).Add("output", output.Path()).Add("offline", isOffline);
    if (isOffline) {
        object.Add("reason", decoded.offlineReason);
    } else {
        object.Add("seconds", decoded.seconds);
    }
    AddFrame(object, frame);
    if (isOffline) {
        ioContext.output.Error(
            Text("$$$/Halcyon/TrHost/FrameOffline=media offline: @0; its still was written instead",
                 {decoded.offlineReason}));
    }
    ioContext.output.Note(
        isOffline ? Text("$$$/Halcyon/TrHost/FrameOfflineMade=@0: @1, the still for media that is offline",
                         {output.Path(), DescribeFrame(frame)})
                  : Text("$$$/Halcyon/TrHost/FrameMade=@0: @1, of @2 at @3",
                         {output.Path(), DescribeFrame(frame), media, SecondsText(decoded.seconds)}),
        object);
    return kExit_Done;
}

} // namespace trhost
