// Any bytes as a media cache record. What can be read answers consistently, and written and read again is the
// same but for items whose file is not there. Nothing on disk is changed: a call that would ends the process.

#include <TR/MediaAcceleratorDatabaseEntry.h>
#include <TR/TRFoundation.h>

#include <BE/Backend.h>
#include <BE/XMLFile.h>
#include <ZOL/File.h>
#include <kiocore/classref/ClassFactory.h>
#include <kiocore/filesupport/FileCalls.h>
#include <kiocore/filesupport/FileTime.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace {

using kiocore::Guid;
using kiocore::InterfaceRef;
using kiocore::UTF16String;
using kiocore::classref::ClassFactory;
using TR::MediaAcceleratorDatabaseEntry;
using TR::MediaAcceleratorItem;
using EntryRef = InterfaceRef<MediaAcceleratorDatabaseEntry>;

void Require(bool inTrue)
{
    if (!inTrue) {
        std::abort();
    }
}

/// Lets nothing be changed. Access times are, in all appearance.
class NoChanges final : public kiocore::filesupport::FileCalls {
public:
    int Open(const char* inPath, int inFlags, mode_t inMode) override
    {
        Require((inFlags & (O_ACCMODE | O_CREAT | O_TRUNC)) == O_RDONLY);
        return FileCalls::Open(inPath, inFlags, inMode);
    }
    int SetTimesOfPath(const char*, const timespec inTimes[2]) override
    {
        Require(inTimes[1].tv_nsec == UTIME_OMIT);
        return 0;
    }
    ssize_t Write(int, const void*, std::size_t) override { std::abort(); }
    int Sync(int) override { std::abort(); }
    int SetTimes(int, const timespec[2]) override { std::abort(); }
    int ChangeMode(int, mode_t) override { std::abort(); }
    int Rename(const char*, const char*) override { std::abort(); }
    int Link(const char*, const char*) override { std::abort(); }
    int Unlink(const char*) override { std::abort(); }
    int UnlinkAt(int, const char*, int) override { std::abort(); }
    int MakeFolder(const char*, mode_t) override { std::abort(); }
    ssize_t CopyRange(int, int, std::size_t) override { std::abort(); }
};

/// The cache's folders, with cache files "0.cfa" to "7.cfa" of one modification time, so that seeds can name
/// files that are there: in them, @CACHE@ stands for the folder of the files.
class CacheFolder {
public:
    static constexpr std::string_view kName = "@CACHE@";
    static constexpr timespec kTime{1700000000, 0};

    CacheFolder()
    {
        std::string path = std::filesystem::temp_directory_path() / "record-reader-fuzz-XXXXXX";
        Require(mkdtemp(path.data()) != nullptr);
        mRoot = path;
        path += "/Media Cache Files";
        std::filesystem::create_directory(path);
        mPath = path;
        for (int i = 0; i < 8; ++i) {
            const std::string file = path + "/" + std::to_string(i) + ".cfa";
            const int descriptor = open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
            const timespec times[2] = {kTime, kTime};
            Require(descriptor >= 0 && futimens(descriptor, times) == 0 && close(descriptor) == 0);
        }
    }
    ~CacheFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(mRoot, ignored);
    }
    CacheFolder(const CacheFolder&) = delete;
    CacheFolder& operator=(const CacheFolder&) = delete;

    const std::string& Root() const { return mRoot; }
    std::string WithPaths(std::string_view inBytes) const
    {
        std::string bytes(inBytes);
        for (std::size_t at = bytes.find(kName); at != std::string::npos;
             at = bytes.find(kName, at + mPath.size())) {
            bytes.replace(at, kName.size(), mPath);
        }
        return bytes;
    }

private:
    std::string mRoot;
    std::string mPath;
};

const CacheFolder& TheFolder()
{
    static const CacheFolder folder;
    return folder;
}

InterfaceRef<BE::IXMLFileReader> OpenBytes(std::string_view inBytes)
{
    const InterfaceRef<BE::IXMLFileReader> reader =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileReaderClassID);
    if (reader->OpenBytes(inBytes) < 0) {
        Require(!reader->GetOpenError().empty());
        return {};
    }
    return reader;
}

/// @return empty when the document holds no entry that can be read.
EntryRef Read(std::string_view inBytes)
{
    const auto reader = OpenBytes(inBytes);
    if (!reader) {
        return {};
    }
    InterfaceRef<BE::ISerializeable> object;
    try {
        reader->GetDataReader().ReadObject(MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                           object);
    } catch (const kiocore::kio_exception& refusal) {
        Require(*refusal.what() != '\0');
        return {};
    }
    return object;
}

std::string Written(const EntryRef& inEntry)
{
    const InterfaceRef<BE::IXMLFileWriter> writer =
        ClassFactory::CreateClassInstanceRef(BE::kXMLFileWriterClassID);
    writer->GetDataWriter().WriteObject(MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                                        inEntry);
    return writer->GetBytes();
}

struct Stream {
    UTF16String id;
    std::vector<MediaAcceleratorItem> items;
};

std::vector<Stream> StreamsOf(const EntryRef& inEntry)
{
    std::vector<UTF16String> ids;
    inEntry->GetStreamIDs(ids);
    Require(ids.size() == inEntry->GetStreamCount());
    std::vector<Stream> streams;
    std::size_t count = 0;
    for (const UTF16String& id : ids) {
        Require(streams.empty() || streams.back().id < id);
        inEntry->GetItems(id, streams.emplace_back(Stream{id, {}}).items);
        count += streams.back().items.size();
    }
    Require(count == inEntry->GetItemCount());
    return streams;
}

bool AreSame(const MediaAcceleratorItem& inA, const MediaAcceleratorItem& inB)
{
    return std::tie(inA.path, inA.winPath, inA.key, inA.canBeCopied) ==
           std::tie(inB.path, inB.winPath, inB.key, inB.canBeCopied);
}

void ExpectTheSame(const EntryRef& inA, const EntryRef& inB)
{
    Require(inA->GetOriginal() == inB->GetOriginal() && inA->GetContentState() == inB->GetContentState());
    Require(inA->IsUpToDate() == inB->IsUpToDate() && inA->IsModified() == inB->IsModified());
    Require(Written(inA) == Written(inB));
    const auto a = StreamsOf(inA);
    const auto b = StreamsOf(inB);
    Require(std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Stream& ours, const Stream& theirs) {
        return ours.id == theirs.id && std::equal(ours.items.begin(), ours.items.end(), theirs.items.begin(),
                                                  theirs.items.end(), AreSame);
    }));
}

void ExpectItemsAreFound(const EntryRef& inEntry)
{
    static const UTF16String kUntouched = u"untouched";
    for (const Stream& stream : StreamsOf(inEntry)) {
        const MediaAcceleratorItem* before = nullptr;
        for (const MediaAcceleratorItem& item : stream.items) {
            Require(!before || before->key < item.key);
            before = &item;
            UTF16String path = kUntouched;
            Require(!item.path.empty()); // those without one did not survive reading
            Require(inEntry->FindItem(stream.id, item.key, path) == 0 && path == item.path);
        }
        const UTF16String absent = (before ? before->key : UTF16String()) + u"+";
        UTF16String path = kUntouched;
        Require(inEntry->FindItem(stream.id, absent, path) == -1 && path == kUntouched);
    }
}

void ExpectClonesAreIndependent(const EntryRef& inEntry)
{
    const std::string before = Written(inEntry);
    const EntryRef clone = inEntry->Clone();
    ExpectTheSame(inEntry, clone);
    clone->AddItem(u"a stream of the clone's", {u"/a", u"A:\\a", u"k", true}, true);
    Require(clone->IsModified() && clone->IsUpToDate() && Written(clone) != before);
    clone->SetOriginal(inEntry->GetOriginal() + u"+");
    clone->Invalidate(0);
    clone->SetContentState(Guid("11111111-2222-3333-4444-555555555555"));
    Require(Written(inEntry) == before);
}

/// Items whose file is not there are dropped when they are read; all else comes back.
void ExpectItComesBack(const EntryRef& inEntry)
{
    const std::string document = Written(inEntry);
    const EntryRef again = Read(document);
    Require(again && again->IsUpToDate());
    Require(again->GetOriginal() == inEntry->GetOriginal());
    Require(again->GetContentState() == inEntry->GetContentState());

    auto expected = StreamsOf(inEntry);
    std::size_t dropped = 0;
    for (Stream& stream : expected) {
        dropped += std::erase_if(stream.items, [](const MediaAcceleratorItem& item) {
            kiocore::filesupport::FileTime time = 0;
            return ZOL::File::GetLastModificationTime(item.path, time) < 0;
        });
    }
    const auto found = StreamsOf(again);
    Require(found.size() == expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        Require(found[i].id == expected[i].id);
        Require(std::equal(found[i].items.begin(), found[i].items.end(), expected[i].items.begin(),
                           expected[i].items.end(), AreSame));
    }
    Require(again->IsModified() == (dropped > 0));
    if (dropped == 0) {
        Require(Written(again) == document);
    }
}

struct KeySink final : BE::IDictionarySink {
    void Put(const BE::ImmutableString& inKey, const UTF16String&) override { keys += inKey.AsString(); }
    void Put(const BE::ImmutableString& inKey, const MF::BinaryData&) override { keys += inKey.AsString(); }
    void Put(const BE::ImmutableString& inKey, const BE::ISerializeableValue&) override
    {
        keys += inKey.AsString();
    }
    void PutMap(const BE::ImmutableString& inKey, const BE::ImmutableString&, const BE::ValueMap&) override
    {
        keys += inKey.AsString();
    }
    std::string keys;
};

void ExpectTheSinkSeesWhatIsWritten(const EntryRef& inEntry)
{
    KeySink sink;
    inEntry->SerializeToSink(sink);
    std::string stored;
    OpenBytes(Written(inEntry))
        ->VisitStored(MediaAcceleratorDatabaseEntry::kMediaAcceleratorDatabaseEntryKey,
                      [&](std::string_view, std::string_view key, const UTF16String&) { stored += key; });
    Require(sink.keys == stored);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    BE::GetBackend()->GetPreferences()->SetDefaultsBelow(kiocore::utility::ToUTF16(TheFolder().Root()));
    TR::TRFoundation::Initialize();
    static NoChanges calls;
    static const kiocore::filesupport::ScReplaceFileCalls replace(calls);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inBytes, std::size_t inSize)
{
    const EntryRef entry = Read(TheFolder().WithPaths({reinterpret_cast<const char*>(inBytes), inSize}));
    if (!entry) {
        return 0;
    }
    Require(entry->IsUpToDate());
    ExpectItemsAreFound(entry);
    ExpectClonesAreIndependent(entry);
    ExpectItComesBack(entry);
    ExpectTheSinkSeesWhatIsWritten(entry);
    return 0;
}
