#include "DirectReference.h"

#include <VF/VideoFrames.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace direct {
namespace {

using namespace kiomediatypes;

std::size_t UsedBytes(PixelFormat inFormat, std::size_t inWidth)
{
    return VF::LayoutOf(inFormat, static_cast<std::uint32_t>(inWidth), 1, true).planes[0].usedBytes;
}

bool IsV210(PixelFormat inFormat)
{
    return inFormat == kPixelFormat_V210_422_10u;
}

struct Luma {
    double red, green, blue;
};
Luma LumaOf(Matrix inMatrix)
{
    switch (inMatrix) {
    case Matrix::kBT709:
        return {0.2126, 0.7152, 0.0722};
    case Matrix::kFCC:
        return {0.30, 0.59, 0.11};
    case Matrix::kBT601_625:
    case Matrix::kBT601_525:
        return {0.299, 0.587, 0.114};
    case Matrix::kBT2020_NCL:
        return {0.2627, 0.6780, 0.0593};
    }
    throw std::invalid_argument("no such matrix");
}

/// Codes of black, white less black, no colour, and all colours.
struct Codes {
    double black, luma, grey, chroma;
};
Codes CodesOf(const Form& inForm)
{
    const double step = IsV210(inForm.format) ? 4 : 1;
    if (inForm.range == Range::kLimited) {
        return {16 * step, 219 * step, 128 * step, 224 * step};
    }
    return {0, MostOf(inForm.format), 128 * step, MostOf(inForm.format)};
}

using Pixel = std::array<double, 4>; // red, green, blue, alpha; 1 is full

std::size_t PlaceOf(PixelFormat inFormat, int inComponent)
{
    static constexpr std::size_t kBGRA[] = {2, 1, 0, 3};
    static constexpr std::size_t kARGB[] = {1, 2, 3, 0};
    return (inFormat == kPixelFormat_ARGB_4444_8u ? kARGB : kBGRA)[inComponent];
}

Pixel ToRGB(const Form& inForm, double inY, double inCb, double inCr)
{
    const Luma luma = LumaOf(inForm.matrix);
    const Codes codes = CodesOf(inForm);
    const double y = (inY - codes.black) / codes.luma;
    const double b = y + 2 * (1 - luma.blue) * (inCb - codes.grey) / codes.chroma;
    const double r = y + 2 * (1 - luma.red) * (inCr - codes.grey) / codes.chroma;
    return {r, (y - luma.red * r - luma.blue * b) / luma.green, b, 1};
}

std::vector<Pixel> PixelsOf(const Form& inForm, const std::vector<double>& inComponents, std::size_t inWidth)
{
    std::vector<Pixel> pixels(inWidth);
    const double full = MostOf(inForm.format) == 0 ? 1 : MostOf(inForm.format);
    for (std::size_t x = 0; x < inWidth; ++x) {
        if (!IsYUV(inForm.format)) {
            for (int component = 0; component < 4; ++component) {
                pixels[x][static_cast<std::size_t>(component)] =
                    inComponents[4 * x + PlaceOf(inForm.format, component)] / full;
            }
            continue;
        }
        const std::size_t pair = x / 2;
        const std::size_t next = x % 2 == 0 ? pair : std::min(pair + 1, (inWidth + 1) / 2 - 1);
        pixels[x] = ToRGB(inForm, inComponents[4 * pair + (x % 2 ? 3 : 1)],
                          (inComponents[4 * pair] + inComponents[4 * next]) / 2,
                          (inComponents[4 * pair + 2] + inComponents[4 * next + 2]) / 2);
    }
    return pixels;
}

std::vector<double> FromPixels(const std::vector<Pixel>& inPixels, const Form& inForm, std::size_t inCount)
{
    std::vector<double> components(inCount);
    if (!IsYUV(inForm.format)) {
        const double full = MostOf(inForm.format) == 0 ? 1 : MostOf(inForm.format);
        for (std::size_t i = 0; i < inCount; ++i) {
            for (int component = 0; component < 4; ++component) {
                components[i / 4 * 4 + PlaceOf(inForm.format, component)] =
                    inPixels[i / 4][static_cast<std::size_t>(component)] * full;
            }
        }
        return components;
    }
    const Luma luma = LumaOf(inForm.matrix);
    const Codes codes = CodesOf(inForm);
    const auto pixel = [&](std::ptrdiff_t inX) {
        const auto last = static_cast<std::ptrdiff_t>(inPixels.size()) - 1;
        return inPixels[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(inX, 0, last))];
    };
    const auto y = [&](const Pixel& in) { return luma.red * in[0] + luma.green * in[1] + luma.blue * in[2]; };
    const auto cb = [&](const Pixel& in) { return (in[2] - y(in)) / (2 * (1 - luma.blue)); };
    const auto cr = [&](const Pixel& in) { return (in[0] - y(in)) / (2 * (1 - luma.red)); };
    for (std::size_t i = 0; i < inCount; i += 4) {
        const auto x = static_cast<std::ptrdiff_t>(i / 2);
        const auto filtered = [&](const auto& inChroma) {
            return codes.grey +
                   codes.chroma * (inChroma(pixel(x - 1)) + 2 * inChroma(pixel(x)) + inChroma(pixel(x + 1))) /
                       4;
        };
        components[i] = filtered(cb);
        components[i + 1] = codes.black + codes.luma * y(pixel(x));
        components[i + 2] = filtered(cr);
        components[i + 3] = codes.black + codes.luma * y(pixel(x + 1));
    }
    return components;
}

std::vector<double> BetweenCodes(const Form& inSource, const std::vector<double>& inComponents,
                                 const Form& inDestination, std::size_t inCount, std::size_t inWidth)
{
    const Codes from = CodesOf(inSource);
    const Codes to = CodesOf(inDestination);
    std::vector<double> components(inCount);
    const std::size_t lastPair = (inWidth - 1) / 2;
    for (std::size_t i = 0; i < inCount; ++i) {
        const std::size_t pair = std::min(i / 4, lastPair);
        const bool isLuma = i % 2 == 1;
        // Luma beyond the last pixel repeats it.
        const bool second = std::min(i / 2, inWidth - 1) % 2 == 1;
        const double code = inComponents[4 * pair + (isLuma ? (second ? 3 : 1) : i % 4)];
        components[i] = isLuma ? to.black + (code - from.black) * to.luma / from.luma
                               : to.grey + (code - from.grey) * to.chroma / from.chroma;
    }
    return components;
}

} // namespace

double MostOf(PixelFormat inFormat)
{
    switch (DepthOf(inFormat)) {
    case PixelDepth::k8:
        return 255;
    case PixelDepth::k10:
        return 1023;
    case PixelDepth::k16:
        return 65535;
    case PixelDepth::k12:
    case PixelDepth::k32Float:
    case PixelDepth::kUnknown:
        break;
    }
    return 0;
}

Row EmptyRow(PixelFormat inFormat, std::size_t inWidth)
{
    return Row(UsedBytes(inFormat, inWidth));
}

std::vector<double> Components(PixelFormat inFormat, const Row& inRow)
{
    std::vector<double> components;
    const auto take = [&](auto inZero) {
        for (std::size_t at = 0; at < inRow.size(); at += sizeof(inZero)) {
            std::memcpy(&inZero, inRow.data() + at, sizeof(inZero));
            components.push_back(static_cast<double>(inZero));
        }
    };
    if (IsV210(inFormat)) {
        for (std::size_t at = 0; at < inRow.size(); at += 4) {
            std::uint32_t word = 0;
            std::memcpy(&word, inRow.data() + at, 4);
            for (int shift = 0; shift < 30; shift += 10) {
                components.push_back(word >> shift & 1023);
            }
        }
    } else if (DepthOf(inFormat) == PixelDepth::k8) {
        take(std::uint8_t{});
    } else if (DepthOf(inFormat) == PixelDepth::k16) {
        take(std::uint16_t{});
    } else {
        take(float{});
    }
    return components;
}

Row RowOf(PixelFormat inFormat, const std::vector<double>& inComponents)
{
    Row row;
    const auto put = [&](auto inValue) {
        const std::size_t at = row.size();
        row.resize(at + sizeof(inValue));
        std::memcpy(row.data() + at, &inValue, sizeof(inValue));
    };
    for (std::size_t i = 0; i < inComponents.size(); ++i) {
        if (IsV210(inFormat)) {
            if (i % 3 == 2) {
                put(static_cast<std::uint32_t>(inComponents[i - 2] + inComponents[i - 1] * 1024 +
                                               inComponents[i] * 1048576));
            }
        } else if (DepthOf(inFormat) == PixelDepth::k8) {
            put(static_cast<std::uint8_t>(inComponents[i]));
        } else if (DepthOf(inFormat) == PixelDepth::k16) {
            put(static_cast<std::uint16_t>(inComponents[i]));
        } else {
            put(static_cast<float>(inComponents[i]));
        }
    }
    return row;
}

std::vector<double> Expected(const Form& inSource, const Row& inRow, const Form& inDestination,
                             std::size_t inWidth)
{
    return Expected(inSource, Components(inSource.format, inRow), inDestination, inWidth);
}

std::vector<double> Expected(const Form& inSource, const std::vector<double>& inComponents,
                             const Form& inDestination, std::size_t inWidth)
{
    const std::size_t count =
        Components(inDestination.format, EmptyRow(inDestination.format, inWidth)).size();
    if (IsYUV(inSource.format) && IsYUV(inDestination.format)) {
        return BetweenCodes(inSource, inComponents, inDestination, count, inWidth);
    }
    return FromPixels(PixelsOf(inSource, inComponents, inWidth), inDestination, count);
}

VF::SourcePicture SourceOf(const Form& inForm, const std::byte* inPixels, std::size_t inRowBytes,
                           std::uint32_t inWidth, std::uint32_t inHeight)
{
    VF::SourcePicture picture;
    picture.format = inForm.format;
    picture.colorSpace.matrix = inForm.matrix;
    picture.colorSpace.range = inForm.range;
    picture.width = inWidth;
    picture.height = inHeight;
    picture.planes[0] = {inPixels, inRowBytes};
    return picture;
}

VF::DestinationPicture DestinationOf(const Form& inForm, std::byte* inPixels, std::size_t inRowBytes,
                                     std::uint32_t inWidth, std::uint32_t inHeight)
{
    VF::DestinationPicture picture;
    picture.format = inForm.format;
    picture.colorSpace.matrix = inForm.matrix;
    picture.colorSpace.range = inForm.range;
    picture.width = inWidth;
    picture.height = inHeight;
    picture.planes[0] = {inPixels, inRowBytes};
    return picture;
}

Row Converted(const Form& inSource, const Row& inRow, const Form& inDestination, std::size_t inWidth)
{
    Row result = EmptyRow(inDestination.format, inWidth);
    const auto width = static_cast<std::uint32_t>(inWidth);
    VF::ConvertRowsDirectly(SourceOf(inSource, inRow.data(), inRow.size(), width, 1),
                            DestinationOf(inDestination, result.data(), result.size(), width, 1), 0, 1);
    return result;
}

} // namespace direct
