#include "rows/PixelRows.h"
#include "rows/SampleRows.h"

#include "support/FrameSamples.h"
#include "support/GuardedFrame.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <limits>
#include <random>
#include <vector>

using namespace kiomediatypes;
using namespace VF;
using support::FrameSamples;
using support::GuardedFrame;
using support::GuardedFrameRef;

namespace {

constexpr std::uint32_t kRows = 2; // what one row of halved chroma is for

template <typename Byte>
PictureOf<Byte> PictureFrom(const GuardedFrameRef& inFrame)
{
    PictureOf<Byte> picture;
    picture.format = inFrame->GetPixelFormat();
    picture.width = inFrame->GetWidth();
    picture.height = inFrame->GetHeight();
    for (int plane = 0; plane < inFrame->GetPlaneCount(); ++plane) {
        picture.planes[plane] = {inFrame->GetWritablePixels(plane), inFrame->GetRowBytes(plane)};
    }
    return picture;
}

/// Line buffers for the four planes of two rows.
struct Lines {
    explicit Lines(std::uint32_t inWidth)
    {
        for (std::size_t row = 0; row < kRows; ++row) {
            for (std::size_t plane = 0; plane < 4; ++plane) {
                std::vector<std::byte>& line = memory[row][plane];
                line.assign((inWidth + 1) * 4 + kLineSlackBytes, std::byte{0});
                planes[row].planes[plane] = line.data();
            }
        }
    }
    double Get(PixelFormat inFormat, int inPlane, std::uint32_t inRow, std::uint32_t inColumn) const
    {
        switch (PlanarFormOf(inFormat).type) {
        case SampleType::kByte:
            return planes[inRow].As<std::uint8_t>(inPlane)[inColumn];
        case SampleType::kWord:
            return planes[inRow].As<std::uint16_t>(inPlane)[inColumn];
        case SampleType::kFloat:
            return planes[inRow].As<float>(inPlane)[inColumn];
        }
        return 0;
    }

    std::vector<std::byte> memory[kRows][4];
    RowPlanes planes[kRows];
};

GuardedFrameRef Noise(PixelFormat inFormat, std::uint32_t inWidth)
{
    const auto frame = GuardedFrame::Make({inFormat, inWidth, kRows});
    std::mt19937 random(inWidth);
    FrameSamples samples(frame);
    const double full = samples.Full();
    samples.Fill([&](int, double, double) {
        return full == 1 ? random() / 1e9 - 2
                         : static_cast<double>(random() % static_cast<unsigned>(full + 1));
    });
    return frame;
}

/// Runs inTest with each set of instructions that Highway knows and this processor has.
template <typename Test>
void OnEachTarget(const Test& inTest)
{
    for (std::int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
        const std::int64_t target = rest & -rest;
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::GetChosenTarget().Update(target);
        inTest();
        hwy::GetChosenTarget().DeInit(); // the best again
    }
}

const std::uint32_t kWidths[] = {1, 2, 5, 6, 7, 12, 31, 48, 64, 97, 131, 193};

} // namespace

TEST(PixelRows, UnpackingBringsEachSampleToItsPlace)
{
    OnEachTarget([] {
        for (const NamedPixelFormat& format : kPixelFormats) {
            for (const std::uint32_t width : kWidths) {
                const auto frame = Noise(format.format, width);
                Lines lines(width);
                for (std::uint32_t row = 0; row < kRows; ++row) {
                    UnpackRow(PictureFrom<const std::byte>(frame), row, 0, width + width % 2,
                              lines.planes[row]);
                }
                const FrameSamples samples(frame);
                for (int component = 0; component < samples.Count(); ++component) {
                    for (std::uint32_t row = 0; row < samples.Height(component); ++row) {
                        for (std::uint32_t x = 0; x < samples.Width(component); ++x) {
                            ASSERT_EQ(lines.Get(format.format, component, row, x),
                                      samples.Get(component, x, row))
                                << format.name << " of " << width << ": component " << component << " at "
                                << x;
                        }
                    }
                }
                if (width % 2) {
                    EXPECT_EQ(lines.Get(format.format, 0, 1, width), samples.Get(0, width - 1, 1))
                        << format.name << " of " << width << ": the last column is to be repeated";
                }
            }
        }
    });
}

// Where caches are small, zimg works in columns, whose borders know nothing of groups of pixels.
TEST(PixelRows, PackingInPartsGivesTheWhole)
{
    OnEachTarget([] {
        for (const NamedPixelFormat& format : kPixelFormats) {
            for (const std::uint32_t width : kWidths) {
                const auto frame = Noise(format.format, width);
                const std::uint32_t right = width + width % 2;
                Lines lines(width);
                for (std::uint32_t row = 0; row < kRows; ++row) {
                    UnpackRow(PictureFrom<const std::byte>(frame), row, 0, right, lines.planes[row]);
                }
                for (std::uint32_t part = 2; part <= right; part += part < 8 ? 2 : 14) {
                    const auto packed = GuardedFrame::Make({format.format, width, kRows});
                    for (std::uint32_t left = 0; left < right; left += part) {
                        for (std::uint32_t row = 0; row < kRows; ++row) {
                            PackRow(PictureFrom<std::byte>(packed), row, left, std::min(left + part, right),
                                    lines.planes[row]);
                        }
                    }
                    const FrameSamples expected(frame), samples(packed);
                    for (int component = 0; component < samples.Count(); ++component) {
                        for (std::uint32_t row = 0; row < samples.Height(component); ++row) {
                            for (std::uint32_t x = 0; x < samples.Width(component); ++x) {
                                ASSERT_EQ(samples.Get(component, x, row), expected.Get(component, x, row))
                                    << format.name << " of " << width << " in parts of " << part
                                    << ": component " << component << " at " << x;
                            }
                        }
                    }
                }
            }
        }
    });
}

TEST(PixelRows, UnpackingFindsTheOnePixelThatIsNotOpaque)
{
    OnEachTarget([] {
        for (const NamedPixelFormat& format : kPixelFormats) {
            if (!HasAlpha(format.format)) {
                continue;
            }
            constexpr std::uint32_t kWidth = 75;
            const auto frame = GuardedFrame::Make({format.format, kWidth, 1});
            FrameSamples samples(frame);
            samples.FillFlat({0, 0, 0, samples.Full()});
            Lines lines(kWidth);
            RowPlanes colors = lines.planes[0];
            colors.planes[3] = nullptr;
            const auto picture = PictureFrom<const std::byte>(frame);
            EXPECT_TRUE(UnpackRow(picture, 0, 0, kWidth, colors)) << format.name;
            for (std::uint32_t x = 0; x < kWidth; ++x) {
                samples.Set(3, x, 0, samples.Full() * (1 - 1 / 255.0));
                EXPECT_FALSE(UnpackRow(picture, 0, 0, kWidth, colors)) << format.name << " at " << x;
                EXPECT_TRUE(UnpackRow(picture, 0, 0, kWidth, lines.planes[0])) << "alpha is wanted";
                samples.Set(3, x, 0, samples.Full());
            }
        }
    });
}

TEST(SampleRows, RoundToNearestAndClamp)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        int byte, word;
    } kCases[] = {{0, 0, 0},
                  {1, 255, 65535},
                  {-0.001f, 0, 0},
                  {1.5f, 255, 65535},
                  {0.4999f / 255, 0, 128},
                  {0.5001f / 255, 1, 129},
                  {0.49f / 65535, 0, 0},
                  {0.51f / 65535, 0, 1},
                  {1e30f, 255, 65535},
                  {infinity, 255, 65535},
                  {-infinity, 0, 0},
                  {nan, 0, 0}};
    OnEachTarget([&] {
        for (const auto& test : kCases) {
            const std::vector<float> row(19, test.value); // whole registers and a rest
            std::vector<std::uint8_t> bytes(row.size());
            std::vector<std::uint16_t> words(row.size());
            FromFloats(row.data(), row.size(), SampleType::kByte, reinterpret_cast<std::byte*>(bytes.data()));
            FromFloats(row.data(), row.size(), SampleType::kWord, reinterpret_cast<std::byte*>(words.data()));
            EXPECT_EQ(bytes, std::vector<std::uint8_t>(row.size(), static_cast<std::uint8_t>(test.byte)))
                << test.value;
            EXPECT_EQ(words, std::vector<std::uint16_t>(row.size(), static_cast<std::uint16_t>(test.word)))
                << test.value;
        }
    });
}
