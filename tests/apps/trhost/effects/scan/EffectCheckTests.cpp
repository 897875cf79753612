#include "Specimens.h"

#include "effects/scan/EffectCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace trhost::effects {
namespace {

using testing::IsEmpty;

EffectDescription Effect(const std::string& inName)
{
    EffectDescription description;
    description.matchName = "specimen." + inName;
    description.technology = "specimen";
    description.pluginName = inName;
    description.kind = inName.rfind("sound", 0) == 0 ? EffectKind::kAudioFilter : EffectKind::kVideoFilter;
    return description;
}

TrialCase Pictures(std::uint32_t inWidth, std::uint32_t inHeight, bool inThreaded = false)
{
    TrialCase trial;
    trial.width = inWidth;
    trial.height = inHeight;
    trial.isThreaded = inThreaded;
    return trial;
}

TrialCase Sound(int inRate, int inChannels, int inBlock)
{
    TrialCase trial;
    trial.isAudio = true;
    trial.sampleRate = inRate;
    trial.channels = inChannels;
    trial.blockFrames = inBlock;
    trial.isThreaded = true;
    return trial;
}

/// What the check says of each effect: "kind at size: text" for each finding.
std::map<std::string, std::vector<std::string>>
Check(const std::vector<EffectDescription>& inEffects, const std::vector<TrialCase>& inCases,
      std::chrono::milliseconds inLimit = std::chrono::minutes(5))
{
    CheckSettings settings;
    settings.worker = specimens::Worker(inLimit);
    settings.modules["specimen"] = SPECIMEN_MODULE;
    settings.cases = inCases;
    std::map<std::string, std::vector<std::string>> said;
    int steps = 0;
    const bool isComplete = CheckEffects(
        settings, inEffects,
        [&](CheckResult&& inResult) {
            auto& findings = said[inResult.matchName];
            for (const CheckFinding& finding : inResult.findings) {
                findings.push_back(std::string(NameOf(finding.kind)) + " at " + finding.size + ": " +
                                   finding.text);
            }
        },
        [&](int inDone, int inTotal, const std::string&) {
            EXPECT_EQ(inDone, ++steps);
            EXPECT_EQ(inTotal, static_cast<int>(inEffects.size()));
        },
        {});
    EXPECT_TRUE(isComplete);
    EXPECT_FALSE(specimens::HasChildren());
    return said;
}

TEST(EffectCheck, EachFaultIsFoundAndNamed)
{
    const std::vector<TrialCase> cases{Pictures(16, 16, true), Pictures(9, 11)};
    const struct {
        const char* name;
        std::vector<std::string> findings;
    } kCases[] = {
        {"clean", {}},
        {"writes behind",
         {"wrote outside at 16x16: wrote outside its frame: byte 5 behind the end of its output",
          "wrote outside at 9x11: wrote outside its frame: byte 5 behind the end of its output"}},
        {"writes before",
         {"wrote outside at 16x16: wrote outside its frame: byte 8 before the start of its output",
          "wrote outside at 9x11: wrote outside its frame: byte 8 before the start of its output"}},
        {"writes into gap",
         {"wrote outside at 16x16: wrote outside its frame: byte 1 behind the end of its output",
          "wrote outside at 9x11: wrote outside its frame: byte 1 behind the end of its output"}},
        {"reads behind",
         {"read outside at 16x16: read outside its frame: byte 1 behind the end of its input",
          "read outside at 9x11: read outside its frame: byte 1 behind the end of its input"}},
        {"writes input",
         {"changed input at 16x16: wrote to its input", "changed input at 9x11: wrote to its input"}},
        {"shared state",
         {"thread-dependent at 16x16: gives something else when another instance runs at once"}},
        {"varies",
         {"varies at 16x16: gives something else each time, for the same input",
          "varies at 9x11: gives something else each time, for the same input"}},
        {"throws",
         {"failed at 16x16: specimen.throws threw an exception: out of cheese",
          "failed at 9x11: specimen.throws threw an exception: out of cheese"}},
        {"even sizes only", {"does not take at 9x11: specimen takes even sizes only"}},
    };
    std::vector<EffectDescription> effects;
    for (const auto& test : kCases) {
        effects.push_back(Effect(test.name));
    }
    const auto said = Check(effects, cases);
    ASSERT_EQ(said.size(), std::size(kCases));
    for (const auto& test : kCases) {
        EXPECT_EQ(said.at("specimen." + std::string(test.name)), test.findings) << test.name;
    }
}

TEST(EffectCheck, ACrashEndsOneCaseAndAHangTheEffect)
{
    const auto said = Check({Effect("crashes at 719x487"), Effect("hangs at 320x240"), Effect("clean")},
                            {Pictures(8, 8), Pictures(719, 487), Pictures(320, 240), Pictures(719, 8)},
                            std::chrono::milliseconds(1500));
    EXPECT_THAT(said.at("specimen.crashes at 719x487"),
                testing::ElementsAre("crashed at 719x487: crashed with SIGFPE while being checked",
                                     "crashed at 719x8: crashed with SIGFPE while being checked"));
    EXPECT_THAT(said.at("specimen.hangs at 320x240"),
                testing::ElementsAre("hung at 320x240: did not answer for 1.5 s while being checked"));
    EXPECT_THAT(said.at("specimen.clean"), IsEmpty());
}

TEST(EffectCheck, SoundIsCheckedToo)
{
    const auto said = Check({Effect("sound clean"), Effect("sound infinite"), Effect("sound writes behind")},
                            {Sound(48000, 2, 333)});
    EXPECT_THAT(said.at("specimen.sound clean"), IsEmpty());
    EXPECT_THAT(
        said.at("specimen.sound infinite"),
        testing::ElementsAre("bad samples at 48000 Hz, 2 channels, blocks of 333: gives samples that are no "
                             "numbers, or infinite"));
    EXPECT_THAT(
        said.at("specimen.sound writes behind"),
        testing::ElementsAre("wrote outside at 48000 Hz, 2 channels, blocks of 333: wrote outside its frame: "
                             "byte 1 behind the end of its output"));
}

TEST(EffectCheck, TheUsualCasesPassACleanPluginAndARefusedOneIsNotTried)
{
    EffectDescription refused = Effect("crashes at 719x487");
    refused.refusal = "needs libnothing.so.1, which is not installed";
    const auto said = Check({Effect("clean"), Effect("sound clean"), refused}, {});
    EXPECT_THAT(said.at("specimen.clean"), IsEmpty());
    EXPECT_THAT(said.at("specimen.sound clean"), IsEmpty());
    EXPECT_THAT(said.at("specimen.crashes at 719x487"),
                testing::ElementsAre("does not take at : needs libnothing.so.1, which is not installed"));
}

} // namespace
} // namespace trhost::effects
