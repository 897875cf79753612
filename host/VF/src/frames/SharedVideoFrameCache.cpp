#include <VF/SharedVideoFrameCache.h>

#include "FrameMemory.h"
#include "FrameTable.h"

#include <kiocore/debug/Trace.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace VF {
namespace {

using kiocore::Guid;

constexpr std::uint64_t kUsualBudget = 512ull << 20;

class Cache {
public:
    MF::IVideoFrameRef Find(const Guid& inKey) noexcept
    {
        return mTable.Find(inKey, 2 * mAdditions.load(std::memory_order_relaxed) + 1);
    }

    // What is taken out is destroyed after the lock: a frame may be anyone's class.

    void Add(const Guid& inKey, const MF::IVideoFrameRef& inFrame, int inRetention)
    {
        const std::uint64_t bytes = inFrame->GetSizeBytes();
        std::vector<FrameTable::EntryPtr> gone;
        const std::lock_guard lock(mChangeLock);
        if (bytes > mBudget) {
            Take(mTable.Remove(inKey), gone);
            return;
        }
        const std::uint64_t now = 2 * mAdditions.load(std::memory_order_relaxed) + 2;
        FrameTable::EntryPtr replaced = mTable.Insert(inKey, inFrame, inRetention, now);
        mBytes += bytes; // after what may run out of memory
        Take(std::move(replaced), gone);
        mAdditions.fetch_add(1, std::memory_order_relaxed);
        Shrink(gone);
    }

    void Remove(const Guid& inKey)
    {
        FrameTable::EntryPtr gone;
        const std::lock_guard lock(mChangeLock);
        gone = mTable.Remove(inKey);
        mBytes -= gone ? gone->bytes : 0;
    }

    void Clear()
    {
        std::vector<FrameTable::EntryPtr> gone;
        const std::lock_guard lock(mChangeLock);
        gone = mTable.RemoveAll();
        mBytes = 0;
    }

    void SetBudget(std::uint64_t inBytes)
    {
        std::vector<FrameTable::EntryPtr> gone;
        const std::lock_guard lock(mChangeLock);
        mBudget = inBytes;
        Shrink(gone);
    }

    SharedVideoFrameCache::Statistics GetStatistics()
    {
        const std::lock_guard lock(mChangeLock);
        return {mBytes, mTable.Count(), mBudget};
    }

private:
    void Take(FrameTable::EntryPtr inEntry, std::vector<FrameTable::EntryPtr>& ioGone)
    {
        if (inEntry) {
            mBytes -= inEntry->bytes;
            ioGone.push_back(std::move(inEntry));
        }
    }

    void Shrink(std::vector<FrameTable::EntryPtr>& ioGone)
    {
        while (mBytes > mBudget) {
            Take(mTable.Remove(mTable.Lowest()->key), ioGone);
        }
    }

    std::mutex mChangeLock; // for whoever changes what there is; finding does without
    std::uint64_t mBytes = 0;
    std::uint64_t mBudget = std::min(kUsualBudget, MachineMemoryBytes() / 8);
    // The time: twice the number of frames ever added, one more for uses since. It stands still between
    // additions, so that threads which only find write nothing that others read.
    std::atomic<std::uint64_t> mAdditions{0};
    FrameTable mTable;
};

Cache& GetCache()
{
    static auto& cache = *new Cache; // leaked: frames may be asked for until the very end
    return cache;
}

} // namespace

MF::IVideoFrameRef SharedVideoFrameCache::RetrieveFromCache(const Guid& inKey)
{
    KIO_HOST_CALL("VF::SharedVideoFrameCache::RetrieveFromCache", inKey);
    return GetCache().Find(inKey);
}

void SharedVideoFrameCache::AddToCache(const Guid& inKey, const MF::IVideoFrameRef& inFrame, int inRetention)
{
    KIO_HOST_CALL("VF::SharedVideoFrameCache::AddToCache", inKey, inRetention);
    if (inFrame) {
        GetCache().Add(inKey, inFrame, inRetention);
    }
}

void SharedVideoFrameCache::RemoveFromCache(const Guid& inKey)
{
    KIO_HOST_CALL("VF::SharedVideoFrameCache::RemoveFromCache", inKey);
    GetCache().Remove(inKey);
}

void SharedVideoFrameCache::Clear()
{
    GetCache().Clear();
}

void SharedVideoFrameCache::SetByteBudget(std::uint64_t inBytes)
{
    GetCache().SetBudget(inBytes);
}

SharedVideoFrameCache::Statistics SharedVideoFrameCache::GetStatistics()
{
    return GetCache().GetStatistics();
}

} // namespace VF
