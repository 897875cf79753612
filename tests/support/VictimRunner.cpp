#include "support/VictimRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace support {
namespace {

constexpr int kLimitMs = 10000;

/// Ours, with sanitizers told to abort; later settings win over earlier ones.
std::vector<std::string> Environment()
{
    std::vector<std::string> environment;
    const auto add = [&](const char* inName, const char* inOptions) {
        const char* present = std::getenv(inName);
        environment.push_back(std::string(inName) + "=" + (present ? present : "") + ":" + inOptions);
    };
    add("ASAN_OPTIONS", "abort_on_error=1:detect_leaks=0");
    add("UBSAN_OPTIONS", "abort_on_error=1");
    for (char** variable = environ; *variable; ++variable) {
        if (std::string_view(*variable).find("SAN_OPTIONS=") == std::string_view::npos) {
            environment.emplace_back(*variable);
        }
    }
    return environment;
}

std::vector<char*> Pointers(std::vector<std::string>& ioTexts)
{
    std::vector<char*> pointers;
    for (std::string& text : ioTexts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// Processes started while this lives dump no core.
class ScNoCoreDumps {
public:
    ScNoCoreDumps()
    {
        getrlimit(RLIMIT_CORE, &mBefore);
        const rlimit none{0, mBefore.rlim_max};
        setrlimit(RLIMIT_CORE, &none);
    }
    ~ScNoCoreDumps() { setrlimit(RLIMIT_CORE, &mBefore); }
    ScNoCoreDumps(const ScNoCoreDumps&) = delete;
    ScNoCoreDumps& operator=(const ScNoCoreDumps&) = delete;

private:
    rlimit mBefore{};
};

/// False when the limit passed; the process is killed then.
bool EndsInTime(pid_t inProcess)
{
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, inProcess, 0));
    if (handle < 0) {
        throw std::system_error(errno, std::generic_category(), "pidfd_open");
    }
    pollfd ended{handle, POLLIN, 0};
    const bool inTime = poll(&ended, 1, kLimitMs) == 1;
    close(handle);
    if (!inTime) {
        kill(inProcess, SIGKILL);
    }
    return inTime;
}

} // namespace

std::string VictimRunner::Run(const std::string& inProgram, std::vector<std::string> inArguments)
{
    const std::string workFolder = mFolder / "work";
    std::filesystem::create_directory(workFolder);
    inArguments.insert(inArguments.begin(), inProgram);
    std::vector<std::string> environment = Environment();

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (mFolder / "stderr").c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addchdir_np(&actions, workFolder.c_str());
    pid_t process = 0;
    int error = 0;
    {
        ScNoCoreDumps noCoreDumps;
        error = posix_spawn(&process, inProgram.c_str(), &actions, nullptr, Pointers(inArguments).data(),
                            Pointers(environment).data());
    }
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "Cannot start " + inProgram);
    }
    const bool inTime = EndsInTime(process);
    int status = 0;
    waitpid(process, &status, 0);
    if (!inTime) {
        return "hung";
    }
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "exit " + std::to_string(WEXITSTATUS(status));
}

std::optional<std::string> VictimRunner::Report() const
{
    if (!std::filesystem::exists(ReportPath())) {
        return std::nullopt;
    }
    return ReadFile(ReportPath());
}

std::string VictimRunner::StandardError() const
{
    return ReadFile(mFolder / "stderr");
}

std::vector<std::string> VictimRunner::Litter() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(mFolder / "work")) {
        names.push_back(entry.path().filename());
    }
    return names;
}

} // namespace support
