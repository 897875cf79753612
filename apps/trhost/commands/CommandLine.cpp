#include "CommandLine.h"

#include "Completion.h"
#include "Program.h"
#include "line/CommandGroups.h"
#include "line/Grammar.h"

#include "../support/Failure.h"

#include <cstdio>
#include <exception>

namespace trhost {

namespace {

std::string ExamplesAndStatuses()
{
    return Examples({
               {"trhost ingest ~/Footage",
                "$$$/Halcyon/TrHost/Help/Examples/Ingest=conform all media below a folder"},
               {"trhost ingest ~/Footage", "$$$/Halcyon/TrHost/Help/Examples/Again=again: all up to date"},
               {"trhost cache show ~/Footage/clip.mov",
                "$$$/Halcyon/TrHost/Help/Examples/Show=what is recorded for one file"},
               {"trhost cache find clip.mov --key PeakFile --up-to-date"},
               {"trhost cache clean", "$$$/Halcyon/TrHost/Help/Examples/Clean=remove what belongs to media "
                                      "that changed or is gone"},
               {"trhost cache prune --older-than 90d --max-size 50G --dry-run"},
               {"trhost frame clip.mov --at 1.5s -o still.png",
                "$$$/Halcyon/TrHost/Help/Examples/Frame=the picture on show at a time"},
               {"trhost still ColorBars --size 1280x720 --format v210 -o bars.raw"},
               {"trhost compare expected.png made.png --diff difference.png",
                "$$$/Halcyon/TrHost/Help/Examples/Compare=what differs between two pictures"},
               {"trhost --state /tmp/try --json cache list",
                "$$$/Halcyon/TrHost/Help/Examples/Json=one JSON object a line"},
               {"trhost play clip.mov --from 1:05", "$$$/Halcyon/TrHost/Help/Examples/Play=hear its sound"},
               {"trhost record take1.wav", "$$$/Halcyon/TrHost/Help/Examples/Record=until Ctrl-C"},
               {"trhost effects list",
                "$$$/Halcyon/TrHost/Help/Examples/Effects=the effect plug-ins of this machine"},
               {"trhost effects run frei0r.glow in.png out.png"},
               {"trhost effects manage",
                "$$$/Halcyon/TrHost/Help/Examples/Manage=search them, switch them on and off"},
               {"source <(trhost completion bash)"},
           }) +
           "\n\n" +
           Shown("$$$/Halcyon/TrHost/Help/ExitStatus=Exit status: 0 done, 1 a negative answer (not found, "
                 "stale, "
                 "differs), 2 wrong usage, 3 failed.");
}

void AddGlobalOptions(CommandGrammar inRoot, GlobalOptions& outOptions)
{
    inRoot
        .Option("--state", outOptions.stateFolder,
                "$$$/Halcyon/TrHost/Help/Global/State=Keep preferences, records and cache files below this "
                "folder (default: the XDG folders)")
        .Type("DIR");
    inRoot.Flag("--json", outOptions.json,
                "$$$/Halcyon/TrHost/Help/Global/Json=Print one JSON object a line");
    inRoot.Flag("-q,--quiet", outOptions.quiet,
                "$$$/Halcyon/TrHost/Help/Global/Quiet=Print answers and errors only");
    inRoot
        .Option("--lang", outOptions.language,
                "$$$/Halcyon/TrHost/Help/Global/Lang=Language of texts (default: from the environment)")
        .Type("LANGUAGE");
    inRoot
        .Option("--suite-version", outOptions.suiteVersion,
                "$$$/Halcyon/TrHost/Help/Global/SuiteVersion=Version of the host suite to work as (14.0)")
        .Type("VERSION");
    inRoot
        .Option("--app-name", outOptions.applicationName,
                "$$$/Halcyon/TrHost/Help/Global/AppName=Name of the host application")
        .Type("NAME");
    inRoot
        .Option("--app-type", outOptions.applicationType,
                "$$$/Halcyon/TrHost/Help/Global/AppType=Number of the host application's kind")
        .Type("NUMBER");
    inRoot
        .Option("--trace", outOptions.traces,
                "$$$/Halcyon/TrHost/Help/Global/Trace=Trace a channel to standard error; may be repeated")
        .Type("CHANNEL[:LEVEL]")
        .Repeatable();
    inRoot.Flag("--safe-mode", outOptions.safeMode,
                "$$$/Halcyon/TrHost/Help/Global/SafeMode=Run without third-party effects, and note nothing "
                "about crashes");
    inRoot
        .Option("--feature", outOptions.features,
                "$$$/Halcyon/TrHost/Help/Global/Feature=Switch a feature on or off; may be repeated")
        .Type("NAME=on|off")
        .Repeatable();
    inRoot
        .Option("--debug-db", outOptions.debugValues,
                "$$$/Halcyon/TrHost/Help/Global/DebugDb=Set a value for fault finding; may be repeated")
        .Type("KEY=VALUE")
        .Repeatable();
}

/// Everything that can be said, and the values that it fills.
class CommandLine {
public:
    CommandLine()
        : mGrammar(
              "$$$/Halcyon/TrHost/Help/Program=Conforms media files, keeps track of their cache files, and "
              "runs effects on them.",
              ExamplesAndStatuses(), ProgramVersion()),
          mMedia(mGrammar.Root()), mAssets(mGrammar.Root()), mPictures(mGrammar.Root()),
          mCompare(mGrammar.Root()), mDevices(mGrammar.Root()), mEffects(mGrammar.Root()),
          mDialogs(mGrammar.Root()), mScripts(mGrammar.Root())
    {
        AddGlobalOptions(mGrammar.Root(), mOptions);
        mGrammar.Root()
            .Add("completion", "$$$/Halcyon/TrHost/Help/Completion=Print a shell's completion script",
                 [](Context&) { return kExit_Done; }) // printed without bringing the host up
            .Option("shell", mCompletionShell, "$$$/Halcyon/TrHost/Help/Completion/Shell=bash, zsh or fish")
            .Required()
            .OneOf({"bash", "zsh", "fish"})
            .Type("SHELL");
    }

    /// @return the exit status when everything is done already.
    std::optional<int> Parse(int inCount, char** inArguments)
    {
        if (const auto status = mGrammar.Parse(inCount, inArguments)) {
            return status;
        }
        if (!mCompletionShell.empty()) {
            const std::string script = CompletionScript(mGrammar.Describe(), mCompletionShell);
            std::fwrite(script.data(), 1, script.size(), stdout);
            return std::fflush(stdout) == 0 ? kExit_Done : kExit_Failed;
        }
        return std::nullopt;
    }

    const GlobalOptions& Options() const { return mOptions; }
    const CommandFunction& Chosen() const { return mGrammar.Chosen(); }

private:
    GlobalOptions mOptions;
    std::string mCompletionShell;
    Grammar mGrammar;
    MediaCommands mMedia;
    AssetCommands mAssets;
    PictureCommands mPictures;
    CompareCommands mCompare;
    DeviceCommands mDevices;
    EffectCommands mEffects;
    DialogCommands mDialogs;
    ScriptCommands mScripts;
};

} // namespace

int RunProgram(int inCount, char** inArguments) noexcept
{
    try {
        ChooseLanguage(inCount, inArguments);
        CommandLine line;
        if (const auto status = line.Parse(inCount, inArguments)) {
            return *status;
        }
        return RunCommand(line.Options(), line.Chosen());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "trhost: %s\n", kiocore::utility::ToUTF8(Told(error)).c_str());
        return kExit_Failed;
    }
}

} // namespace trhost
