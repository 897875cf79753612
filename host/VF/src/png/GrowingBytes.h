#pragma once

#include <kiocore/utility/MemoryRecycler.h>

#include <cstddef>
#include <cstdint>

namespace VF {

/// A file that is written piece by piece. Memory grows as it does; what is not written yet takes none.
///
/// Threading: one thread at a time.
class GrowingBytes {
public:
    GrowingBytes() = default;
    ~GrowingBytes();
    GrowingBytes(const GrowingBytes&) = delete;
    GrowingBytes& operator=(const GrowingBytes&) = delete;

    std::size_t Size() const { return mSize; }
    std::byte* At(std::size_t inOffset) { return mBytes + inOffset; }
    std::size_t Room() const { return mCapacity - mSize; }

    /// Makes room behind the end; moves what is there.
    /// @return false when there is no memory.
    bool TryReserve(std::size_t inBytes) noexcept;
    /// The same. @throws std::bad_alloc.
    void Reserve(std::size_t inBytes);
    /// @throws std::bad_alloc.
    void Append(const void* inBytes, std::size_t inSize);
    /// What was written there by other means counts from now on. inBytes at most Room().
    void Advance(std::size_t inBytes) { mSize += inBytes; }

    /// Hands everything over without a copy, and is empty again. @throws std::bad_alloc.
    kiocore::utility::SharedRecycledMemory Release();

private:
    std::byte* mBytes = nullptr; // from malloc: realloc moves pages without touching them
    std::size_t mSize = 0;
    std::size_t mCapacity = 0;
};

} // namespace VF
