#pragma once

#include <kiocore/Export.h>

#include <cstdint>
#include <string_view>

namespace kiomediatypes {

/// How pixels lie in memory. The lower 32 bits are a four-character code; the upper say what the pixels
/// are made of, so that a question about a format is a mask and not a list:
///   bit 32       YUV (luma and colour differences) instead of RGB
///   bits 33-35   depth of a component, see PixelDepth
///   bit 36       has alpha
///   bit 37       planes instead of packed pixels
enum PixelFormat : std::uint64_t {
    kPixelFormat_Any = 0,
    /// 4 bytes a pixel: blue, green, red, alpha. Straight alpha, full range, as in all RGB formats.
    kPixelFormat_BGRA_4444_8u = 0x1241524742, // "BGRA"
    /// 4 bytes a pixel: alpha, red, green, blue.
    kPixelFormat_ARGB_4444_8u = 0x1242475241, // "ARGB"
    /// Four 16-bit values a pixel in machine byte order, 65535 = full.
    kPixelFormat_BGRA_4444_16u = 0x1836316742, // "Bg16"
    /// Four floats a pixel, 1 = full; values beyond 0 to 1 are kept.
    kPixelFormat_BGRA_4444_32f = 0x1A32336742, // "Bg32"
    /// 4 bytes for two pixels: Cb, Y, Cr, Y. Chroma sited with the left pixel. An odd last pixel has a
    /// whole pair to itself.
    kPixelFormat_UYVY_422_8u = 0x0359565955, // "UYVY"
    /// 16 bytes for six pixels: four little-endian words of three 10-bit codes each, from the lowest bits:
    /// Cb Y Cr, Y Cb Y, Cr Y Cb, Y Cr Y. The upper two bits are 0.
    kPixelFormat_V210_422_10u = 0x0530313276, // "v210"
    /// Planes of 8-bit Y, Cb, Cr; the chroma planes are halved (rounded up) both ways, sited at the left,
    /// between the rows, as MPEG-2 and H.264 have it.
    kPixelFormat_YUV_420_8u_Planar = 0x2330323449, // "I420"
};

inline constexpr std::uint64_t kPixelFormatFlag_YUV = 1ull << 32;
inline constexpr std::uint64_t kPixelFormatFlag_Alpha = 1ull << 36;
inline constexpr std::uint64_t kPixelFormatFlag_Planar = 1ull << 37;
inline constexpr std::uint64_t kPixelFormatDepthMask = 7ull << 33;

/// Values of the depth field.
enum class PixelDepth { kUnknown = 0, k8 = 1, k10 = 2, k12 = 3, k16 = 4, k32Float = 5 };

constexpr bool IsYUV(PixelFormat inFormat)
{
    return (inFormat & kPixelFormatFlag_YUV) != 0;
}
constexpr bool HasAlpha(PixelFormat inFormat)
{
    return (inFormat & kPixelFormatFlag_Alpha) != 0;
}
constexpr PixelDepth DepthOf(PixelFormat inFormat)
{
    return static_cast<PixelDepth>((inFormat & kPixelFormatDepthMask) >> 33);
}

/// The formats that frames can be made in, and their names for people and command lines: "bgra8", "argb8",
/// "bgra16", "bgra32f", "uyvy", "v210", "yuv420".
struct NamedPixelFormat {
    PixelFormat format;
    const char* name;
};
inline constexpr NamedPixelFormat kPixelFormats[] = {
    {kPixelFormat_BGRA_4444_8u, "bgra8"},       {kPixelFormat_ARGB_4444_8u, "argb8"},
    {kPixelFormat_BGRA_4444_16u, "bgra16"},     {kPixelFormat_BGRA_4444_32f, "bgra32f"},
    {kPixelFormat_UYVY_422_8u, "uyvy"},         {kPixelFormat_V210_422_10u, "v210"},
    {kPixelFormat_YUV_420_8u_Planar, "yuv420"},
};
/// @return kPixelFormat_Any for a name that is none of them.
KIO_EXPORT PixelFormat PixelFormatNamed(std::string_view inName);
/// @return "?" for a format that is none of them.
KIO_EXPORT const char* NameOf(PixelFormat inFormat);

} // namespace kiomediatypes
