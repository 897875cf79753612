#include "GuardedMemory.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace trhost::effects {
namespace {

TEST(GuardedMemory, WritesBesideABlockAreFoundWhereNoGuardStandsInTheWay)
{
    const struct {
        const char* name;
        GuardedMemory::Touches touches;
        std::size_t bytes;
        std::size_t alignment;
        std::ptrdiff_t offset;  ///< of the write, from the start
        std::uint64_t distance; ///< 0: nothing is found
        bool isBehind;
    } kCases[] = {
        {"within", GuardedMemory::Touches::kUpperPage, 100, 4, 99, 0, false},
        {"just before", GuardedMemory::Touches::kUpperPage, 100, 4, -1, 1, false},
        {"further before", GuardedMemory::Touches::kUpperPage, 100, 4, -60, 60, false},
        {"into the gap that alignment asks for", GuardedMemory::Touches::kUpperPage, 100, 64, 100, 1, true},
        {"just behind", GuardedMemory::Touches::kLowerPage, 100, 4, 100, 1, true},
        {"further behind", GuardedMemory::Touches::kLowerPage, 4096, 64, 4100, 5, true},
        {"nothing at all", GuardedMemory::Touches::kLowerPage, 0, 16, 0, 1, true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        for (const bool isFreed : {false, true}) {
            GuardedMemory memory;
            memory.SetTouches(test.touches);
            auto* const block =
                static_cast<std::uint8_t*>(memory.Allocate(test.bytes, test.alignment, MemoryUse::kOutput));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % test.alignment, 0u);
            block[test.offset] = 1;
            if (isFreed) {
                memory.Free(block);
            }
            const std::vector<TrialFinding> findings = memory.TakeFindings();
            ASSERT_EQ(findings.size(), test.distance > 0 ? 1u : 0u);
            if (test.distance > 0) {
                EXPECT_EQ(findings[0].distanceBytes, test.distance);
                EXPECT_EQ(findings[0].isBehind, test.isBehind);
            }
            EXPECT_TRUE(memory.TakeFindings().empty()) << "told twice";
            if (!isFreed) {
                memory.Free(block);
            }
        }
    }
}

TEST(GuardedMemory, OnlyInputsCountForTheirHash)
{
    GuardedMemory memory;
    auto* const input = static_cast<std::uint8_t*>(memory.Allocate(8, 1, MemoryUse::kInput));
    auto* const given = static_cast<std::uint8_t*>(memory.Allocate(8, 1, MemoryUse::kGiven));
    const std::size_t before = memory.HashOfInputs();
    given[3] = 1;
    EXPECT_EQ(memory.HashOfInputs(), before);
    input[3] = 1;
    EXPECT_NE(memory.HashOfInputs(), before);
    memory.Free(input);
    memory.Free(given);
}

TEST(GuardedMemoryDeathTest, AByteTooFarOnTheGuardedSideIsAFault)
{
    GuardedMemory memory;
    auto* const ends = static_cast<volatile std::uint8_t*>(memory.Allocate(12, 4, MemoryUse::kOutput));
    ends[11] = 1;
    EXPECT_DEATH(ends[12] = 1, "");
    memory.SetTouches(GuardedMemory::Touches::kLowerPage);
    auto* const begins = static_cast<volatile std::uint8_t*>(memory.Allocate(12, 4, MemoryUse::kOutput));
    begins[0] = 1;
    EXPECT_DEATH(begins[std::ptrdiff_t(-1)] = 1, "");
    memory.Free(const_cast<std::uint8_t*>(ends));
    memory.Free(const_cast<std::uint8_t*>(begins));
}

} // namespace
} // namespace trhost::effects
