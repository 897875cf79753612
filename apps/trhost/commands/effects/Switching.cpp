#include "Switching.h"

#include "../../support/DisabledEffects.h"
#include "../../support/Failure.h"

namespace trhost {

using kiocore::utility::ToUTF16;

void RefuseInSafeMode(const Context& inContext)
{
    if (inContext.options.safeMode) {
        throw Failure(kExit_Usage,
                      Text("$$$/Halcyon/TrHost/SafeModeChanges=safe mode changes nothing; run trhost without "
                           "--safe-mode"));
    }
}

void SwitchEffects(Context& ioContext, const std::vector<std::string>& inMatchNames, bool inEnabled)
{
    SetEffectsEnabled(inMatchNames, inEnabled);
    for (const std::string& name : inMatchNames) {
        ioContext.output.Note(inEnabled
                                  ? Text("$$$/Halcyon/TrHost/EffectOn=@0: switched on", {ToUTF16(name)})
                                  : Text("$$$/Halcyon/TrHost/EffectOff=@0: switched off", {ToUTF16(name)}),
                              JsonLine().Add("matchName", name).Add("enabled", inEnabled));
    }
}

} // namespace trhost
