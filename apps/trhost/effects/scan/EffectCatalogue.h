#pragma once

#include "EffectTypeStore.h"
#include "PluginFolders.h"
#include "WorkerPool.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace trhost::effects {

/// Told after each step: how many are done, of how many that are known so far (the number grows while files
/// tell what is in them), and what was just done.
using StepProgress = std::function<void(int inDone, int inTotal, const std::string& inName)>;

struct CatalogueSettings {
    WorkerSettings worker;
    std::vector<PluginFile> files;
    std::string cacheFolder;   ///< native path, where the scan cache lies; empty: none
    bool isRescan = false;     ///< tries everything out again
    bool keepsNothing = false; ///< writes neither cache nor registry
};

/// All plug-ins that there are, with their types, without one being loaded into this process.
///
/// Files that have not changed are not looked into: what they hold is known from the scan cache, the types
/// from the registry, and failures too are remembered, so that a plug-in which crashed does it once. Anything
/// else is tried out in children; one plug-in's failure is only its own. A plug-in whose types are not in the
/// registry is described again.
///
/// Threading: Load on any thread, which is busy with it; what it gives is a value.
class EffectCatalogue {
public:
    struct Effect {
        /// When nothing could be found out: the technology, the file, and a name put together from those.
        EffectDescription description;
        EffectTypes types;
        std::string
            failure; ///< one line, why nothing is known of it, in the language of the process; usually empty
    };
    struct Statistics {
        int filesSeen = 0;
        int filesScanned = 0;   ///< had to be asked what they hold
        int pluginsLoaded = 0;  ///< had to be described
        int workersStarted = 0; ///< one more for each that died
    };

    /// @throws kio_exception (kError_File) when no child can be started, or an engine cannot be loaded.
    static EffectCatalogue Load(const CatalogueSettings& inSettings, const StepProgress& inProgress,
                                const Interruption& inInterruption);

    /// In the order of files, and of plug-ins within one. Of several with one match name the first counts;
    /// the others are listed with a refusal that names the first one's file, and without types.
    const std::vector<Effect>& Effects() const { return mEffects; }
    /// @return null when there is none.
    const Effect* Find(const std::string& inMatchName) const;
    const Statistics& GetStatistics() const { return mStatistics; }
    /// False when it was broken off: what was found until then is here, and kept.
    bool IsComplete() const { return mIsComplete; }

private:
    std::vector<Effect> mEffects;
    Statistics mStatistics;
    bool mIsComplete = true;
};

} // namespace trhost::effects
