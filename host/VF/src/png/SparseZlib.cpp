#include "SparseZlib.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace VF {
namespace {

constexpr unsigned kEndOfBlock = 256;
constexpr unsigned kLongestRun = 258;
constexpr unsigned kSymbols = 286;
constexpr std::uint64_t kAdler = 65521;

/// A code as it is written, from the lowest bit.
struct Code {
    std::uint32_t bits = 0;
    unsigned count = 0;
};

std::uint32_t Reversed(std::uint32_t inBits, unsigned inCount)
{
    std::uint32_t reversed = 0;
    for (unsigned bit = 0; bit < inCount; ++bit) {
        reversed = reversed << 1 | (inBits >> bit & 1);
    }
    return reversed;
}

/// Codes of the given lengths, as RFC 1951 numbers them.
template <std::size_t kCount>
std::array<Code, kCount> CodesOf(const std::array<std::uint8_t, kCount>& inLengths)
{
    std::array<Code, kCount> codes;
    std::uint32_t next = 0;
    for (unsigned length = 1; length <= 15; ++length) {
        for (std::size_t symbol = 0; symbol < kCount; ++symbol) {
            if (inLengths[symbol] == length) {
                codes[symbol] = {Reversed(next++, length), length};
            }
        }
        next <<= 1;
    }
    return codes;
}

/// They use up all codes there are: 1/8 + 64/2048 + 192/512 + 28/128 + 1/4 = 1.
std::array<std::uint8_t, kSymbols> SymbolLengths()
{
    std::array<std::uint8_t, kSymbols> lengths;
    for (unsigned symbol = 0; symbol < kSymbols; ++symbol) {
        lengths[symbol] = symbol == 0                            ? 3
                          : symbol < 64 || symbol == kEndOfBlock ? 11
                          : symbol < kEndOfBlock                 ? 9
                          : symbol < kSymbols - 1                ? 7
                                                                 : 2;
    }
    return lengths;
}

struct Codes {
    std::array<Code, kSymbols> symbols = CodesOf(SymbolLengths());
    std::array<Code, kLongestRun + 1> runs; // of 3 or more, distance included

    Codes()
    {
        unsigned length = 3;
        for (unsigned symbol = kEndOfBlock + 1; symbol < kSymbols - 1; ++symbol) {
            const unsigned index = symbol - kEndOfBlock - 1;
            const unsigned extra = index < 8 ? 0 : index / 4 - 1;
            for (std::uint32_t rest = 0; rest < 1u << extra; ++rest, ++length) {
                // The distance of 1 is the lower of two codes of one bit: 0.
                runs[length] = {symbols[symbol].bits | rest << symbols[symbol].count,
                                symbols[symbol].count + extra + 1};
            }
        }
        runs[kLongestRun] = {symbols[kSymbols - 1].bits, symbols[kSymbols - 1].count + 1};
    }
};
const Codes& GetCodes()
{
    static const Codes codes;
    return codes;
}

} // namespace

SparseZlib::SparseZlib(GrowingBytes& ioBytes) : mBytes(ioBytes)
{
    mBytes.Append("\x78\x01", 2); // deflate, window of 32 KB, fast
    WriteHeader();
}

/// One block for everything, with its code lengths.
void SparseZlib::WriteHeader()
{
    constexpr unsigned kDistances = 2;
    Put(1, 1); // the last block
    Put(2, 2); // with codes of its own
    Put(kSymbols - 257, 5);
    Put(kDistances - 1, 5);
    // The lengths are coded themselves: 16 repeats the one before 3 to 6 times.
    constexpr unsigned kRepeat = 16;
    std::array<std::uint8_t, 19> lengths{};
    lengths[kRepeat] = 1;
    lengths[9] = lengths[11] = 3;
    lengths[1] = lengths[2] = lengths[3] = lengths[7] = 4;
    const auto codes = CodesOf(lengths);
    constexpr unsigned kOrder[] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1};
    Put(std::size(kOrder) - 4, 4);
    for (const unsigned symbol : kOrder) {
        Put(lengths[symbol], 3);
    }
    const auto symbols = SymbolLengths();
    std::array<std::uint8_t, kSymbols + kDistances> all{};
    std::copy(symbols.begin(), symbols.end(), all.begin());
    all[kSymbols] = all[kSymbols + 1] = 1;
    for (std::size_t at = 0; at < all.size();) {
        std::size_t same = 1;
        while (same < 6 && at > 0 && at + same < all.size() && all[at + same] == all[at]) {
            ++same;
        }
        if (same >= 3 && all[at] == all[at - (at > 0)] && at > 0) {
            Put(codes[kRepeat].bits, codes[kRepeat].count);
            Put(same - 3, 2);
            at += same;
        } else {
            Put(codes[all[at]].bits, codes[all[at]].count);
            ++at;
        }
    }
}

inline void SparseZlib::Put(std::uint64_t inBits, unsigned inCount)
{
    mBits |= inBits << mBitCount;
    mBitCount += inCount;
    if (mBitCount >= 32) {
        Spill();
    }
}

void SparseZlib::Spill()
{
    // Whole bytes only, lowest first.
    mBytes.Reserve(8);
    std::byte bytes[8];
    for (unsigned at = 0; at < 8; ++at) {
        bytes[at] = static_cast<std::byte>(mBits >> at * 8);
    }
    std::memcpy(mBytes.At(mBytes.Size()), bytes, sizeof(bytes));
    const unsigned count = mBitCount / 8;
    mBytes.Advance(count);
    mBits = count == 8 ? 0 : mBits >> count * 8;
    mBitCount %= 8;
}

void SparseZlib::Literal(std::uint8_t inByte)
{
    if (mZeros != 0) {
        WriteZeros();
    }
    const Code& code = GetCodes().symbols[inByte];
    Put(code.bits, code.count);
    mSum += inByte;
    mSumOfSums += mSum;
}

void SparseZlib::WriteZeros()
{
    const Codes& codes = GetCodes();
    // The first is what the others repeat.
    Put(codes.symbols[0].bits, codes.symbols[0].count);
    std::uint64_t left = mZeros - 1;
    const Code& longest = codes.runs[kLongestRun];
    std::uint64_t many = 0; // as many as one Put takes
    const unsigned most = 32 / longest.count;
    for (unsigned run = 0; run < most; ++run) {
        many |= std::uint64_t{longest.bits} << run * longest.count;
    }
    for (; left >= std::uint64_t{kLongestRun} * most; left -= std::uint64_t{kLongestRun} * most) {
        Put(many, longest.count * most);
    }
    for (; left >= kLongestRun; left -= kLongestRun) {
        Put(longest.bits, longest.count);
    }
    if (left >= 3) {
        Put(codes.runs[left].bits, codes.runs[left].count);
    } else {
        for (; left != 0; --left) {
            Put(codes.symbols[0].bits, codes.symbols[0].count);
        }
    }
    mSum %= kAdler;
    mSumOfSums = (mSumOfSums + mZeros * mSum) % kAdler; // below 2^34 zeros, as a picture has no more
    mZeros = 0;
}

void SparseZlib::Finish()
{
    if (mZeros != 0) {
        WriteZeros();
    }
    const Code& end = GetCodes().symbols[kEndOfBlock];
    Put(end.bits, end.count);
    mBitCount = (mBitCount + 7) / 8 * 8;
    Spill();
    const std::uint64_t sum = mSumOfSums % kAdler << 16 | mSum % kAdler;
    const unsigned char bytes[] = {static_cast<unsigned char>(sum >> 24),
                                   static_cast<unsigned char>(sum >> 16),
                                   static_cast<unsigned char>(sum >> 8), static_cast<unsigned char>(sum)};
    mBytes.Append(bytes, sizeof(bytes));
}

} // namespace VF
