#include "../../EffectEngine.h"
#include "../../PluginMemory.h"

#include "AvfilterModules.h"
#include "AvfilterSupport.h"
#include "FilterDescriber.h"
#include "platform/LoadedFiles.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

extern "C" {
#include <libswscale/swscale.h>
}

namespace trhost::effects::avfilter {
namespace {

using kiocore::kio_exception;

template <typename Function>
const void* AddressOf(Function* inFunction)
{
    return reinterpret_cast<const void*>(inFunction);
}

/// Filters are compiled into the library that this module is linked with, so there is one file of plug-ins.
class AvfilterEngine final : public IEffectEngine {
public:
    explicit AvfilterEngine(IPluginCalls& inCalls) : mCalls(inCalls) {}

    const char* Technology() const override { return "avfilter"; }

    std::vector<std::string> PluginNames(const std::string& inFile) override
    {
        CheckFile(inFile);
        return FilterNames();
    }
    EffectDescription Describe(const std::string& inFile, const std::string& inPluginName) override
    {
        CheckFile(inFile);
        const AVFilter& filter = Find(inPluginName);
        const auto kind = KindOf(filter);
        if (!kind) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/FilterKind=@0: is neither a filter of "
                                         "one picture, a source nor a transition",
                                         {"avfilter." + inPluginName}),
                                kEffectError_NoPlugin);
        }
        return DescribeFilter(filter, *kind, mLibrary);
    }
    std::vector<std::string> FilesBehind(const std::string& inFile) override
    {
        CheckFile(inFile);
        return {mLibrary, FileAt(AddressOf(&avutil_version)), FileAt(AddressOf(&swscale_version)),
                FileAt(AddressOf(&trhost_effect_engine))};
    }

    void SetFrameMemory(IFrameMemory* inMemory) override { SetPluginMemory(inMemory); }

    TR::IFilterModuleRef OpenFilter(const EffectDescription& inDescription) override
    {
        const bool isTransition = inDescription.kind == EffectKind::kTransition;
        return MakeFilterModule(inDescription, Opened(inDescription, !isTransition), mCalls);
    }
    TR::ITransitionModuleRef OpenTransition(const EffectDescription& inDescription) override
    {
        const bool isTransition = inDescription.kind == EffectKind::kTransition;
        return MakeTransitionModule(inDescription, Opened(inDescription, isTransition), mCalls);
    }

private:
    /// Nobody outside knows where the library lies: who looks for files of plug-ins names this module.
    void CheckFile(const std::string& inFile) const
    {
        if (!inFile.empty() && Resolved(inFile) != mLibrary &&
            Resolved(inFile) != FileAt(AddressOf(&trhost_effect_engine))) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/OtherLibavfilter=@0: is not the "
                                         "libavfilter in use, which is @1#{both are files}",
                                         {inFile, mLibrary}),
                                kEffectError_NoPlugin);
        }
    }
    const AVFilter& Find(const std::string& inPluginName) const
    {
        const AVFilter* const filter = avfilter_get_by_name(inPluginName.c_str());
        if (!filter) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NoFilter=@0: @1 has no such filter#{@0: "
                                         "a match name, @1: a file}",
                                         {"avfilter." + inPluginName, mLibrary}),
                                kEffectError_NoPlugin);
        }
        return *filter;
    }
    const AVFilter& Opened(const EffectDescription& inDescription, bool inIsAsked) const
    {
        CheckFile(inDescription.file);
        const AVFilter& filter = Find(inDescription.pluginName);
        if (!inDescription.refusal.empty()) {
            throw kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NamedReason=@0: @1#{@0: a match name, "
                                         "@1: a reason, such as: opens files}",
                                         {inDescription.matchName, inDescription.refusal}),
                                kEffectError_Refused);
        }
        if (!inIsAsked) {
            throw kio_exception(
                KeptText(
                    "$$$/Halcyon/TrHost/Effects/IsOfKind=@0: is a @1#{@0: a match name, @1: video filter}",
                    {inDescription.matchName, TextOf(inDescription.kind)}),
                kEffectError_NoPlugin);
        }
        return filter;
    }

    IPluginCalls& mCalls;
    const std::string mLibrary = FileAt(AddressOf(&avfilter_version));
};

} // namespace
} // namespace trhost::effects::avfilter

extern "C" trhost::effects::IEffectEngine* trhost_effect_engine(int inVersion,
                                                                trhost::effects::IPluginCalls& inCalls)
{
    static trhost::effects::avfilter::AvfilterEngine sEngine(inCalls);
    return inVersion == trhost::effects::kEffectEngineVersion ? &sEngine : nullptr;
}
