#pragma once

#include <kiocore/Export.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <chrono>
#include <memory>

namespace kiocore::threads {

/// An executor that can also begin a task later.
///
/// Threading: any thread.
class KIO_EXPORT DelayedExecutor : public AsyncExecutor {
public:
    /// Begins the task on the executor's thread when the delay has passed. A task whose time has not come
    /// when the last reference goes, or when the process ends, never runs and is let go.
    /// @return 0 accepted, negative refused.
    virtual int SubmitAfter(std::chrono::milliseconds inDelay, Task inTask) = 0;
};

/// A serial executor with one thread of its own, started with the first task and joined when the last
/// reference goes (by itself, when that happens in a task of its own). Tasks whose time has come by then run
/// before it ends. Tasks that are due at the same time run in order of submission. Waits on the system's
/// steady time, whatever clock is in use.
/// Refuses a task when the system gives it no thread.
/// @param inName  of the thread, for debuggers; at most 15 bytes are shown.
KIO_EXPORT std::shared_ptr<DelayedExecutor> CreateDelayedExecutor(const char* inName);

} // namespace kiocore::threads
