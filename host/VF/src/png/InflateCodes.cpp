#include "Inflater.h"

#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "png/InflateCodes.cpp"
#include <hwy/foreach_target.h>
// Has to follow.
#include <hwy/highway.h>

// Nothing here works with vectors; but processors that have them also have shifts that do not wait for flags.

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

HWY_INLINE std::uint64_t Load8(const std::uint8_t* inBytes)
{
    std::uint64_t value;
    std::memcpy(&value, inBytes, sizeof(value));
    if constexpr (std::endian::native == std::endian::big) {
        value = __builtin_bswap64(value);
    }
    return value;
}

HWY_INLINE void StoreLiterals(std::uint8_t* outBytes, std::uint32_t inEntry)
{
    outBytes[0] = static_cast<std::uint8_t>(inEntry >> 16);
    outBytes[1] = static_cast<std::uint8_t>(inEntry >> 24);
}

/// May write up to 15 bytes more.
HWY_INLINE void Repeat(std::uint8_t* outBytes, std::size_t inDistance, std::size_t inLength)
{
    const std::uint8_t* from = outBytes - inDistance;
    std::uint8_t* const end = outBytes + inLength;
    if (inDistance >= 16) {
        do {
            std::memcpy(outBytes, from, 16);
            outBytes += 16;
            from += 16;
        } while (outBytes < end);
        return;
    }
    if (inDistance == 1) {
        std::memset(outBytes, *from, inLength);
        return;
    }
    if (inDistance < 8) {
        // From a multiple of the distance the same bytes come, eight at once.
        for (int byte = 0; byte < 8; ++byte) {
            outBytes[byte] = from[byte];
        }
        outBytes += 8;
        from = outBytes - inDistance * ((7 + inDistance) / inDistance);
    }
    while (outBytes < end) {
        std::memcpy(outBytes, from, 8);
        outBytes += 8;
        from += 8;
    }
}

CodesEnd Inflate(const HuffmanTables& inTables, InflateBuffers& ioBuffers, BitReserve& ioReserve)
{
    constexpr std::uint64_t kLiteralMask = (1u << kLiteralTableBits) - 1;
    constexpr std::uint64_t kDistanceMask = (1u << kDistanceTableBits) - 1;
    const std::uint32_t* const literals = inTables.literals;
    const std::uint32_t* const distances = inTables.distances;
    const std::uint8_t* in = ioBuffers.input;
    // Past the end of all input bits are taken from the padding until IsBehind can tell.
    const std::ptrdiff_t left = ioBuffers.inputEnd - in;
    constexpr std::ptrdiff_t kReserve = InflateBuffers::kInputReserve;
    const std::uint8_t* const inLimit = ioBuffers.inputIsAll ? ioBuffers.inputEnd + 8
                                        : left < kReserve    ? in
                                                             : in + (left - kReserve + 1);
    std::uint8_t* out = ioBuffers.output;
    std::uint8_t* const outLimit = ioBuffers.outputEnd;
    std::uint64_t bits = ioReserve.bits;
    std::uint32_t count = ioReserve.count;
    CodesEnd result = CodesEnd::kDamaged;

    const auto refill = [&]() HWY_ATTR {
        bits |= Load8(in) << count;
        in += (63 - count) >> 3;
        count |= 56;
    };
    const auto take = [&](std::uint32_t inEntry) HWY_ATTR {
        bits >>= inEntry & 63;
        count -= inEntry & 0xFF;
    };
    for (;;) {
        if (in >= inLimit) {
            result = ioBuffers.inputIsAll ? CodesEnd::kDamaged : CodesEnd::kNeedsInput;
            break;
        }
        if (out >= outLimit) {
            result = CodesEnd::kNeedsRoom;
            break;
        }
        refill();
        std::uint32_t entry = literals[bits & kLiteralMask];
        if (entry & kHuffmanLiteral) {
            // Five look-ups of 11 bits leave 1 of 56; what the last of them says is taken only when it is
            // a literal as well.
            take(entry);
            StoreLiterals(out, entry);
            out += entry >> 8 & 3;
            entry = literals[bits & kLiteralMask];
            if (entry & kHuffmanLiteral) {
                take(entry);
                StoreLiterals(out, entry);
                out += entry >> 8 & 3;
                entry = literals[bits & kLiteralMask];
                if (entry & kHuffmanLiteral) {
                    take(entry);
                    StoreLiterals(out, entry);
                    out += entry >> 8 & 3;
                    entry = literals[bits & kLiteralMask];
                    if (entry & kHuffmanLiteral) {
                        take(entry);
                        StoreLiterals(out, entry);
                        out += entry >> 8 & 3;
                        continue;
                    }
                }
            }
            refill(); // a length and a distance take 48 bits
        }
        if (HWY_UNLIKELY(entry & kHuffmanSpecial)) {
            if (entry & kHuffmanSecond) {
                take(entry);
                entry = literals[(entry >> 16) + (bits & ((1u << (entry >> 8 & 31)) - 1))];
                if (entry & kHuffmanLiteral) {
                    take(entry);
                    *out++ = static_cast<std::uint8_t>(entry >> 16);
                    continue;
                }
            }
            if (entry & kHuffmanSpecial) {
                if (entry & kHuffmanEnd) {
                    take(entry);
                    result = CodesEnd::kBlockIsOver;
                }
                break;
            }
        }
        *out = static_cast<std::uint8_t>(entry >> 24); // counts only when it precedes the length
        out += entry >> kHuffmanJoinedBit & 1;
        std::uint64_t saved = bits;
        take(entry);
        const std::size_t length = 3 + (entry >> 16 & 0xFF) +
                                   ((saved & ((std::uint64_t{1} << (entry & 63)) - 1)) >> (entry >> 8 & 31));
        entry = distances[bits & kDistanceMask];
        if (HWY_UNLIKELY(entry & kHuffmanSpecial)) {
            if (entry & kHuffmanSecond) {
                take(entry);
                entry = distances[(entry >> 16) + (bits & ((1u << (entry >> 8 & 31)) - 1))];
            }
            if (entry & kHuffmanSpecial) {
                break;
            }
        }
        saved = bits;
        take(entry);
        const std::size_t distance =
            (entry >> 16) + ((saved & ((std::uint64_t{1} << (entry & 63)) - 1)) >> (entry >> 8 & 31));
        if (distance > static_cast<std::size_t>(out - ioBuffers.outputBegin)) {
            break;
        }
        Repeat(out, distance, length);
        out += length;
    }
    ioBuffers.input = in;
    ioBuffers.output = out;
    ioReserve.bits = bits;
    ioReserve.count = count;
    return result;
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {

HWY_EXPORT(Inflate);

CodesEnd InflateCodes(const HuffmanTables& inTables, InflateBuffers& ioBuffers, BitReserve& ioReserve)
{
    return HWY_DYNAMIC_DISPATCH(Inflate)(inTables, ioBuffers, ioReserve);
}

} // namespace VF
#endif
