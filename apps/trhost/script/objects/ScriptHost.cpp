#include "ScriptHost.h"

#include "../../support/EffectCalls.h"

namespace trhost::script {

const EffectHost& ScriptHost::Effects()
{
    if (!mEffects) {
        mEffects = std::make_unique<EffectHost>(context, search);
    }
    return *mEffects;
}

TR::IFilterModuleRef ScriptHost::LoadFilter(const std::string& inMatchName)
{
    TR::IFilterModuleRef& module = loadedFilters[inMatchName];
    if (!module) {
        const effects::EffectDescription& effect = Effects().FindRunnable(inMatchName).description;
        module = LoadEffectEngine(effect.technology).OpenFilter(effect);
    }
    return module;
}

} // namespace trhost::script
