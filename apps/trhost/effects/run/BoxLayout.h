#pragma once

#include "CallTable.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

namespace trhost::effects {

/// The bytes of a black box. Read by the same build of the same machine mostly; anything else is told from
/// the header and names nobody.
struct BoxHeader {
    static constexpr std::array<char, 8> kMagic{'T', 'R', 'H', 'B', 'L', 'K', 'B', 'X'};
    static constexpr std::uint32_t kVersion = 1;

    std::array<char, 8> magic;
    std::uint32_t version;
    std::uint32_t slotCount;
    std::uint32_t slotSize;
    std::atomic<std::uint32_t> isCrashReported;
    std::int64_t processNumber;
    std::int64_t startNanoseconds; // since 1970
    std::array<char, 64> bootID;   // filled with zero bytes
    std::uint64_t check;           // of all the above but isCrashReported
    // Slots begin at a disk's sector, so that none is ever written by half.
    std::array<char, 512 - 112> unused;
};
static_assert(sizeof(BoxHeader) == 512);

struct BoxLayout {
    BoxHeader header;
    CallTable table;
};

/// Fills the header of a box of zero bytes.
void BeginBox(BoxLayout& outBox, std::int64_t inProcessNumber, std::int64_t inStartNanoseconds,
              std::string_view inBootID);
/// A copy of the box in these bytes; empty when they are none, or damaged.
std::unique_ptr<BoxLayout> BoxFromBytes(std::string_view inBytes);
std::string_view BootIDOf(const BoxHeader& inHeader);

} // namespace trhost::effects
