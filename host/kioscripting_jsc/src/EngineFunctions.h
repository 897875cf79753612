#pragma once

#include <JavaScriptCore/JavaScript.h>

// What the engine exports for its own kind of embedder, but installs no header for.
extern "C" {

void JSLock(JSContextRef inContext);
/// The outermost one runs what promises have still to do.
void JSUnlock(JSContextRef inContext);

/// Takes both kinds of objects, those of the old space too, and finalises them before it returns.
void JSSynchronousGarbageCollectForDebugging(JSContextRef inContext);

using JSShouldTerminateCallback = bool (*)(JSContextRef inContext, void* inUserData);
/// Ends what runs in the group once it took this much processor time, if the callback wants it. A callback
/// that does not must set the limit again, else it is not asked a second time.
void JSContextGroupSetExecutionTimeLimit(JSContextGroupRef inGroup, double inSeconds,
                                         JSShouldTerminateCallback inCallback, void* inUserData);
void JSContextGroupClearExecutionTimeLimit(JSContextGroupRef inGroup);

/// @param inFunction  called with a promise and its reason, when it was rejected and nobody handles it at the
///     end of the jobs.
void JSGlobalContextSetUnhandledRejectionCallback(JSGlobalContextRef inContext, JSObjectRef inFunction,
                                                  JSValueRef* outException);

/// Which signal stops threads while the engine looks for garbage. Before it has started.
/// @return false when it cannot be had.
bool JSConfigureSignalForGC(int inSignal);

using JSWeakRef = struct OpaqueJSWeak*;
JSWeakRef JSWeakCreate(JSContextGroupRef inGroup, JSObjectRef inObject);
void JSWeakRelease(JSContextGroupRef inGroup, JSWeakRef inReference);
/// Null once the object is found unused.
JSObjectRef JSWeakGetObject(JSWeakRef inReference);

} // extern "C"
