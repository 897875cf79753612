#pragma once

#include <cstddef>

namespace kiocore::platform {

/// Memory of whole pages apart from the heap, so that what runs over a block of the heap does not reach it.

/// Of zero bytes. Sizes are rounded up to whole pages.
/// @throws std::bad_alloc.
void* MapPages(std::size_t inBytes);
void UnmapPages(void* inPages, std::size_t inBytes) noexcept;
/// Whether they can be written; reading always can.
void SetPagesWritable(void* inPages, std::size_t inBytes, bool inWritable) noexcept;

} // namespace kiocore::platform
