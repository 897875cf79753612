#include "CommandGroups.h"

#include "../../devices/MediaTime.h"

namespace trhost {

namespace {

constexpr const char* kScriptHelp =
    "A script has one command a line; # begins a comment, \"...\" keeps blanks together:\n"
    "  player NAME [media=FILE] [device=D | sink=wav:FILE [pace=no]] [key=N] [priority=N]\n"
    "  recorder NAME [device=D] [rate=R] [channels=N] [key=N]\n"
    "  activate NAME [priority=N] [key=N]   (open NAME is the same)\n"
    "  record NAME [out=FILE]      stop NAME\n"
    "  deactivate NAME             reset\n"
    "  hold NAME                   release NAME\n"
    "  destroy NAME                wait 200ms\n"
    "  expect [not] CONDITION      await [not] CONDITION [within=2s]\n"
    "A condition is active NAME|nobody, waiting NAME|nobody [for NAME], open NAME,\n"
    "recording NAME, finished NAME or failed NAME.\n"
    "\n"
    "Example:\n"
    "  player player1 device=null key=1\n"
    "  recorder recorder1 device=null key=2\n"
    "  activate player1\n"
    "  record recorder1            # smaller priority: player1 is asked to let go\n"
    "  expect active recorder1\n"
    "  activate player1            # greater priority: replaces it without asking\n"
    "  expect active player1\n"
    "  expect recording recorder1";

void AddTime(CommandGrammar inCommand, const char* inName, std::optional<std::chrono::nanoseconds>& outTime,
             const char* inDescription)
{
    inCommand
        .ParsedInto(inName, inDescription, "a time such as 12.5, 1:05 or 200ms", &devices::ParseMediaTime,
                    outTime)
        .Type("TIME");
}

OptionGrammar AddSampleForm(CommandGrammar inCommand, std::string& outForm, const char* inDescription)
{
    return inCommand.Option("--format", outForm, inDescription).OneOf({"s16", "s24", "f32"}).Type("FORMAT");
}

} // namespace

DeviceCommands::DeviceCommands(CommandGrammar inRoot)
{
    AddPlay(inRoot);
    AddRecord(inRoot);
    const CommandGrammar devices =
        inRoot.Add("devices", "Run a script of players and recorders",
                   [this](Context& ioContext) { return RunDevices(ioContext, mDevices); });
    devices.Option("script", mDevices.script, "Script, or - for standard input").Required().Type("SCRIPT");
    devices.Flag("--force", mDevices.force, "Let the script overwrite files");
    devices.Footer(kScriptHelp);
}

void DeviceCommands::AddPlay(CommandGrammar inRoot)
{
    const CommandGrammar play =
        inRoot.Add("play", "Play the sound of a media file",
                   [this](Context& ioContext) { return PlaySound(ioContext, mPlay); });
    play.Option("media", mPlay.media, "Media file").Required().Type("MEDIA");
    play.Option("--stream", mPlay.stream, "This stream (default: the first with sound)")
        .Range(0, 1 << 30)
        .Type("N");
    const OptionGrammar device =
        play.Option("--device", mPlay.device, "Audio device (default, null, hw:1,0 ...)").Type("DEVICE");
    const OptionGrammar sink = play.Option("--sink", mPlay.sink, "Write to a WAVE file instead: wav:FILE")
                                   .Excludes(device)
                                   .Type("SINK");
    AddTime(play, "--from", mPlay.from, "Begin at this time: 12.5, 1:05.2, 200ms");
    AddTime(play, "--duration", mPlay.duration, "Play only so much");
    AddSampleForm(play, mPlay.format, "Of the sink's samples: s16, s24, f32 (default: as the media)")
        .Needs(sink);
    play.Flag("--real-time", mPlay.realTime, "Let the sink take its time").Needs(sink);
    play.Flag("--force", mPlay.force, "Overwrite the sink's file").Needs(sink);
}

void DeviceCommands::AddRecord(CommandGrammar inRoot)
{
    const CommandGrammar record =
        inRoot.Add("record", "Record sound to a WAVE file, until Ctrl-C",
                   [this](Context& ioContext) { return RecordSound(ioContext, mRecord); });
    record.Option("file", mRecord.file, "WAVE file to make").Required().Type("FILE");
    record.Option("--device", mRecord.device, "Audio device (default, null, hw:1,0 ...)").Type("DEVICE");
    AddTime(record, "--duration", mRecord.duration, "Stop by itself: 90, 1:30, 500ms");
    record.Option("--rate", mRecord.rate, "Samples a second (48000)").Range(8000, 384000).Type("HZ");
    record.Option("--channels", mRecord.channels, "1 to 64 (2)").Range(1, 64).Type("N");
    AddSampleForm(record, mRecord.format, "Of the samples: s16, s24, f32 (s16)");
    record.Flag("--force", mRecord.force, "Overwrite the file");
}

} // namespace trhost
