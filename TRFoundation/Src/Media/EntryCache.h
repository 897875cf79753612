#pragma once

#include "PackedEntry.h"

#include <kiocore/filesupport/FileTime.h>
#include <kiocore/utility/Guid.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace TR {

/// Stands for a record file's path: the parts by which paths differ.
struct RecordKey {
    Guid documentID;
    std::uint32_t folderNumber = 0;
    std::int32_t tag = 0;

    friend bool operator==(const RecordKey&, const RecordKey&) = default;
};

struct RecordKeyHash {
    std::size_t operator()(const RecordKey& inKey) const noexcept
    {
        return std::hash<Guid>()(inKey.documentID) ^ (inKey.folderNumber * 0x9E3779B97F4A7C15ull) ^
               (static_cast<std::size_t>(inKey.tag) * 0xC2B2AE3D27D4EB4Full);
    }
};

/// Entries read or written recently, each with its file's modification time, within a byte budget. The one
/// used longest ago goes first, but never one that differs from its file: not up to date (its streams would
/// be lost) or not saved.
///
/// A hash map and not an ordered one: with 100,000 documents an ordered map spends more time on the way to
/// an entry than the system does on the question whether its file changed.
///
/// Threading: the database's cache lock guards it.
class EntryCache {
public:
    /// Gets an entry that was recorded with this time. One with another time is forgotten.
    bool Find(const RecordKey& inKey, kiocore::filesupport::FileTime inTime, EntrySnapshot& outEntry);
    /// @param inIsSaved  false when the file does not hold this entry.
    void Store(const RecordKey& inKey, kiocore::filesupport::FileTime inTime, EntrySnapshot inEntry,
               bool inIsSaved, std::size_t inBudgetBytes);
    void Clear();
    /// False when no entry has this tag: most documents have a record under the newest tag only, and whoever
    /// looks for an unknown one tries every tag. May be asked without the lock.
    bool MayHold(std::int32_t inTag) const
    {
        return (mHeldTags.load(std::memory_order_relaxed) >> TagBit(inTag) & 1) != 0;
    }

private:
    struct Slot;
    using Node = std::pair<const RecordKey, Slot>;
    struct Slot {
        kiocore::filesupport::FileTime time = 0;
        EntrySnapshot entry;
        bool isPinned = false;
        Node* newer = nullptr;
        Node* older = nullptr;
    };

    static unsigned TagBit(std::int32_t inTag) { return static_cast<std::uint32_t>(inTag) >> 4 & 31; }
    static std::size_t BytesOf(const Slot& inSlot);
    void CountTag(std::int32_t inTag, int inChange);
    void Link(Node& inNode);
    void Unlink(Node& inNode);
    void Forget(Node& inNode);
    void Shrink(std::size_t inBudgetBytes);

    std::unordered_map<RecordKey, Slot, RecordKeyHash> mSlots;
    Node* mNewest = nullptr; // pinned ones are not in this list
    Node* mOldest = nullptr;
    std::size_t mBytes = 0;
    std::array<std::uint32_t, 32> mTagCounts{}; // by TagBit
    std::atomic<std::uint32_t> mHeldTags{0};    // the bits whose count is not zero
};

} // namespace TR
