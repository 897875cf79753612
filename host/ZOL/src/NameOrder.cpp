#include "NameOrder.h"

#include <kiocore/filesupport/NativePath.h>

#include <cstddef>
#include <cstring>

namespace ZOL {
namespace {

constexpr std::size_t kLongestSequence = 4;

bool IsContinuation(unsigned char inByte)
{
    return (inByte & 0xC0) == 0x80;
}

/// Where reading may start so that it meets the same characters as reading from the beginning: at an ASCII
/// or a leading byte, which always starts anew.
std::size_t StartOfCharacter(const unsigned char* inText, std::size_t inAt)
{
    while (inAt > 0 && IsContinuation(inText[inAt])) {
        --inAt;
    }
    return inAt;
}

} // namespace

int CompareNames(const char* inA, const char* inB)
{
    const auto* a = reinterpret_cast<const unsigned char*>(inA);
    const auto* b = reinterpret_cast<const unsigned char*>(inB);
    std::size_t at = 0;
    while (a[at] == b[at]) {
        if (a[at] == 0) {
            return 0;
        }
        ++at;
    }
    const bool plain = a[at] < 0x80 && b[at] < 0x80 && (at == 0 || a[at - 1] < 0x80);
    if (plain) {
        return a[at] < b[at] ? -1 : 1;
    }
    // The difference may lie inside a character of one or both.
    const std::size_t start = at == 0 || a[at - 1] < 0x80 ? at : StartOfCharacter(a, at - 1);
    const std::size_t most = at - start + kLongestSequence;
    const auto units = [=](const char* name) {
        return kiocore::filesupport::FromNative({name + start, ::strnlen(name + start, most)});
    };
    return units(inA).compare(units(inB));
}

} // namespace ZOL
