#include "Inflater.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace VF {
namespace {

std::uint64_t LoadLittleEndian(const std::uint8_t* inBytes)
{
    std::uint64_t value;
    std::memcpy(&value, inBytes, sizeof(value));
    if constexpr (std::endian::native == std::endian::big) {
        value = __builtin_bswap64(value);
    }
    return value;
}

bool HasInput(const InflateBuffers& inBuffers)
{
    return inBuffers.inputIsAll ||
           inBuffers.inputEnd - inBuffers.input >= static_cast<std::ptrdiff_t>(InflateBuffers::kInputReserve);
}

} // namespace

/// Afterwards there are 56 bits or more; past the end of all input they mean nothing, see IsBehind.
void Inflater::Refill(InflateBuffers& ioBuffers)
{
    if (ioBuffers.input < ioBuffers.inputEnd + 8) {
        mBits |= LoadLittleEndian(ioBuffers.input) << mBitCount;
        ioBuffers.input += (63 - mBitCount) >> 3;
    }
    mBitCount |= 56;
}

std::uint32_t Inflater::Take(int inBits)
{
    const auto value = static_cast<std::uint32_t>(mBits & ((std::uint64_t{1} << inBits) - 1));
    mBits >>= inBits;
    mBitCount -= static_cast<std::uint32_t>(inBits);
    return value;
}

/// Whether bits were taken that are not there.
bool Inflater::IsBehind(const InflateBuffers& inBuffers) const
{
    return inBuffers.input - mBitCount / 8 > inBuffers.inputEnd;
}

/// Whole bytes go back to the input, so that what is left of it may be moved.
void Inflater::GiveBack(InflateBuffers& ioBuffers)
{
    ioBuffers.input -= mBitCount / 8;
    mBitCount %= 8;
    mBits &= (std::uint64_t{1} << mBitCount) - 1;
}

/// Leaves the bits that fill up a byte.
bool Inflater::ToByteBoundary(InflateBuffers& ioBuffers)
{
    GiveBack(ioBuffers);
    mBits = 0;
    mBitCount = 0;
    return ioBuffers.input <= ioBuffers.inputEnd;
}

Inflater::Status Inflater::Run(InflateBuffers& ioBuffers)
{
    const Status status = GoOn(ioBuffers);
    GiveBack(ioBuffers);
    return status;
}

Inflater::Status Inflater::GoOn(InflateBuffers& ioBuffers)
{
    for (;;) {
        Status status = Status::kDone;
        const Phase phase = mPhase;
        switch (phase) {
        case Phase::kHeader:
            status = ReadHeader(ioBuffers);
            break;
        case Phase::kBlock:
            status = ReadBlockStart(ioBuffers);
            break;
        case Phase::kStored:
            status = CopyStored(ioBuffers);
            break;
        case Phase::kCodes: {
            BitReserve reserve{mBits, mBitCount};
            const CodesEnd end = InflateCodes(mTables, ioBuffers, reserve);
            mBits = reserve.bits;
            mBitCount = reserve.count;
            switch (end) {
            case CodesEnd::kBlockIsOver:
                mPhase = mIsLastBlock ? Phase::kTrailer : Phase::kBlock;
                break;
            case CodesEnd::kNeedsInput:
                return Status::kNeedsInput;
            case CodesEnd::kNeedsRoom:
                return Status::kNeedsRoom;
            case CodesEnd::kDamaged:
                return Status::kDamaged;
            }
            break;
        }
        case Phase::kTrailer:
            status = ReadTrailer(ioBuffers);
            break;
        case Phase::kDone:
            return Status::kDone;
        }
        if (status != Status::kDone) {
            return status;
        }
    }
}

Inflater::Status Inflater::ReadHeader(InflateBuffers& ioBuffers)
{
    if (!HasInput(ioBuffers)) {
        return Status::kNeedsInput;
    }
    Refill(ioBuffers);
    const std::uint32_t method = Take(8);
    const std::uint32_t flags = Take(8);
    // "deflate", a window of 32 KB or less, a multiple of 31, no dictionary.
    if ((method & 15) != 8 || method >> 4 > 7 || (method << 8 | flags) % 31 != 0 || (flags & 0x20) ||
        IsBehind(ioBuffers)) {
        return Status::kDamaged;
    }
    mPhase = Phase::kBlock;
    return Status::kDone;
}

Inflater::Status Inflater::ReadBlockStart(InflateBuffers& ioBuffers)
{
    if (!HasInput(ioBuffers)) {
        return Status::kNeedsInput;
    }
    Refill(ioBuffers);
    mIsLastBlock = Take(1);
    switch (Take(2)) {
    case 0:
        return ReadStoredStart(ioBuffers);
    case 1:
        if (!UseFixedCodes()) {
            return Status::kDamaged;
        }
        break;
    case 2:
        if (!ReadCodes(ioBuffers)) {
            return Status::kDamaged;
        }
        break;
    default:
        return Status::kDamaged;
    }
    mPhase = Phase::kCodes;
    return IsBehind(ioBuffers) ? Status::kDamaged : Status::kDone;
}

Inflater::Status Inflater::ReadStoredStart(InflateBuffers& ioBuffers)
{
    if (!ToByteBoundary(ioBuffers) || ioBuffers.inputEnd - ioBuffers.input < 4) {
        return Status::kDamaged; // the reserve is larger, so that this is the end
    }
    const std::uint8_t* const at = ioBuffers.input;
    const auto length = static_cast<std::uint32_t>(at[0] | at[1] << 8);
    const auto inverted = static_cast<std::uint32_t>(at[2] | at[3] << 8);
    if (length != (inverted ^ 0xFFFF)) {
        return Status::kDamaged;
    }
    ioBuffers.input += 4;
    mStoredLeft = length;
    mPhase = Phase::kStored;
    return Status::kDone;
}

Inflater::Status Inflater::CopyStored(InflateBuffers& ioBuffers)
{
    while (mStoredLeft > 0) {
        if (ioBuffers.input == ioBuffers.inputEnd) {
            return ioBuffers.inputIsAll ? Status::kDamaged : Status::kNeedsInput;
        }
        if (ioBuffers.output >= ioBuffers.outputEnd) {
            return Status::kNeedsRoom;
        }
        const auto count = std::min({std::size_t{mStoredLeft},
                                     static_cast<std::size_t>(ioBuffers.inputEnd - ioBuffers.input),
                                     static_cast<std::size_t>(ioBuffers.outputEnd - ioBuffers.output)});
        std::memcpy(ioBuffers.output, ioBuffers.input, count);
        ioBuffers.input += count;
        ioBuffers.output += count;
        mStoredLeft -= static_cast<std::uint32_t>(count);
    }
    mPhase = mIsLastBlock ? Phase::kTrailer : Phase::kBlock;
    return Status::kDone;
}

bool Inflater::UseFixedCodes()
{
    if (mTablesAreFixed) {
        return true;
    }
    std::uint8_t lengths[kMostLiteralSymbols];
    std::fill(lengths, lengths + 144, std::uint8_t{8});
    std::fill(lengths + 144, lengths + 256, std::uint8_t{9});
    std::fill(lengths + 256, lengths + 280, std::uint8_t{7});
    std::fill(lengths + 280, lengths + 288, std::uint8_t{8});
    mTablesAreFixed = BuildLiteralTable(lengths, 288, mTables);
    std::fill(lengths, lengths + 32, std::uint8_t{5});
    mTablesAreFixed = mTablesAreFixed && BuildDistanceTable(lengths, 32, mTables);
    return mTablesAreFixed;
}

bool Inflater::ReadCodes(InflateBuffers& ioBuffers)
{
    static constexpr std::uint8_t kOrder[kLengthsSymbols] = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                             11, 4,  12, 3, 13, 2, 14, 1, 15};
    mTablesAreFixed = false;
    const int literals = static_cast<int>(Take(5)) + 257;
    const int distances = static_cast<int>(Take(5)) + 1;
    const int lengthsCodes = static_cast<int>(Take(4)) + 4;
    if (literals > 286 || distances > 30) {
        return false;
    }
    std::uint8_t codes[kLengthsSymbols] = {};
    for (int code = 0; code < lengthsCodes; ++code) {
        if (mBitCount < 3) {
            Refill(ioBuffers);
        }
        codes[kOrder[code]] = static_cast<std::uint8_t>(Take(3));
    }
    // The literals' table is built last; until then the lengths' may lie in it.
    std::uint8_t lengths[286 + 30];
    return BuildLengthsTable(codes, mTables.literals) &&
           ReadCodeLengths(ioBuffers, literals + distances, lengths) && lengths[256] != 0 &&
           BuildLiteralTable(lengths, literals, mTables) &&
           BuildDistanceTable(lengths + literals, distances, mTables);
}

bool Inflater::ReadCodeLengths(InflateBuffers& ioBuffers, int inCount, std::uint8_t* outLengths)
{
    for (int done = 0; done < inCount;) {
        if (mBitCount < 14) {
            Refill(ioBuffers);
        }
        const std::uint32_t entry = mTables.literals[mBits & ((1u << kLengthsTableBits) - 1)];
        Take(static_cast<int>(entry & 0xFF));
        const std::uint32_t symbol = entry >> 16;
        if (symbol < 16) {
            outLengths[done++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        if (symbol == 16 && done == 0) {
            return false;
        }
        const std::uint8_t length = symbol == 16 ? outLengths[done - 1] : std::uint8_t{0};
        const std::uint32_t repeats = symbol == 16 ? 3 + Take(2) : symbol == 17 ? 3 + Take(3) : 11 + Take(7);
        if (repeats > static_cast<std::uint32_t>(inCount - done)) {
            return false;
        }
        std::memset(outLengths + done, length, repeats);
        done += static_cast<int>(repeats);
    }
    return true;
}

Inflater::Status Inflater::ReadTrailer(InflateBuffers& ioBuffers)
{
    if (!HasInput(ioBuffers)) {
        return Status::kNeedsInput;
    }
    if (!ToByteBoundary(ioBuffers) || ioBuffers.inputEnd - ioBuffers.input < 4) {
        return Status::kDamaged;
    }
    const std::uint8_t* const at = ioBuffers.input;
    mWantedAdler =
        std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
    ioBuffers.input += 4;
    mPhase = Phase::kDone;
    return Status::kDone;
}

} // namespace VF
