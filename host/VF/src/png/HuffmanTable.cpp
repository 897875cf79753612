#include "HuffmanTable.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace VF {
namespace {

constexpr int kMostBits = 15;

constexpr std::uint32_t Entry(std::uint32_t inBase, std::uint32_t inMoreBits)
{
    return inBase << 16 | inMoreBits;
}

constexpr auto kLiteralEntries = [] {
    std::array<std::uint32_t, kMostLiteralSymbols> entries{};
    for (std::uint32_t literal = 0; literal < 256; ++literal) {
        entries[literal] = literal << 16 | kHuffmanLiteral | 1 << 8;
    }
    entries[256] = kHuffmanSpecial | kHuffmanEnd;
    std::uint32_t base = 0;
    for (std::uint32_t code = 0; code < 28; ++code) {
        const std::uint32_t more = code < 8 ? 0 : code / 4 - 1;
        entries[257 + code] = Entry(base, more);
        base += 1 << more;
    }
    entries[285] = Entry(255, 0);
    entries[286] = entries[287] = kHuffmanSpecial; // have codes in the fixed set, but no meaning
    return entries;
}();

constexpr auto kDistanceEntries = [] {
    std::array<std::uint32_t, kMostDistanceSymbols> entries{};
    std::uint32_t base = 1;
    for (std::uint32_t code = 0; code < 30; ++code) {
        const std::uint32_t more = code < 4 ? 0 : code / 2 - 1;
        entries[code] = Entry(base, more);
        base += 1 << more;
    }
    entries[30] = entries[31] = kHuffmanSpecial;
    return entries;
}();

constexpr auto kLengthsEntries = [] {
    std::array<std::uint32_t, kLengthsSymbols> entries{};
    for (std::uint32_t symbol = 0; symbol < kLengthsSymbols; ++symbol) {
        entries[symbol] = Entry(symbol, 0);
    }
    return entries;
}();

/// Gives a symbol's entry the length of its code within the table where it stands.
std::uint32_t WithCode(std::uint32_t inEntry, std::uint32_t inBits)
{
    return inEntry & (kHuffmanLiteral | kHuffmanSpecial) ? inEntry + inBits
                                                         : inEntry + inBits + (inBits << 8);
}

/// Symbols that have a code, shortest first.
struct SortedSymbols {
    std::uint16_t count[kMostBits + 1] = {};
    std::uint16_t symbols[kMostLiteralSymbols];
    int most = 0; // bits of the longest code
    int used = 0;
    bool isComplete = false;

    /// @return false when there are more codes than bits can tell apart.
    bool Set(const std::uint8_t* inLengths, int inCount)
    {
        for (int symbol = 0; symbol < inCount; ++symbol) {
            ++count[inLengths[symbol]];
        }
        std::uint16_t offsets[kMostBits + 2] = {};
        int left = 1;
        for (int bits = 1; bits <= kMostBits; ++bits) {
            left = left * 2 - count[bits];
            if (left < 0) {
                return false;
            }
            offsets[bits + 1] = static_cast<std::uint16_t>(offsets[bits] + count[bits]);
            most = count[bits] ? bits : most;
        }
        isComplete = left == 0;
        used = offsets[kMostBits + 1];
        for (int symbol = 0; symbol < inCount; ++symbol) {
            if (const int bits = inLengths[symbol]) {
                symbols[offsets[bits]++] = static_cast<std::uint16_t>(symbol);
            }
        }
        return true;
    }
};

/// The code after inCode, both with their first bit lowest as they stand in the stream.
std::uint32_t NextCode(std::uint32_t inCode, int inBits)
{
    std::uint32_t bit = 1u << (inBits - 1);
    while (inCode & bit) {
        inCode ^= bit;
        bit >>= 1;
    }
    return inCode | bit;
}

/// All codes that are longer than the first table tells apart. They are the last of a complete set.
/// @param inCode  the first of them; inAt its place in the order.
/// @return false when there is no room, which does not happen.
bool FillSecondTables(const SortedSymbols& inSorted, const std::uint32_t* inEntries, int inTableBits,
                      std::uint32_t inCode, int inAt, std::uint32_t* outTable, std::uint32_t inRoom)
{
    const std::uint32_t mask = (1u << inTableBits) - 1;
    std::uint32_t end = 1u << inTableBits;
    std::uint32_t prefix = ~0u;
    std::uint32_t start = 0;
    std::uint32_t size = 0;
    for (int bits = inTableBits + 1; bits <= inSorted.most; ++bits) {
        for (int left = inSorted.count[bits]; left > 0; --left, ++inAt) {
            if ((inCode & mask) != prefix) {
                prefix = inCode & mask;
                int more = bits - inTableBits;
                int codes = left; // as long as they do not fill the table, it must tell longer ones apart
                while (codes < 1 << more) {
                    ++more;
                    codes = codes * 2 + inSorted.count[inTableBits + more];
                }
                start = end;
                size = 1u << more;
                end += size;
                if (end > inRoom) {
                    return false;
                }
                outTable[prefix] = kHuffmanSpecial | kHuffmanSecond | start << 16 |
                                   static_cast<std::uint32_t>(more) << 8 |
                                   static_cast<std::uint32_t>(inTableBits);
            }
            const auto rest = static_cast<std::uint32_t>(bits - inTableBits);
            const std::uint32_t entry = WithCode(inEntries[inSorted.symbols[inAt]], rest);
            for (std::uint32_t at = inCode >> inTableBits; at < size; at += 1u << rest) {
                outTable[start + at] = entry;
            }
            inCode = NextCode(inCode, bits);
        }
    }
    return true;
}

bool Fill(const SortedSymbols& inSorted, const std::uint32_t* inEntries, int inTableBits,
          std::uint32_t* outTable, std::uint32_t inRoom)
{
    std::uint32_t code = 0;
    int at = 0;
    std::uint32_t size = 2;
    outTable[0] = outTable[1] = kHuffmanSpecial;
    for (int bits = 1;; ++bits) {
        for (int left = inSorted.count[bits]; left > 0; --left) {
            outTable[code] = WithCode(inEntries[inSorted.symbols[at++]], static_cast<std::uint32_t>(bits));
            code = NextCode(code, bits);
        }
        if (bits == inTableBits) {
            break;
        }
        // What is told by so many bits does not depend on the next.
        std::memcpy(outTable + size, outTable, size * sizeof(*outTable));
        size *= 2;
    }
    return inSorted.most <= inTableBits ||
           FillSecondTables(inSorted, inEntries, inTableBits, code, at, outTable, inRoom);
}

/// Most literals have codes so short that the next symbol's is among the bits looked at, too. Fewer look-ups
/// are one gain; the other is that what follows a look-up is guessed wrong less often.
void JoinSymbols(std::uint32_t* ioTable)
{
    // From the last to the first: what is looked up has not been joined yet.
    for (std::uint32_t at = 1u << kLiteralTableBits; at-- > 0;) {
        const std::uint32_t first = ioTable[at];
        const std::uint32_t second = ioTable[at >> (first & 31)];
        if (!(first & kHuffmanLiteral)) {
            continue;
        }
        const std::uint32_t firstBits = first & 0xFF;
        const std::uint32_t literal = first & 0xFF0000;
        if (second & kHuffmanLiteral) {
            const std::uint32_t bits = firstBits + (second & 0xFF);
            if (bits <= kLiteralTableBits) {
                ioTable[at] = (second & 0xFF0000) << 8 | literal | kHuffmanLiteral | 2 << 8 | bits;
            }
        } else if (!(second & kHuffmanSpecial) && firstBits + (second >> 8 & 31) <= kLiteralTableBits) {
            ioTable[at] = second + (literal << 8 | kHuffmanJoined | firstBits << 8 | firstBits);
        }
    }
}

} // namespace

bool BuildLiteralTable(const std::uint8_t* inLengths, int inCount, HuffmanTables& outTables)
{
    SortedSymbols sorted;
    if (!sorted.Set(inLengths, inCount) || (!sorted.isComplete && sorted.most != 1) ||
        !Fill(sorted, kLiteralEntries.data(), kLiteralTableBits, outTables.literals,
              static_cast<std::uint32_t>(std::size(outTables.literals)))) {
        return false;
    }
    JoinSymbols(outTables.literals);
    return true;
}

bool BuildDistanceTable(const std::uint8_t* inLengths, int inCount, HuffmanTables& outTables)
{
    SortedSymbols sorted;
    return sorted.Set(inLengths, inCount) && (sorted.isComplete || sorted.most <= 1) &&
           Fill(sorted, kDistanceEntries.data(), kDistanceTableBits, outTables.distances,
                static_cast<std::uint32_t>(std::size(outTables.distances)));
}

bool BuildLengthsTable(const std::uint8_t* inLengths, std::uint32_t* outTable)
{
    SortedSymbols sorted;
    return sorted.Set(inLengths, kLengthsSymbols) && sorted.isComplete &&
           Fill(sorted, kLengthsEntries.data(), kLengthsTableBits, outTable, 1u << kLengthsTableBits);
}

} // namespace VF
