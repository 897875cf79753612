// What the rows have in common. Included once for each set of instructions, see hwy/foreach_target.h; so
// the guard toggles.
#if defined(VF_DIRECT_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef VF_DIRECT_ROWS_INL_H
#undef VF_DIRECT_ROWS_INL_H
#else
#define VF_DIRECT_ROWS_INL_H
#endif

#include "DirectWeights.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using WordTag = hn::ScalableTag<std::uint32_t>;
using IntTag = hn::ScalableTag<std::int32_t>;
using ShortTag = hn::ScalableTag<std::uint16_t>;
using ByteTag = hn::ScalableTag<std::uint8_t>;
using Floats = hn::Vec<FloatTag>;
using Words = hn::Vec<WordTag>;
using Shorts = hn::Vec<ShortTag>;

/// Pixels that are worked on in one go where codes lie in between: whole groups of v210, whole vectors of
/// any width, and little enough to stay in the nearest cache.
constexpr std::size_t kChunkPixels = 480;
constexpr std::size_t kMostBytes = HWY_MAX_BYTES;              // of a vector
constexpr std::size_t kMostLanes = kMostBytes / sizeof(float); // of a float vector
constexpr std::size_t kMostStep = 2 * kMostLanes;              // pixels that one step does
static_assert(kChunkPixels % 6 == 0);
/// Codes of a chunk, Cb Y Cr Y for two pixels, and room for what a last vector does beyond.
constexpr std::size_t kChunkCodes = 2 * kChunkPixels + 3 * kMostBytes;

HWY_INLINE const std::uint32_t* WordsAt(const std::uint8_t* inBytes)
{
    return reinterpret_cast<const std::uint32_t*>(inBytes);
}
HWY_INLINE std::uint32_t* WordsAt(std::uint8_t* inBytes)
{
    return reinterpret_cast<std::uint32_t*>(inBytes);
}
HWY_INLINE std::uint16_t* ShortsAt(std::uint8_t* inBytes)
{
    return reinterpret_cast<std::uint16_t*>(inBytes);
}
HWY_INLINE const std::uint16_t* ShortsAt(const std::uint8_t* inBytes)
{
    return reinterpret_cast<const std::uint16_t*>(inBytes);
}
HWY_INLINE float* FloatsAt(std::uint8_t* inBytes)
{
    return reinterpret_cast<float*>(inBytes);
}
HWY_INLINE const float* FloatsAt(const std::uint8_t* inBytes)
{
    return reinterpret_cast<const float*>(inBytes);
}

HWY_INLINE Floats ToFloats(Words inWords)
{
    return hn::ConvertTo(FloatTag(), hn::BitCast(IntTag(), inWords)); // none exceeds 65535 * 4
}
HWY_INLINE Words LowShorts(Words inWords)
{
    return hn::And(inWords, hn::Set(WordTag(), 0xFFFF));
}
/// The lower bits of a value to which kRounding was added.
HWY_INLINE Words RoundedBits(Floats inValue)
{
    return hn::BitCast(WordTag(), inValue);
}

/// Writes codes, a whole number of v210 groups.
HWY_INLINE void PackV210(const std::uint16_t* inCodes, std::size_t inGroups, std::uint8_t* outBytes)
{
    const ShortTag d;
    const std::size_t lanes = hn::Lanes(d); // words that one step writes
    const std::size_t words = inGroups * 4;
    for (std::size_t word = 0; word < words; word += lanes) {
        Shorts first, second, third;
        hn::LoadInterleaved3(d, inCodes + 3 * word, first, second, third);
        const Shorts low = hn::Or(first, hn::ShiftLeft<10>(second));
        const Shorts high = hn::Or(hn::ShiftRight<6>(second), hn::ShiftLeft<4>(third));
        if (word + lanes <= words) {
            hn::StoreInterleaved2(low, high, d, ShortsAt(outBytes + 4 * word));
        } else {
            HWY_ALIGN std::uint16_t last[kMostBytes];
            hn::StoreInterleaved2(low, high, d, last);
            std::memcpy(outBytes + 4 * word, last, (words - word) * 4);
        }
    }
}

HWY_INLINE void UnpackV210(const std::uint8_t* inBytes, std::size_t inGroups, std::uint16_t* outCodes)
{
    const ShortTag d;
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t words = inGroups * 4;
    const Shorts mask = hn::Set(d, 1023);
    for (std::size_t word = 0; word < words; word += lanes) {
        Shorts low, high;
        if (word + lanes <= words) {
            hn::LoadInterleaved2(d, ShortsAt(inBytes + 4 * word), low, high);
        } else {
            HWY_ALIGN std::uint16_t last[kMostBytes] = {};
            std::memcpy(last, inBytes + 4 * word, (words - word) * 4);
            hn::LoadInterleaved2(d, last, low, high);
        }
        const Shorts second =
            hn::Or(hn::ShiftRight<10>(low), hn::ShiftLeft<6>(hn::And(high, hn::Set(d, 15))));
        hn::StoreInterleaved3(hn::And(low, mask), second, hn::And(hn::ShiftRight<4>(high), mask), d,
                              outCodes + 3 * word);
    }
}

} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#endif
