#include "CacheSetup.h"

#include <TR/DeleteAllMediaCacheEntriesOperation.h>
#include <TR/TRFoundation.h>

#include <ZOL/BatchOperation.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/MainThread.h>

#include <pugixml.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace bench {
namespace {

int StaysAsItIs(const UTF16String&, bool, Guid&, Guid& outState)
{
    outState = CacheSetup::kState;
    return 0;
}

/// Runs an operation to its end. @return CPU time of this process.
double RunOperation(const kiocore::InterfaceRef<ZOL::IBatchOperation>& inOperation)
{
    const auto mainThread = kiocore::threads::RegisterMainThread();
    bool done = false;
    double time = 0;
    {
        const kiocore::messaging::ScListener listener(
            inOperation->GetStationID(), [&](const kiocore::messaging::Message& message) {
                done = dynamic_cast<const ZOL::OperationCompleteMessage*>(&message);
            });
        time = Timed(CLOCK_PROCESS_CPUTIME_ID, [&] {
            inOperation->Start();
            mainThread->RunUntil([&] { return done; },
                                 std::chrono::steady_clock::now() + std::chrono::hours(1));
        });
    }
    kiocore::threads::UnregisterMainThread();
    return time;
}

/// One thread that reads, parses and checks everything, and decides nothing.
void FloorClean(const CacheSetup& inSetup)
{
    DIR* const folder = opendir(inSetup.DatabaseFolder().c_str());
    std::vector<char> buffer(1 << 20);
    while (const dirent* const entry = readdir(folder)) {
        const std::string path = inSetup.DatabaseFolder() + entry->d_name;
        if (!path.ends_with(".mcdb")) {
            continue;
        }
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        const ssize_t got = read(file, buffer.data(), buffer.size());
        close(file);
        pugi::xml_document parsed;
        if (!parsed.load_buffer_inplace(buffer.data(), static_cast<std::size_t>(got))) {
            std::abort();
        }
        for (const pugi::xml_node value : parsed.document_element().first_child()) {
            if (std::string_view(value.attribute("Key").value()).starts_with("Item.MacPath.")) {
                struct stat status {};
                stat(value.attribute("Value").value(), &status);
            }
        }
    }
    closedir(folder);
}

double ChildrenCPU()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto nanoseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_usec) * 1e3;
    };
    return nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime);
}

void MakeCacheFiles(const std::string& inFolder, unsigned inCount)
{
    std::filesystem::create_directories(inFolder);
    for (unsigned i = 0; i < inCount; ++i) {
        std::ofstream(inFolder + "/clip " + std::to_string(i) + " 48000.cfa") << "x";
    }
}

double RemoveWithRm(const std::string& inFolder)
{
    const char* const arguments[] = {"rm", "-rf", inFolder.c_str(), nullptr};
    const double before = ChildrenCPU();
    pid_t process = 0;
    if (posix_spawnp(&process, "rm", nullptr, nullptr, const_cast<char**>(arguments), environ) != 0) {
        throw std::runtime_error("cannot start rm");
    }
    waitpid(process, nullptr, 0);
    return ChildrenCPU() - before;
}

} // namespace

void BenchClean(CacheSetup& ioSetup)
{
    PrintHeader("clean, all up to date (floor: readdir, open, read, parse, a stat an item; CPU)");
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(&StaysAsItIs);
    for (const unsigned documents : {10000u, 100000u}) {
        ioSetup.Clear();
        ioSetup.AddDocuments(documents, 1, 3, true);
        TR::MediaAcceleratorDatabase::Shutdown();
        const auto operation = kiocore::classref::MakeObject<TR::MediaAcceleratorDatabase>();
        const Comparison measured =
            Compare([&] { return Timed(CLOCK_PROCESS_CPUTIME_ID, [&] { FloorClean(ioSetup); }); },
                    [&] { return RunOperation(operation); }, documents > 10000 ? 5 : 11, documents);
        PrintRow(std::to_string(documents) + " documents, each of", measured, 1.15);
        ResetPeak();
        const std::size_t before = ResidentBytes();
        RunOperation(operation);
        PrintNumbers("memory growth of " + std::to_string(documents) + " documents",
                     4.0 * 1024 * 1024 + 64.0 * documents, static_cast<double>(PeakResidentBytes() - before),
                     "B ", 1.0);
    }
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(nullptr);
}

void BenchDeleteAll(CacheSetup& ioSetup)
{
    PrintHeader("delete-all of 20,000 files (against rm -rf of the same tree; CPU)");
    constexpr unsigned kFiles = 20000;
    ioSetup.Clear();
    const std::string other = ioSetup.Root() + "/other";
    const Comparison measured = Compare(
        [&] {
            MakeCacheFiles(other, kFiles);
            return RemoveWithRm(other);
        },
        [&] {
            MakeCacheFiles(ioSetup.CacheFolder(), kFiles);
            return RunOperation(TR::CreateDeleteAllMediaCacheEntriesOperation());
        },
        5, kFiles);
    PrintRow("20,000 files, each of", measured, 0.95);
}

} // namespace bench
