#pragma once

#include "../EffectDescription.h"
#include "../PluginCaller.h"

#include <kiocore/threads/RecursiveMutex.h>

#include <cinttypes>
#include <memory>
#include <string>
#include <vector>

extern "C" { // which the header does not say
#include <frei0r.h>
}

namespace trhost::effects::frei0r {

/// What a file must export; one of the two updates, by its type.
struct Functions {
    decltype(&f0r_init) init = nullptr;
    decltype(&f0r_deinit) deinit = nullptr;
    decltype(&f0r_get_plugin_info) getPluginInfo = nullptr;
    decltype(&f0r_get_param_info) getParameterInfo = nullptr;
    decltype(&f0r_construct) construct = nullptr;
    decltype(&f0r_destruct) destruct = nullptr;
    decltype(&f0r_set_param_value) setParameter = nullptr;
    decltype(&f0r_get_param_value) getParameter = nullptr;
    decltype(&f0r_update) update = nullptr;
    decltype(&f0r_update2) update2 = nullptr;
};

struct Parameter {
    EffectParameter shown; ///< all but the default
    int index = 0;
    int type = 0; ///< F0R_PARAM_...
};

/// What a plug-in says of itself, copied.
struct PluginInfo {
    std::string displayName;
    std::string author;
    std::string version;
    std::string explanation;
    int type = 0;       ///< F0R_PLUGIN_TYPE_...
    int colorModel = 0; ///< F0R_COLOR_MODEL_...
    int frei0rVersion = 0;
    std::vector<Parameter> parameters; ///< of known types
};

/// "glow" of "/folder/glow.so".
std::string StemOf(const std::string& inFile);
/// What is known of a file before it is loaded: enough to name it.
EffectDescription NameFile(const std::string& inFile);

/// A loaded file, which holds one plug-in. Stays loaded (see platform/PluginLibrary.h).
///
/// Threading: any thread. Its lock is held across calls into the plug-in, by all who make or remove
/// instances or pass parameters: frei0r allows these at once for different instances, yet the C++ wrapper
/// that half of all plug-ins are written with rewrites one list of parameters with each new instance. It is
/// held across updates too where GlobalState.h says so. Calls of one instance never wait for another file.
class PluginFile {
public:
    /// @throws kio_exception (kEffectError_NoPlugin) when it is no frei0r plug-in; (kEffectError_Refused)
    ///     when it is, and cannot be loaded: the text is the refusal.
    static PluginFile& Load(const std::string& inFile, const PluginCaller& inCaller);
    /// Use Load.
    PluginFile(const std::string& inFile, const Functions& inFunctions);

    const Functions& Calls() const { return mFunctions; }
    kiocore::threads::RecursiveMutex& Lock() { return mLock; }
    bool KeepsGlobalState() const { return mKeepsGlobalState; }

private:
    friend class PluginUse;
    void Enter(const PluginCaller& inCaller);
    void Leave(const PluginCaller& inCaller) noexcept;

    const std::string mFile;
    const Functions mFunctions;
    const bool mKeepsGlobalState;
    kiocore::threads::RecursiveMutex mLock{"frei0r plug-in"}; // guards the members below, and see above
    int mUses = 0;
    PluginInfo mInfo;
    bool mInfoRead = false;
};

/// Keeps a plug-in initialised: the first of a file initialises it, the last takes that back.
class PluginUse {
public:
    PluginUse(PluginFile& inFile, PluginCaller inCaller) : mFile(inFile), mCaller(std::move(inCaller))
    {
        mFile.Enter(mCaller);
    }
    ~PluginUse() { mFile.Leave(mCaller); }
    PluginUse(const PluginUse&) = delete;
    PluginUse& operator=(const PluginUse&) = delete;

    PluginFile& File() const { return mFile; }
    const PluginInfo& Info() const { return mFile.mInfo; } ///< does not change after the first Enter

private:
    PluginFile& mFile;
    const PluginCaller mCaller;
};
using PluginUseRef = std::shared_ptr<const PluginUse>;

} // namespace trhost::effects::frei0r
