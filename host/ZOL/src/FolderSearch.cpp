#include <ZOL/FolderSearch.h>

#include "FileListContents.h"
#include "FolderDescriptor.h"
#include "NameOrder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/filesupport/NativePath.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace ZOL {
namespace {

// Folders on the way down stay open up to this many; deeper trees open them again, which costs more.
constexpr std::size_t kMostOpenFolders = 32;

using Entry = FileListContents::Entry;

/// What a walk tells. Names are native.
class TreeVisitor {
public:
    virtual ~TreeVisitor() = default;
    /// A regular file of the folder that is being listed, in no order.
    /// @param inNumber  the file system's own for the file, which grows with its place on the disk.
    virtual void OnFile(const char* inName, std::uint64_t inNumber) = 0;
    /// The folder, or a part of it, cannot be listed. The walk goes on.
    /// @param inPath  below the root, with a trailing separator; "" is the root.
    virtual void OnFailure(const std::string& inPath, int inErrno) = 0;
    /// The folder's files have all been told. Its subfolders follow, in order.
    virtual void OnListed(bool inHasSubfolders) = 0;
    /// Then come OnFile, OnFailure, OnListed and OnLeave of that folder.
    /// @param inName  of the folder, with a trailing separator.
    virtual void OnSubfolder(const std::string& inPath, const char* inName) = 0;
    virtual void OnLeave(const std::string& inPath) = 0;
};

/// Walks a tree depth first, without recursion: a tree may be deeper than the stack.
class TreeWalk {
public:
    /// @param inRoot  an open folder, ours from now on.
    TreeWalk(int inRoot, bool inWantsFiles, TreeVisitor& inVisitor)
        : mRoot(inRoot), mWantsFiles(inWantsFiles), mVisitor(inVisitor)
    {}
    ~TreeWalk()
    {
        for (Folder& folder : mStack) {
            Close(folder);
        }
        ::close(mRoot);
    }
    TreeWalk(const TreeWalk&) = delete;
    TreeWalk& operator=(const TreeWalk&) = delete;

    void Run()
    {
        Enter({}, OpenSubfolder(mRoot, "."));
        while (!mStack.empty()) {
            Folder& top = mStack.back();
            if (top.next < top.subfolders.size()) {
                Descend(top);
            } else {
                mVisitor.OnLeave(top.path);
                Close(top);
                mStack.pop_back();
            }
        }
    }

private:
    struct Folder {
        std::string path;                    // below the root, "" or with a trailing separator
        int file = -1;                       // -1 while too many others are open
        std::vector<std::string> subfolders; // with a trailing separator, in order once all are known
        std::size_t next = 0;
    };

    void Descend(Folder& ioParent)
    {
        std::string name = std::move(ioParent.subfolders[ioParent.next++]);
        std::string path = ioParent.path + name;
        mVisitor.OnSubfolder(path, name.c_str());
        name.pop_back(); // the separator
        if (ioParent.file < 0) {
            ioParent.file = OpenFolderBelow(mRoot, ioParent.path);
        }
        const int file = ioParent.file < 0 ? -1 : OpenSubfolder(ioParent.file, name.c_str());
        Enter(std::move(path), file);
    }

    /// @param inFile  ours from now on; -1 with errno when it could not be opened.
    void Enter(std::string inPath, int inFile)
    {
        const int error = errno;
        if (mStack.size() >= kMostOpenFolders) {
            Close(mStack[mStack.size() - kMostOpenFolders]);
        }
        mStack.emplace_back();
        Folder& folder = mStack.back();
        folder.path = std::move(inPath);
        folder.file = inFile;
        if (const int failure = inFile < 0 ? error : List(folder); failure != 0) {
            mVisitor.OnFailure(folder.path, failure);
        }
        // As paths are ordered: by the name with the separator that follows it there.
        for (std::string& name : folder.subfolders) {
            name += '/';
        }
        std::sort(folder.subfolders.begin(), folder.subfolders.end(),
                  [](const std::string& a, const std::string& b) {
                      return CompareNames(a.c_str(), b.c_str()) < 0;
                  });
        mVisitor.OnListed(!folder.subfolders.empty());
    }

    /// @return 0, or an error number.
    int List(Folder& ioFolder)
    {
        // A listing takes the descriptor that it is given for good, so it gets a copy.
        const int copy = ::fcntl(ioFolder.file, F_DUPFD_CLOEXEC, 0);
        DIR* const listing = copy < 0 ? nullptr : ::fdopendir(copy);
        if (!listing) {
            const int error = errno;
            if (copy >= 0) {
                ::close(copy);
            }
            return error;
        }
        const std::unique_ptr<DIR, int (*)(DIR*)> closer(listing, ::closedir);
        for (;;) {
            errno = 0;
            const dirent* const entry = ::readdir(listing);
            if (!entry) {
                return errno;
            }
            const char* const name = entry->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) {
                continue;
            }
            switch (TypeOf(ioFolder.file, *entry)) {
            case DT_REG:
                if (mWantsFiles) {
                    mVisitor.OnFile(name, entry->d_ino);
                }
                break;
            case DT_DIR:
                ioFolder.subfolders.emplace_back(name);
                break;
            default: // a link, a device, a socket
                break;
            }
        }
    }

    static unsigned char TypeOf(int inFolder, const dirent& inEntry)
    {
        struct stat status;
        if (inEntry.d_type != DT_UNKNOWN) {
            return inEntry.d_type;
        }
        if (::fstatat(inFolder, inEntry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return DT_UNKNOWN;
        }
        return S_ISREG(status.st_mode) ? DT_REG : S_ISDIR(status.st_mode) ? DT_DIR : DT_UNKNOWN;
    }

    static void Close(Folder& ioFolder)
    {
        if (ioFolder.file >= 0) {
            ::close(ioFolder.file);
            ioFolder.file = -1;
        }
    }

    const int mRoot;
    const bool mWantsFiles;
    TreeVisitor& mVisitor;
    std::vector<Folder> mStack;
};

char Folded(char inByte)
{
    return inByte >= 'A' && inByte <= 'Z' ? static_cast<char>(inByte - 'A' + 'a') : inByte;
}

bool HasExtension(std::string_view inName, const std::vector<std::string>& inFoldedExtensions)
{
    if (inFoldedExtensions.empty()) {
        return true;
    }
    for (const std::string& extension : inFoldedExtensions) {
        if (inName.size() > extension.size() &&
            std::equal(extension.rbegin(), extension.rend(), inName.rbegin(),
                       [](char folded, char byte) { return folded == Folded(byte); })) {
            return true;
        }
    }
    return false;
}

/// Keeps files so that the list is in order as a whole: each folder's own are sorted, and those that come
/// after a subfolder wait for it.
class FileCollector : public TreeVisitor {
public:
    FileCollector(FileListContents& ioContents, std::vector<std::string> inFoldedExtensions,
                  SearchOrder inOrder)
        : mContents(ioContents), mExtensions(std::move(inFoldedExtensions)), mOrder(inOrder)
    {
        mFolders.emplace_back();
    }

    void OnFile(const char* inName, std::uint64_t inNumber) override
    {
        const std::string_view name(inName);
        if (!HasExtension(name, mExtensions)) {
            return;
        }
        Waiting& folder = mFolders.back();
        if (!folder.hasIndex) {
            folder.index = static_cast<std::uint32_t>(mContents.folders.size());
            folder.hasIndex = true;
            mContents.folders.push_back(mPath);
        }
        if (mOrder == SearchOrder::kOnDisk) {
            mNumbered.push_back({inNumber, {folder.index, mContents.names.Add(name)}});
            return;
        }
        std::vector<Entry>& files = mContents.files;
        if (files.size() == files.capacity()) {
            files.reserve(files.size() + files.size() / 4 + 64); // doubling would waste too much
        }
        files.push_back({folder.index, mContents.names.Add(name)});
    }

    void OnListed(bool inHasSubfolders) override
    {
        std::vector<Entry>& files = mContents.files;
        if (mOrder == SearchOrder::kOnDisk) {
            std::sort(mNumbered.begin(), mNumbered.end(),
                      [](const Numbered& a, const Numbered& b) { return a.number < b.number; });
            for (const Numbered& file : mNumbered) {
                files.push_back(file.entry);
            }
            mNumbered.clear();
            return;
        }
        Waiting& folder = mFolders.back();
        const auto first = files.begin() + static_cast<std::ptrdiff_t>(folder.first);
        std::sort(first, files.end(), [&names = mContents.names](const Entry& a, const Entry& b) {
            return CompareNames(names.Get(a.name), names.Get(b.name)) < 0;
        });
        if (inHasSubfolders) {
            folder.files.assign(first, files.end());
            files.erase(first, files.end());
        }
    }

    void OnSubfolder(const std::string& inPath, const char* inName) override
    {
        Waiting& folder = mFolders.back();
        while (folder.next < folder.files.size() &&
               CompareNames(mContents.names.Get(folder.files[folder.next].name), inName) < 0) {
            mContents.files.push_back(folder.files[folder.next++]);
        }
        mPath = inPath;
        mFolders.emplace_back();
        mFolders.back().first = mContents.files.size();
    }

    void OnFailure(const std::string&, int) override
    {
        // Passed over; what was found before the failure stays found.
    }

    void OnLeave(const std::string&) override
    {
        Waiting& folder = mFolders.back();
        mContents.files.insert(mContents.files.end(),
                               folder.files.begin() + static_cast<std::ptrdiff_t>(folder.next),
                               folder.files.end());
        mFolders.pop_back();
    }

private:
    struct Waiting {
        std::size_t first = 0; // of its files in the list, while it is being listed
        std::vector<Entry> files;
        std::size_t next = 0;
        std::uint32_t index = 0;
        bool hasIndex = false;
    };

    struct Numbered {
        std::uint64_t number;
        Entry entry;
    };

    FileListContents& mContents;
    const std::vector<std::string> mExtensions;
    const SearchOrder mOrder;
    std::vector<Numbered> mNumbered; // of the folder that is being listed
    std::string mPath;               // of the folder that is being listed
    std::vector<Waiting> mFolders;
};

class FolderCollector : public TreeVisitor {
public:
    explicit FolderCollector(const UTF16String& inRoot) : mRoot(inRoot) {}

    void OnFile(const char*, std::uint64_t) override {}
    void OnFailure(const std::string& inPath, int inErrno) override
    {
        throw kiocore::file_exception("list folder", kiocore::utility::ToUTF8(FullPath(inPath)), inErrno);
    }
    void OnListed(bool) override {}
    void OnSubfolder(const std::string&, const char*) override {}
    void OnLeave(const std::string& inPath) override
    {
        if (!inPath.empty()) {
            found.push_back(FullPath(inPath));
        }
    }

    std::vector<UTF16String> found;

private:
    UTF16String FullPath(const std::string& inPath) const
    {
        UTF16String path = mRoot;
        kiocore::filesupport::AppendFromNative(inPath, path);
        return path;
    }

    const UTF16String& mRoot;
};

UTF16String WithSeparator(UTF16View inFolder)
{
    UTF16String folder(inFolder);
    if (!folder.empty() && folder.back() != u'/') {
        folder += u'/';
    }
    return folder;
}

std::vector<std::string> FoldedNative(const std::vector<UTF16String>& inExtensions)
{
    std::vector<std::string> folded;
    folded.reserve(inExtensions.size());
    for (const UTF16String& extension : inExtensions) {
        folded.push_back(kiocore::filesupport::ToNative(extension));
        std::transform(folded.back().begin(), folded.back().end(), folded.back().begin(), Folded);
    }
    return folded;
}

std::string Joined(const std::vector<UTF16String>& inTexts)
{
    std::string joined;
    for (const UTF16String& text : inTexts) {
        joined.append(joined.empty() ? "" : " ").append(kiocore::utility::ToUTF8(text));
    }
    return joined;
}

} // namespace

FileList FolderSearch::FindFiles(UTF16View inFolder, const std::vector<UTF16String>& inExtensions,
                                 SearchOrder inOrder)
{
    KIO_HOST_CALL("ZOL::FolderSearch::FindFiles", inFolder, Joined(inExtensions));
    auto contents = std::make_shared<FileListContents>();
    contents->root = WithSeparator(inFolder);
    contents->rootNative = kiocore::filesupport::NativePath(contents->root).View();
    const int root = OpenRootFolder(contents->rootNative.c_str());
    if (root >= 0) {
        FileCollector collector(*contents, FoldedNative(inExtensions), inOrder);
        TreeWalk(root, true, collector).Run();
    }
    return FileList(std::move(contents));
}

std::vector<UTF16String> FolderSearch::FindFolders(UTF16View inFolder)
{
    KIO_HOST_CALL("ZOL::FolderSearch::FindFolders", inFolder);
    const UTF16String rootPath = WithSeparator(inFolder);
    FolderCollector collector(rootPath);
    const int root = OpenRootFolder(kiocore::filesupport::NativePath(rootPath).CString());
    if (root < 0) {
        collector.OnFailure({}, errno);
    }
    TreeWalk(root, false, collector).Run();
    return std::move(collector.found);
}

} // namespace ZOL
