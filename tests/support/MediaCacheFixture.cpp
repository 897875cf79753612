#include "support/MediaCacheFixture.h"

#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <ZOL/DirectoryRegistry.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/config/Client.h>

#include <sys/stat.h>

#include <cstring>
#include <mutex>

namespace support {

using kiocore::Guid;
using kiocore::UTF16String;

namespace {

struct Media {
    std::mutex lock;
    std::map<UTF16String, std::pair<Guid, Guid>> known;
};

Media& TheMedia()
{
    static Media media;
    return media;
}

int Resolve(const UTF16String& inPath, bool, Guid& outDocument, Guid& outState)
{
    Media& media = TheMedia();
    std::lock_guard lock(media.lock);
    const auto found = media.known.find(inPath);
    if (found == media.known.end()) {
        return -1;
    }
    outDocument = found->second.first;
    outState = found->second.second;
    return 0;
}

} // namespace

MediaCacheFixture::MediaCacheFixture()
{
    kiocore::config::SetSuiteClientVersion(u"14.0");
    const auto backend = BE::GetBackend();
    backend->GetPreferences()->SetDefaultsBelow(mFolder.UTF16());
    backend->GetProperties()->Remove(BE::kPrefsMediaCacheFilesSideBySide);
    ZOL::DirectoryRegistry::RegisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments,
                                              mFolder.UTF16("Shared"));
    TR::TRFoundation::Initialize();
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(&Resolve);
    mDatabase = kiocore::classref::ClassFactory::CreateClassInstanceRef(TR::kMediaAcceleratorDatabaseClassID);
    std::filesystem::create_directories(DatabaseFolder());
    std::filesystem::create_directories(CacheFolder());
}

MediaCacheFixture::~MediaCacheFixture()
{
    mDatabase.Reset();
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(nullptr);
    TheMedia().known.clear();
    TR::TRFoundation::Shutdown();
    ZOL::DirectoryRegistry::UnregisterDirectory(ZOL::DirectoryRegistry::kSharedDocuments);
}

UTF16String MediaCacheFixture::MakeCacheFile(std::string_view inName, std::string_view inBytes)
{
    return WriteFile(CacheFolder() / inName, inBytes);
}

int MediaCacheFixture::AddItem(const Guid& inDocument, const Guid& inState, unsigned long inStream,
                               const UTF16String& inKey, const UTF16String& inCacheFile)
{
    return mDatabase->Add(inDocument, inState, u"/media/" + inDocument.AsString() + u".wav", inStream, inKey,
                          inCacheFile, true);
}

std::filesystem::path MediaCacheFixture::DatabaseFolder() const
{
    UTF16String folder;
    BE::GetBackend()->GetPreferences()->GetMediaCacheDatabaseFolder(folder);
    return kiocore::utility::ToUTF8(folder);
}

std::filesystem::path MediaCacheFixture::CacheFolder() const
{
    UTF16String folder;
    BE::GetBackend()->GetPreferences()->GetMediaCacheFilesFolder(folder);
    return kiocore::utility::ToUTF8(folder);
}

std::filesystem::path MediaCacheFixture::RecordFile(const Guid& inDocument, std::string_view inSuffix) const
{
    return DatabaseFolder() / (inDocument.AsUTF8() + std::string(inSuffix) + ".mcdb");
}

void MediaCacheFixture::ForgetMemory()
{
    TR::MediaAcceleratorDatabase::Shutdown();
}

void MediaCacheFixture::SetMedia(const UTF16String& inPath, const Guid& inDocument, const Guid& inState)
{
    Media& media = TheMedia();
    std::lock_guard lock(media.lock);
    media.known[inPath] = {inDocument, inState};
}

Guid NumberedGuid(unsigned inNumber)
{
    return Guid::FromHash(std::as_bytes(std::span(&inNumber, 1)), 7);
}

std::map<std::string, std::string> Listing(const std::filesystem::path& inFolder)
{
    std::map<std::string, std::string> listing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(inFolder)) {
        struct stat status {};
        lstat(entry.path().c_str(), &status);
        if (!S_ISDIR(status.st_mode)) {
            listing[entry.path().string()] =
                std::to_string(status.st_ino) + " " + std::to_string(status.st_size) + " " +
                std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
        }
    }
    return listing;
}

} // namespace support
