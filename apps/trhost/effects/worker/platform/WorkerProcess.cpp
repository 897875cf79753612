#include "WorkerProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace trhost::effects::platform {

bool PrepareWorkerProcess(int inParent, std::uint64_t inAddressSpaceBytes)
{
    fcntl(kConnectionFile, F_SETFD, FD_CLOEXEC); // not for programs that plug-ins start
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != inParent) {
        return false; // it died before it could have taken this process along
    }
    // One byte, as 0 does not keep the system from starting a program that collects dumps.
    const rlimit noCore{1, 1};
    setrlimit(RLIMIT_CORE, &noCore);
    if (inAddressSpaceBytes) {
        const rlimit space{inAddressSpaceBytes, inAddressSpaceBytes};
        setrlimit(RLIMIT_AS, &space);
    }
    // Whoever has been loaded with the program may have installed handlers, which would hide the signal.
    for (const int deadly : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        std::signal(deadly, SIG_DFL);
    }
    return true;
}

bool LineConnection::Read(std::string& outLine)
{
    std::size_t end = 0;
    while ((end = mIncoming.find('\n')) == std::string::npos) {
        char bytes[16384];
        const ssize_t count = read(mFile, bytes, sizeof(bytes));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        mIncoming.append(bytes, static_cast<std::size_t>(count));
    }
    outLine = mIncoming.substr(0, end);
    mIncoming.erase(0, end + 1);
    return true;
}

bool LineConnection::Write(std::string_view inLine)
{
    std::string line(inLine);
    line += '\n';
    std::string_view left = line;
    while (!left.empty()) {
        const ssize_t count = send(mFile, left.data(), left.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        left.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void EndAtOnce(int inStatus)
{
    _exit(inStatus);
}

} // namespace trhost::effects::platform
