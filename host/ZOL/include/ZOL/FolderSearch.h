#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ZOL {

using kiocore::UTF16String;

/// The files that a search found, sorted by path (code units of the part below the root). Holds names
/// only, packed: about 16 bytes a file beside its name, and each folder's name once.
///
/// Threading: a plain value.
class KIO_EXPORT FileList {
public:
    std::size_t Size() const { return mFiles.size(); }
    bool IsEmpty() const { return mFiles.empty(); }
    /// The full path. The second form reuses ioPath's memory.
    UTF16String GetPath(std::size_t inIndex) const;
    void GetPath(std::size_t inIndex, UTF16String& ioPath) const;

private:
    friend class FolderSearch;
    struct Entry {
        std::uint32_t folder;     // index into mFolders
        std::uint32_t nameOffset; // into mNames, zero-terminated native bytes
    };
    UTF16String mRoot;                 // with a trailing separator
    std::vector<std::string> mFolders; // native, below the root, "" or with a trailing separator
    std::string mNames;
    std::vector<Entry> mFiles;
};

/// Finds regular files below a folder, in all its subfolders.
///
/// A symbolic link at the root is followed, none below it: neither a linked folder nor a linked file is
/// found. Folders that may not be listed are passed over.
///
/// Threading: any thread.
class KIO_EXPORT FolderSearch {
public:
    /// @param inExtensions  with their dot, ASCII letters compared without case; empty = every file.
    /// A missing root gives an empty list.
    static FileList FindFiles(const UTF16String& inFolder, const std::vector<UTF16String>& inExtensions);
    /// All subfolders, full paths with a trailing separator, children before their parents, the root not
    /// among them. Linked folders are not found.
    /// @throws file_exception when a folder cannot be listed.
    static std::vector<UTF16String> FindFolders(const UTF16String& inFolder);
};

} // namespace ZOL
