#include "CompareBench.h"

#include "Peers.h"
#include "Pictures.h"
#include "Processes.h"

#include "support/Interleaved.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

struct Size {
    const char* name;
    std::uint32_t width;
    std::uint32_t height;
    std::size_t rounds;
};
constexpr Size kSizes[] = {{"1080p", 1920, 1080, 9}, {"4K", 3840, 2160, 7}, {"8K", 7680, 4320, 3}};

struct LookName {
    const char* name;
    Look look;
};
constexpr LookName kLooks[] = {{"photo", Look::kPhoto}, {"interface", Look::kInterface}};

/// Those that BENCH_SIZES names, as in "1080p 4K"; all without it.
bool IsWanted(const Size& inSize)
{
    const char* const wanted = std::getenv("BENCH_SIZES");
    return !wanted || std::strstr(wanted, inSize.name);
}

/// The files of one size and look.
struct Files {
    std::string base;   ///< the first picture
    std::string copy;   ///< the same bytes
    std::string again;  ///< the same pixels in other bytes
    std::string little; ///< 0.1 % of its pixels changed
    std::string much;   ///< 10 %
};

Files NameFiles(const std::string& inFolder, const Size& inSize, const LookName& inLook)
{
    const std::string start = inFolder + "/" + inSize.name + "-" + inLook.name + "-";
    return {start + "base.png", start + "copy.png", start + "again.png", start + "little.png",
            start + "much.png"};
}

/// Other bytes of the same pixels: with a chunk behind the header, "tEXt" of "Title" and nothing.
void WriteWithNote(const std::string& inFrom, const std::string& inTo)
{
    constexpr std::size_t kHeaderEnd = 33;
    constexpr char kChunk[] = "\0\0\0\x06tEXtTitle\0\xA8\xEE\xD2\x27";
    std::ifstream from(inFrom, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(from), std::istreambuf_iterator<char>()};
    bytes.insert(kHeaderEnd, kChunk, sizeof(kChunk) - 1);
    std::ofstream(inTo, std::ios::binary) << bytes;
}

/// In a process of its own, so that this one stays small: see RunProcess.
void MakeFiles(const Files& inFiles, const Size& inSize, Look inLook)
{
    const pid_t child = fork();
    if (child == 0) {
        int status = 1;
        try {
            const MF::IVideoFrameRef base = MakePicture(inLook, inSize.width, inSize.height);
            WritePNGFile(base, inFiles.base);
            std::filesystem::copy_file(inFiles.base, inFiles.copy);
            WritePNGFile(WithChangedPixels(base, 0.001), inFiles.little);
            WritePNGFile(WithChangedPixels(base, 0.1), inFiles.much);
            WriteWithNote(inFiles.base, inFiles.again);
            status = 0;
        } catch (const std::exception& error) {
            std::fprintf(stderr, "bench_compare: %s\n", error.what());
        }
        _exit(status);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) < 0 || status != 0) {
        throw std::runtime_error("the pictures could not be made");
    }
}

/// One program's times on one pair.
struct Contender {
    Comparer comparer;
    std::vector<double> times;

    double Time() const { return Median(times); }
};

void RunOnce(Contender& ioContender, const ComparedFiles& inFiles)
{
    if (!inFiles.difference.empty()) {
        std::filesystem::remove(inFiles.difference);
    }
    const ProcessCost cost = RunProcess(ioContender.comparer.Command(inFiles));
    if (cost.status >= 128) {
        throw std::runtime_error(ioContender.comparer.name + " was killed by signal " +
                                 std::to_string(cost.status - 128));
    }
    ioContender.times.push_back(cost.cpuNanoseconds);
}

/// Every program once, those that have a chance once more; then ours and the fastest ones in turn, shuffled.
std::vector<Contender> Race(const ComparedFiles& inFiles, std::size_t inRounds)
{
    constexpr std::size_t kFinalists = 3;
    constexpr double kHopeless = 3; // times as long as the fastest
    std::vector<Contender> all{{Ours(), {}}};
    for (const Comparer& peer : Peers()) {
        all.push_back({peer, {}});
    }
    for (Contender& contender : all) {
        RunOnce(contender, inFiles);
    }
    const double fastest = std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
                               return a.Time() < b.Time();
                           })->Time();
    for (Contender& contender : all) {
        if (contender.Time() < kHopeless * fastest) {
            contender.times.clear(); // the first time the files may not have been in memory yet
            RunOnce(contender, inFiles);
        }
    }
    std::sort(all.begin() + 1, all.end(),
              [](const Contender& a, const Contender& b) { return a.Time() < b.Time(); });
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < std::min(kFinalists, all.size()); ++i) {
        order.push_back(i);
    }
    std::mt19937 random(1);
    for (std::size_t round = 1; round < inRounds; ++round) {
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t i : order) {
            RunOnce(all[i], inFiles);
        }
    }
    std::sort(all.begin() + 1, all.end(),
              [](const Contender& a, const Contender& b) { return a.Time() < b.Time(); });
    return all;
}

void PrintRace(const std::string& inWhat, const std::vector<Contender>& inAll, std::size_t inFastest,
               double inGoal)
{
    if (inFastest >= inAll.size()) {
        PrintNote(inWhat + ": ours " + std::to_string(inAll[0].Time() / 1e6) + " ms; no peer is there");
        return;
    }
    const Contender& fastest = inAll[inFastest];
    PrintRow(inWhat + " (" + fastest.comparer.name + ")",
             {fastest.Time(), inAll[0].Time(), inAll[0].Time() / fastest.Time()}, inGoal, "ms");
    std::string others;
    for (std::size_t i = 1; i < inAll.size(); ++i) {
        char text[80];
        std::snprintf(text, sizeof(text), "%s%s %.0f", others.empty() ? "" : ", ",
                      inAll[i].comparer.name.c_str(), inAll[i].Time() / 1e6);
        others += text;
    }
    PrintNote("ms of all: " + others);
}

/// The fastest peer that looks at pixels: of equal files some look at the bytes only. It shows by taking next
/// to nothing of what it takes otherwise.
std::size_t FastestThatDecodes(const std::vector<Contender>& inAll, const std::vector<Contender>& inOtherwise)
{
    for (std::size_t i = 1; i < inAll.size(); ++i) {
        for (const Contender& otherwise : inOtherwise) {
            if (otherwise.comparer.name == inAll[i].comparer.name &&
                inAll[i].Time() > 0.3 * otherwise.Time()) {
                return i;
            }
        }
    }
    return inAll.size();
}

void RaceFiles(const Files& inFiles, const std::string& inName, const Size& inSize,
               const std::string& inDifference)
{
    // Goals are set for 4K.
    const bool is4K = std::strcmp(inSize.name, "4K") == 0;
    const auto goal = [is4K](double inGoal) { return is4K ? inGoal : 0; };
    const std::size_t rounds = inSize.rounds;
    const auto without = Race({inFiles.base, inFiles.little, {}}, rounds);
    PrintRace(inName + ", 0.1 %, picture", Race({inFiles.base, inFiles.little, inDifference}, rounds), 1,
              goal(0.5));
    PrintRace(inName + ", 10 %, picture", Race({inFiles.base, inFiles.much, inDifference}, rounds), 1,
              goal(0.5));
    PrintRace(inName + ", 0.1 %, no picture", without, 1, goal(0.6));
    PrintRace(inName + ", 10 %, no picture", Race({inFiles.base, inFiles.much, {}}, rounds), 1, goal(0.6));
    const auto same = Race({inFiles.base, inFiles.copy, {}}, rounds);
    PrintRace(inName + ", identical files", same, FastestThatDecodes(same, without), goal(0.45));
    const auto again = Race({inFiles.base, inFiles.again, {}}, rounds);
    PrintRace(inName + ", same pixels, other bytes", again, FastestThatDecodes(again, without), goal(0.6));
}

void PrintMemory(const Files& inFiles, const std::string& inName, const Size& inSize,
                 const std::string& inDifference)
{
    const double frames = 3.0 * 4 * inSize.width * inSize.height;
    const ProcessCost cost = RunProcess(Ours().Command({inFiles.base, inFiles.much, inDifference}));
    PrintNumbers(inName + ", peak memory of frames + difference", frames / 1048576, cost.peakBytes / 1048576,
                 "MB", 1.08);
}

void PrintFolder(const Files& inFiles, const std::string& inScratch)
{
    constexpr int kPairs = 200;
    namespace fs = std::filesystem;
    const std::string a = inScratch + "/folder-a";
    const std::string b = inScratch + "/folder-b";
    fs::create_directory(a);
    fs::create_directory(b);
    for (int i = 0; i < kPairs; ++i) {
        const std::string name = "/" + std::to_string(i) + ".png";
        fs::create_hard_link(inFiles.base, a + name);
        fs::create_hard_link(i % 4 == 0 ? inFiles.much : inFiles.little, b + name);
    }
    const std::vector<std::string> command{TRHOST_PROGRAM, "compare", a, b};
    const auto wall = [&](int inProcessors) { return RunProcess(command, inProcessors).wallNanoseconds; };
    const Comparison measured = Compare([&] { return wall(1); }, [&] { return wall(2); }, 3, kPairs);
    PrintRow("a folder of 200 pairs at 1080p, a pair: 1 processor, 2", measured, 1 / 1.8, "ms");
    PrintNote("times as fast: " + std::to_string(1 / measured.ratio));
}

} // namespace

void BenchWholeProcess()
{
    const ScratchFolder scratch;
    const std::string difference = scratch.Path() + "/difference.png";
    // trhost keeps its state away from the user's.
    setenv("XDG_CONFIG_HOME", (scratch.Path() + "/state").c_str(), 1);
    setenv("XDG_CACHE_HOME", (scratch.Path() + "/state").c_str(), 1);
    setenv("XDG_DATA_HOME", (scratch.Path() + "/state").c_str(), 1);
    PrintHeader("Whole processes: CPU time of the fastest other tool, of trhost compare");
    if (Peers().empty()) {
        PrintNote("No other tool is there; tools/fetch-compare-peers build/peers gets them.");
    }
    for (const Size& size : kSizes) {
        for (const LookName& look : kLooks) {
            if (!IsWanted(size)) {
                continue;
            }
            const Files files = NameFiles(scratch.Path(), size, look);
            MakeFiles(files, size, look.look);
            const std::string name = std::string(size.name) + " " + look.name;
            RaceFiles(files, name, size, difference);
            PrintMemory(files, name, size, difference);
            if (size.width == 1920 && look.look == Look::kPhoto) {
                PrintFolder(files, scratch.Path());
            }
            for (const std::string* file :
                 {&files.copy, &files.again, &files.little, &files.much, &files.base}) {
                std::filesystem::remove(*file);
            }
        }
    }
}

} // namespace bench
