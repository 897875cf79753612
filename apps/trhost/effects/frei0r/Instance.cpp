#include "Instance.h"

#include "../EffectEngine.h"
#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <utility>

namespace trhost::effects::frei0r {

Instance::Instance(PluginFile& inFile, PluginCaller inCaller, const std::string& inMatchName,
                   std::uint32_t inWidth, std::uint32_t inHeight)
    : mFile(inFile), mCaller(std::move(inCaller))
{
    kiocore::threads::ScLock lock(mFile.Lock());
    mCaller([&] { mInstance = mFile.Calls().construct(inWidth, inHeight); });
    if (!mInstance) {
        throw kiocore::kio_exception(
            KeptText("$$$/Halcyon/TrHost/Effects/NoInstance=@0 makes no instance for pictures of @1#{@1: 640 "
                     "x 480}",
                     {inMatchName, std::to_string(inWidth) + " x " + std::to_string(inHeight)}),
            kEffectError_PluginFailed);
    }
}

Instance::~Instance()
{
    kiocore::threads::ScLock lock(mFile.Lock());
    mCaller.Finally("f0r_destruct", [&] { mFile.Calls().destruct(mInstance); });
}

} // namespace trhost::effects::frei0r
