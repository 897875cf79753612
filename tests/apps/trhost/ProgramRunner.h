#pragma once

#include <support/TemporaryFolder.h>

#include <filesystem>
#include <map>
#include <string>
#include <sys/types.h>
#include <tuple>
#include <vector>

namespace trhosttest {

struct RunResult {
    int status = -1; ///< exit status; 128 + signal for a program that was killed
    std::string out;
    std::string err;
};

/// A running child with its input and output at our hands; killed and reaped when this goes.
class Child {
public:
    enum class Input { kNothing, kTerminal };
    Child(const std::string& inProgram, const std::vector<std::string>& inArguments,
          Input inInput = Input::kNothing);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Pid() const { return mPid; }
    void Type(const std::string& inText); ///< at its terminal
    /// Reads standard error until the text was seen or it ends.
    bool WaitForError(const std::string& inText);
    RunResult Wait();

private:
    pid_t mPid = -1;
    int mTerminal = -1;
    int mOut = -1;
    int mErr = -1;
    RunResult mResult;
};

/// Where a test's media and state lie, and the program at work on them.
class Workplace {
public:
    Workplace();
    /// Runs "trhost --state <state> ...".
    RunResult Run(const std::vector<std::string>& inArguments) const;
    std::vector<std::string> Arguments(const std::vector<std::string>& inArguments) const;
    std::filesystem::path Media(const std::string& inName) const { return mFolder / ("media/" + inName); }
    std::filesystem::path State(const std::string& inName) const { return mFolder / ("state/" + inName); }
    const std::filesystem::path& Root() const { return mFolder.Path(); }

private:
    support::TemporaryFolder mFolder;
};

/// Every file below a folder: inode, size and modification time in ns. Equal listings: nothing was touched.
using Listing = std::map<std::string, std::tuple<ino_t, off_t, long, long>>;
Listing ListFiles(const std::filesystem::path& inFolder);
/// Paths below a folder that end with the text.
std::vector<std::filesystem::path> FilesEndingWith(const std::filesystem::path& inFolder,
                                                   const std::string& inEnd);
int CountLines(const std::string& inText, const std::string& inContaining);

} // namespace trhosttest
