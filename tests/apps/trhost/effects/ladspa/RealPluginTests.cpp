#include "support/EngineUnderTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numbers>
#include <set>
#include <vector>

namespace {

using namespace effectstests;
using namespace trhost::effects;

constexpr const char* kFolder = "/usr/lib/ladspa"; // of the packages swh-plugins and ladspa-sdk

std::unique_ptr<IAudioEffect> Open(const std::string& inFile, const std::string& inPlugin, int inChannels)
{
    IEffectEngine& engine = LoadEngine(ENGINE_PATH);
    const auto filter = engine.OpenFilter(engine.Describe(std::string(kFolder) + "/" + inFile, inPlugin));
    return kiocore::InterfaceRef<IAudioEffectModule>(filter)->Open(48000, inChannels);
}

std::vector<float> Sine(int inFrames)
{
    std::vector<float> samples;
    for (int n = 0; n < inFrames; ++n) {
        samples.push_back(static_cast<float>(std::sin(2 * std::numbers::pi * 997 * n / 48000)));
    }
    return samples;
}

TEST(LadspaRealPlugins, EachPluginIsDescribed)
{
    IEffectEngine& engine = LoadEngine(ENGINE_PATH);
    int runnable = 0;
    std::set<std::string> matchNames;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
        const std::string file = entry.path();
        for (const std::string& name : engine.PluginNames(file)) {
            SCOPED_TRACE(file + " " + name);
            EffectDescription told;
            ASSERT_NO_THROW(told = engine.Describe(file, name));
            EXPECT_EQ(ToJSONText(FromJSONText(ToJSONText(told))), ToJSONText(told));
            EXPECT_TRUE(matchNames.insert(told.matchName).second) << told.matchName;
            EXPECT_EQ(told.refusal.empty(), told.audioInputs > 0 && told.audioOutputs > 0) << told.refusal;
            runnable += told.refusal.empty();
            std::set<std::string> parameters;
            for (const EffectParameter& parameter : told.parameters) {
                EXPECT_TRUE(parameters.insert(parameter.name).second) << parameter.name;
                EXPECT_LE(parameter.minimum, parameter.maximum) << parameter.name;
            }
        }
    }
    EXPECT_GE(runnable, 100);
}

TEST(LadspaRealPlugins, AnAmplifierAmplifies)
{
    const std::vector<float> in = Sine(10000);
    std::vector<float> out(in.size());
    const auto decibels = Open("amp_1181.so", "amp#1181", 2);
    decibels->SetParameter("amps-gain-db", "20");
    decibels->Process(in.data(), out.data(), 5000);
    for (std::size_t n = 0; n < in.size(); ++n) {
        ASSERT_NEAR(out[n], in[n] * 10, 1e-4) << n;
    }
    const auto stereo = Open("amp.so", "amp_stereo#1049", 2);
    stereo->SetParameter("gain", "0.5");
    stereo->Process(in.data(), out.data(), 5000);
    for (std::size_t n = 0; n < in.size(); ++n) {
        ASSERT_EQ(out[n], in[n] * 0.5f) << n;
    }
}

TEST(LadspaRealPlugins, ADelayDelaysAcrossCallsAndBlocks)
{
    const auto effect = Open("delay.so", "delay_5s#1043", 1);
    effect->SetParameter("delay-seconds", "0.25");
    effect->SetParameter("dry-wet-balance", "1");
    constexpr int kDelay = 12000;
    const std::vector<float> in = Sine(2 * kDelay);
    std::vector<float> out(in.size());
    effect->Process(in.data(), out.data(), 7000);
    effect->Process(in.data() + 7000, out.data() + 7000, 2 * kDelay - 7000);
    for (int n = 0; n < 2 * kDelay; ++n) {
        ASSERT_EQ(out[n], n < kDelay ? 0 : in[n - kDelay]) << n;
    }
}

} // namespace
