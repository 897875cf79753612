#include "PluginFile.h"

#include "../EffectEngine.h"
#include "../PluginParameters.h"
#include "../platform/PluginLibrary.h"
#include "GlobalState.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <map>
#include <mutex>

namespace trhost::effects::frei0r {
namespace {

constexpr int kMostParameters = 4096; // more is a plug-in that did not fill in its description

struct Registry {
    std::mutex lock; // guards the members below
    std::map<void*, std::unique_ptr<PluginFile>> files;
};

// Never destroyed: modules may go at exit.
Registry& TheRegistry()
{
    static auto* const registry = new Registry;
    return *registry;
}

[[noreturn]] void ThrowNoPlugin(const std::string& inReason)
{
    throw kiocore::kio_exception(inReason, kEffectError_NoPlugin);
}

template <typename Function>
void Find(void* inHandle, const char* inName, Function& outFunction)
{
    outFunction = reinterpret_cast<Function>(platform::FindFunction(inHandle, inName));
}

template <typename Function>
void FindRequired(void* inHandle, const std::string& inFile, const char* inName, Function& outFunction)
{
    Find(inHandle, inName, outFunction);
    if (!outFunction) {
        ThrowNoPlugin(KeptText("$$$/Halcyon/TrHost/Effects/MissingFunction=@0 has no function @1, as a "
                               "frei0r plug-in must#{@0: a file}",
                               {inFile, inName}));
    }
}

Functions FindFunctions(void* inHandle, const std::string& inFile)
{
    Functions found;
    FindRequired(inHandle, inFile, "f0r_init", found.init);
    FindRequired(inHandle, inFile, "f0r_deinit", found.deinit);
    FindRequired(inHandle, inFile, "f0r_get_plugin_info", found.getPluginInfo);
    FindRequired(inHandle, inFile, "f0r_get_param_info", found.getParameterInfo);
    FindRequired(inHandle, inFile, "f0r_construct", found.construct);
    FindRequired(inHandle, inFile, "f0r_destruct", found.destruct);
    FindRequired(inHandle, inFile, "f0r_set_param_value", found.setParameter);
    FindRequired(inHandle, inFile, "f0r_get_param_value", found.getParameter);
    Find(inHandle, "f0r_update", found.update);
    Find(inHandle, "f0r_update2", found.update2);
    if (!found.update && !found.update2) {
        ThrowNoPlugin(KeptText("$$$/Halcyon/TrHost/Effects/MissingUpdate=@0 has neither @1 nor @2; a frei0r "
                               "plug-in must have one#{@0: a file, @1 and @2: functions}",
                               {inFile, "f0r_update", "f0r_update2"}));
    }
    return found;
}

ParameterKind KindOf(int inType)
{
    switch (inType) {
    case F0R_PARAM_BOOL:
        return ParameterKind::kBool;
    case F0R_PARAM_COLOR:
        return ParameterKind::kColor;
    case F0R_PARAM_POSITION:
        return ParameterKind::kPosition;
    case F0R_PARAM_STRING:
        return ParameterKind::kText;
    default:
        return ParameterKind::kNumber;
    }
}

PluginInfo ReadInfo(const std::string& inFile, const Functions& inFunctions, const PluginCaller& inCaller)
{
    f0r_plugin_info_t raw{};
    std::vector<f0r_param_info_t> rawParameters;
    inCaller([&] {
        inFunctions.getPluginInfo(&raw);
        if (raw.num_params < 0 || raw.num_params > kMostParameters) {
            return;
        }
        rawParameters.resize(static_cast<std::size_t>(raw.num_params));
        for (int i = 0; i < raw.num_params; ++i) {
            inFunctions.getParameterInfo(&rawParameters[static_cast<std::size_t>(i)], i);
        }
    });
    if (raw.num_params != static_cast<int>(rawParameters.size())) {
        ThrowNoPlugin(KeptText("$$$/Halcyon/TrHost/Effects/ParameterCount=@0 says that it has @1 parameters; "
                               "expected 0 to @2#{@0: a file}",
                               {inFile, std::to_string(raw.num_params), std::to_string(kMostParameters)}));
    }

    PluginInfo info;
    info.displayName = OneLine(raw.name);
    info.author = OneLine(raw.author);
    info.version = std::to_string(raw.major_version) + "." + std::to_string(raw.minor_version);
    info.explanation = OneLine(raw.explanation);
    info.type = raw.plugin_type;
    info.colorModel = raw.color_model;
    info.frei0rVersion = raw.frei0r_version;
    std::vector<std::string> names;
    for (int i = 0; i < raw.num_params; ++i) {
        const f0r_param_info_t& one = rawParameters[static_cast<std::size_t>(i)];
        if (one.type < F0R_PARAM_BOOL || one.type > F0R_PARAM_STRING) {
            continue; // of a later frei0r: it keeps its default
        }
        Parameter parameter;
        parameter.index = i;
        parameter.type = one.type;
        parameter.shown.displayName = OneLine(one.name);
        parameter.shown.name = UniqueName(parameter.shown.displayName, names);
        parameter.shown.explanation = OneLine(one.explanation);
        parameter.shown.kind = KindOf(one.type);
        parameter.shown.hasRange = one.type == F0R_PARAM_DOUBLE;
        parameter.shown.maximum = parameter.shown.hasRange ? 1 : 0;
        names.push_back(parameter.shown.name);
        info.parameters.push_back(std::move(parameter));
    }
    return info;
}

} // namespace

std::string StemOf(const std::string& inFile)
{
    const std::string name = inFile.substr(inFile.find_last_of('/') + 1);
    return name.substr(0, name.rfind('.'));
}

EffectDescription NameFile(const std::string& inFile)
{
    EffectDescription description;
    description.pluginName = StemOf(inFile);
    description.matchName = "frei0r." + description.pluginName;
    description.technology = "frei0r";
    description.file = inFile;
    description.displayName = OneLine(description.pluginName.c_str());
    description.kind = EffectKind::kVideoFilter;
    description.category = "Filter";
    return description;
}

PluginFile& PluginFile::Load(const std::string& inFile, const PluginCaller& inCaller)
{
    platform::LoadedLibrary library;
    inCaller([&] { library = platform::LoadPluginLibrary(inFile); });
    if (!library.handle) {
        const std::string refusal = platform::RefusalFromFailure(inFile, library.failure);
        if (!platform::HoldsName(inFile, "f0r_get_plugin_info")) {
            ThrowNoPlugin(KeptText("$$$/Halcyon/TrHost/Effects/NotFrei0r=@0 is no frei0r plug-in: it @1#{@0: "
                                   "a file, @1: cannot be loaded: ...}",
                                   {inFile, refusal}));
        }
        throw kiocore::kio_exception(refusal, kEffectError_Refused);
    }
    Registry& registry = TheRegistry();
    std::lock_guard lock(registry.lock);
    std::unique_ptr<PluginFile>& file = registry.files[library.handle];
    if (!file) {
        file = std::make_unique<PluginFile>(inFile, FindFunctions(library.handle, inFile));
    }
    return *file;
}

PluginFile::PluginFile(const std::string& inFile, const Functions& inFunctions)
    : mFile(inFile), mFunctions(inFunctions), mKeepsGlobalState(frei0r::KeepsGlobalState(StemOf(inFile)))
{}

void PluginFile::Enter(const PluginCaller& inCaller)
{
    kiocore::threads::ScLock lock(mLock);
    if (mUses == 0) {
        // What it returns is not said to mean anything.
        inCaller([&] { mFunctions.init(); });
    }
    ++mUses;
    if (!mInfoRead) {
        try {
            mInfo = ReadInfo(mFile, mFunctions, inCaller);
        } catch (...) {
            Leave(inCaller);
            throw;
        }
        mInfoRead = true;
    }
}

void PluginFile::Leave(const PluginCaller& inCaller) noexcept
{
    kiocore::threads::ScLock lock(mLock);
    if (--mUses == 0) {
        inCaller.Finally("f0r_deinit of " + mFile, [&] { mFunctions.deinit(); });
    }
}

} // namespace trhost::effects::frei0r
