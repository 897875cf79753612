#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>

namespace kiocore::filesupport {

/// Holds a document's lock for a scope: exclusive between threads and between all processes that use the
/// same lock file, and released by the system when the process dies. All documents share one lock file
/// and differ in the byte of it that they lock (taken from the GUID), so no files pile up.
/// Not recursive. When the lock file is deleted, the next lock makes a new one; a lock that was held
/// meanwhile does not exclude those on the new file. Waits as long as it takes; waits longer than kLockLimit
/// are reported once on trace channel "Threads".
///
/// Threading: locked and released on one thread; different documents do not wait for each other.
class KIO_EXPORT ScDocumentLock {
public:
    /// @param inLockFile  made, with its folder, when missing. Never deleted.
    /// @throws file_exception when it cannot be made or locked.
    ScDocumentLock(utility::UTF16View inLockFile, const utility::Guid& inDocumentID);
    ~ScDocumentLock();
    ScDocumentLock(const ScDocumentLock&) = delete;
    ScDocumentLock& operator=(const ScDocumentLock&) = delete;

private:
    struct Pool;
    friend struct DocumentLockPools;

    Pool& mPool;
    int mFile; // an open file description of our own while we hold the lock
    std::int64_t mOffset;
    std::uint64_t mGeneration; // which of the files that had the path it is
};

} // namespace kiocore::filesupport
