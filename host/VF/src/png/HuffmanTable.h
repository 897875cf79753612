#pragma once

#include <cstddef>
#include <cstdint>

namespace VF {

/// Tables that tell the next symbol of a "deflate" stream from its next bits. An entry of 32 bits says
///   bits 0 to 7    how many bits the symbol takes, those behind its code included
///   bits 8 to 12   how many of them are its code (lengths and distances)
///   bits 16 to 31  what it stands for: a distance without what the bits behind add; such a length less 3,
///                  and in the upper half perhaps a literal that precedes it; up to two literals, the first
///                  in the lower half; where a second table begins
/// and by its flags what it is. Literals have their number in bits 8 and 9.
inline constexpr std::uint32_t kHuffmanLiteral = 1u << 15;
inline constexpr std::uint32_t kHuffmanSpecial = 1u << 13; ///< neither literal, length nor distance
inline constexpr std::uint32_t kHuffmanSecond = 1u << 14;  ///< with kHuffmanSpecial: look in a second table
inline constexpr std::uint32_t kHuffmanJoined = 1u << 14;  ///< of a length: a literal precedes it
inline constexpr int kHuffmanJoinedBit = 14;
inline constexpr std::uint32_t kHuffmanEnd = 1u << 16; ///< with kHuffmanSpecial alone: the block ends
// kHuffmanSpecial with nothing else: there is no such code.

inline constexpr int kLiteralTableBits = 11;
inline constexpr int kDistanceTableBits = 8;
inline constexpr int kMostLiteralSymbols = 288;
inline constexpr int kMostDistanceSymbols = 32;

struct HuffmanTables {
    // The first 2^bits entries are found by the next bits; second tables follow. That no set of codes takes
    // more is known from trying them all.
    std::uint32_t literals[2400];
    std::uint32_t distances[448];
};

/// @param inLengths  of the code of each symbol; 0: has none.
/// @return false for what is no set of codes that a stream may have: too many codes, or too few; one of a
/// single bit, or for distances none at all, is allowed.
bool BuildLiteralTable(const std::uint8_t* inLengths, int inCount, HuffmanTables& outTables);
bool BuildDistanceTable(const std::uint8_t* inLengths, int inCount, HuffmanTables& outTables);
/// The 19 codes that the lengths of the other codes are written with; 128 entries, with the symbol as what it
/// stands for. Here too few codes are never allowed.
bool BuildLengthsTable(const std::uint8_t* inLengths, std::uint32_t* outTable);
inline constexpr int kLengthsTableBits = 7;
inline constexpr int kLengthsSymbols = 19;

} // namespace VF
