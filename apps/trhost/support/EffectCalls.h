#pragma once

#include <effects/EffectEngine.h>

namespace trhost {

/// What stands around every call into a plug-in in this program: the library's sentinel, which names it
/// should the process crash; the black box, which names it should the process be killed; the watchdog, which
/// names it when it does not come back.
///
/// Threading: any thread; calls nest. Lives as long as the process, as engines keep it.
effects::IPluginCalls& GetEffectCalls();

/// The engine of a technology, loaded by the first call.
/// @throws kio_exception (kError_File) when its module is not there or cannot be loaded; Failure
/// (kExit_Failed)
///     when it was built for another version of trhost, or there is no such technology.
///
/// Threading: any thread; callers wait for the first one.
effects::IEffectEngine& LoadEffectEngine(const std::string& inTechnology);

} // namespace trhost
