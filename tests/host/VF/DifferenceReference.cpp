#include "DifferenceReference.h"

#include <support/FrameSamples.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace support {

using namespace kiomediatypes;

namespace {

/// Of full scale. Single precision is what a tolerance is compared in.
double DifferenceOf(bool inIsFloat, double inFirst, double inSecond, double inFull)
{
    if (!inIsFloat) {
        return std::abs(inFirst - inSecond) / inFull;
    }
    const auto first = static_cast<float>(inFirst);
    const auto second = static_cast<float>(inSecond);
    if (std::bit_cast<std::uint32_t>(first) == std::bit_cast<std::uint32_t>(second) || first == second) {
        return 0;
    }
    const float difference = std::abs(first - second);
    return std::isfinite(difference) ? difference : 1;
}

double Lifted(double inDifference)
{
    return std::min(1.0, 64.0 / 255 + 0.75 * inDifference);
}

std::array<double, 4> PaintedOf(const std::array<double, 4>& inDifferences, bool inIsYUV, float inTolerance)
{
    const auto shown = [&](double inDifference) {
        return static_cast<float>(inDifference) > inTolerance ? Lifted(inDifference) : 0.0;
    };
    const double largest = *std::max_element(inDifferences.begin(), inDifferences.end());
    std::array<double, 4> painted{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        painted[channel] = inIsYUV ? shown(largest) : shown(inDifferences[channel]);
    }
    if (painted[0] == 0 && painted[1] == 0 && painted[2] == 0) {
        painted.fill(shown(inDifferences[3]));
    }
    painted[3] = 1;
    return painted;
}

} // namespace

ExpectedDifference ExpectDifference(const MF::IVideoFrameRef& inFirst, const MF::IVideoFrameRef& inSecond,
                                    float inTolerance)
{
    const FrameSamples first(inFirst);
    const FrameSamples second(inSecond);
    const bool isFloat = inFirst->GetPixelFormat() == kPixelFormat_BGRA_4444_32f;
    const std::uint32_t width = inFirst->GetWidth();
    const std::uint32_t height = inFirst->GetHeight();
    ExpectedDifference expected;
    expected.details.differingRows.resize((height + 63) / 64);
    std::uint32_t left = width, top = height, right = 0, bottom = 0;
    double squares = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            std::array<double, 4> differences{};
            for (int component = 0; component < first.Count(); ++component) {
                const std::uint32_t column = first.Width(component) < width ? x / 2 : x;
                const std::uint32_t row = first.Height(component) < height ? y / 2 : y;
                const double difference = DifferenceOf(isFloat, first.Get(component, column, row),
                                                       second.Get(component, column, row), first.Full());
                differences[static_cast<std::size_t>(component)] = difference;
                squares += difference * difference;
            }
            const double largest = *std::max_element(differences.begin(), differences.end());
            expected.details.largest = std::max(expected.details.largest, largest);
            expected.painted.push_back(PaintedOf(differences, first.IsYUV(), inTolerance));
            if (static_cast<float>(largest) > inTolerance) {
                ++expected.result.numDiffPixels;
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
                expected.details.differingRows[y / 64] |= std::uint64_t{1} << y % 64;
            }
        }
    }
    if (expected.result.numDiffPixels != 0) {
        expected.details.left = left;
        expected.details.top = top;
        expected.details.width = right - left;
        expected.details.height = bottom - top;
    }
    const double mean = squares / (1.0 * width * height * first.Count());
    expected.result.variance = static_cast<float>(100 * mean);
    expected.details.psnr = mean == 0 ? std::numeric_limits<double>::infinity() : -10 * std::log10(mean);
    return expected;
}

double CodeOf(const MF::IVideoFrameRef& inFrame, int inComponent, const std::array<double, 4>& inPainted)
{
    const PixelFormat format = inFrame->GetPixelFormat();
    if (IsYUV(format)) {
        const double step = format == kPixelFormat_V210_422_10u ? 4 : 1;
        const double full = format == kPixelFormat_V210_422_10u ? 1023 : 255;
        const bool isFull = inFrame->GetColorSpace().range == color::Range::kFull;
        return inComponent > 0 ? 128 * step
               : isFull        ? std::floor(full * inPainted[0] + 0.5 + 1e-6)
                               : std::floor(16 * step + 219 * step * inPainted[0] + 0.5);
    }
    const double fraction = inPainted[static_cast<std::size_t>(inComponent)];
    if (format == kPixelFormat_BGRA_4444_32f) {
        return fraction;
    }
    // A little up: quarters of steps are whole, so that only what the division lost comes back.
    const double full = format == kPixelFormat_BGRA_4444_16u ? 65535 : 255;
    return std::floor(full * fraction + 0.5 + 1e-6);
}

} // namespace support
