#include "DirectRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "direct/DirectRGBToRGB.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "DirectRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace VF {
namespace HWY_NAMESPACE {
namespace {

const hn::Rebind<std::uint8_t, FloatTag> kBytesOfFloats{};
const hn::Rebind<std::uint16_t, FloatTag> kShortsOfFloats{};
const hn::Rebind<std::uint8_t, ShortTag> kBytesOfShorts{};

/// Reverses the components of each pixel, BGRA to ARGB and back.
template <bool kSwap, class D, class V>
HWY_INLINE V Ordered(D inTag, V inComponents)
{
    if constexpr (kSwap) {
        return hn::Reverse4(inTag, inComponents);
    } else {
        return inComponents;
    }
}

/// Writes a vector; past the caches where it is aligned and much that will not be read soon.
template <bool kStream, class D, class V>
HWY_INLINE void Put(V inValue, D inTag, hn::TFromD<D>* outAt)
{
    if constexpr (kStream) {
        hn::Stream(inValue, inTag, outAt);
    } else {
        hn::StoreU(inValue, inTag, outAt);
    }
}

// Each step converts kLanes() components, always whole pixels.

struct Swap8 {
    static constexpr std::size_t kFromBytes = 1;
    static constexpr std::size_t kToBytes = 1;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(ByteTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const WordTag d;
        const Words halves = hn::RotateRight<16>(hn::LoadU(d, WordsAt(in)));
        const Words mask = hn::Set(d, 0x00FF00FF);
        hn::StoreU(hn::Or(hn::And(hn::ShiftRight<8>(halves), mask), hn::ShiftLeft<8>(hn::And(halves, mask))),
                   d, WordsAt(out));
    }
};

template <bool kSwap>
struct From8To16 {
    static constexpr std::size_t kFromBytes = 1;
    static constexpr std::size_t kToBytes = 2;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(ShortTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const ShortTag d;
        const Shorts value = Ordered<kSwap>(d, hn::PromoteTo(d, hn::LoadU(kBytesOfShorts, in)));
        Put<kStream>(hn::Or(value, hn::ShiftLeft<8>(value)), d, ShortsAt(out)); // times 257
    }
};

template <bool kSwap>
struct From16To8 {
    static constexpr std::size_t kFromBytes = 2;
    static constexpr std::size_t kToBytes = 1;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(ShortTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const ShortTag d;
        const Shorts value = hn::LoadU(d, ShortsAt(in));
        // Nearest of value / 257 for all 65536, without leaving 16 bits.
        const Shorts half = hn::Set(d, 128);
        const Shorts part = hn::ShiftRight<8>(hn::SaturatedAdd(value, half));
        const Shorts scaled = hn::ShiftRight<8>(hn::Add(hn::Sub(value, part), half));
        const hn::Rebind<std::int16_t, ShortTag> positive;
        hn::StoreU(hn::DemoteTo(kBytesOfShorts, hn::BitCast(positive, Ordered<kSwap>(d, scaled))),
                   kBytesOfShorts, out);
    }
};

/// Whole number / most, rounded once: what divides is 1 + 1/(most + 1) + ..., of which the leading part
/// keeps the product exact.
HWY_INLINE Floats Fraction8(Floats inValue)
{
    const FloatTag d;
    constexpr double kExact = 257.0 / 65536;
    const Floats leading = hn::Mul(inValue, hn::Set(d, static_cast<float>(kExact)));
    return hn::Add(leading, hn::Mul(inValue, hn::Set(d, static_cast<float>(1.0 / 255 - kExact))));
}
HWY_INLINE Floats Fraction16(Floats inValue)
{
    const FloatTag d;
    constexpr double kExact = 1.0 / 65536;
    const Floats leading = hn::Mul(inValue, hn::Set(d, static_cast<float>(kExact)));
    return hn::Add(leading, hn::Mul(inValue, hn::Set(d, static_cast<float>(1.0 / 65535 - kExact))));
}

template <bool kSwap>
struct From8To32f {
    static constexpr std::size_t kFromBytes = 1;
    static constexpr std::size_t kToBytes = 4;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(FloatTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const FloatTag d;
        const auto whole = hn::PromoteTo(IntTag(), hn::LoadU(kBytesOfFloats, in));
        Put<kStream>(Fraction8(hn::ConvertTo(d, Ordered<kSwap>(IntTag(), whole))), d, FloatsAt(out));
    }
};

struct From16To32f {
    static constexpr std::size_t kFromBytes = 2;
    static constexpr std::size_t kToBytes = 4;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(FloatTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const FloatTag d;
        const auto whole = hn::PromoteTo(IntTag(), hn::LoadU(kShortsOfFloats, ShortsAt(in)));
        Put<kStream>(Fraction16(hn::ConvertTo(d, whole)), d, FloatsAt(out));
    }
};

/// Nearest whole number of 0 to inMost; no number counts as 0.
HWY_INLINE hn::Vec<IntTag> Whole(Floats inValue, float inMost)
{
    const FloatTag d;
    const Floats positive = hn::IfThenElseZero(hn::Gt(inValue, hn::Zero(d)), inValue);
    const Floats scaled = hn::Mul(hn::Min(positive, hn::Set(d, 1.0f)), hn::Set(d, inMost));
    return hn::BitCast(IntTag(), LowShorts(RoundedBits(hn::Add(scaled, hn::Set(d, kRounding)))));
}

template <bool kSwap>
struct From32fTo8 {
    static constexpr std::size_t kFromBytes = 4;
    static constexpr std::size_t kToBytes = 1;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(FloatTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const auto whole = Whole(hn::LoadU(FloatTag(), FloatsAt(in)), 255);
        hn::StoreU(hn::DemoteTo(kBytesOfFloats, Ordered<kSwap>(IntTag(), whole)), kBytesOfFloats, out);
    }
};

struct From32fTo16 {
    static constexpr std::size_t kFromBytes = 4;
    static constexpr std::size_t kToBytes = 2;
    static HWY_INLINE std::size_t Lanes() { return hn::Lanes(FloatTag()); }
    template <bool kStream>
    static HWY_INLINE void Step(const std::uint8_t* in, std::uint8_t* out)
    {
        const auto whole = Whole(hn::LoadU(FloatTag(), FloatsAt(in)), 65535);
        hn::StoreU(hn::DemoteTo(kShortsOfFloats, whole), kShortsOfFloats, ShortsAt(out));
    }
};

/// Frames that grow beyond this are not in the caches any more when somebody reads them, and writing around
/// the caches saves reading what is overwritten.
constexpr std::size_t kStreamBytes = 8 << 20;

template <class Conversion, bool kStream>
HWY_INLINE void ConvertRow(const std::uint8_t* inRow, std::uint8_t* outRow, std::size_t inCount)
{
    constexpr std::size_t kFrom = Conversion::kFromBytes;
    constexpr std::size_t kTo = Conversion::kToBytes;
    const std::size_t lanes = Conversion::Lanes();
    const std::size_t whole = inCount / lanes * lanes;
    for (std::size_t i = 0; i < whole; i += lanes) {
        Conversion::template Step<kStream>(inRow + i * kFrom, outRow + i * kTo);
    }
    if (whole < inCount) {
        HWY_ALIGN std::uint8_t last[kMostBytes] = {};
        HWY_ALIGN std::uint8_t converted[kMostBytes];
        std::memcpy(last, inRow + whole * kFrom, (inCount - whole) * kFrom);
        Conversion::template Step<false>(last, converted);
        std::memcpy(outRow + whole * kTo, converted, (inCount - whole) * kTo);
    }
}

template <class Conversion>
void Rows(const SourcePicture& inSource, const DestinationPicture& inDestination, std::uint32_t inFirstRow,
          std::uint32_t inEndRow)
{
    const std::size_t count = std::size_t{inSource.width} * 4;
    const bool isLarge = Conversion::kToBytes > Conversion::kFromBytes &&
                         count * Conversion::kToBytes * inSource.height >= kStreamBytes;
    for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
        const auto* const source = reinterpret_cast<const std::uint8_t*>(inSource.Row(row));
        auto* const destination = reinterpret_cast<std::uint8_t*>(inDestination.Row(row));
        if (isLarge && reinterpret_cast<std::uintptr_t>(destination) % hn::Lanes(ByteTag()) == 0) {
            ConvertRow<Conversion, true>(source, destination, count);
        } else {
            ConvertRow<Conversion, false>(source, destination, count);
        }
    }
    if (isLarge) {
        hwy::FlushStream(); // other threads shall see the rows once they hear that they are done
    }
}

void RGBToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
              std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    using namespace kiomediatypes;
    const bool swap =
        (inSource.format == kPixelFormat_ARGB_4444_8u) != (inDestination.format == kPixelFormat_ARGB_4444_8u);
    const PixelDepth from = DepthOf(inSource.format);
    const PixelDepth to = DepthOf(inDestination.format);
    void (*rows)(const SourcePicture&, const DestinationPicture&, std::uint32_t, std::uint32_t) = nullptr;
    if (from == PixelDepth::k8 && to == PixelDepth::k8) {
        rows = &Rows<Swap8>;
    } else if (from == PixelDepth::k8 && to == PixelDepth::k16) {
        rows = swap ? &Rows<From8To16<true>> : &Rows<From8To16<false>>;
    } else if (from == PixelDepth::k8) {
        rows = swap ? &Rows<From8To32f<true>> : &Rows<From8To32f<false>>;
    } else if (from == PixelDepth::k16 && to == PixelDepth::k8) {
        rows = swap ? &Rows<From16To8<true>> : &Rows<From16To8<false>>;
    } else if (from == PixelDepth::k16) {
        rows = &Rows<From16To32f>;
    } else if (to == PixelDepth::k8) {
        rows = swap ? &Rows<From32fTo8<true>> : &Rows<From32fTo8<false>>;
    } else {
        rows = &Rows<From32fTo16>;
    }
    rows(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace
} // namespace HWY_NAMESPACE
} // namespace VF
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VF {

HWY_EXPORT(RGBToRGB);

static std::size_t BytesPerPixel(kiomediatypes::PixelFormat inFormat)
{
    const kiomediatypes::PixelDepth depth = DepthOf(inFormat);
    return depth == kiomediatypes::PixelDepth::k8 ? 4 : depth == kiomediatypes::PixelDepth::k16 ? 8 : 16;
}

void ConvertRGBToRGB(const SourcePicture& inSource, const DestinationPicture& inDestination,
                     std::uint32_t inFirstRow, std::uint32_t inEndRow)
{
    if (inSource.format == inDestination.format) {
        const std::size_t bytes = inSource.width * BytesPerPixel(inSource.format);
        for (std::uint32_t row = inFirstRow; row < inEndRow; ++row) {
            std::memcpy(inDestination.Row(row), inSource.Row(row), bytes);
        }
        return;
    }
    HWY_DYNAMIC_DISPATCH(RGBToRGB)(inSource, inDestination, inFirstRow, inEndRow);
}

} // namespace VF
#endif
