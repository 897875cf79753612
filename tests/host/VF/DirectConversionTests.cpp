#include "DirectReference.h"

#include <gtest/gtest.h>

#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace direct {

static std::string NameOf(const Form& inForm)
{
    std::string name = kiomediatypes::NameOf(inForm.format);
    if (kiomediatypes::IsYUV(inForm.format)) {
        name += ", matrix " + std::to_string(static_cast<int>(inForm.matrix)) +
                (inForm.range == Range::kFull ? ", full" : ", limited");
    }
    return name;
}

namespace {

using namespace kiomediatypes;

constexpr std::size_t kWidths[] = {1, 2, 3, 5, 6, 7, 13, 47, 48, 49, 97, 480, 481, 486, 961, 1920, 1921};

/// All pairs of forms whose direct rows need one row of the source.
std::vector<std::pair<Form, Form>> Pairs()
{
    std::vector<Form> forms;
    for (const NamedPixelFormat& named : kPixelFormats) {
        if (!IsYUV(named.format)) {
            forms.push_back({named.format});
            continue;
        }
        for (const Matrix matrix :
             {Matrix::kBT709, Matrix::kFCC, Matrix::kBT601_625, Matrix::kBT601_525, Matrix::kBT2020_NCL}) {
            for (const Range range : {Range::kLimited, Range::kFull}) {
                forms.push_back({named.format, matrix, range});
            }
        }
    }
    std::vector<std::pair<Form, Form>> pairs;
    for (const Form& source : forms) {
        for (const Form& destination : forms) {
            if (source.format != kPixelFormat_YUV_420_8u_Planar &&
                VF::HasDirectConversion(SourceOf(source, nullptr, 0, 8, 1),
                                        DestinationOf(destination, nullptr, 0, 8, 1),
                                        kRenderQuality_Medium)) {
                pairs.emplace_back(source, destination);
            }
        }
    }
    return pairs;
}

/// Noise, with more than its share of extremes and of areas of one colour.
Row Noise(const Form& inForm, std::size_t inWidth, unsigned inSeed)
{
    std::mt19937 random(inSeed);
    const double most = MostOf(inForm.format);
    std::vector<double> components = Components(inForm.format, EmptyRow(inForm.format, inWidth));
    for (std::size_t i = 0; i < components.size(); ++i) {
        const unsigned kind = random() % 8;
        if (most == 0) {
            components[i] = kind == 0   ? 0
                            : kind == 1 ? 1
                                        : static_cast<double>(random() % 30001) / 20000 - 0.25;
        } else if (kind == 7 && i >= 4) {
            components[i] = components[i - 4];
        } else {
            components[i] = kind == 0   ? 0
                            : kind == 1 ? most
                                        : static_cast<double>(random() % (static_cast<unsigned>(most) + 1));
        }
    }
    return RowOf(inForm.format, components);
}

/// What rounding in single precision may cost beyond half a unit: 4 parts in 2^24 of the greatest values that
/// meet, twice those of the destination where colour differences exceed it.
double Tolerance(const Form& inSource, const Form& inDestination)
{
    constexpr double kPart = 8.0 / (1 << 24);
    const double most = MostOf(inDestination.format);
    if (most != 0) {
        return 0.5 + most * kPart;
    }
    return IsYUV(inSource.format) ? 2 * kPart : 1.0 / (1 << 25);
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

} // namespace

TEST(DirectConversion, EveryComponentIsTheNearest)
{
    const auto pairs = Pairs();
    // RGB to RGB, to and from YUV, and YUV to YUV of an equal matrix, of which one has two names.
    ASSERT_EQ(pairs.size(), 4u * 4 + 2 * 4 * 20 + 3 * 4 * 4 + 8 * 8);
    for (const auto& [source, destination] : pairs) {
        SCOPED_TRACE(NameOf(source) + " to " + NameOf(destination));
        const double tolerance = Tolerance(source, destination);
        const double most = MostOf(destination.format);
        for (const std::size_t width : kWidths) {
            const Row row = Noise(source, width, static_cast<unsigned>(width));
            const Row result = Converted(source, row, destination, width);
            const std::vector<double> expected = Expected(source, row, destination, width);
            const std::vector<double> actual = Components(destination.format, result);
            ASSERT_EQ(RowOf(destination.format, actual), result) << "bits that belong to no component";
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const double wanted = most == 0 ? expected[i] : std::clamp(expected[i], 0.0, most);
                ASSERT_NEAR(actual[i], wanted, tolerance) << "width " << width << ", component " << i;
            }
        }
    }
}

TEST(DirectConversion, AllInstructionsGiveTheSameBytes)
{
    for (const auto& [source, destination] : Pairs()) {
        SCOPED_TRACE(NameOf(source) + " to " + NameOf(destination));
        for (const std::size_t width : {7u, 49u, 1921u}) {
            const Row row = Noise(source, width, 5);
            const Row best = Converted(source, row, destination, width);
            for (const std::int64_t target : AllTargets()) {
                hwy::GetChosenTarget().Update(target);
                const Row result = Converted(source, row, destination, width);
                hwy::GetChosenTarget().DeInit(); // the best again
                ASSERT_TRUE(result == best) << hwy::TargetName(target) << ", width " << width;
            }
        }
    }
}

TEST(DirectConversion, TouchesOnlyTheUsedBytesOfItsRows)
{
    constexpr std::byte kGuard{0xA7};
    for (const auto& [source, destination] : Pairs()) {
        SCOPED_TRACE(NameOf(source) + " to " + NameOf(destination));
        for (const std::size_t width : {1u, 6u, 47u, 97u}) {
            constexpr std::uint32_t kRows = 4;
            const std::size_t used = EmptyRow(destination.format, width).size();
            const std::size_t rowBytes = used + 20; // no row is aligned to more than a word
            std::vector<std::byte> memory(4 + kRows * rowBytes, kGuard);
            std::vector<Row> rows;
            Row pixels;
            for (std::uint32_t row = 0; row < kRows; ++row) {
                rows.push_back(Noise(source, width, row));
                pixels.insert(pixels.end(), rows.back().begin(), rows.back().end());
            }
            const auto wide = static_cast<std::uint32_t>(width);
            VF::ConvertRowsDirectly(SourceOf(source, pixels.data(), rows[0].size(), wide, kRows),
                                    DestinationOf(destination, memory.data() + 4, rowBytes, wide, kRows), 1,
                                    3);
            for (std::size_t i = 0; i < memory.size(); ++i) {
                const std::size_t row = (i - 4) / rowBytes;
                const std::size_t column = (i - 4) % rowBytes;
                const bool within = i >= 4 && (row == 1 || row == 2) && column < used;
                const std::byte expected =
                    within ? Converted(source, rows[row], destination, width)[column] : kGuard;
                ASSERT_EQ(memory[i], expected) << "width " << width << ", row " << row << ", byte " << column;
            }
        }
    }
}

TEST(DirectConversion, LargeFramesAreWrittenTheSame)
{
    // Rows of large frames go around the caches where they are aligned.
    constexpr std::uint32_t kManyRows = 60000; // of which one is there
    constexpr std::byte kGuard{0x5A};
    for (const auto& [source, destination] : Pairs()) {
        if (IsYUV(source.format) || MostOf(destination.format) == 255 || IsYUV(destination.format)) {
            continue;
        }
        SCOPED_TRACE(NameOf(source) + " to " + NameOf(destination));
        for (const std::uint32_t width : {1u, 97u, 1920u}) {
            const Row row = Noise(source, width, 9);
            const Row small = Converted(source, row, destination, width);
            alignas(64) static std::byte memory[1921 * 16];
            std::fill(std::begin(memory), std::end(memory), kGuard);
            VF::ConvertRowsDirectly(SourceOf(source, row.data(), row.size(), width, kManyRows),
                                    DestinationOf(destination, memory, sizeof(memory), width, kManyRows), 0,
                                    1);
            ASSERT_TRUE(std::equal(small.begin(), small.end(), memory)) << width;
            ASSERT_EQ(memory[small.size()], kGuard) << width;
        }
    }
}

TEST(DirectConversion, PlanarChromaIsInterpolatedBothWays)
{
    const std::pair<std::size_t, std::size_t> kSizes[] = {{1, 1},  {1, 2},   {2, 3},   {3, 4},   {13, 5},
                                                          {48, 2}, {480, 3}, {481, 4}, {482, 6}, {1921, 2}};
    for (const auto& [width, height] : kSizes) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        const std::size_t wide = (width + 1) / 2;
        const std::size_t high = (height + 1) / 2;
        const Form packed{kPixelFormat_UYVY_422_8u, Matrix::kBT601_625,
                          width % 3 ? Range::kLimited : Range::kFull};
        Form planar = packed;
        planar.format = kPixelFormat_YUV_420_8u_Planar;
        // Each plane apart and as large as it must be, so that a sanitizer sees what is read beyond.
        std::mt19937 random(static_cast<unsigned>(width));
        Row planes[] = {Row(width * height), Row(wide * high), Row(wide * high)};
        for (Row& plane : planes) {
            for (std::byte& value : plane) {
                value = static_cast<std::byte>(random() % 4 ? random() : 255);
            }
        }
        VF::SourcePicture source =
            SourceOf(planar, planes[0].data(), width, static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(height));
        source.planes[1] = {planes[1].data(), wide};
        source.planes[2] = {planes[2].data(), wide};
        for (const PixelFormat format : {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u,
                                         kPixelFormat_BGRA_4444_16u, kPixelFormat_BGRA_4444_32f}) {
            const Form form{format};
            const std::size_t rowBytes = EmptyRow(format, width).size();
            Row pixels(rowBytes * height);
            const VF::DestinationPicture destination =
                DestinationOf(form, pixels.data(), rowBytes, source.width, source.height);
            ASSERT_TRUE(VF::HasDirectConversion(source, destination, kRenderQuality_Draft));
            VF::ConvertRowsDirectly(source, destination, 0, source.height);
            const double most = MostOf(format);
            for (std::size_t row = 0; row < height; ++row) {
                std::vector<double> components;
                const std::size_t near = row / 2;
                const std::size_t far = row % 2 ? std::min(near + 1, high - 1) : near - (near > 0);
                for (std::size_t i = 0; i < 4 * wide; ++i) {
                    const auto value = [&](int inPlane, std::size_t inAt) {
                        return std::to_integer<int>(planes[inPlane][inAt]);
                    };
                    const int plane = i % 4 == 0 ? 1 : 2;
                    components.push_back(i % 2 ? value(0, row * width + std::min(i / 2, width - 1))
                                               : value(plane, near * wide + i / 4) * 0.75 +
                                                     value(plane, far * wide + i / 4) * 0.25);
                }
                const auto expected = Expected(packed, components, form, width);
                const auto actual = Components(
                    format, Row(pixels.begin() + static_cast<std::ptrdiff_t>(row * rowBytes),
                                pixels.begin() + static_cast<std::ptrdiff_t>((row + 1) * rowBytes)));
                for (std::size_t i = 0; i < expected.size(); ++i) {
                    ASSERT_NEAR(actual[i], most == 0 ? expected[i] : std::clamp(expected[i], 0.0, most),
                                Tolerance(packed, form))
                        << "row " << row << ", component " << i;
                }
            }
            const Row best = pixels;
            for (const std::int64_t target : AllTargets()) {
                hwy::GetChosenTarget().Update(target);
                VF::ConvertRowsDirectly(source, destination, 0, source.height);
                hwy::GetChosenTarget().DeInit();
                ASSERT_TRUE(pixels == best) << hwy::TargetName(target);
            }
        }
    }
}

TEST(DirectConversion, AreasOfOneColourStayOne)
{
    std::vector<std::array<double, 4>> colours = {{255, 0, 0, 255}, {0, 255, 0, 0},   {0, 0, 255, 9},
                                                  {0, 255, 255, 3}, {255, 0, 255, 0}, {255, 255, 0, 255},
                                                  {1, 2, 3, 4},     {200, 180, 7, 77}};
    for (int grey = 0; grey < 256; ++grey) {
        colours.push_back({1.0 * grey, 1.0 * grey, 1.0 * grey, 255});
    }
    constexpr std::size_t kWidth = 45;
    for (const auto& [source, destination] : Pairs()) {
        if (source.format != kPixelFormat_BGRA_4444_8u || !IsYUV(destination.format)) {
            continue;
        }
        SCOPED_TRACE(NameOf(source) + " to " + NameOf(destination));
        for (const auto& colour : colours) {
            std::vector<double> components;
            for (std::size_t x = 0; x < kWidth; ++x) {
                components.insert(components.end(), colour.begin(), colour.end());
            }
            const Row row = RowOf(source.format, components);
            const Row there = Converted(source, row, destination, kWidth);
            const auto codes = Components(destination.format, there);
            const auto expected = Expected(source, row, destination, kWidth);
            for (std::size_t i = 0; i < codes.size(); ++i) {
                ASSERT_EQ(codes[i], codes[i < 4 ? (i == 3 ? 1 : i) : i - 4]) << "component " << i;
                ASSERT_NEAR(codes[i], std::min(expected[i], MostOf(destination.format)), 0.5001);
            }
            if (colour[0] == colour[1] && colour[1] == colour[2]) {
                ASSERT_EQ(codes[0], destination.format == kPixelFormat_UYVY_422_8u ? 128 : 512);
                ASSERT_EQ(codes[2], codes[0]);
            }
            if (destination.format == kPixelFormat_V210_422_10u) {
                for (std::size_t i = 3; i < components.size(); i += 4) {
                    components[i] = 255; // alpha is opaque when it comes back
                }
                // Ten bits hold every 8-bit colour.
                ASSERT_EQ(Components(source.format, Converted(destination, there, source, kWidth)),
                          components);
            }
        }
    }
}

TEST(DirectConversion, WholeNumbersSurviveFloats)
{
    for (const PixelFormat format :
         {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u, kPixelFormat_BGRA_4444_16u}) {
        SCOPED_TRACE(kiomediatypes::NameOf(format));
        const Form whole{format};
        const Form real{kPixelFormat_BGRA_4444_32f};
        std::vector<double> all;
        for (double value = 0; value <= MostOf(format); ++value) {
            all.push_back(value);
        }
        const Row row = RowOf(format, all);
        const Row floats = Converted(whole, row, real, all.size() / 4);
        const auto values = Components(real.format, floats);
        for (std::size_t i = 0; i < all.size(); ++i) {
            const std::size_t from = format == kPixelFormat_ARGB_4444_8u ? i / 4 * 4 + 3 - i % 4 : i;
            ASSERT_EQ(values[i], static_cast<float>(all[from]) / static_cast<float>(MostOf(format)));
        }
        EXPECT_EQ(Converted(real, floats, whole, all.size() / 4), row);
    }
}

TEST(DirectConversion, EveryDeepValueGoesToTheNearestByte)
{
    std::vector<double> all;
    for (int value = 0; value < 65536; ++value) {
        all.push_back(value);
    }
    const Form deep{kPixelFormat_BGRA_4444_16u};
    const Form bytes{kPixelFormat_BGRA_4444_8u};
    const auto actual =
        Components(bytes.format, Converted(deep, RowOf(deep.format, all), bytes, all.size() / 4));
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(actual[i], std::floor(all[i] / 257 + 0.5)) << i;
    }
}

TEST(DirectConversion, ValuesBeyondBoundsAreClampedAndNoNumberIsBlack)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
    const struct {
        const char* name;
        float value;
        double ofFull;
    } kCases[] = {{"below", -0.25f, 0},
                  {"far below", -kInfinity, 0},
                  {"minus zero", -0.0f, 0},
                  {"above", 1.5f, 1},
                  {"far above", kInfinity, 1},
                  {"huge", 3e38f, 1},
                  {"no number", kNoNumber, 0},
                  {"tiny", 1e-40f, 0},
                  {"just less than half a unit", 0.0019f, 0}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Form real{kPixelFormat_BGRA_4444_32f};
        const Row row = RowOf(real.format, std::vector<double>(9 * 4, static_cast<double>(test.value)));
        for (const PixelFormat format : {kPixelFormat_BGRA_4444_8u, kPixelFormat_ARGB_4444_8u}) {
            EXPECT_EQ(Components(format, Converted(real, row, {format}, 9)),
                      std::vector<double>(9 * 4, test.ofFull * 255));
        }
        const Form full{kPixelFormat_V210_422_10u, Matrix::kBT709, Range::kFull};
        const auto codes = Components(full.format, Converted(real, row, full, 9));
        EXPECT_NEAR(codes[1], test.ofFull * 1023, 2.0);
        EXPECT_EQ(codes[3], codes[1]);
    }
    // One bad value must not spoil more than the chroma that it has a part in.
    std::vector<double> greys(40 * 4, 0.5);
    greys[20 * 4] = greys[20 * 4 + 1] = greys[20 * 4 + 2] = static_cast<double>(kNoNumber);
    const auto codes =
        Components(kPixelFormat_UYVY_422_8u,
                   Converted({kPixelFormat_BGRA_4444_32f}, RowOf(kPixelFormat_BGRA_4444_32f, greys),
                             {kPixelFormat_UYVY_422_8u}, 40));
    for (std::size_t i = 0; i < codes.size(); ++i) {
        ASSERT_EQ(codes[i], i % 2 == 0 ? 128 : i == 41 ? 16 : 126) << i;
    }
}

TEST(DirectConversion, LimitedCodesGainAndLoseTwoBits)
{
    const Form bytes{kPixelFormat_UYVY_422_8u};
    const Form deep{kPixelFormat_V210_422_10u};
    std::vector<double> all;
    for (int code = 0; code < 1024 + 8; ++code) {
        all.push_back(std::min(code, 1023)); // whole groups: 86 times 12
    }
    const auto narrow = Components(bytes.format, Converted(deep, RowOf(deep.format, all), bytes, 516));
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(narrow[i], std::min((static_cast<int>(all[i]) + 2) >> 2, 255)) << i;
    }
    std::vector<double> few;
    for (int code = 0; code < 256 + 8; ++code) {
        few.push_back(std::min(code, 255));
    }
    const auto wide = Components(deep.format, Converted(bytes, RowOf(bytes.format, few), deep, 132));
    for (std::size_t i = 0; i < few.size(); ++i) {
        ASSERT_EQ(wide[i], few[i] * 4) << i;
    }
}

TEST(DirectConversion, IsThereOnlyForWhatItDoesExactlyAsTheGeneralWay)
{
    constexpr PixelFormat kBGRA = kPixelFormat_BGRA_4444_8u;
    constexpr PixelFormat kUYVY = kPixelFormat_UYVY_422_8u;
    constexpr PixelFormat kV210 = kPixelFormat_V210_422_10u;
    const auto unknown = static_cast<Matrix>(8);
    const struct {
        const char* name;
        Form source, destination;
        RenderQuality quality;
        std::uint32_t width;
        bool expected;
    } kCases[] = {
        {"chroma is reduced", {kBGRA}, {kUYVY}, kRenderQuality_Medium, 8, true},
        {"any quality is medium", {kBGRA}, {kUYVY}, kRenderQuality_Any, 8, true},
        {"high quality reduces chroma better", {kBGRA}, {kUYVY}, kRenderQuality_High, 8, false},
        {"and interpolates it better", {kV210}, {kBGRA}, kRenderQuality_High, 8, false},
        {"no chroma is resampled at high quality", {kV210}, {kUYVY}, kRenderQuality_High, 8, true},
        {"nor in RGB", {kBGRA}, {kPixelFormat_BGRA_4444_32f}, kRenderQuality_High, 8, true},
        {"scaled", {kBGRA}, {kUYVY}, kRenderQuality_Medium, 9, false},
        {"other matrix", {kUYVY}, {kV210, Matrix::kFCC}, kRenderQuality_Medium, 8, false},
        {"same matrix of another name",
         {kUYVY, Matrix::kBT601_525},
         {kV210, Matrix::kBT601_625},
         kRenderQuality_Medium,
         8,
         true},
        {"unknown matrix", {kBGRA}, {kUYVY, unknown}, kRenderQuality_Medium, 8, false},
        {"unknown but the same matrix", {kUYVY, unknown}, {kV210, unknown}, kRenderQuality_Medium, 8, true},
        {"planes made", {kBGRA}, {kPixelFormat_YUV_420_8u_Planar}, kRenderQuality_Draft, 8, false},
        {"copied", {kBGRA}, {kBGRA}, kRenderQuality_High, 8, true},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(VF::HasDirectConversion(SourceOf(test.source, nullptr, 0, 8, 2),
                                          DestinationOf(test.destination, nullptr, 0, test.width, 2),
                                          test.quality),
                  test.expected)
            << test.name;
    }
}

} // namespace direct
