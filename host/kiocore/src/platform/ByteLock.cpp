#include "ByteLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kiocore::platform {
namespace {

int Change(int inFile, std::int64_t inOffset, int inCommand, short inType)
{
    struct flock range {};
    range.l_type = inType;
    range.l_whence = SEEK_SET;
    range.l_start = inOffset;
    range.l_len = 1;
    range.l_pid = 0; // must be so for locks of open file descriptions
    while (::fcntl(inFile, inCommand, &range) != 0) {
        if (errno != EINTR) {
            return errno == EACCES ? EAGAIN : errno;
        }
    }
    return 0;
}

} // namespace

int LockByte(int inFile, std::int64_t inOffset, ByteLockWait inWait)
{
    return Change(inFile, inOffset, inWait == ByteLockWait::kNo ? F_OFD_SETLK : F_OFD_SETLKW, F_WRLCK);
}

int UnlockByte(int inFile, std::int64_t inOffset)
{
    return Change(inFile, inOffset, F_OFD_SETLK, F_UNLCK);
}

} // namespace kiocore::platform
