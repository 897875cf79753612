#pragma once

#include <kiocore/Export.h>

#include <chrono>
#include <functional>
#include <memory>

namespace kiocore::threads {

/// The thread that the user interface lives on, as a queue of posted work. The host registers its main
/// thread once, and either runs its loop here (RunUntil) or lets its own loop call RunPosted when the
/// wake-up function says that there is work.
///
/// Threading: Post, IsCurrentThread, WaitForPostedWork and SetWakeUp from any thread; the rest on the main
/// thread, and they throw kio_exception (kError_BadArgument) on another.
class KIO_EXPORT MainThread {
public:
    using Task = std::function<void()>;
    virtual ~MainThread();

    /// Appends work. Runs after what was posted before.
    /// @return 0 accepted; negative when the main thread was unregistered: the task will not run.
    virtual int Post(Task inTask) = 0;
    virtual bool IsCurrentThread() const = 0;

    /// Runs what is posted, also what that posts, until nothing is left. A task that throws is reported
    /// on trace channel "Threads" and the next one runs.
    /// @return how many tasks ran.
    virtual int RunPosted() = 0;
    /// Runs posted work as it comes until inDone answers true (asked before each sleep and after each
    /// batch) or the deadline has passed. To have inDone asked by another thread's doing, post something.
    /// @return true when inDone said so.
    virtual bool RunUntil(const std::function<bool()>& inDone,
                          std::chrono::steady_clock::time_point inDeadline) = 0;

    /// Lets work that was posted before the call run out, bounded by the deadline. On the main thread
    /// itself it is run here and now (a task that calls this does not wait for itself); elsewhere the
    /// caller waits until the main thread has run it.
    /// @return true when all of it ran.
    virtual bool WaitForPostedWork(std::chrono::steady_clock::time_point inDeadline) = 0;

    /// Called (on the posting thread, unlocked) when work arrives at an empty queue, at most once until
    /// the queue is run: one wake-up however many posts. For hosts that run a loop of their own. Called
    /// at once when work waits already.
    virtual void SetWakeUp(std::function<void()> inWakeUp) = 0;
};

/// Makes the calling thread the main thread until UnregisterMainThread. Registering it again gives the
/// same object.
/// @throws kio_exception (kError_BadArgument) while another thread is registered.
KIO_EXPORT std::shared_ptr<MainThread> RegisterMainThread();
/// Refuses posts from now on and runs what was accepted. Nothing when no thread is registered.
/// @throws kio_exception (kError_BadArgument) on another thread than the registered one.
KIO_EXPORT void UnregisterMainThread();
/// The registered main thread; empty when there is none. Shared: stays usable after being unregistered.
KIO_EXPORT std::shared_ptr<MainThread> GetRegisteredMainThread();

} // namespace kiocore::threads
