#include "support/FrameSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace support {

using namespace kiomediatypes;

namespace {

constexpr int kPlaceInBGRA[] = {2, 1, 0, 3}; // of R, G, B, A
constexpr int kPlaceInARGB[] = {1, 2, 3, 0};

/// Which of the twelve codes of a group of v210.
std::size_t CodeInV210(int inComponent, std::uint32_t inX)
{
    if (inComponent == 0) {
        return inX % 6 * 2 + 1;
    }
    return inX % 3 * 4 + (inComponent == 1 ? 0 : 2);
}

template <typename T>
T Load(const std::byte* inFrom)
{
    T value;
    std::memcpy(&value, inFrom, sizeof(value));
    return value;
}
template <typename T>
void Store(std::byte* outTo, T inValue)
{
    std::memcpy(outTo, &inValue, sizeof(inValue));
}

} // namespace

FrameSamples::FrameSamples(const MF::IVideoFrameRef& inFrame)
    : mMemory(inFrame), mFormat(inFrame->GetPixelFormat()), mWidth(inFrame->GetWidth()),
      mHeight(inFrame->GetHeight())
{}

std::uint32_t FrameSamples::Width(int inComponent) const
{
    return IsChroma(inComponent) ? (mWidth + 1) / 2 : mWidth;
}
std::uint32_t FrameSamples::Height(int inComponent) const
{
    return IsChroma(inComponent) && mFormat == kPixelFormat_YUV_420_8u_Planar ? (mHeight + 1) / 2 : mHeight;
}
int FrameSamples::Count() const
{
    return HasAlpha(mFormat) ? 4 : 3;
}
double FrameSamples::Full() const
{
    switch (DepthOf(mFormat)) {
    case PixelDepth::k8:
        return 255;
    case PixelDepth::k10:
        return 1023;
    case PixelDepth::k16:
        return 65535;
    default:
        return 1;
    }
}

std::byte* FrameSamples::At(int inPlane, std::size_t inByte, std::uint32_t inRow) const
{
    return const_cast<std::byte*>(mMemory->GetPixels(inPlane)) + inRow * mMemory->GetRowBytes(inPlane) +
           inByte;
}

double FrameSamples::Get(int inComponent, std::uint32_t inX, std::uint32_t inY) const
{
    const auto component = static_cast<std::size_t>(inComponent);
    switch (mFormat) {
    case kPixelFormat_BGRA_4444_8u:
        return std::to_integer<int>(*At(0, inX * 4 + static_cast<unsigned>(kPlaceInBGRA[component]), inY));
    case kPixelFormat_ARGB_4444_8u:
        return std::to_integer<int>(*At(0, inX * 4 + static_cast<unsigned>(kPlaceInARGB[component]), inY));
    case kPixelFormat_BGRA_4444_16u:
        return Load<std::uint16_t>(At(0, inX * 8 + static_cast<unsigned>(kPlaceInBGRA[component]) * 2, inY));
    case kPixelFormat_BGRA_4444_32f:
        return Load<float>(At(0, inX * 16 + static_cast<unsigned>(kPlaceInBGRA[component]) * 4, inY));
    case kPixelFormat_UYVY_422_8u:
        return std::to_integer<int>(
            *At(0, inComponent == 0 ? inX * 2 + 1 : inX * 4 + (inComponent == 1 ? 0 : 2), inY));
    case kPixelFormat_V210_422_10u: {
        const std::size_t code = CodeInV210(inComponent, inX);
        const std::size_t group = inX / (inComponent == 0 ? 6 : 3);
        return Load<std::uint32_t>(At(0, group * 16 + code / 3 * 4, inY)) >> code % 3 * 10 & 0x3FF;
    }
    case kPixelFormat_YUV_420_8u_Planar:
        return std::to_integer<int>(*At(inComponent, inX, inY));
    case kPixelFormat_Any:
        break;
    }
    return 0;
}

void FrameSamples::Set(int inComponent, std::uint32_t inX, std::uint32_t inY, double inCode)
{
    const auto component = static_cast<std::size_t>(inComponent);
    const auto code = static_cast<std::uint32_t>(std::lround(std::clamp(inCode, 0.0, Full())));
    const auto byte = static_cast<std::byte>(code);
    switch (mFormat) {
    case kPixelFormat_BGRA_4444_8u:
        *At(0, inX * 4 + static_cast<unsigned>(kPlaceInBGRA[component]), inY) = byte;
        break;
    case kPixelFormat_ARGB_4444_8u:
        *At(0, inX * 4 + static_cast<unsigned>(kPlaceInARGB[component]), inY) = byte;
        break;
    case kPixelFormat_BGRA_4444_16u:
        Store(At(0, inX * 8 + static_cast<unsigned>(kPlaceInBGRA[component]) * 2, inY),
              static_cast<std::uint16_t>(code));
        break;
    case kPixelFormat_BGRA_4444_32f:
        Store(At(0, inX * 16 + static_cast<unsigned>(kPlaceInBGRA[component]) * 4, inY),
              static_cast<float>(inCode));
        break;
    case kPixelFormat_UYVY_422_8u:
        *At(0, inComponent == 0 ? inX * 2 + 1 : inX * 4 + (inComponent == 1 ? 0 : 2), inY) = byte;
        break;
    case kPixelFormat_V210_422_10u: {
        const std::size_t place = CodeInV210(inComponent, inX);
        std::byte* const word = At(0, inX / (inComponent == 0 ? 6 : 3) * 16 + place / 3 * 4, inY);
        const auto shift = static_cast<unsigned>(place % 3 * 10);
        Store(word, (Load<std::uint32_t>(word) & ~(0x3FFu << shift)) | code << shift);
        break;
    }
    case kPixelFormat_YUV_420_8u_Planar:
        *At(inComponent, inX, inY) = byte;
        break;
    case kPixelFormat_Any:
        break;
    }
}

void FrameSamples::Fill(const Source& inSource)
{
    for (int component = 0; component < Count(); ++component) {
        const bool halvedX = Width(component) != mWidth || (mWidth == 1 && IsChroma(component));
        const bool halvedY = Height(component) != mHeight || (mHeight == 1 && IsChroma(component) &&
                                                              mFormat == kPixelFormat_YUV_420_8u_Planar);
        for (std::uint32_t y = 0; y < Height(component); ++y) {
            for (std::uint32_t x = 0; x < Width(component); ++x) {
                // Chroma is sited with the first of two columns, between two rows.
                Set(component, x, y,
                    inSource(component, halvedX ? x * 2 + 0.5 : x + 0.5, halvedY ? y * 2 + 1.0 : y + 0.5));
            }
        }
    }
}

void FrameSamples::FillFlat(const std::array<double, 4>& inCodes)
{
    Fill([&](int inComponent, double, double) { return inCodes[static_cast<std::size_t>(inComponent)]; });
}

namespace {

struct Weights {
    double red;
    double blue;
};
Weights WeightsOf(color::Matrix inMatrix)
{
    switch (inMatrix) {
    case color::Matrix::kBT709:
        return {0.2126, 0.0722};
    case color::Matrix::kFCC:
        return {0.30, 0.11};
    case color::Matrix::kBT601_525:
    case color::Matrix::kBT601_625:
        return {0.299, 0.114};
    case color::Matrix::kBT2020_NCL:
        return {0.2627, 0.0593};
    }
    return {};
}

double FullOf(PixelFormat inFormat)
{
    switch (DepthOf(inFormat)) {
    case PixelDepth::k8:
        return 255;
    case PixelDepth::k10:
        return 1023;
    case PixelDepth::k16:
        return 65535;
    default:
        return 1;
    }
}

} // namespace

std::array<double, 4> CodesOf(const std::array<double, 4>& inRGBA, PixelFormat inFormat,
                              const color::ColorSpace& inColorSpace)
{
    const double full = FullOf(inFormat);
    if (!IsYUV(inFormat)) {
        return {inRGBA[0] * full, inRGBA[1] * full, inRGBA[2] * full, inRGBA[3] * full};
    }
    const auto [red, blue] = WeightsOf(inColorSpace.matrix);
    const double y = red * inRGBA[0] + (1 - red - blue) * inRGBA[1] + blue * inRGBA[2];
    const double cb = (inRGBA[2] - y) / (2 * (1 - blue));
    const double cr = (inRGBA[0] - y) / (2 * (1 - red));
    const double unit = (full + 1) / 256;
    if (inColorSpace.range == color::Range::kFull) {
        return {y * full, 128 * unit + cb * full, 128 * unit + cr * full, 0};
    }
    return {unit * (16 + 219 * y), unit * (128 + 224 * cb), unit * (128 + 224 * cr), 0};
}

std::array<double, 4> RGBAOf(const std::array<double, 4>& inCodes, PixelFormat inFormat,
                             const color::ColorSpace& inColorSpace)
{
    const double full = FullOf(inFormat);
    if (!IsYUV(inFormat)) {
        return {inCodes[0] / full, inCodes[1] / full, inCodes[2] / full, inCodes[3] / full};
    }
    const auto [red, blue] = WeightsOf(inColorSpace.matrix);
    const double unit = (full + 1) / 256;
    const bool fullRange = inColorSpace.range == color::Range::kFull;
    const double y = fullRange ? inCodes[0] / full : (inCodes[0] / unit - 16) / 219;
    const double chroma = fullRange ? full : 224 * unit;
    const double cb = (inCodes[1] - 128 * unit) / chroma;
    const double cr = (inCodes[2] - 128 * unit) / chroma;
    const double r = y + 2 * (1 - red) * cr;
    const double b = y + 2 * (1 - blue) * cb;
    return {r, (y - red * r - blue * b) / (1 - red - blue), b, 1};
}

} // namespace support
