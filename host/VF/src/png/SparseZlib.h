#pragma once

#include "GrowingBytes.h"

#include <cstdint>

namespace VF {

/// Writes a zlib stream of bytes that nearly all are 0, in time that depends on the others alone: runs of 0
/// are counted, never made. The code is made for difference pictures: short for the longest run and for 0,
/// even for what lifted differences are (64 to 255).
///
/// Threading: one thread at a time.
class SparseZlib {
public:
    /// @param ioBytes  appended to.
    explicit SparseZlib(GrowingBytes& ioBytes);

    void Zeros(std::uint64_t inCount) { mZeros += inCount; }
    void Byte(std::uint8_t inByte)
    {
        if (inByte == 0) {
            ++mZeros;
        } else {
            Literal(inByte);
        }
    }
    void Finish();

private:
    void Literal(std::uint8_t inByte);
    void WriteZeros();
    void WriteHeader();
    void Put(std::uint64_t inBits, unsigned inCount);
    void Spill();

    GrowingBytes& mBytes;
    std::uint64_t mZeros = 0; // that are not written yet
    std::uint64_t mBits = 0;  // likewise; the next goes above the others
    unsigned mBitCount = 0;
    std::uint64_t mSum = 1; // both halves of the check sum, not reduced every time
    std::uint64_t mSumOfSums = 0;
};

} // namespace VF
