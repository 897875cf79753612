#include <VF/VideoFrameManipulators.h>

#include "support/FrameSamples.h"
#include "support/GuardedFrame.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <vector>

using namespace kiomediatypes;
using support::FrameSamples;
using support::GuardedFrame;
using support::GuardedFrameRef;
using VF::VideoFrameManipulators;

namespace {

using std::numbers::pi;

GuardedFrameRef Make(PixelFormat inFormat, std::uint32_t inWidth, std::uint32_t inHeight)
{
    return GuardedFrame::Make({inFormat, inWidth, inHeight});
}

GuardedFrameRef Copied(const GuardedFrameRef& inSource, PixelFormat inFormat, std::uint32_t inWidth,
                       std::uint32_t inHeight, RenderQuality inQuality)
{
    const auto destination = Make(inFormat, inWidth, inHeight);
    EXPECT_TRUE(VideoFrameManipulators::CopyFrame(inSource, destination, inQuality, {}));
    return destination;
}

/// A picture that is the same at any size: waves of many lengths, none shorter than ten pixels of a picture
/// of inFinest pixels. Level at the edges, as pictures are mirrored there.
class Waves {
public:
    Waves(std::uint32_t inWidth, std::uint32_t inHeight, double inFinest)
    {
        for (const double share : {0.05, 0.2, 0.4, 0.7, 1.0}) {
            const double halves = std::round(inFinest / 5 * share);
            mColumns.push_back(Axis(inWidth, halves));
            mRows.push_back(Axis(inHeight, std::round(halves * 9 / 16)));
        }
    }
    double At(double inX, double inY) const
    {
        double sum = 0;
        for (std::size_t wave = 0; wave < mColumns.size(); ++wave) {
            sum += mColumns[wave][static_cast<std::size_t>(inX)] * mRows[wave][static_cast<std::size_t>(inY)];
        }
        return 0.5 + 0.45 * sum / static_cast<double>(mColumns.size());
    }

private:
    static std::vector<double> Axis(std::uint32_t inSize, double inHalves)
    {
        std::vector<double> axis;
        for (std::uint32_t index = 0; index < inSize; ++index) {
            axis.push_back(std::cos(pi * inHalves * (index + 0.5) / inSize));
        }
        return axis;
    }
    std::vector<std::vector<double>> mColumns;
    std::vector<std::vector<double>> mRows;
};

double Decibels(double inFull, double inSquares, double inCount)
{
    return 10 * std::log10(inFull * inFull * inCount / (inSquares + 1e-9));
}

double PSNR(const GuardedFrameRef& inA, const GuardedFrameRef& inB, int inComponent)
{
    const FrameSamples a(inA), b(inB);
    double squares = 0;
    for (std::uint32_t y = 0; y < a.Height(inComponent); ++y) {
        for (std::uint32_t x = 0; x < a.Width(inComponent); ++x) {
            squares += std::pow(a.Get(inComponent, x, y) - b.Get(inComponent, x, y), 2);
        }
    }
    return Decibels(a.Full(), squares, a.Height(inComponent) * a.Width(inComponent));
}

} // namespace

TEST(CopyFrameScaling, ComesCloseToThePictureDrawnAtThatSize)
{
    const struct {
        const char* name;
        std::uint32_t fromWidth, fromHeight, toWidth, toHeight;
    } kSizes[] = {
        {"twice as large", 320, 180, 640, 360},
        {"a quarter", 640, 360, 160, 90},
        {"odd sizes", 311, 173, 467, 359},
        {"smaller one way, larger the other", 400, 150, 233, 401},
    };
    const struct {
        RenderQuality quality;
        double least;
    } kQualities[] = {{kRenderQuality_Draft, 28}, {kRenderQuality_Medium, 46.5}, {kRenderQuality_High, 55}};
    for (const auto& size : kSizes) {
        const double finest =
            std::min({size.fromWidth, size.toWidth, size.fromHeight * 16 / 9, size.toHeight * 16 / 9});
        for (const auto& quality : kQualities) {
            for (const PixelFormat format :
                 {kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_16u, kPixelFormat_V210_422_10u}) {
                const auto codes = [&](double inWave) {
                    return support::CodesOf({inWave, inWave, inWave, 1}, format, {});
                };
                const auto source = Make(format, size.fromWidth, size.fromHeight);
                const Waves drawn(size.fromWidth, size.fromHeight, finest);
                FrameSamples(source).Fill([&](int inComponent, double inX, double inY) {
                    return codes(drawn.At(inX, inY))[static_cast<std::size_t>(inComponent)];
                });
                const auto scaled = Copied(source, format, size.toWidth, size.toHeight, quality.quality);
                const FrameSamples samples(scaled);
                const Waves ideal(size.toWidth, size.toHeight, finest);
                double squares = 0;
                for (std::uint32_t y = 0; y < size.toHeight; ++y) {
                    for (std::uint32_t x = 0; x < size.toWidth; ++x) {
                        squares += std::pow(samples.Get(0, x, y) - codes(ideal.At(x, y))[0], 2);
                    }
                }
                const double psnr = Decibels(samples.Full(), squares, size.toWidth * size.toHeight);
                EXPECT_GE(psnr, quality.least)
                    << size.name << " in " << NameOf(format) << ", quality " << quality.quality;
                RecordProperty(std::string(size.name) + " " + NameOf(format) + " " +
                                   std::to_string(quality.quality),
                               std::to_string(psnr));
            }
        }
    }
}

TEST(CopyFrameScaling, DraftAveragesWhatEachPixelCovers)
{
    // 9 columns on 4: each takes 2.25. Rows 5 on 2: each takes 2.5.
    const auto source = Make(kPixelFormat_BGRA_4444_32f, 9, 5);
    const auto value = [](double inX, double inY) { return std::fmod(inX * 31 + inY * 17, 23); };
    FrameSamples(source).Fill([&](int inComponent, double inX, double inY) {
        return inComponent == 3 ? 1 : value(std::floor(inX), std::floor(inY));
    });
    const auto scaled = Copied(source, kPixelFormat_BGRA_4444_32f, 4, 2, kRenderQuality_Draft);
    for (unsigned y = 0; y < 2; ++y) {
        for (unsigned x = 0; x < 4; ++x) {
            double sum = 0;
            for (int j = 0; j < 5; ++j) {
                for (int i = 0; i < 9; ++i) {
                    const double wide =
                        std::max(0.0, std::min(i + 1.0, (x + 1) * 2.25) - std::max<double>(i, x * 2.25));
                    const double high =
                        std::max(0.0, std::min(j + 1.0, (y + 1) * 2.5) - std::max<double>(j, y * 2.5));
                    sum += value(i, j) * wide * high;
                }
            }
            EXPECT_NEAR(FrameSamples(scaled).Get(1, x, y), sum / (2.25 * 2.5), 1e-5) << x << ", " << y;
        }
    }
}

TEST(CopyFrameScaling, RedBesideTransparentStaysRed)
{
    const struct {
        PixelFormat from, to;
    } kFormats[] = {{kPixelFormat_BGRA_4444_8u, kPixelFormat_BGRA_4444_8u},
                    {kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u},
                    {kPixelFormat_BGRA_4444_32f, kPixelFormat_ARGB_4444_8u},
                    {kPixelFormat_BGRA_4444_16u, kPixelFormat_BGRA_4444_32f}};
    for (const auto& formats : kFormats) {
        for (const RenderQuality quality :
             {kRenderQuality_Draft, kRenderQuality_Medium, kRenderQuality_High}) {
            for (const std::uint32_t width : {17u, 95u}) {
                const auto source = Make(formats.from, 40, 24);
                // A red of 60 % beside a green that nobody can see.
                FrameSamples(source).Fill([&](int inComponent, double inX, double inY) {
                    const bool seen = inX < 21 && inY > 5;
                    const double full = FrameSamples(source).Full();
                    return inComponent == 3            ? seen * full
                           : inComponent == 0          ? seen * full * 0.6
                           : !seen && inComponent == 1 ? full
                                                       : 0;
                });
                const auto scaled = Copied(source, formats.to, width, 35, quality);
                const FrameSamples samples(scaled);
                bool blended = false;
                for (std::uint32_t y = 0; y < 35; ++y) {
                    for (std::uint32_t x = 0; x < width; ++x) {
                        const double alpha = samples.Get(3, x, y) / samples.Full();
                        blended = blended || (alpha > 0.2 && alpha < 0.8);
                        if (alpha < 1 / 255.0) {
                            continue; // invisible: any colour
                        }
                        ASSERT_NEAR(samples.Get(0, x, y) / samples.Full(), 0.6, 0.003)
                            << NameOf(formats.from) << " to " << NameOf(formats.to) << ", quality " << quality
                            << " at " << x << ", " << y << ", alpha " << alpha;
                        ASSERT_EQ(std::round(samples.Get(1, x, y) / samples.Full() * 255), 0);
                    }
                }
                EXPECT_TRUE(blended) << "the edge was not met, so this shows nothing";
            }
        }
    }
}

TEST(CopyFrameScaling, HiddenColourStaysHiddenWhenAlphaIsDropped)
{
    const auto source = Make(kPixelFormat_BGRA_4444_8u, 64, 32);
    FrameSamples(source).Fill([](int inComponent, double inX, double) {
        return inX < 32 ? (inComponent == 3 || inComponent == 0 ? 255.0 : 0.0)
                        : (inComponent == 1 ? 255.0 : 0.0);
    });
    const auto scaled = Copied(source, kPixelFormat_UYVY_422_8u, 100, 50, kRenderQuality_Medium);
    const double red = std::round(support::CodesOf({1, 0, 0, 1}, kPixelFormat_UYVY_422_8u, {})[0]);
    for (std::uint32_t x = 0; x < 48; ++x) {
        EXPECT_EQ(FrameSamples(scaled).Get(0, x, 25), red) << "green mixed into column " << x;
    }
}

TEST(CopyFrameScaling, AnyOpacityThatIsFoundLateCountsAsWell)
{
    // One pixel in a row that a quick look may miss.
    const auto source = Make(kPixelFormat_BGRA_4444_8u, 64, 64);
    FrameSamples(source).FillFlat({200, 100, 50, 255});
    FrameSamples(source).Set(3, 63, 61, 0);
    const auto scaled = Copied(source, kPixelFormat_BGRA_4444_8u, 128, 128, kRenderQuality_Medium);
    EXPECT_LT(FrameSamples(scaled).Get(3, 126, 122), 128);
    EXPECT_EQ(FrameSamples(scaled).Get(0, 124, 122), 200);
}

// A ramp of Cr shows a shift anywhere, without an edge's ringing. Its codes are whole at all the places where
// a source has samples, so no rounding hides or feigns one.
TEST(CopyFrameScaling, ChromaStaysWhereItIsSited)
{
    const PixelFormat kFormats[] = {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u,
                                    kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_16u};
    const struct {
        const char* name;
        std::uint32_t width, height;
    } kSizes[] = {{"same", 64, 64}, {"larger", 150, 96}, {"smaller", 48, 40}, {"odd", 81, 77}};
    const auto ramp = [](PixelFormat inFormat, double inPlace) { // 0 to 1 across the picture
        return support::CodesOf(
            support::RGBAOf({126, 128, 128 + (inPlace - 0.5) * 128, 1}, kPixelFormat_UYVY_422_8u, {}),
            inFormat, {});
    };
    for (const bool across : {true, false}) {
        for (const PixelFormat from : kFormats) {
            const auto source = Make(from, 64, 64);
            FrameSamples(source).Fill([&](int inComponent, double inX, double inY) {
                return ramp(from, (across ? inX : inY) / 64)[static_cast<std::size_t>(inComponent)];
            });
            for (const PixelFormat to : kFormats) {
                for (const auto& size : kSizes) {
                    for (const RenderQuality quality :
                         {kRenderQuality_Draft, kRenderQuality_Medium, kRenderQuality_High}) {
                        const auto copied = Copied(source, to, size.width, size.height, quality);
                        const FrameSamples samples(copied);
                        const int component = samples.IsYUV() ? 2 : 0;
                        const std::uint32_t width = samples.Width(component);
                        const std::uint32_t height = samples.Height(component);
                        const double columns = samples.IsYUV() ? 2 : 1;
                        const double rows = height < size.height ? 2 : 1;
                        double error = 0;
                        for (std::uint32_t y = height / 4; y < height * 3 / 4; ++y) {
                            for (std::uint32_t x = width / 4; x < width * 3 / 4; ++x) {
                                const double place = across ? (x * columns + 0.5) / size.width
                                                            : (y * rows + rows / 2) / size.height;
                                error += samples.Get(component, x, y) -
                                         ramp(to, place)[static_cast<std::size_t>(component)];
                            }
                        }
                        error /= (height * 3 / 4 - height / 4) * (width * 3 / 4 - width / 4);
                        const double length = across ? size.width : size.height;
                        const double step = (ramp(to, 1)[static_cast<std::size_t>(component)] -
                                             ramp(to, 0)[static_cast<std::size_t>(component)]) /
                                            length;
                        // Few phases repeat, so rounding may leave a third of a code.
                        EXPECT_LT(std::abs(error), std::max(std::abs(step) * 0.06, 0.35))
                            << error / step << " pixels off: " << NameOf(from) << " to " << NameOf(to) << ", "
                            << size.name << ", quality " << quality << (across ? ", columns" : ", rows");
                    }
                }
            }
        }
    }
}

TEST(CopyFrameScaling, ThereAndBackAgainComesClose)
{
    const struct {
        PixelFormat from, through;
        double least;
    } kCases[] = {
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_UYVY_422_8u, 48},
        {kPixelFormat_BGRA_4444_8u, kPixelFormat_V210_422_10u, 52},
        {kPixelFormat_BGRA_4444_16u, kPixelFormat_V210_422_10u, 55},
        {kPixelFormat_UYVY_422_8u, kPixelFormat_YUV_420_8u_Planar, 48},
        {kPixelFormat_UYVY_422_8u, kPixelFormat_V210_422_10u, 150},
        {kPixelFormat_V210_422_10u, kPixelFormat_BGRA_4444_32f, 60},
        {kPixelFormat_YUV_420_8u_Planar, kPixelFormat_BGRA_4444_16u, 48},
    };
    for (const auto& test : kCases) {
        for (const RenderQuality quality : {kRenderQuality_Medium, kRenderQuality_High}) {
            const auto source = Make(test.from, 121, 67);
            FrameSamples(source).Fill([&](int inComponent, double inX, double inY) {
                const std::array<double, 4> color = {0.5 + 0.4 * std::cos(2 * pi * inX / 61) *
                                                               std::cos(2 * pi * inY / 40),
                                                     0.5 + 0.3 * std::cos(2 * pi * (inX + inY) / 53),
                                                     0.5 + 0.35 * std::cos(2 * pi * inY / 47), 1};
                return support::CodesOf(color, test.from, {})[static_cast<std::size_t>(inComponent)];
            });
            const auto there = Copied(source, test.through, 121, 67, quality);
            const auto back = Copied(there, test.from, 121, 67, quality);
            for (int component = 0; component < 3; ++component) {
                EXPECT_GE(PSNR(source, back, component), test.least)
                    << NameOf(test.from) << " through " << NameOf(test.through) << ", component " << component
                    << ", quality " << quality;
            }
        }
    }
}
