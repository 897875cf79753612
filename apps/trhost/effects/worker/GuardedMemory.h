#pragma once

#include "FrameMemory.h"
#include "TrialCase.h"
#include "platform/GuardPages.h"

#include <map>
#include <mutex>
#include <vector>

namespace trhost::effects {

/// Memory for plug-ins that are tried out: each block touches a page that nobody may touch, so that most
/// accesses beyond it are a fault there and then; what lies on its other side, and between its end and that
/// page where alignment asks for a gap, is filled with a pattern, so that writing there is found afterwards.
///
/// Threading: any thread.
class GuardedMemory final : public IFrameMemory {
public:
    enum class Touches { kUpperPage, kLowerPage }; ///< with its end, or with its start
    void SetTouches(Touches inTouches);

    void* Allocate(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse) override;
    void Free(void* inMemory) noexcept override;

    /// What all inputs that there are hold now, as one number.
    std::size_t HashOfInputs() const;
    /// What was found beside blocks, those freed since the last call included: one for each use and side,
    /// with the farthest write. Each is told once.
    std::vector<TrialFinding> TakeFindings();

private:
    struct Block {
        platform::GuardedPages pages;
        std::size_t bytes = 0;
        MemoryUse use = MemoryUse::kOutput;
    };
    void Inspect(std::byte* inBegin, const Block& inBlock);
    void Note(MemoryUse inUse, bool inIsBehind, std::ptrdiff_t inDistance);

    mutable std::mutex mLock; // guards the members below
    Touches mTouches = Touches::kUpperPage;
    std::map<std::byte*, Block> mBlocks;
    std::vector<TrialFinding> mFindings;
};

} // namespace trhost::effects
