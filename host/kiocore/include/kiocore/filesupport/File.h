#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstdint>

namespace kiocore::filesupport {

/// A file by its path, whether it exists or not.
///
/// Threading: a plain value.
class KIO_EXPORT File {
public:
    /// @param inPath  full, in the platform's form.
    explicit File(utility::UTF16String inPath);

    const utility::UTF16String& FullPath() const noexcept { return mPath; }
    /// What follows the last dot of the name, which is not its first character: "png" of "still.PNG.png". As
    /// it stands, in small or capital letters; empty when there is none.
    utility::UTF16String GetExtension(bool inWithDot) const;
    /// A folder is no file; symbolic links are followed.
    bool Exists() const;
    /// @throws file_exception when it is not there or cannot be asked.
    std::uint64_t Size() const;
    /// A file that is not there is no failure.
    /// @throws file_exception.
    void Delete() const;

private:
    utility::UTF16String mPath;
};

/// Folders of the host application.
///
/// Threading: setters before other threads run; getters from any thread.
class KIO_EXPORT Dir {
public:
    /// Where the user's preferences lie. "<XDG configuration folder>/<application's short name>" until set;
    /// empty for a user who has no such folder.
    static Dir PrefDir();
    /// The folder need not exist yet; an empty path restores the default.
    static void SetPrefDir(const utility::UTF16String& inPath);

    explicit Dir(utility::UTF16String inPath);
    /// With a trailing separator.
    const utility::UTF16String& FullPath() const noexcept { return mPath; }

private:
    utility::UTF16String mPath;
};

} // namespace kiocore::filesupport
