#include "support/FaultyFileCalls.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace support {

void FaultyFileCalls::FailCall(int inNumber, int inErrno)
{
    mFailingCall = inNumber;
    mFailingErrno = inErrno;
}

std::vector<std::string> FaultyFileCalls::Names() const
{
    std::lock_guard lock(mLock);
    return mNames;
}

bool FaultyFileCalls::Fails(const char* inName)
{
    std::lock_guard lock(mLock);
    const int number = static_cast<int>(mNames.size());
    mNames.emplace_back(inName);
    if (number == mDeadlyCall) {
        ::_exit(kDeadStatus);
    }
    if (number == mFailingCall) {
        errno = mFailingErrno;
        return true;
    }
    if (const auto found = mFailingNames.find(inName); found != mFailingNames.end()) {
        errno = found->second;
        return true;
    }
    return false;
}

int FaultyFileCalls::Open(const char* inPath, int inFlags, mode_t inMode)
{
    return Fails("Open") ? -1 : FileCalls::Open(inPath, inFlags, inMode);
}
int FaultyFileCalls::Close(int inFile)
{
    const bool fails = Fails("Close");
    const int error = errno;
    const int result = FileCalls::Close(inFile); // as the system does: gone in any case
    if (fails) {
        errno = error;
    }
    return fails ? -1 : result;
}
ssize_t FaultyFileCalls::Read(int inFile, void* outBytes, std::size_t inSize)
{
    if (Fails("Read")) {
        return -1;
    }
    return FileCalls::Read(inFile, outBytes, mMostBytesRead > 0 ? std::min(mMostBytesRead, inSize) : inSize);
}
ssize_t FaultyFileCalls::Write(int inFile, const void* inBytes, std::size_t inSize)
{
    if (Fails("Write")) {
        return -1;
    }
    return FileCalls::Write(inFile, inBytes, mMostBytes > 0 ? std::min(mMostBytes, inSize) : inSize);
}
int FaultyFileCalls::Sync(int inFile)
{
    return Fails("Sync") ? -1 : FileCalls::Sync(inFile);
}
int FaultyFileCalls::SetTimes(int inFile, const timespec inTimes[2])
{
    return Fails("SetTimes") ? -1 : FileCalls::SetTimes(inFile, inTimes);
}
int FaultyFileCalls::SetTimesOfPath(const char* inPath, const timespec inTimes[2])
{
    return Fails("SetTimesOfPath") ? -1 : FileCalls::SetTimesOfPath(inPath, inTimes);
}
int FaultyFileCalls::ChangeMode(int inFile, mode_t inMode)
{
    return Fails("ChangeMode") ? -1 : FileCalls::ChangeMode(inFile, inMode);
}
int FaultyFileCalls::Rename(const char* inFrom, const char* inTo)
{
    return Fails("Rename") ? -1 : FileCalls::Rename(inFrom, inTo);
}
int FaultyFileCalls::Link(const char* inFrom, const char* inTo)
{
    return Fails("Link") ? -1 : FileCalls::Link(inFrom, inTo);
}
int FaultyFileCalls::Unlink(const char* inPath)
{
    return Fails("Unlink") ? -1 : FileCalls::Unlink(inPath);
}
int FaultyFileCalls::UnlinkAt(int inFolder, const char* inName, int inFlags)
{
    return Fails("UnlinkAt") ? -1 : FileCalls::UnlinkAt(inFolder, inName, inFlags);
}
int FaultyFileCalls::MakeFolder(const char* inPath, mode_t inMode)
{
    return Fails("MakeFolder") ? -1 : FileCalls::MakeFolder(inPath, inMode);
}
ssize_t FaultyFileCalls::CopyRange(int inFrom, int inTo, std::size_t inSize)
{
    return Fails("CopyRange") ? -1 : FileCalls::CopyRange(inFrom, inTo, inSize);
}

} // namespace support
