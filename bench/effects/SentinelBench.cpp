#include "EffectsBench.h"

#include "support/Allocations.h"
#include "support/Interleaved.h"
#include "support/OnThreads.h"

#include <TR/EffectPluginManagerCrashDetection.h>
#include <kioappsupport/Feature.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/exceptions/MachineException.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace bench {
namespace {

using kiocore::ImmutableString;

constexpr std::size_t kCalls = 200'000;
constexpr std::size_t kPairs = 31;
constexpr int kModules = 16;

class Module final : public TR::IFilterModule, public virtual kiocore::classref::UnknownBase {
public:
    explicit Module(std::string inMatchName) : mMatchName(std::move(inMatchName)) {}
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override { return UnknownBase::QueryMap(inInterfaceID); }
    ImmutableString GetMatchName() const override { return mMatchName; }
    TR::EffectPluginMetadata GetMetadata() const override
    {
        return {mMatchName, "bench", "An effect", "Blur", "Author", "1.0", false};
    }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override { return u"An effect"; }

private:
    const ImmutableString mMatchName;
};

struct Callee {
    virtual ~Callee() = default;
    virtual void Nothing() = 0;
};
struct EmptyCallee final : Callee {
    __attribute__((noinline)) void Nothing() override { asm volatile(""); }
};

std::vector<TR::IFilterModuleRef> MakeModules()
{
    std::vector<TR::IFilterModuleRef> modules;
    for (int i = 0; i < kModules; ++i) {
        modules.push_back(kiocore::classref::MakeObject<Module>("frei0r.effect" + std::to_string(i)));
    }
    return modules;
}

/// The least that names the running plug-in: one lock, one look-up, a pointer pushed and popped.
struct Leanest {
    struct Description {
        std::string json;
    };
    std::mutex lock;
    std::map<ImmutableString, std::shared_ptr<Description>> map;
    struct Stack {
        std::array<std::shared_ptr<Description>, 16> entries;
        std::size_t depth = 0;
    };
    static Stack& OfThread()
    {
        static thread_local Stack stack;
        return stack;
    }

    explicit Leanest(const std::vector<TR::IFilterModuleRef>& inModules)
    {
        for (const auto& module : inModules) {
            map[module->GetMatchName()] = std::make_shared<Description>();
        }
    }
    void Push(const ImmutableString& inMatchName)
    {
        Stack& stack = OfThread();
        const std::lock_guard guard(lock);
        stack.entries[stack.depth++] = map.find(inMatchName)->second;
    }
    static void Pop()
    {
        Stack& stack = OfThread();
        stack.entries[--stack.depth].reset();
    }
};

void KeepAlive(const void* inPointer)
{
    asm volatile("" : : "r"(inPointer) : "memory");
}

} // namespace

void BenchSentinel()
{
    kioappsupport::feature::SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, true);
    const auto modules = MakeModules();
    Leanest leanest(modules);
    PrintHeader("Naming the running plug-in, against the leanest lock, map look-up, push and pop");
    for (const unsigned threads : {1u, 2u}) {
        const auto lean = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                for (std::size_t call = 0; call < kCalls; ++call) {
                    leanest.Push(modules[(call + inThread * 5) % kModules]->GetMatchName());
                    KeepAlive(&leanest);
                    Leanest::Pop();
                }
            });
        };
        const auto ours = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                for (std::size_t call = 0; call < kCalls; ++call) {
                    const TR::ScSetCurrentPluginModule sentinel(modules[(call + inThread * 5) % kModules], 0);
                    KeepAlive(&sentinel);
                }
            });
        };
        PrintRow("plug-ins in turn, " + std::to_string(threads) + (threads == 1 ? " thread" : " threads"),
                 Compare(lean, ours, kPairs, kCalls), 1.5, "ns");
        const auto leanOne = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                for (std::size_t call = 0; call < kCalls; ++call) {
                    leanest.Push(modules[inThread]->GetMatchName());
                    KeepAlive(&leanest);
                    Leanest::Pop();
                }
            });
        };
        const auto oursOne = [&] {
            return OnThreads(threads, [&](unsigned inThread) {
                for (std::size_t call = 0; call < kCalls; ++call) {
                    const TR::ScSetCurrentPluginModule sentinel(modules[inThread], 0);
                    KeepAlive(&sentinel);
                }
            });
        };
        PrintRow("a plug-in for many frames, " + std::to_string(threads) +
                     (threads == 1 ? " thread" : " threads"),
                 Compare(leanOne, oursOne, kPairs, kCalls), 1.5, "ns");
    }
    const std::size_t before = AllocationCount();
    for (std::size_t call = 0; call < 1000; ++call) {
        const TR::ScSetCurrentPluginModule sentinel(modules[call % kModules], 0);
    }
    PrintNote("Allocations in 1000 sentinels: " + std::to_string(AllocationCount() - before) + " (goal 0)");
}

void BenchSentinelOff()
{
    kioappsupport::feature::SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, false);
    const auto modules = MakeModules();
    std::vector<std::unique_ptr<Callee>> callees;
    for (int i = 0; i < kModules; ++i) {
        callees.push_back(std::make_unique<EmptyCallee>());
    }
    PrintHeader("A sentinel with detection off, against one virtual call");
    const auto call = [&] {
        return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
            for (std::size_t i = 0; i < kCalls; ++i) {
                const ImmutableString name = modules[i % kModules]->GetMatchName();
                KeepAlive(&name);
            }
        });
    };
    const auto ours = [&] {
        return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
            for (std::size_t i = 0; i < kCalls; ++i) {
                const TR::ScSetCurrentPluginModule sentinel(modules[i % kModules], 0);
                KeepAlive(&sentinel);
            }
        });
    };
    const auto empty = [&] {
        return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
            for (std::size_t i = 0; i < kCalls; ++i) {
                callees[i % kModules]->Nothing();
            }
        });
    };
    PrintRow("an empty one", Compare(empty, ours, kPairs, kCalls), 2, "ns");
    PrintRow("the one that asks for the match name, which comes before all",
             Compare(call, ours, kPairs, kCalls), 0, "ns");
}

void BenchGuard()
{
    constexpr std::size_t kGuards = 200'000;
    constexpr std::size_t kFaults = 100'000;
    PrintHeader("The machine-exception guard, against sigsetjmp without a signal mask");
    const auto bare = [] {
        return Timed(CLOCK_THREAD_CPUTIME_ID, [] {
            for (std::size_t i = 0; i < kGuards; ++i) {
                sigjmp_buf jump;
                if (sigsetjmp(jump, 0) != 0) {
                    std::abort();
                }
                KeepAlive(&jump);
            }
        });
    };
    const auto ours = [] {
        return Timed(CLOCK_THREAD_CPUTIME_ID, [] {
            for (std::size_t i = 0; i < kGuards; ++i) {
                kiocore::exceptions::GuardMachineExceptions([] { KeepAlive(nullptr); });
            }
        });
    };
    const Comparison armed = Compare(bare, ours, kPairs, kGuards);
    PrintRow("armed and disarmed", armed, 0, "ns");
    char text[80];
    std::snprintf(text, sizeof(text), "%.1f ns for each (goal 10)", armed.ours);
    PrintNote(text);
    std::size_t caught = 0;
    const double ns = Timed(CLOCK_MONOTONIC, [&] {
        for (std::size_t i = 0; i < kFaults; ++i) {
            try {
                kiocore::exceptions::GuardMachineExceptions([] {
                    volatile int* volatile nowhere = nullptr;
                    *nowhere = 1;
                });
            } catch (const kiocore::exceptions::machine_exception&) {
                ++caught;
            }
        }
    });
    std::snprintf(text, sizeof(text), "%zu of %zu faults in a row caught, %.2f us each", caught, kFaults,
                  ns / double(kFaults) / 1000);
    PrintNote(text);
}

} // namespace bench
