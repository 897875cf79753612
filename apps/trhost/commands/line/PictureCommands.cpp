#include "CommandGroups.h"

#include "../../support/PictureQuantities.h"

namespace trhost {

std::optional<kiomediatypes::PixelFormat> FormatNamed(const std::string& inName)
{
    const auto format = kiomediatypes::PixelFormatNamed(inName);
    return format == kiomediatypes::kPixelFormat_Any ? std::nullopt : std::optional(format);
}

namespace {

UTF16String FormatNames()
{
    std::string names;
    for (const kiomediatypes::NamedPixelFormat& format : kiomediatypes::kPixelFormats) {
        names += std::string(names.empty() ? "" : ", ") + format.name;
    }
    return kiocore::utility::ToUTF16(names);
}

} // namespace

void AddPictureForm(CommandGrammar inCommand, FrameForm& outForm, const char* inUsualSize)
{
    inCommand
        .ParsedInto(
            "--size", inUsualSize,
            "$$$/Halcyon/TrHost/Help/Expected/FrameFormSize=a size such as 1920x1080, sides up to 65535",
            &ParsePictureSize, outForm.size)
        .Type("WxH");
    inCommand
        .ParsedInto("--format",
                    Shown("$$$/Halcyon/TrHost/Help/FrameForm/Format=Pixel format: @0", {FormatNames()}),
                    Shown("$$$/Halcyon/TrHost/Help/Expected/OneOf=one of @0", {FormatNames()}), &FormatNamed,
                    outForm.format)
        .Type("FORMAT");
    inCommand
        .ParsedInto("--par", "$$$/Halcyon/TrHost/Help/FrameForm/Par=Width of a pixel to its height",
                    "$$$/Halcyon/TrHost/Help/Expected/FrameFormPar=a ratio such as 16:15",
                    &ParsePixelAspectRatio, outForm.pixelAspectRatio)
        .Type("N:D");
    inCommand
        .ParsedInto(
            "--quality",
            "$$$/Halcyon/TrHost/Help/FrameForm/Quality=How it is scaled: draft, medium, high (default)",
            "$$$/Halcyon/TrHost/Help/Expected/FrameFormQuality=draft, medium or high", &ParseRenderQuality,
            outForm.quality)
        .Type("QUALITY");
}

namespace {

/// @return the option that names the file.
OptionGrammar AddFrameForm(CommandGrammar inCommand, FrameForm& outForm, const char* inUsualSize)
{
    const OptionGrammar output =
        inCommand
            .Option("-o,--output", outForm.output,
                    "$$$/Halcyon/TrHost/Help/FrameForm/Output=File to write: .png or .raw; replaced if there")
            .Required()
            .Type("FILE");
    AddPictureForm(inCommand, outForm, inUsualSize);
    return output;
}

} // namespace

PictureCommands::PictureCommands(CommandGrammar inRoot)
{
    inRoot
        .Add("display",
             "$$$/Halcyon/TrHost/Help/Display=Show what displays are told: ranges, filters, fill colour",
             &Display)
        .Footer(Examples({{"trhost display --app-type 5"}}));

    const CommandGrammar frame = inRoot.Add(
        "frame", "$$$/Halcyon/TrHost/Help/Frame=Write the picture of media that is on show at a time",
        [this](Context& ioContext) { return Frame(ioContext, mFrame); });
    frame.Option("media", mFrame.media, "$$$/Halcyon/TrHost/Help/MediaFile=Media file")
        .Required()
        .Type("MEDIA");
    frame
        .ParsedInto("--at",
                    "$$$/Halcyon/TrHost/Help/Frame/At=Time from the start: 1.5s, 1500ms, 00:00:01.5, or "
                    "frame: 36f (default: 0s)",
                    "$$$/Halcyon/TrHost/Help/Expected/FrameAt=a time such as 1.5s, 1500ms, 00:00:01.5, or a "
                    "frame such as 36f",
                    &ParseMediaTime, mFrame.at)
        .Type("TIME");
    frame
        .Option("--stream", mFrame.stream,
                "$$$/Halcyon/TrHost/Help/Frame/Stream=Number of the video stream (default: the first)")
        .Range(0, 1 << 30)
        .Type("N");
    frame.Flag("--strict", mFrame.strict,
               "$$$/Halcyon/TrHost/Help/Frame/Strict=Fail when the media is offline (default: write the "
               "still for that)");
    frame.Flag(
        "--ui", mFrame.inWindow,
        "$$$/Halcyon/TrHost/Help/Frame/Ui=Tell in a window where to find a plug-in that the media needs");
    AddFrameForm(frame, mFrame.form,
                 "$$$/Halcyon/TrHost/Help/Frame/Size=Scale to this size (default: the picture's own)");
    frame.Footer(Examples({{"trhost frame clip.mov --at 00:00:01.5 --size 960x540 -o still.png"}}));

    AddStill(inRoot);
}

void PictureCommands::AddStill(CommandGrammar inRoot)
{
    const CommandGrammar still =
        inRoot.Add("still", "$$$/Halcyon/TrHost/Help/Still=Write a built-in still picture, or list them");
    const OptionGrammar image =
        still.Option("still", mStill.image, "$$$/Halcyon/TrHost/Help/Still/Still=Its number or name")
            .Type("ID|NAME");
    const OptionGrammar output =
        AddFrameForm(still, mStill.form, "$$$/Halcyon/TrHost/Help/Still/Size=Its size (default: 1920x1080)");
    output.Required(false); // the list needs none
    still.Footer(Examples({{"trhost still MediaOffline --size 640x360 -o offline.png"}}));
    const CommandGrammar list =
        still.Add("list", "$$$/Halcyon/TrHost/Help/Still/List=Print number, name, resource and size of all",
                  &StillList);
    still.WhenNamed([this, still, list, image, output] {
        if (list.WasNamed()) {
            return;
        }
        if (!image.WasGiven()) {
            CommandGrammar::ThrowMissingArgument(
                "$$$/Halcyon/TrHost/Line/StillMissing=still ID or NAME, or list, is required");
        }
        if (!output.WasGiven()) {
            CommandGrammar::ThrowMissingArgument(
                "$$$/Halcyon/TrHost/Line/StillOutputMissing=still: --output is required");
        }
        still.Choose([this](Context& ioContext) { return WriteStill(ioContext, mStill); });
    });
}

} // namespace trhost
