#pragma once

#include <kiocore/Export.h>
#include <kioscripting/Engine.h>

#include <memory>
#include <string>

namespace kioscripting_jsc {

/// A JavaScript engine. The first one of a process starts JavaScriptCore, which takes signals for itself;
/// crash handling (kiocore/debug/CrashHandling.h) that was installed before goes on working.
/// @throws kio_exception (kError_Startup) when the engine cannot start, as for want of address space.
///
/// Threading: any thread; engines are independent of each other.
KIO_EXPORT std::unique_ptr<kioscripting::IScriptEngine> MakeEngine(kioscripting::EngineSettings inSettings);

/// "JavaScriptCore 2.50.6".
KIO_EXPORT std::string EngineVersion();

} // namespace kioscripting_jsc
