#include "../EffectEngine.h"
#include "../PluginMemory.h"
#include "../platform/PluginLibrary.h"
#include "Describe.h"
#include "Modules.h"
#include "PluginFile.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

namespace trhost::effects::frei0r {
namespace {

class Engine final : public IEffectEngine {
public:
    explicit Engine(IPluginCalls& inCalls) : mCalls(inCalls) {}

    const char* Technology() const override { return "frei0r"; }

    /// Looks for a name of frei0r's in the file, without loading it.
    std::vector<std::string> PluginNames(const std::string& inFile) override
    {
        if (!platform::HoldsName(inFile, "f0r_get_plugin_info")) {
            throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NoFrei0rFunction=@0 is no "
                                                  "frei0r plug-in: no @1 in it#{@0: a file, @1: a function}",
                                                  {inFile, "f0r_get_plugin_info"}),
                                         kEffectError_NoPlugin);
        }
        return {StemOf(inFile)};
    }

    EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) override
    {
        if (inPluginName != StemOf(inFile)) {
            throw kiocore::kio_exception(
                KeptText(
                    "$$$/Halcyon/TrHost/Effects/HoldsOther=@0 holds no plug-in @1; it holds @2#{@0: a file}",
                    {inFile, inPluginName, StemOf(inFile)}),
                kEffectError_NoPlugin);
        }
        return frei0r::Describe(mCalls, inFile);
    }

    /// None: all that a description tells is compiled into the file.
    std::vector<std::string> FilesBehind(const std::string&) override { return {}; }

    void SetFrameMemory(IFrameMemory* inMemory) override { SetPluginMemory(inMemory); }

    TR::IFilterModuleRef OpenFilter(const EffectDescription& inDescription) override
    {
        if (inDescription.kind == EffectKind::kTransition) {
            throw kiocore::kio_exception(
                KeptText(
                    "$$$/Halcyon/TrHost/Effects/TransitionNotFilter=@0 is a transition; expected a filter",
                    {inDescription.matchName}),
                kEffectError_NoPlugin);
        }
        return MakeFilterModule(mCalls, Use(inDescription), inDescription);
    }

    TR::ITransitionModuleRef OpenTransition(const EffectDescription& inDescription) override
    {
        if (inDescription.kind != EffectKind::kTransition) {
            throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NoTransition=@0 is a @1; "
                                                  "expected a transition#{@1: video filter}",
                                                  {inDescription.matchName, TextOf(inDescription.kind)}),
                                         kEffectError_NoPlugin);
        }
        return MakeTransitionModule(mCalls, Use(inDescription), inDescription);
    }

private:
    PluginUseRef Use(const EffectDescription& inDescription)
    {
        const auto refuse = [&](const std::string& inReason) {
            throw kiocore::kio_exception(
                KeptText("$$$/Halcyon/TrHost/Effects/NotRun=@0 is not run: @1#{@1: opens files}",
                         {inDescription.matchName, inReason}),
                kEffectError_Refused);
        };
        if (!inDescription.refusal.empty()) {
            refuse(inDescription.refusal);
        }
        const PluginCaller caller(mCalls, inDescription);
        PluginFile& file = PluginFile::Load(inDescription.file, caller);
        auto use = std::make_shared<const PluginUse>(file, caller);
        // The file may not be any more what was described.
        const std::string refusal = RefusalOf(use->Info(), file.Calls());
        if (!refusal.empty()) {
            refuse(refusal);
        }
        if (KindOf(use->Info()) != inDescription.kind) {
            throw kiocore::kio_exception(
                KeptText("$$$/Halcyon/TrHost/Effects/HoldsOtherKind=@0 holds a @1 now; it was described as a "
                         "@2#{@0: a file, @1 and @2: video filter}",
                         {inDescription.file, TextOf(KindOf(use->Info())), TextOf(inDescription.kind)}),
                kEffectError_NoPlugin);
        }
        return use;
    }

    IPluginCalls& mCalls;
};

} // namespace
} // namespace trhost::effects::frei0r

extern "C" trhost::effects::IEffectEngine* trhost_effect_engine(int inVersion,
                                                                trhost::effects::IPluginCalls& inCalls)
{
    static trhost::effects::frei0r::Engine sEngine(inCalls);
    return inVersion == trhost::effects::kEffectEngineVersion ? &sEngine : nullptr;
}
