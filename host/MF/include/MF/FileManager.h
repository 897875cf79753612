#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <functional>
#include <memory>

namespace MF {

/// Knows which files the media engine holds open, so that somebody who wants to delete one can ask for it
/// to be closed first.
///
/// Threading: any thread. Closers are called unlocked.
class KIO_EXPORT FileManager {
public:
    /// Closes the file if that can be done at once. One that throws has not closed it.
    /// @return true when it is closed now; it is not registered any more then.
    using TryToClose = std::function<bool()>;

    /// Registers an open file for as long as it lives. Several may be registered for one path. Destroying
    /// it waits for its closer to return, except inside the closer itself, so do not hold a lock that the
    /// closer waits for.
    class KIO_EXPORT ScOpenFile {
    public:
        ScOpenFile(kiocore::UTF16View inPath, TryToClose inTryToClose);
        ~ScOpenFile();
        ScOpenFile(const ScOpenFile&) = delete;
        ScOpenFile& operator=(const ScOpenFile&) = delete;

    private:
        unsigned long long mNumber;
        kiocore::UTF16String mPath;
        std::shared_ptr<void> mFile;
    };

    /// Asks everyone who holds the file open to close it, without waiting for anyone.
    /// @return true when nobody holds it open any more.
    static bool TryToCloseFileWithoutBlocking(kiocore::UTF16View inPath);
    static bool IsOpen(kiocore::UTF16View inPath);
};

} // namespace MF
