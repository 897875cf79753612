#include "PNGBytes.h"

#include <VF/PNG.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>

#include <support/TraceRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kiomediatypes;
using namespace support;
using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;
using Access = VF::InterfaceRef<VF::IVideoFrameMemoryAccess>;

enum class Alpha { kOpaque, kLastPixelOnly, kAll };

/// Red, green, blue, alpha of each pixel, in 8 or 16 bits.
std::vector<std::uint16_t> MakeValues(std::uint32_t inPixels, bool inIs16, Alpha inAlpha)
{
    std::mt19937 random(20);
    const std::uint16_t most = inIs16 ? 65535 : 255;
    std::vector<std::uint16_t> values(std::size_t{inPixels} * 4);
    for (std::size_t at = 0; at < values.size(); ++at) {
        const bool isAlpha = at % 4 == 3;
        const bool isOpaque =
            inAlpha == Alpha::kOpaque || (inAlpha == Alpha::kLastPixelOnly && at + 1 < values.size());
        // The least that is not opaque, where it is one pixel only.
        values[at] = isAlpha && isOpaque                 ? most
                     : isAlpha && inAlpha != Alpha::kAll ? static_cast<std::uint16_t>(most - 1)
                                                         : static_cast<std::uint16_t>(random() & most);
    }
    return values;
}

std::size_t OffsetOf(PixelFormat inFormat, std::size_t inChannel)
{
    static constexpr std::size_t kBGRA[] = {2, 1, 0, 3};
    return inFormat == kPixelFormat_ARGB_4444_8u ? (inChannel + 1) % 4 : kBGRA[inChannel];
}

IVideoFrameRef MakeFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight,
                         const std::vector<std::uint16_t>& inValues,
                         PixelAspectRatio inPixelAspectRatio = kPixelAspectRatio_Square)
{
    IVideoFrameRef frame;
    EXPECT_TRUE(VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, inPixelAspectRatio, false, false));
    EXPECT_TRUE(frame->InitializePixels(0));
    const Access access = frame;
    const std::size_t bytes = inFormat == kPixelFormat_BGRA_4444_16u ? 2 : 1;
    for (std::uint32_t y = 0; y < inHeight; ++y) {
        std::byte* const row = access->GetWritablePixels() + y * access->GetRowBytes();
        std::memset(row, 0, access->GetRowBytes()); // nothing that lies behind a row counts as a pixel
        for (std::size_t at = 0; at < inWidth * std::size_t{4}; ++at) {
            const std::uint16_t value = inValues[std::size_t{y} * inWidth * 4 + at];
            std::memcpy(row + (at / 4 * 4 + OffsetOf(inFormat, at % 4)) * bytes, &value, bytes);
        }
    }
    return frame;
}

std::vector<std::uint16_t> ValuesOf(const IVideoFrameRef& inFrame)
{
    const Access access = inFrame;
    const std::size_t bytes = inFrame->GetPixelFormat() == kPixelFormat_BGRA_4444_16u ? 2 : 1;
    std::vector<std::uint16_t> values;
    for (std::uint32_t y = 0; y < inFrame->GetHeight(); ++y) {
        const std::byte* const row = access->GetPixels() + y * access->GetRowBytes();
        for (std::size_t at = 0; at < inFrame->GetWidth() * std::size_t{4}; ++at) {
            std::uint16_t value = 0;
            std::memcpy(&value, row + (at / 4 * 4 + OffsetOf(inFrame->GetPixelFormat(), at % 4)) * bytes,
                        bytes);
            values.push_back(value);
        }
    }
    return values;
}

std::string ToText(const SharedRecycledMemory& inBytes)
{
    return {reinterpret_cast<const char*>(inBytes.bytes.get()), inBytes.size};
}

TEST(PNGWriting, LosesNothing)
{
    struct Form {
        const char* name;
        PixelFormat format;
        std::uint32_t width;
        std::uint32_t height;
        Alpha alpha;
        int level;
        char colorType; // 2 RGB, 6 RGB and alpha
    };
    const Form kCases[] = {
        {"BGRA8", kPixelFormat_BGRA_4444_8u, 37, 11, Alpha::kOpaque, 6, 2},
        {"BGRA8 with alpha", kPixelFormat_BGRA_4444_8u, 37, 11, Alpha::kAll, 6, 6},
        {"BGRA8 with one pixel of alpha, odd width", kPixelFormat_BGRA_4444_8u, 37, 11, Alpha::kLastPixelOnly,
         1, 6},
        {"BGRA8 with one pixel of alpha, even width", kPixelFormat_BGRA_4444_8u, 36, 11,
         Alpha::kLastPixelOnly, 1, 6},
        {"ARGB8", kPixelFormat_ARGB_4444_8u, 37, 11, Alpha::kOpaque, 3, 2},
        {"ARGB8 with alpha", kPixelFormat_ARGB_4444_8u, 37, 11, Alpha::kAll, 3, 6},
        {"ARGB8 with one pixel of alpha", kPixelFormat_ARGB_4444_8u, 37, 11, Alpha::kLastPixelOnly, 0, 6},
        {"BGRA16", kPixelFormat_BGRA_4444_16u, 37, 11, Alpha::kOpaque, 9, 2},
        {"BGRA16 with alpha", kPixelFormat_BGRA_4444_16u, 37, 11, Alpha::kAll, 9, 6},
        {"BGRA16 with one pixel of alpha", kPixelFormat_BGRA_4444_16u, 37, 11, Alpha::kLastPixelOnly, 6, 6},
        {"one pixel", kPixelFormat_BGRA_4444_8u, 1, 1, Alpha::kOpaque, 6, 2},
        {"one pixel with alpha", kPixelFormat_ARGB_4444_8u, 1, 1, Alpha::kAll, 6, 6},
        {"more than one chunk of data", kPixelFormat_BGRA_4444_16u, 500, 300, Alpha::kAll, 1, 6},
        {"level below all", kPixelFormat_BGRA_4444_8u, 5, 5, Alpha::kOpaque, -1, 2},
        {"level above all", kPixelFormat_BGRA_4444_8u, 5, 5, Alpha::kOpaque, 100, 2},
    };
    for (const Form& test : kCases) {
        SCOPED_TRACE(test.name);
        const bool is16 = test.format == kPixelFormat_BGRA_4444_16u;
        const std::vector<std::uint16_t> values = MakeValues(test.width * test.height, is16, test.alpha);
        const IVideoFrameRef frame = MakeFrame(test.format, test.width, test.height, values);
        frame->PrepareForSharing();
        const SharedRecycledMemory bytes = VF::CompressPNG(frame, test.level);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(ToText(bytes)[25], test.colorType);
        EXPECT_EQ(ToText(bytes).find("pHYs"), std::string::npos);
        const IVideoFrameRef again = VF::DecompressPNG(bytes);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->GetPixelFormat(), is16 ? kPixelFormat_BGRA_4444_16u : kPixelFormat_BGRA_4444_8u);
        EXPECT_EQ(again->GetWidth(), test.width);
        EXPECT_EQ(ValuesOf(again), values);
    }
}

TEST(PNGWriting, NotesTheShapeOfPixels)
{
    const struct {
        const char* name;
        PixelAspectRatio ratio;
        std::string chunk; // empty: none
    } kCases[] = {
        {"square", {1, 1}, ""},
        {"square, written oddly", {7, 7}, ""},
        {"unset", {0, 0}, ""},
        {"wide", {1460, 1000}, BigEndian(50, 4) + BigEndian(73, 4) + '\0'},
        {"narrow", {10, 11}, BigEndian(11, 4) + BigEndian(10, 4) + '\0'},
        {"beyond 31 bits", {0xFFFFFFFF, 2}, BigEndian(1, 4) + BigEndian(0x7FFFFFFF, 4) + '\0'},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const std::string file =
            ToText(VF::CompressPNG(MakeFrame(kPixelFormat_BGRA_4444_8u, 1, 1, {1, 2, 3, 255}, test.ratio)));
        ASSERT_FALSE(file.empty());
        if (test.chunk.empty()) {
            EXPECT_EQ(file.find("pHYs"), std::string::npos);
        } else {
            EXPECT_NE(file.find(Chunk("pHYs", test.chunk)), std::string::npos);
        }
    }
}

TEST(PNGWriting, ConvertsWhatPNGDoesNotKnow)
{
    const struct {
        PixelFormat from;
        PixelFormat expected;
        int tolerance; // rounding to the formats' own codes and back
    } kCases[] = {
        {kPixelFormat_UYVY_422_8u, kPixelFormat_BGRA_4444_8u, 2},
        {kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_8u, 2},
        {kPixelFormat_V210_422_10u, kPixelFormat_BGRA_4444_16u, 128},
        {kPixelFormat_BGRA_4444_32f, kPixelFormat_BGRA_4444_16u, 0},
    };
    const std::vector<std::uint16_t> color = {60000, 30000, 10000, 65535};
    std::vector<std::uint16_t> values;
    for (int pixel = 0; pixel < 24; ++pixel) {
        values.insert(values.end(), color.begin(), color.end());
    }
    for (const auto& test : kCases) {
        SCOPED_TRACE(NameOf(test.from));
        IVideoFrameRef frame;
        ASSERT_TRUE(VF::CreateVideoFrame(frame, test.from, 6, 4, {4, 3}, false, false));
        ASSERT_TRUE(frame->InitializePixels(0));
        ASSERT_TRUE(VF::VideoFrameManipulators::CopyFrame(MakeFrame(kPixelFormat_BGRA_4444_16u, 6, 4, values),
                                                          frame, kRenderQuality_High, {}));
        const SharedRecycledMemory bytes = VF::CompressPNG(frame);
        ASSERT_TRUE(bytes);
        EXPECT_NE(ToText(bytes).find("pHYs"), std::string::npos);
        const IVideoFrameRef again = VF::DecompressPNG(bytes);
        ASSERT_TRUE(again);
        ASSERT_EQ(again->GetPixelFormat(), test.expected);
        const int scale = test.expected == kPixelFormat_BGRA_4444_8u ? 257 : 1;
        const std::vector<std::uint16_t> decoded = ValuesOf(again);
        for (std::size_t at = 0; at < decoded.size(); ++at) {
            ASSERT_NEAR(decoded[at], values[at] / static_cast<double>(scale), test.tolerance) << at;
        }
    }
}

TEST(PNGWriting, GivesNothingWithoutPixels)
{
    const TraceRecorder trace("PNG");
    EXPECT_FALSE(VF::CompressPNG({}));
    IVideoFrameRef frame;
    ASSERT_TRUE(VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, 4, 4, {1, 1}, false, false));
    EXPECT_FALSE(VF::CompressPNG(frame));
    EXPECT_THAT(trace.Lines(), testing::ElementsAre(testing::HasSubstr("there is no frame"),
                                                    testing::HasSubstr("it has no memory")));
}

} // namespace
