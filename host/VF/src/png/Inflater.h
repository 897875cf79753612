#pragma once

#include "HuffmanTable.h"

#include <cstddef>
#include <cstdint>

namespace VF {

/// Compressed bytes at hand and the room for what they yield.
struct InflateBuffers {
    /// Bytes that may be read behind inputEnd, whatever they hold.
    static constexpr std::size_t kInputPadding = 32;
    /// While more input may follow, work stops when fewer bytes are left.
    static constexpr std::size_t kInputReserve = 512;
    /// Bytes that may be written behind outputEnd.
    static constexpr std::size_t kOutputPadding = 384;
    /// What must stay in front of output, as far as there was so much.
    static constexpr std::size_t kHistory = 32768;

    const std::uint8_t* input = nullptr; ///< the next byte
    const std::uint8_t* inputEnd = nullptr;
    bool inputIsAll = false;                   ///< nothing follows what is here
    const std::uint8_t* outputBegin = nullptr; ///< the first byte that may be referred to
    std::uint8_t* output = nullptr;            ///< where the next byte goes
    std::uint8_t* outputEnd = nullptr;
};

/// Decompresses a "zlib" stream piece by piece, as strictly as zlib does with the largest window: what this
/// takes zlib takes, and with the same result.
///
/// Threading: one thread at a time.
class Inflater {
public:
    enum class Status {
        kNeedsInput, ///< append some and come again; there was less than kInputReserve left
        kNeedsRoom,  ///< output reached outputEnd, or went a little beyond
        kDone,       ///< the whole stream; input is behind it. WantedAdler() is known
        kDamaged,
    };
    /// Goes on until something is missing or wrong.
    Status Run(InflateBuffers& ioBuffers);
    /// The sum over all output that the stream ends with. Comparing is left to the caller, who has looked at
    /// each byte anyway.
    std::uint32_t WantedAdler() const { return mWantedAdler; }

private:
    enum class Phase { kHeader, kBlock, kStored, kCodes, kTrailer, kDone };

    Status GoOn(InflateBuffers& ioBuffers);
    Status ReadHeader(InflateBuffers& ioBuffers);
    Status ReadBlockStart(InflateBuffers& ioBuffers);
    Status ReadStoredStart(InflateBuffers& ioBuffers);
    Status CopyStored(InflateBuffers& ioBuffers);
    bool UseFixedCodes();
    bool ReadCodes(InflateBuffers& ioBuffers);
    bool ReadCodeLengths(InflateBuffers& ioBuffers, int inCount, std::uint8_t* outLengths);
    Status ReadTrailer(InflateBuffers& ioBuffers);

    void Refill(InflateBuffers& ioBuffers);
    std::uint32_t Take(int inBits);
    bool IsBehind(const InflateBuffers& inBuffers) const;
    void GiveBack(InflateBuffers& ioBuffers);
    bool ToByteBoundary(InflateBuffers& ioBuffers);

    Phase mPhase = Phase::kHeader;
    bool mIsLastBlock = false;
    bool mTablesAreFixed = false;
    std::uint32_t mStoredLeft = 0;
    std::uint32_t mWantedAdler = 0;
    std::uint64_t mBits = 0; // the next bits, lowest first
    std::uint32_t mBitCount = 0;
    HuffmanTables mTables;
};

/// How InflateCodes() ended.
enum class CodesEnd { kBlockIsOver, kNeedsInput, kNeedsRoom, kDamaged };
struct BitReserve {
    std::uint64_t bits;
    std::uint32_t count;
};
/// The inner loop, in the best form for this processor.
CodesEnd InflateCodes(const HuffmanTables& inTables, InflateBuffers& ioBuffers, BitReserve& ioReserve);

} // namespace VF
