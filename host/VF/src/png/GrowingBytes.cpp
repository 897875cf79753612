#include "GrowingBytes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace VF {
namespace {

constexpr std::size_t kLeastBytes = 16 * 1024;

} // namespace

GrowingBytes::~GrowingBytes()
{
    std::free(mBytes);
}

bool GrowingBytes::TryReserve(std::size_t inBytes) noexcept
{
    if (inBytes <= Room()) {
        return true;
    }
    const std::size_t larger = std::max({kLeastBytes, mCapacity + mCapacity / 2, mSize + inBytes});
    void* const moved = std::realloc(mBytes, larger);
    if (!moved) {
        return false;
    }
    mBytes = static_cast<std::byte*>(moved);
    mCapacity = larger;
    return true;
}

void GrowingBytes::Reserve(std::size_t inBytes)
{
    if (!TryReserve(inBytes)) {
        throw std::bad_alloc();
    }
}

void GrowingBytes::Append(const void* inBytes, std::size_t inSize)
{
    if (inSize == 0) {
        return; // there may not even be an address
    }
    Reserve(inSize);
    std::memcpy(At(mSize), inBytes, inSize);
    Advance(inSize);
}

kiocore::utility::SharedRecycledMemory GrowingBytes::Release()
{
    if (void* const shrunk = std::realloc(mBytes, std::max<std::size_t>(mSize, 1))) {
        mBytes = static_cast<std::byte*>(shrunk);
    }
    mCapacity = 0;
    kiocore::utility::SharedRecycledMemory memory;
    memory.size = std::exchange(mSize, 0);
    memory.bytes = std::shared_ptr<std::byte[]>(std::exchange(mBytes, nullptr),
                                                [](std::byte* inBytes) { std::free(inBytes); });
    return memory;
}

} // namespace VF
