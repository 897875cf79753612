#pragma once

#include "EffectCatalogue.h"
#include "ScanCache.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace trhost::effects {

/// One pass over all files: takes what is known, has children find out the rest, and keeps that.
///
/// Threading: one thread.
class CatalogueScan {
public:
    CatalogueScan(const CatalogueSettings& inSettings, StepProgress inProgress);

    /// @return false when it was broken off.
    bool Run(const Interruption& inInterruption);
    /// Keeps what is new, the types of new plug-ins included.
    std::vector<EffectCatalogue::Effect> TakeEffects();
    EffectCatalogue::Statistics GetStatistics() const { return mStatistics; }

private:
    struct File {
        PluginFile candidate;
        ScannedFile scanned;
        int unanswered = 0;
        bool isChanged = false;
        bool isKnown = false; ///< unless a scan was broken off before it was
    };
    void LookAt(File& ioFile);
    void AskNames(File& ioFile);
    void HearNames(File& ioFile, WorkerAnswer&& inAnswer);
    void AskDescription(File& ioFile, std::size_t inPlugin);
    void HearDescription(File& ioFile, std::size_t inPlugin, WorkerAnswer&& inAnswer);
    void Done(const std::string& inName);
    void Keep();
    bool HasTypes(const ScannedPlugin& inPlugin) const;

    const CatalogueSettings& mSettings;
    const StepProgress mProgress;
    ScanCache mCache;
    std::deque<File> mFiles; // handlers know them by address
    std::optional<WorkerPool> mPool;
    EffectCatalogue::Statistics mStatistics;
    int mAsked = 0;
    int mDone = 0;
};

} // namespace trhost::effects
