#include "PluginFile.h"

#include "../EffectEngine.h"
#include "../PluginParameters.h"
#include "../platform/PluginLibrary.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <map>
#include <memory>

namespace trhost::effects::ladspa {
namespace {

constexpr const char* kFunctionName = "ladspa_descriptor";
constexpr unsigned long kMostPlugins = 10000; // a file that goes on and on has no end

struct Registry {
    kiocore::threads::RecursiveMutex lock{"LADSPA files"}; // guards the member below
    std::map<void*, std::unique_ptr<PluginFile>> files;
};

// Never destroyed: modules may go at exit.
Registry& TheRegistry()
{
    static auto* const registry = new Registry;
    return *registry;
}

std::string StemOf(const std::string& inFile)
{
    const std::string name = inFile.substr(inFile.find_last_of('/') + 1);
    return name.substr(0, name.rfind('.'));
}

} // namespace

std::string PluginNameOf(const LADSPA_Descriptor& inPlugin)
{
    return OneLine(inPlugin.Label) + "#" + std::to_string(inPlugin.UniqueID);
}

std::string MatchNameOf(const std::string& inPluginName)
{
    return "ladspa." + inPluginName.substr(inPluginName.rfind('#') + 1);
}

EffectDescription NamePlugin(const std::string& inFile, const std::string& inPluginName)
{
    EffectDescription description;
    description.pluginName = inPluginName;
    description.displayName = inPluginName.empty() ? OneLine(StemOf(inFile).c_str())
                                                   : inPluginName.substr(0, inPluginName.rfind('#'));
    description.matchName = inPluginName.empty() ? "ladspa." + StemOf(inFile) : MatchNameOf(inPluginName);
    description.technology = "ladspa";
    description.file = inFile;
    description.kind = EffectKind::kAudioFilter;
    description.category = "LADSPA";
    return description;
}

const PluginFile& PluginFile::Load(const std::string& inFile, const PluginCaller& inCaller)
{
    platform::LoadedLibrary library;
    inCaller([&] { library = platform::LoadPluginLibrary(inFile); });
    if (!library.handle) {
        const std::string refusal = platform::RefusalFromFailure(inFile, library.failure);
        if (!platform::HoldsName(inFile, kFunctionName)) {
            throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/NotLadspa=@0 is no LADSPA "
                                                  "plug-in: it @1#{@0: a file, @1: cannot be loaded: ...}",
                                                  {inFile, refusal}),
                                         kEffectError_NoPlugin);
        }
        throw kiocore::kio_exception(refusal, kEffectError_Refused);
    }
    const auto function =
        reinterpret_cast<LADSPA_Descriptor_Function>(platform::FindFunction(library.handle, kFunctionName));
    if (!function) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/MissingLadspaFunction=@0 has no "
                                              "function @1, as a LADSPA plug-in must#{@0: a file}",
                                              {inFile, kFunctionName}),
                                     kEffectError_NoPlugin);
    }
    // Held while the file lists what it has, so that it is asked once: it may fill in the list then.
    Registry& registry = TheRegistry();
    kiocore::threads::ScLock lock(registry.lock);
    std::unique_ptr<PluginFile>& file = registry.files[library.handle];
    if (!file) {
        file = std::make_unique<PluginFile>(function, inCaller);
    }
    return *file;
}

PluginFile::PluginFile(LADSPA_Descriptor_Function inFunction, const PluginCaller& inCaller)
{
    inCaller([&] {
        while (mPlugins.size() < kMostPlugins) {
            const LADSPA_Descriptor* const plugin = inFunction(mPlugins.size());
            if (!plugin) {
                return;
            }
            mPlugins.push_back(plugin);
        }
    });
}

const LADSPA_Descriptor& PluginFile::Plugin(const std::string& inFile, const std::string& inPluginName) const
{
    const auto found = std::find_if(mPlugins.begin(), mPlugins.end(), [&](const LADSPA_Descriptor* inPlugin) {
        return PluginNameOf(*inPlugin) == inPluginName;
    });
    if (found == mPlugins.end()) {
        throw kiocore::kio_exception(KeptText("$$$/Halcyon/TrHost/Effects/HoldsNone=@0 holds no plug-in @1 "
                                              "among its @2#{@0: a file, @2: a number}",
                                              {inFile, inPluginName, std::to_string(mPlugins.size())}),
                                     kEffectError_NoPlugin);
    }
    return **found;
}

kiocore::threads::RecursiveMutex& LifeLock()
{
    static constinit kiocore::threads::RecursiveMutex sLock{"LADSPA instances"};
    return sLock;
}

} // namespace trhost::effects::ladspa
