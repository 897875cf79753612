#pragma once

#include <kiocore/Export.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ZOL {

using kiocore::UTF16String;
using kiocore::UTF16View;

struct FileListContents;

enum class SearchOrder {
    kByPath, ///< code units of the part below the root
    kOnDisk, ///< folder by folder, each as its files lie there: to delete or read them all costs least
};

/// The files that a search found. Holds names
/// only, packed: about 10 bytes a file beside its name, and each folder's name once.
///
/// Threading: a plain value; copies share their contents.
class KIO_EXPORT FileList {
public:
    FileList();
    std::size_t Size() const { return mSize; }
    bool IsEmpty() const { return mSize == 0; }
    /// The full path. The second form reuses ioPath's memory.
    UTF16String GetPath(std::size_t inIndex) const;
    void GetPath(std::size_t inIndex, UTF16String& ioPath) const;

private:
    friend class File;
    friend class FolderSearch;
    friend class OpenFolder;
    explicit FileList(std::shared_ptr<const FileListContents> inContents);

    std::shared_ptr<const FileListContents> mContents; // never null
    std::size_t mSize;
};

/// The folder that the last file lay in, kept open from one operation on a listed file to the next.
///
/// Threading: one thread at a time.
class KIO_EXPORT OpenFolder {
public:
    OpenFolder() = default;
    ~OpenFolder();
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;

private:
    friend class File;
    /// @return a descriptor that stays ours, or -1 with errno.
    int Open(const FileList& inFiles, std::uint32_t inFolder);
    void CloseFolder();
    void CloseAll();

    std::shared_ptr<const FileListContents> mContents; // of the list that the descriptors belong to
    int mRoot = -1;
    int mFolder = -1;
    std::uint32_t mIndex = 0;
};

/// Finds regular files below a folder, in all its subfolders.
///
/// A symbolic link at the root is followed, none below it: neither a linked folder nor a linked file is
/// found. Folders that may not be listed are passed over.
///
/// Threading: any thread.
class KIO_EXPORT FolderSearch {
public:
    /// @param inExtensions  with their dot, ASCII letters compared without case; empty = every file. A file
    ///     whose whole name is an extension has none.
    /// A missing root gives an empty list.
    static FileList FindFiles(UTF16View inFolder, const std::vector<UTF16String>& inExtensions,
                              SearchOrder inOrder = SearchOrder::kByPath);
    /// All subfolders, full paths with a trailing separator, children before their parents, the root not
    /// among them. Linked folders are not found.
    /// @throws file_exception when a folder cannot be listed.
    static std::vector<UTF16String> FindFolders(UTF16View inFolder);
};

} // namespace ZOL
