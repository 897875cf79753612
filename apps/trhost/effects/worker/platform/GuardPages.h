#pragma once

#include "FrameMemory.h"

#include <cstddef>

namespace trhost::effects::platform {

/// Memory between two stretches that nobody may touch.
struct GuardedPages {
    std::byte* begin = nullptr; ///< first byte that may be touched
    std::byte* end = nullptr;   ///< behind the last one
};

/// How far an access may be off and still be noticed.
inline constexpr std::size_t kGuardBytes = std::size_t(1) << 20;

/// @param inBytes  at least as many.
/// @throws std::bad_alloc.
GuardedPages MapGuardedPages(std::size_t inBytes);
void UnmapGuardedPages(const GuardedPages& inPages) noexcept;

/// Tells the handler of faults about a block that lies in guarded pages, and forgets it again. When too many
/// are known, a fault around one is an ordinary crash.
void KnowBlock(const GuardedPages& inPages, const std::byte* inBegin, const std::byte* inEnd,
               MemoryUse inUse) noexcept;
void ForgetBlock(const std::byte* inBegin) noexcept;

/// From now on a fault in guarded pages is told as a line {"finding":{...}} on the descriptor before it ends
/// the process with its own signal.
void ReportFaults(int inFile);

} // namespace trhost::effects::platform
