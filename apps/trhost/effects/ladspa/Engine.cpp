#include "../EffectEngine.h"
#include "../PluginCaller.h"
#include "../PluginMemory.h"
#include "Describe.h"
#include "Module.h"
#include "PluginFile.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

namespace trhost::effects::ladspa {
namespace {

class Engine final : public IEffectEngine {
public:
    explicit Engine(IPluginCalls& inCalls) : mCalls(inCalls) {}

    const char* Technology() const override { return "ladspa"; }

    std::vector<std::string> PluginNames(const std::string& inFile) override
    {
        std::vector<std::string> names;
        try {
            for (const LADSPA_Descriptor* plugin : Load(inFile, {}).Plugins()) {
                names.push_back(PluginNameOf(*plugin));
            }
        } catch (const kiocore::kio_exception& failure) {
            if (failure.Code() != kEffectError_Refused) {
                throw;
            }
            // Only the file itself could tell what is in it.
            throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/CannotTell=@0 cannot tell its "
                                                  "plug-ins: it @1#{@0: a file, @1: cannot be loaded: ...}",
                                                  {inFile, failure.what()}),
                                         kEffectError_NoPlugin);
        }
        return names;
    }

    EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) override
    {
        const PluginFile* file = nullptr;
        try {
            file = &Load(inFile, inPluginName);
        } catch (const kiocore::kio_exception& failure) {
            if (failure.Code() != kEffectError_Refused) {
                throw;
            }
            EffectDescription description = NamePlugin(inFile, inPluginName);
            description.refusal = failure.what();
            return description;
        }
        return ladspa::Describe(file->Plugin(inFile, inPluginName), inFile);
    }

    /// None: all that a description tells is compiled into the file.
    std::vector<std::string> FilesBehind(const std::string&) override { return {}; }

    void SetFrameMemory(IFrameMemory* inMemory) override { SetPluginMemory(inMemory); }

    TR::IFilterModuleRef OpenFilter(const EffectDescription& inDescription) override
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
        const PluginFile& file = Load(inDescription.file, inDescription.pluginName);
        const LADSPA_Descriptor& plugin = file.Plugin(inDescription.file, inDescription.pluginName);
        // The file may not be any more what was described.
        const std::string refusal = RefusalOf(plugin);
        if (!refusal.empty()) {
            refuse(refusal);
        }
        return MakeModule(mCalls, plugin, inDescription);
    }

    TR::ITransitionModuleRef OpenTransition(const EffectDescription& inDescription) override
    {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/LadspaHasNoTransitions=@0 is an "
                                              "audio filter; LADSPA has no transitions",
                                              {inDescription.matchName}),
                                     kEffectError_NoPlugin);
    }

private:
    const PluginFile& Load(const std::string& inFile, const std::string& inPluginName)
    {
        return PluginFile::Load(inFile, PluginCaller(mCalls, NamePlugin(inFile, inPluginName)));
    }

    IPluginCalls& mCalls;
};

} // namespace
} // namespace trhost::effects::ladspa

extern "C" trhost::effects::IEffectEngine* trhost_effect_engine(int inVersion,
                                                                trhost::effects::IPluginCalls& inCalls)
{
    static trhost::effects::ladspa::Engine sEngine(inCalls);
    return inVersion == trhost::effects::kEffectEngineVersion ? &sEngine : nullptr;
}
