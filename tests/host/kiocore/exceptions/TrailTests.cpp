#include <kiocore/config/Errors.h>
#include <kiocore/exceptions/MachineException.h>
#include <kiocore/exceptions/Trail.h>

#include "support/TraceRecorder.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using kiocore::exceptions::GetShouldCrashOnMachineException;
using kiocore::exceptions::GetTrail;
using kiocore::exceptions::kTrailLength;
using kiocore::exceptions::LeaveTrail;
using kiocore::exceptions::LogException;
using kiocore::exceptions::Panic;
using kiocore::exceptions::SetShouldCrashOnMachineException;
using kiocore::utility::Dictionary;

TEST(Trail, KeepsTheLastEntriesNewestLast)
{
    support::TraceRecorder trace("Trail", 1);
    for (std::size_t i = 0; i < kTrailLength + 3; ++i) {
        LeaveTrail({{"step", i}});
    }
    const std::vector<Dictionary> trail = GetTrail();
    ASSERT_EQ(trail.size(), kTrailLength);
    EXPECT_EQ(trail.front().AsJSON(), R"({"step":3})");
    EXPECT_EQ(trail.back().AsJSON(), R"({"step":66})");
    ASSERT_EQ(trace.Lines().size(), kTrailLength + 3);
    EXPECT_EQ(trace.Lines()[0], R"({"step":0})");
}

TEST(Trail, PanicSaysWhyAndAborts)
{
    EXPECT_EXIT(Panic({{"checkpoint", "Machine Exception"}, {"exception", SIGSEGV}}),
                testing::KilledBySignal(SIGABRT),
                R"(Panic: \{"checkpoint":"Machine Exception","exception":11\})");
}

TEST(Trail, LogsExceptionsWithTypeTextCodeAndPlace)
{
    const kiocore::kio_exception ours("went wrong", kiocore::kError_BadArgument);
    const kiocore::exceptions::machine_exception fault(SIGBUS, 0);
    const std::runtime_error other("plain");
    kiocore::kio_exception placed("not there", kiocore::kError_File);
    placed.At("Source", "!file.Exists()");
    const struct {
        const std::exception& exception;
        const char* expected;
    } kCases[] = {
        {ours, "kiocore::kio_exception: went wrong (code 0x80010009) in the test"},
        {fault, "kiocore::exceptions::machine_exception: Machine exception (code 7) in the test"},
        {other, "std::runtime_error: plain in the test"},
        {placed, "kiocore::kio_exception: not there (code 0x80010005) [Source: !file.Exists()] in the test"},
    };
    for (const auto& test : kCases) {
        support::TraceRecorder trace("Exceptions", 1);
        LogException(test.exception, "the test");
        EXPECT_EQ(trace.Lines(), std::vector<std::string>{test.expected});
    }
}

TEST(Trail, WhetherAMachineExceptionEndsTheProcessIsOffUntilSet)
{
    EXPECT_FALSE(GetShouldCrashOnMachineException());
    SetShouldCrashOnMachineException(true);
    EXPECT_TRUE(GetShouldCrashOnMachineException());
    SetShouldCrashOnMachineException(false);
    EXPECT_FALSE(GetShouldCrashOnMachineException());
}

} // namespace
