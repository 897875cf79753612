#pragma once

// Where rows lie. Included by sources of kioui only.

#include <cstddef>
#include <memory>
#include <vector>

namespace kioui::controls {

/// Memory for many things of one size that come and go together: in blocks, which go when all of them are
/// empty.
///
/// Threading: one thread at a time.
class RowMemory {
public:
    explicit RowMemory(std::size_t inBytesEach);
    ~RowMemory();
    RowMemory(const RowMemory&) = delete;
    RowMemory& operator=(const RowMemory&) = delete;

    std::size_t BytesEach() const { return mBytesEach; }
    void* Take();
    void Give(void* inPlace) noexcept;

private:
    struct Free {
        Free* next;
    };
    void AddBlock();

    const std::size_t mBytesEach;
    std::vector<std::unique_ptr<std::byte[]>> mBlocks;
    Free* mFree = nullptr;
    std::byte* mFresh = nullptr; // never taken yet, up to mEnd
    std::byte* mEnd = nullptr;
    std::size_t mTaken = 0;
};

} // namespace kioui::controls
