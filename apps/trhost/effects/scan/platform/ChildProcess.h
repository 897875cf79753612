#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trhost::effects::platform {

/// How a child process came to its end.
struct ChildEnd {
    std::string signal; ///< "SIGSEGV"; empty when it ended by itself
    int exitStatus = 0;
};

/// A child process that is talked to in lines over a descriptor of its own (kChildConnection); what it and
/// the plug-ins in it print goes nowhere, but its last words are kept. It has a process group of its own, an
/// empty working folder that is also its TMPDIR, and none of this process's descriptors.
///
/// Threading: one thread at a time.
class ChildProcess {
public:
    /// @throws kio_exception (kError_File) naming the program and the system's reason.
    ChildProcess(const std::string& inProgram, const std::vector<std::string>& inArguments);
    ~ChildProcess(); ///< as End
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Sends the line as soon as the child takes it; Exchange goes on with what is left.
    void Send(std::string_view inLine);
    /// Moves what can be moved without waiting, both ways.
    /// @param ioLines  complete lines that have come in are added, without their line feeds.
    /// @return false once the child has closed its end or broken the rules: it is to be ended then.
    bool Exchange(std::vector<std::string>& ioLines);
    /// Forgets what was printed so far.
    void ForgetWords();
    /// The last line that was printed; not more than is good to read.
    std::string LastWords();
    /// Ends the child and what it has started, as far as it has not ended by itself, and waits for that.
    /// Removes its folder. A second call gives the same answer.
    ChildEnd End();

    /// Waits until there is something to exchange with one of the children, inWakeFile is readable, a signal
    /// came, or the time has passed.
    static void WaitForAny(const std::vector<const ChildProcess*>& inChildren, int inWakeFile,
                           std::int64_t inMostMilliseconds);
    static bool IsReadable(int inFile);

private:
    void ReadWords();
    bool ReadLines(std::vector<std::string>& ioLines);
    bool WritePending();

    int mProcess = -1;
    int mConnection = -1;
    int mWordsFile = -1;
    std::string mFolder;
    std::string mIncoming;
    std::string mOutgoing;
    std::string mWords;
    ChildEnd mEnd;
};

/// The descriptor that a child speaks on.
inline constexpr int kChildConnection = 3;

} // namespace trhost::effects::platform
