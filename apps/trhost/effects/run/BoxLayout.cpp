#include "BoxLayout.h"

#include <algorithm>
#include <cstring>

namespace trhost::effects {
namespace {

/// Notices accidents, not intent.
std::uint64_t CheckOf(const BoxHeader& inHeader)
{
    std::uint64_t check = 0xcbf29ce484222325;
    const auto mix = [&check](const auto& inValue) {
        unsigned char bytes[sizeof(inValue)];
        std::memcpy(bytes, &inValue, sizeof(inValue));
        for (const unsigned char byte : bytes) {
            check = (check ^ byte) * 0x100000001b3;
        }
    };
    mix(inHeader.magic);
    mix(inHeader.version);
    mix(inHeader.slotCount);
    mix(inHeader.slotSize);
    mix(inHeader.processNumber);
    mix(inHeader.startNanoseconds);
    mix(inHeader.bootID);
    return check;
}

} // namespace

void BeginBox(BoxLayout& outBox, std::int64_t inProcessNumber, std::int64_t inStartNanoseconds,
              std::string_view inBootID)
{
    BoxHeader& header = outBox.header;
    header.magic = BoxHeader::kMagic;
    header.version = BoxHeader::kVersion;
    header.slotCount = CallTable::kSlotCount;
    header.slotSize = sizeof(CallSlot);
    header.processNumber = inProcessNumber;
    header.startNanoseconds = inStartNanoseconds;
    inBootID.copy(header.bootID.data(), header.bootID.size());
    header.check = CheckOf(header);
}

std::unique_ptr<BoxLayout> BoxFromBytes(std::string_view inBytes)
{
    if (inBytes.size() != sizeof(BoxLayout)) {
        return nullptr;
    }
    auto box = std::make_unique<BoxLayout>();
    std::memcpy(static_cast<void*>(box.get()), inBytes.data(), sizeof(BoxLayout));
    const BoxHeader& header = box->header;
    const bool isOurs = header.magic == BoxHeader::kMagic && header.version == BoxHeader::kVersion &&
                        header.slotCount == CallTable::kSlotCount && header.slotSize == sizeof(CallSlot) &&
                        header.check == CheckOf(header);
    return isOurs ? std::move(box) : nullptr;
}

std::string_view BootIDOf(const BoxHeader& inHeader)
{
    const auto end = std::find(inHeader.bootID.begin(), inHeader.bootID.end(), '\0');
    return {inHeader.bootID.data(), static_cast<std::size_t>(end - inHeader.bootID.begin())};
}

} // namespace trhost::effects
