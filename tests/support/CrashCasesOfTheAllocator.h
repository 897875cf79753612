#pragma once

namespace support {

void FreeTwice();
/// Frees a block whose book-keeping, just before it, was overwritten.
void FreeCorrupted();
/// Faults within malloc, which holds its lock then. For the C library's own allocator.
void FaultInAllocator();

} // namespace support
