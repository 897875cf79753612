#include "Describe.h"

#include "../EffectEngine.h"
#include "../PluginParameters.h"
#include "Frei0rEffect.h"
#include "Instance.h"
#include "ParameterValues.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

namespace trhost::effects::frei0r {
namespace {

// Any will do: defaults do not depend on the size.
constexpr std::uint32_t kTrialWidth = 320;
constexpr std::uint32_t kTrialHeight = 240;

const char* CategoryOf(int inPluginType)
{
    switch (inPluginType) {
    case F0R_PLUGIN_TYPE_SOURCE:
        return "Source";
    case F0R_PLUGIN_TYPE_MIXER2:
    case F0R_PLUGIN_TYPE_MIXER3:
        return "Mixer";
    default:
        return "Filter";
    }
}

void DescribeInfo(const PluginInfo& inInfo, EffectDescription& ioDescription)
{
    if (!inInfo.displayName.empty()) {
        ioDescription.displayName = inInfo.displayName;
    }
    ioDescription.kind = KindOf(inInfo);
    ioDescription.category = CategoryOf(inInfo.type);
    ioDescription.author = inInfo.author;
    ioDescription.version = inInfo.version;
    ioDescription.explanation = inInfo.explanation;
    ioDescription.formats = {kiomediatypes::kPixelFormat_BGRA_4444_8u};
    for (const Parameter& parameter : inInfo.parameters) {
        ioDescription.parameters.push_back(parameter.shown);
    }
}

void ReadDefaults(const PluginUse& inUse, const PluginCaller& inCaller, EffectDescription& ioDescription)
{
    const Instance instance(inUse.File(), inCaller, ioDescription.matchName, kTrialWidth, kTrialHeight);
    for (std::size_t i = 0; i < ioDescription.parameters.size(); ++i) {
        ioDescription.parameters[i].defaultValue =
            ReadParameter(inUse.File(), inCaller, instance.Get(), inUse.Info().parameters[i]);
    }
}

} // namespace

EffectKind KindOf(const PluginInfo& inInfo)
{
    switch (inInfo.type) {
    case F0R_PLUGIN_TYPE_SOURCE:
        return EffectKind::kGenerator;
    case F0R_PLUGIN_TYPE_MIXER2:
    case F0R_PLUGIN_TYPE_MIXER3:
        return EffectKind::kTransition;
    default:
        return EffectKind::kVideoFilter;
    }
}

std::string RefusalOf(const PluginInfo& inInfo, const Functions& inFunctions)
{
    if (inInfo.frei0rVersion > FREI0R_MAJOR_VERSION) {
        return KeptText("$$$/Halcyon/TrHost/Effects/Frei0rVersion=made for frei0r @0; version @1 is known",
                        {std::to_string(inInfo.frei0rVersion), std::to_string(FREI0R_MAJOR_VERSION)});
    }
    if (!InputCountOf(inInfo.type)) {
        return KeptText(
            "$$$/Halcyon/TrHost/Effects/PluginType=says that it is a plug-in of type @0, which is not known",
            {std::to_string(inInfo.type)});
    }
    if (inInfo.colorModel < F0R_COLOR_MODEL_BGRA8888 || inInfo.colorModel > F0R_COLOR_MODEL_PACKED32) {
        return KeptText("$$$/Halcyon/TrHost/Effects/ColorModel=wants colors of model @0, which is not known",
                        {std::to_string(inInfo.colorModel)});
    }
    if (inInfo.type == F0R_PLUGIN_TYPE_MIXER3) {
        return "$$$/Halcyon/TrHost/Effects/ThreePictures=mixes three pictures; a transition has two";
    }
    if (inInfo.type == F0R_PLUGIN_TYPE_MIXER2 && !inFunctions.update2) {
        return KeptText("$$$/Halcyon/TrHost/Effects/MissingMixerFunction=has no function @0, as a mixer must",
                        {"f0r_update2"});
    }
    return {};
}

EffectDescription Describe(IPluginCalls& inCalls, const std::string& inFile)
{
    EffectDescription description = NameFile(inFile);
    const PluginCaller caller(inCalls, description);
    PluginFile* file = nullptr;
    try {
        file = &PluginFile::Load(inFile, caller);
    } catch (const kiocore::kio_exception& failure) {
        if (failure.Code() != kEffectError_Refused) {
            throw;
        }
        description.refusal = failure.what();
        return description;
    }
    const PluginUse use(*file, caller);
    DescribeInfo(use.Info(), description);
    description.refusal = RefusalOf(use.Info(), file->Calls());
    if (!description.refusal.empty()) {
        return description;
    }
    try {
        ReadDefaults(use, caller, description);
    } catch (const kiocore::kio_exception& failure) {
        if (failure.Code() != kEffectError_PluginFailed) {
            throw;
        }
        description.refusal = failure.what();
    }
    return description;
}

} // namespace trhost::effects::frei0r
