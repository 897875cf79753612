#include "ProgramRunner.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trhosttest {

namespace {

int OpenTerminal(std::string& outName)
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
        throw std::runtime_error("no pseudo terminal could be opened");
    }
    outName = ptsname(master);
    return master;
}

} // namespace

Child::Child(const std::string& inProgram, const std::vector<std::string>& inArguments, Input inInput)
{
    std::string terminal = "/dev/null";
    if (inInput == Input::kTerminal) {
        mTerminal = OpenTerminal(terminal);
    }
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe could be made");
    }
    std::vector<char*> arguments{const_cast<char*>(inProgram.c_str())};
    for (const std::string& argument : inArguments) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    mPid = fork();
    if (mPid == 0) {
        dup2(open(terminal.c_str(), O_RDWR | O_NOCTTY), 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        setenv("LC_ALL", "C", 1);
        setenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" LEAK_SUPPRESSIONS, 1);
        execv(inProgram.c_str(), arguments.data());
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    mOut = out[0];
    mErr = err[0];
}

Child::~Child()
{
    if (mPid > 0) {
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }
    for (int file : {mTerminal, mOut, mErr}) {
        if (file >= 0) {
            close(file);
        }
    }
}

void Child::Type(const std::string& inText)
{
    if (write(mTerminal, inText.data(), inText.size()) != ssize_t(inText.size())) {
        throw std::runtime_error("the terminal takes no input");
    }
}

bool Child::WaitForError(const std::string& inText)
{
    char block[4096];
    while (mResult.err.find(inText) == std::string::npos) {
        const ssize_t got = read(mErr, block, sizeof(block));
        if (got <= 0) {
            return false;
        }
        mResult.err.append(block, std::size_t(got));
    }
    return true;
}

RunResult Child::Wait()
{
    bool outOpen = true;
    bool errOpen = true;
    const auto take = [](int inFile, std::string& ioText) {
        char block[16384];
        const ssize_t got = read(inFile, block, sizeof(block));
        ioText.append(block, std::size_t(got > 0 ? got : 0));
        return got > 0;
    };
    while (outOpen || errOpen) {
        pollfd files[2] = {{outOpen ? mOut : -1, POLLIN, 0}, {errOpen ? mErr : -1, POLLIN, 0}};
        poll(files, 2, -1);
        if (files[0].revents) {
            outOpen = take(mOut, mResult.out);
        }
        if (files[1].revents) {
            errOpen = take(mErr, mResult.err);
        }
    }
    int status = 0;
    waitpid(mPid, &status, 0);
    mPid = -1;
    mResult.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return mResult;
}

Workplace::Workplace()
{
    std::filesystem::create_directories(mFolder / "media");
    std::filesystem::create_directories(mFolder / "state");
}

std::vector<std::string> Workplace::Arguments(const std::vector<std::string>& inArguments) const
{
    std::vector<std::string> arguments{"--state", mFolder / "state"};
    arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
    return arguments;
}

RunResult Workplace::Run(const std::vector<std::string>& inArguments) const
{
    return Child(TRHOST_PROGRAM, Arguments(inArguments)).Wait();
}

Listing ListFiles(const std::filesystem::path& inFolder)
{
    Listing listing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(inFolder)) {
        struct stat status;
        if (entry.is_regular_file() && lstat(entry.path().c_str(), &status) == 0) {
            listing[entry.path()] = {status.st_ino, status.st_size, status.st_mtim.tv_sec,
                                     status.st_mtim.tv_nsec};
        }
    }
    return listing;
}

std::vector<std::filesystem::path> FilesEndingWith(const std::filesystem::path& inFolder,
                                                   const std::string& inEnd)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& [path, state] : ListFiles(inFolder)) {
        if (path.ends_with(inEnd)) {
            paths.emplace_back(path);
        }
    }
    return paths;
}

int CountLines(const std::string& inText, const std::string& inContaining)
{
    std::istringstream lines(inText);
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        count += line.find(inContaining) != std::string::npos;
    }
    return count;
}

} // namespace trhosttest
