#include "Prompt.h"

#include "../support/Failure.h"
#include "../support/Interrupt.h"

#include <kiocore/filesupport/NativePath.h>

#include <filesystem>
#include <unistd.h>

namespace trhost::script {
namespace {

using kiocore::utility::ToUTF16;

std::string HistoryFile(const Context& inContext)
{
    const kiocore::UTF16String& preferences = inContext.folders.preferencesFile;
    return kiocore::filesupport::ToNative(preferences.substr(0, preferences.find_last_of(u'/') + 1) +
                                          u"script-history");
}

void RunText(Context& ioContext, kioscripting::IScriptEngine& ioEngine, const std::string& inText)
{
    try {
        const std::string value =
            ioEngine.EvaluateToText(inText, std::filesystem::current_path() / "[prompt]");
        JsonLine object;
        object.Add("value", value);
        ioContext.output.Result(ToUTF16(value), object);
    } catch (const kioscripting::script_exception& error) {
        ioContext.output.Error(DescribeError(error));
    }
}

} // namespace

void RunPrompt(Context& ioContext, IScriptModule& ioModule, kioscripting::IScriptEngine& ioEngine)
{
    LineEditorSettings settings;
    settings.historyFile = HistoryFile(ioContext);
    settings.complete = [&ioEngine](const std::string& inText) { return ioEngine.Complete(inText); };
    const auto editor = ioModule.MakeLineEditor(std::move(settings));
    if (isatty(STDIN_FILENO) != 0 && !ioContext.output.IsQuiet()) {
        ioContext.output.Line(Text(
            "$$$/Halcyon/TrHost/ScriptPrompt=@0. describe(\"Halcyon\") lists what there is; Ctrl-D ends.",
            {ToUTF16(ioModule.EngineVersion())}));
    }
    std::string text;
    while (const std::optional<std::string> line = editor->ReadLine(text.empty() ? "> " : "... ")) {
        if (IsInterrupted()) {
            if (!ForgetInterrupt()) {
                return;
            }
            text.clear();
            continue;
        }
        text += (text.empty() ? "" : "\n") + *line;
        if (text.empty() || ioEngine.IsIncomplete(text)) {
            continue;
        }
        editor->Remember(text);
        RunText(ioContext, ioEngine, text);
        text.clear();
        if (IsInterrupted() && !ForgetInterrupt()) {
            return;
        }
    }
    if (!text.empty()) {
        RunText(ioContext, ioEngine, text); // to be told what is missing
    }
}

kiocore::UTF16String DescribeError(const kioscripting::script_exception& inError)
{
    std::string text = inError.Full();
    const std::string& stack = inError.Place().stack;
    if (stack.find('\n') != std::string::npos) {
        text += "\n" + stack;
    }
    return ToUTF16(text);
}

} // namespace trhost::script
