#include "Carriers.h"

namespace trhost::effects::avfilter {
namespace {

using namespace kiomediatypes;

// Carriers without alpha come last: with alpha of its own a filter may do what only it knows how to. The two
// orders of 8 bits have the same ones, their own first.
constexpr Carrier kBGRA8[] = {
    {AV_PIX_FMT_BGRA, true},  {AV_PIX_FMT_RGBA, true},  {AV_PIX_FMT_ABGR, true},   {AV_PIX_FMT_ARGB, true},
    {AV_PIX_FMT_GBRAP, true}, {AV_PIX_FMT_BGR0, false}, {AV_PIX_FMT_RGB0, false},  {AV_PIX_FMT_0BGR, false},
    {AV_PIX_FMT_0RGB, false}, {AV_PIX_FMT_GBRP, false}, {AV_PIX_FMT_BGR24, false}, {AV_PIX_FMT_RGB24, false},
};
constexpr Carrier kARGB8[] = {
    {AV_PIX_FMT_ARGB, true},  {AV_PIX_FMT_ABGR, true},  {AV_PIX_FMT_RGBA, true},   {AV_PIX_FMT_BGRA, true},
    {AV_PIX_FMT_GBRAP, true}, {AV_PIX_FMT_0RGB, false}, {AV_PIX_FMT_0BGR, false},  {AV_PIX_FMT_RGB0, false},
    {AV_PIX_FMT_BGR0, false}, {AV_PIX_FMT_GBRP, false}, {AV_PIX_FMT_RGB24, false}, {AV_PIX_FMT_BGR24, false},
};
constexpr Carrier kBGRA16[] = {
    {AV_PIX_FMT_BGRA64, true},  {AV_PIX_FMT_RGBA64, true}, {AV_PIX_FMT_GBRAP16, true},
    {AV_PIX_FMT_GBRP16, false}, {AV_PIX_FMT_BGR48, false}, {AV_PIX_FMT_RGB48, false},
};
constexpr Carrier kBGRA32f[] = {{AV_PIX_FMT_GBRAPF32, true}, {AV_PIX_FMT_GBRPF32, false}};
constexpr Carrier kUYVY[] = {
    {AV_PIX_FMT_UYVY422, false}, {AV_PIX_FMT_YUYV422, false}, {AV_PIX_FMT_YUV422P, false}};
constexpr Carrier kV210[] = {{AV_PIX_FMT_YUV422P10, false}};
constexpr Carrier kYUV420[] = {{AV_PIX_FMT_YUV420P, false}, {AV_PIX_FMT_NV12, false}};

constexpr PixelFormat kByPreference[] = {
    kPixelFormat_BGRA_4444_8u,      kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u,
    kPixelFormat_BGRA_4444_32f,     kPixelFormat_V210_422_10u, kPixelFormat_UYVY_422_8u,
    kPixelFormat_YUV_420_8u_Planar,
};

} // namespace

std::span<const Carrier> CarriersOf(PixelFormat inFormat)
{
    switch (inFormat) {
    case kPixelFormat_BGRA_4444_8u:
        return kBGRA8;
    case kPixelFormat_ARGB_4444_8u:
        return kARGB8;
    case kPixelFormat_BGRA_4444_16u:
        return kBGRA16;
    case kPixelFormat_BGRA_4444_32f:
        return kBGRA32f;
    case kPixelFormat_UYVY_422_8u:
        return kUYVY;
    case kPixelFormat_V210_422_10u:
        return kV210;
    case kPixelFormat_YUV_420_8u_Planar:
        return kYUV420;
    case kPixelFormat_Any:
        break;
    }
    return {};
}

std::span<const PixelFormat> FormatsByPreference()
{
    return kByPreference;
}

} // namespace trhost::effects::avfilter
