#include "CommandGroups.h"

#include "../../support/PictureQuantities.h"

#include <exception>

namespace trhost {

namespace {

std::optional<double> ParsePosition(const std::string& inText)
{
    std::size_t end = 0;
    try {
        const double position = std::stod(inText, &end);
        if (end == inText.size() && position >= 0 && position <= 1) {
            return position;
        }
    } catch (const std::exception&) {
        // no number, or none that a double holds
    }
    return std::nullopt;
}

} // namespace

EffectCommands::EffectCommands(CommandGrammar inRoot)
{
    const CommandGrammar effects = inRoot.Add(
        "effects", "$$$/Halcyon/TrHost/Help/Effects=List, run, check and switch off effect plug-ins");
    effects
        .Option(
            "--plugins", mSearch.folders,
            "$$$/Halcyon/TrHost/Help/Effects/Plugins=Look for plug-ins in this folder too; may be repeated")
        .Type("DIR")
        .Repeatable();
    effects.Flag(
        "--rescan", mSearch.rescan,
        "$$$/Halcyon/TrHost/Help/Effects/Rescan=Look at all plug-ins again, also those that did not change");
    effects.Footer(Shown("$$$/Halcyon/TrHost/Help/Effects/MatchNames=A match name says which effect is "
                         "meant, whatever it is "
                         "called today: @0.#{@0: match names in quotation marks, separated by commas}",
                         {u"\"frei0r.glow\", \"avfilter.hflip\", \"ladspa.1413\""}) +
                   "\n\n" +
                   Examples({{"trhost effects list"},
                             {"trhost effects run frei0r.glow photo.png out.png --param blur=0.3"},
                             {"trhost effects check frei0r.glow"},
                             {"trhost effects crash-report"}}));

    effects.Add("list", "$$$/Halcyon/TrHost/Help/Effects/List=Print all effects, one a line",
                [this](Context& ioContext) { return EffectsList(ioContext, mSearch); });
    const CommandGrammar manage = effects.Add(
        "manage",
        "$$$/Halcyon/TrHost/Help/Effects/Manage=Search effects and switch them on and off in a window",
        [this](Context& ioContext) { return EffectsManage(ioContext, mSearch, mManage); });
    AddLook(manage, mManage);
    manage.Footer(
        Shown("$$$/Halcyon/TrHost/Help/Effects/Manage/AfterCrash=After a crash it opens with the effect that "
              "was running then.") +
        "\n\n" + Examples({{"trhost effects manage --theme light"}}));
    AddQuestions(effects);
    AddSwitches(effects);
    AddRuns(effects);
    AddTypeFile(effects);
}

void EffectCommands::AddQuestions(CommandGrammar inEffects)
{
    const CommandGrammar info =
        inEffects.Add("info",
                      "$$$/Halcyon/TrHost/Help/Effects/Info=Print all that is known of an effect, its "
                      "parameters with their ranges",
                      [this](Context& ioContext) { return EffectsInfo(ioContext, mSearch, mName); });
    info.Option("name", mName, "$$$/Halcyon/TrHost/Help/MatchName=Match name").Required().Type("NAME");

    const CommandGrammar types =
        inEffects.Add("types",
                      "$$$/Halcyon/TrHost/Help/Effects/Types=Print the types of an effect, or those that "
                      "pixel formats lead to",
                      [this](Context& ioContext) { return EffectsTypes(ioContext, mSearch, mTypes); });
    const OptionGrammar name =
        types.Option("name", mTypes.name, "$$$/Halcyon/TrHost/Help/MatchName=Match name").Type("NAME");
    types
        .Option("--from-formats", mTypes.formats,
                "$$$/Halcyon/TrHost/Help/Effects/Types/FromFormats=Pixel formats that an effect works in")
        .Type("FORMAT")
        .Excludes(name);
    types.Footer(Examples({{"trhost effects types --from-formats bgra32f v210"}}));

    const CommandGrammar report =
        inEffects.Add("crash-report",
                      "$$$/Halcyon/TrHost/Help/Effects/CrashReport=Print which effects crashed, how often, "
                      "and how to switch them off",
                      [this](Context& ioContext) { return EffectsCrashReport(ioContext, mReport); });
    report.Flag("--clear", mReport.clear,
                "$$$/Halcyon/TrHost/Help/Effects/CrashReport/Clear=Forget all crashes after printing them");
}

void EffectCommands::AddSwitches(CommandGrammar inEffects)
{
    const CommandGrammar enable =
        inEffects.Add("enable", "$$$/Halcyon/TrHost/Help/Effects/Enable=Let effects run again",
                      [this](Context& ioContext) { return EffectsEnable(ioContext, mSearch, mEnable); });
    enable.Option("name", mEnable.names, "$$$/Halcyon/TrHost/Help/MatchNames=Match names").Type("NAME");
    enable.Flag("--all", mEnable.all,
                "$$$/Halcyon/TrHost/Help/Effects/Enable/All=All that were switched off");
    const CommandGrammar disable =
        inEffects.Add("disable", "$$$/Halcyon/TrHost/Help/Effects/Disable=Do not let effects run any more",
                      [this](Context& ioContext) { return EffectsDisable(ioContext, mSearch, mEnable); });
    disable.Option("name", mEnable.names, "$$$/Halcyon/TrHost/Help/MatchNames=Match names")
        .Required()
        .Type("NAME");

    const CommandGrammar check =
        inEffects.Add("check",
                      "$$$/Halcyon/TrHost/Help/Effects/Check=Try effects out in processes of their own and "
                      "print what is wrong with them",
                      [this](Context& ioContext) { return EffectsCheck(ioContext, mSearch, mCheck); });
    check
        .Option("name", mCheck.names,
                "$$$/Halcyon/TrHost/Help/Effects/Check/Name=Match names, or a beginning of them with * "
                "(default: all)")
        .Type("NAME");
    check.Flag(
        "--disable-bad", mCheck.disableBad,
        "$$$/Halcyon/TrHost/Help/Effects/Check/DisableBad=Switch off those that something is wrong with");
    check
        .Option("--time-out", mCheck.secondsPerCase,
                "$$$/Halcyon/TrHost/Help/Effects/Check/TimeOut=Seconds that one try may take (10)")
        .Range(1, 3600)
        .Type("SECONDS");
    check.Footer(
        Shown("$$$/Halcyon/TrHost/Help/Effects/Check/How=Every effect runs on pictures from 8x8 to "
              "2048x2048, or on "
              "sound, with guard pages around all memory that it is given. Exit status 1 when something "
              "is wrong with any.") +
        "\n\n" + Examples({{"trhost effects check 'frei0r.*' --disable-bad"}}));
}

void EffectCommands::AddRuns(CommandGrammar inEffects)
{
    const CommandGrammar run = inEffects.Add(
        "run", "$$$/Halcyon/TrHost/Help/Effects/Run=Run an effect on a picture, a clip or sound",
        [this](Context& ioContext) { return EffectsRun(ioContext, mSearch, mRun); });
    run.Option("name", mRun.name, "$$$/Halcyon/TrHost/Help/MatchName=Match name").Required().Type("NAME");
    run.Option("file", mRun.files,
               "$$$/Halcyon/TrHost/Help/Effects/Run/File=Input (a PNG, a clip, sound; none for a generator) "
               "and output")
        .Required()
        .Type("FILE");
    AddParameters(run, mRun.parameters);
    run.Option("--frames", mRun.frames,
               "$$$/Halcyon/TrHost/Help/Effects/Run/Frames=Pictures to make; the last is written, or all "
               "when the output is named as in out-%03d.png")
        .Range(1, 1000000)
        .Type("N");
    run.ParsedInto("--size",
                   "$$$/Halcyon/TrHost/Help/Effects/Run/Size=Size of a generator's picture (1920x1080)",
                   "$$$/Halcyon/TrHost/Help/Expected/EffectsRunSize=a size such as 1920x1080",
                   &ParsePictureSize, mRun.size)
        .Type("WxH");
    run.ParsedInto(
           "--format",
           "$$$/Halcyon/TrHost/Help/Effects/Run/Format=Pixel format to work in (default: the effect's best)",
           "$$$/Halcyon/TrHost/Help/Expected/EffectsRunFormat=the name of a pixel format; see trhost effects "
           "info",
           &FormatNamed, mRun.format)
        .Type("FORMAT");
    run.Flag("--force", mRun.force, "$$$/Halcyon/TrHost/Help/Effects/Run/Force=Overwrite a sound file");
    run.Footer(Examples({{"trhost effects run frei0r.pixeliz0r photo.png out.png --param blocksizex=0.05"},
                         {"trhost effects run avfilter.tmix clip.mov out-%03d.png --frames 10"},
                         {"trhost effects run ladspa.1413 voice.wav louder.wav"}}));

    const CommandGrammar transition = inEffects.Add(
        "transition", "$$$/Halcyon/TrHost/Help/Effects/Transition=Run a transition between two pictures",
        [this](Context& ioContext) { return EffectsTransition(ioContext, mSearch, mTransition); });
    transition.Option("name", mTransition.name, "$$$/Halcyon/TrHost/Help/MatchName=Match name")
        .Required()
        .Type("NAME");
    transition
        .Option("from", mTransition.from,
                "$$$/Halcyon/TrHost/Help/Effects/Transition/From=Picture that it begins with (PNG)")
        .Required()
        .Type("FILE");
    transition
        .Option("to", mTransition.to,
                "$$$/Halcyon/TrHost/Help/Effects/Transition/To=Picture that it ends with (PNG)")
        .Required()
        .Type("FILE");
    transition
        .Option("output", mTransition.output,
                "$$$/Halcyon/TrHost/Help/PictureFile=File to write: .png or .raw")
        .Required()
        .Type("FILE");
    transition
        .ParsedInto("--at",
                    "$$$/Halcyon/TrHost/Help/Effects/Transition/At=Place on the way, from 0 to 1 (0.5)",
                    "$$$/Halcyon/TrHost/Help/Expected/EffectsTransitionAt=a number from 0 to 1",
                    &ParsePosition, mTransition.at)
        .Type("PLACE");
    AddParameters(transition, mTransition.parameters);
    transition.Footer(Examples({{"trhost effects transition avfilter.xfade a.png b.png out.png --at 0.25 "
                                 "--param transition=wipeleft"}}));
}

void EffectCommands::AddParameters(CommandGrammar inCommand, std::vector<std::string>& outParameters)
{
    inCommand
        .Option("--param", outParameters,
                "$$$/Halcyon/TrHost/Help/Effects/Param=Set a parameter; may be repeated (see effects info)")
        .Type("NAME=VALUE")
        .Repeatable();
}

void EffectCommands::AddTypeFile(CommandGrammar inEffects)
{
    const CommandGrammar type = inEffects.Add(
        "type", "$$$/Halcyon/TrHost/Help/Effects/Type=Print what an effect-type file says, or write one",
        [this](Context& ioContext) { return EffectsTypeFile(ioContext, mTypeFile); });
    type.Option("file", mTypeFile.file, "$$$/Halcyon/TrHost/Help/Effects/Type/File=Effect-type file (XML)")
        .Required()
        .Type("FILE");
    const OptionGrammar write =
        type.Flag("--write", mTypeFile.write, "$$$/Halcyon/TrHost/Help/Effects/Type/Write=Make the file");
    type.Flag("--force", mTypeFile.force, "$$$/Halcyon/TrHost/Help/ReplaceFile=Replace a file that is there")
        .Needs(write);
    type.Option("--guid", mTypeFile.guid,
                "$$$/Halcyon/TrHost/Help/Effects/Type/Guid=Its identifier (default: a new one)")
        .Type("GUID")
        .Needs(write);
    type.Option("--name", mTypeFile.name, "$$$/Halcyon/TrHost/Help/Effects/Type/Name=Its name, for programs")
        .Type("TEXT")
        .Needs(write);
    type.Option("--description", mTypeFile.descriptions,
                "$$$/Halcyon/TrHost/Help/Effects/Type/Description=Its description in a language, as in "
                "de_DE=Schnell; may be repeated")
        .Type("LOCALE=TEXT")
        .Repeatable()
        .Needs(write);
    type.Option("--match-name", mTypeFile.matchNames,
                "$$$/Halcyon/TrHost/Help/Effects/Type/MatchName=An effect of this type; may be repeated")
        .Type("NAME")
        .Repeatable()
        .Needs(write);
    type.Footer(Examples({{"trhost effects type fast.xml --lang de"},
                          {"trhost effects type fast.xml --write --name Fast --description en_US=Fast "
                           "--match-name frei0r.glow"}}));
}

} // namespace trhost
