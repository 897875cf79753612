#include "CatchingCalls.h"

#include "EffectEngine.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <cxxabi.h>
#include <exception>

namespace trhost::effects {

void CatchingCalls::Call(const TR::IFilterModuleRef& inModule, const std::function<void()>& inCall)
{
    Run(inModule ? inModule->GetMatchName().AsString() : std::string("plug-in"), inCall);
}

void CatchingCalls::Call(const kiocore::ImmutableString& inMatchName, const TR::ITransitionModuleRef&,
                         const std::function<void()>& inCall)
{
    Run(inMatchName.AsString(), inCall);
}

void CatchingCalls::Run(const std::string& inMatchName, const std::function<void()>& inCall)
{
    try {
        mWatch ? mWatch(inCall) : inCall();
    } catch (const kiocore::kio_exception&) {
        throw; // the engine's own
    } catch (const std::exception& problem) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/Threw=@0 threw an exception: @1#{@0: a match name}",
                     {inMatchName, problem.what()}),
            kEffectError_PluginFailed);
    } catch (const abi::__forced_unwind&) {
        throw; // a thread that is being cancelled, which nothing may stop
    } catch (...) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/ThrewOther=@0 threw something that "
                                              "is no exception#{@0: a match name}",
                                              {inMatchName}),
                                     kEffectError_PluginFailed);
    }
}

} // namespace trhost::effects
