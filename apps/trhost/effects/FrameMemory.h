#pragma once

#include <cstddef>

namespace trhost::effects {

/// What a buffer that a plug-in sees is for.
enum class MemoryUse {
    kInput,  ///< the plug-in may only read it
    kOutput, ///< the plug-in is to fill it
    kGiven,  ///< the plug-in's own from then on: it may read and write it
};

/// Where engines get the buffers of pictures and sound that plug-ins see, so that whoever tries a plug-in out
/// can surround them by memory that nobody may touch. Inputs are filled before IPluginCalls::Call; what
/// changes in them within it was done by the plug-in.
///
/// Threading: any thread.
class IFrameMemory {
public:
    virtual ~IFrameMemory() = default;
    /// @param inBytes      exactly as much as the plug-in may touch: what it reaches beyond is its fault.
    /// @param inAlignment  the least that the plug-in may count on, a power of two; more than that would
    /// leave
    ///     a gap behind the end that hides small overruns.
    /// @return never null. @throws std::bad_alloc.
    virtual void* Allocate(std::size_t inBytes, std::size_t inAlignment, MemoryUse inUse) = 0;
    virtual void Free(void* inMemory) noexcept = 0;
};

} // namespace trhost::effects
