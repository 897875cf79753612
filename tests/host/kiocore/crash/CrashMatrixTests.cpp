#include "support/CrashCases.h"
#include "support/VictimRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>

namespace {

using support::CrashCase;
using support::VictimRunner;

const std::string kInnermost = "{\"innermost\":\"\xC3\xA9\\n\"}";

class CrashMatrix : public testing::TestWithParam<CrashCase> {};

TEST_P(CrashMatrix, EndsAsItWouldAndLeavesItsReport)
{
    const CrashCase& test = GetParam();
    const std::string expected = test.signal != 0 ? "signal " + std::to_string(test.signal)
                                                  : "exit " + std::to_string(test.exitStatus);
    for (const char* thread : {"main", "worker"}) {
        SCOPED_TRACE(thread);
        VictimRunner victim;
        EXPECT_EQ(victim.Run(CRASH_VICTIM, {victim.ReportPath(), test.name, thread}), expected)
            << victim.StandardError();
        EXPECT_EQ(victim.Report(), test.isReported ? std::optional(kInnermost) : std::nullopt);
        EXPECT_THAT(victim.Litter(), testing::IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(CrashHandling, CrashMatrix, testing::ValuesIn(support::CrashCases()),
                         [](const auto& inTest) {
                             std::string name = inTest.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

std::string Signal(int inSignal)
{
    return "signal " + std::to_string(inSignal);
}

TEST(CrashHandling, KeepsItsPromisesInTheSpecialCases)
{
    const struct {
        const char* crash;
        const char* mode;
        std::string expected;
        bool isReported;
    } kCases[] = {
        {"null-store", "worker-with-signals-blocked", Signal(SIGSEGV), true},
        {"null-store", "two-threads-at-once", Signal(SIGSEGV), true}, // one report, not two
        {"abort", "two-threads-at-once", Signal(SIGABRT), true},
        {"null-store", "faulting-callback", Signal(SIGSEGV), false},
        {"division-by-zero", "aborting-callback", Signal(SIGFPE), false},
#if !defined(CRASH_CASES_THREAD_SANITIZER) // it blocks all signals in a handler: a fault there ends it all
        {"abort", "faulting-callback", Signal(SIGABRT), false},
        {"abort", "faulting-callback-in-guard", Signal(SIGABRT), false},
#endif
        {"null-store", "behind-another-handler", Signal(SIGSEGV), true},
        {"abort", "uninstalled", Signal(SIGABRT), false},
        {"uncaught-exception", "uninstalled", Signal(SIGABRT), false},
        {"abort", "installed-again-in-forked-child", "exit 0", true},
        {"null-store", "guards-only-after-old-handler", "exit 8", false},
        {"null-store", "guards-only-after-default", Signal(SIGSEGV), false},
        {"null-store", "guards-only-after-ignore", Signal(SIGSEGV), false},
        {"", "guards-only-after-repairing-handler", "exit 0", false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.crash) + ", " + test.mode);
        VictimRunner victim;
        EXPECT_EQ(victim.Run(CRASH_VICTIM, {victim.ReportPath(), test.crash, test.mode}), test.expected)
            << victim.StandardError();
        EXPECT_EQ(victim.Report(), test.isReported ? std::optional(kInnermost) : std::nullopt);
    }
}

TEST(CrashHandling, TerminateTellsTheException)
{
    const struct {
        const char* crash;
        const char* expected;
    } kCases[] = {
        {"uncaught-exception", "'std::runtime_error': nobody catches this\n"},
        {"terminate", "terminate called without an active exception\n"},
    };
    for (const auto& test : kCases) {
        VictimRunner victim;
        victim.Run(CRASH_VICTIM, {victim.ReportPath(), test.crash, "worker"});
        EXPECT_THAT(victim.StandardError(), testing::HasSubstr(test.expected));
    }
}

} // namespace
