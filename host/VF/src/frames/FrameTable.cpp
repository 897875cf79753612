#include "FrameTable.h"

#include <thread>
#include <utility>

namespace VF {
namespace {

using kiocore::Guid;
using kiocore::classref::UnknownBase;
using MF::IVideoFrameRef;

constexpr std::size_t kFirstPlaces = 64;
constexpr int kSpins = 100; // what is done under a shard's lock takes a few nanoseconds

/// Another reference on the same object, counted apart from all others.
IVideoFrameRef CountedApart(const IVideoFrameRef& inFrame)
{
    struct alignas(64) Holder { // a line of memory of its own
        IVideoFrameRef frame;
    };
    auto holder = std::make_shared<Holder>(Holder{inFrame});
    UnknownBase* const identity = inFrame.Identity().get();
    return IVideoFrameRef(inFrame.Get(), std::shared_ptr<UnknownBase>(std::move(holder), identity));
}

} // namespace

void FrameTable::Shard::Lock() noexcept
{
    for (int spins = 0; held.exchange(true, std::memory_order_acquire); ++spins) {
        if (spins >= kSpins) {
            std::this_thread::yield(); // its holder sleeps
        }
    }
}

class FrameTable::LockAll {
public:
    explicit LockAll(std::array<Shard, kShards>& ioShards) : mShards(ioShards)
    {
        for (Shard& shard : mShards) {
            shard.Lock();
        }
    }
    ~LockAll()
    {
        for (Shard& shard : mShards) {
            shard.Unlock();
        }
    }
    LockAll(const LockAll&) = delete;
    LockAll& operator=(const LockAll&) = delete;

private:
    std::array<Shard, kShards>& mShards;
};

FrameTable::FrameTable() : mPlaces(kFirstPlaces) {}

std::size_t FrameTable::OwnShard() noexcept
{
    static std::atomic<std::size_t> threads{0};
    // Not looked up through the loader each time: this is asked for every frame.
    __attribute__((tls_model("initial-exec"))) static thread_local std::size_t shard = kShards;
    if (shard == kShards) [[unlikely]] {
        shard = threads.fetch_add(1, std::memory_order_relaxed) % kShards;
    }
    return shard;
}

std::size_t FrameTable::PlaceOf(const Guid& inKey) const noexcept
{
    const std::size_t mask = mPlaces.size() - 1;
    std::size_t place = std::hash<Guid>()(inKey) & mask;
    while (mPlaces[place].entry && !(mPlaces[place].key == inKey)) {
        place = (place + 1) & mask;
    }
    return place;
}

IVideoFrameRef FrameTable::Find(const Guid& inKey, std::uint64_t inNow) noexcept
{
    const std::size_t own = OwnShard();
    Shard& shard = mShards[own];
    IVideoFrameRef found;
    shard.Lock();
    if (Entry* const entry = mPlaces[PlaceOf(inKey)].entry.get()) {
        // Written only when it changes: others read this line.
        if (entry->lastUse.load(std::memory_order_relaxed) != inNow) {
            entry->lastUse.store(inNow, std::memory_order_relaxed);
        }
        found = entry->references[own];
    }
    shard.Unlock();
    return found;
}

FrameTable::EntryPtr FrameTable::Insert(const Guid& inKey, const IVideoFrameRef& inFrame, int inRetention,
                                        std::uint64_t inNow)
{
    auto entry = std::make_unique<Entry>();
    entry->key = inKey;
    for (IVideoFrameRef& reference : entry->references) {
        reference = CountedApart(inFrame);
    }
    entry->bytes = inFrame->GetSizeBytes();
    entry->retention = inRetention;
    entry->lastUse = inNow;
    if (2 * (mCount + 1) > mPlaces.size()) {
        Grow();
    }
    const std::size_t place = PlaceOf(inKey);
    const LockAll lock(mShards);
    mPlaces[place].key = inKey;
    mPlaces[place].entry.swap(entry);
    mCount += entry ? 0 : 1;
    return entry;
}

void FrameTable::Grow()
{
    std::vector<Place> larger(mPlaces.size() * 2);
    const LockAll lock(mShards);
    mPlaces.swap(larger);
    for (Place& place : larger) {
        if (place.entry) {
            mPlaces[PlaceOf(place.key)] = std::move(place);
        }
    }
}

FrameTable::EntryPtr FrameTable::Remove(const Guid& inKey)
{
    std::size_t place = PlaceOf(inKey);
    if (!mPlaces[place].entry) {
        return {};
    }
    const LockAll lock(mShards);
    EntryPtr removed = std::move(mPlaces[place].entry);
    --mCount;
    // Those behind that would have stood here, or before, close the gap.
    const std::size_t mask = mPlaces.size() - 1;
    for (std::size_t next = (place + 1) & mask; mPlaces[next].entry; next = (next + 1) & mask) {
        Place moved = std::move(mPlaces[next]); // leaves the place free
        mPlaces[PlaceOf(moved.key)] = std::move(moved);
    }
    return removed;
}

const FrameTable::Entry* FrameTable::Lowest() const
{
    const Entry* lowest = nullptr;
    for (const Place& place : mPlaces) {
        const Entry* const entry = place.entry.get();
        if (entry && (!lowest || std::pair(entry->retention, entry->lastUse.load()) <
                                     std::pair(lowest->retention, lowest->lastUse.load()))) {
            lowest = entry;
        }
    }
    return lowest;
}

std::vector<FrameTable::EntryPtr> FrameTable::RemoveAll()
{
    std::vector<Place> places(kFirstPlaces);
    {
        const LockAll lock(mShards);
        mPlaces.swap(places);
        mCount = 0;
    }
    std::vector<EntryPtr> removed;
    for (Place& place : places) {
        if (place.entry) {
            removed.push_back(std::move(place.entry));
        }
    }
    return removed;
}

} // namespace VF
