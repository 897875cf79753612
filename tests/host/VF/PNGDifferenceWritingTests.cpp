#include "PNGBytes.h"

#include <VF/PNG.h>
#include <VF/VideoFrameManipulators.h>
#include <VF/VideoFrames.h>

#include <support/FrameSamples.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <hwy/targets.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kiomediatypes;
using namespace support;
using kiocore::utility::SharedRecycledMemory;
using MF::IVideoFrameRef;

IVideoFrameRef BlackFrame(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight)
{
    IVideoFrameRef frame;
    EXPECT_TRUE(VF::CreateVideoFrame(frame, inFormat, inWidth, inHeight, {1, 1}, false, false));
    EXPECT_TRUE(frame->InitializePixels(0));
    kiocore::InterfaceRef<MF::IVideoFrameClearable>(frame)->Clear();
    return frame;
}

/// Colours a part of the pixels at random; of half of those one channel only, by as little as can be.
void Scatter(const IVideoFrameRef& ioFrame, double inPart, std::mt19937& ioRandom)
{
    FrameSamples samples(ioFrame);
    for (std::uint32_t y = 0; y < ioFrame->GetHeight(); ++y) {
        for (std::uint32_t x = 0; x < ioFrame->GetWidth(); ++x) {
            if (std::uniform_real_distribution(0.0, 1.0)(ioRandom) >= inPart) {
                continue;
            }
            const bool isSlight = ioRandom() % 2 == 0;
            const int only = static_cast<int>(ioRandom() % 3);
            for (int channel = 0; channel < 3; ++channel) {
                if (x < samples.Width(channel) && y < samples.Height(channel) &&
                    (!isSlight || channel == only)) {
                    samples.Set(channel, x, y,
                                isSlight         ? 1
                                : ioRandom() % 3 ? std::floor(samples.Full() / (1 + ioRandom() % 99))
                                                 : 0);
                }
            }
        }
    }
}

std::string ToText(const SharedRecycledMemory& inBytes)
{
    return {reinterpret_cast<const char*>(inBytes.bytes.get()), inBytes.size};
}

/// The pixels that a file is to hold: those of the frame in BGRA of 8 or 16 bits.
IVideoFrameRef Encodable(const IVideoFrameRef& inFrame)
{
    const bool is8 = DepthOf(inFrame->GetPixelFormat()) == PixelDepth::k8;
    const IVideoFrameRef copy = BlackFrame(is8 ? kPixelFormat_BGRA_4444_8u : kPixelFormat_BGRA_4444_16u,
                                           inFrame->GetWidth(), inFrame->GetHeight());
    EXPECT_TRUE(VF::VideoFrameManipulators::CopyFrame(inFrame, copy, kRenderQuality_High, {}));
    return copy;
}

void ExpectHolds(const SharedRecycledMemory& inFile, const IVideoFrameRef& inFrame)
{
    ASSERT_TRUE(inFile);
    const IVideoFrameRef decoded = VF::DecompressPNG(inFile);
    ASSERT_TRUE(decoded);
    const IVideoFrameRef wanted = Encodable(inFrame);
    ASSERT_EQ(decoded->GetPixelFormat(), wanted->GetPixelFormat());
    ASSERT_EQ(decoded->GetWidth(), wanted->GetWidth());
    ASSERT_EQ(decoded->GetHeight(), wanted->GetHeight());
    const FrameSamples actual(decoded);
    const FrameSamples expected(wanted);
    for (int channel = 0; channel < 4; ++channel) {
        for (std::uint32_t y = 0; y < decoded->GetHeight(); ++y) {
            for (std::uint32_t x = 0; x < decoded->GetWidth(); ++x) {
                ASSERT_EQ(actual.Get(channel, x, y), expected.Get(channel, x, y))
                    << "channel " << channel << " at " << x << ", " << y;
            }
        }
    }
}

VF::PNGOptions DifferenceOptions()
{
    VF::PNGOptions options;
    options.isDifference = true;
    return options;
}

TEST(PNGDifferenceWriting, LosesNothing)
{
    const struct {
        const char* name;
        std::uint32_t width;
        std::uint32_t height;
        double part;
    } kCases[] = {
        {"one pixel, black", 1, 1, 0},
        {"one pixel, coloured", 1, 1, 1},
        {"less than a run", 2, 3, 0},
        {"one run and a bit", 85, 1, 0},
        {"one run and two bits", 43, 2, 0},
        {"odd, scattered", 37, 11, 0.1},
        {"odd, all", 37, 11, 1},
        {"large and black", 700, 500, 0},
        {"large, few", 701, 500, 0.001},
        {"large, as many as are few", 701, 500, 0.03},
        {"large, many", 701, 500, 0.1},
        {"large, all", 701, 500, 1},
    };
    std::mt19937 random(7);
    for (const NamedPixelFormat& named : kPixelFormats) {
        for (const auto& test : kCases) {
            SCOPED_TRACE(std::string(named.name) + ", " + test.name);
            if (IsYUV(named.format) && test.width > 100) {
                continue; // converted to what is tested here
            }
            const IVideoFrameRef frame = BlackFrame(named.format, test.width, test.height);
            Scatter(frame, test.part, random);
            ExpectHolds(VF::CompressPNG(frame, DifferenceOptions()), frame);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(PNGDifferenceWriting, EveryWidthAndProcessorFindsEveryPixel)
{
    std::mt19937 random(9);
    for (const PixelFormat format :
         {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u}) {
        for (std::uint32_t width = 1; width <= 70; ++width) {
            SCOPED_TRACE(std::string(NameOf(format)) + ", " + std::to_string(width));
            const IVideoFrameRef frame = BlackFrame(format, width, 120);
            Scatter(frame, 1.0 / (1 + random() % 40), random);
            const std::string usual = ToText(VF::CompressPNG(frame, DifferenceOptions()));
            ExpectHolds(ToMemory(usual), frame);
            for (std::uint64_t rest = static_cast<std::uint64_t>(hwy::SupportedTargets()) << 1 | 1;
                 rest != 0 && !HasFailure(); rest &= rest - 1) {
                const auto target = static_cast<std::int64_t>((rest & -rest) >> 1); // 0 first: none of them
                hwy::GetChosenTarget().Update(target);
                const std::string file = ToText(VF::CompressPNG(frame, DifferenceOptions()));
                hwy::GetChosenTarget().DeInit();
                EXPECT_TRUE(file == usual) << target;
            }
        }
    }
}

TEST(PNGDifferenceWriting, RowsThatAreNotInUseAreBlackWhateverTheyHold)
{
    std::mt19937 random(4);
    for (const bool isDifference : {true, false}) {
        for (const double part : {0.0, 0.01, 0.9}) {
            SCOPED_TRACE(std::to_string(isDifference) + " " + std::to_string(part));
            const IVideoFrameRef wanted = BlackFrame(kPixelFormat_ARGB_4444_8u, 211, 130);
            const IVideoFrameRef frame = BlackFrame(kPixelFormat_ARGB_4444_8u, 211, 130);
            Scatter(frame, part, random);
            FrameSamples from(frame);
            FrameSamples to(wanted);
            std::vector<std::uint64_t> rows(2); // of three: the others are taken to be in use
            for (std::uint32_t y = 0; y < 130; ++y) {
                const bool isInUse = y >= 128 || y % 3 == 1;
                for (std::uint32_t x = 0; x < 211; ++x) {
                    for (int channel = 0; channel < 4; ++channel) {
                        if (isInUse) {
                            to.Set(channel, x, y, from.Get(channel, x, y));
                        } else {
                            from.Set(channel, x, y, 0x55); // not even opaque
                        }
                    }
                }
                if (isInUse && y < 128) {
                    rows[y / 64] |= std::uint64_t{1} << y % 64;
                }
            }
            VF::PNGOptions options;
            options.isDifference = isDifference;
            options.rowsInUse = rows;
            const SharedRecycledMemory file = VF::CompressPNG(frame, options);
            EXPECT_EQ(ToText(file)[25], 2); // RGB
            ExpectHolds(file, wanted);
        }
    }
}

TEST(PNGDifferenceWriting, WhatIsNotOpaqueKeepsItsAlpha)
{
    for (const PixelFormat format :
         {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u}) {
        for (const double part : {0.0, 1.0}) {
            SCOPED_TRACE(std::string(NameOf(format)) + " " + std::to_string(part));
            const IVideoFrameRef frame = BlackFrame(format, 101, 97);
            std::mt19937 random(2);
            Scatter(frame, part, random);
            FrameSamples samples(frame);
            samples.Set(3, 100, 96, samples.Full() - 1);
            ExpectHolds(VF::CompressPNG(frame, DifferenceOptions()), frame);
        }
    }
}

TEST(PNGDifferenceWriting, FewPixelsTakeFewBytes)
{
    const IVideoFrameRef frame = BlackFrame(kPixelFormat_BGRA_4444_8u, 1920, 1080);
    // 6 MB of zeros in runs of 258, three bits each.
    EXPECT_LT(VF::CompressPNG(frame, DifferenceOptions()).size, 9500u);
    FrameSamples(frame).Set(0, 1919, 1079, 255);
    EXPECT_LT(VF::CompressPNG(frame, DifferenceOptions()).size, 9500u);
}

TEST(PNGWriting, NotesTextsBeforeThePixels)
{
    const std::string longest(79, 'k');
    VF::PNGOptions options;
    options.texts = {{"Title", "Two\nlines, caf\xE9"},
                     {longest, ""},
                     {"With spaces", "in it"},
                     {longest + "k", "left out: keyword too long"},
                     {"", "left out"},
                     {" x", "left out"},
                     {"x ", "left out"},
                     {"a  b", "left out"},
                     {"tab\t", "left out"},
                     {"\xA0", "left out"},
                     {"nul", std::string("left\0out", 8)}};
    for (const bool isDifference : {false, true}) {
        for (const double part : {0.0, 1.0}) {
            const IVideoFrameRef frame = BlackFrame(kPixelFormat_BGRA_4444_8u, 90, 90);
            std::mt19937 random(1);
            Scatter(frame, part, random);
            options.isDifference = isDifference;
            options.level = 0;
            const std::string file = ToText(VF::CompressPNG(frame, options));
            const std::string texts = Chunk("tEXt", std::string("Title\0Two\nlines, caf\xE9", 21)) +
                                      Chunk("tEXt", longest + '\0') +
                                      Chunk("tEXt", std::string("With spaces\0in it", 17));
            const std::size_t at = file.find(texts);
            ASSERT_NE(at, std::string::npos) << isDifference << part;
            EXPECT_LT(at, file.find("IDAT"));
            EXPECT_EQ(file.find("left"), std::string::npos);
            ExpectHolds(ToMemory(file), frame);
        }
    }
}

TEST(PNGDifferenceWriting, NotesTheShapeOfPixels)
{
    IVideoFrameRef frame;
    ASSERT_TRUE(VF::CreateVideoFrame(frame, kPixelFormat_BGRA_4444_8u, 1, 1, {4, 3}, true, false));
    ASSERT_TRUE(frame->InitializePixels(0));
    FrameSamples(frame).Set(3, 0, 0, 255);
    EXPECT_NE(ToText(VF::CompressPNG(frame, DifferenceOptions()))
                  .find(Chunk("pHYs", BigEndian(3, 4) + BigEndian(4, 4) + '\0')),
              std::string::npos);
}

} // namespace
