#pragma once

#include <cstdint>

namespace kiocore::platform {

/// Exclusive locks on single bytes of a file that belong to the open file description, so that threads
/// exclude each other like processes do, and that the system releases when the description closes.
/// Bytes beyond the file's end may be locked.
enum class ByteLockWait { kNo, kAsLongAsItTakes };

/// @return 0; or an error number: EAGAIN when it is taken and was not waited for.
int LockByte(int inFile, std::int64_t inOffset, ByteLockWait inWait);
/// @return 0, or an error number.
int UnlockByte(int inFile, std::int64_t inOffset);

} // namespace kiocore::platform
