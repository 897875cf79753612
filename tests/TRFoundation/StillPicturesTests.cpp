#include <TR/StaticImageFactory.h>

#include <VF/PNG.h>
#include <VF/SharedVideoFrameCache.h>
#include <VF/VideoFrames.h>
#include <kiocore/platform/Bundle.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

using namespace kiomediatypes;
using MF::IVideoFrameRef;
using TR::StaticImageFactory;

constexpr unsigned kWidth = 1920;
constexpr unsigned kHeight = 1080;

IVideoFrameRef LoadNatural(int inImage, PixelFormat inFormat)
{
    return StaticImageFactory::LoadImage(inImage, kWidth, kHeight, inFormat, kPixelAspectRatio_Square,
                                         kRenderQuality_Medium, false);
}

class StillPictures : public testing::Test {
protected:
    void SetUp() override
    {
        VF::SharedVideoFrameCache::Clear();
        StaticImageFactory::InitializeDefault();
    }
    void TearDown() override
    {
        StaticImageFactory::TerminateDefault();
        VF::SharedVideoFrameCache::Clear();
    }
};

TEST_F(StillPictures, LieBesideTheLibrary)
{
    constexpr StaticImageFactory::Image kImages[] = {
        StaticImageFactory::kMediaPending,      StaticImageFactory::kMediaOffline,
        StaticImageFactory::kPlayingOnHardware, StaticImageFactory::kCapturePreviewOnHardware,
        StaticImageFactory::kMediaOfflineStill, StaticImageFactory::kAudioVideoClip,
    };
    for (const auto image : kImages) {
        SCOPED_TRACE(image);
        const IVideoFrameRef frame = LoadNatural(image, kPixelFormat_BGRA_4444_8u);
        ASSERT_TRUE(frame);
        ASSERT_EQ(frame->GetPixelFormat(), kPixelFormat_BGRA_4444_8u);
        ASSERT_EQ(frame->GetWidth(), kWidth);
        ASSERT_EQ(frame->GetHeight(), kHeight);
        const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> access = frame;
        std::uint64_t bright = 0;
        for (unsigned y = 0; y < kHeight; ++y) {
            const std::byte* const row = access->GetPixels() + y * access->GetRowBytes();
            for (unsigned x = 0; x < kWidth; ++x) {
                ASSERT_EQ(row[x * 4 + 3], std::byte{255}) << x << ", " << y;
                bright += row[x * 4 + 1] > std::byte{128};
            }
        }
        // A bright drawing on a dark ground, neither of them missing.
        EXPECT_GT(bright, kWidth * kHeight / 200);
        EXPECT_LT(bright, kWidth * kHeight / 10);
        EXPECT_LT(access->GetPixels()[1], std::byte{64});
    }
}

TEST_F(StillPictures, AreFoundByTheirNamesOnly)
{
    using kiocore::utility::GetBinaryFromModule;
    const CFBundleRef bundle = kiocore::platform::BundleWithIdentifier("org.halcyon.TRFoundation");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(kiocore::platform::BundleWithIdentifier("org.halcyon.TRFoundation"), bundle);
    EXPECT_FALSE(kiocore::platform::BundleWithIdentifier("org.halcyon.NotLoaded"));
    EXPECT_FALSE(kiocore::platform::BundleWithIdentifier(""));

    const std::vector<std::byte> before = {std::byte{7}};
    std::vector<std::byte> bytes = before;
    EXPECT_FALSE(GetBinaryFromModule(nullptr, u"ColorBars", u"png", bytes));
    EXPECT_FALSE(GetBinaryFromModule(bundle, u"NoSuchPicture", u"png", bytes));
    EXPECT_FALSE(GetBinaryFromModule(bundle, u"ColorBars", u"jpg", bytes));
    EXPECT_FALSE(GetBinaryFromModule(bundle, u"", u"png", bytes));
    EXPECT_FALSE(GetBinaryFromModule(bundle, u"../TRFoundation/ColorBars", u"png", bytes));
    EXPECT_EQ(bytes, before);
    ASSERT_TRUE(GetBinaryFromModule(bundle, u"ColorBars", u"png", bytes));
    const char kStart[] = "\x89PNG";
    ASSERT_GT(bytes.size(), sizeof(kStart));
    EXPECT_EQ(std::memcmp(bytes.data(), kStart, 4), 0);
}

using Codes = std::array<int, 3>; // Y, Cb, Cr of 10 bits

/// BT.709, limited range, rounded to nearest.
Codes CodesAt(const VF::IVideoFrameMemoryAccess& inPixels, unsigned inX, unsigned inY)
{
    std::uint16_t bgra[4];
    std::memcpy(bgra, inPixels.GetPixels() + inY * inPixels.GetRowBytes() + std::size_t{inX} * 8, 8);
    const double blue = bgra[0] / 65535.0;
    const double green = bgra[1] / 65535.0;
    const double red = bgra[2] / 65535.0;
    const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return {static_cast<int>(std::lround(64 + 876 * luma)),
            static_cast<int>(std::lround(512 + 896 * (blue - luma) / 1.8556)),
            static_cast<int>(std::lround(512 + 896 * (red - luma) / 1.5748))};
}

constexpr Codes Grey(int inLuma)
{
    return {inLuma, 512, 512};
}

struct Patch {
    const char* name;
    unsigned width;
    Codes codes;
};

// SMPTE RP 219-1. Where it leaves a choice: white in the second row, black in the third. -2 % shows as black.
const struct {
    unsigned top;
    unsigned height;
    std::vector<Patch> patches;
} kRows[] = {
    {0,
     630,
     {{"40 % grey", 240, Grey(414)},
      {"75 % white", 206, Grey(721)},
      {"75 % yellow", 206, {674, 176, 543}},
      {"75 % cyan", 206, {581, 589, 176}},
      {"75 % green", 204, {534, 253, 207}},
      {"75 % magenta", 206, {251, 771, 817}},
      {"75 % red", 206, {204, 435, 848}},
      {"75 % blue", 206, {111, 848, 481}},
      {"40 % grey", 240, Grey(414)}}},
    {630,
     90,
     {{"100 % cyan", 240, {754, 615, 64}},
      {"100 % white", 206, Grey(940)},
      {"75 % white", 1234, Grey(721)},
      {"100 % blue", 240, {127, 960, 471}}}},
    {720,
     90,
     {{"100 % yellow", 240, {877, 64, 553}},
      {"black", 206, Grey(64)},
      {"ramp", 1028, {}},
      {"100 % white", 206, Grey(940)},
      {"100 % red", 240, {250, 409, 960}}}},
    {810,
     270,
     {{"15 % grey", 240, Grey(195)},
      {"black", 309, Grey(64)},
      {"100 % white", 411, Grey(940)},
      {"black", 171, Grey(64)},
      {"-2 %", 69, Grey(64)},
      {"black", 68, Grey(64)},
      {"+2 %", 69, Grey(82)},
      {"black", 68, Grey(64)},
      {"+4 %", 69, Grey(99)},
      {"black", 206, Grey(64)},
      {"15 % grey", 240, Grey(195)}}},
};

/// Each as near to the straight line as codes can be.
Codes RampCodes(unsigned inColumn, unsigned inWidth)
{
    return Grey(static_cast<int>(std::lround(64 + 876.0 * inColumn / (inWidth - 1))));
}

TEST_F(StillPictures, ColorBarsHaveTheCodesOfTheStandard)
{
    const IVideoFrameRef frame = LoadNatural(StaticImageFactory::kColorBars, kPixelFormat_BGRA_4444_16u);
    ASSERT_TRUE(frame);
    ASSERT_EQ(frame->GetPixelFormat(), kPixelFormat_BGRA_4444_16u);
    ASSERT_EQ(frame->GetWidth(), kWidth);
    ASSERT_EQ(frame->GetHeight(), kHeight);
    const VF::InterfaceRef<VF::IVideoFrameMemoryAccess> pixels = frame;
    for (const auto& row : kRows) {
        unsigned x = 0;
        for (const Patch& patch : row.patches) {
            const bool isRamp = patch.codes == Codes{};
            for (unsigned column = 0; column < patch.width; ++column, ++x) {
                const Codes expected = isRamp ? RampCodes(column, patch.width) : patch.codes;
                for (const unsigned y : {row.top, row.top + row.height / 2, row.top + row.height - 1}) {
                    ASSERT_EQ(CodesAt(*pixels, x, y), expected) << patch.name << " at " << x << ", " << y;
                }
            }
        }
        EXPECT_EQ(x, kWidth);
    }
}

} // namespace
