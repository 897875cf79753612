#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <functional>

namespace MF {

/// Knows which files the media engine holds open, so that somebody who wants to delete one can ask for it
/// to be closed first.
///
/// Threading: any thread. Closers are called unlocked.
class KIO_EXPORT FileManager {
public:
    /// Closes the file if that can be done at once.
    /// @return true when it is closed now.
    using TryToClose = std::function<bool()>;

    /// Registers an open file for as long as it lives. Several may be registered for one path.
    class KIO_EXPORT ScOpenFile {
    public:
        ScOpenFile(const kiocore::UTF16String& inPath, TryToClose inTryToClose);
        ~ScOpenFile();
        ScOpenFile(const ScOpenFile&) = delete;
        ScOpenFile& operator=(const ScOpenFile&) = delete;

    private:
        unsigned long long mNumber;
        kiocore::UTF16String mPath;
    };

    /// Asks everyone who holds the file open to close it, without waiting for anyone.
    /// @return true when nobody holds it open any more.
    static bool TryToCloseFileWithoutBlocking(const kiocore::UTF16String& inPath);
    static bool IsOpen(const kiocore::UTF16String& inPath);
};

} // namespace MF
