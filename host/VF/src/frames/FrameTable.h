#pragma once

#include <MF/VideoFrame.h>
#include <kiocore/utility/Guid.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace VF {

/// Frames by key, made for being found by many threads at once: its lock is cut into shards, and a thread
/// that looks for something takes only its own; whoever changes the table takes all. Each shard also has a
/// count of its own of who uses a frame, so that threads which use the same frame share no line of memory
/// that is written.
///
/// Threading: Find on any thread; the rest on one thread at a time.
class FrameTable {
public:
    static constexpr std::size_t kShards = 8;

    struct Entry {
        std::atomic<std::uint64_t> lastUse{0};
        std::array<MF::IVideoFrameRef, kShards> references; ///< all on the one frame
        kiocore::Guid key;
        std::uint64_t bytes = 0;
        int retention = 0;
    };
    using EntryPtr = std::unique_ptr<Entry>;

    FrameTable();

    /// @param inNow  noted as the entry's last use.
    MF::IVideoFrameRef Find(const kiocore::Guid& inKey, std::uint64_t inNow) noexcept;

    /// In place of an entry of the same key, which is returned.
    EntryPtr Insert(const kiocore::Guid& inKey, const MF::IVideoFrameRef& inFrame, int inRetention,
                    std::uint64_t inNow);
    /// @return empty when the key is unknown.
    EntryPtr Remove(const kiocore::Guid& inKey);
    /// The entry of the lowest retention, among these the one used longest ago; null when there is none.
    const Entry* Lowest() const;
    std::size_t Count() const { return mCount; }
    std::vector<EntryPtr> RemoveAll();

private:
    struct alignas(64) Shard {
        std::atomic<bool> held{false};
        void Lock() noexcept;
        void Unlock() noexcept { held.store(false, std::memory_order_release); }
    };
    class LockAll;

    static std::size_t OwnShard() noexcept;
    /// Where the key stands, or the free place where it would.
    std::size_t PlaceOf(const kiocore::Guid& inKey) const noexcept;
    void Grow();

    std::array<Shard, kShards> mShards;
    /// The key stands here too: telling a neighbour apart then needs no look at its entry.
    struct Place {
        kiocore::Guid key;
        EntryPtr entry;
    };
    // A power of two; at least half are free. Behind the shards' locks, like what they point to.
    std::vector<Place> mPlaces;
    std::size_t mCount = 0;
};

} // namespace VF
