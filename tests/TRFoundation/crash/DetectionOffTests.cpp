#include <TR/EffectPluginManagerCrashDetection.h>

#include "CrashFileFixture.h"
#include "SpecimenModules.h"

#include <kiocore/debug/CrashContext.h>
#include <kiocore/debug/DebugDatabase.h>

namespace {

using kiocore::classref::MakeObject;
using kiocore::debug::DebugDatabase;
using namespace specimen;

using DetectionOff = crash::CrashFileTest;

TEST_F(DetectionOff, NothingIsRecordedProvokedOrWritten)
{
    DebugDatabase::Set(TR::kProvokeCrashKey, true);
    const auto module = MakeObject<FilterModule>("frei0r.glow");
    {
        const TR::ScSetCurrentPluginModule sentinel(module, 0);
        EXPECT_EQ(kiocore::debug::detail::InspectCrashContextForCurrentThread().Depth(), 0u);
        EXPECT_EQ(module->matchNameCount, 1); // asked before the feature is
        EXPECT_EQ(module->metadataCount, 0);
        EXPECT_TRUE(DebugDatabase::GetBool(TR::kProvokeCrashKey, false));
    }
    kiocore::debug::PushCrashContextForCurrentThread(
        {TR::kCrashContextMetadataKey, kiocore::ImmutableString("text")});
    TR::WriteCrashedEffectPluginFile();
    kiocore::debug::PopCrashContextForCurrentThread();
    EXPECT_EQ(crash::Contents(), std::nullopt);
    // What the first question answered holds for the process.
    kioappsupport::feature::SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, true);
    const TR::ScSetCurrentPluginModule later(module, 0);
    EXPECT_EQ(kiocore::debug::detail::InspectCrashContextForCurrentThread().Depth(), 0u);
}

TEST_F(DetectionOff, AnEarlierRunsFileIsStillConsumed)
{
    crash::Write(ExpectedJSON("earlier.a"));
    EXPECT_EQ(TR::ConsumeCrashedEffectPluginFile().Get().matchName, "earlier.a");
    EXPECT_EQ(crash::Contents(), std::nullopt);
}

} // namespace

int main(int inCount, char** inArguments)
{
    testing::InitGoogleTest(&inCount, inArguments);
    testing::AddGlobalTestEnvironment(new crash::PreferencesFolder(false));
    return RUN_ALL_TESTS();
}
