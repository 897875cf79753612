#include "DifferenceReference.h"

#include <VF/Difference.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>

#include <support/FrameSamples.h>
#include <support/GuardedFrame.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <hwy/targets.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

using namespace kiomediatypes;
using namespace support;
using MF::IVideoFrameRef;
using VF::ComputeDifferenceImages;

constexpr color::ColorSpace kFullRange{color::Primaries::kBT709, color::Transfer::kBT709,
                                       color::Matrix::kBT709, color::Range::kFull};

GuardedFrameRef MakeFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight,
                          std::size_t inPadding = 0, const color::ColorSpace& inColorSpace = {})
{
    return GuardedFrame::Make(
        {inFormat, inWidth, inHeight, inColorSpace, GuardedFrame::Touches::kUpperPage, inPadding});
}

/// Aligned rows that a large picture's are.
IVideoFrameRef MakeAlignedFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight)
{
    IVideoFrameRef frame;
    EXPECT_TRUE(VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, {1, 1}, false, false));
    EXPECT_TRUE(frame->InitializePixels(0));
    return frame;
}

double RandomCode(const FrameSamples& inSamples, std::mt19937& ioRandom)
{
    if (inSamples.Full() != 1) {
        return ioRandom() % 8 == 0
                   ? (ioRandom() % 2) * inSamples.Full()
                   : std::floor(std::uniform_real_distribution(0.0, inSamples.Full() + 1)(ioRandom));
    }
    static constexpr float kOdd[] = {0.0f,
                                     -0.0f,
                                     1.0f,
                                     std::numeric_limits<float>::infinity(),
                                     -std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN(),
                                     3e38f,
                                     -3e38f,
                                     1e-44f};
    return ioRandom() % 8 == 0 ? kOdd[ioRandom() % std::size(kOdd)]
                               : static_cast<float>(std::uniform_real_distribution(-0.5, 1.5)(ioRandom));
}

/// Noise in both; of so many samples in a thousand the second's is another, of half of these by one step.
void FillPair(const IVideoFrameRef& outFirst, const IVideoFrameRef& outSecond, unsigned inThousandths,
              std::mt19937& ioRandom)
{
    FrameSamples first(outFirst);
    FrameSamples second(outSecond);
    for (int component = 0; component < first.Count(); ++component) {
        for (std::uint32_t y = 0; y < first.Height(component); ++y) {
            for (std::uint32_t x = 0; x < first.Width(component); ++x) {
                const double code = RandomCode(first, ioRandom);
                first.Set(component, x, y, code);
                double other = code;
                if (ioRandom() % 1000 < inThousandths) {
                    other = ioRandom() % 2      ? RandomCode(first, ioRandom)
                            : first.Full() == 1 ? std::nextafter(static_cast<float>(code), 2.0f)
                                                : (code == 0 ? 1 : code - 1);
                }
                second.Set(component, x, y, other);
            }
        }
    }
}

void ExpectPainted(const IVideoFrameRef& inPainted, const ExpectedDifference& inExpected)
{
    const FrameSamples painted(inPainted);
    const double tolerance = painted.Full() == 1 ? 1e-7 : 0;
    for (int component = 0; component < painted.Count(); ++component) {
        for (std::uint32_t y = 0; y < painted.Height(component); ++y) {
            for (std::uint32_t x = 0; x < painted.Width(component); ++x) {
                const bool isHalved = painted.Width(component) != inPainted->GetWidth() && component > 0;
                const std::size_t pixel = std::size_t{y} * inPainted->GetWidth() + x;
                const double expected =
                    CodeOf(inPainted, component, inExpected.painted[isHalved ? 0 : pixel]);
                ASSERT_NEAR(painted.Get(component, x, y), expected, tolerance)
                    << "component " << component << " at " << x << ", " << y;
            }
        }
    }
}

void ExpectSame(const VF::ComputedDifference& inResult, const VF::DifferenceDetails& inDetails,
                const ExpectedDifference& inExpected)
{
    EXPECT_EQ(inResult.status, 0);
    EXPECT_EQ(inResult.numDiffPixels, inExpected.result.numDiffPixels);
    if (std::isfinite(inExpected.result.variance) && inExpected.result.variance > 0) {
        EXPECT_FLOAT_EQ(inResult.variance, inExpected.result.variance);
        EXPECT_NEAR(inDetails.psnr, inExpected.details.psnr, 1e-9);
    } else {
        EXPECT_EQ(inResult.variance > 0, inExpected.details.largest > 0);
    }
    EXPECT_FLOAT_EQ(static_cast<float>(inDetails.largest), static_cast<float>(inExpected.details.largest));
    const auto box = [](const VF::DifferenceDetails& inOf) {
        return std::array{inOf.left, inOf.top, inOf.width, inOf.height};
    };
    EXPECT_EQ(box(inDetails), box(inExpected.details));
    EXPECT_EQ(inDetails.differingRows, inExpected.details.differingRows);
}

/// Each set of instructions that this processor has; 0 is for a processor that has none of them.
std::vector<std::int64_t> AllTargets()
{
    std::vector<std::int64_t> targets = {0};
    for (std::int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
        targets.push_back(rest & -rest);
    }
    return targets;
}

TEST(Difference, EveryFormatAndWidthIsComparedToTheLetter)
{
    std::mt19937 random(6);
    for (const NamedPixelFormat& named : kPixelFormats) {
        for (std::uint32_t width = 1; width <= 70; ++width) {
            const std::uint32_t height = width % 4 + 1;
            const float tolerance =
                std::array{0.0f, 1 / 255.0f, 0.2f, 1 / 1023.0f, 1.0f, 1 / 65535.0f}[random() % 6];
            const unsigned thousandths = std::array{0u, 3u, 100u, 1000u}[random() % 4];
            SCOPED_TRACE(std::string(named.name) + ", " + std::to_string(width) + " x " +
                         std::to_string(height) + ", tolerance " + std::to_string(tolerance) + ", " +
                         std::to_string(thousandths));
            const color::ColorSpace space = width % 3 == 0 ? kFullRange : color::ColorSpace{};
            // Paddings that differ, in bytes and in length: rows begin anywhere and what follows them is no
            // pixel.
            const GuardedFrameRef first = MakeFrame(named.format, width, height, 4);
            const GuardedFrameRef second = MakeFrame(named.format, width, height, width % 2 ? 0 : 12);
            FillPair(first, second, thousandths, random);
            const ExpectedDifference expected = ExpectDifference(first, second, tolerance);
            float variance = -1;
            for (const std::int64_t target : AllTargets()) {
                SCOPED_TRACE(hwy::TargetName(target));
                hwy::GetChosenTarget().Update(target);
                const GuardedFrameRef painted = MakeFrame(named.format, width, height, 8, space);
                VF::DifferenceDetails details;
                const VF::ComputedDifference result =
                    ComputeDifferenceImages(first, second, painted, tolerance, &details);
                VF::DifferenceDetails unpainted;
                const VF::ComputedDifference again =
                    ComputeDifferenceImages(first, second, {}, tolerance, &unpainted);
                hwy::GetChosenTarget().DeInit();
                ExpectSame(result, details, expected);
                ExpectSame(again, unpainted, expected);
                ExpectPainted(painted, expected);
                EXPECT_TRUE(painted->PaddingIsIntact());
                EXPECT_TRUE(variance < 0 || variance == result.variance) << "was " << variance;
                variance = result.variance;
                if (HasFailure()) {
                    return;
                }
            }
            if (!IsYUV(named.format)) {
                SCOPED_TRACE("in place of the second");
                VF::DifferenceDetails details;
                const VF::ComputedDifference result =
                    ComputeDifferenceImages(first, second, second, tolerance, &details);
                ExpectSame(result, details, expected);
                ExpectPainted(second, expected);
                EXPECT_TRUE(second->PaddingIsIntact());
            }
        }
    }
}

TEST(Difference, UnusedPixelsOfAGroupNeverCount)
{
    for (const PixelFormat format : {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u}) {
        SCOPED_TRACE(NameOf(format));
        const GuardedFrameRef first = MakeFrame(format, 1, 1);
        const GuardedFrameRef second = MakeFrame(format, 1, 1);
        FrameSamples(first).FillFlat({1, 2, 3, 0});
        FrameSamples(second).FillFlat({1, 2, 3, 0});
        // Of the pair's second pixel.
        *(second->GetWritablePixels(0) + (format == kPixelFormat_UYVY_422_8u ? 3 : 5)) ^= std::byte{0xFF};
        EXPECT_EQ(ComputeDifferenceImages(first, second, {}, 0).variance, 0);
    }
}

TEST(Difference, LongRowsAndLargePicturesLoseNothing)
{
    const struct {
        const char* name;
        PixelFormat format;
        std::uint32_t width;
        std::uint32_t height;
    } kCases[] = {
        {"longest row of bytes", kPixelFormat_BGRA_4444_8u, 65535, 1},
        {"longest row of words", kPixelFormat_BGRA_4444_16u, 65535, 1},
        {"longest row of 10 bits", kPixelFormat_V210_422_10u, 65535, 1},
        {"longest row of pairs", kPixelFormat_UYVY_422_8u, 65535, 1},
        {"rows past the caches, bytes", kPixelFormat_BGRA_4444_8u, 1031, 1025},
        {"rows past the caches, alpha first", kPixelFormat_ARGB_4444_8u, 1031, 1025},
        {"rows past the caches, words", kPixelFormat_BGRA_4444_16u, 1031, 1025},
        {"rows past the caches, floats", kPixelFormat_BGRA_4444_32f, 517, 1025},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const IVideoFrameRef first = MakeAlignedFrame(test.format, test.width, test.height);
        const IVideoFrameRef second = MakeAlignedFrame(test.format, test.width, test.height);
        FrameSamples samples(second);
        FrameSamples(first).FillFlat({0, 0, 0, 0});
        const double most = samples.Full();
        samples.FillFlat({most, most, most, most});
        const IVideoFrameRef painted = MakeAlignedFrame(test.format, test.width, test.height);
        const VF::ComputedDifference result = ComputeDifferenceImages(first, second, painted, 0);
        EXPECT_EQ(result.variance, 100);
        EXPECT_EQ(result.numDiffPixels, std::uint64_t{test.width} * test.height);
        if (test.height > 1) {
            // One pixel of the last row but one, in alpha only.
            FrameSamples(first).FillFlat({most, most, most, most});
            FrameSamples(first).Set(3, test.width - 1, test.height - 2, 0);
            const ExpectedDifference expected = ExpectDifference(first, second, 0);
            VF::DifferenceDetails details;
            ExpectSame(ComputeDifferenceImages(first, second, painted, 0, &details), details, expected);
            ExpectPainted(painted, expected);
        }
    }
}

TEST(Difference, AStepIsNeverNothing)
{
    const struct {
        const char* name;
        PixelFormat format;
        std::array<double, 4> first;
        std::array<double, 4> second;
    } kCases[] = {
        {"16 bits", kPixelFormat_BGRA_4444_16u, {0, 0, 0, 0}, {0, 0, 1, 0}},
        {"alpha alone", kPixelFormat_BGRA_4444_8u, {9, 9, 9, 255}, {9, 9, 9, 254}},
        {"colour that nobody sees", kPixelFormat_ARGB_4444_8u, {9, 9, 9, 0}, {8, 9, 9, 0}},
        {"the least float", kPixelFormat_BGRA_4444_32f, {0, 0, 0, 1}, {0, 0, 1e-45f, 1}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const GuardedFrameRef first = MakeFrame(test.format, 3, 2);
        const GuardedFrameRef second = MakeFrame(test.format, 3, 2);
        FrameSamples(first).FillFlat(test.first);
        FrameSamples(second).FillFlat(test.second);
        const VF::ComputedDifference result = ComputeDifferenceImages(first, second, {}, 0);
        EXPECT_EQ(result.numDiffPixels, 6u);
        EXPECT_GT(result.variance, 0);
    }
}

/// A copy in another format, without high quality's chroma, as rows are converted.
IVideoFrameRef Converted(const IVideoFrameRef& inFrame, PixelFormat inFormat,
                         RenderQuality inQuality = kRenderQuality_Medium)
{
    const IVideoFrameRef copy = MakeAlignedFrame(inFormat, inFrame->GetWidth(), inFrame->GetHeight());
    EXPECT_TRUE(VF::VideoFrameManipulators::CopyFrame(inFrame, copy, inQuality, {}));
    return copy;
}

TEST(Difference, DifferentFormatsMeetInTheDeeperOne)
{
    const struct {
        PixelFormat first;
        PixelFormat second;
        PixelFormat meet;
    } kCases[] = {
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_8u},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_16u, kPixelFormat_BGRA_4444_16u},
        {kPixelFormat_BGRA_4444_32f, kPixelFormat_BGRA_4444_16u, kPixelFormat_BGRA_4444_32f},
        {kPixelFormat_UYVY_422_8u, kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_8u},
        {kPixelFormat_V210_422_10u, kPixelFormat_UYVY_422_8u, kPixelFormat_BGRA_4444_16u},
        {kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_8u},
        {kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_32f, kPixelFormat_BGRA_4444_32f},
    };
    std::mt19937 random(3);
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(NameOf(test.first)) + " and " + NameOf(test.second));
        const IVideoFrameRef first = MakeAlignedFrame(test.first, 37, 5);
        const IVideoFrameRef same = MakeAlignedFrame(test.first, 37, 5);
        FillPair(first, same, 30, random);
        const IVideoFrameRef second = Converted(same, test.second);
        const IVideoFrameRef firstThere = Converted(first, test.meet);
        const IVideoFrameRef secondThere = Converted(second, test.meet);
        const ExpectedDifference expected = ExpectDifference(firstThere, secondThere, 0.1f);
        const IVideoFrameRef paintedThere = MakeAlignedFrame(test.meet, 37, 5);
        VF::DifferenceDetails details;
        ExpectSame(ComputeDifferenceImages(first, second, paintedThere, 0.1f, &details), details, expected);
        ExpectPainted(paintedThere, expected);
        for (const NamedPixelFormat& named : kPixelFormats) {
            SCOPED_TRACE(std::string("painted in ") + named.name);
            const IVideoFrameRef painted = MakeAlignedFrame(named.format, 37, 5);
            ExpectSame(ComputeDifferenceImages(first, second, painted, 0.1f, &details), details, expected);
            const IVideoFrameRef wanted = Converted(paintedThere, named.format, kRenderQuality_High);
            EXPECT_EQ(ComputeDifferenceImages(painted, wanted, {}, 0).numDiffPixels, 0u);
        }
    }
}

TEST(Difference, YUVIsPaintedGreyInEveryFormat)
{
    for (const PixelFormat format :
         {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u, kPixelFormat_YUV_420_8u_Planar}) {
        const IVideoFrameRef first = MakeAlignedFrame(format, 9, 3);
        const IVideoFrameRef second = MakeAlignedFrame(format, 9, 3);
        std::mt19937 random(8);
        FillPair(first, second, 100, random);
        const ExpectedDifference expected = ExpectDifference(first, second, 0);
        for (const PixelFormat painting : {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_16u}) {
            if ((format == kPixelFormat_V210_422_10u) != (painting == kPixelFormat_BGRA_4444_16u)) {
                continue;
            }
            SCOPED_TRACE(std::string(NameOf(format)) + " in " + NameOf(painting));
            const IVideoFrameRef painted = MakeAlignedFrame(painting, 9, 3);
            ASSERT_EQ(ComputeDifferenceImages(first, second, painted, 0).status, 0);
            ExpectPainted(painted, expected);
            const IVideoFrameRef other = MakeAlignedFrame(kPixelFormat_ARGB_4444_8u, 9, 3);
            ASSERT_EQ(ComputeDifferenceImages(first, second, other, 0).status, 0);
            EXPECT_EQ(
                ComputeDifferenceImages(other, Converted(painted, kPixelFormat_ARGB_4444_8u), {}, 0).variance,
                0);
        }
    }
}

TEST(Difference, OneFrameIsEqualToItself)
{
    for (const NamedPixelFormat& named : kPixelFormats) {
        SCOPED_TRACE(named.name);
        const IVideoFrameRef frame = MakeAlignedFrame(named.format, 13, 5);
        const IVideoFrameRef other = MakeAlignedFrame(named.format, 13, 5);
        std::mt19937 random(1);
        FillPair(frame, other, 0, random);
        frame->PrepareForSharing();
        const IVideoFrameRef painted = MakeAlignedFrame(named.format, 13, 5);
        VF::DifferenceDetails details;
        const ExpectedDifference expected = ExpectDifference(frame, other, 0);
        ExpectSame(ComputeDifferenceImages(frame, frame, painted, 0, &details), details, expected);
        ExpectPainted(painted, expected);
        EXPECT_EQ(details.psnr, std::numeric_limits<double>::infinity());
    }
}

TEST(Difference, RefusesWhatCannotBeCompared)
{
    const IVideoFrameRef frame = MakeAlignedFrame(kPixelFormat_BGRA_4444_8u, 4, 4);
    const IVideoFrameRef other = MakeAlignedFrame(kPixelFormat_BGRA_4444_8u, 4, 4);
    const IVideoFrameRef wide = MakeAlignedFrame(kPixelFormat_BGRA_4444_8u, 5, 4);
    const IVideoFrameRef shared = MakeAlignedFrame(kPixelFormat_BGRA_4444_8u, 4, 4);
    shared->PrepareForSharing();
    const IVideoFrameRef argb = MakeAlignedFrame(kPixelFormat_ARGB_4444_8u, 4, 4);
    const IVideoFrameRef planes = MakeAlignedFrame(kPixelFormat_YUV_420_8u_Planar, 4, 4);
    const IVideoFrameRef otherPlanes = MakeAlignedFrame(kPixelFormat_YUV_420_8u_Planar, 4, 4);
    IVideoFrameRef bare;
    ASSERT_TRUE(VF::CreateVideoFrame(bare, kPixelFormat_BGRA_4444_8u, 4, 4, {1, 1}, false, false));
    const IVideoFrameRef none;
    const struct {
        const char* name;
        const IVideoFrameRef& first;
        const IVideoFrameRef& second;
        const IVideoFrameRef& painted;
        float tolerance;
        std::uint32_t status;
    } kCases[] = {
        {"no first", none, frame, none, 0, VF::kDifference_NoFrame},
        {"no second", frame, none, none, 0, VF::kDifference_NoFrame},
        {"no memory", frame, bare, none, 0, VF::kDifference_NoFrame},
        {"another width", frame, wide, none, 0, VF::kDifference_SizesDiffer},
        {"painted wider", frame, other, wide, 0, VF::kDifference_BadPicture},
        {"painted shared", frame, other, shared, 0, VF::kDifference_BadPicture},
        {"painted over the first", frame, other, frame, 0, VF::kDifference_BadPicture},
        {"painted over one that is shared", frame, shared, shared, 0, VF::kDifference_BadPicture},
        {"painted over another format", frame, argb, argb, 0, VF::kDifference_BadPicture},
        {"painted over shared chroma", planes, otherPlanes, otherPlanes, 0, VF::kDifference_BadPicture},
        {"less than nothing", frame, other, none, -0.001f, VF::kDifference_BadTolerance},
        {"more than all", frame, other, none, 1.001f, VF::kDifference_BadTolerance},
        {"no number", frame, other, none, std::nanf(""), VF::kDifference_BadTolerance},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        VF::DifferenceDetails details;
        details.left = 77;
        const VF::ComputedDifference result =
            ComputeDifferenceImages(test.first, test.second, test.painted, test.tolerance, &details);
        EXPECT_EQ(static_cast<std::uint32_t>(result.status), test.status);
        EXPECT_LT(result.status, 0);
        EXPECT_EQ(details.left, 77u);
    }
    // The picture's memory comes on its own.
    EXPECT_EQ(ComputeDifferenceImages(frame, frame, bare, 0).status, 0);
    EXPECT_EQ(ComputeDifferenceImages(frame, bare, {}, 1).status, 0);
}

} // namespace
