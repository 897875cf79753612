// The general way converts through zimg. Which of the two did a frame must not show.

#include "DirectReference.h"

#include <gtest/gtest.h>

#include <zimg.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace direct {
namespace {

using namespace kiomediatypes;

constexpr std::uint32_t kWidth = 192; // whole v210 groups
constexpr std::uint32_t kHeight = 4;  // zimg wants a few rows

struct Free {
    void operator()(void* inMemory) const { std::free(inMemory); }
};

/// Three planes as zimg wants them, of bytes or of 16-bit words.
struct Planes {
    explicit Planes(std::size_t inBytesEach)
        : bytesEach(inBytesEach), rowBytes(kWidth * inBytesEach),
          memory(static_cast<std::byte*>(std::aligned_alloc(64, 3 * kHeight * rowBytes)))
    {}
    std::byte* Row(std::size_t inPlane, std::size_t inRow) const
    {
        return memory.get() + (inPlane * kHeight + inRow) * rowBytes;
    }
    void Set(std::size_t inPlane, std::size_t inX, double inValue)
    {
        for (std::size_t row = 0; row < kHeight; ++row) {
            const auto value = static_cast<std::uint16_t>(inValue);
            std::memcpy(Row(inPlane, row) + inX * bytesEach, &value, bytesEach); // little-endian
        }
    }
    double Get(std::size_t inPlane, std::size_t inX) const
    {
        std::uint16_t value = 0;
        std::memcpy(&value, Row(inPlane, 1) + inX * bytesEach, bytesEach);
        return value;
    }

    std::size_t bytesEach;
    std::size_t rowBytes;
    std::unique_ptr<std::byte, Free> memory;
};

zimg_image_format ZimgFormatOf(const Form& inForm)
{
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = kWidth;
    format.height = kHeight;
    const bool bytes = DepthOf(inForm.format) == PixelDepth::k8;
    format.pixel_type = bytes ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
    format.depth = MostOf(inForm.format) == 255 ? 8 : MostOf(inForm.format) == 1023 ? 10 : 16;
    format.color_primaries = ZIMG_PRIMARIES_BT709;
    format.transfer_characteristics = ZIMG_TRANSFER_BT709;
    if (IsYUV(inForm.format)) {
        format.color_family = ZIMG_COLOR_YUV;
        format.subsample_w = 1;
        format.subsample_h = inForm.format == kPixelFormat_YUV_420_8u_Planar ? 1 : 0;
        format.matrix_coefficients = static_cast<zimg_matrix_coefficients_e>(inForm.matrix);
        format.pixel_range = inForm.range == Range::kFull ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
        format.chroma_location = ZIMG_CHROMA_LEFT;
    } else {
        format.color_family = ZIMG_COLOR_RGB;
        format.matrix_coefficients = ZIMG_MATRIX_RGB;
        format.pixel_range = ZIMG_RANGE_FULL;
    }
    return format;
}

void ConvertWithZimg(const Form& inSource, const Planes& inPlanes, const Form& inDestination,
                     const Planes& outPlanes)
{
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = ZIMG_RESIZE_BILINEAR;
    parameters.resample_filter_uv = ZIMG_RESIZE_BILINEAR;
    parameters.dither_type = ZIMG_DITHER_NONE;
    const zimg_image_format source = ZimgFormatOf(inSource);
    const zimg_image_format destination = ZimgFormatOf(inDestination);
    const std::unique_ptr<zimg_filter_graph, void (*)(zimg_filter_graph*)> graph(
        zimg_filter_graph_build(&source, &destination, &parameters), &zimg_filter_graph_free);
    char message[256] = "";
    zimg_get_last_error(message, sizeof(message));
    ASSERT_NE(graph, nullptr) << message;
    std::size_t bytes = 0;
    ASSERT_EQ(zimg_filter_graph_get_tmp_size(graph.get(), &bytes), ZIMG_ERROR_SUCCESS);
    const std::unique_ptr<void, Free> temporary(std::aligned_alloc(64, (bytes + 64) / 64 * 64));
    zimg_image_buffer_const from{};
    zimg_image_buffer to{};
    from.version = to.version = ZIMG_API_VERSION;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        from.plane[plane] = {inPlanes.Row(plane, 0), static_cast<std::ptrdiff_t>(inPlanes.rowBytes),
                             ZIMG_BUFFER_MAX};
        to.plane[plane] = {outPlanes.Row(plane, 0), static_cast<std::ptrdiff_t>(outPlanes.rowBytes),
                           ZIMG_BUFFER_MAX};
    }
    ASSERT_EQ(zimg_filter_graph_process(graph.get(), &from, &to, temporary.get(), nullptr, nullptr, nullptr,
                                        nullptr),
              ZIMG_ERROR_SUCCESS);
}

/// Which plane and which place in it a stored component goes to; alpha to none.
struct Place {
    int plane;
    std::size_t x;
};
Place PlaceOf(PixelFormat inFormat, std::size_t inIndex)
{
    static constexpr int kOfCode[] = {1, 0, 2, 0};    // Cb Y Cr Y
    static constexpr int kOfColour[] = {2, 1, 0, -1}; // planes are red, green, blue
    if (!IsYUV(inFormat)) {
        return {kOfColour[inIndex % 4], inIndex / 4};
    }
    return {kOfCode[inIndex % 4], inIndex % 2 ? inIndex / 2 : inIndex / 4};
}

std::vector<double> ThroughZimg(const Form& inSource, const Row& inRow, const Form& inDestination)
{
    const std::vector<double> components = Components(inSource.format, inRow);
    Planes from(MostOf(inSource.format) > 255 ? 2 : 1);
    const Planes to(MostOf(inDestination.format) > 255 ? 2 : 1);
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (const Place place = PlaceOf(inSource.format, i); place.plane >= 0) {
            from.Set(static_cast<std::size_t>(place.plane), place.x, components[i]);
        }
    }
    ConvertWithZimg(inSource, from, inDestination, to);
    std::vector<double> result = Components(inDestination.format, EmptyRow(inDestination.format, kWidth));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const Place place = PlaceOf(inDestination.format, i);
        result[i] = place.plane < 0 ? MostOf(inDestination.format)
                                    : to.Get(static_cast<std::size_t>(place.plane), place.x);
    }
    return result;
}

} // namespace

TEST(DirectConversion, AgreesWithTheGeneralWay)
{
    const Form kRGB[] = {{kPixelFormat_BGRA_4444_8u}, {kPixelFormat_BGRA_4444_16u}};
    std::vector<std::pair<Form, Form>> pairs;
    for (const PixelFormat format : {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u}) {
        for (const Matrix matrix : {Matrix::kBT709, Matrix::kFCC, Matrix::kBT601_625, Matrix::kBT2020_NCL}) {
            for (const Range range : {Range::kLimited, Range::kFull}) {
                for (const Form& rgb : kRGB) {
                    pairs.push_back({rgb, {format, matrix, range}});
                    pairs.push_back({{format, matrix, range}, rgb});
                }
            }
        }
    }
    for (const Range from : {Range::kLimited, Range::kFull}) {
        for (const Range to : {Range::kLimited, Range::kFull}) {
            pairs.push_back({{kPixelFormat_UYVY_422_8u, Matrix::kBT709, from},
                             {kPixelFormat_V210_422_10u, Matrix::kBT709, to}});
            pairs.push_back({{kPixelFormat_V210_422_10u, Matrix::kBT709, from},
                             {kPixelFormat_UYVY_422_8u, Matrix::kBT709, to}});
        }
    }
    for (const auto& [source, destination] : pairs) {
        SCOPED_TRACE(std::string(NameOf(source.format)) + " to " + NameOf(destination.format) + ", matrix " +
                     std::to_string(static_cast<int>(source.matrix) + static_cast<int>(destination.matrix)));
        // A third noise, a third steps, a third flat.
        std::mt19937 random(3);
        std::vector<double> components = Components(source.format, EmptyRow(source.format, kWidth));
        const auto most = static_cast<unsigned>(MostOf(source.format));
        for (std::size_t i = 0; i < components.size(); ++i) {
            const std::size_t third = components.size() / 3;
            const bool repeats = i >= 2 * third ? i >= 2 * third + 4 : i >= third && i / 4 % 4 != 0;
            components[i] = i % 4 == 3 && !IsYUV(source.format) ? most
                            : repeats                           ? components[i - 4]
                                                                : random() % (most + 1);
        }
        const Row row = RowOf(source.format, components);
        const auto theirs = ThroughZimg(source, row, destination);
        const auto ours = Components(destination.format, Converted(source, row, destination, kWidth));
        // Halves may go either way, and 16 bits are at the edge of what floats hold.
        const bool mayHalve = IsYUV(source.format) && IsYUV(destination.format);
        const bool isExact = MostOf(destination.format) <= 1023 && !mayHalve;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            const bool flat = i >= ours.size() * 2 / 3 + 8;
            EXPECT_NEAR(ours[i], theirs[i], flat && isExact ? 0 : 1) << "component " << i;
        }
    }
}

TEST(DirectConversion, AgreesWithTheGeneralWayAboutPlanes)
{
    const Form bytes{kPixelFormat_BGRA_4444_8u};
    for (const Range range : {Range::kLimited, Range::kFull}) {
        SCOPED_TRACE(range == Range::kFull ? "full" : "limited");
        const Form planar{kPixelFormat_YUV_420_8u_Planar, Matrix::kBT601_625, range};
        const Planes from(1);
        const Planes theirs(1);
        std::mt19937 random(7);
        for (std::size_t i = 0; i < 3 * kHeight * kWidth; ++i) {
            from.memory.get()[i] = static_cast<std::byte>(random());
        }
        ConvertWithZimg(planar, from, bytes, theirs);
        VF::SourcePicture source = SourceOf(planar, from.Row(0, 0), from.rowBytes, kWidth, kHeight);
        source.planes[1] = {from.Row(1, 0), from.rowBytes};
        source.planes[2] = {from.Row(2, 0), from.rowBytes};
        Row ours(kWidth * kHeight * 4);
        VF::ConvertRowsDirectly(source, DestinationOf(bytes, ours.data(), kWidth * 4, kWidth, kHeight), 0,
                                kHeight);
        for (std::size_t i = 0; i < ours.size(); ++i) {
            if (const Place place = PlaceOf(bytes.format, i % (kWidth * 4)); place.plane >= 0) {
                const auto plane = static_cast<std::size_t>(place.plane);
                const std::byte* const row = theirs.Row(plane, i / (kWidth * 4));
                ASSERT_NEAR(std::to_integer<int>(ours[i]), std::to_integer<int>(row[place.x]), 1) << i;
            }
        }
    }
}

} // namespace direct
