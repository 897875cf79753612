#include "support/CrashCases.h"
#include "support/VictimRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>

namespace {

using support::CrashCase;
using support::VictimRunner;

class ScriptCrashMatrix : public testing::TestWithParam<CrashCase> {};

TEST_P(ScriptCrashMatrix, EndsAsItWouldWithoutAnEngine)
{
    const CrashCase& test = GetParam();
    for (const char* mode : {"in-native", "in-native-on-worker", "beside-an-engine", "where-an-engine-was"}) {
        SCOPED_TRACE(mode);
        VictimRunner victim;
        const std::string ending = victim.Run(SCRIPT_CRASH_VICTIM, {victim.ReportPath(), test.name, mode});
        if (std::string_view(test.name) == "uncaught-exception" &&
            std::string_view(mode).starts_with("in-native")) {
            EXPECT_EQ(ending,
                      "signal " + std::to_string(SIGABRT)); // as the script's error, which nobody catches
            EXPECT_THAT(victim.StandardError(), testing::HasSubstr("script_exception"));
            continue;
        }
        EXPECT_EQ(ending, test.signal != 0 ? "signal " + std::to_string(test.signal)
                                           : "exit " + std::to_string(test.exitStatus))
            << victim.StandardError();
        EXPECT_EQ(victim.Report(), test.isReported ? std::optional<std::string>("crashed\n") : std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(CrashHandling, ScriptCrashMatrix, testing::ValuesIn(support::CrashCases()),
                         [](const auto& inTest) {
                             std::string name = inTest.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(ScriptCrashHandling, SharesFaultsWithTheEngine)
{
    const std::string kSegment = "signal " + std::to_string(SIGSEGV);
    const struct {
        const char* crash;
        const char* mode;
    } kCases[] = {
        {"null-store", "installed-after-the-engine"},
        {"stack-overflow", "installed-after-the-engine"},
        {"null-store", "guarded"},
        {"stack-overflow", "guarded"},
        {"null-store", "engines-own-faults"},
        {"null-store", "engines-own-faults-before-installing"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.crash) + " " + test.mode);
        VictimRunner victim;
        EXPECT_EQ(victim.Run(SCRIPT_CRASH_VICTIM, {victim.ReportPath(), test.crash, test.mode}), kSegment)
            << victim.StandardError();
        EXPECT_EQ(victim.Report(), "crashed\n");
    }
}

} // namespace
