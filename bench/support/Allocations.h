#pragma once

#include <cstddef>

namespace bench {

/// How often the program and its libraries have asked for memory from the heap since it began. A benchmark
/// that links this has its operator new replaced, which costs one relaxed addition each time.
std::size_t AllocationCount();

} // namespace bench
