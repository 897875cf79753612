#include "CommandGroups.h"

#include "../../support/PictureQuantities.h"

namespace trhost {

std::optional<kiomediatypes::PixelFormat> FormatNamed(const std::string& inName)
{
    const auto format = kiomediatypes::PixelFormatNamed(inName);
    return format == kiomediatypes::kPixelFormat_Any ? std::nullopt : std::optional(format);
}

namespace {

std::string FormatNames()
{
    std::string names;
    for (const kiomediatypes::NamedPixelFormat& format : kiomediatypes::kPixelFormats) {
        names += std::string(names.empty() ? "" : ", ") + format.name;
    }
    return names;
}

/// @return the option that names the file.
OptionGrammar AddFrameForm(CommandGrammar inCommand, FrameForm& outForm, const char* inUsualSize)
{
    const OptionGrammar output =
        inCommand.Option("-o,--output", outForm.output, "File to write: .png or .raw; replaced if there")
            .Required()
            .Type("FILE");
    inCommand
        .ParsedInto("--size", inUsualSize, "a size such as 1920x1080, sides up to 65535", &ParsePictureSize,
                    outForm.size)
        .Type("WxH");
    inCommand
        .ParsedInto("--format", "Pixel format: " + FormatNames(), "one of " + FormatNames(), &FormatNamed,
                    outForm.format)
        .Type("FORMAT");
    inCommand
        .ParsedInto("--par", "Width of a pixel to its height", "a ratio such as 16:15",
                    &ParsePixelAspectRatio, outForm.pixelAspectRatio)
        .Type("N:D");
    inCommand
        .ParsedInto("--quality", "How it is scaled: draft, medium, high (default)", "draft, medium or high",
                    &ParseRenderQuality, outForm.quality)
        .Type("QUALITY");
    return output;
}

} // namespace

PictureCommands::PictureCommands(CommandGrammar inRoot)
{
    inRoot.Add("display", "Show what displays are told: ranges, filters, fill colour", &Display)
        .Footer("Example:\n  trhost display --app-type 5");

    const CommandGrammar frame = inRoot.Add("frame", "Write the picture of media that is on show at a time",
                                            [this](Context& ioContext) { return Frame(ioContext, mFrame); });
    frame.Option("media", mFrame.media, "Media file").Required().Type("MEDIA");
    frame
        .ParsedInto("--at", "Time from the start: 1.5s, 1500ms, 00:00:01.5, or frame: 36f (default: 0s)",
                    "a time such as 1.5s, 1500ms, 00:00:01.5, or a frame such as 36f", &ParseMediaTime,
                    mFrame.at)
        .Type("TIME");
    frame.Option("--stream", mFrame.stream, "Number of the video stream (default: the first)")
        .Range(0, 1 << 30)
        .Type("N");
    frame.Flag("--strict", mFrame.strict,
               "Fail when the media is offline (default: write the still for that)");
    frame.Flag("--ui", mFrame.inWindow, "Tell in a window where to find a plug-in that the media needs");
    AddFrameForm(frame, mFrame.form, "Scale to this size (default: the picture's own)");
    frame.Footer("Example: trhost frame clip.mov --at 00:00:01.5 --size 960x540 -o still.png");

    AddStill(inRoot);
}

void PictureCommands::AddStill(CommandGrammar inRoot)
{
    const CommandGrammar still = inRoot.Add("still", "Write a built-in still picture, or list them");
    const OptionGrammar image = still.Option("still", mStill.image, "Its number or name").Type("ID|NAME");
    const OptionGrammar output = AddFrameForm(still, mStill.form, "Its size (default: 1920x1080)");
    output.Required(false); // the list needs none
    still.Footer("Example: trhost still MediaOffline --size 640x360 -o offline.png");
    const CommandGrammar list = still.Add("list", "Print number, name, resource and size of all", &StillList);
    still.WhenNamed([this, still, list, image, output] {
        if (list.WasNamed()) {
            return;
        }
        if (!image.WasGiven()) {
            CommandGrammar::ThrowMissingArgument("still ID or NAME, or list,");
        }
        if (!output.WasGiven()) {
            CommandGrammar::ThrowMissingArgument("still: --output");
        }
        still.Choose([this](Context& ioContext) { return WriteStill(ioContext, mStill); });
    });
}

} // namespace trhost
