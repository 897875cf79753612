#pragma once

#include "../../support/Context.h"
#include "../../support/EffectHost.h"
#include "../AllowedFolders.h"

#include <TR/PluginModules.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trhost::script {

/// What the objects of one script run share. They keep it alive, so it may outlive the run, but not the
/// command.
///
/// Threading: that of the script.
struct ScriptHost {
    ScriptHost(Context& ioContext, AllowedFolders inFolders)
        : context(ioContext), folders(std::move(inFolders))
    {}

    /// The effects of this machine, found at the first call.
    const EffectHost& Effects();
    /// Loads a filter, or finds it loaded.
    /// @throws Failure as EffectHost::FindRunnable; what the engine throws.
    TR::IFilterModuleRef LoadFilter(const std::string& inMatchName);

    Context& context;
    const AllowedFolders folders;
    EffectSearch search;
    std::vector<std::string> arguments;
    int exitStatus = 0;
    std::map<std::string, TR::IFilterModuleRef> loadedFilters; ///< until a script unloads them

private:
    std::unique_ptr<EffectHost> mEffects;
};
using ScriptHostPtr = std::shared_ptr<ScriptHost>;

} // namespace trhost::script
