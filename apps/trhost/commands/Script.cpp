#include "ScriptOptions.h"

#include "../script/AllowedModules.h"
#include "../script/Prompt.h"
#include "../script/objects/HostObject.h"
#include "../support/Failure.h"
#include "../support/Interrupt.h"
#include "../support/ScriptLoader.h"

#include <kiocore/filesupport/NativePath.h>
#include <kiocore/filesupport/PlatformByteStream.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>

namespace trhost {
namespace {

namespace fs = std::filesystem;
using kiocore::utility::ToUTF16;
using kioscripting::ConsoleLevel;
using script::ScriptHost;
using script::ScriptHostPtr;

/// What is to be run.
struct Source {
    std::string file; ///< for messages and `require`; native
    std::string text;
};

Source SourceOf(const ScriptOptions& inOptions)
{
    if (inOptions.code) {
        return {fs::current_path() / "[-e]", *inOptions.code};
    }
    const std::string& file = inOptions.words.front();
    if (file == "-") {
        return {fs::current_path() / "[stdin]",
                std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>())};
    }
    kiocore::filesupport::IPlatformByteStream stream(kiocore::filesupport::FromNative(file));
    std::string text(stream.Size(), '\0');
    text.resize(stream.ReadBlock(text.data(), text.size()));
    if (text.starts_with("#!")) {
        text.insert(0, "//"); // the lines keep their numbers
    }
    return {fs::absolute(file), std::move(text)};
}

script::AllowedFolders FoldersOf(const ScriptOptions& inOptions, bool inHasFile)
{
    std::vector<std::string> readable = inOptions.readFolders;
    readable.push_back(".");
    if (inHasFile && inOptions.words.front() != "-") {
        readable.push_back(fs::absolute(inOptions.words.front()).parent_path());
    }
    const std::vector<std::string> here = {"."};
    return {readable, inOptions.writeFolders.empty() ? here : inOptions.writeFolders};
}

const char* NameOf(ConsoleLevel inLevel)
{
    switch (inLevel) {
    case ConsoleLevel::kLog:
        return "log";
    case ConsoleLevel::kInfo:
        return "info";
    case ConsoleLevel::kWarning:
        return "warning";
    case ConsoleLevel::kError:
        return "error";
    }
    return "log";
}

void PutOnConsole(Output& ioOutput, ConsoleLevel inLevel, const std::string& inText)
{
    const bool isComplaint = inLevel == ConsoleLevel::kWarning || inLevel == ConsoleLevel::kError;
    if (isComplaint && !ioOutput.IsJson()) {
        std::fprintf(stderr, "%s\n", inText.c_str());
        return;
    }
    JsonLine object;
    object.Add("level", NameOf(inLevel)).Add("text", inText);
    ioOutput.Result(ToUTF16(inText), object);
}

kioscripting::EngineSettings SettingsOf(Context& ioContext, const ScriptOptions& inOptions,
                                        const ScriptHostPtr& inHost)
{
    kioscripting::EngineSettings settings;
    settings.console = [&output = ioContext.output](ConsoleLevel inLevel, const std::string& inText) {
        PutOnConsole(output, inLevel, inText);
    };
    settings.loadModule = [inHost](const std::string& inName, const std::string& inFromFile) {
        return script::FindModule(inHost->folders, inName, inFromFile);
    };
    settings.timeLimitSeconds = inOptions.timeLimitSeconds.value_or(0);
    settings.isCancelled = [] { return IsInterrupted(); };
    settings.tellError = [](const std::exception& inError) {
        return kiocore::utility::ToUTF8(Told(inError));
    };
    return settings;
}

void Run(Context& ioContext, const ScriptOptions& inOptions, kioscripting::IScriptEngine& ioEngine)
{
    const Source source = SourceOf(inOptions);
    if (!inOptions.code) {
        ioEngine.Execute(source.text, source.file);
        return;
    }
    const std::string value = ioEngine.EvaluateToText(source.text, source.file);
    if (value != "undefined") {
        JsonLine object;
        object.Add("value", value);
        ioContext.output.Result(ToUTF16(value), object);
    }
}

} // namespace

int Script(Context& ioContext, const ScriptOptions& inOptions)
{
    if (inOptions.isReference) {
        ioContext.output.Document(ScriptReference());
        return kExit_Done;
    }
    if (inOptions.timeLimitSeconds && !(*inOptions.timeLimitSeconds > 0)) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/ScriptTimeLimit=--time-limit: expected seconds above 0"));
    }
    const bool hasFile = !inOptions.code && !inOptions.isPrompt;
    const auto host = std::make_shared<ScriptHost>(ioContext, FoldersOf(inOptions, hasFile));
    host->search.folders = inOptions.effectFolders;
    host->arguments.assign(inOptions.words.begin() + (hasFile ? 1 : 0), inOptions.words.end());
    script::IScriptModule& module = LoadScriptModule();
    const auto engine = module.MakeEngine(SettingsOf(ioContext, inOptions, host));
    script::SetGlobals(*engine, host);
    try {
        if (inOptions.isPrompt) {
            script::RunPrompt(ioContext, module, *engine);
        } else {
            Run(ioContext, inOptions, *engine);
        }
    } catch (const kioscripting::script_exception& error) {
        ThrowIfInterrupted();
        throw Failure(kExit_Failed, script::DescribeError(error));
    }
    return host->exitStatus;
}

} // namespace trhost
