#include "GuardedMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

namespace trhost::effects {

namespace {

constexpr std::byte kPattern{0xA7};

bool IsIntact(std::byte inByte)
{
    return inByte == kPattern;
}

} // namespace

void GuardedMemory::SetTouches(Touches inTouches)
{
    const std::lock_guard lock(mLock);
    mTouches = inTouches;
}

void* GuardedMemory::Allocate(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse)
{
    if (inBytes > SIZE_MAX / 2) {
        throw std::bad_alloc();
    }
    const std::lock_guard lock(mLock);
    const platform::GuardedPages pages = platform::MapGuardedPages(inBytes + inAlignment);
    std::memset(pages.begin, std::to_integer<int>(kPattern),
                static_cast<std::size_t>(pages.end - pages.begin));
    std::byte* begin = pages.begin; // pages are aligned to more than anybody asks for
    if (mTouches == Touches::kUpperPage) {
        const auto highest = reinterpret_cast<std::uintptr_t>(pages.end) - inBytes;
        begin = pages.end - inBytes - highest % inAlignment;
    }
    try {
        mBlocks.emplace(begin, Block{pages, inBytes, inUse});
    } catch (...) {
        platform::UnmapGuardedPages(pages);
        throw;
    }
    platform::KnowBlock(pages, begin, begin + inBytes, inUse);
    return begin;
}

void GuardedMemory::Free(void* inMemory) noexcept
{
    if (!inMemory) {
        return;
    }
    const std::lock_guard lock(mLock);
    const auto found = mBlocks.find(static_cast<std::byte*>(inMemory));
    if (found == mBlocks.end()) {
        return;
    }
    Inspect(found->first, found->second);
    platform::ForgetBlock(found->first);
    platform::UnmapGuardedPages(found->second.pages);
    mBlocks.erase(found);
}

void GuardedMemory::Inspect(std::byte* inBegin, const Block& inBlock)
{
    std::byte* const end = inBegin + inBlock.bytes;
    const std::byte* const before = std::find_if_not(inBlock.pages.begin, inBegin, IsIntact);
    if (before != inBegin) {
        Note(inBlock.use, false, inBegin - before);
    }
    const auto last = std::find_if_not(std::make_reverse_iterator(inBlock.pages.end),
                                       std::make_reverse_iterator(end), IsIntact);
    if (last.base() != end) {
        Note(inBlock.use, true, last.base() - end);
    }
    // Whoever goes on using the block is not told the same again.
    std::fill(inBlock.pages.begin, inBegin, kPattern);
    std::fill(end, inBlock.pages.end, kPattern);
}

void GuardedMemory::Note(MemoryUse inUse, bool inIsBehind, std::ptrdiff_t inDistance)
{
    const auto distance = static_cast<std::uint64_t>(inDistance);
    for (TrialFinding& finding : mFindings) {
        if (finding.use == inUse && finding.isBehind == inIsBehind) {
            finding.distanceBytes = std::max(finding.distanceBytes, distance);
            return;
        }
    }
    mFindings.push_back({FindingKind::kWroteOutside, inUse, inIsBehind, distance, {}});
}

std::size_t GuardedMemory::HashOfInputs() const
{
    const std::lock_guard lock(mLock);
    std::size_t hash = 0;
    for (const auto& [begin, block] : mBlocks) {
        if (block.use == MemoryUse::kInput) {
            const std::string_view bytes(reinterpret_cast<const char*>(begin), block.bytes);
            hash = hash * 31 + std::hash<std::string_view>()(bytes);
        }
    }
    return hash;
}

std::vector<TrialFinding> GuardedMemory::TakeFindings()
{
    const std::lock_guard lock(mLock);
    for (const auto& [begin, block] : mBlocks) {
        Inspect(begin, block);
    }
    return std::exchange(mFindings, {});
}

} // namespace trhost::effects
