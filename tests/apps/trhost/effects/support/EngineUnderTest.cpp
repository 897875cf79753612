#include "EngineUnderTest.h"

#include <kiocore/platform/Modules.h>

#include <algorithm>
#include <stdexcept>

namespace effectstests {
namespace {

thread_local std::vector<std::string> tNames;

struct Notes {
    std::mutex lock; // guards the member below
    std::vector<std::string> lines;
};
Notes& TheNotes()
{
    static auto* const notes = new Notes; // plug-ins may note their end at exit
    return *notes;
}

} // namespace

void WatchedCalls::Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall)
{
    Run(inModule->GetMatchName().AsString(), inCall);
}

void WatchedCalls::Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
                        const std::function<void()>& inCall)
{
    if (inModule->GetMetadata().matchName != inMatchName) {
        throw std::logic_error("called under the name of another plug-in");
    }
    Run(inMatchName.AsString(), inCall);
}

std::string WatchedCalls::Current()
{
    return tNames.empty() ? std::string() : tNames.back();
}

void WatchedCalls::Run(const std::string& inMatchName, const std::function<void()>& inCall)
{
    tNames.push_back(inMatchName);
    try {
        inCall();
    } catch (...) {
        tNames.pop_back();
        throw;
    }
    tNames.pop_back();
}

std::vector<std::string> TakeNotes()
{
    Notes& notes = TheNotes();
    std::lock_guard lock(notes.lock);
    return std::exchange(notes.lines, {});
}

trhost::effects::IEffectEngine& LoadEngine(const char* inModulePath)
{
    static WatchedCalls sCalls;
    const auto function = reinterpret_cast<trhost::effects::EffectEngineFunction>(
        kiocore::platform::LoadModuleFunction(inModulePath, trhost::effects::kEffectEngineFunctionName));
    trhost::effects::IEffectEngine* const engine = function(trhost::effects::kEffectEngineVersion, sCalls);
    if (!engine) {
        throw std::logic_error(std::string(inModulePath) + " is of another version than its header");
    }
    return *engine;
}

const trhost::effects::EffectParameter* FindParameter(const trhost::effects::EffectDescription& inDescription,
                                                      std::string_view inName)
{
    const auto found = std::find_if(inDescription.parameters.begin(), inDescription.parameters.end(),
                                    [&](const auto& inParameter) { return inParameter.name == inName; });
    return found == inDescription.parameters.end() ? nullptr : &*found;
}

} // namespace effectstests

extern "C" void NotePluginCall(const char* inWhat)
{
    using namespace effectstests;
    Notes& notes = TheNotes();
    std::lock_guard lock(notes.lock);
    notes.lines.push_back(std::string(inWhat) + " in " + WatchedCalls::Current());
}
