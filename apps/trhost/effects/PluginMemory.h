#pragma once

#include "FrameMemory.h"

#include <cstddef>

namespace trhost::effects {

/// Where an engine's buffers come from; see IEffectEngine::SetFrameMemory. Each engine has its own.
void SetPluginMemory(IFrameMemory* inMemory) noexcept;
/// Whether somebody else gives the memory, and so watches over it.
bool IsPluginMemoryWatched() noexcept;

/// One buffer that a plug-in sees.
///
/// Threading: one thread at a time.
class PluginBuffer {
public:
    PluginBuffer() = default;
    /// @throws std::bad_alloc.
    PluginBuffer(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse);
    PluginBuffer(PluginBuffer&& inOther) noexcept;
    PluginBuffer& operator=(PluginBuffer&& inOther) noexcept;
    ~PluginBuffer();

    std::byte* Get() const noexcept { return mBytes; }
    /// Gives the memory up; whoever has it now calls FreePluginMemory.
    std::byte* Release() noexcept;

private:
    std::byte* mBytes = nullptr;
    std::size_t mAlignment = 0;
};

/// For memory that was released, allocated with inAlignment.
void FreePluginMemory(std::byte* inBytes, std::size_t inAlignment) noexcept;

} // namespace trhost::effects
