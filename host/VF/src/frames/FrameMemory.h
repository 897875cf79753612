#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VF {

struct FreeFrameMemory {
    std::size_t bytes = 0;
    void operator()(std::byte* inMemory) const noexcept;
};
using FrameMemory = std::unique_ptr<std::byte[], FreeFrameMemory>;

/// Memory for the pixels of one frame, aligned to 64 bytes. Blocks that frames let go are kept for the next
/// frames of their size (within a small budget): the system would take the pages away and clear them anew,
/// which costs more than a conversion.
///
/// Threading: any thread.
/// @return empty when there is none to be had.
FrameMemory AllocateFrameMemory(std::size_t inBytes, bool inZeroed) noexcept;

/// What the machine has, in bytes; no frame may be larger.
std::uint64_t MachineMemoryBytes() noexcept;

} // namespace VF
