#pragma once

#include <cstddef>

namespace support {

/// Counts what the calling thread takes with operator new, which it replaces in the program that links this.
class AllocationCount {
public:
    AllocationCount();
    std::size_t SinceThen() const;

private:
    std::size_t mAtStart;
};

} // namespace support
