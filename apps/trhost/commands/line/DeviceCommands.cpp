#include "CommandGroups.h"

#include "../../devices/MediaTime.h"

namespace trhost {

namespace {

std::string ScriptHelp()
{
    return Shown("$$$/Halcyon/TrHost/Help/Script/Lines=A script has one command a line; # begins a comment, "
                 "\"...\" "
                 "keeps blanks together:") +
           "\n"
           "  player NAME [media=FILE] [device=D | sink=wav:FILE [pace=no]] [key=N] [priority=N]\n"
           "  recorder NAME [device=D] [rate=R] [channels=N] [key=N]\n"
           "  activate NAME [priority=N] [key=N]   (" +
           Shown("$$$/Halcyon/TrHost/Help/Script/Open=@0 is the same#{@0: a command: open NAME}",
                 {u"open NAME"}) +
           ")\n"
           "  record NAME [out=FILE]      stop NAME\n"
           "  deactivate NAME             reset\n"
           "  hold NAME                   release NAME\n"
           "  destroy NAME                wait 200ms\n"
           "  expect [not] CONDITION      await [not] CONDITION [within=2s]\n" +
           Shown("$$$/Halcyon/TrHost/Help/Script/Conditions=A condition is @0,\\n@1 or @2.#{@0 to @2: "
                 "conditions, such "
                 "as active NAME}",
                 {u"active NAME|nobody, waiting NAME|nobody [for NAME], open NAME",
                  u"recording NAME, finished NAME", u"failed NAME"}) +
           "\n\n" + Shown("$$$/Halcyon/TrHost/Help/Example=Example:") +
           "\n"
           "  player player1 device=null key=1\n"
           "  recorder recorder1 device=null key=2\n"
           "  activate player1\n"
           "  record recorder1            # " +
           Shown("$$$/Halcyon/TrHost/Help/Script/Smaller=smaller priority: @0 is asked to let go",
                 {u"player1"}) +
           "\n"
           "  expect active recorder1\n"
           "  activate player1            # " +
           Shown("$$$/Halcyon/TrHost/Help/Script/Greater=greater priority: replaces it without asking") +
           "\n"
           "  expect active player1\n"
           "  expect recording recorder1";
}

void AddTime(CommandGrammar inCommand, const char* inName, std::optional<std::chrono::nanoseconds>& outTime,
             const char* inDescription)
{
    inCommand
        .ParsedInto(inName, inDescription,
                    "$$$/Halcyon/TrHost/Help/Expected/Time=a time such as 12.5, 1:05 or 200ms",
                    &devices::ParseMediaTime, outTime)
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
        inRoot.Add("devices", "$$$/Halcyon/TrHost/Help/Devices=Run a script of players and recorders",
                   [this](Context& ioContext) { return RunDevices(ioContext, mDevices); });
    devices
        .Option("script", mDevices.script,
                "$$$/Halcyon/TrHost/Help/Devices/Script=Script, or - for standard input")
        .Required()
        .Type("SCRIPT");
    devices.Flag("--force", mDevices.force,
                 "$$$/Halcyon/TrHost/Help/Devices/Force=Let the script overwrite files");
    devices.Footer(ScriptHelp());
}

void DeviceCommands::AddPlay(CommandGrammar inRoot)
{
    const CommandGrammar play =
        inRoot.Add("play", "$$$/Halcyon/TrHost/Help/Play=Play the sound of a media file",
                   [this](Context& ioContext) { return PlaySound(ioContext, mPlay); });
    play.Option("media", mPlay.media, "$$$/Halcyon/TrHost/Help/MediaFile=Media file")
        .Required()
        .Type("MEDIA");
    play.Option("--stream", mPlay.stream,
                "$$$/Halcyon/TrHost/Help/Play/Stream=This stream (default: the first with sound)")
        .Range(0, 1 << 30)
        .Type("N");
    const OptionGrammar device =
        play.Option("--device", mPlay.device,
                    "$$$/Halcyon/TrHost/Help/AudioDevice=Audio device (default, null, hw:1,0 ...)")
            .Type("DEVICE");
    const OptionGrammar sink =
        play.Option("--sink", mPlay.sink,
                    "$$$/Halcyon/TrHost/Help/Play/Sink=Write to a WAVE file instead: wav:FILE")
            .Excludes(device)
            .Type("SINK");
    AddTime(play, "--from", mPlay.from,
            "$$$/Halcyon/TrHost/Help/Play/From=Begin at this time: 12.5, 1:05.2, 200ms");
    AddTime(play, "--duration", mPlay.duration, "$$$/Halcyon/TrHost/Help/Play/Duration=Play only so much");
    AddSampleForm(
        play, mPlay.format,
        "$$$/Halcyon/TrHost/Help/Play/Format=Of the sink's samples: s16, s24, f32 (default: as the media)")
        .Needs(sink);
    play.Flag("--real-time", mPlay.realTime,
              "$$$/Halcyon/TrHost/Help/Play/RealTime=Let the sink take its time")
        .Needs(sink);
    play.Flag("--force", mPlay.force, "$$$/Halcyon/TrHost/Help/Play/Force=Overwrite the sink's file")
        .Needs(sink);
}

void DeviceCommands::AddRecord(CommandGrammar inRoot)
{
    const CommandGrammar record =
        inRoot.Add("record", "$$$/Halcyon/TrHost/Help/Record=Record sound to a WAVE file, until Ctrl-C",
                   [this](Context& ioContext) { return RecordSound(ioContext, mRecord); });
    record.Option("file", mRecord.file, "$$$/Halcyon/TrHost/Help/Record/File=WAVE file to make")
        .Required()
        .Type("FILE");
    record
        .Option("--device", mRecord.device,
                "$$$/Halcyon/TrHost/Help/AudioDevice=Audio device (default, null, hw:1,0 ...)")
        .Type("DEVICE");
    AddTime(record, "--duration", mRecord.duration,
            "$$$/Halcyon/TrHost/Help/Record/Duration=Stop by itself: 90, 1:30, 500ms");
    record.Option("--rate", mRecord.rate, "$$$/Halcyon/TrHost/Help/Record/Rate=Samples a second (48000)")
        .Range(8000, 384000)
        .Type("HZ");
    record.Option("--channels", mRecord.channels, "$$$/Halcyon/TrHost/Help/Record/Channels=1 to 64 (2)")
        .Range(1, 64)
        .Type("N");
    AddSampleForm(record, mRecord.format,
                  "$$$/Halcyon/TrHost/Help/Record/Format=Of the samples: s16, s24, f32 (s16)");
    record.Flag("--force", mRecord.force, "$$$/Halcyon/TrHost/Help/Record/Force=Overwrite the file");
}

} // namespace trhost
