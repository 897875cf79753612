#include "EffectsBench.h"

#include "support/Interleaved.h"

#include <TR/EffectPluginManagerCrashDetection.h>
#include <kioappsupport/Feature.h>
#include <kiocore/classref/InterfaceRef.h>
#include <kiocore/debug/CrashHandling.h>
#include <kiocore/filesupport/File.h>
#include <kiocore/filesupport/NativePath.h>

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {
namespace {

constexpr int kCrashes = 41;
constexpr char kCrashFile[] = "/MediaHostCrash.json";

int sPipe = -1;
double sStart = 0;

class Module final : public TR::IFilterModule, public virtual kiocore::classref::UnknownBase {
public:
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override { return UnknownBase::QueryMap(inInterfaceID); }
    kiocore::ImmutableString GetMatchName() const override { return "frei0r.crashes"; }
    TR::EffectPluginMetadata GetMetadata() const override
    {
        return {GetMatchName(), "bench", "An effect", "Blur", "Author", "1.0", false};
    }
    kiocore::Guid GetMediaType() const override { return TR::kMediaType_Video; }
    kiocore::UTF16String GetDisplayName() const override { return u"An effect"; }
};

/// Called when the file is closed.
void TellTime() noexcept
{
    const double passed = Now(CLOCK_MONOTONIC) - sStart;
    if (write(sPipe, &passed, sizeof(passed)) != sizeof(passed)) {
        _exit(1);
    }
}

[[noreturn]] void Crash(const std::string& inFolder)
{
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    kioappsupport::feature::SetFeatureEnabled(TR::kPluginManagerCrashDetectionFeature, true);
    kiocore::filesupport::Dir::SetPrefDir(kiocore::filesupport::FromNative(inFolder));
    kiocore::debug::InstallCrashHandling();
    kiocore::debug::AddCrashCallback(&TR::WriteCrashedEffectPluginFile);
    kiocore::debug::AddCrashCallback(&TellTime);
    const TR::ScSetCurrentPluginModule sentinel(kiocore::classref::MakeObject<Module>(), 0);
    sStart = Now(CLOCK_MONOTONIC);
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
    _exit(1); // not reached
}

/// Nanoseconds; negative when the child told nothing.
double InChild(const std::function<void()>& inWork)
{
    int ends[2];
    if (pipe(ends) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        sPipe = ends[1];
        inWork();
        _exit(0);
    }
    close(ends[1]);
    double passed = -1;
    if (read(ends[0], &passed, sizeof(passed)) != sizeof(passed)) {
        passed = -1;
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return passed;
}

/// The system calls that no report can do without: make a file, write the same bytes, close it.
void WriteBare(const std::string& inPath)
{
    const std::string bytes(196, 'x');
    sStart = Now(CLOCK_MONOTONIC);
    const int file = open(inPath.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    if (write(file, bytes.data(), bytes.size()) < 0) {
        _exit(1);
    }
    close(file);
    TellTime();
}

} // namespace

void BenchCrash()
{
    const ScratchFolder folder;
    const std::string file = folder.Path() + kCrashFile;
    PrintHeader("From the fault to the closed crash file, against making, writing and closing a file");
    const Comparison measured = Compare(
        [&] {
            const double ns = InChild([&] { WriteBare(file); });
            unlink(file.c_str());
            return ns;
        },
        [&] {
            const double ns = InChild([&] { Crash(folder.Path()); });
            unlink(file.c_str());
            return ns;
        },
        kCrashes, 1);
    PrintRow("the first crash of a process", measured, 0, "us");
    char text[80];
    std::snprintf(text, sizeof(text), "%.3f ms (goal 5)", measured.ours / 1e6);
    PrintNote(text);
}

} // namespace bench
