#pragma once

#include <effects/EffectEngine.h>
#include <effects/PluginCalls.h>
#include <support/KeptText.h>

#include <kiocore/config/Errors.h>

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace effectstests {

/// Runs what it is given, and remembers under which name.
class WatchedCalls : public trhost::effects::IPluginCalls {
public:
    void Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall) override;
    void Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef& inModule,
              const std::function<void()>& inCall) override;

    /// The match name that the calling thread is in a call of; empty outside.
    static std::string Current();

private:
    static void Run(const std::string& inMatchName, const std::function<void()>& inCall);
};

/// What plug-ins of ours noted since the last time that somebody asked: "construct 16 x 8 in frei0r.watcher".
/// They call NotePluginCall of the test program.
std::vector<std::string> TakeNotes();

/// An engine's module, loaded as trhost loads it, with WatchedCalls.
trhost::effects::IEffectEngine& LoadEngine(const char* inModulePath);

/// The code of the kio_exception that a call ends with, 0 when it ends well; its text in outText.
template <typename Function>
std::uint32_t FailureOf(Function&& inFunction, std::string& outText)
{
    try {
        inFunction();
        outText.clear();
        return 0;
    } catch (const kiocore::kio_exception& failure) {
        outText = trhost::ToldText(failure.what());
        return failure.Code();
    }
}

const trhost::effects::EffectParameter* FindParameter(const trhost::effects::EffectDescription& inDescription,
                                                      std::string_view inName);

} // namespace effectstests

/// Called by plug-ins of ours.
extern "C" KIO_EXPORT void NotePluginCall(const char* inWhat);
