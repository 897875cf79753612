#pragma once

namespace kioscripting_jsc::platform {

/// Starts JavaScriptCore, once for the process, so that crash handling and guards go on working. It puts
/// handlers of its own in front of everybody's for SIGSEGV and SIGBUS, without an alternate stack, so that a
/// stack overflow would end the process without a word. These go back to who had them, and its own handler is
/// asked about faults on threads that run scripts. To stop threads while it looks for garbage it gets a
/// real-time signal that nobody uses, not SIGUSR1, unless the environment (JSC_SIGNAL_FOR_GC) names another.
/// @throws kio_exception (kError_Startup) when there is too little address space, for want of which the
/// engine
///     would abort.
///
/// Threading: any thread.
void StartEngine();

/// While it lives, the calling thread may run scripts. They nest.
///
/// Threading: one thread.
class ScScriptThread {
public:
    /// Gives the thread an alternate stack too, for the overflow of its own.
    ScScriptThread();
    ~ScScriptThread();
    ScScriptThread(const ScScriptThread&) = delete;
    ScScriptThread& operator=(const ScScriptThread&) = delete;
};

} // namespace kioscripting_jsc::platform
