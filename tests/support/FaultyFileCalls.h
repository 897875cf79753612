#pragma once

#include <kiocore/filesupport/FileCalls.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace support {

/// The system's file calls, recorded and made to fail on demand, in use for as long as it lives. Calls are
/// named as FileCalls names them ("Open", "Write", ...) and numbered from 0 in the order they are made.
class FaultyFileCalls : public kiocore::filesupport::FileCalls {
public:
    /// Lets one call fail, once.
    void FailCall(int inNumber, int inErrno);
    /// Lets all calls of a name fail.
    void FailCalls(const std::string& inName, int inErrno) { mFailingNames[inName] = inErrno; }
    /// Ends the process right before a call is made, as if it had been killed.
    void DieAtCall(int inNumber) { mDeadlyCall = inNumber; }
    /// Lets each write take so many bytes at the most.
    void WriteAtMost(std::size_t inBytes) { mMostBytes = inBytes; }
    /// Lets each read give so many bytes at the most.
    void ReadAtMost(std::size_t inBytes) { mMostBytesRead = inBytes; }

    static constexpr int kDeadStatus = 97;
    std::vector<std::string> Names() const;

    int Open(const char* inPath, int inFlags, mode_t inMode) override;
    int Close(int inFile) override;
    ssize_t Read(int inFile, void* outBytes, std::size_t inSize) override;
    ssize_t Write(int inFile, const void* inBytes, std::size_t inSize) override;
    int Sync(int inFile) override;
    int SetTimes(int inFile, const timespec inTimes[2]) override;
    int SetTimesOfPath(const char* inPath, const timespec inTimes[2]) override;
    int ChangeMode(int inFile, mode_t inMode) override;
    int Rename(const char* inFrom, const char* inTo) override;
    int Link(const char* inFrom, const char* inTo) override;
    int Unlink(const char* inPath) override;
    int UnlinkAt(int inFolder, const char* inName, int inFlags) override;
    int MakeFolder(const char* inPath, mode_t inMode) override;
    ssize_t CopyRange(int inFrom, int inTo, std::size_t inSize) override;

private:
    /// @return true, with errno, when the call is to fail.
    bool Fails(const char* inName);

    mutable std::mutex mLock;
    std::vector<std::string> mNames;
    std::map<std::string, int> mFailingNames;
    int mFailingCall = -1;
    int mFailingErrno = 0;
    int mDeadlyCall = -1;
    std::size_t mMostBytes = 0;
    std::size_t mMostBytesRead = 0;
    kiocore::filesupport::ScReplaceFileCalls mReplace{*this};
};

} // namespace support
