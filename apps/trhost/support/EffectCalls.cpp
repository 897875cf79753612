#include "EffectCalls.h"

#include "Failure.h"
#include "KeptText.h"
#include "ModuleLoader.h"
#include "PluginWatch.h"

#include <TR/EffectPluginManagerCrashDetection.h>
#include <kiocore/config/Errors.h>

#include <cxxabi.h>
#include <exception>
#include <map>
#include <mutex>

namespace trhost {

namespace {

using kiocore::ImmutableString;
using kiocore::utility::ToUTF16;

[[noreturn]] void ThrowPluginThrew(const ImmutableString& inMatchName, const std::string& inWhat)
{
    throw kiocore::kio_exception(Text("$$$/Halcyon/TrHost/PluginThrew=@0 threw an exception: @1",
                                      {ToUTF16(inMatchName.View()), ToUTF16(inWhat)}),
                                 effects::kEffectError_PluginFailed);
}

/// Runs a call and catches what leaves it here, within the sentinel's scope: further out, a function that may
/// not throw would end the process when no plug-in is named any more.
void RunCall(const ImmutableString& inMatchName, const std::function<void()>& inCall)
{
    try {
        inCall();
    } catch (const kiocore::kio_exception&) {
        throw; // the engine's own
    } catch (const abi::__forced_unwind&) {
        throw; // the thread is ending, which may not be stopped
    } catch (const std::exception& error) {
        ThrowPluginThrew(inMatchName, error.what());
    } catch (...) {
        ThrowPluginThrew(inMatchName, ToldText("$$$/Halcyon/TrHost/Effects/ThrewSilently=of a type that says "
                                               "nothing#{stands for what an exception said}"));
    }
}

class EffectCalls final : public effects::IPluginCalls {
public:
    void Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall) override
    {
        const ImmutableString matchName = inModule->GetMatchName();
        const ScWatchedCall watched(matchName);
        const TR::ScSetCurrentPluginModule sentinel(inModule, 0);
        RunCall(matchName, inCall);
    }
    void Call(const ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
              const std::function<void()>& inCall) override
    {
        const ScWatchedCall watched(inMatchName);
        const TR::ScSetCurrentPluginModule sentinel(inMatchName, inModule, 0);
        RunCall(inMatchName, inCall);
    }
};

const char* ModuleOf(const std::string& inTechnology)
{
    const std::map<std::string, const char*> modules = {
        {"frei0r", effects::kFrei0rModuleFileName},
        {"avfilter", effects::kAvfilterModuleFileName},
        {"ladspa", effects::kLadspaModuleFileName},
    };
    const auto found = modules.find(inTechnology);
    if (found == modules.end()) {
        throw Failure(kExit_Failed,
                      Text("$$$/Halcyon/TrHost/NoEngine=there is nothing that runs plug-ins of kind @0",
                           {ToUTF16(inTechnology)}));
    }
    return found->second;
}

effects::IEffectEngine* LoadEngine(const char* inModule)
{
    const auto function = reinterpret_cast<effects::EffectEngineFunction>(
        LoadModuleByName(inModule, effects::kEffectEngineFunctionName));
    effects::IEffectEngine* const engine = function(effects::kEffectEngineVersion, GetEffectCalls());
    if (!engine) {
        ThrowWrongModule(inModule);
    }
    return engine;
}

} // namespace

effects::IPluginCalls& GetEffectCalls()
{
    static EffectCalls* const calls = new EffectCalls; // plug-ins may be called while the process ends
    return *calls;
}

effects::IEffectEngine& LoadEffectEngine(const std::string& inTechnology)
{
    static std::mutex lock; // callers are to wait: loading a module twice at once gains nothing
    static std::map<std::string, effects::IEffectEngine*> engines;
    const char* const module = ModuleOf(inTechnology);
    const std::lock_guard guard(lock);
    effects::IEffectEngine*& engine = engines[inTechnology];
    if (!engine) {
        engine = LoadEngine(module);
    }
    return *engine;
}

} // namespace trhost
