#include <VF/SharedVideoFrameCache.h>

#include "FrameMemory.h"

#include <kiocore/debug/Trace.h>
#include <kiocore/threads/RecursiveMutex.h>

#include <algorithm>
#include <atomic>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace VF {
namespace {

using kiocore::Guid;
using kiocore::threads::RecursiveMutex;
using kiocore::threads::ScLock;

constexpr std::size_t kShards = 16;
constexpr std::uint64_t kUsualBudget = 512ull << 20;

struct Entry {
    Guid key;
    MF::IVideoFrameRef frame;
    std::uint64_t bytes;
    std::uint64_t lastUse; // see Cache::mAdditions
};
using Entries = std::list<Entry>; // most recently used first

/// Where an entry stands in the order in which entries go: the smallest goes first.
struct Rank {
    int retention;
    std::uint64_t lastUse;
    friend auto operator<=>(const Rank&, const Rank&) = default;
};

class alignas(64) Shard {
public:
    MF::IVideoFrameRef Find(const Guid& inKey, std::uint64_t inNow)
    {
        const ScLock lock(mLock);
        const auto place = mPlaces.find(inKey);
        if (place == mPlaces.end()) {
            return {};
        }
        const auto [entries, entry] = place->second;
        entry->lastUse = inNow;
        if (entry != entries->begin()) {
            entries->splice(entries->begin(), *entries, entry);
        }
        return entry->frame;
    }

    /// The key must be unknown.
    void Insert(Entry inEntry, int inRetention)
    {
        const ScLock lock(mLock);
        Entries& entries = mEntries[inRetention];
        entries.push_front(std::move(inEntry));
        mPlaces.emplace(entries.front().key, Place{&entries, entries.begin()});
    }

    std::optional<Entry> Remove(const Guid& inKey)
    {
        const ScLock lock(mLock);
        const auto place = mPlaces.find(inKey);
        if (place == mPlaces.end()) {
            return {};
        }
        return RemoveAt(place);
    }

    /// The rank of the entry that would go first; nothing when there is none.
    std::optional<Rank> Lowest()
    {
        const ScLock lock(mLock);
        for (const auto& [retention, entries] : mEntries) {
            if (!entries.empty()) {
                return Rank{retention, entries.back().lastUse};
            }
        }
        return {};
    }

    /// Removes the entry that would go first, whichever it is by now.
    std::optional<Entry> RemoveLowest()
    {
        const ScLock lock(mLock);
        for (auto& [retention, entries] : mEntries) {
            if (!entries.empty()) {
                return RemoveAt(mPlaces.find(entries.back().key));
            }
        }
        return {};
    }

    std::uint64_t Count()
    {
        const ScLock lock(mLock);
        return mPlaces.size();
    }

private:
    struct Place {
        Entries* entries;
        Entries::iterator entry;
    };
    using Places = std::unordered_map<Guid, Place>;

    Entry RemoveAt(Places::iterator inPlace)
    {
        const auto [entries, entry] = inPlace->second;
        Entry removed = std::move(*entry);
        mPlaces.erase(inPlace);
        entries->erase(entry);
        return removed;
    }

    RecursiveMutex mLock{"VF::SharedVideoFrameCache"}; // guards the members below
    std::map<int, Entries> mEntries;                   // by retention
    Places mPlaces;
};

class Cache {
public:
    MF::IVideoFrameRef Find(const Guid& inKey)
    {
        return ShardOf(inKey).Find(inKey, 2 * mAdditions.load(std::memory_order_relaxed) + 1);
    }

    void Add(const Guid& inKey, const MF::IVideoFrameRef& inFrame, int inRetention)
    {
        const std::uint64_t bytes = inFrame->GetSizeBytes();
        std::vector<Entry> gone; // let go after the lock
        const std::lock_guard lock(mChangeLock);
        Take(ShardOf(inKey).Remove(inKey), gone);
        if (bytes <= mBudget) {
            const std::uint64_t now = 2 * mAdditions.fetch_add(1, std::memory_order_relaxed) + 2;
            ShardOf(inKey).Insert({inKey, inFrame, bytes, now}, inRetention);
            mBytes += bytes;
            Shrink(gone);
        }
    }

    void Remove(const Guid& inKey)
    {
        std::vector<Entry> gone;
        const std::lock_guard lock(mChangeLock);
        Take(ShardOf(inKey).Remove(inKey), gone);
    }

    void Clear()
    {
        std::vector<Entry> gone;
        const std::lock_guard lock(mChangeLock);
        for (Shard& shard : mShards) {
            while (Take(shard.RemoveLowest(), gone)) {
            }
        }
    }

    void SetBudget(std::uint64_t inBytes)
    {
        std::vector<Entry> gone;
        const std::lock_guard lock(mChangeLock);
        mBudget = inBytes;
        Shrink(gone);
    }

    SharedVideoFrameCache::Statistics GetStatistics()
    {
        const std::lock_guard lock(mChangeLock);
        SharedVideoFrameCache::Statistics statistics{mBytes, 0, mBudget};
        for (Shard& shard : mShards) {
            statistics.frames += shard.Count();
        }
        return statistics;
    }

private:
    Shard& ShardOf(const Guid& inKey) { return mShards[inKey.AsBytes()[15] % kShards]; }

    bool Take(std::optional<Entry> inEntry, std::vector<Entry>& ioGone)
    {
        if (!inEntry) {
            return false;
        }
        mBytes -= inEntry->bytes;
        ioGone.push_back(std::move(*inEntry));
        return true;
    }

    void Shrink(std::vector<Entry>& ioGone)
    {
        while (mBytes > mBudget) {
            Shard* poorest = nullptr;
            std::optional<Rank> lowest;
            for (Shard& shard : mShards) {
                const std::optional<Rank> rank = shard.Lowest();
                if (rank && (!lowest || *rank < *lowest)) {
                    lowest = rank;
                    poorest = &shard;
                }
            }
            if (!poorest || !Take(poorest->RemoveLowest(), ioGone)) {
                return;
            }
        }
    }

    // Finding takes a shard's lock only. Whoever changes what there is also takes mChangeLock, before it.
    std::mutex mChangeLock;
    std::uint64_t mBytes = 0;
    std::uint64_t mBudget = std::min(kUsualBudget, MachineMemoryBytes() / 8);
    // The time: twice the number of frames ever added, one more for uses since. It stands still between
    // additions, so that threads which only find share nothing that is written; uses in the same shard keep
    // their order all the same.
    alignas(64) std::atomic<std::uint64_t> mAdditions{0};
    Shard mShards[kShards];
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
