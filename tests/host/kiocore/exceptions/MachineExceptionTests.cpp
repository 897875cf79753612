#include <kiocore/debug/CrashContext.h>
#include <kiocore/exceptions/MachineException.h>

#include "support/Faults.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace {

using kiocore::debug::PushCrashContextForCurrentThread;
using kiocore::debug::detail::InspectCrashContextForCurrentThread;
using kiocore::exceptions::GetMachineExceptionCode;
using kiocore::exceptions::GuardMachineExceptions;
using kiocore::exceptions::machine_exception;

std::size_t Depth()
{
    return InspectCrashContextForCurrentThread().Depth();
}

void OnAWorker(void (*inFunction)())
{
    std::thread(inFunction).join();
}

TEST(MachineException, AFaultBecomesAnExceptionThatTellsIt)
{
    const struct {
        const char* name;
        void (*fault)();
        int signal;
        std::uintptr_t address;
    } kCases[] = {
        {"null store", &support::StoreThroughNull, SIGSEGV, 0},
        {"read of a page that is not there", &support::ReadNowhere, SIGSEGV, support::kNowhere},
        {"past the end of a mapped file", &support::ReadPastEndOfFile, SIGBUS, support::EndOfFileAddress()},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        try {
            GuardMachineExceptions(test.fault);
            FAIL() << "no exception";
        } catch (const machine_exception& exception) {
            EXPECT_STREQ(exception.what(), "Machine exception");
            EXPECT_EQ(exception.Code(), test.signal);
            EXPECT_EQ(exception.Address(), test.address);
            EXPECT_EQ(GetMachineExceptionCode(exception), test.signal);
        }
    }
    EXPECT_EQ(GetMachineExceptionCode(std::runtime_error("Machine exception")), std::nullopt);
}

TEST(MachineException, AnOverflowingStackIsCaughtAgainAndAgain)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(GuardMachineExceptions(&support::OverflowStack), machine_exception);
        OnAWorker([] { EXPECT_THROW(GuardMachineExceptions(&support::OverflowStack), machine_exception); });
    }
}

TEST(MachineException, TheInnermostGuardTakesTheFaultAndTheOuterTheNext)
{
    std::vector<std::string> seen;
    EXPECT_THROW(GuardMachineExceptions([&] {
                     try {
                         GuardMachineExceptions(&support::StoreThroughNull);
                     } catch (const machine_exception&) {
                         seen.push_back("inner");
                     }
                     GuardMachineExceptions([&] { seen.push_back("no fault"); });
                     support::StoreThroughNull();
                 }),
                 machine_exception);
    EXPECT_EQ(seen, (std::vector<std::string>{"inner", "no fault"}));
}

TEST(MachineException, OtherExceptionsPassAndDisarm)
{
    EXPECT_THROW(GuardMachineExceptions([] {
                     EXPECT_THROW(GuardMachineExceptions([] { throw std::logic_error("mine"); }),
                                  std::logic_error);
                     support::StoreThroughNull(); // the outer one's
                 }),
                 machine_exception);
}

TEST(MachineException, TheContextIsAsDeepAsBefore)
{
    std::thread([] {
        PushCrashContextForCurrentThread("plug-in", "outer");
        EXPECT_THROW(GuardMachineExceptions([] {
                         PushCrashContextForCurrentThread("plug-in", "inner");
                         PushCrashContextForCurrentThread("plug-in", "innermost");
                         support::StoreThroughNull();
                     }),
                     machine_exception);
        ASSERT_EQ(Depth(), 1u);
        EXPECT_EQ(InspectCrashContextForCurrentThread().At(0).AsJSON(), R"({"plug-in":"outer"})");
    }).join();
}

#if defined(CRASH_CASES_SANITIZED)
constexpr int kFaults = 500; // a sanitizer looks up the stack's bounds at each jump, for a millisecond
#else
constexpr int kFaults = 50000;
#endif

TEST(MachineException, AHundredThousandFaultsOnTwoThreads)
{
    const auto faults = [] {
        int caught = 0;
        for (int i = 0; i < kFaults; ++i) {
            try {
                GuardMachineExceptions(&support::StoreThroughNull);
            } catch (const machine_exception&) {
                ++caught;
            }
        }
        EXPECT_EQ(caught, kFaults);
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        EXPECT_EQ(sigismember(&mask, SIGSEGV), 0);
    };
    std::thread other(faults);
    faults();
    other.join();
}

} // namespace
