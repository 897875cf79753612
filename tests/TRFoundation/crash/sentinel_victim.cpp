// sentinel_victim FOLDER CASE main|worker: ends as the case (support/CrashCases.h) says while one plug-in
// runs within another, with crash detection on as a host has it and FOLDER for preferences.

#include <TR/EffectPluginManagerCrashDetection.h>

#include "SpecimenModules.h"
#include "support/CrashCases.h"

#include <kioappsupport/Feature.h>
#include <kiocore/config/VersionInfo.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/NativePath.h>

#include <cstdio>
#include <string_view>
#include <thread>

namespace {

void RunInPlugins(const char* inCase)
{
    using kiocore::classref::MakeObject;
    const auto outer = MakeObject<specimen::TransitionModule>("victim.outer");
    const auto inner = MakeObject<specimen::FilterModule>("victim.inner");
    const TR::ScSetCurrentPluginModule outerSentinel("victim.outer", outer, 0);
    {
        const TR::ScSetCurrentPluginModule cameBack(MakeObject<specimen::FilterModule>("victim.back"), 0);
    }
    const TR::ScSetCurrentPluginModule innerSentinel(inner, 0);
    support::RunCrashCase(inCase);
}

} // namespace

int main(int inCount, char** inArguments)
{
    if (inCount != 4) {
        std::fprintf(stderr, "sentinel_victim FOLDER CASE main|worker\n");
        return 2;
    }
    kioappsupport::feature::SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, true);
    kiocore::filesupport::Dir::SetPrefDir(kiocore::filesupport::FromNative(inArguments[1]));
    kiocore::config::versioninfo::SetAppShortName(u"Victim");
    kiocore::debug::InstallCrashHandling();
    kiocore::debug::AddCrashCallback(&TR::WriteCrashedEffectPluginFile);
    if (std::string_view(inArguments[3]) == "worker") {
        std::thread(&RunInPlugins, inArguments[2]).join();
    } else {
        RunInPlugins(inArguments[2]);
    }
    return 0;
}
