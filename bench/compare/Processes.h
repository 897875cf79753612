#pragma once

#include <string>
#include <vector>

namespace bench {

/// What one process took, from its start to its end.
struct ProcessCost {
    int status = -1;           ///< exit status; 128 + signal for one that was killed
    double cpuNanoseconds = 0; ///< in its own code and in the system
    double wallNanoseconds = 0;
    double peakBytes = 0; ///< of resident memory
};

/// Runs a program to its end; what it says goes nowhere. This process should be small meanwhile: a child
/// counts the memory of whoever started it as a peak of its own.
/// @param inProcessors  how many of the processors it may use; 0 = all.
/// @throws std::runtime_error when it cannot be started.
ProcessCost RunProcess(const std::vector<std::string>& inCommand, int inProcessors = 0);

} // namespace bench
