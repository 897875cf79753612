#include <TR/DeleteAllMediaCacheEntriesOperation.h>

#include <TR/MediaAcceleratorDatabase.h>

#include "BatchRun.h"

#include <BE/Backend.h>
#include <MF/FileManager.h>
#include <ZOL/DirectoryRegistry.h>
#include <ZOL/File.h>
#include <ZOL/FolderSearch.h>
#include <ZOL/PathUtils.h>
#include <kiocore/config/Errors.h>
#include <kiocore/config/Localizer.h>
#include <kiocore/utility/FileUtils.h>

#include <vector>

namespace TR {

using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiocore::classref::MakeObject;
using kiocore::classref::RefToSelf;
using kiocore::classref::UnknownBase;
using kiocore::utility::FileUtils;

namespace {

using Extensions = std::vector<UTF16String>;

const Extensions& MediaCacheExtensions()
{
    static const Extensions extensions = {u".ims",      u".mcvideoindex", u".mcaudioindex", u".mpgindex",
                                          u".mxfindex", u".mxfassoc",     u".prqdc2",       u".ccxml",
                                          u".ccjson",   u".cfa"};
    return extensions;
}
const Extensions& DatabaseExtensions()
{
    static const Extensions extensions = {kMediaAcceleratorFileExtension};
    return extensions;
}
const Extensions& MetadataExtensions()
{
    static const Extensions extensions = {u".mfdc"};
    return extensions;
}
const Extensions& PeakExtensions()
{
    static const Extensions extensions = {u".cfa", u".pek"};
    return extensions;
}

constexpr float kShareOfPhase = 1.0f / 7.0f;

/// A folder that a preference names; empty, which wipes nothing, when it names none.
template <typename Getter>
UTF16String PreferredFolder(Getter inGetter)
{
    UTF16String folder;
    return inGetter(folder) < 0 ? UTF16String() : FileUtils::AddTrailingSlash(folder);
}

/// A folder below another; empty when that is empty, so that no search starts at the file system's root.
UTF16String Below(const UTF16String& inFolder, const char16_t* inName)
{
    return inFolder.empty() ? UTF16String() : FileUtils::AddTrailingSlash(inFolder + inName);
}

bool IsSameFolder(const UTF16String& inA, const UTF16String& inB)
{
    const auto comparable = [](const UTF16String& path) {
        return FileUtils::AddTrailingSlash(ZOL::PathUtils::ToNormalizedPath(path));
    };
    return kiocore::config::CompareUnderDefaultLocale(comparable(inA), comparable(inB)) == 0;
}

class DeleteAllMediaCacheEntriesOperation final : public ZOL::IBatchOperation, public virtual UnknownBase {
public:
    int Start() override
    {
        return mRun.Start([self = RefToSelf(*this)] { self->Process(); });
    }
    int Abort() override { return mRun.Abort(); }
    ZOL::StationID GetStationID() const override { return mRun.GetStationID(); }
    UTF16String GetDescription() const override
    {
        return kiocore::config::Localizer::GetText(
            "$$$/Halcyon/Tracery/Media/CleanMediaAcceleratorDatabaseDupeString=Cleaning Media Cache "
            "Database...");
    }
    void* QueryMap(const CFUUIDBytes& inInterfaceID) override
    {
        if (inInterfaceID == ZOL::IBatchOperation::InterfaceID()) {
            return static_cast<ZOL::IBatchOperation*>(this);
        }
        return UnknownBase::QueryMap(inInterfaceID);
    }

private:
    void Process();
    void WipeFolder(const UTF16String& inFolder, const Extensions& inExtensions, int inPhase);
    void RemoveUnusedPeakSubfolders(const UTF16String& inFolder);

    BatchRun mRun;
};

void DeleteAllMediaCacheEntriesOperation::Process()
{
    const BatchRun::ScFinish finish(mRun);
    const auto preferences = BE::GetBackend()->GetPreferences();
    const UTF16String shared = PreferredFolder([](UTF16String& out) {
        return ZOL::DirectoryRegistry::FindDirectory(ZOL::DirectoryRegistry::kSharedDocuments, out);
    });

    int phase = 0;
    WipeFolder(
        PreferredFolder([&](UTF16String& out) { return preferences->GetMediaCacheDatabaseFolder(out); }),
        DatabaseExtensions(), phase++);

    const UTF16String sharedCache = Below(shared, u"Media Cache Files");
    WipeFolder(sharedCache, MediaCacheExtensions(), phase++);
    const UTF16String cache =
        PreferredFolder([&](UTF16String& out) { return preferences->GetMediaCacheFilesFolder(out); });
    if (!IsSameFolder(cache, sharedCache)) {
        WipeFolder(cache, MediaCacheExtensions(), phase++);
    }

    WipeFolder(
        PreferredFolder([&](UTF16String& out) { return preferences->GetFirstMetadataCacheFolder(out); }),
        MetadataExtensions(), phase++);
    WipeFolder(
        PreferredFolder([&](UTF16String& out) { return preferences->GetSecondMetadataCacheFolder(out); }),
        MetadataExtensions(), phase++);

    const UTF16String peaks =
        Below(PreferredFolder([&](UTF16String& out) { return preferences->GetPeakFilesFolder(out); }),
              u"Peak Files");
    WipeFolder(peaks, PeakExtensions(), phase++);
    RemoveUnusedPeakSubfolders(peaks);
    const UTF16String sharedPeaks = Below(shared, u"Peak Files");
    if (!IsSameFolder(sharedPeaks, peaks)) {
        WipeFolder(sharedPeaks, PeakExtensions(), phase);
        RemoveUnusedPeakSubfolders(sharedPeaks);
    }
    mRun.PostComplete();
}

void DeleteAllMediaCacheEntriesOperation::WipeFolder(const UTF16String& inFolder,
                                                     const Extensions& inExtensions, int inPhase)
{
    mRun.ResetProgress();
    if (inFolder.empty() || !FileUtils::FileOrDirExists(inFolder)) {
        return;
    }
    // In the disk's own order, and each by its name in the folder that is open already: together this makes
    // deleting many files as cheap as the system can.
    const ZOL::FileList files =
        ZOL::FolderSearch::FindFiles(inFolder, inExtensions, ZOL::SearchOrder::kOnDisk);
    ZOL::OpenFolder openFolder;
    UTF16String path;
    for (std::size_t j = 0; j < files.Size(); ++j) {
        files.GetPath(j, path);
        MF::FileManager::TryToCloseFileWithoutBlocking(path);
        try {
            ZOL::File::Delete(files, j, openFolder);
        } catch (const kiocore::kio_exception&) {
            // Somebody needs it still, or it is not ours to delete: the rest can go all the same.
        }
        // Ends this folder only: the user asked for everything to go, and later folders are as good as this
        // one.
        if (mRun.ConsumeAbort()) {
            return;
        }
        const float inFolderProgress = static_cast<float>(j) / static_cast<float>(files.Size());
        mRun.Progress(inFolderProgress,
                      static_cast<float>(inPhase) * kShareOfPhase + inFolderProgress * kShareOfPhase);
    }
}

/// Children come before their parents, so a chain of empty folders goes in one pass. The folder itself stays.
void DeleteAllMediaCacheEntriesOperation::RemoveUnusedPeakSubfolders(const UTF16String& inFolder)
{
    if (inFolder.empty()) {
        return;
    }
    try {
        for (const UTF16String& folder : ZOL::FolderSearch::FindFolders(inFolder)) {
            if (ZOL::Directory::IsDirectoryEmpty(folder)) {
                ZOL::Directory::Delete(folder);
            }
        }
    } catch (const kiocore::kio_exception&) {
        // What cannot be listed stays.
    }
}

} // namespace

InterfaceRef<ZOL::IBatchOperation> CreateDeleteAllMediaCacheEntriesOperation()
{
    return MakeObject<DeleteAllMediaCacheEntriesOperation>();
}

} // namespace TR
