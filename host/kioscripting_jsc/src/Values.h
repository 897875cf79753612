#pragma once

#include "EngineFunctions.h"

#include <kioscripting/Value.h>

namespace kioscripting_jsc {

struct Runtime;

/// @throws ScriptThrown where a getter on the way threw; kio_exception (kError_BadConversion) for objects
/// that
///     contain themselves or are nested too deeply.
kioscripting::Value ToNative(Runtime& inRuntime, JSValueRef inValue);
/// @throws kio_exception (kError_BadConversion) for what came from an engine and cannot go back.
JSValueRef ToScript(Runtime& inRuntime, const kioscripting::Value& inValue);

} // namespace kioscripting_jsc
