#include <TR/SharedThreads.h>

namespace TR {

using kiocore::threads::AsyncExecutor;
using kiocore::threads::CreateSubExecutor;

namespace {

constexpr int kSerial = 1;
constexpr int kAsParentAllows = -1;

} // namespace

std::shared_ptr<AsyncExecutor> sLowPriorityRenderQueue;
std::shared_ptr<AsyncExecutor> sNormalPriorityRenderQueue;
std::shared_ptr<AsyncExecutor> sDeferredMediaProcessingQueue;
std::shared_ptr<AsyncExecutor> sVideoSourcePrefetcherQueue;
std::shared_ptr<AsyncExecutor> sImageSourcePrefetcherQueue;

void StartSharedThreadQueues()
{
    const std::shared_ptr<AsyncExecutor> cpuBound = kiocore::threads::CreateCPUBoundExecutor();
    const std::shared_ptr<AsyncExecutor> ioBound = kiocore::threads::CreateIOBoundExecutor();
    sLowPriorityRenderQueue = CreateSubExecutor(cpuBound, kSerial);
    sNormalPriorityRenderQueue = CreateSubExecutor(cpuBound, kAsParentAllows);
    sDeferredMediaProcessingQueue = CreateSubExecutor(cpuBound, kSerial);
    sVideoSourcePrefetcherQueue = CreateSubExecutor(ioBound, kSerial);
    sImageSourcePrefetcherQueue = CreateSubExecutor(ioBound, kAsParentAllows);
}

void StopSharedThreadQueues()
{
    sImageSourcePrefetcherQueue.reset();
    sVideoSourcePrefetcherQueue.reset();
    sLowPriorityRenderQueue.reset();
    sNormalPriorityRenderQueue.reset();
    sDeferredMediaProcessingQueue.reset();
}

} // namespace TR
