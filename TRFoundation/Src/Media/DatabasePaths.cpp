#include "DatabasePaths.h"

#include <TR/MediaAcceleratorDatabase.h>

#include <BE/Backend.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Client.h>
#include <kiocore/utility/Coercion.h>
#include <kiocore/utility/FileUtils.h>

#include <algorithm>
#include <mutex>

namespace TR {

using kiocore::utility::DecimalText;
using kiocore::utility::FileUtils;

const UTF16String kMediaAcceleratorFileExtension(u".mcdb");

namespace {

constexpr int kTagsPerVersion = 256;
constexpr int kHalfVersionDigit = 0x50; // x.5 is x * 256 + 80
constexpr int kHalfVersionMask = 0xF0;
constexpr int kFromHalfToWhole = 80;       // 13.5 to 13.0
constexpr int kFromWholeToHalf = 256 - 80; // 14.0 to 13.5
constexpr int kOldestTagLimit = 1361;      // below lies 5.5, whose records nobody can read

std::vector<int> TagsFrom(int inMajorVersion)
{
    std::vector<int> tags;
    int tag = inMajorVersion * kTagsPerVersion;
    do {
        tags.push_back(tag);
        tag -= (tag & kHalfVersionMask) == kHalfVersionDigit ? kFromHalfToWhole : kFromWholeToHalf;
    } while (tag >= kOldestTagLimit);
    tags.push_back(kUntagged);
    return tags;
}

/// Folders seldom change, so numbers are never given back.
std::uint32_t NumberOfFolder(const UTF16String& inFolder)
{
    static std::mutex lock;
    static std::vector<UTF16String> folders;
    std::lock_guard guard(lock);
    const auto found = std::find(folders.begin(), folders.end(), inFolder);
    if (found != folders.end()) {
        return static_cast<std::uint32_t>(found - folders.begin());
    }
    folders.push_back(inFolder);
    return static_cast<std::uint32_t>(folders.size() - 1);
}

} // namespace

DatabasePaths& DatabasePaths::ForThisThread()
{
    thread_local DatabasePaths paths;
    // Counts are read before the values: a change in between makes the next call read again.
    const std::uint64_t preferences = BE::GetPreferencesChangeCount();
    const unsigned client = kiocore::config::GetClientChangeCount();
    if (!paths.mIsRead || preferences != paths.mPreferencesChangeCount) {
        paths.ReadFolder();
        paths.mPreferencesChangeCount = preferences;
    }
    if (!paths.mIsRead || client != paths.mClientChangeCount) {
        paths.ReadVersion();
        paths.mClientChangeCount = client;
    }
    paths.mIsRead = true;
    return paths;
}

void DatabasePaths::ReadFolder()
{
    mFolder.clear();
    if (BE::GetBackend()->GetPreferences()->GetMediaCacheDatabaseFolder(mFolder) < 0) {
        mFolder.clear();
        return;
    }
    mFolder = FileUtils::AddTrailingSlash(mFolder);
    mFolderNumber = NumberOfFolder(mFolder);
}

void DatabasePaths::ReadVersion()
{
    mTags = TagsFrom(kiocore::utility::Coercion<int>(kiocore::config::GetSuiteClientVersion_NumberOnly()));
    mTagTexts.clear();
    for (const int tag : mTags) {
        mTagTexts.push_back((tag == kUntagged ? UTF16String() : DecimalText(static_cast<unsigned>(tag))) +
                            kMediaAcceleratorFileExtension);
    }
}

void DatabasePaths::BeginDocument(const Guid& inDocumentID)
{
    mPath.assign(mFolder);
    mPath.resize(mFolder.size() + Guid::kTextLength);
    inDocumentID.WriteText(mPath.data() + mFolder.size());
}

const UTF16String& DatabasePaths::GetPath(std::size_t inTagIndex)
{
    mPath.resize(mFolder.size() + Guid::kTextLength);
    mPath.append(mTagTexts[inTagIndex]);
    return mPath;
}

bool DocumentOfRecordFile(kiocore::UTF16View inPath, Guid& outDocumentID)
{
    const std::size_t separator = inPath.find_last_of(ZOL::PathUtils::kPathSeparator);
    const kiocore::UTF16View name = separator == inPath.npos ? inPath : inPath.substr(separator + 1);
    if (name.size() < Guid::kTextLength) {
        return false;
    }
    const auto guid = Guid::FromText(kiocore::utility::ToUTF8(name.substr(0, Guid::kTextLength)));
    if (!guid) {
        return false;
    }
    outDocumentID = *guid;
    return true;
}

} // namespace TR
