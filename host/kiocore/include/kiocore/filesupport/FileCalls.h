#pragma once

#include <kiocore/Export.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

namespace kiocore::filesupport {

/// The system calls by which the host libraries change files, and read them block by block, in one place, so
/// that a test can let any of them fail, fall short, or end the process. Each works as the system's own:
/// result and errno.
///
/// Threading: any thread.
class KIO_EXPORT FileCalls {
public:
    virtual ~FileCalls();
    virtual int Open(const char* inPath, int inFlags, mode_t inMode);
    virtual int Close(int inFile);
    virtual ssize_t Read(int inFile, void* outBytes, std::size_t inSize);
    virtual ssize_t Write(int inFile, const void* inBytes, std::size_t inSize);
    virtual int Sync(int inFile);
    virtual int SetTimes(int inFile, const timespec inTimes[2]);
    virtual int SetTimesOfPath(const char* inPath, const timespec inTimes[2]);
    virtual int ChangeMode(int inFile, mode_t inMode);
    virtual int Rename(const char* inFrom, const char* inTo);
    virtual int Link(const char* inFrom, const char* inTo);
    virtual int Unlink(const char* inPath);
    virtual int UnlinkAt(int inFolder, const char* inName, int inFlags);
    virtual int MakeFolder(const char* inPath, mode_t inMode);
    /// Copies up to inSize bytes from one file to the other, both at their current offsets, inside the
    /// system. ENOSYS where the platform has no such call.
    virtual ssize_t CopyRange(int inFrom, int inTo, std::size_t inSize);
};

/// The calls in use: the system's, or the innermost replacement.
KIO_EXPORT FileCalls& GetFileCalls();

/// Makes a folder and those above it that are missing. @return 0 when it is there now; -1 with errno.
KIO_EXPORT int MakeFolders(const std::string& inNativePath);
/// Writes all of it, however many calls that takes. @return 0, or -1 with errno.
KIO_EXPORT int WriteAll(int inFile, const void* inBytes, std::size_t inSize);

/// Replaces the calls for as long as it lives.
class KIO_EXPORT ScReplaceFileCalls {
public:
    explicit ScReplaceFileCalls(FileCalls& inCalls);
    ~ScReplaceFileCalls();
    ScReplaceFileCalls(const ScReplaceFileCalls&) = delete;
    ScReplaceFileCalls& operator=(const ScReplaceFileCalls&) = delete;

private:
    FileCalls* mPrevious;
};

} // namespace kiocore::filesupport
