#pragma once

#include <script/ScriptModule.h>

namespace trhost {

/// The module that evaluates scripts, loaded by the first call: other commands never load the engine.
/// @throws as LoadModule.
///
/// Threading: any thread; callers wait for the first one.
script::IScriptModule& LoadScriptModule();

} // namespace trhost
