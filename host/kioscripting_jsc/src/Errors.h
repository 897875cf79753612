#pragma once

#include "EngineFunctions.h"

#include <kioscripting/Engine.h>

#include <stdexcept>

namespace kioscripting_jsc {

struct Runtime;

/// Keeps an engine's value alive, wherever it is kept: the engine finds only what lies on the stack.
///
/// Threading: the engine's.
class Protected {
public:
    Protected(JSContextRef inContext, JSValueRef inValue);
    Protected(const Protected& inOther);
    Protected& operator=(const Protected&) = delete;
    ~Protected();
    JSValueRef Get() const { return mValue; }

private:
    JSContextRef mContext;
    JSValueRef mValue;
};

/// A script threw while a native had called it. Goes on as what was thrown where a script called the native.
struct ScriptThrown {
    Protected value;
};
/// The run is over: its time is up, or somebody cancelled it. No script is to be started any more.
struct RunEnded {};
/// A mistake for which scripts have a class of errors.
struct WrongUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The exception in flight as an error of the script's.
JSValueRef ErrorOfCurrentException(Runtime& inRuntime) noexcept;
/// What a script threw, or why it was ended, as an exception.
[[noreturn]] void ThrowScriptException(Runtime& inRuntime, JSValueRef inThrown);

/// Runs a native that a script called: nothing that it throws reaches the engine's frames.
template <typename Function>
JSValueRef Guarded(Runtime& inRuntime, JSValueRef* outException, const Function& inFunction) noexcept
{
    try {
        return inFunction();
    } catch (...) {
        *outException = ErrorOfCurrentException(inRuntime);
        return nullptr;
    }
}

} // namespace kioscripting_jsc
