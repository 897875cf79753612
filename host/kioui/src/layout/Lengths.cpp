#include "Lengths.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kioui::layout {
namespace {

int Sum(const std::vector<int>& inNumbers)
{
    return std::accumulate(inNumbers.begin(), inNumbers.end(), 0);
}

/// Takes up to inMissing from the elements that stretch, from each in proportion to what it has, so that
/// none is gone while another is still large.
/// @return what was taken.
int ShrinkStretching(std::vector<int>& ioSizes, const std::vector<Length>& inLengths, int inMissing)
{
    std::vector<double> weights;
    int most = 0;
    for (std::size_t i = 0; i < inLengths.size(); ++i) {
        const bool shrinks = inLengths[i].stretch > 0 && !inLengths[i].isGap;
        weights.push_back(shrinks ? ioSizes[i] : 0);
        most += shrinks ? ioSizes[i] : 0;
    }
    const int taken = std::min(inMissing, most);
    const std::vector<int> shares = ShareOut(taken, weights);
    for (std::size_t i = 0; i < shares.size(); ++i) {
        ioSizes[i] -= shares[i];
    }
    return taken;
}

void CutAtTheEnd(std::vector<int>& ioSizes, const std::vector<Length>& inLengths, int inMissing)
{
    for (std::size_t i = ioSizes.size(); i-- > 0 && inMissing > 0;) {
        if (!inLengths[i].isGap) {
            const int cut = std::min(inMissing, ioSizes[i]);
            ioSizes[i] -= cut;
            inMissing -= cut;
        }
    }
}

} // namespace

std::vector<int> ShareOut(int inTotal, const std::vector<double>& inWeights)
{
    std::vector<int> shares(inWeights.size(), 0);
    const double allWeights = std::accumulate(inWeights.begin(), inWeights.end(), 0.0);
    if (!(allWeights > 0) || inTotal <= 0) {
        return shares;
    }
    std::vector<double> cutOff(inWeights.size(), 0);
    std::vector<std::size_t> takers;
    int left = inTotal;
    for (std::size_t i = 0; i < inWeights.size(); ++i) {
        if (inWeights[i] > 0) {
            const double share = inTotal * (inWeights[i] / allWeights);
            shares[i] = std::min(int(std::floor(share)), left); // the quotients may add up to a trace over 1
            cutOff[i] = share - shares[i];
            left -= shares[i];
            takers.push_back(i);
        }
    }
    std::stable_sort(takers.begin(), takers.end(),
                     [&](std::size_t inOne, std::size_t inOther) { return cutOff[inOne] > cutOff[inOther]; });
    for (std::size_t i = 0; left > 0; i = (i + 1) % takers.size()) {
        ++shares[takers[i]];
        --left;
    }
    return shares;
}

std::vector<int> SolveLengths(const std::vector<Length>& inLengths, int inAvailable)
{
    std::vector<int> sizes;
    std::vector<double> stretches;
    for (const Length& length : inLengths) {
        sizes.push_back(length.minimum);
        stretches.push_back(length.stretch);
    }
    const int spare = inAvailable - Sum(sizes);
    if (spare >= 0) {
        const std::vector<int> shares = ShareOut(spare, stretches);
        std::transform(sizes.begin(), sizes.end(), shares.begin(), sizes.begin(), std::plus<>());
        return sizes;
    }
    const int taken = ShrinkStretching(sizes, inLengths, -spare);
    CutAtTheEnd(sizes, inLengths, -spare - taken);
    return sizes;
}

} // namespace kioui::layout
