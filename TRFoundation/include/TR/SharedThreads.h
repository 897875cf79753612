#pragma once

#include <kiocore/Export.h>
#include <kiocore/threads/AsyncExecutor.h>

#include <memory>

namespace TR {

/// The process's work queues, so that kinds of work share threads without one starving another. Empty
/// until the library is up and after it went down; a copied handle keeps its queue usable.
///
/// Threading: copy a handle before using it; the handles change only in Initialize and Shutdown.
extern KIO_EXPORT std::shared_ptr<kiocore::threads::AsyncExecutor> sLowPriorityRenderQueue; // CPU, serial
extern KIO_EXPORT std::shared_ptr<kiocore::threads::AsyncExecutor>
    sNormalPriorityRenderQueue; // CPU, parallel
extern KIO_EXPORT std::shared_ptr<kiocore::threads::AsyncExecutor>
    sDeferredMediaProcessingQueue;                                                              // CPU, serial
extern KIO_EXPORT std::shared_ptr<kiocore::threads::AsyncExecutor> sVideoSourcePrefetcherQueue; // I/O, serial
extern KIO_EXPORT std::shared_ptr<kiocore::threads::AsyncExecutor>
    sImageSourcePrefetcherQueue; // I/O, parallel

/// Makes the five queues, replacing those that are there. Called by Initialize, under its lock.
KIO_EXPORT void StartSharedThreadQueues();
/// Lets the five queues go without waiting for their work. Called by Shutdown, under its lock.
KIO_EXPORT void StopSharedThreadQueues();

} // namespace TR
