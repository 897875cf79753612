#pragma once

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Measures two things in turn, A B B A ..., so that a machine whose speed drifts treats both alike; what
/// counts is the median of the ratios of neighbours.
struct Comparison {
    double floor = 0; ///< median time of the floor for one operation, in nanoseconds
    double ours = 0;  ///< median time of ours
    double ratio = 0; ///< median of ours / floor, pair by pair
};

/// One measured batch: does its work and returns the nanoseconds that count.
using Batch = std::function<double()>;

/// @param inOperations  that a batch consists of.
Comparison Compare(const Batch& inFloor, const Batch& inOurs, std::size_t inPairs, std::size_t inOperations);

double Median(std::vector<double> inValues);

/// Nanoseconds of a clock: CLOCK_MONOTONIC for wall time, CLOCK_THREAD_CPUTIME_ID, CLOCK_PROCESS_CPUTIME_ID.
double Now(clockid_t inClock);
/// Runs inWork and returns what the clock says it took.
double Timed(clockid_t inClock, const std::function<void()>& inWork);

/// A table row: what, the floor, ours, the ratio, the goal (0: none), and whether it is met.
void PrintHeader(const char* inTitle);
void PrintRow(const std::string& inWhat, const Comparison& inMeasured, double inGoal,
              const char* inUnit = "us");
/// For what is no time: two numbers, one ratio.
void PrintNumbers(const std::string& inWhat, double inFloor, double inOurs, const char* inUnit,
                  double inGoal);
void PrintNote(const std::string& inText);

/// A folder below the working directory's file system, removed at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

/// Resident memory of this process and its peak since ResetPeak, in bytes.
std::size_t ResidentBytes();
std::size_t PeakResidentBytes();
void ResetPeak();

} // namespace bench
