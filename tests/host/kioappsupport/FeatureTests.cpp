#include <kioappsupport/Feature.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kioappsupport::feature {
namespace {

std::unique_ptr<BetaFeature> Declare(const char* inName, DefaultEnablement inDefault,
                                     const char* inDisplayName = "$$$/T/Feature=A Feature")
{
    return std::make_unique<BetaFeature>(inName, inDisplayName, "$$$/T/Description=Does things",
                                         FeatureStage::kBeta, VisibilityInAllClientApps::kVisible,
                                         EnablementChanges::kAfterRestart, inDefault);
}

TEST(Feature, IsDecidedByWhatWasSaidAndElseByItsDefaultInWhateverOrder)
{
    // Each letter is a step: D declared with default off, d with default on, u undeclared, + and - said, r
    // reset.
    const struct {
        const char* name;
        const char* steps;
        bool isEnabled;
    } kCases[] = {
        {"nobody knows it", "", false},
        {"default off", "D", false},
        {"default on", "d", true},
        {"declared, then said", "D+", true},
        {"said, then declared", "+D", true},
        {"said against the default, then declared", "-d", false},
        {"the last word counts", "D+-", false},
        {"reset to the default", "d-r", true},
        {"reset before it was declared", "-rd", true},
        {"its library is gone", "du", false},
        {"its library came back", "d-ud", false},
        {"declared twice: the later one counts", "dD", false},
        {"the later one went: the earlier one counts", "Ddu", false},
        {"and the other way round", "dDu", true},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::vector<std::unique_ptr<BetaFeature>> declared;
        for (const char step : std::string(test.steps)) {
            switch (step) {
            case 'D':
            case 'd':
                declared.push_back(
                    Declare("T.Feature", step == 'd' ? DefaultEnablement::kOn : DefaultEnablement::kOff));
                break;
            case 'u':
                declared.pop_back();
                break;
            case 'r':
                ResetFeature("T.Feature");
                break;
            default:
                SetFeatureEnabled("T.Feature", step == '+');
            }
        }
        EXPECT_EQ(IsFeatureEnabled("T.Feature"), test.isEnabled);
        EXPECT_EQ(GetFeatures().size(), declared.empty() ? 0u : 1u);
        ResetFeature("T.Feature");
    }
}

TEST(Feature, AreListedByNameWithTheirState)
{
    const auto b = Declare("T.B", DefaultEnablement::kOff);
    const auto a = Declare("T.A", DefaultEnablement::kOn, "$$$/T/A=The First");
    SetFeatureEnabled("T.B", false);
    SetFeatureEnabled("T.Undeclared", true);
    const std::vector<FeatureInfo> features = GetFeatures();
    ASSERT_EQ(features.size(), 2u) << "what nobody declared is no feature";
    EXPECT_EQ(features[0].name, "T.A");
    EXPECT_EQ(features[0].displayName, u"The First");
    EXPECT_TRUE(features[0].isEnabled);
    EXPECT_TRUE(features[0].isDefault);
    EXPECT_EQ(features[1].name, "T.B");
    EXPECT_EQ(features[1].stage, FeatureStage::kBeta);
    EXPECT_FALSE(features[1].isEnabled);
    EXPECT_FALSE(features[1].isDefault) << "said to be what it is by default is said nevertheless";
    ResetFeature("T.B");
    ResetFeature("T.Undeclared");
}

} // namespace
} // namespace kioappsupport::feature
