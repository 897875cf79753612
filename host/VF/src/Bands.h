#pragma once

#include <cstdint>
#include <functional>

namespace VF {

/// Does inWork(0) to inWork(inCount - 1), each once, on this thread and on those of the CPU-bound executor
/// that are free. Returns when all are done: this thread takes on whatever nobody has begun, so it waits only
/// for work that is running, also when it is the executor's own or when the executor refuses.
/// @param inWork  returns whether it succeeded; may throw std::bad_alloc, which counts as a failure.
/// @return false as soon as one failed; what was not begun then is left out.
///
/// Threading: any thread, without locks.
bool RunBands(unsigned inCount, const std::function<bool(unsigned)>& inWork);

/// How many threads work at once at best.
unsigned BandThreads();

/// How many rows a band has: as many bands as are worth a thread each, and no more than asked for.
/// @param inUnit  rows that belong together.
std::uint32_t BandRows(std::uint32_t inRows, std::uint64_t inPixelsPerRow, std::uint32_t inUnit,
                       unsigned inMostBands);

} // namespace VF
