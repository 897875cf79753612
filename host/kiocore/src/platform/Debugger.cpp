#include <kiocore/debug/Debugger.h>

#include <kiocore/debug/Trace.h>

#include <csignal>

#if defined(__linux__)
#include <fstream>
#include <string>
#elif defined(__APPLE__)
#include <sys/sysctl.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace kiocore::debug {

bool IsDebuggerAttached()
{
    KIO_HOST_CALL("kiocore::debug::IsDebuggerAttached");
#if defined(__linux__)
    constexpr std::string_view kTracer = "TracerPid:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(kTracer)) {
            return line.find_first_of("123456789", kTracer.size()) != std::string::npos;
        }
    }
    return false;
#elif defined(__APPLE__)
    int query[] = {CTL_KERN, KERN_PROC, KERN_PROC_PID, getpid()};
    kinfo_proc info{};
    std::size_t size = sizeof(info);
    return sysctl(query, 4, &info, &size, nullptr, 0) == 0 && (info.kp_proc.p_flag & P_TRACED) != 0;
#else
    return false;
#endif
}

void BreakIntoDebugger()
{
    KIO_HOST_CALL("kiocore::debug::BreakIntoDebugger");
    std::raise(SIGTRAP);
}

} // namespace kiocore::debug
