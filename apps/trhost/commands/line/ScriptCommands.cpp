#include "CommandGroups.h"

namespace trhost {

ScriptCommands::ScriptCommands(CommandGrammar inRoot)
{
    const CommandGrammar script = inRoot.Add(
        "script",
        "$$$/Halcyon/TrHost/Help/Script=Run a script that compares pictures, takes frames, runs effects");
    script
        .Option("file", mFile, "$$$/Halcyon/TrHost/Help/Script/File=The script's file (- is standard input)")
        .Type("FILE");
    script
        .Option(
            "arguments", mArguments,
            "$$$/Halcyon/TrHost/Help/Script/Arguments=What the script gets as host.arguments; behind -- also "
            "what begins with a dash")
        .Type("ARG");
    const OptionGrammar code =
        script
            .Option("-e,--eval", mScript.code,
                    "$$$/Halcyon/TrHost/Help/Script/Eval=Run this instead of a file, and print its value")
            .Type("CODE");
    const OptionGrammar prompt = script.Flag(
        "--repl", mScript.isPrompt,
        "$$$/Halcyon/TrHost/Help/Script/Repl=Read lines and run each, with history and completion");
    const OptionGrammar reference =
        script.Flag("--reference", mScript.isReference,
                    "$$$/Halcyon/TrHost/Help/Script/Reference=Print what scripts can use, as Markdown");
    prompt.Excludes(code);
    reference.Excludes(code).Excludes(prompt);
    script
        .Option("--read", mScript.readFolders,
                "$$$/Halcyon/TrHost/Help/Script/Read=Let the script read below this folder, beside its own; "
                "may be "
                "repeated")
        .Type("DIR")
        .Repeatable();
    script
        .Option("--write", mScript.writeFolders,
                "$$$/Halcyon/TrHost/Help/Script/Write=Let the script read and write below this folder "
                "instead of the "
                "current one; may be repeated")
        .Type("DIR")
        .Repeatable();
    script
        .Option("--folder", mScript.effectFolders,
                "$$$/Halcyon/TrHost/Help/Script/Folder=Look for effect plug-ins here too; may be repeated")
        .Type("DIR")
        .Repeatable();
    script
        .Option(
            "--time-limit", mScript.timeLimitSeconds,
            "$$$/Halcyon/TrHost/Help/Script/TimeLimit=End the script after so many seconds of processor time")
        .Type("SECONDS");
    script.Footer(
        Examples({{"trhost script check.js -- before.png after.png"},
                  {"trhost script -e 'new Halcyon.TRFoundation.PixelComparison().pixelCompare(\"a.png\", "
                   "\"b.png\").numDiffPixels'"},
                  {"trhost script --repl --read ~/Footage"}}));
    script.WhenNamed([this, script] {
        mScript.words = mArguments;
        if (mFile) {
            mScript.words.insert(mScript.words.begin(), *mFile);
        }
        if (mScript.words.empty() && !mScript.code && !mScript.isPrompt && !mScript.isReference) {
            CommandGrammar::ThrowMissingArgument(
                "$$$/Halcyon/TrHost/Line/ScriptMissing=script FILE, -e CODE or --repl is required");
        }
        script.Choose([this](Context& ioContext) { return Script(ioContext, mScript); });
    });
}

} // namespace trhost
