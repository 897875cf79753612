#include <TR/EffectPluginManagerCrashDetection.h>

#include "CrashFileFixture.h"
#include "SpecimenModules.h"
#include "support/HandWoundClock.h"
#include "support/HandWoundExecutor.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/CrashContext.h>
#include <kiocore/utility/ExpiringEntryMap.h>
#include <kiocore/utility/UsageLogger.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

using kiocore::classref::MakeObject;
using kiocore::debug::detail::InspectCrashContextForCurrentThread;
using namespace specimen;
using namespace std::chrono_literals;

std::size_t Depth()
{
    return InspectCrashContextForCurrentThread().Depth();
}

/// The description of the plug-in that runs innermost on this thread.
std::string Innermost()
{
    const auto stack = InspectCrashContextForCurrentThread();
    if (stack.Depth() == 0) {
        return "none";
    }
    const auto* const value = stack.At(0).Find(TR::kCrashContextMetadataKey);
    const auto* const text = value ? boost::get<kiocore::ImmutableString>(value) : nullptr;
    return text ? text->AsString() : "another entry";
}

using Sentinel = crash::CrashFileTest;

TEST_F(Sentinel, NamesTheInnermostPluginAndThenTheOuterAgain)
{
    const auto a = MakeObject<FilterModule>("nest.a");
    const auto b = MakeObject<TransitionModule>("nest.b");
    {
        const TR::ScSetCurrentPluginModule outer(a, 0);
        EXPECT_EQ(Innermost(), ExpectedJSON("nest.a"));
        {
            const TR::ScSetCurrentPluginModule inner("nest.b", b, 1);
            EXPECT_EQ(Innermost(), ExpectedJSON("nest.b"));
            EXPECT_EQ(Depth(), 2u);
            std::thread([] { EXPECT_EQ(Innermost(), "none"); }).join();
        }
        EXPECT_EQ(Innermost(), ExpectedJSON("nest.a"));
    }
    EXPECT_EQ(Innermost(), "none");
}

TEST_F(Sentinel, AsksForTheDescriptionOnceWhileThePluginIsInUse)
{
    const auto module = MakeObject<FilterModule>("once.a");
    for (int i = 0; i < 3; ++i) {
        const TR::ScSetCurrentPluginModule sentinel(module, 0);
    }
    EXPECT_EQ(module->metadataCount, 1);
    EXPECT_EQ(module->matchNameCount, 3);
}

TEST_F(Sentinel, KeepsATransitionModulesDescriptionUnderEachNameThatItIsEnteredBy)
{
    const auto module = MakeObject<TransitionModule>("two.module");
    for (const char* name : {"two.a", "two.b", "two.a", "two.b"}) {
        const TR::ScSetCurrentPluginModule sentinel(name, module, 0);
        EXPECT_EQ(Innermost(), ExpectedJSON("two.module"));
    }
    EXPECT_EQ(module->metadataCount, 2);
}

TEST_F(Sentinel, APluginThatCannotSayWhatItIsLeavesNothingBehind)
{
    const auto module = MakeObject<FilterModule>("throws.a");
    module->onMetadata = [] { throw std::runtime_error("no description"); };
    EXPECT_THROW(TR::ScSetCurrentPluginModule(module, 0), std::runtime_error);
    EXPECT_THROW(TR::ScSetCurrentPluginModule(TR::IFilterModuleRef(), 0), kiocore::null_reference_exception);
    EXPECT_EQ(Depth(), 0u);
    module->onMetadata = nullptr;
    const TR::ScSetCurrentPluginModule sentinel(module, 0);
    EXPECT_EQ(Innermost(), ExpectedJSON("throws.a"));
}

/// The map is the process's and made with the first sentinel: so in a process of its own.
void DescribeAgainAfterFiveMinutes()
{
    support::HandWoundClock clock;
    const auto executor = std::make_shared<support::HandWoundExecutor>(clock);
    const kiocore::utility::ScReplaceExpiringEntryMapExecutor replaced(executor);
    const auto module = MakeObject<FilterModule>("idle.a");
    const auto use = [&] { const TR::ScSetCurrentPluginModule sentinel(module, 0); };
    const auto require = [&](int inCount) {
        if (module->metadataCount != inCount) {
            std::fprintf(stderr, "asked %d times, expected %d\n", module->metadataCount, inCount);
            std::exit(1);
        }
    };
    use();
    executor->Advance(299s);
    use(); // begins the time anew
    executor->Advance(299s);
    use();
    require(1);
    {
        const TR::ScSetCurrentPluginModule running(module, 0);
        executor->Advance(320s);
        // Gone from the map, not from the thread that it runs on.
        if (Innermost() != ExpectedJSON("idle.a")) {
            std::exit(2);
        }
    }
    use();
    require(2);
    std::exit(0);
}

TEST_F(Sentinel, APluginUnusedForFiveMinutesIsAskedAgain)
{
    EXPECT_EXIT(DescribeAgainAfterFiveMinutes(), testing::ExitedWithCode(0), "");
}

TEST_F(Sentinel, TellsTheSessionItWasDescribedIn)
{
    using kiocore::utility::UsageLogger;
    UsageLogger::Set(std::make_shared<UsageLogger>("session \"7\""));
    {
        const TR::ScSetCurrentPluginModule sentinel(MakeObject<FilterModule>("session.a"), 0);
        EXPECT_EQ(Innermost(), ExpectedJSON("session.a", R"(session \"7\")"));
    }
    UsageLogger::Set(nullptr);
}

} // namespace

int main(int inCount, char** inArguments)
{
    testing::InitGoogleTest(&inCount, inArguments);
    testing::AddGlobalTestEnvironment(new crash::PreferencesFolder(true));
    return RUN_ALL_TESTS();
}
