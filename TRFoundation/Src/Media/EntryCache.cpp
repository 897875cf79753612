#include "EntryCache.h"

#include <utility>

namespace TR {

using kiocore::filesupport::FileTime;

namespace {

/// Of the hash map for a node beside the node itself: its link, its bucket, the allocator's own.
constexpr std::size_t kMapOverheadBytes = 32;

} // namespace

std::size_t EntryCache::BytesOf(const Slot& inSlot)
{
    return sizeof(Node) + kMapOverheadBytes + inSlot.entry.contents->BytesUsed();
}

void EntryCache::Link(Node& inNode)
{
    Slot& slot = inNode.second;
    slot.newer = nullptr;
    slot.older = mNewest;
    if (mNewest) {
        mNewest->second.newer = &inNode;
    } else {
        mOldest = &inNode;
    }
    mNewest = &inNode;
}

void EntryCache::Unlink(Node& inNode)
{
    Slot& slot = inNode.second;
    (slot.newer ? slot.newer->second.older : mNewest) = slot.older;
    (slot.older ? slot.older->second.newer : mOldest) = slot.newer;
}

void EntryCache::Forget(Node& inNode)
{
    if (!inNode.second.isPinned) {
        Unlink(inNode);
    }
    mBytes -= BytesOf(inNode.second);
    CountTag(inNode.first.tag, -1);
    const RecordKey key = inNode.first; // the map must not be handed a key that it is about to destroy
    mSlots.erase(key);
}

void EntryCache::CountTag(std::int32_t inTag, int inChange)
{
    std::uint32_t& count = mTagCounts[TagBit(inTag)];
    count += static_cast<std::uint32_t>(inChange);
    const std::uint32_t bit = 1u << TagBit(inTag);
    const std::uint32_t held = mHeldTags.load(std::memory_order_relaxed);
    mHeldTags.store(count ? held | bit : held & ~bit, std::memory_order_relaxed);
}

bool EntryCache::Find(const RecordKey& inKey, FileTime inTime, EntrySnapshot& outEntry)
{
    const auto found = mSlots.find(inKey);
    if (found == mSlots.end()) {
        return false;
    }
    Slot& slot = found->second;
    if (slot.time != inTime) {
        Forget(*found);
        return false;
    }
    if (!slot.isPinned && mNewest != &*found) {
        Unlink(*found);
        Link(*found);
    }
    outEntry = slot.entry;
    return true;
}

void EntryCache::Store(const RecordKey& inKey, FileTime inTime, EntrySnapshot inEntry, bool inIsSaved,
                       std::size_t inBudgetBytes)
{
    const auto [found, inserted] = mSlots.try_emplace(inKey);
    Slot& slot = found->second;
    if (inserted) {
        CountTag(inKey.tag, 1);
    } else {
        mBytes -= BytesOf(slot);
        if (!slot.isPinned) {
            Unlink(*found);
        }
    }
    slot.time = inTime;
    slot.entry = std::move(inEntry);
    slot.isPinned = !inIsSaved || !slot.entry.upToDate;
    mBytes += BytesOf(slot);
    if (!slot.isPinned) {
        Link(*found);
    }
    Shrink(inBudgetBytes);
}

void EntryCache::Shrink(std::size_t inBudgetBytes)
{
    while (mBytes > inBudgetBytes && mOldest) {
        Forget(*mOldest);
    }
}

void EntryCache::Clear()
{
    mSlots.clear();
    mTagCounts.fill(0);
    mHeldTags.store(0, std::memory_order_relaxed);
    mNewest = nullptr;
    mOldest = nullptr;
    mBytes = 0;
}

} // namespace TR
