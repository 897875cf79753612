#include "MediaLoader.h"

#include "Interrupt.h"
#include "ModuleLoader.h"

namespace trhost {

media::IMediaModule& LoadMediaModule()
{
    // A failed load throws out of the initialiser, so the next caller tries again.
    static media::IMediaModule& sModule = LoadModule<media::IMediaModule>(
        media::kMediaModuleFileName, media::kMediaModuleFunctionName, media::kMediaModuleVersion);
    return sModule;
}

bool InterruptCancel::IsCancelled() const noexcept
{
    return IsInterrupted();
}

} // namespace trhost
