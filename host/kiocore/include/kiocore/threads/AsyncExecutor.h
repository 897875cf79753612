#pragma once

#include <kiocore/Export.h>

#include <functional>
#include <memory>
#include <string_view>

namespace kiocore::threads {

/// Runs tasks on threads of its own or of its parent, each once, in the order of submission (as far
/// as several threads have an order).
///
/// A task that throws is reported on trace channel "Threads" at level 1 (type and text) and the next
/// one runs. When the last reference to a sub-executor goes, what was submitted still runs.
///
/// Threading: any thread. Tasks run without any lock of the executor.
class KIO_EXPORT AsyncExecutor {
public:
    using Task = std::function<void()>;

    virtual ~AsyncExecutor();
    /// @return 0 accepted, it will run; negative refused, it will not (the executor was terminated).
    /// A task is let go as soon as it has run, on the thread that ran it.
    virtual int Submit(Task inTask) = 0;
};

/// For whoever runs others' code: reports the exception being handled on trace channel "Threads" at level
/// 1, with its type and text. Called inside a catch block.
/// @param inWhere  what was running, as in "A task of the CPU-bound executor".
KIO_EXPORT void ReportException(std::string_view inWhere) noexcept;

/// The process's pool for work that computes: as many threads as there are processors. Made on first
/// use. The first two are one operation under two names; so are the second two.
KIO_EXPORT std::shared_ptr<AsyncExecutor> CreateCPUBoundExecutor();
KIO_EXPORT std::shared_ptr<AsyncExecutor> GetCPUBoundExecutor();
/// The process's pool for work that waits for disks and networks: up to 16 threads, started as needed.
KIO_EXPORT std::shared_ptr<AsyncExecutor> CreateIOBoundExecutor();
KIO_EXPORT std::shared_ptr<AsyncExecutor> GetIOBoundExecutor();

/// A queue that runs on its parent's threads.
/// @param inConcurrency  1 = serial, one task at a time in order of submission; n > 1 = at most n at
///     once; -1 = as many as the parent allows.
/// After a few tasks in a row a queue goes to the end of its parent's line, so that a long queue does
/// not starve its neighbours.
/// Refuses what is submitted after its parent was terminated; what it accepted before runs.
/// @return empty when inParent is empty.
/// @throws kio_exception (kError_BadArgument) when inConcurrency is 0 or below -1.
KIO_EXPORT std::shared_ptr<AsyncExecutor> CreateSubExecutor(const std::shared_ptr<AsyncExecutor>& inParent,
                                                            int inConcurrency);

/// The process's serial executor, with a thread of its own, for work that must still get done while the
/// process shuts down. TerminateExecutors lets it run dry first: until then it takes tasks, also those that
/// its tasks submit, from then on it refuses. The pools, which its tasks may need, go after it.
KIO_EXPORT std::shared_ptr<AsyncExecutor> CreatePreTerminationExecutor();

/// Ends the pre-termination executor, then both pools: later submissions are refused, what was accepted
/// runs, the threads are joined.
/// The next Create... makes anew. Happens by itself at exit, and from then on Create... gives a pool that
/// refuses everything; handles may be let go later still.
/// @throws kio_exception (kError_BadArgument) on a thread of theirs, which it would have to wait for.
KIO_EXPORT void TerminateExecutors();

/// Puts another executor in a pool's place for as long as it lives, so that a test can hold tasks
/// back and let them go one by one. Queues made meanwhile stand on the replacement. Nesting is
/// allowed, last in, first out.
class KIO_EXPORT ScReplaceExecutor {
public:
    enum class Pool { kCPUBound, kIOBound, kPreTermination };
    /// An empty replacement makes CreateCPUBoundExecutor (or the other) return an empty handle.
    ScReplaceExecutor(Pool inPool, std::shared_ptr<AsyncExecutor> inReplacement);
    ~ScReplaceExecutor();
    ScReplaceExecutor(const ScReplaceExecutor&) = delete;
    ScReplaceExecutor& operator=(const ScReplaceExecutor&) = delete;

private:
    Pool mPool;
};

} // namespace kiocore::threads
