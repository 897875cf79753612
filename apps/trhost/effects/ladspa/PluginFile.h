#pragma once

#include "../EffectDescription.h"
#include "../PluginCaller.h"

#include <kiocore/threads/RecursiveMutex.h>

#include <ladspa.h>

#include <string>
#include <vector>

namespace trhost::effects::ladspa {

/// What engines call a plug-in of a file: its label, and the number that tells it from others of that label,
/// as "delay_5s#1043".
std::string PluginNameOf(const LADSPA_Descriptor& inPlugin);
/// "ladspa.1043" of such a name.
std::string MatchNameOf(const std::string& inPluginName);
/// What is known before the file is loaded: enough to name it. Without a plug-in's name, after the file.
EffectDescription NamePlugin(const std::string& inFile, const std::string& inPluginName);

/// A loaded file and the plug-ins in it. Stays loaded (see platform/PluginLibrary.h), as descriptors point
/// into it.
///
/// Threading: any thread.
class PluginFile {
public:
    /// @throws kio_exception (kEffectError_NoPlugin) when it is no LADSPA plug-in; (kEffectError_Refused)
    /// when
    ///     it is, and cannot be loaded: the text is the refusal.
    static const PluginFile& Load(const std::string& inFile, const PluginCaller& inCaller);
    PluginFile(LADSPA_Descriptor_Function inFunction, const PluginCaller& inCaller); ///< use Load

    const std::vector<const LADSPA_Descriptor*>& Plugins() const { return mPlugins; }
    /// @throws kio_exception (kEffectError_NoPlugin).
    const LADSPA_Descriptor& Plugin(const std::string& inFile, const std::string& inPluginName) const;

private:
    std::vector<const LADSPA_Descriptor*> mPlugins;
};

/// Held around making, activating and removing instances, of all plug-ins: several plan Fourier transforms
/// there, with a library whose planner is one for the process and not made for two threads.
kiocore::threads::RecursiveMutex& LifeLock();

} // namespace trhost::effects::ladspa
