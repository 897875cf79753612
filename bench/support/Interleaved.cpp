#include "support/Interleaved.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace bench {

double Median(std::vector<double> inValues)
{
    std::sort(inValues.begin(), inValues.end());
    const std::size_t middle = inValues.size() / 2;
    return inValues.size() % 2 ? inValues[middle] : (inValues[middle - 1] + inValues[middle]) / 2;
}

Comparison Compare(const Batch& inFloor, const Batch& inOurs, std::size_t inPairs, std::size_t inOperations)
{
    inFloor();
    inOurs();
    std::vector<double> floors, ours, ratios;
    for (std::size_t pair = 0; pair < inPairs; ++pair) {
        double floor = 0;
        double mine = 0;
        if (pair % 2 == 0) {
            floor = inFloor();
            mine = inOurs();
        } else {
            mine = inOurs();
            floor = inFloor();
        }
        floors.push_back(floor / static_cast<double>(inOperations));
        ours.push_back(mine / static_cast<double>(inOperations));
        ratios.push_back(mine / floor);
    }
    return {Median(floors), Median(ours), Median(ratios)};
}

double Now(clockid_t inClock)
{
    timespec time{};
    clock_gettime(inClock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

double Timed(clockid_t inClock, const std::function<void()>& inWork)
{
    const double start = Now(inClock);
    inWork();
    return Now(inClock) - start;
}

void PrintHeader(const char* inTitle)
{
    std::printf("\n%s\n%-58s %12s %12s %8s %8s\n", inTitle, "what", "floor", "ours", "ratio", "goal");
    std::fflush(stdout);
}

namespace {

std::string GoalText(double inRatio, double inGoal)
{
    if (inGoal == 0) {
        return "       -";
    }
    char text[64];
    std::snprintf(text, sizeof(text), "%8.2f %s", inGoal, inRatio <= inGoal ? "met" : "NOT MET");
    return text;
}

} // namespace

void PrintRow(const std::string& inWhat, const Comparison& inMeasured, double inGoal, const char* inUnit)
{
    const double unit = std::strcmp(inUnit, "ms") == 0 ? 1e6 : std::strcmp(inUnit, "us") == 0 ? 1e3 : 1;
    std::printf("%-58s %9.3f %s %9.3f %s %8.3f %s\n", inWhat.c_str(), inMeasured.floor / unit, inUnit,
                inMeasured.ours / unit, inUnit, inMeasured.ratio, GoalText(inMeasured.ratio, inGoal).c_str());
    std::fflush(stdout);
}

void PrintNumbers(const std::string& inWhat, double inFloor, double inOurs, const char* inUnit, double inGoal)
{
    const double ratio = inOurs / inFloor;
    std::printf("%-58s %9.0f %s %9.0f %s %8.3f %s\n", inWhat.c_str(), inFloor, inUnit, inOurs, inUnit, ratio,
                GoalText(ratio, inGoal).c_str());
    std::fflush(stdout);
}

void PrintNote(const std::string& inText)
{
    std::printf("    %s\n", inText.c_str());
    std::fflush(stdout);
}

ScratchFolder::ScratchFolder()
{
    const char* const base = std::getenv("BENCH_FOLDER");
    mPath = std::string(base ? base : ".") + "/bench-XXXXXX";
    if (!mkdtemp(mPath.data())) {
        throw std::runtime_error("cannot make a folder like " + mPath +
                                 "; set BENCH_FOLDER to one that can be written");
    }
    mPath = std::filesystem::canonical(mPath).string();
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

namespace {

std::size_t StatusKilobytes(const char* inName)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(inName, 0) == 0) {
            return std::strtoul(line.c_str() + std::strlen(inName), nullptr, 10);
        }
    }
    return 0;
}

} // namespace

std::size_t ResidentBytes()
{
    return StatusKilobytes("VmRSS:") * 1024;
}
std::size_t PeakResidentBytes()
{
    return StatusKilobytes("VmHWM:") * 1024;
}

void ResetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

} // namespace bench
