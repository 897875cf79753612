#pragma once

#include "EngineFunctions.h"

#include <functional>
#include <span>
#include <string>

namespace kioscripting_jsc {

struct Runtime;

/// Natives as scripts call them. What they throw becomes an error of the script's.
using NativeFunction = JSValueRef (*)(Runtime& inRuntime, std::span<const JSValueRef> inArguments);

/// A function of a script's that calls inFunction.
JSObjectRef MakeFunction(Runtime& inRuntime, const char* inName, NativeFunction inFunction);
void SetMember(Runtime& inRuntime, JSObjectRef inObject, const char* inName, JSValueRef inValue);

/// Runs the bridge's own scripts and fills inRuntime.functions.
void LoadBridge(Runtime& inRuntime);

} // namespace kioscripting_jsc
