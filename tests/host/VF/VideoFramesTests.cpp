#include "support/TraceRecorder.h"

#include <VF/VideoFrames.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using namespace kiomediatypes;
using kiocore::InterfaceRef;
using VF::IVideoFrameMemoryAccess;

TEST(VideoFrames, LieInMemoryAsTheirFormatsSay)
{
    const struct {
        const char* name;
        PixelFormat format;
        std::uint32_t width;
        std::uint32_t height;
        std::vector<std::size_t> unpadded; // bytes of a row, by plane
        std::vector<std::size_t> aligned;
        std::vector<std::uint32_t> rows;
    } kCases[] = {
        {"four bytes a pixel", kPixelFormat_BGRA_4444_8u, 17, 3, {68}, {128}, {3}},
        {"sixteen bytes a pixel", kPixelFormat_BGRA_4444_32f, 4, 1, {64}, {64}, {1}},
        {"an odd pixel has a pair of its own", kPixelFormat_UYVY_422_8u, 7, 2, {16}, {64}, {2}},
        {"six pixels in sixteen bytes", kPixelFormat_V210_422_10u, 13, 1, {48}, {128}, {1}},
        {"48 pixels fill what v210 aligns to", kPixelFormat_V210_422_10u, 48, 1, {128}, {128}, {1}},
        {"chroma is halved upwards",
         kPixelFormat_YUV_420_8u_Planar,
         65,
         5,
         {65, 33, 33},
         {128, 64, 64},
         {5, 3, 3}},
        {"one pixel", kPixelFormat_YUV_420_8u_Planar, 1, 1, {1, 1, 1}, {64, 64, 64}, {1, 1, 1}},
    };
    for (const auto& test : kCases) {
        for (const bool unpadded : {true, false}) {
            SCOPED_TRACE(std::string(test.name) + (unpadded ? ", unpadded" : ", aligned"));
            MF::IVideoFrameRef frame;
            ASSERT_TRUE(VF::CreateVideoFrame(frame, test.format, test.width, test.height, {12, 11},
                                             color::kColorSpace_BT601_525, true, unpadded));
            EXPECT_EQ(frame->GetWidth(), test.width);
            EXPECT_EQ(frame->GetHeight(), test.height);
            EXPECT_EQ(frame->GetPixelFormat(), test.format);
            EXPECT_EQ(frame->GetPixelAspectRatio(), (PixelAspectRatio{12, 11}));
            EXPECT_EQ(frame->GetColorSpace(), color::kColorSpace_BT601_525);
            const InterfaceRef<IVideoFrameMemoryAccess> access = frame;
            EXPECT_EQ(access->GetPixels(), nullptr);
            ASSERT_TRUE(frame->InitializePixels(0));
            ASSERT_EQ(access->GetPlaneCount(), static_cast<int>(test.rows.size()));
            const std::byte* expected = access->GetPixels();
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(expected) % 64, 0u);
            for (int plane = 0; plane < access->GetPlaneCount(); ++plane) {
                EXPECT_EQ(access->GetRowBytes(plane), (unpadded ? test.unpadded : test.aligned)[plane]);
                EXPECT_EQ(access->GetRowCount(plane), test.rows[plane]);
                EXPECT_EQ(access->GetPixels(plane), expected);
                expected += access->GetRowBytes(plane) * access->GetRowCount(plane);
            }
            EXPECT_EQ(static_cast<std::uint64_t>(expected - access->GetPixels()), frame->GetSizeBytes());
            const std::vector<std::byte> zeros(frame->GetSizeBytes());
            EXPECT_EQ(std::memcmp(access->GetPixels(), zeros.data(), zeros.size()), 0);
        }
    }
}

TEST(VideoFrames, OtherFormsThanTheOneWithAColourSpaceAreAlwaysAligned)
{
    MF::IVideoFrameRef frame;
    ASSERT_TRUE(
        VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, 3, 3, kPixelAspectRatio_Square, false, true));
    EXPECT_EQ(InterfaceRef<IVideoFrameMemoryAccess>(frame)->GetRowBytes(), 64u);
    EXPECT_EQ(frame->GetColorSpace(), color::GetDefaultColorSpace());
}

TEST(VideoFrames, AreRefusedWithAReason)
{
    const struct {
        const char* name;
        PixelFormat format;
        std::uint32_t width;
        std::uint32_t height;
        const char* reason;
    } kCases[] = {
        {"no width", kPixelFormat_BGRA_4444_8u, 0, 8, "bgra8 and 0 x 8"},
        {"no height", kPixelFormat_UYVY_422_8u, 8, 0, "uyvy and 8 x 0"},
        {"any format is none", kPixelFormat_Any, 8, 8, "expected a known format"},
        {"too wide", kPixelFormat_BGRA_4444_8u, 65536, 1, "65535"},
        {"more than the machine has", kPixelFormat_BGRA_4444_32f, 65535, 65535, "than this machine has"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const support::TraceRecorder trace("Frames");
        MF::IVideoFrameRef frame;
        EXPECT_FALSE(VF::CreateVideoFrame(frame, test.format, test.width, test.height,
                                          kPixelAspectRatio_Square, false, false));
        EXPECT_FALSE(frame);
        EXPECT_EQ(trace.CountContaining(test.reason), 1);
    }
}

TEST(VideoFrames, ClearToOpaqueBlackUntilShared)
{
    const struct {
        PixelFormat format;
        color::Range range;
        std::vector<std::vector<std::uint8_t>> beginning; // of each plane
    } kCases[] = {
        {kPixelFormat_BGRA_4444_8u, color::Range::kLimited, {{0, 0, 0, 255, 0, 0, 0, 255}}},
        {kPixelFormat_ARGB_4444_8u, color::Range::kLimited, {{255, 0, 0, 0, 255, 0, 0, 0}}},
        {kPixelFormat_BGRA_4444_16u, color::Range::kLimited, {{0, 0, 0, 0, 0, 0, 255, 255, 0, 0}}},
        {kPixelFormat_BGRA_4444_32f,
         color::Range::kLimited,
         {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 128, 63}}},
        {kPixelFormat_UYVY_422_8u, color::Range::kLimited, {{128, 16, 128, 16}}},
        {kPixelFormat_UYVY_422_8u, color::Range::kFull, {{128, 0, 128, 0}}},
        // 512 | 64 << 10 | 512 << 20, then 64 | 512 << 10 | 64 << 20
        {kPixelFormat_V210_422_10u, color::Range::kLimited, {{0, 2, 1, 32, 64, 0, 8, 4}}},
        {kPixelFormat_YUV_420_8u_Planar, color::Range::kLimited, {{16, 16}, {128}, {128}}},
        {kPixelFormat_YUV_420_8u_Planar, color::Range::kFull, {{0, 0}, {128}, {128}}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(NameOf(test.format));
        color::ColorSpace colorSpace;
        colorSpace.range = test.range;
        MF::IVideoFrameRef frame;
        ASSERT_TRUE(VF::CreateVideoFrame(frame, test.format, 17, 5, kPixelAspectRatio_Square, colorSpace,
                                         false, false));
        const InterfaceRef<MF::IVideoFrameClearable> clearable = frame;
        const InterfaceRef<IVideoFrameMemoryAccess> access = frame;
        clearable->Clear(); // nothing there yet
        ASSERT_TRUE(frame->InitializePixels(0));
        clearable->Clear();
        for (int plane = 0; plane < access->GetPlaneCount(); ++plane) {
            const auto& beginning = test.beginning[plane];
            const std::size_t lastRow = access->GetRowBytes(plane) * (access->GetRowCount(plane) - 1);
            EXPECT_EQ(std::memcmp(access->GetPixels(plane), beginning.data(), beginning.size()), 0);
            EXPECT_EQ(std::memcmp(access->GetPixels(plane) + lastRow, beginning.data(), beginning.size()), 0);
        }
        access->GetWritablePixels()[0] = std::byte{77};
        frame->PrepareForSharing();
        EXPECT_EQ(access->GetWritablePixels(), nullptr);
        clearable->Clear();
        EXPECT_EQ(access->GetPixels()[0], std::byte{77});
    }
}

} // namespace
