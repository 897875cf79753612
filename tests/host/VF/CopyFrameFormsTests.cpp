#include <VF/VideoFrameManipulators.h>

#include "support/FrameSamples.h"
#include "support/GuardedFrame.h"
#include "support/HoldingExecutor.h"
#include "support/TraceRecorder.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace kiomediatypes;
using support::FrameSamples;
using support::GuardedFrame;
using support::GuardedFrameRef;
using VF::VideoFrameManipulators;

namespace {

constexpr color::ColorSpace kFull709{color::Primaries::kBT709, color::Transfer::kBT709, color::Matrix::kBT709,
                                     color::Range::kFull};

bool Copy(const GuardedFrameRef& inSource, const GuardedFrameRef& inDestination,
          RenderQuality inQuality = kRenderQuality_Medium)
{
    return VideoFrameManipulators::CopyFrame(inSource, inDestination, inQuality, {});
}

/// The greatest difference of any sample of a frame from what it should be.
double WorstError(const GuardedFrameRef& inFrame, const std::array<double, 4>& inCodes)
{
    const FrameSamples samples(inFrame);
    double worst = 0;
    for (int component = 0; component < samples.Count(); ++component) {
        for (std::uint32_t y = 0; y < samples.Height(component); ++y) {
            for (std::uint32_t x = 0; x < samples.Width(component); ++x) {
                worst = std::max(worst, std::abs(samples.Get(component, x, y) -
                                                 inCodes[static_cast<std::size_t>(component)]));
            }
        }
    }
    return worst;
}

/// What a format stores for a colour.
std::array<double, 4> Stored(const std::array<double, 4>& inRGBA, PixelFormat inFormat,
                             const color::ColorSpace& inColorSpace)
{
    std::array<double, 4> codes = support::CodesOf(inRGBA, inFormat, inColorSpace);
    if (DepthOf(inFormat) != PixelDepth::k32Float) {
        const double full = DepthOf(inFormat) == PixelDepth::k8    ? 255
                            : DepthOf(inFormat) == PixelDepth::k10 ? 1023
                                                                   : 65535;
        for (double& code : codes) {
            code = std::clamp(std::round(code), 0.0, full);
        }
    }
    return codes;
}

} // namespace

// Flat pictures show every weight that does not add up, every sample put in a wrong place and every byte read
// from beside the picture.
TEST(CopyFrame, EveryFormatToEveryOtherStaysWithinItsBytesAndKeepsFlatAreasExact)
{
    struct Size {
        std::uint32_t width, height;
    };
    const struct {
        const char* name;
        Size from, to;
    } kSizes[] = {
        {"one pixel", {1, 1}, {1, 1}},
        {"one pixel from many", {37, 23}, {1, 1}},
        {"many from one pixel", {1, 1}, {31, 17}},
        {"one column", {1, 29}, {1, 13}},
        {"one row", {53, 1}, {19, 1}},
        {"same, odd", {7, 5}, {7, 5}},
        {"same, whole groups", {48, 4}, {48, 4}},
        {"same, wide enough for the widest registers", {211, 3}, {211, 3}},
        {"smaller, primes", {101, 67}, {43, 31}},
        {"larger, primes", {29, 31}, {113, 71}},
        {"wider and lower", {13, 97}, {89, 11}},
        {"by a hair", {64, 64}, {65, 63}},
        {"narrower only", {97, 6}, {41, 6}},
        {"lower only", {10, 50}, {10, 7}},
    };
    const RenderQuality kQualities[] = {kRenderQuality_Draft, kRenderQuality_Medium, kRenderQuality_High};
    const std::array<double, 4> kColor = {0.8, 0.35, 0.12, 1};
    const color::ColorSpace space;
    for (const NamedPixelFormat& from : kPixelFormats) {
        for (const NamedPixelFormat& to : kPixelFormats) {
            for (const auto& size : kSizes) {
                for (const RenderQuality quality : kQualities) {
                    for (const auto touches :
                         {GuardedFrame::Touches::kUpperPage, GuardedFrame::Touches::kLowerPage}) {
                        SCOPED_TRACE(std::string(from.name) + " to " + to.name + ", " + size.name +
                                     ", quality " + std::to_string(quality));
                        const bool padded = touches == GuardedFrame::Touches::kLowerPage;
                        const auto source =
                            GuardedFrame::Make({from.format, size.from.width, size.from.height, space,
                                                touches, padded ? 12u : 0u});
                        const auto destination = GuardedFrame::Make(
                            {to.format, size.to.width, size.to.height, space, touches, padded ? 20u : 0u});
                        const std::array<double, 4> stored = Stored(kColor, from.format, space);
                        FrameSamples(source).FillFlat(stored);
                        ASSERT_TRUE(Copy(source, destination, quality));
                        const auto expected =
                            Stored(support::RGBAOf(stored, from.format, space), to.format, space);
                        const bool floats = to.format == kPixelFormat_BGRA_4444_32f;
                        ASSERT_LE(WorstError(destination, expected), floats ? 2e-6 : 0.0);
                        ASSERT_TRUE(destination->PaddingIsIntact());
                    }
                }
            }
        }
    }
}

TEST(CopyFrame, ColoursFollowTheirMatrixAndRange)
{
    const struct {
        const char* name;
        color::ColorSpace from, to;
    } kSpaces[] = {
        {"709", {}, {}},
        {"601 to 709", color::kColorSpace_BT601_525, {}},
        {"709 to 601, whose 625-line form has the same numbers", {}, color::kColorSpace_BT601_625},
        {"limited to full", {}, kFull709},
        {"full to 2020", kFull709, color::kColorSpace_BT2020},
    };
    const std::array<double, 4> kColors[] = {{0, 0, 0, 1},       {1, 1, 1, 1},      {0.5, 0.5, 0.5, 1},
                                             {1, 0, 0, 1},       {0, 1, 0, 1},      {0, 0, 1, 1},
                                             {0.75, 0.75, 0, 1}, {0.1, 0.9, 0.4, 1}};
    for (const auto& spaces : kSpaces) {
        for (const NamedPixelFormat& from : kPixelFormats) {
            for (const NamedPixelFormat& to : kPixelFormats) {
                for (const auto& color : kColors) {
                    for (const std::uint32_t size : {12u, 30u}) {
                        const auto source = GuardedFrame::Make({from.format, 12, 8, spaces.from});
                        const auto destination = GuardedFrame::Make({to.format, size, 8, spaces.to});
                        const auto stored = Stored(color, from.format, spaces.from);
                        FrameSamples(source).FillFlat(stored);
                        ASSERT_TRUE(Copy(source, destination));
                        auto exact = support::CodesOf(support::RGBAOf(stored, from.format, spaces.from),
                                                      to.format, spaces.to);
                        const double full = FrameSamples(destination).Full();
                        for (double& code : exact) { // integers cannot hold what lies beyond their range
                            code = full > 1 ? std::clamp(code, 0.0, full) : code;
                        }
                        // Rounded to nearest, so half a code off at most.
                        EXPECT_LE(WorstError(destination, exact), full > 1 ? 0.505 : 1e-5)
                            << spaces.name << ": " << from.name << " to " << to.name << " of width " << size
                            << ", colour " << testing::PrintToString(color);
                    }
                }
            }
        }
    }
}

TEST(CopyFrame, DeeperRGBHoldsEveryValueExactlyAndGivesItBack)
{
    const struct {
        PixelFormat deep;
        double factor;
    } kDeeper[] = {{kPixelFormat_BGRA_4444_16u, 257}, {kPixelFormat_BGRA_4444_32f, 1 / 255.0}};
    for (const auto& test : kDeeper) {
        const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, 257, 3});
        const auto value = [](int inComponent, double inX, double) {
            return std::fmod(std::floor(inX) + 40 * inComponent, 256); // alpha too, also 0
        };
        FrameSamples(source).Fill(value);
        const auto deep = GuardedFrame::Make({test.deep, 257, 3});
        ASSERT_TRUE(Copy(source, deep));
        const auto back = GuardedFrame::Make({kPixelFormat_ARGB_4444_8u, 257, 3});
        ASSERT_TRUE(Copy(deep, back));
        for (int component = 0; component < 4; ++component) {
            for (std::uint32_t x = 0; x < 257; ++x) {
                const double code = value(component, x, 0);
                const double expected = test.factor > 1 ? code * 257 : static_cast<float>(code) / 255.0f;
                ASSERT_EQ(FrameSamples(deep).Get(component, x, 1), expected) << NameOf(test.deep) << x;
                ASSERT_EQ(FrameSamples(back).Get(component, x, 2), code) << NameOf(test.deep) << x;
            }
        }
    }
}

TEST(CopyFrame, WhatTheRangeOfIntegersDoesNotHoldIsClamped)
{
    const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_32f, 40, 2});
    FrameSamples(source).Fill([](int inComponent, double inX, double) {
        return inComponent == 3 ? 1.0 : inX < 13 ? -2.0 : inX < 26 ? 7.5 : std::nan("");
    });
    for (const PixelFormat format : {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_16u}) {
        const auto destination = GuardedFrame::Make({format, 40, 2});
        ASSERT_TRUE(Copy(source, destination));
        const FrameSamples samples(destination);
        EXPECT_EQ(samples.Get(0, 5, 1), 0);
        EXPECT_EQ(samples.Get(1, 20, 1), samples.Full());
        EXPECT_EQ(samples.Get(2, 39, 1), 0) << "not a number";
    }
}

TEST(CopyFrame, EqualFormsAreCopiedBitByBit)
{
    for (const NamedPixelFormat& format : kPixelFormats) {
        const auto source = GuardedFrame::Make({format.format, 47, 9, {}, {}, 8});
        unsigned seed = 1;
        FrameSamples(source).Fill([&](int, double, double) {
            seed = seed * 1664525 + 1013904223;
            return format.format == kPixelFormat_BGRA_4444_32f ? seed / 1e9 - 2 : seed >> 22;
        });
        const auto destination = GuardedFrame::Make({format.format, 47, 9});
        ASSERT_TRUE(Copy(source, destination));
        for (int plane = 0; plane < source->GetPlaneCount(); ++plane) {
            const std::size_t used = destination->GetRowBytes(plane);
            for (std::uint32_t row = 0; row < source->GetRowCount(plane); ++row) {
                ASSERT_EQ(std::memcmp(source->GetPixels(plane) + row * source->GetRowBytes(plane),
                                      destination->GetPixels(plane) + row * used, used),
                          0)
                    << format.name << ", row " << row << " of plane " << plane;
            }
        }
    }
}

TEST(CopyFrame, PrimariesAndTransferChangeOnlyWhenAsked)
{
    const color::ColorSpace linear{color::Primaries::kBT709, color::Transfer::kLinear, color::Matrix::kBT709,
                                   color::Range::kLimited};
    const auto source = GuardedFrame::Make({kPixelFormat_BGRA_4444_32f, 9, 5});
    FrameSamples(source).FillFlat({0.5, 0.5, 0.5, 0.25});
    const auto destination = GuardedFrame::Make({kPixelFormat_BGRA_4444_32f, 9, 5, linear});
    ASSERT_TRUE(VideoFrameManipulators::CopyFrame(source, destination, kRenderQuality_Medium, {}));
    EXPECT_EQ(FrameSamples(destination).Get(0, 4, 2), 0.5);
    ASSERT_TRUE(VideoFrameManipulators::CopyFrame(source, destination, kRenderQuality_Medium,
                                                  {.convertPrimariesAndTransfer = true}));
    // The display's curve of BT.1886, which is what BT.709 pictures are made for.
    EXPECT_NEAR(FrameSamples(destination).Get(0, 4, 2), std::pow(0.5, 2.4), 1e-3);
    EXPECT_EQ(FrameSamples(destination).Get(3, 4, 2), 0.25) << "alpha has no curve";
}

TEST(CopyFrame, SaysWhatIsWrongWithAFrame)
{
    const auto source = GuardedFrame::Make({kPixelFormat_UYVY_422_8u, 16, 4});
    const auto shared = GuardedFrame::Make({kPixelFormat_V210_422_10u, 16, 4});
    shared->PrepareForSharing();
    MF::IVideoFrameRef noMemory;
    ASSERT_TRUE(VF::CreateVideoFrame(noMemory, kPixelFormat_BGRA_4444_8u, 3, 2, {}, false, false));
    const struct {
        MF::IVideoFrameRef source, destination;
        const char* expected;
    } kCases[] = {
        {{}, source, "CopyFrame from nothing to uyvy 16 x 4: the source is empty"},
        {source, {}, "CopyFrame from uyvy 16 x 4 to nothing: the destination is empty"},
        {source, shared, "CopyFrame from uyvy 16 x 4 to v210 16 x 4: the destination is shared"},
        {source, noMemory, "CopyFrame from uyvy 16 x 4 to bgra8 3 x 2: the destination has no memory"},
        {noMemory, source, "CopyFrame from bgra8 3 x 2 to uyvy 16 x 4: the source has no memory"},
    };
    for (const auto& test : kCases) {
        support::TraceRecorder trace("Frames");
        EXPECT_FALSE(
            VideoFrameManipulators::CopyFrame(test.source, test.destination, kRenderQuality_Medium, {}));
        EXPECT_THAT(trace.Lines(), testing::ElementsAre(test.expected));
    }
    EXPECT_TRUE(Copy(shared, source)) << "a shared source is what sources are";
}

TEST(CopyFrame, IsSeenOnTheHostTrace)
{
    support::TraceRecorder trace("Host");
    const auto frame = GuardedFrame::Make({kPixelFormat_UYVY_422_8u, 16, 4});
    EXPECT_TRUE(Copy(frame, GuardedFrame::Make({kPixelFormat_BGRA_4444_8u, 5, 6})));
    EXPECT_EQ(trace.CountContaining("VF::VideoFrameManipulators::CopyFrame(\"uyvy 16 x 4\", \"bgra8 5 x 6\""),
              1);
}
