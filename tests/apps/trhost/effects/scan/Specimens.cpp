#include "Specimens.h"

#include <filesystem>
#include <iterator>
#include <sys/wait.h>

namespace specimens {

using namespace trhost::effects;

WorkerSettings Worker(std::chrono::milliseconds inTimeLimit)
{
    WorkerSettings settings;
    settings.program = WORKER_PROGRAM;
    settings.workers = 2;
    settings.timeLimit = inTimeLimit;
    return settings;
}

PluginFile WritePlugins(const support::TemporaryFolder& inFolder, const std::string& inName,
                        const std::vector<std::string>& inLines)
{
    std::string text;
    for (const std::string& line : inLines) {
        text += line + "\n";
    }
    support::WriteFile(inFolder / inName, text);
    return {"specimen", SPECIMEN_MODULE, (inFolder / inName).native()};
}

int OpenFileCount()
{
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

bool HasChildren()
{
    return waitpid(-1, nullptr, WNOHANG) >= 0;
}

} // namespace specimens
