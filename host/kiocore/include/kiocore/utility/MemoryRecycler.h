#pragma once

#include <kiocore/Export.h>

#include <cstddef>
#include <memory>

namespace kiocore::utility {

/// Where the control blocks of class-factory objects come from. Blocks that are let go are kept for
/// the next object of that size by the C library's per-thread caches; this is the one place to
/// change should another pool ever do better.
///
/// Threading: any thread; a block may be let go on another thread than it was got on.
KIO_EXPORT void* RecyclerAllocate(std::size_t inBytes);
KIO_EXPORT void RecyclerFree(void* inBlock, std::size_t inBytes) noexcept;

/// The same for the standard library's containers and shared pointers.
template <typename T>
struct RecyclerAllocator {
    using value_type = T;

    RecyclerAllocator() = default;
    template <typename U>
    RecyclerAllocator(const RecyclerAllocator<U>&)
    {}
    T* allocate(std::size_t inCount) { return static_cast<T*>(RecyclerAllocate(inCount * sizeof(T))); }
    void deallocate(T* inBlock, std::size_t inCount) noexcept { RecyclerFree(inBlock, inCount * sizeof(T)); }

    template <typename U>
    friend bool operator==(const RecyclerAllocator&, const RecyclerAllocator<U>&)
    {
        return true;
    }
};

/// A run of bytes that several share; let go with the last of them.
///
/// Threading: handles like std::shared_ptr; the bytes belong to whoever fills them until they are shared.
struct SharedRecycledMemory {
    std::shared_ptr<std::byte[]> bytes;
    std::size_t size = 0;

    explicit operator bool() const { return bytes != nullptr; }
};
/// @return an empty handle when inBytes is 0 or memory could not be had.
KIO_EXPORT SharedRecycledMemory MakeSharedRecycledMemory(std::size_t inBytes);

} // namespace kiocore::utility

namespace kiocore::allocator {

/// The same under the name that goes with the standard library.
template <typename T>
using STLAllocator = utility::RecyclerAllocator<T>;

} // namespace kiocore::allocator
