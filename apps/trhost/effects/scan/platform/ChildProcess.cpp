#include "ChildProcess.h"

#include "support/KeptText.h"

#include <kiocore/config/Errors.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace trhost::effects::platform {

namespace {

constexpr std::size_t kMostWords = 4096;
constexpr std::size_t kMostShownWords = 200;
constexpr std::size_t kLongestLine = 64u << 20;

[[noreturn]] void ThrowNoChild(const std::string& inProgram, int inError)
{
    throw kiocore::kio_exception(
        KeptText("$$$/Halcyon/TrHost/Effects/CannotStart=cannot start @0: @1#{@0: a program}",
                 {inProgram, kiocore::utility::ToUTF8(kiocore::SystemErrorText(inError))}),
        kiocore::kError_File);
}

void Close(int& ioFile)
{
    if (ioFile >= 0) {
        close(ioFile);
    }
    ioFile = -1;
}

/// The same open file under a number that none of the child's first four can be mistaken for.
int MovedUp(int inFile)
{
    const int moved = fcntl(inFile, F_DUPFD_CLOEXEC, 10);
    close(inFile);
    return moved;
}

/// Two descriptors, closed unless released.
struct ScFilePair {
    int files[2] = {-1, -1};
    ~ScFilePair()
    {
        Close(files[0]);
        Close(files[1]);
    }
    bool MoveUp()
    {
        for (int& file : files) {
            file = MovedUp(file);
        }
        return files[0] >= 0 && files[1] >= 0;
    }
    int Release(int inIndex)
    {
        const int file = files[inIndex];
        files[inIndex] = -1;
        return file;
    }
};

std::string MakeFolder(const std::string& inProgram)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    std::string name = (error ? std::string("/tmp") : folder.native()) + "/trhost-XXXXXX";
    if (!mkdtemp(name.data())) {
        ThrowNoChild(inProgram + " in a folder " + name, errno);
    }
    return name;
}

void RemoveFolder(std::string& ioFolder)
{
    std::error_code ignored; // what a plug-in made unremovable stays in the temporary folder
    if (!ioFolder.empty()) {
        std::filesystem::remove_all(ioFolder, ignored);
    }
    ioFolder.clear();
}

/// This process's environment with temporary files going into the child's folder.
std::vector<std::string> ChildEnvironment(const std::string& inFolder)
{
    std::vector<std::string> variables;
    for (char** variable = environ; variable && *variable; ++variable) {
        if (std::strncmp(*variable, "TMPDIR=", 7) != 0) {
            variables.emplace_back(*variable);
        }
    }
    variables.push_back("TMPDIR=" + inFolder);
    return variables;
}

std::vector<char*> AsPointers(std::vector<std::string>& ioTexts)
{
    std::vector<char*> pointers;
    for (std::string& text : ioTexts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// What posix_spawn is told: files, folder, process group, and signals as a fresh program expects them.
class ScSpawnForm {
public:
    ScSpawnForm(int inConnection, int inWords, const std::string& inFolder)
    {
        posix_spawn_file_actions_init(&mActions);
        posix_spawnattr_init(&mAttributes);
        Note(posix_spawn_file_actions_addopen(&mActions, 0, "/dev/null", O_RDONLY, 0));
        Note(posix_spawn_file_actions_adddup2(&mActions, inWords, 1));
        Note(posix_spawn_file_actions_adddup2(&mActions, inWords, 2));
        Note(posix_spawn_file_actions_adddup2(&mActions, inConnection, kChildConnection));
        Note(posix_spawn_file_actions_addclosefrom_np(&mActions, kChildConnection + 1));
        Note(posix_spawn_file_actions_addchdir_np(&mActions, inFolder.c_str()));
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        Note(posix_spawnattr_setsigmask(&mAttributes, &none));
        Note(posix_spawnattr_setsigdefault(&mAttributes, &all));
        Note(posix_spawnattr_setpgroup(&mAttributes, 0)); // Ctrl-C is for this process to pass on
        Note(posix_spawnattr_setflags(&mAttributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                        POSIX_SPAWN_SETPGROUP));
    }
    ~ScSpawnForm()
    {
        posix_spawnattr_destroy(&mAttributes);
        posix_spawn_file_actions_destroy(&mActions);
    }
    ScSpawnForm(const ScSpawnForm&) = delete;
    ScSpawnForm& operator=(const ScSpawnForm&) = delete;

    /// @return the system's error number, 0 when the child runs.
    int Spawn(pid_t& outProcess, std::vector<std::string> inArguments, std::vector<std::string> inEnvironment)
    {
        if (mError != 0) {
            return mError;
        }
        return posix_spawn(&outProcess, inArguments.front().c_str(), &mActions, &mAttributes,
                           AsPointers(inArguments).data(), AsPointers(inEnvironment).data());
    }

private:
    void Note(int inError)
    {
        if (mError == 0) {
            mError = inError;
        }
    }

    posix_spawn_file_actions_t mActions;
    posix_spawnattr_t mAttributes;
    int mError = 0;
};

std::string SignalName(int inSignal)
{
    const char* const name = sigabbrev_np(inSignal);
    return name ? std::string("SIG") + name : "signal " + std::to_string(inSignal);
}

} // namespace

ChildProcess::ChildProcess(const std::string& inProgram, const std::vector<std::string>& inArguments)
{
    ScFilePair connection;
    ScFilePair words;
    // Words never wait: a child that prints without end must not hang for want of a reader.
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, connection.files) != 0 || !connection.MoveUp() ||
        pipe2(words.files, O_CLOEXEC | O_NONBLOCK) != 0 || !words.MoveUp()) {
        ThrowNoChild(inProgram, errno);
    }
    std::string folder = MakeFolder(inProgram);
    std::vector<std::string> arguments{inProgram};
    arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
    ScSpawnForm form(connection.files[1], words.files[1], folder);
    pid_t process = -1;
    if (const int error = form.Spawn(process, std::move(arguments), ChildEnvironment(folder))) {
        RemoveFolder(folder);
        ThrowNoChild(inProgram, error);
    }
    mProcess = process;
    mFolder = std::move(folder);
    mConnection = connection.Release(0);
    mWordsFile = words.Release(0);
    fcntl(mConnection, F_SETFL, O_NONBLOCK);
}

ChildProcess::~ChildProcess()
{
    End();
}

void ChildProcess::Send(std::string_view inLine)
{
    mOutgoing += inLine;
    mOutgoing += '\n';
    WritePending();
}

bool ChildProcess::WritePending()
{
    while (!mOutgoing.empty() && mConnection >= 0) {
        const ssize_t sent = send(mConnection, mOutgoing.data(), mOutgoing.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        mOutgoing.erase(0, static_cast<std::size_t>(sent));
    }
    return true;
}

bool ChildProcess::ReadLines(std::vector<std::string>& ioLines)
{
    char bytes[16384];
    ssize_t count = 0;
    while ((count = recv(mConnection, bytes, sizeof(bytes), 0)) > 0) {
        mIncoming.append(bytes, static_cast<std::size_t>(count));
        if (mIncoming.size() > kLongestLine) {
            return false;
        }
    }
    const bool isOpen = count < 0 && (errno == EAGAIN || errno == EINTR);
    std::size_t start = 0;
    for (std::size_t end; (end = mIncoming.find('\n', start)) != std::string::npos; start = end + 1) {
        ioLines.push_back(mIncoming.substr(start, end - start));
    }
    mIncoming.erase(0, start);
    return isOpen;
}

void ChildProcess::ReadWords()
{
    char bytes[4096];
    // Bounded, so that one that prints without end cannot hold this process up.
    for (int i = 0; i < 64 && mWordsFile >= 0; ++i) {
        const ssize_t count = read(mWordsFile, bytes, sizeof(bytes));
        if (count == 0) {
            Close(mWordsFile);
        }
        if (count <= 0) {
            break;
        }
        mWords.append(bytes, static_cast<std::size_t>(count));
        if (mWords.size() > kMostWords) {
            mWords.erase(0, mWords.size() - kMostWords);
        }
    }
}

bool ChildProcess::Exchange(std::vector<std::string>& ioLines)
{
    if (mConnection < 0) {
        return false;
    }
    ReadWords();
    const bool canWrite = WritePending();
    return ReadLines(ioLines) && canWrite;
}

void ChildProcess::ForgetWords()
{
    ReadWords();
    mWords.clear();
}

std::string ChildProcess::LastWords()
{
    ReadWords();
    const std::size_t end = mWords.find_last_not_of(" \t\r\n");
    if (end == std::string::npos) {
        return {};
    }
    const std::size_t before = mWords.find_last_of('\n', end);
    const std::size_t start = before == std::string::npos ? 0 : before + 1;
    std::string line = mWords.substr(start, std::min(end + 1 - start, kMostShownWords));
    // It goes into lists on terminals and into JSON: plain characters only.
    std::replace_if(
        line.begin(), line.end(), [](char inUnit) { return inUnit < 0x20 || inUnit > 0x7E; }, '?');
    return line;
}

ChildEnd ChildProcess::End()
{
    if (mProcess < 0) {
        return mEnd;
    }
    // A process that has begun to die keeps the end that it has come to; another ends by this.
    kill(-mProcess, SIGKILL);
    int status = 0;
    pid_t waited = 0;
    do {
        waited = waitpid(mProcess, &status, 0);
    } while (waited < 0 && errno == EINTR);
    mProcess = -1;
    if (waited > 0 && WIFSIGNALED(status)) {
        mEnd.signal = SignalName(WTERMSIG(status));
    } else if (waited > 0) {
        mEnd.exitStatus = WEXITSTATUS(status);
    }
    ReadWords();
    Close(mConnection);
    Close(mWordsFile);
    RemoveFolder(mFolder);
    return mEnd;
}

void ChildProcess::WaitForAny(const std::vector<const ChildProcess*>& inChildren, int inWakeFile,
                              std::int64_t inMostMilliseconds)
{
    std::vector<pollfd> files;
    for (const ChildProcess* child : inChildren) {
        const short both = child->mOutgoing.empty() ? POLLIN : POLLIN | POLLOUT;
        files.push_back({child->mConnection, both, 0});
        files.push_back({child->mWordsFile, POLLIN, 0});
    }
    files.push_back({inWakeFile, POLLIN, 0}); // negative ones are passed over
    const int most = static_cast<int>(std::clamp<std::int64_t>(inMostMilliseconds, 0, 3'600'000));
    poll(files.data(), files.size(), most);
}

bool ChildProcess::IsReadable(int inFile)
{
    pollfd file{inFile, POLLIN, 0};
    return inFile >= 0 && poll(&file, 1, 0) > 0;
}

} // namespace trhost::effects::platform
