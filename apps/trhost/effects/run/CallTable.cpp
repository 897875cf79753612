#include "CallTable.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace trhost::effects {
namespace {

constexpr std::size_t kWordSize = sizeof(std::uint64_t);

// No cut through the middle of a character.
std::string_view CutToFit(std::string_view inName) noexcept
{
    if (inName.size() <= CallEntry::kLongestName) {
        return inName;
    }
    std::size_t size = CallEntry::kLongestName;
    while (size > 0 && (static_cast<unsigned char>(inName[size]) & 0xC0) == 0x80) {
        --size;
    }
    return inName.substr(0, size);
}

// Of a fixed size, so that copying is one instruction.
std::uint64_t WordAt(const char* inBytes) noexcept
{
    std::uint64_t word;
    std::memcpy(&word, inBytes, kWordSize);
    return word;
}

/// The last inCount bytes of the text, fewer than a word, as a word in memory begins with them.
std::uint64_t LastWord(std::string_view inText, std::size_t inCount) noexcept
{
    if constexpr (std::endian::native == std::endian::little) {
        if (inText.size() >= kWordSize) {
            return WordAt(inText.data() + inText.size() - kWordSize) >> 8 * (kWordSize - inCount);
        }
    }
    char bytes[kWordSize] = {};
    std::copy_n(inText.end() - inCount, inCount, bytes);
    return WordAt(bytes);
}

bool CanBeAName(std::string_view inName)
{
    return !inName.empty() && std::none_of(inName.begin(), inName.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
    });
}

} // namespace

// Releasing stores throughout: whoever sees one of them sees what was stored before it. That the number comes
// first lets a reader who met parts of two calls see that it did.
void CallSlot::Push(std::uint32_t inDepth, std::string_view inName, std::int64_t inStartTicks) noexcept
{
    if (inDepth < kMostNested) {
        const std::string_view text = CutToFit(inName);
        const std::uint32_t number = lastNumber.load(std::memory_order_relaxed) + 1;
        lastNumber.store(number, std::memory_order_relaxed);
        CallEntry& call = calls[inDepth];
        call.number.store(number, std::memory_order_release);
        call.nameSize.store(static_cast<std::uint32_t>(text.size()), std::memory_order_release);
        call.startTicks.store(inStartTicks, std::memory_order_release);
        std::size_t word = 0;
        for (; (word + 1) * kWordSize <= text.size(); ++word) {
            call.name[word].store(WordAt(text.data() + word * kWordSize), std::memory_order_release);
        }
        if (word * kWordSize < text.size()) {
            call.name[word].store(LastWord(text, text.size() - word * kWordSize), std::memory_order_release);
        }
    }
    depth.store(inDepth + 1, std::memory_order_release);
}

SlotState ReadInnermostCall(const CallSlot& inSlot, CallSeen& outCall)
{
    const std::uint32_t depth = inSlot.depth.load(std::memory_order_acquire);
    if (depth == 0) {
        return SlotState::kIdle;
    }
    const CallEntry& call = inSlot.calls[std::min(depth, CallSlot::kMostNested) - 1];
    CallSeen seen;
    seen.number = call.number.load(std::memory_order_acquire);
    // Asked again: the call that has this number may be one that is still being written.
    const bool isWhole = inSlot.depth.load(std::memory_order_acquire) == depth;
    const std::uint32_t size = call.nameSize.load(std::memory_order_acquire);
    seen.startTicks = call.startTicks.load(std::memory_order_acquire);
    char bytes[CallEntry::kLongestName];
    for (std::size_t word = 0; word < call.name.size(); ++word) {
        const std::uint64_t value = call.name[word].load(std::memory_order_acquire);
        std::memcpy(bytes + word * kWordSize, &value, kWordSize);
    }
    if (!isWhole || call.number.load(std::memory_order_acquire) != seen.number ||
        inSlot.depth.load(std::memory_order_acquire) != depth) {
        return SlotState::kChanging;
    }
    if (size > sizeof(bytes) || !CanBeAName({bytes, size})) {
        return SlotState::kDamaged;
    }
    seen.name.assign(bytes, size);
    outCall = std::move(seen);
    return SlotState::kInCall;
}

} // namespace trhost::effects
