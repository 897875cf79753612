#include "support/TraceRecorder.h"

#include <TR/StaticImageFactory.h>
#include <TR/TRFoundation.h>

#include <VF/SharedVideoFrameCache.h>
#include <VF/VideoFrames.h>

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using namespace kiomediatypes;
using kiocore::InterfaceRef;
using MF::IVideoFrameRef;
using TR::StaticImageFactory;
using VF::SharedVideoFrameCache;

constexpr int kStills[] = {1, 2, 3, 4, 5, 6, 8, 10000};

std::vector<int> sAsked;

IVideoFrameRef NewFrame(std::uint32_t inWidth, std::uint32_t inHeight, PixelFormat inFormat)
{
    IVideoFrameRef frame;
    VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, kPixelAspectRatio_Square, true, false);
    frame->InitializePixels(0);
    return frame;
}

/// Knows every image but 4, and notes what it is asked for.
IVideoFrameRef Load(int inImage)
{
    sAsked.push_back(inImage);
    return inImage == 4 ? IVideoFrameRef() : NewFrame(64, 36, kPixelFormat_BGRA_4444_8u);
}

class StaticImageFactoryTest : public testing::Test {
protected:
    void SetUp() override
    {
        SharedVideoFrameCache::Clear();
        sAsked.clear();
        StaticImageFactory::Register(&Load);
    }
    void TearDown() override
    {
        StaticImageFactory::Register(nullptr);
        SharedVideoFrameCache::Clear();
    }
    static IVideoFrameRef Ask(int inImage, unsigned int inWidth, unsigned int inHeight,
                              PixelFormat inFormat = kPixelFormat_BGRA_4444_8u,
                              PixelAspectRatio inRatio = kPixelAspectRatio_Square,
                              RenderQuality inQuality = kRenderQuality_Medium, bool inBlank = true)
    {
        return StaticImageFactory::LoadImage(inImage, inWidth, inHeight, inFormat, inRatio, inQuality,
                                             inBlank);
    }
    static std::uint64_t Kept() { return SharedVideoFrameCache::GetStatistics().frames; }
};

TEST_F(StaticImageFactoryTest, LoadsOnceAndMakesEachFormOnce)
{
    const auto natural = Ask(5, 64, 36);
    ASSERT_TRUE(natural);
    EXPECT_EQ(Kept(), 1u); // has the form asked for, so it is the answer itself
    EXPECT_EQ(Ask(5, 64, 36, kPixelFormat_BGRA_4444_8u, kPixelAspectRatio_Square, kRenderQuality_High),
              natural); // whatever the quality

    const struct {
        const char* name;
        unsigned int width, height;
        PixelFormat format;
        PixelAspectRatio ratio;
        RenderQuality quality;
    } kForms[] = {
        {"width", 63, 36, kPixelFormat_BGRA_4444_8u, {1, 1}, kRenderQuality_Medium},
        {"height", 64, 37, kPixelFormat_BGRA_4444_8u, {1, 1}, kRenderQuality_Medium},
        {"format", 64, 36, kPixelFormat_UYVY_422_8u, {1, 1}, kRenderQuality_Medium},
        {"pixel aspect ratio", 64, 36, kPixelFormat_BGRA_4444_8u, {2, 2}, kRenderQuality_Medium},
        {"quality", 63, 36, kPixelFormat_BGRA_4444_8u, {1, 1}, kRenderQuality_High},
    };
    std::uint64_t kept = 1;
    for (const auto& form : kForms) {
        SCOPED_TRACE(form.name);
        const auto frame = Ask(5, form.width, form.height, form.format, form.ratio, form.quality);
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->GetWidth(), form.width);
        EXPECT_EQ(frame->GetHeight(), form.height);
        EXPECT_EQ(frame->GetPixelFormat(), form.format);
        EXPECT_EQ(frame->GetPixelAspectRatio(), form.ratio);
        EXPECT_EQ(InterfaceRef<VF::IVideoFrameMemoryAccess>(frame)->GetWritablePixels(), nullptr);
        EXPECT_EQ(Kept(), ++kept);
        const support::TraceRecorder trace("Host");
        EXPECT_EQ(Ask(5, form.width, form.height, form.format, form.ratio, form.quality), frame);
        EXPECT_EQ(trace.CountContaining("CopyFrame"), 0);
    }
    EXPECT_EQ(sAsked, std::vector<int>{5});
}

TEST_F(StaticImageFactoryTest, WhatCannotBeLoadedIsBlankAndStaysSo)
{
    EXPECT_FALSE(Ask(4, 10, 6, kPixelFormat_UYVY_422_8u, {1, 1}, kRenderQuality_Medium, false));
    EXPECT_EQ(Kept(), 0u);
    const auto blank = Ask(4, 10, 6, kPixelFormat_UYVY_422_8u);
    ASSERT_TRUE(blank);
    const std::uint8_t black[] = {128, 16, 128, 16};
    EXPECT_EQ(std::memcmp(InterfaceRef<VF::IVideoFrameMemoryAccess>(blank)->GetPixels(), black, 4), 0);
    // The blank frame is the natural image now: found without asking, also when blanks are not wanted.
    EXPECT_EQ(Ask(4, 10, 6, kPixelFormat_UYVY_422_8u, {1, 1}, kRenderQuality_Medium, false), blank);
    EXPECT_EQ(sAsked, (std::vector<int>{4, 4}));
    EXPECT_FALSE(Ask(9, 0, 6)); // no frame has no width
    EXPECT_EQ(StaticImageFactory::LoadImage(4, 10, 6, kPixelFormat_UYVY_422_8u, {1, 1}, kRenderQuality_Draft),
              blank);
}

TEST_F(StaticImageFactoryTest, WithoutALoaderOnlyWhatIsKeptIsServed)
{
    const auto kept = Ask(1, 64, 36);
    StaticImageFactory::Register(nullptr);
    EXPECT_EQ(Ask(1, 64, 36), kept);
    EXPECT_FALSE(Ask(2, 64, 36, kPixelFormat_BGRA_4444_8u, {1, 1}, kRenderQuality_Medium, false));
    EXPECT_EQ(Kept(), 1u);
}

TEST_F(StaticImageFactoryTest, TheImageThatDependsOnTheSizeIsLoadedForEachForm)
{
    const auto small = Ask(7, 32, 18);
    const auto same = Ask(7, 32, 18); // the finished frame is found
    EXPECT_EQ(same, small);
    EXPECT_EQ(sAsked.size(), 1u);
    EXPECT_EQ(Kept(), 2u);
    Ask(7, 32, 18, kPixelFormat_UYVY_422_8u); // its natural image is kept, but never found again
    EXPECT_EQ(sAsked.size(), 2u);
    EXPECT_EQ(Kept(), 3u);
    // One that comes in the very form is nowhere found again: the loader is asked each time.
    Ask(7, 64, 36);
    Ask(7, 64, 36);
    EXPECT_EQ(sAsked.size(), 4u);
}

TEST_F(StaticImageFactoryTest, KeysAreMadeOfTheWholeForm)
{
    // Machine byte order, as the mixer is fed.
    std::vector<std::byte> bytes(41);
    std::memcpy(bytes.data(), "TR::StaticImageFactory::MakeImageCacheKey", 41);
    const auto add = [&](auto inValue) {
        const auto* first = reinterpret_cast<const std::byte*>(&inValue);
        bytes.insert(bytes.end(), first, first + sizeof(inValue));
    };
    add(std::int32_t{5});
    add(std::uint32_t{30});
    add(std::uint32_t{20});
    add(static_cast<std::uint64_t>(kPixelFormat_V210_422_10u));
    add(std::uint32_t{12});
    add(std::uint32_t{11});
    add(std::int32_t{kRenderQuality_High});
    const auto frame = NewFrame(8, 8, kPixelFormat_BGRA_4444_8u);
    SharedVideoFrameCache::AddToCache(kiocore::Guid::FromHash(bytes), frame, 10);
    EXPECT_EQ(Ask(5, 30, 20, kPixelFormat_V210_422_10u, {12, 11}, kRenderQuality_High), frame);
}

TEST(StaticImages, ComeFromTheLibrarysResourcesOnceEach)
{
    SharedVideoFrameCache::Clear();
    TR::TRFoundation::Initialize();
    const struct {
        unsigned int width, height;
        PixelFormat format;
    } kForms[] = {{1920, 1080, kPixelFormat_BGRA_4444_8u},
                  {640, 360, kPixelFormat_BGRA_4444_8u},
                  {640, 360, kPixelFormat_UYVY_422_8u},
                  {480, 270, kPixelFormat_V210_422_10u}};
    const auto request = [&](int inImage, int inForm) {
        const auto& form = kForms[inForm];
        const auto frame = StaticImageFactory::LoadImage(inImage, form.width, form.height, form.format,
                                                         kPixelAspectRatio_Square, kRenderQuality_Medium);
        ASSERT_TRUE(frame) << inImage;
        EXPECT_EQ(frame->GetPixelFormat(), form.format);
    };
    const support::TraceRecorder trace("Host");
    for (int count = 0; count < 500; ++count) {
        request(kStills[count % 8], count / 8 % 4);
    }
    const std::string load = "Lock(\"LoadTRStaticImageAtNaturalSize\"";
    EXPECT_EQ(trace.CountContaining(load), 8);
    EXPECT_EQ(trace.CountContaining("VF::DecompressPNG"), 7); // there is no picture of 4
    // 1, 2, 3, 6, 8 and 10000 have the first form by nature, the bars have 16 bits, 4 has whatever came
    // first.
    EXPECT_LE(trace.CountContaining("CopyFrame"), 8 * 4);
    for (int count = 0; count < 5; ++count) {
        request(7, count % 2);
    }
    EXPECT_EQ(trace.CountContaining(load), 13);

    SharedVideoFrameCache::Clear();
    StaticImageFactory::SetStaticImageResourceName(StaticImageFactory::kMediaOfflineStill, u"ColorBars");
    StaticImageFactory::SetStaticImageResourceName(StaticImageFactory::kPlayingOnHardware, u"Nothing");
    const auto natural = [](int inImage) {
        return StaticImageFactory::LoadImage(inImage, 1920, 1080, kPixelFormat_BGRA_4444_16u,
                                             kPixelAspectRatio_Square, kRenderQuality_Medium, false);
    };
    const auto bars = natural(StaticImageFactory::kColorBars);
    ASSERT_TRUE(bars);
    const auto pixels = [](const IVideoFrameRef& inFrame) {
        return InterfaceRef<VF::IVideoFrameMemoryAccess>(inFrame)->GetPixels();
    };
    for (const int image : {2, 8}) { // renamed together; 3 cannot be renamed
        ASSERT_TRUE(natural(image));
        EXPECT_EQ(std::memcmp(pixels(natural(image)), pixels(bars), bars->GetSizeBytes()), 0);
    }
    ASSERT_TRUE(natural(3));
    StaticImageFactory::SetStaticImageResourceName(StaticImageFactory::kMediaOffline, u"MediaOffline");
    TR::TRFoundation::Shutdown();
    SharedVideoFrameCache::Clear();
}

} // namespace
