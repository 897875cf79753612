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

constexpr const char* kExamples =
    "Examples:\n"
    "  trhost ingest ~/Footage                     conform all media below a folder\n"
    "  trhost ingest ~/Footage                     again: all up to date\n"
    "  trhost cache show ~/Footage/clip.mov        what is recorded for one file\n"
    "  trhost cache find clip.mov --key PeakFile --up-to-date\n"
    "  trhost cache clean                          remove what belongs to media that changed or is gone\n"
    "  trhost cache prune --older-than 90d --max-size 50G --dry-run\n"
    "  trhost frame clip.mov --at 1.5s -o still.png  the picture on show at a time\n"
    "  trhost still ColorBars --size 1280x720 --format v210 -o bars.raw\n"
    "  trhost --state /tmp/try --json cache list   one JSON object a line\n"
    "  trhost play clip.mov --from 1:05            hear its sound\n"
    "  trhost record take1.wav                     until Ctrl-C\n"
    "  trhost effects list                         the effect plug-ins of this machine\n"
    "  trhost effects run frei0r.glow in.png out.png\n"
    "  trhost effects manage                       search them, switch them on and off\n"
    "  source <(trhost completion bash)\n"
    "\n"
    "Exit status: 0 done, 1 a negative answer (not found, stale, differs), 2 wrong usage, 3 failed.";

void AddGlobalOptions(CommandGrammar inRoot, GlobalOptions& outOptions)
{
    inRoot
        .Option("--state", outOptions.stateFolder,
                "Keep preferences, records and cache files below this folder (default: the XDG folders)")
        .Type("DIR");
    inRoot.Flag("--json", outOptions.json, "Print one JSON object a line");
    inRoot.Flag("-q,--quiet", outOptions.quiet, "Print answers and errors only");
    inRoot.Option("--lang", outOptions.language, "Language of texts (default: from the environment)")
        .Type("LANGUAGE");
    inRoot.Option("--suite-version", outOptions.suiteVersion, "Version of the host suite to work as (14.0)")
        .Type("VERSION");
    inRoot.Option("--app-name", outOptions.applicationName, "Name of the host application").Type("NAME");
    inRoot.Option("--app-type", outOptions.applicationType, "Number of the host application's kind")
        .Type("NUMBER");
    inRoot.Option("--trace", outOptions.traces, "Trace a channel to standard error; may be repeated")
        .Type("CHANNEL[:LEVEL]")
        .Repeatable();
    inRoot.Flag("--safe-mode", outOptions.safeMode,
                "Run without third-party effects, and note nothing about crashes");
    inRoot.Option("--feature", outOptions.features, "Switch a feature on or off; may be repeated")
        .Type("NAME=on|off")
        .Repeatable();
    inRoot.Option("--debug-db", outOptions.debugValues, "Set a value for fault finding; may be repeated")
        .Type("KEY=VALUE")
        .Repeatable();
}

/// Everything that can be said, and the values that it fills.
class CommandLine {
public:
    CommandLine()
        : mGrammar("Conforms media files, keeps track of their cache files, and runs effects on them.",
                   kExamples, ProgramVersion()),
          mMedia(mGrammar.Root()), mAssets(mGrammar.Root()), mPictures(mGrammar.Root()),
          mDevices(mGrammar.Root()), mEffects(mGrammar.Root()), mDialogs(mGrammar.Root())
    {
        AddGlobalOptions(mGrammar.Root(), mOptions);
        mGrammar.Root()
            .Add("completion", "Print a shell's completion script",
                 [](Context&) { return kExit_Done; }) // printed without bringing the host up
            .Option("shell", mCompletionShell, "bash, zsh or fish")
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
    DeviceCommands mDevices;
    EffectCommands mEffects;
    DialogCommands mDialogs;
};

} // namespace

int RunProgram(int inCount, char** inArguments) noexcept
{
    try {
        CommandLine line;
        if (const auto status = line.Parse(inCount, inArguments)) {
            return *status;
        }
        return RunCommand(line.Options(), line.Chosen());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "trhost: %s\n", error.what());
        return kExit_Failed;
    }
}

} // namespace trhost
