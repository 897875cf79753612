#include "EffectsBench.h"

#include "support/Interleaved.h"

#include <effects/EffectEngine.h>
#include <effects/scan/EffectCatalogue.h>
#include <kiocore/platform/Modules.h>
#include <kiocore/utility/RegistryKey.h>
#include <kiocore/utility/UTF16String.h>

#include <cmath>
#include <cstdlib>
#include <exception>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {
namespace {

using namespace trhost::effects;

constexpr std::size_t kPairs = 15;

/// As bare as calls can be.
class BareCalls final : public IPluginCalls {
public:
    void Call(const TR::IFilterModuleRef&, const std::function<void()>& inCall) override { inCall(); }
    void Call(const kiocore::ImmutableString&, const TR::ITransitionModuleRef&,
              const std::function<void()>& inCall) override
    {
        inCall();
    }
};

void DescribeAll(const std::vector<PluginFile>& inFiles)
{
    static BareCalls calls;
    const auto function = reinterpret_cast<EffectEngineFunction>(
        kiocore::platform::LoadModuleFunction(inFiles.front().module, kEffectEngineFunctionName));
    IEffectEngine* const engine = function(kEffectEngineVersion, calls);
    for (const PluginFile& file : inFiles) {
        try {
            for (const std::string& name : engine->PluginNames(file.file)) {
                engine->Describe(file.file, name);
            }
        } catch (const std::exception&) {
            continue; // no plug-in; the pool is told the same
        }
    }
}

/// In a fresh copy of this process each time, as a plug-in that was loaded once stays loaded; making the copy
/// is not measured. @return nanoseconds, no number when a plug-in has ended the process.
double ScanInProcess(const std::vector<PluginFile>& inFiles)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return std::nan("");
    }
    const pid_t child = fork();
    if (child == 0) {
        const double time = Timed(CLOCK_MONOTONIC, [&] { DescribeAll(inFiles); });
        _exit(write(ends[1], &time, sizeof(time)) == sizeof(time) ? 0 : 1);
    }
    close(ends[1]);
    double time = 0;
    const bool isTold = read(ends[0], &time, sizeof(time)) == sizeof(time);
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return isTold ? time : std::nan("");
}

/// Where frei0r plug-ins lie: what FREI0R_PATH says, else where tests put Debian's, else the machine's own.
std::vector<PluginFile> FindPlugins()
{
    PluginPlaces places;
    places.frei0rModule = std::string(EFFECT_MODULE_FOLDER) + "/" + kFrei0rModuleFileName;
    if (!std::getenv("FREI0R_PATH")) {
        places.moreFrei0rFolders = {FREI0R_PLUGIN_FOLDER};
    }
    return FindPluginFiles(places);
}

} // namespace

void BenchScan()
{
    CatalogueSettings settings;
    settings.worker.program = std::string(EFFECT_MODULE_FOLDER) + "/trhost-effect-worker";
    settings.files = FindPlugins();
    if (settings.files.empty()) {
        PrintNote("No frei0r plug-ins: run tools/fetch-plugins build/plugins, or set FREI0R_PATH.");
        return;
    }
    settings.keepsNothing = true;
    const auto scan = [&] {
        return Timed(CLOCK_MONOTONIC, [&] { EffectCatalogue::Load(settings, {}, {}); });
    };
    scan(); // warm: the files are in the system's memory
    if (std::isnan(ScanInProcess(settings.files))) {
        PrintNote("A plug-in ends the process that describes it: nothing to compare with.");
        return;
    }
    PrintHeader(
        "All frei0r plug-ins scanned in children, starting them included, against the same in-process");
    PrintRow(std::to_string(settings.files.size()) + " files",
             Compare([&] { return ScanInProcess(settings.files); }, scan, kPairs, 1), 1.3, "us");

    const ScratchFolder folder;
    kiocore::utility::SetRegistryFile(kiocore::utility::ToUTF16(folder.Path() + "/registry.json"));
    settings.cacheFolder = folder.Path();
    settings.keepsNothing = false;
    EffectCatalogue::Statistics statistics;
    const auto load = [&] {
        return Timed(CLOCK_MONOTONIC,
                     [&] { statistics = EffectCatalogue::Load(settings, {}, {}).GetStatistics(); });
    };
    const auto first = [&] {
        settings.isRescan = true;
        return load();
    };
    const auto second = [&] {
        settings.isRescan = false;
        return load();
    };
    first();
    PrintRow("a second start, against the first", Compare(first, second, kPairs, 1), 0, "us");
    second();
    PrintNote("Plug-ins loaded at a second start: " + std::to_string(statistics.pluginsLoaded) +
              ", files asked: " + std::to_string(statistics.filesScanned) + " (goal 0)");
}

} // namespace bench
