#include "Program.h"

#include "../support/Failure.h"
#include "../support/HostSession.h"
#include "../support/Interrupt.h"

#include <TR/TRFoundation.h>
#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/platform/Modules.h>

#include <charconv>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>

namespace trhost {

namespace {

using kiocore::utility::ToUTF16;

void SwitchTracesOn(const GlobalOptions& inOptions)
{
    constexpr int kEverything = 10;
    for (const std::string& trace : inOptions.traces) {
        const std::size_t colon = trace.find(':');
        int level = kEverything;
        if (colon != std::string::npos) {
            const char* end = trace.data() + trace.size();
            const auto [stop, error] = std::from_chars(trace.data() + colon + 1, end, level);
            if (error != std::errc() || stop != end || level < 0 || level > kEverything) {
                throw Failure(kExit_Usage,
                              Text("$$$/Halcyon/TrHost/BadTraceLevel=--trace @0: expected CHANNEL, or "
                                   "CHANNEL:LEVEL with a level from 0 to 10",
                                   {ToUTF16(trace)}));
            }
        }
        if (colon == 0 || trace.empty()) {
            throw Failure(kExit_Usage,
                          Text("$$$/Halcyon/TrHost/NoTraceChannel=--trace @0 names no channel; the library's "
                               "calls are on channel Host",
                               {ToUTF16(trace)}));
        }
        kiocore::debug::SetTraceLevel(std::string_view(trace).substr(0, colon), level);
    }
}

/// "de_AT" of the environment's "de_AT.UTF-8".
std::string LanguageOfEnvironment()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const char* value = std::getenv(variable); value && value[0]) {
            const std::string language(value);
            return language.substr(0, language.find_first_of(".@"));
        }
    }
    return {};
}

/// What --lang says, wherever it stands; null when it does not.
std::optional<std::string> LanguageOfArguments(int inCount, char** inArguments)
{
    constexpr std::string_view kOption = "--lang";
    std::optional<std::string> language;
    for (int i = 1; i < inCount && std::string_view(inArguments[i]) != "--"; ++i) {
        const std::string_view argument = inArguments[i];
        if (argument == kOption && i + 1 < inCount) {
            language = inArguments[++i];
        } else if (argument.starts_with(kOption) && argument.substr(kOption.size()).starts_with('=')) {
            language = argument.substr(kOption.size() + 1);
        }
    }
    return language;
}

int RunInSession(const GlobalOptions& inOptions, Output& ioOutput,
                 const std::function<int(Context&)>& inCommand)
{
    const ScInterruptHandler interruptHandler;
    SwitchTracesOn(inOptions);
    const StateFolders folders = FindStateFolders(inOptions.stateFolder);
    const HostSession session(inOptions, folders, ioOutput);
    Context context{inOptions, ioOutput, folders, session.GetMainThread()};
    return inCommand(context);
}

} // namespace

std::string ProgramVersion()
{
    return "trhost " TRHOST_VERSION;
}

void ChooseLanguage(int inCount, char** inArguments)
{
    using kiocore::config::Localizer;
    const std::optional<std::string> asked = LanguageOfArguments(inCount, inArguments);
    const std::string language = asked ? *asked : LanguageOfEnvironment();
    const std::string program = kiocore::platform::ProgramPath();
    const std::string folder = program.substr(0, program.find_last_of('/')) + "/../share/trhost/locale";
    try {
        if (Localizer::SetLanguage(language, folder) < 0 && asked) {
            Output(false, false)
                .Error(Text("$$$/Halcyon/TrHost/NoLanguage=there are no texts in language @0 in @1; English "
                            "is used",
                            {ToUTF16(language), ToUTF16(folder)}));
        }
    } catch (const kiocore::kio_exception& error) {
        // What the environment says may be meant for other programs.
        if (asked || error.Code() != kiocore::kError_BadArgument) {
            throw;
        }
    }
    const auto* const inLibrary = reinterpret_cast<const void*>(&TR::TRFoundation::Initialize);
    Localizer::AddTexts(kiocore::platform::ResourceFolder(inLibrary, "TRFoundation") + "/locale");
}

int RunCommand(const GlobalOptions& inOptions, const std::function<int(Context&)>& inCommand)
{
    Output output(inOptions.json, inOptions.quiet);
    try {
        return RunInSession(inOptions, output, inCommand);
    } catch (const Failure& failure) {
        output.Error(failure.GetText());
        return failure.GetStatus();
    } catch (const std::exception& error) {
        output.Error(Told(error));
        return kExit_Failed;
    }
}

} // namespace trhost
