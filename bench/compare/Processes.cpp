#include "Processes.h"

#include "support/Interleaved.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace bench {
namespace {

double Nanoseconds(const timeval& inTime)
{
    return static_cast<double>(inTime.tv_sec) * 1e9 + static_cast<double>(inTime.tv_usec) * 1e3;
}

/// In the child.
void UseProcessors(int inCount)
{
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0) {
        return;
    }
    cpu_set_t some;
    CPU_ZERO(&some);
    for (int processor = 0; processor < CPU_SETSIZE && CPU_COUNT(&some) < inCount; ++processor) {
        if (CPU_ISSET(processor, &allowed)) {
            CPU_SET(processor, &some);
        }
    }
    sched_setaffinity(0, sizeof(some), &some);
}

} // namespace

ProcessCost RunProcess(const std::vector<std::string>& inCommand, int inProcessors)
{
    std::vector<char*> arguments;
    for (const std::string& argument : inCommand) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    ResetPeak();
    const double start = Now(CLOCK_MONOTONIC);
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, 0);
        dup2(nowhere, 1);
        dup2(nowhere, 2);
        if (inProcessors > 0) {
            UseProcessors(inProcessors);
        }
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    while (child > 0 && wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    ProcessCost cost;
    cost.wallNanoseconds = Now(CLOCK_MONOTONIC) - start;
    cost.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (child < 0 || cost.status == 127) {
        throw std::runtime_error("cannot start " + inCommand.front());
    }
    cost.cpuNanoseconds = Nanoseconds(usage.ru_utime) + Nanoseconds(usage.ru_stime);
    cost.peakBytes = static_cast<double>(usage.ru_maxrss) * 1024;
    return cost;
}

} // namespace bench
