#include "../EffectEngine.h"
#include "../PluginMemory.h"
#include "../platform/PluginLibrary.h"
#include "Describe.h"
#include "Modules.h"
#include "PluginFile.h"

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
            throw kiocore::kio_exception(inFile + " is no frei0r plug-in: no f0r_get_plugin_info in it",
                                         kEffectError_NoPlugin);
        }
        return {StemOf(inFile)};
    }

    EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) override
    {
        if (inPluginName != StemOf(inFile)) {
            throw kiocore::kio_exception(inFile + " holds no plug-in " + inPluginName + "; it holds " +
                                             StemOf(inFile),
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
            throw kiocore::kio_exception(inDescription.matchName + " is a transition; expected a filter",
                                         kEffectError_NoPlugin);
        }
        return MakeFilterModule(mCalls, Use(inDescription), inDescription);
    }

    TR::ITransitionModuleRef OpenTransition(const EffectDescription& inDescription) override
    {
        if (inDescription.kind != EffectKind::kTransition) {
            throw kiocore::kio_exception(inDescription.matchName + " is a " + NameOf(inDescription.kind) +
                                             "; expected a transition",
                                         kEffectError_NoPlugin);
        }
        return MakeTransitionModule(mCalls, Use(inDescription), inDescription);
    }

private:
    PluginUseRef Use(const EffectDescription& inDescription)
    {
        const auto refuse = [&](const std::string& inReason) {
            throw kiocore::kio_exception(inDescription.matchName + " is not run: " + inReason,
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
            throw kiocore::kio_exception(inDescription.file + " holds a " + NameOf(KindOf(use->Info())) +
                                             " now; it was described as a " + NameOf(inDescription.kind),
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
