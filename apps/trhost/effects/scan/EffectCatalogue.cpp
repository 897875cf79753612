#include "EffectCatalogue.h"

#include "CatalogueScan.h"

#include <algorithm>

namespace trhost::effects {

EffectCatalogue EffectCatalogue::Load(const CatalogueSettings& inSettings, const StepProgress& inProgress,
                                      const Interruption& inInterruption)
{
    CatalogueScan scan(inSettings, inProgress);
    EffectCatalogue catalogue;
    catalogue.mIsComplete = scan.Run(inInterruption);
    catalogue.mEffects = scan.TakeEffects();
    catalogue.mStatistics = scan.GetStatistics();
    return catalogue;
}

const EffectCatalogue::Effect* EffectCatalogue::Find(const std::string& inMatchName) const
{
    const auto found = std::find_if(mEffects.begin(), mEffects.end(), [&](const Effect& inEffect) {
        return inEffect.description.matchName == inMatchName;
    });
    return found == mEffects.end() ? nullptr : &*found;
}

} // namespace trhost::effects
