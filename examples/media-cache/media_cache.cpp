// What a host has to do to use the media cache: lend the library its knowledge of documents, bring it up,
// record a cache file, find it again, and clean up once the media has changed.
//
//   media_cache FOLDER     keeps everything below FOLDER, which is made if need be

#include <BE/Backend.h>
#include <TR/MediaAcceleratorDatabase.h>
#include <TR/TRFoundation.h>
#include <ZOL/BatchOperation.h>
#include <kiocore/config/Errors.h>
#include <kiocore/filesupport/NativePath.h>
#include <kiocore/messaging/Messaging.h>
#include <kiocore/threads/MainThread.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;
using kiocore::Guid;
using kiocore::UTF16String;
using kiocore::filesupport::FromNative;
using kiocore::filesupport::ToNative;

namespace {

// The host decides what a document is and when its contents count as changed. Here a document is a path, and
// its contents are told apart by size and modification time.
int ResolveDocument(const UTF16String& inPath, bool, Guid& outDocumentID, Guid& outContentState)
{
    const fs::path path = ToNative(inPath);
    std::error_code error;
    const auto size = fs::file_size(path, error);
    if (error) {
        return -1;
    }
    const auto time = fs::last_write_time(path, error).time_since_epoch().count();
    if (error) {
        return -1;
    }
    const std::string state = std::to_string(size) + "@" + std::to_string(time);
    outDocumentID = Guid::FromHash(std::as_bytes(std::span(path.native())));
    outContentState = Guid::FromHash(std::as_bytes(std::span(state)));
    return 0;
}

// Counts as one client of the library for as long as it lives.
class ScLibrary {
public:
    ScLibrary() { TR::TRFoundation::Initialize(); }
    ~ScLibrary() { TR::TRFoundation::Shutdown(); }
    ScLibrary(const ScLibrary&) = delete;
    ScLibrary& operator=(const ScLibrary&) = delete;
};

// Operations report to the main thread; whoever has no loop of his own runs one here.
class ScMainThread {
public:
    ScMainThread() : mThread(kiocore::threads::RegisterMainThread()) {}
    ~ScMainThread() { kiocore::threads::UnregisterMainThread(); }
    ScMainThread(const ScMainThread&) = delete;
    ScMainThread& operator=(const ScMainThread&) = delete;

    bool RunUntilComplete(ZOL::IBatchOperation& inOperation)
    {
        bool complete = false;
        kiocore::messaging::ScListener listener(
            inOperation.GetStationID(), [&complete](const kiocore::messaging::Message& inMessage) {
                complete = complete || dynamic_cast<const ZOL::OperationCompleteMessage*>(&inMessage);
            });
        if (inOperation.Start() < 0) {
            return false;
        }
        return mThread->RunUntil([&complete] { return complete; },
                                 std::chrono::steady_clock::now() + std::chrono::minutes(1));
    }

private:
    const std::shared_ptr<kiocore::threads::MainThread> mThread;
};

void WriteFile(const fs::path& inPath, const char* inText)
{
    std::ofstream file(inPath, std::ios::binary | std::ios::trunc);
    file << inText;
    if (!file.flush()) {
        throw std::runtime_error("Cannot write " + inPath.string());
    }
}

// One line for each step, so that a reader sees what happened; the example stops where it went otherwise.
void Expect(bool inHolds, const char* inStep)
{
    std::printf("%s %s\n", inHolds ? "ok  " : "FAIL", inStep);
    if (!inHolds) {
        throw std::runtime_error(std::string("went otherwise than expected: ") + inStep);
    }
}

void Run(const fs::path& inFolder)
{
    fs::create_directories(inFolder);
    const fs::path folder = fs::canonical(inFolder);
    const auto preferences = BE::GetBackend()->GetPreferences();
    preferences->SetDefaultsBelow(FromNative(folder.native()));

    ScMainThread mainThread;
    TR::TRFoundation::RegisterGetDocumentIDAndContentStateFromPathFunction(&ResolveDocument);
    ScLibrary library;
    // Any number of instances may be made: they all speak of the process's one database.
    const auto database = kiocore::classref::MakeObject<TR::MediaAcceleratorDatabase>();

    const fs::path media = folder / "interview.wav";
    WriteFile(media, "as first recorded");
    const UTF16String mediaPath = FromNative(media.native());
    Guid document;
    Guid state;
    Expect(ResolveDocument(mediaPath, false, document, state) == 0, "the media is known to the host");

    // Cache files belong where the preferences say; the record follows once the file is complete.
    UTF16String cacheFolder;
    Expect(TR::GetMediaAcceleratorDirectoryPath(mediaPath, cacheFolder) == 0,
           "there is a folder for cache files");
    fs::create_directories(ToNative(cacheFolder));
    const fs::path cacheFile = fs::path(ToNative(cacheFolder)) / "interview.cfa";
    WriteFile(cacheFile, "conformed sound");
    const unsigned long stream = 0;
    const UTF16String key = u"ConformedAudio";
    Expect(database->Add(document, state, mediaPath, stream, key, FromNative(cacheFile.native()), true) >= 0,
           "the cache file is recorded");

    UTF16String found;
    Expect(database->FindUpToDate(document, state, stream, key, found) >= 0 &&
               fs::path(ToNative(found)) == cacheFile,
           "and found again, up to date");

    WriteFile(media, "recorded again, and longer than before");
    Guid newState;
    Expect(ResolveDocument(mediaPath, false, document, newState) == 0 && newState != state,
           "the media has changed");
    Expect(database->FindUpToDate(document, newState, stream, key, found) < 0,
           "the old cache file no longer counts as up to date");

    Expect(mainThread.RunUntilComplete(*database), "cleaning has run");
    Expect(!fs::exists(cacheFile), "the old cache file is gone");
    Expect(database->Find(document, newState, stream, key, found) < 0, "and so is its record");
    Expect(fs::exists(media), "the media itself was left alone");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: media_cache FOLDER\n");
        return 2;
    }
    try {
        Run(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "media_cache: %s\n", error.what());
        return 3;
    }
}
