#include "FileListContents.h"
#include "FolderDescriptor.h"

#include <kiocore/filesupport/NativePath.h>

#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace ZOL {

std::uint32_t NameStore::Add(std::string_view inName)
{
    const std::size_t size = inName.size() + 1;
    if (kBlockBytes - mUsed < size) {
        if (size > kBlockBytes || (mBlocks.size() + 1) * std::uint64_t(kBlockBytes) > kMostBytes) {
            throw std::length_error("The names of the files found take more than 4 GiB");
        }
        mBlocks.push_back(std::make_unique_for_overwrite<char[]>(kBlockBytes));
        mUsed = 0;
    }
    char* const place = mBlocks.back().get() + mUsed;
    std::memcpy(place, inName.data(), inName.size());
    place[inName.size()] = 0;
    const std::size_t offset = (mBlocks.size() - 1) * kBlockBytes + mUsed;
    mUsed += size;
    return static_cast<std::uint32_t>(offset);
}

FileList::FileList() : FileList(std::make_shared<const FileListContents>()) {}

FileList::FileList(std::shared_ptr<const FileListContents> inContents)
    : mContents(std::move(inContents)), mSize(mContents->files.size())
{}

UTF16String FileList::GetPath(std::size_t inIndex) const
{
    UTF16String path;
    GetPath(inIndex, path);
    return path;
}

void FileList::GetPath(std::size_t inIndex, UTF16String& ioPath) const
{
    const FileListContents::Entry& entry = mContents->files.at(inIndex);
    ioPath.assign(mContents->root);
    kiocore::filesupport::AppendFromNative(mContents->folders[entry.folder], ioPath);
    kiocore::filesupport::AppendFromNative(mContents->names.Get(entry.name), ioPath);
}

OpenFolder::~OpenFolder()
{
    CloseAll();
}

int OpenFolder::Open(const FileList& inFiles, std::uint32_t inFolder)
{
    if (mContents != inFiles.mContents) {
        CloseAll();
        mContents = inFiles.mContents;
    }
    if (mFolder >= 0 && mIndex == inFolder) {
        return mFolder;
    }
    CloseFolder();
    if (mRoot < 0) {
        mRoot = OpenRootFolder(mContents->rootNative.c_str());
        if (mRoot < 0) {
            return -1;
        }
    }
    mFolder = OpenFolderBelow(mRoot, mContents->folders[inFolder]);
    mIndex = inFolder;
    return mFolder;
}

void OpenFolder::CloseFolder()
{
    if (mFolder >= 0) {
        ::close(mFolder);
        mFolder = -1;
    }
}

void OpenFolder::CloseAll()
{
    CloseFolder();
    if (mRoot >= 0) {
        ::close(mRoot);
        mRoot = -1;
    }
}

} // namespace ZOL
