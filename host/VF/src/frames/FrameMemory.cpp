#include "FrameMemory.h"

#include "platform/MachineMemory.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

namespace VF {
namespace {

constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kSmallBytes = 256 * 1024;       // the C library keeps these itself
constexpr std::size_t kLargeBytes = 4 * 1024 * 1024;  // some large pages fit into it
constexpr std::size_t kKeptBytes = 128 * 1024 * 1024; // four frames of 3840 x 2160 at 4 bytes a pixel

struct KeptBlock {
    std::byte* memory;
    std::size_t bytes;
};

struct Kept {
    std::mutex lock;
    std::vector<KeptBlock> blocks; // longest kept first
    std::size_t bytes = 0;
};

Kept& GetKept()
{
    static auto& kept = *new Kept; // leaked: frames may be let go until the very end
    return kept;
}

std::byte* TakeKept(std::size_t inBytes)
{
    Kept& kept = GetKept();
    const std::lock_guard guard(kept.lock);
    const auto found = std::find_if(kept.blocks.rbegin(), kept.blocks.rend(),
                                    [&](const KeptBlock& inBlock) { return inBlock.bytes == inBytes; });
    if (found == kept.blocks.rend()) {
        return nullptr;
    }
    std::byte* const memory = found->memory;
    kept.bytes -= inBytes;
    kept.blocks.erase(std::next(found).base());
    return memory;
}

void Free(std::byte* inMemory) noexcept
{
    ::operator delete(inMemory, kAlignment);
}

/// Puts a block by, and lets go of what is over the budget then.
void Keep(std::byte* inMemory, std::size_t inBytes)
{
    std::vector<KeptBlock> surplus;
    Kept& kept = GetKept();
    {
        const std::lock_guard guard(kept.lock);
        kept.blocks.push_back({inMemory, inBytes});
        kept.bytes += inBytes;
        auto last = kept.blocks.begin();
        while (kept.bytes > kKeptBytes) {
            kept.bytes -= last->bytes;
            ++last;
        }
        surplus.assign(kept.blocks.begin(), last);
        kept.blocks.erase(kept.blocks.begin(), last);
    }
    for (const KeptBlock& block : surplus) {
        Free(block.memory);
    }
}

} // namespace

void FreeFrameMemory::operator()(std::byte* inMemory) const noexcept
{
    if (!inMemory) {
        return;
    }
    if (bytes > kSmallBytes && bytes <= kKeptBytes) {
        try {
            Keep(inMemory, bytes);
            return;
        } catch (const std::bad_alloc&) {
            // No memory to remember it by: let it go.
        }
    }
    Free(inMemory);
}

FrameMemory AllocateFrameMemory(std::size_t inBytes, bool inZeroed) noexcept
{
    std::byte* memory = inBytes > kSmallBytes ? TakeKept(inBytes) : nullptr;
    if (!memory) {
        memory = static_cast<std::byte*>(::operator new(inBytes, kAlignment, std::nothrow));
        if (memory && inBytes >= kLargeBytes) {
            platform::PreferLargePages(memory, inBytes);
        }
    }
    if (memory && inZeroed) {
        std::memset(memory, 0, inBytes);
    }
    return FrameMemory(memory, FreeFrameMemory{inBytes});
}

std::uint64_t MachineMemoryBytes() noexcept
{
    static const std::uint64_t bytes = platform::MachineMemoryBytes();
    return bytes;
}

} // namespace VF
