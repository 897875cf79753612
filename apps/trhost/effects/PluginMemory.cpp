#include "PluginMemory.h"

#include <new>
#include <utility>

namespace trhost::effects {

namespace {

IFrameMemory* sMemory = nullptr;

} // namespace

void SetPluginMemory(IFrameMemory* inMemory) noexcept
{
    sMemory = inMemory;
}

bool IsPluginMemoryWatched() noexcept
{
    return sMemory != nullptr;
}

PluginBuffer::PluginBuffer(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse)
    : mBytes(static_cast<std::byte*>(sMemory ? sMemory->Allocate(inBytes, inAlignment, inUse)
                                             : ::operator new(inBytes, std::align_val_t(inAlignment)))),
      mAlignment(inAlignment)
{}

PluginBuffer::PluginBuffer(PluginBuffer&& inOther) noexcept
    : mBytes(std::exchange(inOther.mBytes, nullptr)), mAlignment(inOther.mAlignment)
{}

PluginBuffer& PluginBuffer::operator=(PluginBuffer&& inOther) noexcept
{
    std::swap(mBytes, inOther.mBytes);
    std::swap(mAlignment, inOther.mAlignment);
    return *this;
}

PluginBuffer::~PluginBuffer()
{
    FreePluginMemory(mBytes, mAlignment);
}

std::byte* PluginBuffer::Release() noexcept
{
    return std::exchange(mBytes, nullptr);
}

void FreePluginMemory(std::byte* inBytes, std::size_t inAlignment) noexcept
{
    if (!inBytes) {
        return;
    }
    if (sMemory) {
        sMemory->Free(inBytes);
    } else {
        ::operator delete(inBytes, std::align_val_t(inAlignment));
    }
}

} // namespace trhost::effects
