#include "SpecimenModules.h"
#include "support/CrashCases.h"
#include "support/VictimRunner.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using support::CrashCase;

class PluginCrashMatrix : public testing::TestWithParam<CrashCase> {};

TEST_P(PluginCrashMatrix, NamesTheInnermostPluginAndEndsAsItWould)
{
    const CrashCase& test = GetParam();
    const std::string expected = test.signal != 0 ? "signal " + std::to_string(test.signal)
                                                  : "exit " + std::to_string(test.exitStatus);
    for (const char* thread : {"main", "worker"}) {
        SCOPED_TRACE(thread);
        const support::TemporaryFolder preferences;
        support::VictimRunner victim;
        EXPECT_EQ(victim.Run(SENTINEL_VICTIM, {preferences.Path(), test.name, thread}), expected)
            << victim.StandardError();
        const std::filesystem::path file = preferences / "VictimCrash.json";
        ASSERT_EQ(std::filesystem::exists(file), test.isReported);
        if (test.isReported) {
            EXPECT_EQ(support::ReadFile(file), specimen::ExpectedJSON("victim.inner"));
        }
        EXPECT_THAT(victim.Litter(), testing::IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(CrashFile, PluginCrashMatrix, testing::ValuesIn(support::CrashCases()),
                         [](const auto& inTest) {
                             std::string name = inTest.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
