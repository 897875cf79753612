#include <VF/Difference.h>

#include <array>
#include <charconv>
#include <cmath>

namespace VF {
namespace {

/// The shortest text that reads back as the same number, whatever the locale.
template <typename Number>
std::string TextOf(Number inNumber)
{
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), inNumber);
    return std::string(text.data(), end.ptr);
}

} // namespace

std::vector<std::pair<std::string, std::string>> DescribeDifference(const ComputedDifference& inDifference,
                                                                    const DifferenceDetails& inDetails)
{
    return {{"Differing Pixels", TextOf(inDifference.numDiffPixels)},
            {"Variance", TextOf(inDifference.variance)},
            {"Bounding Box", TextOf(inDetails.left) + "," + TextOf(inDetails.top) + "," +
                                 TextOf(inDetails.width) + "," + TextOf(inDetails.height)},
            {"Largest Difference", TextOf(inDetails.largest)},
            {"PSNR", std::isinf(inDetails.psnr) ? "infinite" : TextOf(inDetails.psnr)}};
}

} // namespace VF
