#pragma once

#include "Context.h"

#include <effects/EffectEngine.h>
#include <effects/scan/EffectCatalogue.h>

#include <memory>
#include <string>
#include <vector>

namespace trhost {

/// Where effects are looked for.
struct EffectSearch {
    std::vector<std::string> folders; ///< beside the usual ones
    bool rescan = false;
};

using CatalogueEffect = effects::EffectCatalogue::Effect;

/// The effects of this machine: found when it is made, which loads nothing that has not changed since the
/// last time.
///
/// Threading: main thread.
class EffectHost {
public:
    /// Shows progress while plug-ins are looked at.
    /// @throws Failure (kExit_Failed, "interrupted"), and what the catalogue throws.
    EffectHost(Context& ioContext, const EffectSearch& inSearch);

    /// By match name.
    const std::vector<CatalogueEffect>& Effects() const { return mEffects; }
    /// @throws Failure (kExit_Negative) naming effects of similar names.
    const CatalogueEffect& Find(const std::string& inMatchName) const;
    /// The effects of all names, each once; a name that ends with * stands for all that begin so. All effects
    /// when there are no names.
    /// @throws as Find.
    std::vector<const CatalogueEffect*> FindAll(const std::vector<std::string>& inNames) const;
    /// An effect that may run now.
    /// @throws Failure (kExit_Negative) saying why not, and what to do.
    const CatalogueEffect& FindRunnable(const std::string& inMatchName) const;

private:
    std::string SimilarNames(const std::string& inName) const;

    std::vector<CatalogueEffect> mEffects;
    const bool mIsSafeMode;
};

/// Where the children that try effects out lie, and how they are told to stop.
effects::WorkerSettings EffectWorkers();
effects::Interruption EffectInterruption();

/// Loads an effect and sets its parameters ("NAME=VALUE").
/// @throws Failure (kExit_Usage) for a parameter of another form; what the engine throws.
std::unique_ptr<effects::IVideoEffect> OpenVideoEffect(const effects::EffectDescription& inEffect,
                                                       const effects::VideoEffectForm& inForm,
                                                       const std::vector<std::string>& inParameters);
std::unique_ptr<effects::IAudioEffect> OpenAudioEffect(const effects::EffectDescription& inEffect,
                                                       int inSampleRate, int inChannels,
                                                       const std::vector<std::string>& inParameters);

} // namespace trhost
