#pragma once

#include <kiocore/utility/Guid.h>
#include <kiocore/utility/UTF16String.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TR {

/// Names of record files: <database folder><document GUID><version tag>.mcdb. The tag is V x 256 in decimal
/// for version V of the suite; a half version such as 13.5 has 80 more.
inline constexpr int kUntagged = -1;

/// One thread's view of where records lie, so that finding one needs neither an allocation nor a question
/// to preferences that did not change.
///
/// Threading: the object of ForThisThread() must stay on that thread.
class DatabasePaths {
public:
    /// Brought up to date with preferences and suite version.
    static DatabasePaths& ForThisThread();

    /// False while the preferences name no database folder; nothing below may be used then.
    bool HasFolder() const { return !mFolder.empty(); }
    /// With a trailing separator.
    const kiocore::UTF16String& GetFolder() const { return mFolder; }
    /// A number that stands for the folder as long as this process runs.
    std::uint32_t GetFolderNumber() const { return mFolderNumber; }
    /// The tags to look for, newest first; the first is the one to write, the last is kUntagged.
    const std::vector<int>& GetTags() const { return mTags; }

    /// Chooses the document that the next paths are for.
    void BeginDocument(const kiocore::Guid& inDocumentID);
    /// The chosen document's record under a tag. Valid until the next call.
    /// @param inTagIndex  into GetTags().
    const kiocore::UTF16String& GetPath(std::size_t inTagIndex);

private:
    void ReadFolder();
    void ReadVersion();

    std::uint64_t mPreferencesChangeCount = 0;
    unsigned mClientChangeCount = 0;
    bool mIsRead = false;
    kiocore::UTF16String mFolder;
    std::uint32_t mFolderNumber = 0;
    std::vector<int> mTags;
    std::vector<kiocore::UTF16String> mTagTexts; // "3584.mcdb", one for each tag
    kiocore::UTF16String mPath;
};

/// The document that a record file's name stands for. @return false when it is no such name.
bool DocumentOfRecordFile(kiocore::UTF16View inPath, kiocore::Guid& outDocumentID);

} // namespace TR
