#include "ChannelPlan.h"

#include <algorithm>

namespace trhost::effects::ladspa {
namespace {

/// The mean of inCount series of values, each inStep apart.
struct Series {
    const float* first;
    std::size_t step; // from value to value
};

void WriteMean(const std::vector<Series>& inSeries, int inFrames, float* outValues, std::size_t inStep)
{
    const float part = 1.0f / static_cast<float>(inSeries.size());
    for (std::size_t n = 0; n < static_cast<std::size_t>(inFrames); ++n) {
        float sum = 0;
        for (const Series& series : inSeries) {
            sum += series.first[n * series.step];
        }
        outValues[n * inStep] = inSeries.size() == 1 ? sum : sum * part;
    }
}

/// Which of inFrom meet number inTo of inToCount.
std::vector<int> Partners(int inTo, int inToCount, int inFromCount)
{
    std::vector<int> partners;
    if (inFromCount < inToCount) {
        return {inTo % inFromCount};
    }
    for (int from = inTo; from < inFromCount; from += inToCount) {
        partners.push_back(from);
    }
    return partners;
}

int CountInstances(int inChannels, int inMost)
{
    if (inChannels < inMost) {
        return 1;
    }
    return inChannels % inMost == 0 ? inChannels / inMost : 0;
}

} // namespace

ChannelPlan::ChannelPlan(int inChannels, int inInputs, int inOutputs)
    : mChannels(inChannels), mMost(std::max(inInputs, inOutputs)),
      mInstances(CountInstances(inChannels, mMost)), mServed(std::min(inChannels, mMost))
{}

void ChannelPlan::Distribute(int inInstance, const float* inSamples, int inFrames,
                             const std::vector<float*>& outInputs) const
{
    const int inputs = static_cast<int>(outInputs.size());
    for (int input = 0; input < inputs; ++input) {
        std::vector<Series> series;
        for (const int channel : Partners(input, inputs, mServed)) {
            series.push_back(
                {inSamples + inInstance * mServed + channel, static_cast<std::size_t>(mChannels)});
        }
        WriteMean(series, inFrames, outInputs[static_cast<std::size_t>(input)], 1);
    }
}

void ChannelPlan::Collect(int inInstance, const std::vector<float*>& inOutputs, int inFrames,
                          float* outSamples) const
{
    for (int channel = 0; channel < mServed; ++channel) {
        std::vector<Series> series;
        for (const int output : Partners(channel, mServed, static_cast<int>(inOutputs.size()))) {
            series.push_back({inOutputs[static_cast<std::size_t>(output)], 1});
        }
        WriteMean(series, inFrames, outSamples + inInstance * mServed + channel,
                  static_cast<std::size_t>(mChannels));
    }
}

} // namespace trhost::effects::ladspa
